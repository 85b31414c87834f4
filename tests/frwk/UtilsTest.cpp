#include <kxct/Utils.h>

#include <boost/xpressive/xpressive_dynamic.hpp>

using boost::xpressive::sregex;
using kxct::Utils;

TEST(Utils, CompiledExpressionServesManyTexts) {
    sregex expression;
    ASSERT_TRUE(Utils::CompileRegExp("rev \\d+", true, expression));
    EXPECT_TRUE(Utils::SearchRegExp("bracket rev 12", expression));
    EXPECT_FALSE(Utils::SearchRegExp("bracket rev", expression));
    EXPECT_TRUE(Utils::MatchRegExp("rev 12", expression));
    EXPECT_FALSE(Utils::MatchRegExp("bracket rev 12", expression));
}

TEST(Utils, MatchAsksForTheWholeTextAndSearchForAPart) {
    EXPECT_TRUE(Utils::MatchRegExp("wheel", "wh.*", true));
    EXPECT_FALSE(Utils::MatchRegExp("a wheel", "wh.*", true));
    EXPECT_TRUE(Utils::SearchRegExp("a wheel", "wh.*", true));
    EXPECT_FALSE(Utils::SearchRegExp("an axle", "wh.*", true));
}

TEST(Utils, CaseCountsOnlyWhereItIsAskedFor) {
    EXPECT_FALSE(Utils::MatchRegExp("WHEEL", "wheel", true));
    EXPECT_TRUE(Utils::MatchRegExp("WHEEL", "wheel", false));
    EXPECT_FALSE(Utils::SearchRegExp("A WHEEL", "wheel", true));
    EXPECT_TRUE(Utils::SearchRegExp("A WHEEL", "wheel", false));
}

TEST(Utils, AnEmptyPatternIsFalseEverywhere) {
    sregex expression;
    EXPECT_FALSE(Utils::CompileRegExp("", true, expression));
    EXPECT_FALSE(Utils::CompileRegExp("", false, expression));
    EXPECT_FALSE(Utils::MatchRegExp("", "", true));
    EXPECT_FALSE(Utils::SearchRegExp("text", "", true));
    EXPECT_FALSE(Utils::ValidateRegExp(""));
}

TEST(Utils, AnInvalidPatternIsFalseEverywhere) {
    for (const char* pattern : {"(", "[a", "*", "a{2", "(?<"}) {
        sregex expression;
        EXPECT_FALSE(Utils::CompileRegExp(pattern, true, expression)) << pattern;
        EXPECT_FALSE(Utils::CompileRegExp(pattern, false, expression)) << pattern;
        EXPECT_FALSE(Utils::MatchRegExp("text", pattern, true)) << pattern;
        EXPECT_FALSE(Utils::SearchRegExp("text", pattern, false)) << pattern;
        EXPECT_FALSE(Utils::ValidateRegExp(pattern)) << pattern;
    }
}

TEST(Utils, AnExpressionThatWasNeverCompiledMatchesNothing) {
    const sregex expression;
    EXPECT_FALSE(Utils::MatchRegExp("", expression));
    EXPECT_FALSE(Utils::MatchRegExp("text", expression));
    EXPECT_FALSE(Utils::SearchRegExp("text", expression));
}

TEST(Utils, ValidPatternsValidate) {
    for (const char* pattern : {"a", "a|b", "^[A-Z]+\\d*$", "(a)\\1"}) {
        EXPECT_TRUE(Utils::ValidateRegExp(pattern)) << pattern;
    }
}
