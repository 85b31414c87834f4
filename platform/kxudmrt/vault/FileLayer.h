// Files as the vault takes them: every call that it makes to the machine goes through this
// interface, so that tests can make any of them fail.
//
// Layer: vault, at its bottom. Paths are UTF-8. Failures are thrown as FileError and leave nothing
// open. A layer may be shared by threads; what it opens belongs to the caller, who closes it (see
// FileHandle).
#ifndef KXUDMRT_VAULT_FILELAYER_H
#define KXUDMRT_VAULT_FILELAYER_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "vault/FileError.h"

namespace kxudm::vault {

enum class FileKind { Regular, Folder, Link, Other };

struct FileStatus {
    FileKind kind = FileKind::Other;
    std::uint64_t size = 0;
    std::int64_t modified = 0;  // nanoseconds since 1970
    std::int64_t changed = 0;   // of content or of what is recorded about it, nanoseconds
    std::uint64_t links = 0;    // names that the file has; 0 once the last one is removed
};

struct OpenFile {
    int descriptor = -1;
    std::string path = {};
};

class FileLayer {
  public:
    FileLayer() = default;
    FileLayer(const FileLayer&) = default;
    FileLayer& operator=(const FileLayer&) = default;
    virtual ~FileLayer();

    // --- By path ---

    // False where nothing has this name. A symbolic link is told as such, not followed.
    virtual bool Status(const std::string& path, FileStatus& status) = 0;
    // The names in a folder, without "." and "..", in no order. False where there is none.
    virtual bool List(const std::string& folder, std::vector<std::string>& names) = 0;
    // Succeeds where the folder is there already. Its parent must be there (ENOENT).
    virtual void MakeFolder(const std::string& path) = 0;
    // Makes the names in a folder survive a loss of power.
    virtual void FlushFolder(const std::string& path) = 0;
    // Replaces what has the new name, in one step. Both are on one file system. The file of a
    // database that is open in this process is refused with UDMStoreException.
    virtual void Rename(const std::string& from, const std::string& to) = 0;
    // False, and nothing done, where something has the new name.
    virtual bool RenameToNew(const std::string& from, const std::string& to) = 0;
    // False where nothing has this name.
    virtual bool Remove(const std::string& path) = 0;
    // Sets the time of modification to now. False where nothing has this name.
    virtual bool Touch(const std::string& path) = 0;

    // --- Open files ---

    // Follows symbolic links and does not wait for the other end of a pipe. False where nothing has
    // this name. Refuses, with UDMStoreException, the file of a database that is open in this
    // process, since closing it would take the locks from that.
    virtual bool OpenToRead(const std::string& path, OpenFile& file) = 0;
    // A file that was not there before (else EEXIST), to write to.
    virtual void Create(const std::string& path, unsigned mode, OpenFile& file) = 0;
    // A folder, for FlushFileSystem.
    virtual void OpenFolder(const std::string& path, OpenFile& file) = 0;
    virtual FileStatus Status(const OpenFile& file) = 0;
    // Both go on where the last call ended and may do less than `size`; a read of 0 is the end.
    virtual std::size_t Read(const OpenFile& file, char* bytes, std::size_t size) = 0;
    virtual std::size_t Write(const OpenFile& file, const char* bytes, std::size_t size) = 0;
    virtual void SetModified(const OpenFile& file, std::int64_t microseconds) = 0;
    // Makes the content survive a loss of power.
    virtual void Flush(const OpenFile& file) = 0;
    // The same for everything on the file system of `file`. Reports what failed to be written since
    // `file` was opened.
    virtual void FlushFileSystem(const OpenFile& file) = 0;
    // The file counts as closed also where this throws.
    virtual void Close(OpenFile& file) = 0;
};

// The machine's own, of process lifetime.
FileLayer& MachineFiles();

// Closes a file at the end of its scope; a failure then stays unheard, so what was written is
// closed explicitly.
class FileHandle {
  public:
    explicit FileHandle(FileLayer& files) : files_(files) {}
    ~FileHandle();
    FileHandle(const FileHandle&) = delete;
    FileHandle& operator=(const FileHandle&) = delete;

    [[nodiscard]] OpenFile& File() { return file_; }
    void Close();

  private:
    FileLayer& files_;
    OpenFile file_;
};

}  // namespace kxudm::vault

#endif
