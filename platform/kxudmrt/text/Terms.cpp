#include "text/Terms.h"

#include <utf8proc.h>

#include <algorithm>
#include <array>
#include <functional>
#include <unordered_map>

namespace kxudm::text {
namespace {

// Longer ones are no words, and two that agree so far are hardly different.
constexpr std::size_t kLongestWord = 100;
// So many numbers after each other are data.
constexpr std::size_t kRunOfNumbers = 3;
// More lines of a file that differ in their numbers alone are data, too.
constexpr int kLinesOfAPattern = 32;

constexpr auto kDecomposed = static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_DECOMPOSE);
constexpr auto kDecomposedFolded = static_cast<utf8proc_option_t>(kDecomposed | UTF8PROC_CASEFOLD);

using Points = std::vector<utf8proc_int32_t>;

struct Range {
    utf8proc_int32_t first;
    utf8proc_int32_t last;
};

constexpr std::array<Range, 8> kDropped{{{0x0300, 0x036F},
                                         {0x0591, 0x05BD},  // Hebrew accents and points
                                         {0x05BF, 0x05C7},
                                         {0x0610, 0x061A},  // Arabic signs
                                         {0x0640, 0x0640},  // tatweel
                                         {0x064B, 0x065F},  // vowel signs, hamza above
                                         {0x0670, 0x0670},
                                         {0x06D6, 0x06ED}}};  // signs of the Quran

bool IsDropped(utf8proc_int32_t point) {
    return std::any_of(kDropped.begin(), kDropped.end(), [point](const Range& range) {
        return point >= range.first && point <= range.last;
    });
}

Points Decomposed(std::string_view text, utf8proc_option_t options) {
    const auto decompose = [&](Points& points) {
        return utf8proc_decompose(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                  static_cast<utf8proc_ssize_t>(text.size()),
                                  points.data(),
                                  static_cast<utf8proc_ssize_t>(points.size()),
                                  options);
    };
    Points points(text.size());
    utf8proc_ssize_t count = decompose(points);
    if (count > static_cast<utf8proc_ssize_t>(points.size())) {
        points.resize(static_cast<std::size_t>(count));
        count = decompose(points);
    }
    points.resize(static_cast<std::size_t>(std::max<utf8proc_ssize_t>(count, 0)));
    return points;
}

// In place.
void Compose(Points& points) {
    const auto count = utf8proc_normalize_utf32(
        points.data(),
        static_cast<utf8proc_ssize_t>(points.size()),
        static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE));
    points.resize(static_cast<std::size_t>(std::max<utf8proc_ssize_t>(count, 0)));
}

