#include "text/Decode.h"

#include <utf8proc.h>

#include <algorithm>

namespace kxudm::text {
namespace {

// Enough to tell text from anything else.
constexpr std::size_t kSample = std::size_t{64} << 10;
constexpr std::size_t kQuickSample = std::size_t{1} << 10;
constexpr utf8proc_int32_t kReplacement = 0xFFFD;

constexpr std::string_view kMarkOfUtf8 = "\xEF\xBB\xBF";
constexpr std::string_view kMarkOfLittleEndian = "\xFF\xFE";
constexpr std::string_view kMarkOfBigEndian = "\xFE\xFF";

// Beside the blanks: backspace, the end mark of old systems, escape sequences of listings.
bool IsTextByte(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte >= 0x20 || (byte >= '\b' && byte <= '\r') || byte == 0x1A || byte == 0x1B;
}

bool IsPlain(std::string_view bytes) {
    return std::all_of(bytes.begin(), bytes.end(), IsTextByte);
}

bool IsUtf16(std::string_view bytes) {
    return bytes.starts_with(kMarkOfLittleEndian) || bytes.starts_with(kMarkOfBigEndian);
}

void Append(std::string& out, utf8proc_int32_t point) {
    utf8proc_uint8_t bytes[4];
    const auto size = utf8proc_encode_char(point, bytes);
    out.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
}

// How many bytes at the begin are UTF-8.
std::size_t ValidLength(std::string_view bytes) {
    std::size_t at = 0;
    while (at < bytes.size()) {
        if (static_cast<unsigned char>(bytes[at]) < 0x80) {
            ++at;
            continue;
        }
        utf8proc_int32_t point = -1;
        const auto size = utf8proc_iterate(
            reinterpret_cast<const utf8proc_uint8_t*>(bytes.data() + at),
            static_cast<utf8proc_ssize_t>(std::min<std::size_t>(bytes.size() - at, 4)),
            &point);
        if (size <= 0) {
            break;
        }
        at += static_cast<std::size_t>(size);
    }
    return at;
}

// The begin of a character, as it stands where a text was cut.
bool IsCutCharacter(std::string_view bytes) {
    const auto lead = static_cast<unsigned char>(bytes.front());
    const std::size_t whole = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC2 ? 2 : 0;
    return bytes.size() < whole && std::all_of(bytes.begin() + 1, bytes.end(), [](char c) {
               return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
           });
}

std::string FromLatin1(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size() + bytes.size() / 8);
    for (const char c : bytes) {
        Append(text, static_cast<unsigned char>(c));
    }
    return text;
}

std::string FromUtf16(std::string_view bytes) {
    const bool little = bytes.starts_with(kMarkOfLittleEndian);
    const auto unit = [&](std::size_t at) {
        const auto first = static_cast<unsigned char>(bytes[at]);
        const auto second = static_cast<unsigned char>(bytes[at + 1]);
        return little ? second << 8 | first : first << 8 | second;
    };
    std::string text;
    for (std::size_t at = 2; at + 1 < bytes.size(); at += 2) {
        utf8proc_int32_t point = unit(at);
        if (point == 0) {
            return {};
        }
        if (point >= 0xD800 && point <= 0xDFFF) {
            const int low = point < 0xDC00 && at + 3 < bytes.size() ? unit(at + 2) : 0;
            const bool pair = low >= 0xDC00 && low <= 0xDFFF;
            point = pair ? 0x10000 + ((point - 0xD800) << 10) + (low - 0xDC00) : kReplacement;
            at += pair ? 2 : 0;
        }
        Append(text, point);
    }
    return text;
}

}  // namespace

bool MayBeText(std::string_view bytes) {
    return IsUtf16(bytes) || IsPlain(bytes.substr(0, kQuickSample));
}

std::string Decode(std::string_view bytes) {
    bytes = bytes.substr(0, kLongestText);
    if (IsUtf16(bytes)) {
        return FromUtf16(bytes);
    }
    if (!IsPlain(bytes.substr(0, kSample))) {
        return {};
    }
    if (bytes.starts_with(kMarkOfUtf8)) {
        bytes.remove_prefix(kMarkOfUtf8.size());
    }
    const std::size_t valid = ValidLength(bytes);
    if (valid == bytes.size() || IsCutCharacter(bytes.substr(valid))) {
        return std::string(bytes.substr(0, valid));
    }
    return FromLatin1(bytes);
}

}  // namespace kxudm::text
