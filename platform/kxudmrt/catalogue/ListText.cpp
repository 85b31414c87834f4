#include "catalogue/ListText.h"

#include <kxudm/UDMException.h>

#include <algorithm>

#include "catalogue/Value.h"

namespace kxudm::catalogue {

namespace {

constexpr std::string_view BLANKS = " \t\n\v\f\r";

class ListReader {
  public:
    explicit ListReader(std::string_view text) : _text(text) {}

    kxStlVector<kxString> Run() {
        kxStlVector<kxString> entries;
        for (Skip(); _at < _text.size(); Skip()) {
            entries.push_back(_text[_at] == '{' ? Braced() : Plain());
        }
        return entries;
    }

  private:
    void Skip() { _at = std::min(_text.find_first_not_of(BLANKS, _at), _text.size()); }

    [[nodiscard]] bool AtBlank() const {
        return _at >= _text.size() || BLANKS.find(_text[_at]) != std::string_view::npos;
    }

    [[noreturn]] void Refuse(const char* reason) const {
        throw UDMException("\"" + Printable(_text) + "\" is no list: " + reason +
                           "; put blanks between the entries, and braces around one that has some");
    }

    kxString Braced() {
        const std::size_t begin = ++_at;
        for (int depth = 1; _at < _text.size(); ++_at) {
            if (_text[_at] == '\\') {
                ++_at;
            } else if (_text[_at] == '{') {
                ++depth;
            } else if (_text[_at] == '}' && --depth == 0) {
                kxString entry(_text.substr(begin, _at - begin));
                ++_at;
                if (!AtBlank()) {
                    Refuse("a closing brace is followed by another sign");
                }
                return entry;
            }
        }
        Refuse("a brace is left open");
    }

    static char Unescaped(char letter) {
        constexpr std::string_view letters = "tnvfr";
        const std::size_t place = letters.find(letter);
        return place == std::string_view::npos ? letter : "\t\n\v\f\r"[place];
    }

    kxString Plain() {
        kxString entry;
        for (; !AtBlank(); ++_at) {
            if (_text[_at] == '}' || _text[_at] == '{') {
                Refuse("a brace stands inside of an entry");
            }
            if (_text[_at] == '\\' && _at + 1 < _text.size()) {
                entry += Unescaped(_text[++_at]);
            } else {
                entry += _text[_at];
            }
        }
        return entry;
    }

    std::string_view _text;
    std::size_t _at = 0;
};

}  // namespace

kxStlVector<kxString> ListOfText(std::string_view text) {
    return ListReader(text).Run();
}

}  // namespace kxudm::catalogue
