#include "catalogue/Value.h"

namespace kxudm::catalogue {

namespace {

constexpr std::size_t kShown = 80;

bool IsContinuation(unsigned char byte) {
    return (byte & 0xC0U) == 0x80U;
}

// Length of the well-formed sequence at `offset`, or 0. Overlong forms, surrogates and what lies
// beyond U+10FFFF are not well-formed.
std::size_t SequenceLength(std::string_view text, std::size_t offset) {
    const auto byte = [&](std::size_t i) {
        return offset + i < text.size() ? static_cast<unsigned char>(text[offset + i]) : 0U;
    };
    const unsigned first = byte(0);
    if (first < 0x80) {
        return 1;
    }
    if (first < 0xC2 || first > 0xF4) {
        return 0;
    }
    const unsigned second = byte(1);
    const unsigned lowest = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const unsigned highest = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    if (second < lowest || second > highest) {
        return 0;
    }
    const std::size_t length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
    for (std::size_t i = 2; i < length; ++i) {
        if (!IsContinuation(static_cast<unsigned char>(byte(i)))) {
            return 0;
        }
    }
    return length;
}

void AppendEscaped(kxString& out, char byte) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    const auto value = static_cast<unsigned char>(byte);
    out += "\\x";
    out += digits[value >> 4U];
    out += digits[value & 0xFU];
}

}  // namespace

std::size_t FirstInvalidUtf8(std::string_view text) {
    for (std::size_t offset = 0; offset < text.size();) {
        const std::size_t length = SequenceLength(text, offset);
        if (length == 0) {
            return offset;
        }
        offset += length;
    }
    return std::string_view::npos;
}

kxString Printable(std::string_view text) {
    kxString out;
    std::size_t offset = 0;
    while (offset < text.size()) {
        const std::size_t length = SequenceLength(text, offset);
        if (offset + (length == 0 ? 1 : length) > kShown) {
            return kxString(out + "...");
        }
        const auto byte = static_cast<unsigned char>(text[offset]);
        if (length == 0 || byte < 0x20 || byte == 0x7F) {
            AppendEscaped(out, text[offset]);
            ++offset;
        } else {
            out.append(text.substr(offset, length));
            offset += length;
        }
    }
    return out;
}

}  // namespace kxudm::catalogue
