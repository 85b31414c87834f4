#include "profile/LibraryVaults.h"

#include <filesystem>
#include <optional>
#include <utility>

#include "profile/FileIntake.h"
#include "vault/DocumentName.h"
#include "vault/Sha256.h"

namespace kxudm::profile {

namespace {

namespace fs = std::filesystem;

constexpr const char* COMMON = "vault";

fs::path Canonical(const fs::path& path) {
    std::error_code error;
    fs::path canonical = fs::weakly_canonical(path, error);
    return error ? path : canonical;
}

// What is left of `path` below `base`; none if it lies elsewhere. Links may stand for the base
// directory and above it. Below it they are kept: a vault may be one to another disk.
std::optional<fs::path> BelowBase(const fs::path& path, const fs::path& base) {
    const fs::path canonicalBase = Canonical(base);
    fs::path rest;
    for (fs::path above = path;; above = above.parent_path()) {
        if (Canonical(above) == canonicalBase) {
            return rest;
        }
        if (!above.has_relative_path()) {
            return std::nullopt;
        }
        rest = rest.empty() ? above.filename() : above.filename() / rest;
    }
}

// Whether it is a directory, or can become one.
bool CanBeDirectory(const fs::path& path) {
    std::error_code error;
    fs::path there = path;
    while (!fs::exists(there, error) && there.has_relative_path()) {
        there = there.parent_path();
    }
    return fs::is_directory(there, error);
}

void CheckDirectory(const std::string& directory) {
    for (const fs::path& part : fs::path(directory)) {
        vault::CheckDocumentName(part.string());
    }
    if (fs::path(directory).is_absolute() || *fs::path(directory).begin() == COMMON) {
        throw UDMException("'" + vault::Printable(directory) +
                           "' can't be a vault beside the common one; name another directory "
                           "below the library's base directory");
    }
}

bool NamesContent(const fs::path& path) {
    const std::string name = path.filename().string();
    const std::string folder = path.parent_path().filename().string();
    return vault::IsHash(name.substr(0, name.find('.'))) && folder == name.substr(0, 2);
}

}  // namespace

vault::Vault& LibraryVaults::In(const std::string& directory) {
    Used& used = Find(directory);
    if (used.awaiting) {
        used.awaiting->Commit();
    }
    return used.vault;
}

vault::Stored LibraryVaults::TakeInLater(const std::string& directory,
                                         const std::string& path,
                                         const vault::AddOptions& options) {
    Used& used = Find(directory);
    if (!used.awaiting) {
        used.awaiting.emplace(used.vault);
    }
    return used.awaiting->Add(path, options);
}

void LibraryVaults::Settle() {
    for (const auto& [directory, used] : _vaults) {
        if (used->awaiting) {
            used->awaiting->Commit();
        }
    }
}

void LibraryVaults::Forget() noexcept {
    for (const auto& [directory, used] : _vaults) {
        used->awaiting.reset();
    }
}

LibraryVaults::Used& LibraryVaults::Find(const std::string& directory) {
    const auto found = _vaults.find(directory);
    if (found != _vaults.end()) {
        return *found->second;
    }
    if (!directory.empty()) {
        CheckDirectory(directory);
    }
    auto used = std::make_unique<Used>(
        _baseDirectory + "/" + (directory.empty() ? COMMON : directory), _files);
    return *_vaults.emplace(directory, std::move(used)).first->second;
}

std::string LibraryVaults::DirectoryOf(const std::string& path) const {
    const std::optional<fs::path> below = BelowBase(AbsolutePath(path), _baseDirectory);
    if (!below) {
        throw UDMException("The vault '" + vault::Printable(path) +
                           "' doesn't lie below the library's base directory '" + _baseDirectory +
                           "'; name a directory there");
    }
    if (below->empty() || *below == COMMON) {
        return {};
    }
    CheckDirectory(below->string());
    if (!CanBeDirectory(_baseDirectory / *below)) {
        throw UDMException("'" + vault::Printable(below->string()) +
                           "' can't be a vault, for a file lies there; name another directory "
                           "below the library's base directory");
    }
    return below->string();
}

bool LibraryVaults::Keeps(const std::string& path) const {
    const fs::path absolute = AbsolutePath(path);
    for (const fs::path& each : {absolute, Canonical(absolute)}) {
        const std::optional<fs::path> below = BelowBase(each, _baseDirectory);
        if (below && !below->empty() && (*below->begin() == COMMON || NamesContent(*below))) {
            return true;
        }
    }
    return false;
}

}  // namespace kxudm::profile
