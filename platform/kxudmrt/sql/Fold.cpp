#include "sql/Fold.h"

#include <utf8proc.h>

#include <algorithm>
#include <vector>

namespace kxudm::sql {
namespace {

constexpr auto DECOMPOSED =
    static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_DECOMPOSE | UTF8PROC_CASEFOLD);
constexpr auto COMPOSED = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE);

bool IsAscii(std::string_view text) {
    return std::all_of(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string FoldAscii(std::string_view text) {
    std::string folded(text);
    for (char& c : folded) {
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    }
    return folded;
}

utf8proc_ssize_t Decompose(std::string_view text, std::vector<utf8proc_int32_t>& out) {
    return utf8proc_decompose(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                              static_cast<utf8proc_ssize_t>(text.size()),
                              out.data(),
                              static_cast<utf8proc_ssize_t>(out.size()),
                              DECOMPOSED);
}

}  // namespace

std::string Fold(std::string_view text) {
    if (IsAscii(text)) {
        return FoldAscii(text);
    }
    // Few characters fold to more than their bytes; for those the size comes back.
    std::vector<utf8proc_int32_t> points(text.size());
    utf8proc_ssize_t count = Decompose(text, points);
    if (count > static_cast<utf8proc_ssize_t>(points.size())) {
        points.resize(static_cast<std::size_t>(count));
        count = Decompose(text, points);
    }
    if (count < 0) {
        return std::string(text);
    }
    points.resize(static_cast<std::size_t>(count));
    std::erase_if(points, [](utf8proc_int32_t point) { return point >= 0x300 && point <= 0x36F; });
    const auto kept = static_cast<utf8proc_ssize_t>(points.size());
    // Encodes in place and ends with NUL, so one element more.
    points.resize(points.size() + 1);
    const utf8proc_ssize_t size = utf8proc_reencode(points.data(), kept, COMPOSED);
    return {reinterpret_cast<const char*>(points.data()), static_cast<std::size_t>(size)};
}

}  // namespace kxudm::sql
