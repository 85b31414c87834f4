#include <gtest/gtest.h>
#include <kxlmosa/osaTime.h>
#include <kxutl/kxString.h>

#include <limits>

namespace {

kxString Formatted(std::time_t seconds, const kxString& format) {
    kxString text = "unchanged";
    EXPECT_TRUE(osaTime(seconds).GetFormatTime(format, text));
    return text;
}

TEST(osaTime, CurrentTimeLiesBetweenTwoReadingsOfTheClock) {
    const std::time_t before = std::time(nullptr);
    const std::time_t now = osaTime::GetCurrentTime().GetSeconds();
    EXPECT_GE(now, before);
    EXPECT_LE(now, std::time(nullptr));
}

TEST(osaTime, IsWrittenInLocalTimeAsStrftimeDoes) {
    const std::time_t seconds = 1'600'000'000;
    std::tm fields{};
    ASSERT_NE(::localtime_r(&seconds, &fields), nullptr);
    char expected[256];
    ASSERT_GT(std::strftime(expected, sizeof expected, "%A %d %B %Y, %H:%M:%S", &fields), 0u);
    EXPECT_EQ(Formatted(seconds, "%A %d %B %Y, %H:%M:%S"), expected);
    EXPECT_EQ(Formatted(seconds, "year %Y"), "year 2020");
    EXPECT_NE(Formatted(seconds, "%c").find("20"), kxString::npos);
}

TEST(osaTime, AnEmptyTextIsNoFailure) {
    EXPECT_EQ(Formatted(0, ""), "");
}

TEST(osaTime, TakesLongFormats) {
    kxString format;
    kxString expected;
    for (int i = 0; i < 20'000; ++i) {
        format += "%Y";
        expected += "2020";
    }
    EXPECT_EQ(Formatted(1'600'000'000, format), expected);
    EXPECT_EQ(Formatted(0, kxString(100'000, 'x')), kxString(100'000, 'x'));
}

TEST(osaTime, RefusesWhatCannotBeWrittenAndLeavesTheTextAlone) {
    kxString text = "old";
    EXPECT_FALSE(osaTime(std::numeric_limits<std::time_t>::max()).GetFormatTime("%c", text));
    EXPECT_FALSE(osaTime(0).GetFormatTime("%99999999Y", text));
    EXPECT_EQ(text, "old");
}

}  // namespace
