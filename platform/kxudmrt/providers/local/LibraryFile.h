// The files of a library: "<base directory>/<name>.ldb", SQLite's "-wal" and "-shm" beside it, and
// "vault/".
//
// Layer: providers.
#pragma once

#include <memory>

#include "providers/local/Parameters.h"
#include "store/LibraryStore.h"

namespace kxudm::providers {

// What a new library is made of.
struct LibraryPlan {
    kxString name;
    kxString baseDirectory;
    kxString file;
    kxString catalogueXml;
};

[[nodiscard]] kxString LibraryFileName(const kxString& baseDirectory, const kxString& name);
[[nodiscard]] bool FileExists(const kxString& path);
// Makes a directory with its parents. Throws UDMStoreException, naming `what` and the directory.
void MakeDirectories(const kxString& directory, const char* what);

[[nodiscard]] std::unique_ptr<store::LibraryStore> OpenLibraryFile(const kxString& file,
                                                                   int busyTimeoutMilliseconds);

// Removes .ldb, -wal and -shm, and the vaults unless another library lies in the same directory.
// Throws UDMStoreException, naming what could not be removed.
void RemoveLibraryFiles(const kxString& file);

// Makes the file of a new library: under a temporary name first, so that it is there whole or not
// at all. Unless Keep is called, the end of this object takes everything back that it made, the
// directories, too.
class NewLibraryFile {
  public:
    explicit NewLibraryFile(const LibraryPlan& plan);
    ~NewLibraryFile();
    NewLibraryFile(const NewLibraryFile&) = delete;
    NewLibraryFile& operator=(const NewLibraryFile&) = delete;

    void Keep() noexcept { _kept = true; }

  private:
    void Make(const LibraryPlan& plan);
    void TakeBack() noexcept;

    kxString _file;
    kxString _firstMade;  // topmost directory that was missing; empty if none was
    kxString _baseDirectory;
    bool _ours = false;  // else somebody made it in the meantime, and theirs stays
    bool _kept = false;
};

}  // namespace kxudm::providers
