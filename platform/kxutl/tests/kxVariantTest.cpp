#include <gmock/gmock.h>
#include <kxutl/kxVariant.h>

#include <limits>
#include <sstream>
#include <typeinfo>

namespace kxct_test {
class Sample {};
}  // namespace kxct_test

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using List = kxStlVector<kxString>;

static_assert(std::is_nothrow_move_constructible_v<kxVariant>);
static_assert(std::is_nothrow_move_assignable_v<kxVariant>);
static_assert(sizeof(kxVariant) <= 40);
static_assert(!std::is_constructible_v<kxVariant, kxct_test::Sample*>,
              "a pointer without a type name must not become a boolean");
static_assert(!std::is_constructible_v<kxVariant, unsigned long long>);

TEST(kxVariant, NumbersOfKindsAreFixed) {
    EXPECT_EQ(kxVariant::EMPTY, 0);
    EXPECT_EQ(kxVariant::BOOLEAN, 1);
    EXPECT_EQ(kxVariant::INTEGER, 2);
    EXPECT_EQ(kxVariant::STRING, 3);
    EXPECT_EQ(kxVariant::STRINGLIST, 4);
    EXPECT_EQ(kxVariant::FLOAT, 5);
    EXPECT_EQ(kxVariant::DOUBLE, 6);
    EXPECT_EQ(kxVariant::POINTER, 7);
}

TEST(kxVariant, TakesItsKindFromTheTypeOfTheValue) {
    int target = 0;
    EXPECT_EQ(kxVariant().GetKind(), kxVariant::EMPTY);
    EXPECT_EQ(kxVariant(true).GetKind(), kxVariant::BOOLEAN);
    EXPECT_EQ(kxVariant(1).GetKind(), kxVariant::INTEGER);
    EXPECT_EQ(kxVariant(1L).GetKind(), kxVariant::INTEGER);
    EXPECT_EQ(kxVariant(1LL).GetKind(), kxVariant::INTEGER);
    EXPECT_EQ(kxVariant(1U).GetKind(), kxVariant::INTEGER);
    EXPECT_EQ(kxVariant("x").GetKind(), kxVariant::STRING);
    EXPECT_EQ(kxVariant(kxString("x")).GetKind(), kxVariant::STRING);
    EXPECT_EQ(kxVariant(std::string("x")).GetKind(), kxVariant::STRING);
    EXPECT_EQ(kxVariant(std::string_view("x")).GetKind(), kxVariant::STRING);
    EXPECT_EQ(kxVariant(List{"x"}).GetKind(), kxVariant::STRINGLIST);
    EXPECT_EQ(kxVariant(1.0F).GetKind(), kxVariant::FLOAT);
    EXPECT_EQ(kxVariant(1.0).GetKind(), kxVariant::DOUBLE);
    EXPECT_EQ(kxVariant(&target, "int").GetKind(), kxVariant::POINTER);
}

TEST(kxVariant, EmptyReadsAsNothingOfEachKind) {
    const kxVariant empty;
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_FALSE(empty.GetBoolean());
    EXPECT_EQ(empty.GetInteger(), 0);
    EXPECT_EQ(empty.GetDouble(), 0);
    EXPECT_EQ(empty.GetString(), "");
    EXPECT_THAT(empty.GetStringList(), IsEmpty());
    EXPECT_EQ(empty.GetPointer(), nullptr);
    EXPECT_EQ(empty.GetPointerTypeName(), "");
}

TEST(kxVariant, AnEmptyTextIsAValueAndReadsAsFalse) {
    const kxVariant text("");
    EXPECT_FALSE(text.IsEmpty());
    EXPECT_FALSE(text.GetBoolean());
    EXPECT_THAT(text.GetStringList(), IsEmpty());
}

TEST(kxVariant, ANullTextIsEmptyText) {
    const char* nothing = nullptr;
    EXPECT_EQ(kxVariant(nothing), kxVariant(""));
}

TEST(kxVariant, IntegersAreHeldWith64Bits) {
    const auto most = std::numeric_limits<std::int64_t>::max();
    const auto least = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(kxVariant(most).GetInteger64(), most);
    EXPECT_EQ(kxVariant(least).GetInteger64(), least);
    EXPECT_EQ(kxVariant(most).GetInteger(), std::numeric_limits<int>::max());
    EXPECT_EQ(kxVariant(least).GetInteger(), std::numeric_limits<int>::min());
}

