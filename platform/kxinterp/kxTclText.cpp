#include "kxTclText.h"

#include <cstdint>

namespace {

std::uint32_t ByteAt(std::string_view text, std::size_t i) {
    return i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
}

bool IsContinuation(std::uint32_t byte) {
    return (byte & 0xC0) == 0x80;
}

// The character beyond the basic plane at `i`; 0 if there is none or its encoding is invalid.
std::uint32_t FourByteCharacter(std::string_view text, std::size_t i) {
    const std::uint32_t first = ByteAt(text, i);
    if ((first & 0xF8) != 0xF0) {
        return 0;
    }
    std::uint32_t character = first & 0x07;
    for (std::size_t k = 1; k < 4; ++k) {
        const std::uint32_t byte = ByteAt(text, i + k);
        if (!IsContinuation(byte)) {
            return 0;
        }
        character = (character << 6) | (byte & 0x3F);
    }
    return character >= 0x10000 && character <= 0x10FFFF ? character : 0;
}

// The ten bits of a surrogate at `i` whose second byte starts with `mark`; more than ten if none.
std::uint32_t SurrogateBits(std::string_view text, std::size_t i, std::uint32_t mark) {
    const std::uint32_t second = ByteAt(text, i + 1);
    const std::uint32_t third = ByteAt(text, i + 2);
    if (ByteAt(text, i) != 0xED || (second & 0xF0) != mark || !IsContinuation(third)) {
        return 0x400;
    }
    return ((second & 0x0F) << 6) | (third & 0x3F);
}

// The character that two surrogates at `i` stand for; 0 if there are none.
std::uint32_t SurrogatePair(std::string_view text, std::size_t i) {
    const std::uint32_t high = SurrogateBits(text, i, 0xA0);
    if (high >= 0x400) {
        return 0;
    }
    const std::uint32_t low = SurrogateBits(text, i + 3, 0xB0);
    return low < 0x400 ? 0x10000 + (high << 10) + low : 0;
}

void AppendSurrogate(kxString& text, std::uint32_t mark, std::uint32_t bits) {
    text += '\xED';
    text += static_cast<char>(mark | (bits >> 6));
    text += static_cast<char>(0x80 | (bits & 0x3F));
}

void AppendFourBytes(kxString& text, std::uint32_t character) {
    text += static_cast<char>(0xF0 | (character >> 18));
    text += static_cast<char>(0x80 | ((character >> 12) & 0x3F));
    text += static_cast<char>(0x80 | ((character >> 6) & 0x3F));
    text += static_cast<char>(0x80 | (character & 0x3F));
}

bool IsSameInBoth(unsigned char byte) {
    return byte != 0 && (byte & 0xF8) != 0xF0;
}

bool MayDiffer(unsigned char byte) {
    return byte == 0xC0 || byte == 0xED;
}

}  // namespace

namespace kxTclText {

kxString ToTcl(const kxString& text) {
    kxString result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) {
        const bool isSame = IsSameInBoth(static_cast<unsigned char>(text[i]));
        const std::uint32_t character = isSame ? 0 : FourByteCharacter(text, i);
        if (text[i] == '\0') {
            result += "\xC0\x80";
            ++i;
        } else if (character != 0) {
            AppendSurrogate(result, 0xA0, (character - 0x10000) >> 10);
            AppendSurrogate(result, 0xB0, (character - 0x10000) & 0x3FF);
            i += 4;
        } else {
            result += text[i++];
        }
    }
    return result;
}

kxString FromTcl(const char* bytes, std::size_t count) {
    const std::string_view text(bytes, count);
    kxString result;
    result.reserve(count);
    for (std::size_t i = 0; i < count;) {
        const bool mayDiffer = MayDiffer(static_cast<unsigned char>(text[i]));
        const std::uint32_t character = mayDiffer ? SurrogatePair(text, i) : 0;
        if (text[i] == '\xC0' && ByteAt(text, i + 1) == 0x80) {
            result += '\0';
            i += 2;
        } else if (character != 0) {
            AppendFourBytes(result, character);
            i += 6;
        } else {
            result += text[i++];
        }
    }
    return result;
}

}  // namespace kxTclText
