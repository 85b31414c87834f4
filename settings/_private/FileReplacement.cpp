#include "settings/_private/FileReplacement.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <boost/filesystem/operations.hpp>
#include <cerrno>
#include <cstdio>
#include <string>

namespace kxct {

namespace fs = boost::filesystem;

namespace {

constexpr mode_t defaultMode = 0666;  // less the process's umask
constexpr mode_t permissionBits = 07777;

fs::path TemporaryName(const fs::path& target) {
    static std::atomic<unsigned> counter{0};
    return target.string() + "." + std::to_string(getpid()) + "-" + std::to_string(++counter) + "~";
}

bool FolderTakesNoFile(int error) {
    return error == EACCES || error == EPERM || error == EROFS || error == ENAMETOOLONG;
}

bool SyncFile(const fs::path& path) {
    const int descriptor = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0) {
        return false;
    }
    const bool synced = fsync(descriptor) == 0;
    return close(descriptor) == 0 && synced;
}

// Lets the rename itself survive a power cut. Best effort: the content is complete either way.
void SyncFolder(const fs::path& folder) {
    const int descriptor =
        open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        fsync(descriptor);
        close(descriptor);
    }
}

}  // namespace

FileReplacement::FileReplacement(const fs::path& target) : _target(target) {
    struct stat link {};
    struct stat file {};
    const bool exists = lstat(target.c_str(), &link) == 0;
    const bool leadsToFile = stat(target.c_str(), &file) == 0 && S_ISREG(file.st_mode);
    bool replace = !exists || leadsToFile;
    if (leadsToFile && access(target.c_str(), W_OK) != 0) {
        replace = false;  // a write-protected file stays one, also in a folder that is not
    } else if (leadsToFile && S_ISLNK(link.st_mode)) {
        boost::system::error_code error;
        _target = fs::canonical(target, error);
        replace = !error;
    }
    if (replace && CreateTemporary(leadsToFile ? file.st_mode & permissionBits : defaultMode)) {
        if (leadsToFile) {
            TakeOver();
        }
        _stream.open(_temporary, std::ios::binary | std::ios::trunc);
    } else if (!replace || FolderTakesNoFile(errno)) {
        _stream.open(_target, std::ios::binary | std::ios::trunc);
    } else {
        _stream.setstate(std::ios::failbit);
    }
}

FileReplacement::~FileReplacement() {
    if (!_temporary.empty()) {
        _stream.close();
        unlink(_temporary.c_str());
    }
}

bool FileReplacement::CreateTemporary(mode_t mode) {
    int descriptor = -1;
    fs::path name;
    do {
        name = TemporaryName(_target);
        descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
    } while (descriptor < 0 && errno == EEXIST);
    if (descriptor < 0) {
        return false;
    }
    close(descriptor);
    _temporary = name;
    return true;
}

// Owner and mode of the file that is replaced; the owner first, since a change of owner clears bits
// of the mode.
void FileReplacement::TakeOver() {
    struct stat file {};
    if (stat(_target.c_str(), &file) != 0) {
        return;
    }
    if (chown(_temporary.c_str(), file.st_uid, file.st_gid) != 0 &&
        chown(_temporary.c_str(), static_cast<uid_t>(-1), file.st_gid) != 0) {
        // Neither may be set by this user: the file is then the writing user's own.
        errno = 0;
    }
    chmod(_temporary.c_str(), file.st_mode & permissionBits);
}

bool FileReplacement::Commit() {
    _stream.flush();
    bool arrived = _stream.good();
    _stream.close();
    arrived = arrived && _stream.good();
    if (_temporary.empty()) {
        return arrived;
    }
    arrived =
        arrived && SyncFile(_temporary) && std::rename(_temporary.c_str(), _target.c_str()) == 0;
    if (arrived) {
        SyncFolder(_target.parent_path());
    } else {
        unlink(_temporary.c_str());
    }
    _temporary.clear();
    return arrived;
}

}  // namespace kxct