TEST(kxVariant, FractionsAreCutAndHugeNumbersLimited) {
    EXPECT_EQ(kxVariant(2.9).GetInteger(), 2);
    EXPECT_EQ(kxVariant(-2.9).GetInteger(), -2);
    EXPECT_EQ(kxVariant(1e300).GetInteger64(), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(kxVariant(-1e300).GetInteger64(), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(kxVariant(std::numeric_limits<double>::quiet_NaN()).GetInteger(), 0);
    EXPECT_EQ(kxVariant(std::numeric_limits<double>::infinity()).GetInteger(),
              std::numeric_limits<int>::max());
}

TEST(kxVariant, BooleansReadAsNumbersAndText) {
    EXPECT_EQ(kxVariant(true).GetInteger(), 1);
    EXPECT_EQ(kxVariant(false).GetInteger(), 0);
    EXPECT_EQ(kxVariant(true).GetDouble(), 1);
    EXPECT_EQ(kxVariant(true).GetString(), "true");
    EXPECT_EQ(kxVariant(false).GetString(), "false");
}

TEST(kxVariant, ReadsListsAsTheirOnlyEntryOrNothing) {
    EXPECT_EQ(kxVariant(List{"12"}).GetInteger(), 12);
    EXPECT_EQ(kxVariant(List{"1.5"}).GetDouble(), 1.5);
    EXPECT_TRUE(kxVariant(List{"yes"}).GetBoolean());
    EXPECT_EQ(kxVariant(List{"1", "2"}).GetInteger(), 0);
    EXPECT_EQ(kxVariant(List{"1", "2"}).GetDouble(), 0);
    EXPECT_FALSE(kxVariant(List{"1", "2"}).GetBoolean());
    EXPECT_FALSE(kxVariant(List{}).GetBoolean());
}

TEST(kxVariant, GivesATextAsAListOfOne) {
    EXPECT_THAT(kxVariant("a b").GetStringList(), ElementsAre("a b"));
    EXPECT_THAT(kxVariant(12).GetStringList(), ElementsAre("12"));
    EXPECT_THAT(kxVariant(List{"a", ""}).GetStringList(), ElementsAre("a", ""));
}

TEST(kxVariant, PeeksWithoutConversion) {
    const kxVariant text("abc");
    ASSERT_NE(text.PeekString(), nullptr);
    EXPECT_EQ(*text.PeekString(), "abc");
    EXPECT_EQ(text.PeekStringList(), nullptr);
    EXPECT_EQ(kxVariant(1).PeekString(), nullptr);
    EXPECT_EQ(kxVariant(List{"a"}).PeekStringList()->size(), 1u);
}

TEST(kxVariant, KeepsPointersWithTheirTypeName) {
    int target = 0;
    kxVariant pointer(&target, "kxct::Item");
    const kxVariant copy = pointer;
    pointer.Clear();
    EXPECT_TRUE(pointer.IsEmpty());
    EXPECT_EQ(copy.GetPointer(), &target);
    EXPECT_EQ(copy.GetPointerTypeName(), "kxct::Item");
    EXPECT_TRUE(copy.GetBoolean());
    EXPECT_EQ(copy.GetInteger64(), 0);
    EXPECT_FALSE(kxVariant(nullptr, "kxct::Item").GetBoolean());
}

TEST(kxVariant, SetPointerReplacesAnyValue) {
    int target = 0;
    kxVariant value("text");
    value.SetPointer(&target, "T");
    EXPECT_EQ(value.GetKind(), kxVariant::POINTER);
    EXPECT_EQ(value.GetPointer(), &target);
}

TEST(kxVariant, MovesLeaveNoCopyOfTheText) {
    kxString text(1000, 'x');
    const char* bytes = text.data();
    kxVariant first(std::move(text));
    const kxVariant second = std::move(first);
    EXPECT_EQ(second.PeekString()->data(), bytes);
}

TEST(kxVariantExtract, GivesValuesOfExactlyTheHeldType) {
    bool boolean = false;
    int integer = 0;
    long long wide = 0;
    float single = 0;
    double real = 0;
    kxString text;
    List list;
    void* address = nullptr;
    int target = 0;
    EXPECT_TRUE(kxVariant(true)._extract_simple_type(boolean));
    EXPECT_TRUE(boolean);
    EXPECT_TRUE(kxVariant(7)._extract_simple_type(integer));
    EXPECT_EQ(integer, 7);
    EXPECT_TRUE(kxVariant(1LL << 40)._extract_simple_type(wide));
    EXPECT_EQ(wide, 1LL << 40);
    EXPECT_TRUE(kxVariant(1.5F)._extract_simple_type(single));
    EXPECT_EQ(single, 1.5F);
    EXPECT_TRUE(kxVariant(2.5)._extract_simple_type(real));
    EXPECT_EQ(real, 2.5);
    EXPECT_TRUE(kxVariant("x")._extract_simple_type(text));
    EXPECT_EQ(text, "x");
    EXPECT_TRUE(kxVariant(List{"y"})._extract_simple_type(list));
    EXPECT_THAT(list, ElementsAre("y"));
    EXPECT_TRUE(kxVariant(&target, "int")._extract_simple_type(address));
    EXPECT_EQ(address, &target);
}

TEST(kxVariantExtract, OfAnotherKindIsFalseAndChangesNothing) {
    int integer = 5;
    double real = 5;
    kxString text = "old";
    void* address = &integer;
    EXPECT_FALSE(kxVariant("12")._extract_simple_type(integer));
    EXPECT_FALSE(kxVariant(true)._extract_simple_type(integer));
    EXPECT_FALSE(kxVariant(1LL << 40)._extract_simple_type(integer));
    EXPECT_FALSE(kxVariant(1)._extract_simple_type(real));
    EXPECT_FALSE(kxVariant(1.5F)._extract_simple_type(real));
    EXPECT_FALSE(kxVariant()._extract_simple_type(text));
    EXPECT_FALSE(kxVariant(1)._extract_simple_type(address));
    EXPECT_EQ(integer, 5);
    EXPECT_EQ(real, 5);
    EXPECT_EQ(text, "old");
    EXPECT_EQ(address, &integer);
}

TEST(kxVariantSimpleType, IsTheClassNameAlone) {
    EXPECT_EQ(kxVariant::SimpleTypeName("class kxct::Item * __ptr64"), "kxct::Item");
    EXPECT_EQ(kxVariant::SimpleTypeName("kxct::Item const*"), "kxct::Item");
    EXPECT_EQ(kxVariant::SimpleTypeName("const struct kxct::Item &"), "kxct::Item");
    EXPECT_EQ(kxVariant::SimpleTypeName("PN4kxct4ItemE"), "kxct::Item");
    EXPECT_EQ(kxVariant::SimpleTypeName(typeid(kxct_test::Sample*).name()), "kxct_test::Sample");
    EXPECT_EQ(kxVariant::SimpleTypeName(typeid(kxct_test::Sample).name()), "kxct_test::Sample");
}

TEST(kxVariantSimpleType, OfASimpleNameIsThatName) {
    for (const char* name : {"kxct::Item", "Item", "Item2", "i", "class", "classroom", "*", ""}) {
        const kxString expected = kxString(name) == "*" ? "" : name;
        EXPECT_EQ(kxVariant::SimpleTypeName(name), expected);
    }
}

TEST(kxVariantSimpleType, ReplacesTheNameOfAPointerVariantOnly) {
    int target = 0;
    kxVariant pointer(&target, "class kxct::Item *");
    pointer._extract_simple_type();
    EXPECT_EQ(pointer.GetPointerTypeName(), "kxct::Item");
    EXPECT_EQ(pointer.GetPointer(), &target);
    kxVariant text("class kxct::Item *");
    text._extract_simple_type();
    EXPECT_EQ(text.GetString(), "class kxct::Item *");
}

TEST(kxVariant, PrintsKindAndText) {
    std::ostringstream stream;
    stream << kxVariant(12) << ", " << kxVariant("a");
    EXPECT_EQ(stream.str(), "integer \"12\", string \"a\"");
}

}  // namespace
