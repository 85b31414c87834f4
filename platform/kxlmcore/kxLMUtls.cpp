#include <kxlmcore/kxLMUtls.h>
#include <pwd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>

namespace {

std::atomic<kxlm::iFileMgr*> fileManager = nullptr;

constexpr std::size_t LargestEntry = 1 << 20;

kxString HomeInUserDatabase() {
    for (std::size_t size = 1024; size <= LargestEntry; size *= 4) {
        kxString buffer(size, '\0');
        passwd entry{};
        passwd* found = nullptr;
        const int error = ::getpwuid_r(::getuid(), &entry, buffer.data(), size, &found);
        if (error != ERANGE) {
            return error == 0 && found != nullptr ? kxString(found->pw_dir) : kxString();
        }
    }
    return {};
}

}  // namespace

kxlm::iFileMgr* kxLMUtls::GetFileMgr() noexcept {
    return fileManager.load();
}

void kxLMUtls::SetFileMgr(kxlm::iFileMgr* manager) noexcept {
    fileManager.store(manager);
}

kxString kxLMUtls::GetUserDirectory() {
    const char* home = std::getenv("HOME");
    return home != nullptr && *home != '\0' ? kxString(home) : HomeInUserDatabase();
}
