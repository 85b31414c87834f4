// A file of the user's while it is read into the vault. What is read must be the file as it is at
// one moment, so one that changes or goes away meanwhile is refused.
#ifndef KXUDMRT_VAULT_SOURCEFILE_H
#define KXUDMRT_VAULT_SOURCEFILE_H

#include <cstdint>
#include <string>

#include "vault/FileLayer.h"

namespace kxudm::vault {

class SourceFile {
  public:
    // Only regular files are taken, and symbolic links to such.
    SourceFile(FileLayer& files, const std::string& path);

    // Reads until `size` bytes are there or the file ends; less than `size` says that it ended.
    std::size_t Fill(char* bytes, std::size_t size);
    // Throws UDMStoreException if the file is not what it was when it was opened.
    void CheckUnchanged();

    [[nodiscard]] std::uint64_t Size() const { return before_.size; }
    // Microseconds since 1970.
    [[nodiscard]] std::int64_t Modified() const;

  private:
    void RefuseChanged() const;

    FileLayer& files_;
    std::string path_;
    FileHandle handle_;
    FileStatus before_;
    std::uint64_t read_ = 0;
};

}  // namespace kxudm::vault

#endif
