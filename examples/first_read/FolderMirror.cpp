#include "FolderMirror.h"

#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMBulkEdit.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <iostream>
#include <set>

#include "Report.h"

namespace demo {

namespace fs = std::filesystem;

namespace {

constexpr char kFallbackDefinition[] = "Document";
// Folders that one transaction takes at the least; a run that is cut off loses the last one.
constexpr std::size_t kContentsPerTransaction = 500;

kxString UtcText(std::time_t seconds) {
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[40];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return kxString(text, length);
}

// The name under which the library keeps a file: its own, where that is UTF-8 as texts have to be.
kxString KeptName(const std::string& name) {
    return IsUtf8(name) ? name : Printable(name);
}

std::vector<fs::directory_entry> SortedEntries(const fs::path& folder, std::error_code& error) {
    std::vector<fs::directory_entry> entries;
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        entries.push_back(*it);
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

}  // namespace

void FolderMirror::Run(const fs::path& source) {
    const fs::path absolute = fs::canonical(source);
    const std::string name = absolute.filename().empty() ? "root" : absolute.filename().string();

    std::vector<Folder> waiting{{absolute, "/" + KeptName(name), 0}};
    while (!waiting.empty()) {
        const Folder folder = std::move(waiting.back());
        waiting.pop_back();
        std::vector<Folder> below;
        try {
            MirrorFolder(folder, below);
        } catch (const std::exception& failure) {
            LeaveOut(folder.source, failure.what());
        }
        // The last one waiting comes next: hand them over in reverse.
        waiting.insert(waiting.end(), below.rbegin(), below.rend());
    }
}

void FolderMirror::MirrorFolder(const Folder& folder, std::vector<Folder>& below) {
    std::error_code error;
    const std::vector<fs::directory_entry> entries = SortedEntries(folder.source, error);
    if (error) {
        LeaveOut(folder.source, "it can't be listed: " + error.message());
        return;
    }
    kxct::Item* target = _library.Controller().GetOrCreateFolder(folder.path, true);
    if (target == nullptr) {
        LeaveOut(folder.source, "the library refused the folder " + Printable(folder.path));
        return;
    }
    Entry entry;
    entry.uid = target->GetUID();
    entry.name = target->GetDisplayName();
    entry.definition = target->GetType();
    entry.isFolder = true;
    entry.depth = folder.depth;
    _entries.push_back(std::move(entry));

    const Children known = KnownContents(*target);
    std::set<kxString> taken;
    std::vector<File> batch;
    for (const fs::directory_entry& found : entries) {
        const kxString name = KeptName(found.path().filename().string());
        const bool isLink = found.is_symlink(error);
        if (!taken.insert(name).second) {
            LeaveOut(found.path(), "another file here has a name that is kept in the same way");
        } else if (!found.is_directory(error)) {
            batch.push_back({found, name});
        } else if (isLink) {
            LeaveOut(found.path(), "it is a symbolic link to a folder, which might lead back here");
        } else {
            below.push_back({found.path(), folder.path + "/" + name, folder.depth + 1});
        }
        if (batch.size() == kContentsPerTransaction) {
            MirrorBatch(batch, folder, *target, known);
            batch.clear();
        }
    }
    MirrorBatch(batch, folder, *target, known);
}

// One transaction: where it fails, none of its files is in the library.
void FolderMirror::MirrorBatch(const std::vector<File>& files,
                               const Folder& folder,
                               kxct::Item& target,
                               const Children& known) {
    const std::size_t entriesBefore = _entries.size();
    const std::size_t createdBefore = _created;
    try {
        kxudm::UDMBulkEdit edit(_library.Session());
        for (const File& file : files) {
            MirrorFile(file.found, file.name, folder, target, known);
        }
        edit.Commit();
    } catch (const std::exception& failure) {
        _entries.resize(entriesBefore);
        _created = createdBefore;
        for (const File& file : files) {
            LeaveOut(file.found.path(), failure.what());
        }
    }
}

FolderMirror::Children FolderMirror::KnownContents(kxct::Item& folder) const {
    kxStlVector<kxct::Item*> items;
    folder.GetChildren(items, "folder");
    Children known;
    for (kxct::Item* item : items) {
        known.emplace(item->GetAttributeValue("name").GetString(), item);
    }
    return known;
}

bool FolderMirror::Describe(const fs::directory_entry& file, Entry& entry) {
    struct stat status {};
    if (stat(file.path().c_str(), &status) != 0) {
        LeaveOut(file.path(), std::error_code(errno, std::generic_category()).message());
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        LeaveOut(file.path(), "it is neither a file nor a folder");
        return false;
    }
    std::string extension = file.path().extension().string();
    if (!extension.empty()) {
        extension.erase(0, 1);
    }
    entry.definition =
        _library.Session()->GetProfileUtils().FindContentDefinitionByExtension(extension);
    if (entry.definition.empty()) {
        entry.definition = kFallbackDefinition;
    }
    entry.type = KeptName(extension);
    entry.size = status.st_size;
    entry.modified = UtcText(status.st_mtime);
    return true;
}

void FolderMirror::MirrorFile(const fs::directory_entry& file,
                              const kxString& name,
                              const Folder& folder,
                              kxct::Item& target,
                              const Children& known) {
    Entry entry;
    entry.name = name;
    entry.depth = folder.depth + 1;
    if (!Describe(file, entry)) {
        return;
    }
    if (const auto there = known.find(name); there != known.end()) {
        entry.uid = there->second->GetUID();
        _entries.push_back(std::move(entry));
        return;
    }
    kxct::Controller& controller = _library.Controller();
    kxct::Item* item = controller.CreateContent(entry.definition, name);
    kxVariant size(static_cast<long long>(entry.size));
    kxVariant type(entry.type);
    kxVariant modified(entry.modified);
    if (item == nullptr || !item->SetAttributeValue("filesize", size) ||
        !item->SetAttributeValue("filetype", type) ||
        !item->SetAttributeValue("filelastmodified", modified) ||
        !controller.MoveContent(item, &target)) {
        kxStlVector<kxct::Item*> halfMade{item};
        controller.Delete(halfMade);
        LeaveOut(file.path(), "the library refused it");
        return;
    }
    entry.uid = item->GetUID();
    _entries.push_back(std::move(entry));
    ++_created;
}

void FolderMirror::LeaveOut(const fs::path& path, const std::string& why) {
    ++_leftOut;
    std::cerr << "left out: " << Printable(path.string()) << ": " << why << '\n';
}

}  // namespace demo
