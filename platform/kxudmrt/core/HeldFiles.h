// Files that this process holds locks on, and must not open in another way.
//
// The locks of a database belong to the process and the file: closing any descriptor of the file
// gives all of them up, also where it was only opened to be read. Another process may then write
// while this one does. So each connection tells its files here, and whoever opens or replaces files
// that a user has named asks first.
//
// Layer: core. For any thread.
#pragma once

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace kxudm::core {

class HeldFiles {
  public:
    // Those of the files that are there, until this object goes.
    explicit HeldFiles(const std::vector<std::string>& paths);
    ~HeldFiles();
    HeldFiles(const HeldFiles&) = delete;
    HeldFiles& operator=(const HeldFiles&) = delete;

    // Whether somebody holds the file that a path leads to, links followed.
    [[nodiscard]] static bool Have(const std::string& path);

  private:
    std::vector<std::pair<dev_t, ino_t>> _files;
};

}  // namespace kxudm::core
