#include <gtest/gtest.h>

#include "core/Clock.h"

using kxudm::core::FormatTime;

TEST(FormatTime, WholeSecondsHaveNoFraction) {
    EXPECT_EQ(FormatTime(0), "1970-01-01T00:00:00Z");
    EXPECT_EQ(FormatTime(1769860800LL * 1000000), "2026-01-31T12:00:00Z");
}

TEST(FormatTime, MicrosecondsFollowTheSeconds) {
    EXPECT_EQ(FormatTime(1), "1970-01-01T00:00:00.000001Z");
    EXPECT_EQ(FormatTime(1500000), "1970-01-01T00:00:01.500000Z");
}

TEST(FormatTime, TimesBefore1970CountBackwards) {
    EXPECT_EQ(FormatTime(-1000000), "1969-12-31T23:59:59Z");
    EXPECT_EQ(FormatTime(-1), "1969-12-31T23:59:59.999999Z");
}
