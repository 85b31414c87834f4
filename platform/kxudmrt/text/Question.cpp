#include "text/Question.h"

#include <kxudm/UDMException.h>

#include <algorithm>
#include <utility>

#include "text/Terms.h"

namespace kxudm::text {
namespace {

// More than anybody types, and few enough for the index.
constexpr std::size_t kMostTerms = 200;

// Terms of one unit. Only at the end of what is sought may a run without word breaks go on in the
// text: else its last character stands there by itself, as in the text.
void AppendTerms(const Unit& unit, Letters letters, bool isLast, std::vector<std::string>& terms) {
    if (unit.kind != Unit::Kind::Unbroken) {
        std::string term = letters == Letters::Folded ? Folded(unit.bytes) : Written(unit.bytes);
        // Signs alone are no word in the index either.
        if (!term.empty() && (letters == Letters::Folded || !Folded(unit.bytes).empty())) {
            terms.push_back(std::move(term));
        }
        return;
    }
    const std::vector<std::string> characters = Characters(unit.bytes);
    for (std::size_t i = 0; i < characters.size(); ++i) {
        const bool end = i + 1 == characters.size();
        if (!end) {
            terms.push_back(characters[i] + characters[i + 1]);
        } else if (!isLast || characters.size() == 1) {
            terms.push_back(characters[i]);
        }
    }
}

bool IsOneCharacter(const Unit& unit) {
    return unit.kind == Unit::Kind::Unbroken && Characters(unit.bytes).size() == 1;
}

void RequireFew(std::size_t count) {
    if (count > kMostTerms) {
        throw UDMException("The full text query has more than " + std::to_string(kMostTerms) +
                           " words; use fewer");
    }
}

}  // namespace

Places::Places(std::string_view prepared) {
    while (!prepared.empty()) {
        const std::size_t end = std::min(prepared.find(' '), prepared.size());
        const std::string_view term = prepared.substr(0, end);
        const std::size_t both = term.find(kFolded);
        _places.push_back(both == std::string_view::npos
                              ? Place{term, term}
                              : Place{term.substr(0, both), term.substr(both + 1)});
        prepared.remove_prefix(std::min(end + 1, prepared.size()));
    }
}

// The words of the index are written ones, and folded ones with their mark: who folds asks for
// both.
std::string Sought::Match(Letters letters) const {
    std::string match = "\"";
    for (const std::string& term : _terms) {
        match += match.size() > 1 ? " " : "";
        match += term;
        if (letters == Letters::Folded) {
            match += kFolded + term;
        }
    }
    return match + (_isPrefix ? "\" *" : "\"");
}

bool Sought::IsAt(const Places& places, std::size_t at, Letters letters) const {
    for (std::size_t i = 0; i < _terms.size(); ++i) {
        const Places::Place& place = places.All()[at + i];
        const std::string_view word = letters == Letters::Folded ? place.folded : place.written;
        const bool isPrefix = _isPrefix && i + 1 == _terms.size();
        if (isPrefix ? !word.starts_with(_terms[i]) : word != _terms[i]) {
            return false;
        }
    }
    return true;
}

bool Sought::IsIn(const Places& places, Letters letters) const {
    for (std::size_t at = 0; at + _terms.size() <= places.All().size(); ++at) {
        if (IsAt(places, at, letters)) {
            return true;
        }
    }
    return false;
}

Question::Question(std::string_view utf8, Mode mode, Letters letters)
    : _mode(mode), _letters(letters) {
    mode == Mode::Phrase ? AddPhrase(utf8) : AddWords(utf8);
}

void Question::AddWords(std::string_view utf8) {
    Scanner scanner(utf8);
    std::size_t count = 0;
    for (Unit unit; scanner.Next(unit);) {
        Sought word;
        AppendTerms(unit, _letters, true, word._terms);
        word._isPrefix = scanner.Rest().starts_with('*')
                             ? unit.kind != Unit::Kind::Unbroken || IsOneCharacter(unit)
                             : IsOneCharacter(unit);
        count += word._terms.size();
        RequireFew(count);
        if (!word._terms.empty()) {
            _sought.push_back(std::move(word));
        }
    }
}

void Question::AddPhrase(std::string_view utf8) {
    std::vector<Unit> units;
    Scanner scanner(utf8);
    bool star = false;
    for (Unit unit; scanner.Next(unit);) {
        units.push_back(unit);
        star = scanner.Rest().starts_with('*');
    }
    Sought phrase;
    for (const Unit& unit : units) {
        AppendTerms(unit, _letters, &unit == &units.back(), phrase._terms);
        RequireFew(phrase._terms.size());
    }
    if (phrase._terms.empty()) {
        return;
    }
    phrase._isPrefix =
        IsOneCharacter(units.back()) || (star && units.back().kind != Unit::Kind::Unbroken);
    _sought.push_back(std::move(phrase));
}

std::string Question::Match(std::size_t word) const {
    return _sought[word].Match(_letters);
}

std::string Question::Match() const {
    return Joined(_mode == Mode::All ? " AND " : " OR ");
}

std::string Question::MatchAny() const {
    return Joined(" OR ");
}

std::string Question::Joined(const char* between) const {
    std::string match;
    for (const Sought& each : _sought) {
        match += match.empty() ? "" : between;
        match += each.Match(_letters);
    }
    return match;
}

bool Question::IsIn(std::size_t word, const Places& places) const {
    return _sought[word].IsIn(places, _letters);
}

}  // namespace kxudm::text
