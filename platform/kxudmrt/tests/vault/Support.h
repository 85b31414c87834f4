// What the tests of the vault share: folders, files, other users, and a file layer that interferes.
#ifndef KXUDMRT_TESTS_VAULT_SUPPORT_H
#define KXUDMRT_TESTS_VAULT_SUPPORT_H

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "vault/Vault.h"

namespace kxudm::vault {

// Removed with all that is in it.
class Folder {
  public:
    explicit Folder(const std::string& parent = {});
    ~Folder();
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    [[nodiscard]] const std::string& Path() const { return path_; }
    [[nodiscard]] std::string File(const std::string& name) const { return path_ + "/" + name; }
    // Answers the path.
    std::string Write(const std::string& name, const std::string& content) const;

  private:
    std::string path_;
};

std::string ReadFile(const std::string& path);
bool Exists(const std::string& path);
std::size_t CountFiles(const std::string& folder);

// Repeats itself, so that it shrinks; different for each seed.
std::string Deck(std::size_t size, int seed = 1);
// Does not shrink.
std::string Noise(std::size_t size, int seed = 1);

// The file of the vault that holds the content; empty if there is none.
std::string FileOf(Vault& vault, const std::string& hash);
// Files that are being written.
std::size_t Temporaries(const std::string& vaultDirectory);
// Reads everything in the vault; one line for each thing that is wrong.
std::string Problems(Vault& vault);

// What is allocated and not given back. Sanitizers keep what was given back for a while.
std::size_t HeapInUse();
// The most memory that this process has had, in bytes; with a sanitizer the most that was allocated
// at a time since the first call. Two of them tell how far the peak rose in between.
std::ptrdiff_t PeakMemory();

// The text of what the call throws; empty if nothing.
std::string ErrorOf(const std::function<void()>& call);
// Runs the call in a child process and answers its result. A child that dies answers "died".
std::string InChild(const std::function<std::string()>& call);
// The same as a user without rights, where this process may become one.
std::string AsNobody(const std::function<std::string()>& call);

// Forwards to the machine, apart from flushes: what they do can't be seen without a loss of power,
// and they take their time. `before` hears of each call first, with its name and path, and may
// throw in its place; a close happens all the same. Tests may derive from it what meddles more.
class MeddlingLayer : public FileLayer {
  public:
    std::function<void(const std::string& call, const std::string& path)> before;
    std::size_t mostBytes = static_cast<std::size_t>(-1);  // of a read or write

    bool Status(const std::string& path, FileStatus& status) override;
    bool List(const std::string& folder, std::vector<std::string>& names) override;
    void MakeFolder(const std::string& path) override;
    void FlushFolder(const std::string& path) override;
    void Rename(const std::string& from, const std::string& to) override;
    bool RenameToNew(const std::string& from, const std::string& to) override;
    bool Remove(const std::string& path) override;
    bool Touch(const std::string& path) override;
    bool OpenToRead(const std::string& path, OpenFile& file) override;
    void Create(const std::string& path, unsigned mode, OpenFile& file) override;
    void OpenFolder(const std::string& path, OpenFile& file) override;
    FileStatus Status(const OpenFile& file) override;
    std::size_t Read(const OpenFile& file, char* bytes, std::size_t size) override;
    std::size_t Write(const OpenFile& file, const char* bytes, std::size_t size) override;
    void SetModified(const OpenFile& file, std::int64_t microseconds) override;
    void Flush(const OpenFile& file) override;
    void FlushFileSystem(const OpenFile& file) override;
    void Close(OpenFile& file) override;

  private:
    FileLayer& Hear(const char* call, const std::string& path);

    // Several threads may call; `before` hears of one after the other.
    std::mutex mutex_;
};

}  // namespace kxudm::vault

#endif
