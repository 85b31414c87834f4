#include "core/Clock.h"

#include <kxudm/UDMException.h>
#include <openssl/rand.h>

#include <chrono>
#include <cstdio>
#include <ctime>

namespace kxudm::core {

namespace {

class MachineClock final : public Clock {
  public:
    std::int64_t NowMicroseconds() override {
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
    }
};

class MachineRandom final : public Random {
  public:
    void Fill(unsigned char* bytes, std::size_t count) override {
        if (RAND_bytes(bytes, static_cast<int>(count)) != 1) {
            throw UDMException(
                "The machine's random source gave no bytes; identifiers can't be made");
        }
    }
};

}  // namespace

Clock::~Clock() = default;
Random::~Random() = default;

Clock& SystemClock() {
    // Never destroyed, like all that sessions use: some end with the host's static objects.
    static MachineClock& clock = *new MachineClock;
    return clock;
}

Random& SystemRandom() {
    static MachineRandom& random = *new MachineRandom;
    return random;
}

kxString FormatTime(std::int64_t microseconds) {
    std::int64_t seconds = microseconds / 1000000;
    std::int64_t rest = microseconds % 1000000;
    if (rest < 0) {
        rest += 1000000;
        --seconds;
    }
    const auto when = static_cast<std::time_t>(seconds);
    std::tm parts{};
    gmtime_r(&when, &parts);
    char text[64];
    std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &parts);
    if (rest != 0) {
        length += static_cast<std::size_t>(
            std::snprintf(text + length, sizeof text - length, ".%06d", static_cast<int>(rest)));
    }
    text[length] = 'Z';
    return kxString(text, length + 1);
}

}  // namespace kxudm::core
