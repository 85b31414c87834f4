#include <gtest/gtest.h>

#include "query/Pattern.h"

using kxudm::query::AfterPrefix;
using kxudm::query::Pattern;

TEST(Pattern, ComparesFromTheStartAndIsOpenAtItsEnd) {
    EXPECT_TRUE(Pattern("part").Matches("part"));
    EXPECT_TRUE(Pattern("part").Matches("part_1"));
    EXPECT_FALSE(Pattern("part").Matches("a part"));
    EXPECT_FALSE(Pattern("part").Matches("par"));
    EXPECT_FALSE(Pattern("part").Matches("Part"));
}

TEST(Pattern, AWildcardAtItsEndKeepsItAsItIs) {
    EXPECT_FALSE(Pattern("part?").Matches("part"));
    EXPECT_TRUE(Pattern("part?").Matches("part1"));
    EXPECT_FALSE(Pattern("part?").Matches("part12"));
    EXPECT_TRUE(Pattern("part*").Matches("part"));
    EXPECT_TRUE(Pattern("*bolt*").Matches("a bolt M8"));
    EXPECT_TRUE(Pattern("*bolt").Matches("a bolt M8"));
}

TEST(Pattern, TheEmptyOneTakesEverything) {
    EXPECT_TRUE(Pattern("").Matches(""));
    EXPECT_TRUE(Pattern("").Matches("x"));
    EXPECT_TRUE(Pattern("*").Matches(""));
    EXPECT_FALSE(Pattern("?").Matches(""));
    EXPECT_FALSE(Pattern("?*").Matches(""));
}

TEST(Pattern, OtherCharactersStandForThemselves) {
    EXPECT_TRUE(Pattern("100%").Matches("100% sure"));
    EXPECT_FALSE(Pattern("100%").Matches("1000"));
    EXPECT_FALSE(Pattern("a_c").Matches("abc"));
    EXPECT_TRUE(Pattern("[a-z]").Matches("[a-z]"));
    EXPECT_FALSE(Pattern("[a-z]").Matches("b"));
    EXPECT_TRUE(Pattern("a\\*c").Matches("a\\bc"));
}

TEST(Pattern, AQuestionMarkTakesOneCharacterOfAnySize) {
    EXPECT_TRUE(
        Pattern("a?c?").Matches("a\xE2\x82\xAC"
                                "c\xF0\x9F\x98\x80"));
    EXPECT_FALSE(
        Pattern("a?c?").Matches("a\xE2\x82\xAC\xE2\x82\xAC"
                                "cx"));
    // Nor does a star leave half a character to it.
    EXPECT_FALSE(Pattern("*??xz").Matches("\xE2\x82\xACxz"));
    EXPECT_TRUE(Pattern("*?\xC3\xA4?").Matches("xx\xC3\xA4\xC3\xB6"));
}

TEST(Pattern, ManyWildcardsDoNotMakeItSlow) {
    std::string pattern;
    for (int i = 0; i < 2000; ++i) {
        pattern += "*a";
    }
    EXPECT_FALSE(Pattern(pattern + "*b?").Matches(std::string(20000, 'a')));
}

TEST(Pattern, KnowsItsLiteralBegin) {
    EXPECT_EQ(Pattern("ab*c?").Prefix(), "ab");
    EXPECT_FALSE(Pattern("ab*c?").IsPrefixOnly());
    EXPECT_TRUE(Pattern("ab").IsPrefixOnly());
    EXPECT_TRUE(Pattern("ab**").IsPrefixOnly());
    EXPECT_FALSE(Pattern("ab?").IsPrefixOnly());
    EXPECT_EQ(Pattern("*ab").Prefix(), "");
}

TEST(AfterPrefix, IsTheLeastTextBehindAllThatBeginSo) {
    EXPECT_EQ(AfterPrefix("ab"), "ac");
    EXPECT_EQ(AfterPrefix("a\x7F"), "a\xC2\x80");
    EXPECT_EQ(AfterPrefix("\xC3\xBF"), "\xC4\x80");
    // No text has a character between these two.
    EXPECT_EQ(AfterPrefix("\xED\x9F\xBF"), "\xEE\x80\x80");
    EXPECT_EQ(AfterPrefix("a\xF4\x8F\xBF\xBF"), "b");
    EXPECT_EQ(AfterPrefix("\xF4\x8F\xBF\xBF"), "");
    EXPECT_EQ(AfterPrefix(""), "");
}
