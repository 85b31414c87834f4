#include <kxudm/UDMException.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>

#include "catalogue/Located.h"
#include "catalogue/Value.h"

namespace kxudm::catalogue {

namespace {

// catalogue, definition, attribute or group, and what is inside those, with room for the reader to
// name an element in the wrong place.
constexpr int kDeepest = 8;

// Walks over the mark-up just far enough to know what is text, what is a tag and what is neither.
// Whether the document is well-formed is left to the parser.
class XmlTextCheck {
  public:
    XmlTextCheck(std::string_view text, const kxString& file) : _text(text), _file(file) {}

    void Run() {
        CheckBytes();
        while (_at < _text.size()) {
            if (_text[_at] == '<') {
                MarkUp();
            } else if (_text[_at] == '&') {
                Reference();
            } else {
                ++_at;
            }
        }
    }

  private:
    [[noreturn]] void Refuse(std::size_t offset, const kxString& reason) const {
        const auto lines =
            std::count(_text.begin(), _text.begin() + static_cast<std::ptrdiff_t>(offset), '\n');
        RefuseAt(_file, static_cast<int>(lines) + 1, reason);
    }

    void CheckBytes() const {
        const std::size_t invalid = FirstInvalidUtf8(_text);
        if (invalid != std::string_view::npos) {
            Refuse(invalid,
                   "the byte at offset " + std::to_string(invalid) +
                       " is not UTF-8; a catalogue is written in UTF-8");
        }
        const auto control = std::find_if(_text.begin(), _text.end(), [](char c) {
            return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
        });
        if (control != _text.end()) {
            Refuse(static_cast<std::size_t>(control - _text.begin()),
                   "control characters are not allowed");
        }
    }

    bool Starts(std::string_view prefix) const {
        return _text.substr(_at, prefix.size()) == prefix;
    }

    void SkipPast(std::string_view end) {
        const std::size_t found = _text.find(end, _at);
        _at = found == std::string_view::npos ? _text.size() : found + end.size();
    }

    void MarkUp() {
        if (Starts("<!--")) {
            SkipPast("-->");
        } else if (Starts("<![CDATA[")) {
            SkipPast("]]>");
        } else if (Starts("<?")) {
            SkipPast("?>");
        } else if (Starts("<!")) {
            Refuse(_at, "document types and entities are not allowed");
        } else {
            Tag();
        }
    }

    void Tag() {
        const std::size_t start = _at;
        const bool closing = Starts("</");
        char quote = 0;
        for (++_at; _at < _text.size();) {
            const char c = _text[_at];
            if (c == '&') {
                Reference();
                continue;
            }
            if (c == '<') {
                Refuse(_at, "'<' is not allowed inside a tag; write &lt;");
            }
            if (quote != 0) {
                quote = c == quote ? '\0' : quote;
            } else if (c == '"' || c == '\'') {
                quote = c;
            } else if (c == '>') {
                break;
            }
            ++_at;
        }
        const bool single = _at < _text.size() && _text[_at - 1] == '/';
        _depth += closing ? -1 : single ? 0 : 1;
        if (_depth > kDeepest) {
            Refuse(start, "the elements are nested too deep for a catalogue");
        }
    }

    void Reference() {
        const std::size_t end = _text.find_first_of(";&<>\"' \n", _at + 1);
        if (end == std::string_view::npos || _text[end] != ';' ||
            !IsKnown(_text.substr(_at + 1, end - _at - 1))) {
            Refuse(_at,
                   "only &amp; &lt; &gt; &quot; &apos; and references to characters by number "
                   "are allowed behind '&'");
        }
        _at = end + 1;
    }

    static bool IsKnown(std::string_view name) {
        constexpr std::array<std::string_view, 5> entities{"amp", "lt", "gt", "quot", "apos"};
        if (std::find(entities.begin(), entities.end(), name) != entities.end()) {
            return true;
        }
        const bool hexadecimal = name.starts_with("#x");
        const std::string_view digits =
            name.starts_with('#') ? name.substr(hexadecimal ? 2 : 1) : std::string_view();
        std::uint32_t code = 0;
        const char* end = digits.data() + digits.size();
        const auto result = std::from_chars(digits.data(), end, code, hexadecimal ? 16 : 10);
        return !digits.empty() && result.ec == std::errc() && result.ptr == end &&
               IsXmlCharacter(code);
    }

    static bool IsXmlCharacter(std::uint32_t code) {
        return code == '\t' || code == '\n' || code == '\r' || (code >= 0x20 && code < 0xD800) ||
               (code >= 0xE000 && code < 0xFFFE) || (code >= 0x10000 && code <= 0x10FFFF);
    }

    std::string_view _text;
    const kxString& _file;
    std::size_t _at = 0;
    int _depth = 0;
};

}  // namespace

void RefuseAt(const kxString& file, int line, const kxString& reason) {
    if (file.empty()) {
        throw UDMException(reason);
    }
    throw UDMException(Printable(file) + ":" + std::to_string(line) + ": " + reason);
}

void CheckXmlText(std::string_view text, const kxString& file) {
    XmlTextCheck(text, file).Run();
}

}  // namespace kxudm::catalogue
