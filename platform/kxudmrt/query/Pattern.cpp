#include "query/Pattern.h"

#include <utf8proc.h>

#include <algorithm>

namespace kxudm::query {

namespace {

constexpr std::string_view WILDCARDS = "*?";

// Place behind the character at `place`; bytes that are no UTF-8 count as one each.
std::size_t Next(std::string_view text, std::size_t place) {
    utf8proc_int32_t point = 0;
    const utf8proc_ssize_t size =
        utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()) + place,
                         static_cast<utf8proc_ssize_t>(text.size() - place),
                         &point);
    return place + static_cast<std::size_t>(std::max<utf8proc_ssize_t>(size, 1));
}

}  // namespace

Pattern::Pattern(std::string_view text) : _text(text) {
    if (_text.empty() || WILDCARDS.find(_text.back()) == std::string_view::npos) {
        _text += '*';
    }
    _prefix = _text.find_first_of(WILDCARDS);
}

std::string_view Pattern::Prefix() const {
    return std::string_view(_text).substr(0, _prefix);
}

bool Pattern::IsPrefixOnly() const {
    return _text.find_first_not_of('*', _prefix) == std::string::npos;
}

// Only the last "*" is ever tried again: what it takes more, an earlier one need not take.
bool Pattern::Matches(std::string_view text) const {
    std::size_t star = std::string::npos;
    std::size_t retry = 0;
    std::size_t p = 0;
    std::size_t t = 0;
    while (t < text.size()) {
        if (p < _text.size() && _text[p] == '*') {
            star = p++;
            retry = t;
        } else if (p < _text.size() && _text[p] == '?') {
            ++p;
            t = Next(text, t);
        } else if (p < _text.size() && _text[p] == text[t]) {
            ++p;
            ++t;
        } else if (star != std::string::npos) {
            p = star + 1;
            retry = Next(text, retry);
            t = retry;
        } else {
            return false;
        }
    }
    return _text.find_first_not_of('*', p) == std::string::npos;
}

std::string AfterPrefix(std::string_view prefix) {
    constexpr utf8proc_int32_t last = 0x10FFFF;
    constexpr utf8proc_int32_t beforeSurrogates = 0xD7FF;
    constexpr utf8proc_int32_t afterSurrogates = 0xE000;
    while (!prefix.empty()) {
        std::size_t begin = prefix.size() - 1;
        while (begin > 0 && (static_cast<unsigned char>(prefix[begin]) & 0xC0U) == 0x80U) {
            --begin;
        }
        utf8proc_int32_t point = 0;
        utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(prefix.data()) + begin,
                         static_cast<utf8proc_ssize_t>(prefix.size() - begin),
                         &point);
        prefix = prefix.substr(0, begin);
        if (point < last) {
            utf8proc_uint8_t bytes[4];
            const utf8proc_ssize_t size = utf8proc_encode_char(
                point == beforeSurrogates ? afterSurrogates : point + 1, bytes);
            return std::string(prefix).append(reinterpret_cast<const char*>(bytes),
                                              static_cast<std::size_t>(size));
        }
    }
    return {};
}

}  // namespace kxudm::query