void Append(std::string& out, utf8proc_int32_t point) {
    utf8proc_uint8_t bytes[4];
    const auto size = utf8proc_encode_char(point, bytes);
    out.append(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
}

std::string Encoded(const Points& points) {
    std::string text;
    for (const utf8proc_int32_t point : points) {
        Append(text, point);
    }
    return text;
}

std::string_view Cut(std::string_view word) {
    if (word.size() <= kLongestWord) {
        return word;
    }
    std::size_t end = kLongestWord;
    while (end > 0 && (static_cast<unsigned char>(word[end]) & 0xC0) == 0x80) {
        --end;
    }
    return word.substr(0, end);
}

bool IsAscii(std::string_view text) {
    return std::all_of(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool IsUpper(char c) {
    return c >= 'A' && c <= 'Z';
}

void AppendBlank(std::string& out) {
    if (!out.empty()) {
        out += ' ';
    }
}

void AppendAscii(std::string& out, std::string_view word) {
    AppendBlank(out);
    out += word;
    if (std::any_of(word.begin(), word.end(), IsUpper)) {
        out += kFolded;
        for (const char c : word) {
            out += Lower(c);
        }
    }
}

void AppendWord(std::string& out, const Unit& unit) {
    if (unit.isAscii) {
        AppendAscii(out, Cut(unit.bytes));
        return;
    }
    const std::string folded = Folded(unit.bytes);
    if (folded.empty()) {
        return;
    }
    AppendBlank(out);
    const std::string written = Written(unit.bytes);
    out += written;
    if (folded != written) {
        out += kFolded;
        out += folded;
    }
}

void AppendUnbroken(std::string& out, std::string_view run) {
    const std::vector<std::string> characters = Characters(run);
    for (std::size_t i = 0; i < characters.size(); ++i) {
        AppendBlank(out);
        out += characters[i];
        if (i + 1 < characters.size()) {
            out += characters[i + 1];
        }
    }
}

void AppendUnit(std::string& out, const Unit& unit) {
    unit.kind == Unit::Kind::Unbroken ? AppendUnbroken(out, unit.bytes) : AppendWord(out, unit);
}

// The content of a file, line by line.
class FilePreparation {
  public:
    explicit FilePreparation(std::string& out) : _out(out) {}

    void Run(std::string_view utf8) {
        while (!utf8.empty()) {
            const std::size_t end = std::min(utf8.find('\n'), utf8.size());
            ReadLine(utf8.substr(0, end));
            AddLine();
            utf8.remove_prefix(std::min(end + 1, utf8.size()));
        }
    }

  private:
    void ReadLine(std::string_view line) {
        _units.clear();
        Scanner scanner(line);
        for (Unit unit; scanner.Next(unit);) {
            _units.push_back(unit);
        }
    }

    // Words alone, so that lines of data that differ in their numbers are the same.
    [[nodiscard]] std::size_t Pattern() const {
        std::size_t pattern = 0;
        for (const Unit& unit : _units) {
            if (unit.kind != Unit::Kind::Number) {
                pattern =
                    pattern * 0x9E3779B97F4A7C15 + std::hash<std::string_view>()(unit.bytes) + 1;
            }
        }
        return pattern;
    }

    void AddLine() {
        if (_units.empty()) {
            return;
        }
        if (++_lines[Pattern()] > kLinesOfAPattern) {
            AddGap();
            return;
        }
        for (std::size_t i = 0; i < _units.size();) {
            const std::size_t end = EndOfNumbers(i);
            if (end - i >= kRunOfNumbers || IsFraction(i, end)) {
                AddGap();
                i = end;
                continue;
            }
            AppendUnit(_out, _units[i]);
            _gap = false;
            ++i;
        }
    }

    [[nodiscard]] std::size_t EndOfNumbers(std::size_t begin) const {
        std::size_t end = begin;
        while (end < _units.size() && _units[end].kind == Unit::Kind::Number) {
            ++end;
        }
        return end;
    }

    // Whether one of these numbers is the fraction of that before it.
    [[nodiscard]] bool IsFraction(std::size_t begin, std::size_t end) const {
        for (std::size_t i = begin + 1; i < end; ++i) {
            const std::string_view whole = _units[i - 1].bytes;
            const char* const point = whole.data() + whole.size();
            if (*point == '.' && _units[i].bytes.data() == point + 1) {
                return true;
            }
        }
        return false;
    }

    void AddGap() {
        if (!_gap) {
            AppendGap(_out);
        }
        _gap = true;
    }

    std::string& _out;
    std::vector<Unit> _units;  // of the line
    std::unordered_map<std::size_t, int> _lines;
    bool _gap = false;  // stands at the end already
};

}  // namespace

void AppendPrepared(std::string& prepared, std::string_view utf8, Source source) {
    if (source == Source::File) {
        FilePreparation(prepared).Run(utf8);
        return;
    }
    Scanner scanner(utf8);
    for (Unit unit; scanner.Next(unit);) {
        AppendUnit(prepared, unit);
    }
}

std::string Prepare(std::string_view utf8, Source source) {
    std::string prepared;
    AppendPrepared(prepared, utf8, source);
    return prepared;
}

void AppendGap(std::string& prepared) {
    AppendBlank(prepared);
    prepared += kGap;
}

std::string Written(std::string_view word) {
    word = Cut(word);
    if (IsAscii(word)) {
        return std::string(word);
    }
    Points points = Decomposed(word, kDecomposed);
    Compose(points);
    return Encoded(points);
}

std::string Folded(std::string_view word) {
    word = Cut(word);
    if (IsAscii(word)) {
        std::string folded(word);
        std::transform(folded.begin(), folded.end(), folded.begin(), Lower);
        return folded;
    }
    Points points = Decomposed(word, kDecomposedFolded);
    std::erase_if(points, IsDropped);
    Compose(points);
    return Encoded(points);
}

std::vector<std::string> Characters(std::string_view run) {
    Points points = Decomposed(run, kDecomposed);
    Compose(points);
    std::vector<std::string> characters;
    characters.reserve(points.size());
    for (const utf8proc_int32_t point : points) {
        Append(characters.emplace_back(), point);
    }
    return characters;
}

}  // namespace kxudm::text
