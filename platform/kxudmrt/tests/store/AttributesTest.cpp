#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxudm/UDMException.h>

#include <cmath>
#include <limits>
#include <random>

#include "store/Attributes.h"

using namespace kxudm::store;
using testing::HasSubstr;

namespace {

const AttributeList& EveryKind() {
    static const AttributeList list = {
        {"empty", kxVariant()},
        {"true", kxVariant(true)},
        {"false", kxVariant(false)},
        {"zero", kxVariant(0)},
        {"large", kxVariant(std::numeric_limits<std::int64_t>::max())},
        {"small", kxVariant(std::numeric_limits<std::int64_t>::min())},
        {"text", kxVariant(std::string("quote \" apostrophe ' NUL \0 \xc3\xa4 \xff", 31))},
        {"", kxVariant("under the empty name")},
        {std::string("na\0me", 5), kxVariant("")},
        {"list", kxVariant(kxStlVector<kxString>{"one", "", std::string("t\0wo", 4)})},
        {"no entries", kxVariant(kxStlVector<kxString>{})},
        {"float", kxVariant(0.1f)},
        {"double", kxVariant(-0.1)},
        {"infinite", kxVariant(std::numeric_limits<double>::infinity())},
        {"long", kxVariant(std::string(100000, 'x'))}};
    return list;
}

}  // namespace

TEST(PackedAttributes, EveryKindComesBackAsItWentInItsOrder) {
    const AttributeList back = UnpackAttributes(PackAttributes(EveryKind()));
    ASSERT_EQ(back.size(), EveryKind().size());
    for (std::size_t i = 0; i < back.size(); ++i) {
        EXPECT_EQ(back[i].first, EveryKind()[i].first);
        EXPECT_EQ(back[i].second.GetKind(), EveryKind()[i].second.GetKind()) << back[i].first;
        EXPECT_EQ(back[i].second, EveryKind()[i].second) << back[i].first;
    }
}

TEST(PackedAttributes, NotANumberStaysOne) {
    const AttributeList back = UnpackAttributes(PackAttributes({{"nan", kxVariant(std::nan(""))}}));
    EXPECT_TRUE(std::isnan(back.at(0).second.GetDouble()));
}

TEST(PackedAttributes, TheFormatOfVersionOneIsFixed) {
    const AttributeList list = {{"a", kxVariant("xy")},
                                {"b", kxVariant(-3)},
                                {"c", kxVariant(true)},
                                {"d", kxVariant(1.0)},
                                {"e", kxVariant(kxStlVector<kxString>{"q"})}};
    const std::string expected(
        "\x01\x05"
        "\x01"
        "a\x03\x02xy"
        "\x01"
        "b\x02\x01\x05"
        "\x01"
        "c\x01\x01\x01"
        "\x01"
        "d\x06\x08\0\0\0\0\0\0\xf0\x3f"
        "\x01"
        "e\x04\x03\x01\x01q",
        37);
    EXPECT_EQ(PackAttributes(list), expected);
    EXPECT_EQ(UnpackAttributes(expected), list);
}

TEST(PackedAttributes, NoAttributesAreNoBytes) {
    EXPECT_EQ(PackAttributes({}), "");
    EXPECT_TRUE(UnpackAttributes("").empty());
    EXPECT_EQ(MergePackedAttributes("", {}), "");
}

TEST(PackedAttributes, APointerIsRefusedWithItsAttributesName) {
    int object = 0;
    try {
        (void)PackAttributes({{"item", kxVariant(&object, "int")}});
        FAIL() << "a pointer was packed";
    } catch (const kxudm::UDMException& error) {
        EXPECT_THAT(error.what(), HasSubstr("'item'"));
    }
}

TEST(PackedAttributes, OneAttributeIsFoundWithoutTheOthers) {
    const std::string packed = PackAttributes(EveryKind());
    kxVariant value;
    EXPECT_TRUE(FindPackedAttribute(packed, "double", value));
    EXPECT_EQ(value, kxVariant(-0.1));
    EXPECT_FALSE(FindPackedAttribute(packed, "Double", value));
    EXPECT_EQ(value, kxVariant(-0.1));
    EXPECT_FALSE(FindPackedAttribute("", "double", value));
}

