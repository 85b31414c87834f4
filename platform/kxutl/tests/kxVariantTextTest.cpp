#include <gmock/gmock.h>
#include <kxutl/kxVariant.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <limits>
#include <random>

namespace {

using List = kxStlVector<kxString>;

TEST(kxVariantText, OfIntegersReadsBackAtTheLimits) {
    for (const std::int64_t number : {std::int64_t{0},
                                      std::int64_t{-1},
                                      std::numeric_limits<std::int64_t>::max(),
                                      std::numeric_limits<std::int64_t>::min()}) {
        EXPECT_EQ(kxVariant(kxVariant(number).GetString()).GetInteger64(), number);
    }
    EXPECT_EQ(kxVariant(-12).GetString(), "-12");
}

TEST(kxVariantText, OfDoublesIsTheShortestThatReadsBack) {
    EXPECT_EQ(kxVariant(0.1).GetString(), "0.1");
    EXPECT_EQ(kxVariant(12.0).GetString(), "12");
    EXPECT_EQ(kxVariant(-0.0).GetString(), "-0");
    EXPECT_EQ(kxVariant(1e300).GetString(), "1e+300");
    std::mt19937_64 random(7);
    for (int i = 0; i < 20'000; ++i) {
        const double number = std::bit_cast<double>(random());
        if (std::isfinite(number)) {
            ASSERT_EQ(kxVariant(kxVariant(number).GetString()).GetDouble(), number);
        }
    }
}

TEST(kxVariantText, OfFloatsIsShortAsAFloat) {
    EXPECT_EQ(kxVariant(0.1F).GetString(), "0.1");
    std::mt19937 random(8);
    for (int i = 0; i < 20'000; ++i) {
        const float number = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        if (std::isfinite(number)) {
            ASSERT_EQ(static_cast<float>(kxVariant(kxVariant(number).GetString()).GetDouble()),
                      number);
        }
    }
}

TEST(kxVariantText, OfInfinityAndNaNReadsBack) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(kxVariant(kxVariant(infinity).GetString()).GetDouble(), infinity);
    EXPECT_EQ(kxVariant(kxVariant(-infinity).GetString()).GetDouble(), -infinity);
    EXPECT_TRUE(std::isnan(kxVariant(kxVariant(std::nan("")).GetString()).GetDouble()));
}

TEST(kxVariantText, NumbersAreReadWithBlanksAroundAndASign) {
    EXPECT_EQ(kxVariant("12").GetInteger(), 12);
    EXPECT_EQ(kxVariant(" \t+12\r\n").GetInteger(), 12);
    EXPECT_EQ(kxVariant("-12").GetInteger(), -12);
    EXPECT_EQ(kxVariant("12.9").GetInteger(), 12);
    EXPECT_EQ(kxVariant("1e3").GetInteger(), 1000);
    EXPECT_EQ(kxVariant(" 2.5 ").GetDouble(), 2.5);
    EXPECT_EQ(kxVariant("+2.5").GetDouble(), 2.5);
}

TEST(kxVariantText, ThatIsNoNumberReadsAsZero) {
    for (const char* text : {"", " ", "abc", "12abc", "1 2", "+", "-", "+-1", "--1", "0x", "1,5"}) {
        EXPECT_EQ(kxVariant(text).GetInteger(), 0) << text;
        EXPECT_EQ(kxVariant(text).GetDouble(), 0) << text;
        EXPECT_FALSE(kxVariant(text).GetBoolean()) << text;
    }
    EXPECT_EQ(kxVariant(kxString("12\0", 3)).GetInteger(), 0);
}

TEST(kxVariantText, OutOfRangeIsLimited) {
    EXPECT_EQ(kxVariant("99999999999999999999").GetInteger64(),
              std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(kxVariant("-99999999999999999999").GetInteger64(),
              std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(kxVariant("1e999").GetDouble(), std::numeric_limits<double>::infinity());
    EXPECT_EQ(kxVariant("-1e999").GetDouble(), -std::numeric_limits<double>::infinity());
    EXPECT_EQ(kxVariant("1e-999").GetDouble(), 0);
}

TEST(kxVariantText, TruthIsReadFromWordsAndNumbers) {
    for (const char* text : {"true", "TRUE", "Yes", "on", "1", "-3", "0.5", " true "}) {
        EXPECT_TRUE(kxVariant(text).GetBoolean()) << text;
    }
    for (const char* text : {"false", "no", "off", "0", "0.0", "truely", "t", "x"}) {
        EXPECT_FALSE(kxVariant(text).GetBoolean()) << text;
    }
}

TEST(kxVariantText, OfListsQuotesAsTclDoes) {
    EXPECT_EQ(kxVariant(List{}).GetString(), "");
    EXPECT_EQ(kxVariant(List{"a", "b"}).GetString(), "a b");
    EXPECT_EQ(kxVariant(List{"a b", ""}).GetString(), "{a b} {}");
    EXPECT_EQ(kxVariant(List{""}).GetString(), "{}");
    EXPECT_EQ(kxVariant(List{"#x", "y#"}).GetString(), "{#x} y#");
    EXPECT_EQ(kxVariant(List{"$x", "[y]"}).GetString(), "{$x} {[y]}");
    EXPECT_EQ(kxVariant(List{"a}b"}).GetString(), "a\\}b");
    EXPECT_EQ(kxVariant(List{"{"}).GetString(), "\\{");
    EXPECT_EQ(kxVariant(List{"a\\"}).GetString(), "a\\\\");
    EXPECT_EQ(kxVariant(List{"\\\n\t "}).GetString(), "\\\\\\n\\t\\ ");
}

TEST(kxVariantText, OfAPointerTellsTypeAndAddress) {
    EXPECT_EQ(kxVariant(reinterpret_cast<void*>(0xabc0), "kxct::Item").GetString(),
              "kxptr:kxct::Item:abc0");
    EXPECT_EQ(kxVariant(nullptr, "kxct::Item").GetString(), "kxptr:kxct::Item:0");
}

TEST(kxVariantText, KeepsAnyBytesAndMuchText) {
    const kxString bytes("\0\xff\xc0\x80", 4);
    EXPECT_EQ(kxVariant(bytes).GetString(), bytes);
    const kxString much(5'000'000, 'x');
    EXPECT_EQ(kxVariant(much).GetString().size(), much.size());
    EXPECT_EQ(kxVariant(much).GetInteger(), 0);
    EXPECT_EQ(kxVariant(kxString(1'000'000, '9')).GetInteger64(),
              std::numeric_limits<std::int64_t>::max());
}

}  // namespace
