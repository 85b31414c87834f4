// The parameter map of a session, read with checks.
//
// Layer: providers. Errors name the key and what is wrong with it; a password is never looked at.
#pragma once

#include <kxudm/UDMProfileMgr.h>

#include <string_view>

namespace kxudm::providers {

class Parameters {
  public:
    explicit Parameters(const UDMProfileMgr::Parameters& map) : _map(map) {}

    // The text under a key; empty if it is missing. Throws UDMException if it is not UTF-8 or holds
    // a zero byte: such a text would be another one, or cut, wherever it is kept.
    [[nodiscard]] kxString Text(const kxString& key) const;
    // Throws UDMException if it is missing or empty.
    [[nodiscard]] kxString Required(const kxString& key) const;
    // A directory or file in absolute and normal form; empty if it is missing.
    [[nodiscard]] kxString Path(const kxString& key) const;
    [[nodiscard]] kxString RequiredPath(const kxString& key) const;
    // "RepositoryName": one that can name a file.
    [[nodiscard]] kxString RepositoryName() const;

  private:
    const UDMProfileMgr::Parameters& _map;
};

// Throws UDMException for a path with a zero byte, which the machine would cut there. The result is
// absolute, without "." and "..", symbolic links followed as far as the path is there.
[[nodiscard]] kxString NormalPath(const kxString& path);
// Throws UDMException unless a library can have this name.
void RequireLibraryName(const kxString& name);

}  // namespace kxudm::providers
