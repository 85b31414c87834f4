// The vaults of a library as one session uses them: the common one, "vault" in the base directory,
// and those that entities were given by SetVault.
//
// Layer: profile. A vault is opened on its first use and takes a few MiB while the session lives.
// All file access of a session's documents goes through the file layer that is given here.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "vault/Vault.h"

namespace kxudm::profile {

class LibraryVaults {
  public:
    // The base directory in absolute form. The layer is used, not owned.
    LibraryVaults(std::string baseDirectory, vault::FileLayer& files)
        : _baseDirectory(std::move(baseDirectory)), _files(files) {}

    // The vault in a directory below the base directory, "" for the common one: as rows name it.
    // Throws UDMException for a directory that leads anywhere else, for rows may come from anybody.
    // What awaits Settle there is settled first, so that whoever looks finds every content.
    vault::Vault& In(const std::string& directory);

    // Takes a file into a vault together with others: it is safe only after Settle, which flushes
    // all of them at once. Its row must not be committed before.
    [[nodiscard]] vault::Stored TakeInLater(const std::string& directory,
                                            const std::string& path,
                                            const vault::AddOptions& options);
    // After a failure the contents of the group are lost; it fails again, and so does In, until
    // Forget.
    void Settle();
    // Ends the group; what was not settled is removed.
    void Forget() noexcept;

    // How rows name the vault in the directory with this path. Throws UDMException unless it lies
    // below the base directory and outside of the common vault; the base directory itself stands
    // for the common one.
    [[nodiscard]] std::string DirectoryOf(const std::string& path) const;
    // Whether a file with this path is part of a vault of this library.
    [[nodiscard]] bool Keeps(const std::string& path) const;

    [[nodiscard]] vault::FileLayer& Files() const { return _files; }

  private:
    struct Used {
        explicit Used(std::string directory, vault::FileLayer& files)
            : vault(std::move(directory), files) {}
        vault::Vault vault;
        std::optional<vault::Batch> awaiting = std::nullopt;
    };

    Used& Find(const std::string& directory);

    const std::string _baseDirectory;
    vault::FileLayer& _files;
    std::map<std::string, std::unique_ptr<Used>> _vaults;
};

}  // namespace kxudm::profile
