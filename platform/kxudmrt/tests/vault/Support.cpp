#include "Support.h"

#include <grp.h>
#include <malloc.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <stdexcept>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KXCT_TEST_SANITIZED
// The compiler brings the functions, but no header of them.
extern "C" {
std::size_t __sanitizer_get_current_allocated_bytes();
std::size_t __sanitizer_get_allocated_size(const volatile void* block);
int __sanitizer_install_malloc_and_free_hooks(void (*allocated)(const volatile void* block,
                                                                std::size_t size),
                                              void (*freed)(const volatile void* block));
}
#endif

namespace kxudm::vault {

namespace fs = std::filesystem;

Folder::Folder(const std::string& parent) {
    std::string pattern =
        (parent.empty() ? fs::temp_directory_path().string() : parent) + "/kxudmXXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    path_ = pattern;
    // Also for the user without rights.
    fs::permissions(path_, fs::perms::all);
}

Folder::~Folder() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
}

std::string Folder::Write(const std::string& name, const std::string& content) const {
    std::ofstream file(File(name), std::ios::binary | std::ios::trunc);
    file << content;
    file.close();
    if (!file) {
        throw std::runtime_error("can't write " + File(name));
    }
    return File(name);
}

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("can't read " + path);
    }
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

bool Exists(const std::string& path) {
    return fs::exists(fs::symlink_status(path));
}

std::size_t CountFiles(const std::string& folder) {
    if (!fs::exists(folder)) {
        return 0;
    }
    std::size_t count = 0;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        count += entry.is_directory() ? 0 : 1;
    }
    return count;
}

std::string Deck(std::size_t size, int seed) {
    std::string text;
    for (int line = 1; text.size() < size; ++line) {
        text += "GRID  " + std::to_string(line * seed) + "  0.125  " + std::to_string(line % 50) +
                ".5\n";
    }
    text.resize(size);
    return text;
}

std::string Noise(std::size_t size, int seed) {
    std::mt19937_64 random(static_cast<std::uint64_t>(seed));
    std::string bytes(size, '\0');
    for (std::size_t i = 0; i < size; i += sizeof(std::uint64_t)) {
        const std::uint64_t next = random();
        std::memcpy(bytes.data() + i, &next, std::min(sizeof next, size - i));
    }
    return bytes;
}

std::string FileOf(Vault& vault, const std::string& hash) {
    std::string path;
    vault.List([&](const Entry& entry) {
        if (entry.hash == hash) {
            path = entry.path;
        }
    });
    return path;
}

std::size_t Temporaries(const std::string& vaultDirectory) {
    return CountFiles(vaultDirectory + "/tmp");
}

std::string Problems(Vault& vault) {
    std::string problems;
    vault.List([&](const Entry& entry) {
        if (entry.hash.empty()) {
            problems += "stranger " + entry.path + "\n";
        } else if (const Finding finding = vault.Verify(entry.hash);
                   finding.state != Finding::State::Sound) {
            problems += finding.problem + "\n";
        }
    });
    return problems;
}

#ifdef KXCT_TEST_SANITIZED
namespace {

// Since the hooks were installed, so that it may be less than nothing.
std::atomic<std::ptrdiff_t> inUse = 0;
std::atomic<std::ptrdiff_t> mostInUse = 0;

void Allocated(const volatile void*, std::size_t size) {
    const auto now =
        inUse.fetch_add(static_cast<std::ptrdiff_t>(size)) + static_cast<std::ptrdiff_t>(size);
    for (std::ptrdiff_t most = mostInUse; now > most;) {
        if (mostInUse.compare_exchange_weak(most, now)) {
            break;
        }
    }
}

void Freed(const volatile void* block) {
    inUse -= static_cast<std::ptrdiff_t>(__sanitizer_get_allocated_size(block));
}

}  // namespace
#endif

std::ptrdiff_t PeakMemory() {
#ifdef KXCT_TEST_SANITIZED
    static const bool isCounted = __sanitizer_install_malloc_and_free_hooks(Allocated, Freed) != 0;
    if (!isCounted) {
        throw std::runtime_error("the sanitizer lets nobody count what is allocated");
    }
    return mostInUse;
#else
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss * std::ptrdiff_t{1024};
#endif
}

