#include "vault/TemporaryName.h"

#include <signal.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdint>
#include <fstream>
#include <sstream>

#include "vault/Sha256.h"

namespace kxudm::vault {
namespace {

constexpr std::string_view kPrefix = ".part-";

// Process numbers mean something only within one run of one machine and one process namespace.
std::string MachineTag() {
    std::string identity;
    std::ifstream("/proc/sys/kernel/random/boot_id") >> identity;
    std::array<char, 256> text{};
    if (gethostname(text.data(), text.size() - 1) == 0) {
        identity += text.data();
    }
    const ssize_t length = readlink("/proc/self/ns/pid", text.data(), text.size());
    if (length > 0) {
        identity.append(text.data(), static_cast<std::size_t>(length));
    }
    Sha256 hash;
    hash.Update(identity.data(), identity.size());
    return hash.Finish().substr(0, 12);
}

const std::string& OwnMachine() {
    static const std::string tag = MachineTag();
    return tag;
}

// The clock tick at which a process began; 0 if the system doesn't tell.
std::uint64_t StartOf(long process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string line;
    std::getline(file, line);
    // The second field is the program's name in parentheses and may hold blanks and parentheses.
    const std::size_t nameEnd = line.rfind(')');
    if (nameEnd == std::string::npos) {
        return 0;
    }
    std::istringstream fields(line.substr(nameEnd + 1));
    std::string skipped;
    for (int field = 3; field < 22; ++field) {
        fields >> skipped;
    }
    std::uint64_t start = 0;
    fields >> start;
    return start;
}

std::uint64_t OwnStart() {
    static std::atomic<long> knownProcess{0};
    static std::atomic<std::uint64_t> knownStart{0};
    const long process = getpid();
    if (knownProcess.load() != process) {
        knownStart = StartOf(process);
        knownProcess = process;
    }
    return knownStart;
}

bool TakeNumber(std::string_view& text, std::uint64_t& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) {
        return false;
    }
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return true;
}

bool TakeDash(std::string_view& text) {
    if (!text.starts_with('-')) {
        return false;
    }
    text.remove_prefix(1);
    return true;
}

struct Writer {
    std::string_view machine = {};
    std::uint64_t process = 0;
    std::uint64_t start = 0;
};

bool Parse(std::string_view name, Writer& writer) {
    if (!name.starts_with(kPrefix)) {
        return false;
    }
    name.remove_prefix(kPrefix.size());
    writer.machine = name.substr(0, name.find('-'));
    name.remove_prefix(writer.machine.size());
    std::uint64_t number = 0;
    return TakeDash(name) && TakeNumber(name, writer.process) && writer.process > 0 &&
           writer.process <= INT_MAX && TakeDash(name) && TakeNumber(name, writer.start) &&
           TakeDash(name) && TakeNumber(name, number) && name.empty();
}

bool Runs(const Writer& writer) {
    const auto process = static_cast<pid_t>(writer.process);
    if (kill(process, 0) != 0 && errno == ESRCH) {
        return false;
    }
    const std::uint64_t start = StartOf(process);
    return start == writer.start || start == 0 || writer.start == 0;
}

}  // namespace

std::string NewTemporaryName() {
    static std::atomic<std::uint64_t> number{0};
    return std::string(kPrefix) + OwnMachine() + "-" + std::to_string(getpid()) + "-" +
           std::to_string(OwnStart()) + "-" + std::to_string(++number);
}

WriterState WriterOf(std::string_view temporaryName) {
    Writer writer;
    if (!Parse(temporaryName, writer)) {
        return WriterState::None;
    }
    if (writer.machine != OwnMachine()) {
        return WriterState::Elsewhere;
    }
    return Runs(writer) ? WriterState::Alive : WriterState::Gone;
}

}  // namespace kxudm::vault
