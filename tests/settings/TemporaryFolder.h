// A folder of its own for each test, removed with everything in it.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

namespace kxct::test {

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "kxct-XXXXXX").string();
        if (!mkdtemp(name.data())) {
            throw std::runtime_error("no temporary folder at " + name);
        }
        _path = std::filesystem::canonical(name).string();
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(_path, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& Path() const { return _path; }
    std::string operator/(const std::string& name) const { return _path + "/" + name; }

    /// Writes a file in the folder and gives its path.
    std::string File(const std::string& name, const std::string& content) const {
        const std::string path = *this / name;
        std::filesystem::create_directories(std::filesystem::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << content;
        return path;
    }

    std::size_t Entries() const {
        std::size_t count = 0;
        for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(_path)) {
            ++count;
        }
        return count;
    }

  private:
    std::string _path;
};

inline std::string Content(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

}  // namespace kxct::test