std::size_t HeapInUse() {
#ifdef KXCT_TEST_SANITIZED
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 state = mallinfo2();
    return state.uordblks + state.hblkhd;
#endif
}

std::string ErrorOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const std::exception& error) {
        return error.what();
    }
    return {};
}

std::string InChild(const std::function<std::string()>& call) {
    int channel[2];
    if (pipe(channel) != 0) {
        throw std::runtime_error("no pipe");
    }
    const pid_t child = fork();
    if (child == 0) {
        std::string answer;
        try {
            answer = call();
        } catch (const std::exception& error) {
            answer = std::string("thrown: ") + error.what();
        }
        const ssize_t sent = write(channel[1], answer.data(), answer.size());
        _exit(sent == static_cast<ssize_t>(answer.size()) ? 0 : 1);
    }
    close(channel[1]);
    std::string answer;
    char buffer[4096];
    for (ssize_t count = 0; (count = read(channel[0], buffer, sizeof buffer)) > 0;) {
        answer.append(buffer, static_cast<std::size_t>(count));
    }
    close(channel[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? answer : "died";
}

std::string AsNobody(const std::function<std::string()>& call) {
    return InChild([&]() -> std::string {
        constexpr unsigned kNobody = 65534;
        if (geteuid() == 0 &&
            (setgroups(0, nullptr) != 0 || setgid(kNobody) != 0 || setuid(kNobody) != 0)) {
            return "can't become another user";
        }
        return call();
    });
}

FileLayer& MeddlingLayer::Hear(const char* call, const std::string& path) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (before) {
        before(call, path);
    }
    return MachineFiles();
}

bool MeddlingLayer::Status(const std::string& path, FileStatus& status) {
    return Hear("Status", path).Status(path, status);
}

bool MeddlingLayer::List(const std::string& folder, std::vector<std::string>& names) {
    return Hear("List", folder).List(folder, names);
}

void MeddlingLayer::MakeFolder(const std::string& path) {
    Hear("MakeFolder", path).MakeFolder(path);
}

void MeddlingLayer::FlushFolder(const std::string& path) {
    Hear("FlushFolder", path);
}

void MeddlingLayer::Rename(const std::string& from, const std::string& to) {
    Hear("Rename", to).Rename(from, to);
}

bool MeddlingLayer::RenameToNew(const std::string& from, const std::string& to) {
    return Hear("RenameToNew", to).RenameToNew(from, to);
}

bool MeddlingLayer::Remove(const std::string& path) {
    return Hear("Remove", path).Remove(path);
}

bool MeddlingLayer::Touch(const std::string& path) {
    return Hear("Touch", path).Touch(path);
}

bool MeddlingLayer::OpenToRead(const std::string& path, OpenFile& file) {
    return Hear("OpenToRead", path).OpenToRead(path, file);
}

void MeddlingLayer::Create(const std::string& path, unsigned mode, OpenFile& file) {
    Hear("Create", path).Create(path, mode, file);
}

void MeddlingLayer::OpenFolder(const std::string& path, OpenFile& file) {
    Hear("OpenFolder", path).OpenFolder(path, file);
}

FileStatus MeddlingLayer::Status(const OpenFile& file) {
    return Hear("Status", file.path).Status(file);
}

std::size_t MeddlingLayer::Read(const OpenFile& file, char* bytes, std::size_t size) {
    return Hear("Read", file.path).Read(file, bytes, std::min(size, mostBytes));
}

std::size_t MeddlingLayer::Write(const OpenFile& file, const char* bytes, std::size_t size) {
    return Hear("Write", file.path).Write(file, bytes, std::min(size, mostBytes));
}

void MeddlingLayer::SetModified(const OpenFile& file, std::int64_t microseconds) {
    Hear("SetModified", file.path).SetModified(file, microseconds);
}

void MeddlingLayer::Flush(const OpenFile& file) {
    Hear("Flush", file.path);
}

void MeddlingLayer::FlushFileSystem(const OpenFile& file) {
    Hear("FlushFileSystem", file.path);
}

void MeddlingLayer::Close(OpenFile& file) {
    const std::string path = file.path;
    MachineFiles().Close(file);
    Hear("Close", path);
}

}  // namespace kxudm::vault
