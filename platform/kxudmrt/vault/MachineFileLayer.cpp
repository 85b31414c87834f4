#include <dirent.h>
#include <fcntl.h>
#include <stdio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <memory>

#include "core/HeldFiles.h"
#include "vault/DocumentName.h"
#include "vault/FileLayer.h"

namespace kxudm::vault {
namespace {

[[noreturn]] void Fail(const char* action, const std::string& path) {
    throw FileError(errno, action, path);
}

// A path with a NUL would name another file than it says.
const char* Native(const std::string& path, const char* action) {
    if (path.empty() || path.find('\0') != std::string::npos) {
        throw FileError(EINVAL, action, path);
    }
    return path.c_str();
}

void RequireNotHeld(const std::string& path, const char* action) {
    if (core::HeldFiles::Have(path)) {
        throw UDMStoreException("'" + Printable(path) + "' can't be " + action +
                                ": it is part of a library that is open in this program; close "
                                "that library first, or name another file");
    }
}

bool NothingThere() {
    return errno == ENOENT || errno == ENOTDIR;
}

template <typename Call>
auto Uninterrupted(Call call) {
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

std::int64_t Nanoseconds(const timespec& time) {
    return static_cast<std::int64_t>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

FileStatus Translate(const struct stat& from) {
    FileStatus status;
    status.kind = S_ISREG(from.st_mode)   ? FileKind::Regular
                  : S_ISDIR(from.st_mode) ? FileKind::Folder
                  : S_ISLNK(from.st_mode) ? FileKind::Link
                                          : FileKind::Other;
    status.size = static_cast<std::uint64_t>(from.st_size);
    status.modified = Nanoseconds(from.st_mtim);
    status.changed = Nanoseconds(from.st_ctim);
    status.links = from.st_nlink;
    return status;
}

int OpenOrFail(const std::string& path, int flags, const char* action, unsigned mode = 0) {
    const char* native = Native(path, action);
    const int descriptor =
        Uninterrupted([&] { return ::open(native, flags | O_CLOEXEC | O_NOCTTY, mode); });
    if (descriptor < 0) {
        Fail(action, path);
    }
    return descriptor;
}

class MachineFileLayer final : public FileLayer {
  public:
    bool Status(const std::string& path, FileStatus& status) override {
        struct stat found {};
        if (::lstat(Native(path, "examined"), &found) != 0) {
            if (NothingThere()) {
                return false;
            }
            Fail("examined", path);
        }
        status = Translate(found);
        return true;
    }

    bool List(const std::string& folder, std::vector<std::string>& names) override {
        const std::unique_ptr<DIR, int (*)(DIR*)> open(::opendir(Native(folder, "listed")),
                                                       ::closedir);
        if (open == nullptr) {
            if (errno == ENOENT) {
                return false;
            }
            Fail("listed", folder);
        }
        names.clear();
        errno = 0;
        while (const dirent* entry = ::readdir(open.get())) {
            if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0) {
                names.emplace_back(entry->d_name);
            }
            errno = 0;
        }
        if (errno != 0) {
            Fail("listed", folder);
        }
        return true;
    }

    void MakeFolder(const std::string& path) override {
        struct stat found {};
        if (::mkdir(Native(path, "made"), 0777) == 0) {
            return;
        }
        const int reason = errno;
        if (reason != EEXIST || ::stat(path.c_str(), &found) != 0 || !S_ISDIR(found.st_mode)) {
            throw FileError(reason, "made", path);
        }
    }

    void FlushFolder(const std::string& path) override {
        FileHandle folder(*this);
        OpenFolder(path, folder.File());
        // fdatasync would not do: it may leave out new names.
        if (Uninterrupted([&] { return ::fsync(folder.File().descriptor); }) != 0) {
            Fail("flushed to the disk", path);
        }
    }

    void Rename(const std::string& from, const std::string& to) override {
        Native(from, "renamed");
        Native(to, "made");
        RequireNotHeld(to, "replaced");
        if (::rename(from.c_str(), to.c_str()) != 0) {
            Fail("made", to);
        }
    }

    bool RenameToNew(const std::string& from, const std::string& to) override {
        Native(from, "renamed");
        Native(to, "made");
        if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) {
            return true;
        }
        // Some network file systems can't do it in one step; a second name never replaces either.
        if (errno == EINVAL || errno == ENOSYS) {
            if (::link(from.c_str(), to.c_str()) == 0) {
                Remove(from);
                return true;
            }
        }
        if (errno == EEXIST) {
            return false;
        }
        Fail("made", to);
    }

    bool Remove(const std::string& path) override {
        if (::unlink(Native(path, "removed")) == 0) {
            return true;
        }
        if (NothingThere()) {
            return false;
        }
        Fail("removed", path);
    }

    bool Touch(const std::string& path) override {
        if (::utimensat(AT_FDCWD, Native(path, "touched"), nullptr, 0) == 0) {
            return true;
        }
        if (NothingThere()) {
            return false;
        }
        Fail("touched", path);
    }

    bool OpenToRead(const std::string& path, OpenFile& file) override {
        const char* native = Native(path, "read");
        RequireNotHeld(path, "read");
        const int descriptor = Uninterrupted(
            [&] { return ::open(native, O_RDONLY | O_NONBLOCK | O_CLOEXEC | O_NOCTTY); });
        if (descriptor < 0) {
            if (NothingThere()) {
                return false;
            }
            Fail("read", path);
        }
        file = {descriptor, path};
        return true;
    }

    void Create(const std::string& path, unsigned mode, OpenFile& file) override {
        const int descriptor = OpenOrFail(path, O_WRONLY | O_CREAT | O_EXCL, "made", mode);
        file = {descriptor, path};
    }

    void OpenFolder(const std::string& path, OpenFile& file) override {
        const int descriptor = OpenOrFail(path, O_RDONLY | O_DIRECTORY, "opened");
        file = {descriptor, path};
    }

    FileStatus Status(const OpenFile& file) override {
        struct stat found {};
        if (::fstat(file.descriptor, &found) != 0) {
            Fail("examined", file.path);
        }
        return Translate(found);
    }

    std::size_t Read(const OpenFile& file, char* bytes, std::size_t size) override {
        const auto count = Uninterrupted([&] { return ::read(file.descriptor, bytes, size); });
        if (count < 0) {
            Fail("read", file.path);
        }
        return static_cast<std::size_t>(count);
    }

    std::size_t Write(const OpenFile& file, const char* bytes, std::size_t size) override {
        const auto count = Uninterrupted([&] { return ::write(file.descriptor, bytes, size); });
        if (count < 0) {
            Fail("written", file.path);
        }
        return static_cast<std::size_t>(count);
    }

    void SetModified(const OpenFile& file, std::int64_t microseconds) override {
        timespec times[2] = {};
        times[0].tv_nsec = UTIME_OMIT;
        std::int64_t rest = microseconds % 1'000'000;
        times[1].tv_sec = static_cast<time_t>(microseconds / 1'000'000);
        if (rest < 0) {
            rest += 1'000'000;
            --times[1].tv_sec;
        }
        times[1].tv_nsec = static_cast<long>(rest * 1000);
        if (::futimens(file.descriptor, times) != 0) {
            Fail("given its time", file.path);
        }
    }

    void Flush(const OpenFile& file) override {
        if (Uninterrupted([&] { return ::fdatasync(file.descriptor); }) != 0) {
            Fail("flushed to the disk", file.path);
        }
    }

    void FlushFileSystem(const OpenFile& file) override {
        if (::syncfs(file.descriptor) != 0) {
            Fail("flushed to the disk with its file system", file.path);
        }
    }

    void Close(OpenFile& file) override {
        const int descriptor = file.descriptor;
        file.descriptor = -1;
        // After an interruption the descriptor is gone all the same.
        if (::close(descriptor) != 0 && errno != EINTR) {
            Fail("closed", file.path);
        }
    }
};

}  // namespace

FileLayer::~FileLayer() = default;

FileLayer& MachineFiles() {
    // Never destroyed: sessions may end with the host's static objects.
    static MachineFileLayer& layer = *new MachineFileLayer;
    return layer;
}

FileHandle::~FileHandle() {
    try {
        Close();
    } catch (const std::exception&) {
        // Nobody could act on it here.
    }
}

void FileHandle::Close() {
    if (file_.descriptor >= 0) {
        files_.Close(file_);
    }
}

}  // namespace kxudm::vault
