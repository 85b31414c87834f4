// A file while it is being written, under a temporary name. It gets its final name only when it is
// whole; until then its end, an exception's too, removes it.
#ifndef KXUDMRT_VAULT_TEMPORARYFILE_H
#define KXUDMRT_VAULT_TEMPORARYFILE_H

#include <cstdint>
#include <string>

#include "vault/FileLayer.h"

namespace kxudm::vault {

// The folder that a file with this path lies in: "." for a name, "/" at the top.
[[nodiscard]] std::string FolderOf(const std::string& path);

class TemporaryFile {
  public:
    // Makes the file in `folder`, which must be there (ENOENT). `mode` as of open(2). The layer is
    // used, not owned.
    TemporaryFile(FileLayer& files, const std::string& folder, unsigned mode);
    // One that was let go, from then on this object's.
    TemporaryFile(FileLayer& files, std::string path);
    ~TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    void Write(const char* bytes, std::size_t size);
    void SetModified(std::int64_t microseconds);
    void Flush();
    // Afterwards only what follows.
    void Close();

    [[nodiscard]] const std::string& Path() const { return path_; }
    // Whoever knows its path has to remove it from now on.
    void LetGo() { exists_ = false; }
    // Replaces what has the name.
    void MoveTo(const std::string& path);
    // False, and the file still temporary, where something has the name.
    bool MoveToNew(const std::string& path);
    // Removes it now, where a failure is still heard.
    void Discard();

  private:
    FileLayer& files_;
    std::string path_;
    FileHandle handle_;
    bool exists_ = false;
};

}  // namespace kxudm::vault

#endif
