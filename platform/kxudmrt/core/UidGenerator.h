// Makes base UIDs: 128 bits, the first 48 of them milliseconds since 1970, the rest random, as 26
// characters of Crockford's base 32. UIDs of one generator ascend in the order they were made, also
// within a millisecond and where the clock steps back. UIDs of different processes and libraries
// don't collide, so entities keep theirs when libraries meet.
#pragma once

#include <array>
#include <string_view>

#include "core/Clock.h"

namespace kxudm::core {

// The digits of base 32, each five bits.
inline constexpr std::string_view UID_DIGITS = "0123456789ABCDEFGHJKMNPQRSTVWXYZ";

class UidGenerator {
  public:
    // Both are used, not owned.
    UidGenerator(Clock& clock, Random& random) : _clock(clock), _random(random) {}

    kxString Next();

  private:
    Clock& _clock;
    Random& _random;
    std::int64_t _lastMilliseconds = -1;
    // 80 random bits, counted up within a millisecond.
    std::array<unsigned char, 10> _tail{};
};

// The generator that the sessions of this process share.
UidGenerator& ProcessUidGenerator();

}  // namespace kxudm::core
