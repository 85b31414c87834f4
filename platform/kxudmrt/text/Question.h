// What somebody searches for, in words.
//
// Layer: text. The text may hold anything: what is no word separates words, nothing in it is an
// operator but a '*' right behind a word, which makes that the beginning of words (in a phrase only
// behind the last one). A word of a script without word breaks is found wherever its characters
// stand one after the other.
//
//     const Question question("bolt m6*", Mode::All, Letters::Folded);
//     question.Match()  ->  "\"bolt~bolt\" AND \"m6~m6\" *"
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kxudm::text {

enum class Mode { All = 0, Any = 1, Phrase = 2 };
enum class Letters { Folded, Exact };

// A prepared text, cut into its places to be compared with words. Views into the text.
class Places {
  public:
    explicit Places(std::string_view prepared);

    struct Place {
        std::string_view written;
        std::string_view folded;
    };
    [[nodiscard]] const std::vector<Place>& All() const { return _places; }

  private:
    std::vector<Place> _places;
};

// A word or, as a phrase, several terms that follow each other.
class Sought {
  public:
    // An expression for the index.
    [[nodiscard]] std::string Match(Letters letters) const;
    [[nodiscard]] bool IsIn(const Places& places, Letters letters) const;

  private:
    friend class Question;

    [[nodiscard]] bool IsAt(const Places& places, std::size_t at, Letters letters) const;

    std::vector<std::string> _terms;
    bool _isPrefix = false;  // the last one
};

class Question {
  public:
    // Throws UDMException for a text with too many words.
    Question(std::string_view utf8, Mode mode, Letters letters);

    // No word in it: there is nothing that it could find.
    [[nodiscard]] bool IsEmpty() const { return _sought.empty(); }
    [[nodiscard]] Mode HowMany() const { return _mode; }
    // A phrase counts as one.
    [[nodiscard]] std::size_t Count() const { return _sought.size(); }

    // Expressions for the index: of one word, of all together as the mode says, and of any.
    [[nodiscard]] std::string Match(std::size_t word) const;
    [[nodiscard]] std::string Match() const;
    [[nodiscard]] std::string MatchAny() const;

    // Whether a word is in a text.
    [[nodiscard]] bool IsIn(std::size_t word, const Places& places) const;

  private:
    void AddPhrase(std::string_view utf8);
    void AddWords(std::string_view utf8);
    [[nodiscard]] std::string Joined(const char* between) const;

    Mode _mode;
    Letters _letters;
    std::vector<Sought> _sought;
};

}  // namespace kxudm::text
