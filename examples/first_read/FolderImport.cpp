#include "FolderImport.h"

#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMProgress.h>
#include <sys/stat.h>

#include <algorithm>
#include <ctime>
#include <iostream>

#include "Report.h"

namespace demo {

namespace fs = std::filesystem;

namespace {

class Listener : public kxudm::IUDMProgressListener {
  public:
    bool Advance(const kxudm::UDMProgress& progress) override {
        found = progress.total;
        return true;
    }
    void Failed(const kxString& item, const kxString& reason) override {
        std::cerr << "left out: " << Printable(item) << ": " << reason << '\n';
        // Before the work begins, what fails was never counted.
        failed += found > 0 ? 1 : 0;
        ++leftOut;
    }

    std::uint64_t found = 0;
    std::uint64_t failed = 0;
    std::size_t leftOut = 0;
};

kxString UtcText(std::time_t seconds) {
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[40];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return kxString(text, length);
}

kxString BaseOf(const kxString& uid) {
    return uid.substr(0, uid.find(':'));
}

bool IsFolder(const kxct::Item& item) {
    return item.GetType() == "Foldertype";
}

std::string NameOf(const kxct::Item& item) {
    return item.GetAttributeValue("name").GetString();
}

// Contents before folders, each by name.
std::vector<kxct::Item*> SortedChildren(kxct::Item& folder) {
    kxStlVector<kxct::Item*> items;
    folder.GetChildren(items, "folder");
    std::vector<std::pair<std::pair<bool, std::string>, kxct::Item*>> keyed;
    for (kxct::Item* item : items) {
        keyed.push_back({{IsFolder(*item), NameOf(*item)}, item});
    }
    std::sort(keyed.begin(), keyed.end());
    std::vector<kxct::Item*> sorted;
    sorted.reserve(keyed.size());
    for (const auto& [key, item] : keyed) {
        sorted.push_back(item);
    }
    return sorted;
}

}  // namespace

void FolderImport::Run(const fs::path& source) {
    const fs::path folder = fs::canonical(source);
    Listener listener;
    {
        const kxudm::UDMProgressScope scope(_library.Session(), listener);
        try {
            _library.Session()->AddFoldersAndFiles(
                {folder.string()},
                {},
                "/",
                {{"publish", "true"}, {"comment", "imported by the first read"}});
        } catch (const std::exception& failure) {
            std::cerr << "the import ended early: " << failure.what() << '\n';
            _complete = false;
        }
    }
    _leftOut = listener.leftOut;
    kxct::Item* top = _library.Controller().GetFolder("/" + folder.filename().string(), false);
    if (top == nullptr) {
        _complete = false;
        return;
    }
    Collect(*top, folder, 0);
    _complete = _complete && CountContents(_entries) + listener.failed >= listener.found;
}

void FolderImport::Collect(kxct::Item& folder, const fs::path& source, std::size_t depth) {
    Entry entry;
    entry.uid = BaseOf(folder.GetUID());
    entry.name = NameOf(folder);
    entry.definition = folder.GetType();
    entry.isFolder = true;
    entry.depth = depth;
    entry.source = source;
    _entries.push_back(std::move(entry));
    for (kxct::Item* child : SortedChildren(folder)) {
        const fs::path path = source / NameOf(*child);
        std::error_code gone;
        if (!IsFolder(*child)) {
            Describe(*child, path, depth + 1);
        } else if (fs::is_directory(path, gone)) {
            Collect(*child, path, depth + 1);
        }
    }
}

// As the file is. Nothing for a content that no file stands for: one that was deleted since, or a
// branch, which lies beside the content that it came from.
void FolderImport::Describe(kxct::Item& content, const fs::path& source, std::size_t depth) {
    struct stat status {};
    const bool isBranch = !content.GetAttributeValue("smd_branchfrom").GetString().empty();
    if (isBranch || stat(source.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) {
        return;
    }
    std::string extension = source.extension().string();
    if (!extension.empty()) {
        extension.erase(0, 1);
    }
    Entry entry;
    entry.uid = BaseOf(content.GetUID());
    entry.name = source.filename().string();
    entry.definition =
        _library.Session()->GetProfileUtils().FindContentDefinitionByExtension(extension);
    entry.type = extension;
    entry.size = status.st_size;
    entry.modified = UtcText(status.st_mtime);
    entry.depth = depth;
    entry.source = source;
    _entries.push_back(std::move(entry));
}

}  // namespace demo
