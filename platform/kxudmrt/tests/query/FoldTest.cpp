#include <gtest/gtest.h>
#include <utf8proc.h>

#include "sql/Fold.h"
#include "sql/sqlite/Connection.h"

using kxudm::sql::Fold;
namespace sql = kxudm::sql;

namespace {

std::string Character(utf8proc_int32_t point) {
    utf8proc_uint8_t bytes[4];
    const auto size = static_cast<std::size_t>(utf8proc_encode_char(point, bytes));
    return {reinterpret_cast<const char*>(bytes), size};
}

}  // namespace

TEST(Fold, TakesCaseAway) {
    EXPECT_EQ(Fold("Bolt M8"), "bolt m8");
    EXPECT_EQ(Fold("STRA\xC3\x9F"
                   "E"),
              "strasse");
    EXPECT_EQ(Fold("\xCE\x9F\xCE\x94\xCE\x9F\xCE\xA3"), Fold("\xCE\xBF\xCE\xB4\xCE\xBF\xCF\x82"));
}

TEST(Fold, TakesAccentsAwayWhetherComposedOrNot) {
    EXPECT_EQ(Fold("\xC3\x84rmel"), "armel");
    EXPECT_EQ(Fold("A\xCC\x88rmel"), "armel");
    EXPECT_EQ(Fold("\xC4\xB0zmir"), "izmir");
    EXPECT_EQ(Fold("\xCC\x81"), "");
}

TEST(Fold, LeavesMarksThatMakeAnotherLetter) {
    // Hiragana GA, Devanagari KI.
    EXPECT_EQ(Fold("\xE3\x81\x8C"), "\xE3\x81\x8C");
    EXPECT_EQ(Fold("\xE0\xA4\x95\xE0\xA4\xBF"), "\xE0\xA4\x95\xE0\xA4\xBF");
}

TEST(Fold, LeavesAsTheyAreBytesThatAreNoUtf8) {
    EXPECT_EQ(Fold("A\xFFZ"), "A\xFFZ");
    EXPECT_EQ(Fold("A\xC3"), "A\xC3");
    EXPECT_EQ(Fold(std::string("A\0B", 3)), std::string("a\0b", 3));
    EXPECT_EQ(Fold(""), "");
}

TEST(Fold, ASecondTimeChangesNothing) {
    for (utf8proc_int32_t point = 1; point < 0x30000; ++point) {
        if (utf8proc_codepoint_valid(point) != 0) {
            const std::string once = Fold("x" + Character(point) + "y");
            ASSERT_EQ(Fold(once), once) << point;
        }
    }
}

TEST(Fold, IsTheSameInTheDatabase) {
    const auto connection = sql::sqlite::Open({.file = ":memory:", .create = true});
    sql::Statement fold(*connection, "SELECT kxudm_fold(?)");
    for (const std::string text : {"Bolt", "\xC3\x84rmel", "", "A\xFF"}) {
        fold.Bind(1, text);
        ASSERT_TRUE(fold.Step());
        EXPECT_EQ(fold.Text(0), Fold(text));
        fold.Reset();
    }
    fold.Bind(1, 12);
    ASSERT_TRUE(fold.Step());
    EXPECT_EQ(fold.Kind(0), sql::ColumnKind::Integer);
    fold.Reset();
    fold.BindNull(1);
    ASSERT_TRUE(fold.Step());
    EXPECT_TRUE(fold.IsNull(0));
}
