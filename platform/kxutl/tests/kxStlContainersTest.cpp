#include <gmock/gmock.h>
#include <kxutl/kxStlMap.h>
#include <kxutl/kxStlSet.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

namespace {

using testing::ElementsAre;
using testing::Pair;

TEST(kxStlVector, IsAStandardVectorInBothDirections) {
    kxStlVector<int> numbers = {1, 2, 3};
    numbers.push_back(4);
    const std::vector<int> standard = numbers;
    const kxStlVector<int> again = standard;
    EXPECT_THAT(again, ElementsAre(1, 2, 3, 4));
    numbers = {9};
    EXPECT_THAT(numbers, ElementsAre(9));
    EXPECT_THAT(kxStlVector<int>(2, 7), ElementsAre(7, 7));
    EXPECT_EQ(again, kxStlVector<int>(standard.begin(), standard.end()));
}

TEST(kxStlSet, KeepsKeysInByteOrderAndOnce) {
    kxStlSet<kxString> names = {"b", "B", "\xc3\xa4", "b"};
    EXPECT_THAT(names, ElementsAre("B", "b", "\xc3\xa4"));
    names = std::set<kxString>{"x"};
    EXPECT_THAT(names, ElementsAre("x"));
}

TEST(kxStlMap, IsOrderedByBytes) {
    kxStlMap<kxString, int> numbers = {{"b", 2}, {"B", 1}, {"\xff", 3}};
    EXPECT_THAT(numbers, ElementsAre(Pair("B", 1), Pair("b", 2), Pair("\xff", 3)));
}

TEST(kxStlMap, CheckedLookupGivesTheValueForReadingAndWriting) {
    kxStlMap<kxString, int> numbers = {{"a", 1}};
    numbers.at("a") = 5;
    const auto& constant = numbers;
    EXPECT_EQ(constant.at("a"), 5);
}

TEST(kxStlMap, CheckedLookupOfAMissingKeyTellsSoAndNeverInserts) {
    kxStlMap<kxString, int> numbers;
    const auto& constant = numbers;
    for (const auto lookup :
         {+[](kxStlMap<kxString, int>& map) { return map.at("a"); },
          +[](kxStlMap<kxString, int>& map) { return std::as_const(map).at("a"); }}) {
        try {
            lookup(numbers);
            FAIL() << "expected std::out_of_range";
        } catch (const std::out_of_range& error) {
            EXPECT_STREQ(error.what(), "invalid map<K, T> key");
        }
    }
    EXPECT_TRUE(constant.empty());
}

}  // namespace
