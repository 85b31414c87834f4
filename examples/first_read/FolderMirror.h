// Mirrors a folder of files into the library: folders become folders, files become contents.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "Library.h"

namespace demo {

// What a file or folder has to read back as.
struct Entry {
    kxString uid;
    kxString name;
    kxString definition;
    kxString type;
    kxString modified;
    std::int64_t size = 0;
    bool isFolder = false;
    std::size_t depth = 0;
};

class FolderMirror {
  public:
    explicit FolderMirror(Library& library) : _library(library) {}

    // Brings everything below `source` into the library, below a folder named after it. What the
    // library has already is left as it is, so that an interrupted run goes on where it ended.
    // What can't be taken is told on the standard error, file by file, and left out.
    void Run(const std::filesystem::path& source);

    // All that was found or made: a folder, then what is in it.
    const std::vector<Entry>& Entries() const { return _entries; }
    std::size_t Created() const { return _created; }
    std::size_t LeftOut() const { return _leftOut; }

  private:
    struct Folder {
        std::filesystem::path source;
        kxString path;
        std::size_t depth = 0;
    };
    struct File {
        std::filesystem::directory_entry found;
        kxString name;
    };
    using Children = std::map<kxString, kxct::Item*>;

    void MirrorFolder(const Folder& folder, std::vector<Folder>& below);
    void MirrorBatch(const std::vector<File>& files,
                     const Folder& folder,
                     kxct::Item& target,
                     const Children& known);
    void MirrorFile(const std::filesystem::directory_entry& file,
                    const kxString& name,
                    const Folder& folder,
                    kxct::Item& target,
                    const Children& known);
    Children KnownContents(kxct::Item& folder) const;
    bool Describe(const std::filesystem::directory_entry& file, Entry& entry);
    void LeaveOut(const std::filesystem::path& path, const std::string& why);

    Library& _library;
    std::vector<Entry> _entries;
    std::size_t _created = 0;
    std::size_t _leftOut = 0;
};

}  // namespace demo
