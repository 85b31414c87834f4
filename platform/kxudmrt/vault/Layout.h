// Where things lie in a vault's directory:
//
//     ab/ab12...         a content as it is, named after its SHA-256
//     ab/ab12....zst     a content as one Zstandard frame
//     tmp/.part-...      files that are being written
//
// One level of 256 folders, each made with its first file: a second level makes removal many times
// slower and lookups a third. Files are read-only, as nothing ever changes them.
//
// Layer: vault, inside. Names come into a folder only by renaming a whole file.
#ifndef KXUDMRT_VAULT_LAYOUT_H
#define KXUDMRT_VAULT_LAYOUT_H

#include <bitset>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "vault/FileLayer.h"
#include "vault/TemporaryFile.h"

namespace kxudm::vault {

// A file of a vault.
struct Entry {
    std::string hash = {};  // empty for a file that no vault has put there
    std::string path = {};
    std::uint64_t storedSize = 0;
    bool compressed = false;
    std::int64_t modified = 0;  // microseconds since 1970, of the last time it was added
};

class Layout {
  public:
    Layout(std::string directory, FileLayer& files);

    [[nodiscard]] FileLayer& Files() const { return files_; }
    [[nodiscard]] const std::string& Directory() const { return directory_; }

    // Where the content is, or would be as it is.
    [[nodiscard]] std::string PathOf(const std::string& hash) const;
    // The path that it has, stored in this way.
    [[nodiscard]] std::string NameOf(const std::string& hash, bool compressed) const;
    // False where the content is not there.
    bool Find(const std::string& hash, Entry& entry) const;
    // Tells a purge that the content is in use again. False if it went away meanwhile.
    bool Freshen(const Entry& entry) const;
    // In no order. Files may come and go meanwhile.
    void ForEach(const std::function<void(const Entry&)>& visit) const;
    bool Remove(const std::string& hash) const;
    // Removes it unless it was freshened at `before` (microseconds since 1970) or later, also in
    // this very moment by another process. The bytes that it took; none if it stays or was gone.
    std::optional<std::uint64_t> RemoveOlder(const Entry& entry, std::int64_t before) const;

    // Makes the vault's directory where it is missing, with its parents.
    std::unique_ptr<TemporaryFile> NewTemporary();
    void OpenDirectory(OpenFile& file);
    // `impostor`, if not empty, is a file that bears the content's name wrongly; it goes.
    void MoveIn(TemporaryFile& file,
                const std::string& hash,
                bool compressed,
                const std::string& impostor);
    // Makes the name of a content survive a loss of power.
    void FlushName(const std::string& hash);

    // Removes what processes left that ended while they wrote, and what writers elsewhere have not
    // touched for a day. `now` in microseconds since 1970. The number of removed files.
    std::size_t RemoveStaleTemporaries(std::int64_t now) const;

  private:
    [[nodiscard]] std::string FolderOf(const std::string& hash) const;
    [[nodiscard]] std::string TemporaryFolder() const;
    void VisitFolder(const std::string& name, const std::function<void(const Entry&)>& visit) const;
    void MakeDirectory();

    const std::string directory_;
    FileLayer& files_;
    // Folders whose own name is known to survive.
    std::bitset<256> flushedFolders_;
};

}  // namespace kxudm::vault

#endif
