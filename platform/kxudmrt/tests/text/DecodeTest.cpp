#include <gtest/gtest.h>

#include "text/Decode.h"

using namespace kxudm::text;

namespace {

std::string Utf16(const std::u16string& text, bool little) {
    std::string bytes = little ? "\xFF\xFE" : "\xFE\xFF";
    for (const char16_t unit : text) {
        const char low = static_cast<char>(unit & 0xFF);
        const char high = static_cast<char>(unit >> 8);
        bytes += little ? low : high;
        bytes += little ? high : low;
    }
    return bytes;
}

}  // namespace

TEST(Decode, TakesUtf8WithAndWithoutAMark) {
    EXPECT_EQ(Decode("\xC3\xA9t\xC3\xA9\n"), "\xC3\xA9t\xC3\xA9\n");
    EXPECT_EQ(Decode("\xEF\xBB\xBFsteel"), "steel");
    EXPECT_EQ(Decode(""), "");
}

TEST(Decode, TakesUtf16OfBothOrders) {
    for (const bool little : {true, false}) {
        EXPECT_EQ(Decode(Utf16(u"St\u00E4rke \u6771", little)), "St\xC3\xA4rke \xE6\x9D\xB1");
        EXPECT_EQ(Decode(Utf16(u"\U0001F527", little)), "\xF0\x9F\x94\xA7");
    }
}

TEST(Decode, PutsAReplacementForHalfAPairOfUtf16) {
    EXPECT_EQ(Decode(Utf16({u'a', 0xD83D}, true)), "a\xEF\xBF\xBD");
    EXPECT_EQ(Decode(Utf16({0xDD27, u'a'}, true)),
              "\xEF\xBF\xBD"
              "a");
}

TEST(Decode, LeavesOutHalfAUnitOfUtf16) {
    EXPECT_EQ(Decode(Utf16(u"a", true) + "x"), "a");
    EXPECT_EQ(Decode("\xFF\xFE"), "");
}

TEST(Decode, TakesBytesThatAreNoUtf8ForLatin1) {
    EXPECT_EQ(Decode("St\xE4rke"), "St\xC3\xA4rke");
}

TEST(Decode, RefusesBinaries) {
    EXPECT_EQ(Decode(std::string("solid\0binary", 12)), "");
    EXPECT_EQ(Decode("\x7F"
                     "ELF\x02\x01\x01"),
              "");
    EXPECT_EQ(Decode(Utf16({u'a', 0, u'b'}, true)), "");
}

TEST(Decode, TakesTheControlCharactersOfTexts) {
    EXPECT_EQ(Decode("a\tb\r\n\f\x1A"), "a\tb\r\n\f\x1A");
}

TEST(Decode, EndsWithTheLastWholeCharacter) {
    const std::string text = std::string(kLongestText - 1, 'a') + "\xC3\xA9 b";
    EXPECT_EQ(Decode(text), std::string(kLongestText - 1, 'a'));
}

TEST(Decode, QuickLookAgrees) {
    EXPECT_TRUE(MayBeText("text"));
    EXPECT_TRUE(
        MayBeText("\xFF\xFE"
                  "a\0"));
    EXPECT_FALSE(MayBeText(std::string_view("a\0b", 3)));
}
