#include "text/Scanner.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>

namespace kxudm::text {

enum class Scanner::Class : unsigned char { Separator, Digit, Letter, Unbroken };

namespace {

enum : unsigned char { SEPARATOR, DIGIT, LETTER, BEYOND };

constexpr std::array<unsigned char, 256> TableOfBytes() {
    std::array<unsigned char, 256> table{};
    for (int byte = 0; byte < 256; ++byte) {
        const bool digit = byte >= '0' && byte <= '9';
        const bool letter = (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z');
        table[static_cast<std::size_t>(byte)] = byte >= 0x80 ? BEYOND
                                                : digit      ? DIGIT
                                                : letter     ? LETTER
                                                             : SEPARATOR;
    }
    return table;
}

constexpr std::array<unsigned char, 256> kBytes = TableOfBytes();

unsigned char ByteClass(char c) {
    return kBytes[static_cast<unsigned char>(c)];
}

struct Range {
    utf8proc_int32_t first;
    utf8proc_int32_t last;
};

// Ascending.
constexpr std::array<Range, 13> kUnbroken{{{0x0E00, 0x0EFF},      // Thai, Lao
                                           {0x1000, 0x109F},      // Burmese
                                           {0x1780, 0x17FF},      // Khmer
                                           {0x1950, 0x19DF},      // Tai Le, New Tai Lue
                                           {0x2E80, 0x2FDF},      // radicals
                                           {0x3005, 0x3007},      // iteration mark, zero
                                           {0x3021, 0x303C},      // Hangzhou numerals, marks
                                           {0x3041, 0x312F},      // kana, Bopomofo
                                           {0x31A0, 0x31FF},      // Bopomofo, small kana
                                           {0x3400, 0x9FFF},      // ideographs
                                           {0xF900, 0xFAFF},      // compatibility ideographs
                                           {0xFF66, 0xFF9F},      // kana of half width
                                           {0x1B000, 0x3FFFF}}};  // old kana, more ideographs

bool IsUnbroken(utf8proc_int32_t point) {
    const auto* const after = std::upper_bound(
        kUnbroken.begin(), kUnbroken.end(), point, [](auto value, const Range& range) {
            return value < range.first;
        });
    return after != kUnbroken.begin() && point <= std::prev(after)->last;
}

bool IsOfWords(utf8proc_int32_t point) {
    switch (utf8proc_category(point)) {
        case UTF8PROC_CATEGORY_LU:
        case UTF8PROC_CATEGORY_LL:
        case UTF8PROC_CATEGORY_LT:
        case UTF8PROC_CATEGORY_LM:
        case UTF8PROC_CATEGORY_LO:
        case UTF8PROC_CATEGORY_MN:
        case UTF8PROC_CATEGORY_MC:
        case UTF8PROC_CATEGORY_ME:
        case UTF8PROC_CATEGORY_ND:
        case UTF8PROC_CATEGORY_NL:
        case UTF8PROC_CATEGORY_NO:
            return true;
        default:
            return false;
    }
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Exponents look like hexadecimal digits.
bool IsNumber(std::string_view word) {
    return std::any_of(word.begin(), word.end(), IsDigit) &&
           std::all_of(word.begin(), word.end(), [](char c) {
               return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
           });
}

}  // namespace

Scanner::Class Scanner::ClassAt(const char* at, int& length) const {
    const unsigned char ascii = ByteClass(*at);
    length = 1;
    if (ascii != BEYOND) {
        return ascii == DIGIT ? Class::Digit : ascii == LETTER ? Class::Letter : Class::Separator;
    }
    utf8proc_int32_t point = -1;
    const auto size = utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(at),
                                       std::min<utf8proc_ssize_t>(_end - at, 4),
                                       &point);
    if (size <= 0) {
        return Class::Separator;
    }
    length = static_cast<int>(size);
    if (!IsOfWords(point)) {
        return Class::Separator;
    }
    return IsUnbroken(point) ? Class::Unbroken : Class::Letter;
}

bool Scanner::Next(Unit& unit) {
    for (int length = 1; _at != _end; _at += length) {
        const Class found = ClassAt(_at, length);
        if (found == Class::Separator) {
            continue;
        }
        found == Class::Unbroken ? ReadUnbroken(unit) : ReadWord(unit);
        return true;
    }
    return false;
}

void Scanner::ReadWord(Unit& unit) {
    const char* const begin = _at;
    unit.isAscii = true;
    while (_at != _end) {
        const unsigned char ascii = ByteClass(*_at);
        if (ascii == DIGIT || ascii == LETTER) {
            ++_at;
            continue;
        }
        int length = 0;
        if (ascii != BEYOND || ClassAt(_at, length) != Class::Letter) {
            break;
        }
        unit.isAscii = false;
        _at += length;
    }
    unit.bytes = {begin, static_cast<std::size_t>(_at - begin)};
    unit.kind = IsNumber(unit.bytes) ? Unit::Kind::Number : Unit::Kind::Word;
}

void Scanner::ReadUnbroken(Unit& unit) {
    const char* const begin = _at;
    int length = 0;
    while (_at != _end && ClassAt(_at, length) == Class::Unbroken) {
        _at += length;
    }
    unit = {Unit::Kind::Unbroken, false, {begin, static_cast<std::size_t>(_at - begin)}};
}

}  // namespace kxudm::text