TEST(PackedAttributes, AMergeKeepsPlacesAndPutsNewNamesLast) {
    const std::string packed = PackAttributes({{"a", 1}, {"b", 2}, {"c", 3}});
    const AttributeList merged = UnpackAttributes(
        MergePackedAttributes(packed, {{"d", 4}, {"b", kxVariant("two")}, {"a", kxVariant()}}));
    const AttributeList expected = {
        {"a", kxVariant()}, {"b", kxVariant("two")}, {"c", 3}, {"d", 4}};
    EXPECT_EQ(merged, expected);
}

TEST(PackedAttributes, TheLastChangeOfANameCounts) {
    const std::string packed = PackAttributes({{"a", 1}});
    const AttributeList merged =
        UnpackAttributes(MergePackedAttributes(packed, {{"a", 2}, {"b", 1}, {"a", 3}, {"b", 2}}));
    const AttributeList expected = {{"a", 3}, {"b", 2}};
    EXPECT_EQ(merged, expected);
}

TEST(PackedAttributes, EveryTruncationIsAnError) {
    AttributeList list = EveryKind();
    list.pop_back();
    const std::string packed = PackAttributes(list);
    for (std::size_t size = 1; size < packed.size(); ++size) {
        EXPECT_THROW((void)UnpackAttributes(packed.substr(0, size)), kxudm::UDMException) << size;
    }
}

TEST(PackedAttributes, BytesBehindTheEndAreAnError) {
    EXPECT_THROW((void)UnpackAttributes(PackAttributes({{"a", 1}}) + "x"), kxudm::UDMException);
}

TEST(PackedAttributes, AnUnknownVersionIsAnError) {
    std::string packed = PackAttributes({{"a", 1}});
    packed[0] = 2;
    try {
        (void)UnpackAttributes(packed);
        FAIL() << "an unknown version was read";
    } catch (const kxudm::UDMException& error) {
        EXPECT_THAT(error.what(), HasSubstr("version"));
    }
}

TEST(PackedAttributes, HugeCountsTakeNoMemory) {
    const std::string huge = "\xff\xff\xff\xff\xff\xff\xff\xff\x7f";
    EXPECT_THROW((void)UnpackAttributes("\x01" + huge), kxudm::UDMException);
    EXPECT_THROW((void)UnpackAttributes("\x01\x01\x01z\x04\x09" + huge), kxudm::UDMException);
    EXPECT_THROW((void)UnpackAttributes("\x01\x01" + huge + "z"), kxudm::UDMException);
}

TEST(PackedAttributes, AlteredBytesAreReadOrRefusedButNeverMore) {
    AttributeList list = EveryKind();
    list.pop_back();
    const std::string packed = PackAttributes(list);
    int refused = 0;
    for (std::size_t i = 0; i < packed.size(); ++i) {
        for (int bit = 0; bit < 8; ++bit) {
            std::string altered = packed;
            altered[i] = static_cast<char>(altered[i] ^ (1 << bit));
            try {
                (void)UnpackAttributes(altered);
                (void)MergePackedAttributes(altered, {{"text", 1}});
            } catch (const kxudm::UDMException&) {
                ++refused;
            }
        }
    }
    EXPECT_GT(refused, 0);
}

TEST(PackedAttributes, RandomBytesAreReadOrRefusedButNeverMore) {
    std::mt19937 random(20240501);
    for (int round = 0; round < 20000; ++round) {
        std::string bytes(random() % 40, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(random() % 3 == 0 ? random() : random() % 8);
        }
        if (!bytes.empty()) {
            bytes[0] = 1;
        }
        try {
            (void)UnpackAttributes(bytes);
        } catch (const kxudm::UDMException&) {
            continue;
        }
    }
}
