#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>
#include <random>

#include "exchange/Text.h"

namespace kxudm::exchange {
namespace {

std::string Escaped(std::string_view text) {
    std::string out;
    AppendEscaped(out, text);
    return out;
}

TEST(ExchangeText, StandsAsItIsWhereXmlCanHoldIt) {
    EXPECT_EQ(Escaped("Wheel 7 / left"), "Wheel 7 / left");
    EXPECT_EQ(Escaped("\xC3\x84rger"), "\xC3\x84rger");
    EXPECT_EQ(Escaped(""), "");
}

TEST(ExchangeText, HoldsMarkupAndBlanksAsReferences) {
    EXPECT_EQ(Escaped("a<b>&\"c\"\t\r\n"), "a&lt;b&gt;&amp;&quot;c&quot;&#9;&#13;&#10;");
}

TEST(ExchangeText, WritesABackslashTwiceAndOtherBytesInHexadecimal) {
    EXPECT_EQ(Escaped("C:\\x"), "C:\\\\x");
    EXPECT_EQ(Escaped(std::string_view("\0\x1F", 2)), "\\x00\\x1F");
    EXPECT_EQ(Escaped("\xFFz\xC3"), "\\xFFz\\xC3");
    EXPECT_EQ(Escaped("\xEF\xBF\xBE!"), "\\xEF\\xBF\\xBE!");
    EXPECT_EQ(Escaped("\xEF\xBF\xBD"), "\xEF\xBF\xBD");
}

TEST(ExchangeText, GivesEveryTextBack) {
    std::mt19937 random(7);
    for (int i = 0; i < 20000; ++i) {
        std::string text;
        for (unsigned n = random() % 12; n > 0; --n) {
            text += random() % 3 == 0 ? static_cast<char>(random() % 256)
                                      : "\\x0F<&\xC3\xA4\xEF\xBF\xBE"[random() % 13];
        }
        std::string parsed;
        const std::string escaped = Escaped(text);
        for (std::size_t at = 0; at < escaped.size();) {
            const auto is = [&](std::string_view ref, char c) {
                if (escaped.compare(at, ref.size(), ref) != 0) {
                    return false;
                }
                parsed += c;
                at += ref.size();
                return true;
            };
            if (!is("&amp;", '&') && !is("&lt;", '<') && !is("&gt;", '>') && !is("&quot;", '"') &&
                !is("&#9;", '\t') && !is("&#10;", '\n') && !is("&#13;", '\r')) {
                parsed += escaped[at++];
            }
        }
        ASSERT_EQ(Unescaped(parsed), text) << escaped;
    }
}

TEST(ExchangeText, RefusesWhatItWouldNotHaveWritten) {
    for (const char* text : {"\\", "\\y", "\\x4", "\\x4g", "\\xff", "\\x41", "a\\", "\\xC3\\xA4"}) {
        EXPECT_EQ(Unescaped(text), std::nullopt) << text;
    }
}

TEST(ExchangeText, WritesNumbersInOneWay) {
    EXPECT_EQ(NumberText(1.5), "1.5");
    EXPECT_EQ(NumberText(std::int64_t{-7}), "-7");
    for (const double value : {0.1, 1e300, -2.5, 5e-324, 0.0, 100000.0}) {
        EXPECT_EQ(DoubleOf(NumberText(value)), value);
    }
    EXPECT_EQ(IntegerOf("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    for (const char* text : {"", "01", "+1", " 1", "1 ", "-0", "9223372036854775808", "1.0"}) {
        EXPECT_EQ(IntegerOf(text), std::nullopt) << text;
    }
    for (const char* text : {"", "1.50", "nan", "inf", "1e999", "0x1", "1,5", "01"}) {
        EXPECT_EQ(DoubleOf(text), std::nullopt) << text;
    }
}

TEST(ExchangeText, ReadsTimesInTheirOneForm) {
    EXPECT_EQ(TimeOf("1970-01-01T00:00:00Z"), 0);
    EXPECT_EQ(TimeOf("1970-01-01T00:00:01.000123Z"), 1000123);
    EXPECT_EQ(TimeOf("1969-12-31T23:59:59Z"), -1000000);
    EXPECT_EQ(TimeOf("2026-02-28T12:30:15Z"), 1772281815000000);
    for (const char* text : {"",
                             "2026-02-29T12:30:15Z",
                             "2026-13-01T00:00:00Z",
                             "2026-01-01T24:00:00Z",
                             "2026-01-01T00:60:00Z",
                             "2026-01-01T00:00:00",
                             "2026-01-01 00:00:00Z",
                             "2026-01-01T00:00:00.5Z",
                             "2026-01-01T00:00:00.000000Z",
                             "2026-01-01T00:00:00.000001Zx",
                             "99999999999999999999999"}) {
        EXPECT_EQ(TimeOf(text), std::nullopt) << text;
    }
}

TEST(ExchangeText, KnowsTheFormOfUids) {
    EXPECT_TRUE(IsBaseUid("01HZX0000000000000000000AB"));
    EXPECT_FALSE(IsBaseUid("01HZX0000000000000000000A"));
    EXPECT_FALSE(IsBaseUid("01HZX0000000000000000000ABC"));
    EXPECT_FALSE(IsBaseUid("01HZX0000000000000000000AU"));
    EXPECT_FALSE(IsBaseUid("81HZX0000000000000000000AB"));
    EXPECT_FALSE(IsBaseUid("01hzx0000000000000000000ab"));
}

}  // namespace
}  // namespace kxudm::exchange
