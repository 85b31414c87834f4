// Time and randomness as the runtime takes them: small interfaces, so that tests can set them.
#pragma once

#include <kxudmrt/kxudmrt_export.h>
#include <kxutl/kxString.h>

#include <cstddef>
#include <cstdint>

namespace kxudm::core {

class Clock {
  public:
    Clock() = default;
    Clock(const Clock&) = default;
    Clock& operator=(const Clock&) = default;
    virtual ~Clock();
    // Microseconds since 1970-01-01T00:00:00Z.
    virtual std::int64_t NowMicroseconds() = 0;
};

class Random {
  public:
    Random() = default;
    Random(const Random&) = default;
    Random& operator=(const Random&) = default;
    virtual ~Random();
    virtual void Fill(unsigned char* bytes, std::size_t count) = 0;
};

// The machine's own, of process lifetime.
Clock& SystemClock();
Random& SystemRandom();

// "2026-01-31T12:00:00Z"; with ".123456" before the Z where the microseconds aren't zero.
kxString FormatTime(std::int64_t microseconds);

}  // namespace kxudm::core
