// Cuts a text into what full text search calls words.
//
//     Scanner scanner(text);
//     for (Unit unit; scanner.Next(unit);) use(unit.bytes);
//
// Layer: text, the lowest beside sql; knows neither tables nor sessions. A word is a run of
// letters, digits and the marks that combine with them; everything else separates. A run of a
// script that doesn't set blanks between words (Chinese, Japanese, Thai, Lao, Khmer, Burmese) is a
// unit of its own, beside letters of other scripts, too. Bytes that are no UTF-8 separate.
#pragma once

#include <cstddef>
#include <string_view>

namespace kxudm::text {

struct Unit {
    enum class Kind {
        Word,
        Number,   // of decimal or hexadecimal digits, a decimal one among them: "12", "5E", "1f3a"
        Unbroken  // of a script without word breaks
    };
    Kind kind = Kind::Word;
    bool isAscii = true;
    std::string_view bytes = {};
};

class Scanner {
  public:
    // The text outlives the scanner.
    explicit Scanner(std::string_view utf8) : _at(utf8.data()), _end(utf8.data() + utf8.size()) {}

    // False at the end of the text.
    bool Next(Unit& unit);
    // What follows the last unit.
    [[nodiscard]] std::string_view Rest() const {
        return {_at, static_cast<std::size_t>(_end - _at)};
    }

  private:
    enum class Class : unsigned char;

    Class ClassAt(const char* at, int& length) const;
    void ReadWord(Unit& unit);
    void ReadUnbroken(Unit& unit);

    const char* _at;
    const char* _end;
};

}  // namespace kxudm::text
