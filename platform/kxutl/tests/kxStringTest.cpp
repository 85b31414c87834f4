#include <gtest/gtest.h>
#include <kxutl/kxString.h>

#include <map>
#include <type_traits>
#include <unordered_map>
#include <vector>

namespace {

static_assert(std::is_base_of_v<std::string, kxString>);
static_assert(std::is_nothrow_move_constructible_v<kxString>);
static_assert(std::is_nothrow_move_assignable_v<kxString>);

TEST(kxString, ConvertsFromEveryFormOfText) {
    const std::string standard = "abc";
    const std::string_view view = "abc";
    const std::vector<char> bytes = {'a', 'b', 'c'};
    const kxString expected("abc");
    EXPECT_EQ(kxString(standard), expected);
    EXPECT_EQ(kxString(view), expected);
    EXPECT_EQ(kxString("abcdef", 3), expected);
    EXPECT_EQ(kxString(bytes.begin(), bytes.end()), expected);
    const kxString implicitly = standard + "";
    EXPECT_EQ(implicitly, "abc");
    EXPECT_EQ(kxString(3, 'x'), "xxx");
}

TEST(kxString, OfANullPointerIsEmpty) {
    const char* nothing = nullptr;
    EXPECT_EQ(kxString(nothing), "");
}

TEST(kxString, KeepsEmbeddedNulAndInvalidUtf8) {
    const kxString text("a\0\xff\xc0", 4);
    EXPECT_EQ(text.size(), 4u);
    EXPECT_EQ(text[1], '\0');
    EXPECT_EQ(text[2], '\xff');
    EXPECT_NE(text, kxString("a"));
}

TEST(kxString, ComparesBytesUnsigned) {
    EXPECT_LT(kxString("z"), kxString("\x80"));
    EXPECT_LT(kxString("Z"), kxString("a"));
    EXPECT_LT(kxString("a"), kxString("a\0", 2));
    std::map<kxString, int> ordered = {{"\xff", 3}, {"a", 2}, {"B", 1}};
    EXPECT_EQ(ordered.begin()->first, "B");
    EXPECT_EQ(ordered.rbegin()->first, "\xff");
}

TEST(kxString, TakesMuchText) {
    kxString text(10'000'000, 'x');
    text += "end";
    EXPECT_EQ(text.size(), 10'000'003u);
    EXPECT_EQ(text.substr(10'000'000), "end");
}

TEST(kxString, IsAKeyOfUnorderedMaps) {
    std::unordered_map<kxString, int> numbers;
    numbers["a"] = 1;
    numbers[kxString("a\0", 2)] = 2;
    EXPECT_EQ(numbers.size(), 2u);
    EXPECT_EQ(numbers.at("a"), 1);
}

TEST(kxString, PrintsInTestsAsText) {
    EXPECT_EQ(testing::PrintToString(kxString("a b")), "\"a b\"");
}

}  // namespace
