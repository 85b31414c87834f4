#include "Retrieval.h"

#include <kxudm/IUDMProfile.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <set>
#include <stdexcept>

#include "Report.h"

namespace demo {

namespace fs = std::filesystem;

namespace {

// A folder that nobody has used before, gone with this object.
class FreshFolder {
  public:
    explicit FreshFolder(const fs::path& place) {
        for (int number = 1; _path.empty(); ++number) {
            const fs::path candidate = place / ("retrieved-" + std::to_string(number));
            if (fs::create_directory(candidate)) {
                _path = candidate;
            }
        }
    }
    ~FreshFolder() {
        std::error_code ignored;
        fs::remove_all(_path, ignored);
    }
    FreshFolder(const FreshFolder&) = delete;
    FreshFolder& operator=(const FreshFolder&) = delete;

    const fs::path& Path() const { return _path; }

  private:
    fs::path _path;
};

bool HaveEqualBytes(const fs::path& first, const fs::path& second) {
    std::ifstream a(first, std::ios::binary);
    std::ifstream b(second, std::ios::binary);
    std::vector<char> mine(1 << 16);
    std::vector<char> its(mine.size());
    while (a && b) {
        a.read(mine.data(), static_cast<std::streamsize>(mine.size()));
        b.read(its.data(), static_cast<std::streamsize>(its.size()));
        if (a.gcount() != b.gcount() ||
            !std::equal(mine.begin(), mine.begin() + a.gcount(), its.begin())) {
            return false;
        }
    }
    return a.eof() && b.eof();
}

bool IsIdentical(Library& library, const Entry& entry, const fs::path& folder) {
    kxStlVector<kxString> paths;
    kxudm::IUDMProfile& session = *library.Session();
    session.RetrieveFilesToPath(session.GetEntity(entry.uid), folder.string(), paths, entry.name);
    if (paths.size() == 1 && HaveEqualBytes(paths.front().c_str(), entry.source)) {
        return true;
    }
    std::cerr << "differs: the file of " << Printable(entry.name) << " (" << entry.uid
              << ") is not what " << Printable(entry.source.string()) << " is\n";
    return false;
}

}  // namespace

std::size_t CountIdentical(Library& library,
                           const std::vector<Entry>& entries,
                           const fs::path& place) {
    const FreshFolder fresh(place);
    std::size_t identical = 0;
    std::vector<fs::path> folders{fresh.Path()};  // one for each depth
    for (const Entry& entry : entries) {
        folders.resize(entry.depth + 1);
        if (entry.isFolder) {
            folders.push_back(folders.back() / std::string(entry.name));
            fs::create_directory(folders.back());
            continue;
        }
        try {
            identical += IsIdentical(library, entry, folders.back()) ? 1 : 0;
        } catch (const std::exception& failure) {
            std::cerr << "not retrieved: " << Printable(entry.name) << ": " << failure.what()
                      << '\n';
        }
    }
    return identical;
}

VaultUse MeasureVault(Library& library, const std::vector<Entry>& entries) {
    kxudm::IUDMProfile& session = *library.Session();
    VaultUse use;
    std::set<kxString> stored;
    for (const Entry& entry : entries) {
        if (entry.isFolder) {
            continue;
        }
        kxStlVector<kxudm::UDMGenericDocument> documents;
        session.GetDocuments(session.GetEntity(entry.uid), documents, false);
        use.files += documents.size();
        for (const kxudm::UDMGenericDocument& document : documents) {
            stored.insert(document.GetPath());
        }
    }
    use.distinct = stored.size();
    for (const kxString& path : stored) {
        std::error_code missing;
        const std::uintmax_t size = fs::file_size(path.c_str(), missing);
        use.bytes += missing ? 0 : size;
    }
    return use;
}

}  // namespace demo
