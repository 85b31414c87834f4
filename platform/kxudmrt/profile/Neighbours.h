// The libraries that lie beside a library. They share its vaults, so that what one of them uses is
// nobody's orphan.
//
// Layer: profile. Opened for the care of a library alone, each on a connection of its own. Nothing
// in them is changed, their schema neither.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "sql/Connection.h"

namespace kxudm::profile {

class Neighbours {
  public:
    // Of the library file; opens all others in its directory.
    explicit Neighbours(const std::string& libraryFile);

    // Why one of them can't be read, by file; empty if all can. Then Uses doesn't know all.
    [[nodiscard]] const std::vector<std::pair<std::string, std::string>>& Unreadable() const {
        return _unreadable;
    }
    // Whether one of them names the content.
    [[nodiscard]] bool Uses(const std::string& vault, const std::string& hash);
    // Vault directories that they name beside the common one.
    void AddVaults(std::vector<std::string>& vaults);
    // Nobody writes to them until this object ends.
    void Lock();

  private:
    std::vector<std::unique_ptr<sql::Connection>> _libraries;
    std::vector<std::unique_ptr<sql::Transaction>> _locks;
    std::vector<std::pair<std::string, std::string>> _unreadable;
};

}  // namespace kxudm::profile
