#include "profile/Words.h"

#include "core/Clock.h"

namespace kxudm::profile {

kxString WholeSeconds(std::int64_t microseconds) {
    constexpr std::int64_t second = 1000000;
    const std::int64_t fraction = ((microseconds % second) + second) % second;
    return core::FormatTime(microseconds - fraction);
}

}  // namespace kxudm::profile
