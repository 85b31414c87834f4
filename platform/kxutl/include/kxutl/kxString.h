#pragma once

// The text type of every interface: an 8-bit string that is compared byte by byte (unsigned) and
// may hold any byte, NUL included. By convention the bytes are UTF-8; nothing here checks that.
//
// Layer: bottom, includes only the standard library. A value type: each object owns its bytes, and
// objects may be used from any thread as std::string may.
//
//     kxString name = "bracket";
//     name += "/rev 2";
//     std::map<kxString, int> byName{{name, 1}};

#include <kxutl/kxutl_export.h>

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <iosfwd>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

class KXUTL_EXPORT kxString : public std::string {
  public:
    kxString() = default;

    // Converts, as hosts expect of texts and containers. NOLINTBEGIN(google-explicit-constructor)
    // A null pointer gives the empty string, because hosts hand in unset C strings.
    kxString(const char* text) : std::string(text != nullptr ? text : "") {}
    kxString(const char* bytes, std::size_t count) : std::string(bytes, count) {}
    kxString(std::size_t count, char character) : std::string(count, character) {}
    kxString(const std::string& text) : std::string(text) {}
    kxString(std::string&& text) noexcept : std::string(std::move(text)) {}
    kxString(std::string_view text) : std::string(text) {}
    // NOLINTEND(google-explicit-constructor)
    kxString(std::initializer_list<char> characters) : std::string(characters) {}
    template <std::input_iterator Iterator>
    kxString(Iterator first, Iterator last) : std::string(first, last) {}

    using std::string::operator=;

    // Lets GoogleTest print a text as text and not as a list of characters.
    friend KXUTL_EXPORT void PrintTo(const kxString& text, std::ostream* stream);
};

template <>
struct std::hash<kxString> {
    std::size_t operator()(const kxString& text) const noexcept {
        return std::hash<std::string_view>()(text);
    }
};
