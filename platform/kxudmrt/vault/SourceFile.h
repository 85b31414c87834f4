// A file of the user's while it is read into the vault. What is read must be the file as it is at
// one moment, so one that changes or goes away meanwhile is refused.
#ifndef KXUDMRT_VAULT_SOURCEFILE_H
#define KXUDMRT_VAULT_SOURCEFILE_H

#include <cstdint>
#include <string>

#include "vault/FileLayer.h"

namespace kxudm::vault {

// Where a content comes from: a file of the user's, an entry of an archive.
class Source {
  public:
    Source() = default;
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    virtual ~Source() = default;

    // Reads until `size` bytes are there or the content ends; less than `size` says that it ended.
    virtual std::size_t Fill(char* bytes, std::size_t size) = 0;
    // Throws UDMStoreException if what was read is not the whole content.
    virtual void CheckUnchanged() = 0;
    [[nodiscard]] virtual std::uint64_t Size() const = 0;
    // Microseconds since 1970.
    [[nodiscard]] virtual std::int64_t Modified() const = 0;
};

class SourceFile final : public Source {
  public:
    // Only regular files are taken, and symbolic links to such.
    SourceFile(FileLayer& files, const std::string& path);

    std::size_t Fill(char* bytes, std::size_t size) override;
    // Throws UDMStoreException if the file is not what it was when it was opened.
    void CheckUnchanged() override;

    [[nodiscard]] std::uint64_t Size() const override { return before_.size; }
    [[nodiscard]] std::int64_t Modified() const override;

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
