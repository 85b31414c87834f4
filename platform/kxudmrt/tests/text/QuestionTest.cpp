#include <gtest/gtest.h>
#include <kxudm/UDMException.h>

#include "text/Question.h"
#include "text/Terms.h"

using namespace kxudm::text;

namespace {

std::string Match(std::string_view text, Mode mode = Mode::All, Letters letters = Letters::Exact) {
    const Question question(text, mode, letters);
    return question.IsEmpty() ? "nothing" : question.Match();
}

// In memory, as one text.
bool Finds(std::string_view asked, std::string_view text, Mode mode, Letters letters) {
    const Question question(asked, mode, letters);
    const std::string prepared = Prepare(text, Source::Attribute);
    const Places places(prepared);
    std::size_t found = 0;
    for (std::size_t i = 0; i < question.Count(); ++i) {
        found += question.IsIn(i, places) ? 1 : 0;
    }
    return mode == Mode::All ? found == question.Count() : found > 0;
}
bool Phrase(std::string_view asked, std::string_view text) {
    return Finds(asked, text, Mode::Phrase, Letters::Folded);
}

}  // namespace

TEST(Question, AsksForAllWordsForAnyOrForAPhrase) {
    EXPECT_EQ(Match("a b"), R"("a" AND "b")");
    EXPECT_EQ(Match("a b", Mode::Any), R"("a" OR "b")");
    EXPECT_EQ(Match("a b", Mode::Phrase), R"("a b")");
}

TEST(Question, AsksForBothFormsOfAWordWhereLettersAreFolded) {
    EXPECT_EQ(Match("Bolt", Mode::All, Letters::Folded), R"("bolt~bolt")");
    EXPECT_EQ(Match("Bolt"), R"("Bolt")");
}

TEST(Question, TakesAStarBehindAWordForAPrefix) {
    EXPECT_EQ(Match("bo* c"), R"("bo" * AND "c")");
    EXPECT_EQ(Match("a bo*", Mode::Phrase), R"("a bo" *)");
    EXPECT_EQ(Match("a* bo", Mode::Phrase), R"("a bo")");
    EXPECT_EQ(Match("* a *b"), R"("a" AND "b")");
}

TEST(Question, KnowsNoOperators) {
    EXPECT_EQ(Match("\"a b"), R"("a" AND "b")");
    EXPECT_EQ(Match("a AND NOT b"), R"("a" AND "AND" AND "NOT" AND "b")");
    EXPECT_EQ(Match("NEAR(a, 2)"), R"("NEAR" AND "a" AND "2")");
    EXPECT_EQ(Match("^a words:b -c +d {e}"), R"("a" AND "words" AND "b" AND "c" AND "d" AND "e")");
    EXPECT_EQ(Match("a~b"), R"("a" AND "b")");
}

TEST(Question, WithoutAWordIsEmpty) {
    EXPECT_EQ(Match(""), "nothing");
    EXPECT_EQ(Match(" \"* -- "), "nothing");
    EXPECT_EQ(Match("\xCC\x81"), "nothing");
    EXPECT_EQ(Match(std::string_view("\0\xFF", 2)), "nothing");
    EXPECT_EQ(Match("...", Mode::Phrase), "nothing");
}

TEST(Question, WithTooManyWordsIsRefused) {
    std::string text;
    for (int i = 0; i < 201; ++i) {
        text += "w" + std::to_string(i) + " ";
    }
    for (const Mode mode : {Mode::All, Mode::Phrase}) {
        try {
            const Question question(text, mode, Letters::Folded);
            FAIL() << "taken";
        } catch (const kxudm::UDMException& refusal) {
            EXPECT_STREQ(refusal.what(), "The full text query has more than 200 words; use fewer");
        }
    }
}

TEST(Question, FindsJapaneseWhereverItsCharactersFollowEachOther) {
    const char* const text = "\xE6\x9D\xB1\xE4\xBA\xAC\xE9\x83\xBD tower";  // Tokyo-to tower
    EXPECT_TRUE(Phrase("\xE6\x9D\xB1\xE4\xBA\xAC", text));
    EXPECT_TRUE(Phrase("\xE4\xBA\xAC\xE9\x83\xBD", text));
    EXPECT_TRUE(Phrase("\xE4\xBA\xAC", text));
    EXPECT_TRUE(Phrase("\xE9\x83\xBD", text));
    EXPECT_FALSE(Phrase("\xE6\x9D\xB1\xE9\x83\xBD", text));
    EXPECT_TRUE(Phrase("\xE4\xBA\xAC\xE9\x83\xBD tower", text));
    EXPECT_FALSE(Phrase("\xE6\x9D\xB1\xE4\xBA\xAC tower", text));
    EXPECT_TRUE(Finds("tower \xE4\xBA\xAC", text, Mode::All, Letters::Exact));
}

TEST(Question, FindsPhrasesOfArabicWords) {
    const char* const text = "\xD9\x85\xD9\x8F\xD8\xAF\xD9\x8A\xD8\xB1 \xD8\xA7\xD9\x84\xD9\x86";
    EXPECT_TRUE(Phrase("\xD9\x85\xD8\xAF\xD9\x8A\xD8\xB1 \xD8\xA7\xD9\x84\xD9\x86", text));
    EXPECT_FALSE(Finds("\xD9\x85\xD8\xAF\xD9\x8A\xD8\xB1", text, Mode::All, Letters::Exact));
}

TEST(Question, ComparesLettersAsItIsTold) {
    EXPECT_TRUE(Finds("STRASSE",
                      "Stra\xC3\x9F"
                      "e",
                      Mode::All,
                      Letters::Folded));
    EXPECT_FALSE(Finds("strasse",
                       "Stra\xC3\x9F"
                       "e",
                       Mode::All,
                       Letters::Exact));
    EXPECT_TRUE(Finds("Stra*",
                      "Stra\xC3\x9F"
                      "e",
                      Mode::All,
                      Letters::Exact));
    EXPECT_FALSE(Finds("stra*",
                       "Stra\xC3\x9F"
                       "e",
                       Mode::All,
                       Letters::Exact));
}
