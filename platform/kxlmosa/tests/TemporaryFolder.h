#pragma once

#include <kxutl/kxString.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

// A folder of its own for one test, removed with all that is in it.
class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string name = (std::filesystem::temp_directory_path() / "kxlmosa-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder: " + name);
        }
        _path = name;
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(std::string(_path), ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    kxString operator/(const kxString& name) const { return _path + "/" + name; }
    const kxString& path() const { return _path; }
    void MakeFile(const kxString& name) const { std::ofstream((*this / name).c_str()) << "x"; }

  private:
    kxString _path;
};
