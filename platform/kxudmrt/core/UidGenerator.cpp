#include "core/UidGenerator.h"

namespace kxudm::core {

namespace {

constexpr std::size_t kLength = 26;

// 128 bits, most significant first, in groups of five from the end.
kxString Encode(const std::array<unsigned char, 16>& bytes) {
    kxString text(kxString(kLength, '0'));
    unsigned buffer = 0;
    unsigned bits = 0;
    std::size_t position = kLength;
    for (std::size_t i = bytes.size(); i-- > 0;) {
        buffer |= static_cast<unsigned>(bytes[i]) << bits;
        bits += 8;
        while (bits >= 5) {
            text[--position] = UID_DIGITS[buffer & 31U];
            buffer >>= 5;
            bits -= 5;
        }
    }
    text[--position] = UID_DIGITS[buffer & 31U];
    return text;
}

}  // namespace

kxString UidGenerator::Next() {
    const std::int64_t now = _clock.NowMicroseconds() / 1000;
    if (now > _lastMilliseconds) {
        _lastMilliseconds = now;
        _random.Fill(_tail.data(), _tail.size());
        // Room to count up without running over.
        _tail[0] &= 0x7F;
    } else {
        for (std::size_t i = _tail.size(); i-- > 0;) {
            if (++_tail[i] != 0) {
                break;
            }
        }
    }
    std::array<unsigned char, 16> bytes{};
    for (std::size_t i = 0; i < 6; ++i) {
        bytes[i] = static_cast<unsigned char>(_lastMilliseconds >> (8 * (5 - i)));
    }
    for (std::size_t i = 0; i < _tail.size(); ++i) {
        bytes[6 + i] = _tail[i];
    }
    return Encode(bytes);
}

UidGenerator& ProcessUidGenerator() {
    static UidGenerator& generator = *new UidGenerator(SystemClock(), SystemRandom());
    return generator;
}

}  // namespace kxudm::core
