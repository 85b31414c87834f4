#include <dirent.h>
#include <fcntl.h>
#include <kxlmosa/osaDirectory.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <memory>
#include <string_view>

namespace {

constexpr mode_t PermissionBits = 0777;
constexpr mode_t OwnerMayFill = 0300;

struct CloseDirectory {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

bool IsDirectory(DIR* directory, const dirent& entry) {
    if (entry.d_type == DT_DIR) {
        return true;
    }
    if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) {
        return false;
    }
    struct stat status;
    return ::fstatat(::dirfd(directory), entry.d_name, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

// 0, or errno if the path is no directory afterwards. Another process may make it first.
int MakeOne(const kxString& path, mode_t mode) {
    if (::mkdir(path.c_str(), mode) == 0) {
        return 0;
    }
    const int error = errno;
    struct stat status;
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) ? 0 : error;
}

}  // namespace

kxStlVector<kxString> osaDirectory::GetFileNames(const kxString& path) {
    kxStlVector<kxString> names;
    if (path.find('\0') != kxString::npos) {
        return names;
    }
    const std::unique_ptr<DIR, CloseDirectory> directory(::opendir(path.c_str()));
    if (directory == nullptr) {
        return names;
    }
    while (const dirent* entry = ::readdir(directory.get())) {
        if (!IsDirectory(directory.get(), *entry)) {
            names.emplace_back(entry->d_name);
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

int osaDirectory::Create(const kxString& path, int mode, bool recursive) {
    if (path.find('\0') != kxString::npos) {
        return EINVAL;
    }
    const mode_t permissions = static_cast<mode_t>(mode) & PermissionBits;
    const int error = MakeOne(path, permissions);
    if (error != ENOENT || !recursive) {
        return error;
    }
    for (std::size_t end = path.find('/', 1); end != kxString::npos;
         end = path.find('/', end + 1)) {
        const int parentError = MakeOne(path.substr(0, end), permissions | OwnerMayFill);
        if (parentError != 0) {
            return parentError;
        }
    }
    return MakeOne(path, permissions);
}
