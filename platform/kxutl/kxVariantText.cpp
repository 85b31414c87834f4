#include "kxVariantText.h"

#include <cxxabi.h>
#include <kxutl/kxVariant.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <ostream>

namespace {

constexpr std::string_view Blanks = " \t\n\v\f\r";

// The text without blanks around it and without a plus sign, which from_chars doesn't take.
std::string_view NumberPart(std::string_view text) {
    const std::size_t first = text.find_first_not_of(Blanks);
    if (first == std::string_view::npos) {
        return {};
    }
    text = text.substr(first, text.find_last_not_of(Blanks) - first + 1);
    if (text.size() > 1 && text[0] == '+' && text[1] != '-') {
        text.remove_prefix(1);
    }
    return text;
}

bool EqualsIgnoringCase(std::string_view text, std::string_view lower) {
    return std::equal(text.begin(), text.end(), lower.begin(), lower.end(), [](char a, char b) {
        return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b;
    });
}

template <class Number>
kxString WriteNumber(Number value, auto... format) {
    std::array<char, 64> buffer;
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, format...);
    return kxString(buffer.data(), static_cast<std::size_t>(end.ptr - buffer.data()));
}

// True if the entry stands in braces as it is: braces balance and no backslash needs care.
bool FitsInBraces(std::string_view entry) {
    int depth = 0;
    for (const char character : entry) {
        if (character == '\\') {
            return false;
        }
        if (character == '{') {
            ++depth;
        } else if (character == '}' && --depth < 0) {
            return false;
        }
    }
    return depth == 0;
}

// The letter that stands for a control character after a backslash; 0 if it has none.
char EscapeLetter(char character) {
    switch (character) {
        case '\t':
            return 't';
        case '\n':
            return 'n';
        case '\v':
            return 'v';
        case '\f':
            return 'f';
        case '\r':
            return 'r';
        default:
            return 0;
    }
}

void AppendEscaped(std::string_view entry, kxString& text) {
    for (std::size_t i = 0; i < entry.size(); ++i) {
        char character = entry[i];
        if (const char letter = EscapeLetter(character); letter != 0) {
            text += '\\';
            character = letter;
        } else if (std::string_view(" ;\"$[]{}\\").find(character) != std::string_view::npos ||
                   (i == 0 && character == '#')) {
            text += '\\';
        }
        text += character;
    }
}

void AppendEntry(std::string_view entry, kxString& text) {
    const bool plain = !entry.empty() && entry.front() != '#' &&
                       entry.find_first_of(" \t\n\v\f\r;\"$[]{}\\") == std::string_view::npos;
    if (plain) {
        text += entry;
    } else if (FitsInBraces(entry)) {
        text += '{';
        text += entry;
        text += '}';
    } else {
        AppendEscaped(entry, text);
    }
}

kxString Demangled(const kxString& name) {
    int status = 0;
    char* plain = abi::__cxa_demangle(name.c_str(), nullptr, nullptr, &status);
    kxString result = status == 0 && plain != nullptr ? kxString(plain) : name;
    std::free(plain);
    return result;
}

// A mangled type name is one word of letters, digits and underscores that holds a length, or a
// pointer to such. Without this test "i" and "Item" would be read as mangled built-in types.
bool LooksMangled(const kxString& name) {
    const bool oneWord = std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
               c == '_';
    });
    return oneWord && name.find_first_of("0123456789") != kxString::npos;
}

bool RemoveWord(std::string_view& text, std::string_view word) {
    if (text.starts_with(word) && text.size() > word.size() && text[word.size()] == ' ') {
        text.remove_prefix(word.size() + 1);
        return true;
    }
    if (text.ends_with(word) && text.size() > word.size()) {
        const char before = text[text.size() - word.size() - 1];
        if (before == ' ' || before == '*' || before == '&') {
            text.remove_suffix(word.size());
            return true;
        }
    }
    return false;
}

}  // namespace

namespace kxVariantText {

bool ReadInteger(const kxString& text, std::int64_t& value) {
    const std::string_view digits = NumberPart(text);
    std::int64_t number = 0;
    const auto end = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (digits.empty() || end.ec != std::errc() || end.ptr != digits.data() + digits.size()) {
        return false;
    }
    value = number;
    return true;
}

double ReadDouble(const kxString& text) {
    const std::string_view digits = NumberPart(text);
    double number = 0;
    const auto end = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (digits.empty() || end.ptr != digits.data() + digits.size()) {
        return 0;
    }
    if (end.ec == std::errc::result_out_of_range) {
        // from_chars leaves the value alone; strtod tells overflow from underflow.
        return std::strtod(kxString(digits).c_str(), nullptr);
    }
    return end.ec == std::errc() ? number : 0;
}

bool ReadBoolean(const kxString& text) {
    const std::string_view word = NumberPart(text);
    return EqualsIgnoringCase(word, "true") || EqualsIgnoringCase(word, "yes") ||
           EqualsIgnoringCase(word, "on") || ReadDouble(text) != 0;
}

kxString Write(std::int64_t value) {
    return WriteNumber(value);
}

kxString Write(float value) {
    return WriteNumber(value);
}

kxString Write(double value) {
    return WriteNumber(value);
}

kxString WritePointer(const void* address, const kxString& typeName) {
    kxString text = "kxptr:";
    text += typeName;
    text += ':';
    text += WriteNumber(reinterpret_cast<std::uintptr_t>(address), 16);
    return text;
}

kxString WriteList(const kxStlVector<kxString>& list) {
    kxString text;
    for (const kxString& entry : list) {
        if (!text.empty()) {
            text += ' ';
        }
        AppendEntry(entry, text);
    }
    return text;
}

}  // namespace kxVariantText

kxString kxVariant::SimpleTypeName(const kxString& compilerName) {
    const kxString plain = LooksMangled(compilerName) ? Demangled(compilerName) : compilerName;
    std::string_view name = plain;
    for (bool changed = true; changed;) {
        changed = false;
        while (!name.empty() && (name.back() == ' ' || name.back() == '*' || name.back() == '&')) {
            name.remove_suffix(1);
        }
        while (!name.empty() && name.front() == ' ') {
            name.remove_prefix(1);
        }
        for (const std::string_view word :
             {"class", "struct", "union", "enum", "const", "volatile", "__ptr64"}) {
            changed = RemoveWord(name, word) || changed;
        }
    }
    return kxString(name);
}

std::ostream& operator<<(std::ostream& stream, const kxVariant& value) {
    static constexpr std::array<const char*, 8> Names = {
        "empty", "boolean", "integer", "string", "stringlist", "float", "double", "pointer"};
    return stream << Names[value.GetKind()] << " \"" << value.GetString() << '"';
}
