// A real file system of a few MiB, in memory, for what a full disk does. It is mounted where only
// one process of the test sees it, and is gone with that.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>

namespace kxudm::test {

// Makes this process see mounts of its own. Root may; everybody else becomes root of a user
// namespace first, which most machines allow.
inline bool SeeMountsOfItsOwn() {
    const uid_t user = geteuid();
    const gid_t group = getegid();
    if (unshare(CLONE_NEWNS) != 0) {
        if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
            return false;
        }
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/uid_map") << "0 " << user << " 1";
        std::ofstream("/proc/self/gid_map") << "0 " << group << " 1";
    }
    return mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) == 0;
}

// Runs `body` in a process that may mount without anybody's noticing; false where the machine
// forbids that. Open no library before. Failed expectations of the body fail the test.
inline bool WithMountsOfItsOwn(const std::function<void()>& body) {
    constexpr int FORBIDDEN = 77;
    std::fflush(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        if (!SeeMountsOfItsOwn()) {
            _exit(FORBIDDEN);
        }
        try {
            body();
        } catch (const std::exception& failure) {
            ADD_FAILURE() << failure.what();
        }
        std::fflush(nullptr);
        _exit(testing::Test::HasFailure() ? 1 : 0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    EXPECT_TRUE(code == 0 || code == FORBIDDEN) << "the process ended with " << code;
    return code != FORBIDDEN;
}

// Nothing else makes a disk full, or a file system read-only, the way a real one is: the test is
// left out where neither root nor a user namespace may mount, and then fails where CI is set, since
// nothing may be left out there. What a file layer can only pretend is tested beside it everywhere.
#define KXUDM_WITH_MOUNTS(...)                                                                 \
    if (!WithMountsOfItsOwn(__VA_ARGS__)) {                                                    \
        GTEST_SKIP() << "this machine lets neither this user nor a user namespace mount; run " \
                        "the test as root, or allow unprivileged user namespaces";             \
    }

class SmallDisk {
  public:
    // Makes the directory.
    SmallDisk(std::string directory, int mebibytes) : _directory(std::move(directory)) {
        std::filesystem::create_directories(_directory);
        const std::string size = "size=" + std::to_string(mebibytes) + "m";
        if (mount("kxudm", _directory.c_str(), "tmpfs", 0, size.c_str()) != 0) {
            throw std::runtime_error("no file system at " + _directory);
        }
    }
    ~SmallDisk() { umount2(_directory.c_str(), MNT_DETACH); }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

    // Leaves room for so many bytes and no more.
    void FillUpTo(std::size_t left) {
        struct statvfs state {};
        if (statvfs(_directory.c_str(), &state) != 0) {
            throw std::runtime_error("no state of " + _directory);
        }
        const std::size_t room = state.f_bavail * state.f_bsize;
        const int file = open(Filler().c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600);
        const bool filled =
            room <= left || posix_fallocate(file, 0, static_cast<off_t>(room - left)) == 0;
        close(file);
        if (!filled) {
            throw std::runtime_error("can't fill " + _directory);
        }
    }
    void MakeRoom() { std::filesystem::remove(Filler()); }

  private:
    [[nodiscard]] std::string Filler() const { return _directory + "/filler"; }

    std::string _directory;
};

}  // namespace kxudm::test
