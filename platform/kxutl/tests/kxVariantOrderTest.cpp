#include <gtest/gtest.h>
#include <kxutl/kxVariant.h>

#include <algorithm>
#include <limits>
#include <random>
#include <vector>

namespace {

using List = kxStlVector<kxString>;

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double Infinity = std::numeric_limits<double>::infinity();
constexpr std::int64_t TwoTo53 = 9007199254740992;
int firstTarget[2];

// Ascending; the values of one row are equal to each other.
std::vector<std::vector<kxVariant>> Rows() {
    return {
        {kxVariant()},
        {false},
        {true},
        {-Infinity, -std::numeric_limits<float>::infinity()},
        {-1e300},
        {std::numeric_limits<std::int64_t>::min(), -9223372036854775808.0},
        {-2},
        {-1.5, -1.5F},
        {-1, -1.0},
        {0, 0.0, -0.0, 0.0F},
        {std::numeric_limits<double>::denorm_min()},
        {0.1},
        {0.1F},
        {1, 1.0, 1.0F},
        {TwoTo53 - 1},
        {TwoTo53, 9007199254740992.0},
        {TwoTo53 + 1},
        {TwoTo53 + 2, 9007199254740994.0},
        {std::numeric_limits<std::int64_t>::max() - 1},
        {std::numeric_limits<std::int64_t>::max()},
        {9223372036854775808.0},
        {Infinity},
        {NaN, -NaN, std::numeric_limits<float>::quiet_NaN()},
        {""},
        {"1"},
        {"12"},
        {"2"},
        {"a"},
        {kxString("a\0", 2)},
        {"\xff"},
        {List{}},
        {List{""}},
        {List{"a"}},
        {List{"a", "a"}},
        {List{"b"}},
        {kxVariant(nullptr, "A")},
        {kxVariant(&firstTarget[0], "A"), kxVariant(&firstTarget[0], "A")},
        {kxVariant(&firstTarget[1], "A")},
        {kxVariant(nullptr, "B")},
    };
}

TEST(kxVariantOrder, IsTotalAndAgreesWithEqualityForEveryPair) {
    const auto rows = Rows();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (std::size_t j = 0; j < rows.size(); ++j) {
            for (const kxVariant& a : rows[i]) {
                for (const kxVariant& b : rows[j]) {
                    EXPECT_EQ(a < b, i < j) << a << " < " << b;
                    EXPECT_EQ(a == b, i == j) << a << " == " << b;
                    EXPECT_EQ(a != b, i != j) << a << " != " << b;
                    EXPECT_EQ(a > b, i > j) << a << " > " << b;
                }
            }
        }
    }
}

TEST(kxVariantOrder, SortsAnyMixture) {
    std::vector<std::pair<kxVariant, std::size_t>> values;
    const auto rows = Rows();
    for (std::size_t i = 0; i < rows.size(); ++i) {
        for (const kxVariant& value : rows[i]) {
            values.emplace_back(value, i);
        }
    }
    std::mt19937 random(20201121);
    for (int round = 0; round < 50; ++round) {
        std::shuffle(values.begin(), values.end(), random);
        std::sort(values.begin(), values.end(), [](const auto& a, const auto& b) {
            return a.first < b.first;
        });
        EXPECT_TRUE(std::is_sorted(values.begin(), values.end(), [](const auto& a, const auto& b) {
            return a.second < b.second;
        }));
    }
}

TEST(kxVariantOrder, ATextIsNeverEqualToTheNumberItShows) {
    EXPECT_NE(kxVariant("12"), kxVariant(12));
    EXPECT_NE(kxVariant(""), kxVariant());
    EXPECT_NE(kxVariant(true), kxVariant(1));
    EXPECT_NE(kxVariant(List{"a"}), kxVariant("a"));
}

}  // namespace
