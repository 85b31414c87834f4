// A folder of one test, removed with all that is in it.
#ifndef KXUDMRT_TESTS_SQL_TEMPORARYFOLDER_H
#define KXUDMRT_TESTS_SQL_TEMPORARYFOLDER_H

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kxudmXXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        path_ = pattern;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::string& Path() const { return path_; }
    [[nodiscard]] std::string File(const std::string& name) const { return path_ + "/" + name; }

  private:
    std::string path_;
};

#endif
