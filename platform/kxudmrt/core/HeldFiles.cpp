#include "core/HeldFiles.h"

#include <sys/stat.h>

#include <mutex>
#include <optional>
#include <set>

namespace kxudm::core {

namespace {

using File = std::pair<dev_t, ino_t>;

// A file counts as often as it is held.
struct Held {
    std::mutex mutex;
    std::multiset<File> files;
};

Held& All() {
    // Never destroyed: sessions of a host's static objects give their files back last.
    static Held& held = *new Held;
    return held;
}

std::optional<File> FileAt(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return File(status.st_dev, status.st_ino);
}

}  // namespace

HeldFiles::HeldFiles(const std::vector<std::string>& paths) {
    for (const std::string& path : paths) {
        if (const std::optional<File> file = FileAt(path)) {
            _files.push_back(*file);
        }
    }
    const std::lock_guard<std::mutex> lock(All().mutex);
    All().files.insert(_files.begin(), _files.end());
}

HeldFiles::~HeldFiles() {
    const std::lock_guard<std::mutex> lock(All().mutex);
    for (const File& file : _files) {
        All().files.erase(All().files.find(file));
    }
}

bool HeldFiles::Have(const std::string& path) {
    const std::optional<File> file = FileAt(path);
    const std::lock_guard<std::mutex> lock(All().mutex);
    return file && All().files.contains(*file);
}

}  // namespace kxudm::core
