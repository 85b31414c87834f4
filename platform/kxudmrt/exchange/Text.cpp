#include "exchange/Text.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>

#include "catalogue/Value.h"
#include "core/Clock.h"
#include "core/UidGenerator.h"

namespace kxudm::exchange {

namespace {

constexpr std::string_view kDigits = "0123456789ABCDEF";

void AppendByte(std::string& out, char c) {
    const auto byte = static_cast<unsigned char>(c);
    out += "\\x";
    out += kDigits[byte >> 4U];
    out += kDigits[byte & 15U];
}

// U+FFFE and U+FFFF, which XML excludes, are well-formed UTF-8.
bool IsNoncharacter(std::string_view text, std::size_t at) {
    return text.compare(at, 2, "\xEF\xBF") == 0 && at + 2 < text.size() &&
           (text[at + 2] == '\xBE' || text[at + 2] == '\xBF');
}

void AppendValid(std::string& out, std::string_view text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\\') {
            out += "\\\\";
        } else if (static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r') {
            AppendByte(out, c);
        } else if (c == '\xEF' && IsNoncharacter(text, i)) {
            for (int k = 0; k < 3; ++k) {
                AppendByte(out, text[i + static_cast<std::size_t>(k)]);
            }
            i += 2;
        } else {
            AppendXmlEscaped(out, text.substr(i, 1));
        }
    }
}

int DigitOf(char c) {
    const std::size_t digit = kDigits.find(c);
    return digit == std::string_view::npos ? -1 : static_cast<int>(digit);
}

// One number of fixed width out of a time; negative if it is none.
int Field(std::string_view text, std::size_t at, std::size_t width) {
    int value = -1;
    const std::string_view field = text.substr(std::min(at, text.size()), width);
    const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
    return error == std::errc() && end == field.data() + width ? value : -1;
}

}  // namespace

void AppendXmlEscaped(std::string& out, std::string_view text) {
    for (const char c : text) {
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\t':
                out += "&#9;";
                break;
            case '\n':
                out += "&#10;";
                break;
            case '\r':
                out += "&#13;";
                break;
            default:
                out += c;
        }
    }
}

void AppendEscaped(std::string& out, std::string_view text) {
    const bool plain = std::all_of(text.begin(), text.end(), [](char c) {
        return c >= ' ' && c < 0x7F && c != '\\' && c != '&' && c != '<' && c != '>' && c != '"';
    });
    if (plain) {
        out += text;
        return;
    }
    while (!text.empty()) {
        const std::size_t valid = std::min(catalogue::FirstInvalidUtf8(text), text.size());
        AppendValid(out, text.substr(0, valid));
        text.remove_prefix(valid);
        if (!text.empty()) {
            AppendByte(out, text.front());
            text.remove_prefix(1);
        }
    }
}

std::optional<std::string> Unescaped(std::string_view text) {
    if (text.find('\\') == std::string_view::npos) {
        return std::string(text);
    }
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '\\') {
            out += text[i];
        } else if (text.compare(i, 2, "\\\\") == 0) {
            out += '\\';
            ++i;
        } else {
            if (i + 3 >= text.size() || text[i + 1] != 'x' || DigitOf(text[i + 2]) < 0 ||
                DigitOf(text[i + 3]) < 0) {
                return std::nullopt;
            }
            out += static_cast<char>(DigitOf(text[i + 2]) * 16 + DigitOf(text[i + 3]));
            i += 3;
        }
    }
    // What could have stood there as it is.
    std::string again;
    AppendEscaped(again, out);
    std::string given;
    AppendXmlEscaped(given, text);
    return again == given ? std::optional(out) : std::nullopt;
}

std::string NumberText(double value) {
    char text[32];
    const auto [end, error] = std::to_chars(text, text + sizeof text, value);
    return {text, end};
}

std::string NumberText(std::int64_t value) {
    return std::to_string(value);
}

std::optional<double> DoubleOf(std::string_view text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool good = error == std::errc() && end == text.data() + text.size() &&
                      std::isfinite(value) && NumberText(value) == text;
    return good ? std::optional(value) : std::nullopt;
}

std::optional<std::int64_t> IntegerOf(std::string_view text) {
    std::int64_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool good =
        error == std::errc() && end == text.data() + text.size() && NumberText(value) == text;
    return good ? std::optional(value) : std::nullopt;
}

std::optional<std::int64_t> TimeOf(std::string_view text) {
    namespace chrono = std::chrono;
    const chrono::year_month_day day{chrono::year(Field(text, 0, 4)),
                                     chrono::month(static_cast<unsigned>(Field(text, 5, 2))),
                                     chrono::day(static_cast<unsigned>(Field(text, 8, 2)))};
    if (text.size() < 20 || !day.ok()) {
        return std::nullopt;
    }
    const chrono::sys_time<chrono::microseconds> time =
        chrono::sys_days(day) + chrono::hours(Field(text, 11, 2)) +
        chrono::minutes(Field(text, 14, 2)) + chrono::seconds(Field(text, 17, 2)) +
        chrono::microseconds(text[19] == '.' ? Field(text, 20, 6) : 0);
    // Whatever was out of range, or more, or less, makes another text.
    const std::int64_t count = time.time_since_epoch().count();
    return core::FormatTime(count) == text ? std::optional(count) : std::nullopt;
}

bool IsBaseUid(std::string_view text) {
    return text.size() == 26 && text.front() <= '7' &&
           text.find_first_not_of(core::UID_DIGITS) == std::string_view::npos;
}

}  // namespace kxudm::exchange
