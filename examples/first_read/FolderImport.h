// Brings a folder of files into the library, and tells what is in it afterwards.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "Library.h"

namespace demo {

// What a file or folder has to read back as.
struct Entry {
    kxString uid;  // without a revision: the newest one
    kxString name;
    kxString definition;
    kxString type;
    kxString modified;
    std::int64_t size = 0;
    bool isFolder = false;
    std::size_t depth = 0;
    std::filesystem::path source;
};

class FolderImport {
  public:
    explicit FolderImport(Library& library) : _library(library) {}

    // Imports everything below `source`, published, into a folder named after it. What the library
    // has already is left as it is, so that an interrupted run goes on where it ended. What can't
    // be taken is told on the standard error, file by file, and left out.
    void Run(const std::filesystem::path& source);

    // What the library has of the folder: each folder, the contents in it, then the folders in it.
    const std::vector<Entry>& Entries() const { return _entries; }
    std::size_t LeftOut() const { return _leftOut; }
    // All that was found is there, but for what was left out.
    bool IsComplete() const { return _complete; }

  private:
    void Collect(kxct::Item& folder, const std::filesystem::path& source, std::size_t depth);
    void Describe(kxct::Item& content, const std::filesystem::path& source, std::size_t depth);

    Library& _library;
    std::vector<Entry> _entries;
    std::size_t _leftOut = 0;
    bool _complete = true;
};

}  // namespace demo
