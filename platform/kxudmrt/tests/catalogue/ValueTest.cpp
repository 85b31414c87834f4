#include <cmath>
#include <cstdint>
#include <limits>

#include "Support.h"
#include "catalogue/Value.h"

namespace kxudm::catalogue::testing {
namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;
using ::testing::Not;

AttributeDefinition Attribute(const kxString& type) {
    AttributeDefinition attribute;
    attribute.name = "a";
    attribute.dataType = type;
    return attribute;
}

kxVariant Checked(const kxString& type, const kxVariant& value) {
    return CheckedValue(Attribute(type), value, "D");
}

std::string RefusalOfValue(const kxString& type, const kxVariant& value) {
    return Refusal([&] { Checked(type, value); });
}

// Equality of variants does not tell 1 from 1.0, so the kind is compared as well.
void ExpectExactly(const kxVariant& value, const kxVariant& expected) {
    EXPECT_EQ(value.GetKind(), expected.GetKind());
    EXPECT_EQ(value, expected);
}

const kxStlVector<kxString> kList{"one", "two"};

TEST(CheckedValue, TakesBooleansAndTheirPlainForms) {
    for (const kxVariant& value : {kxVariant(true),
                                   kxVariant("true"),
                                   kxVariant("TRUE"),
                                   kxVariant("1"),
                                   kxVariant(1),
                                   kxVariant(1.0)}) {
        ExpectExactly(Checked("Boolean", value), true);
    }
    for (const kxVariant& value :
         {kxVariant(false), kxVariant("False"), kxVariant("0"), kxVariant(0), kxVariant(0.0F)}) {
        ExpectExactly(Checked("Boolean", value), false);
    }
    for (const kxVariant& value :
         {kxVariant(2), kxVariant("yes"), kxVariant(" true"), kxVariant(0.5), kxVariant(kList)}) {
        EXPECT_THAT(RefusalOfValue("Boolean", value), HasSubstr("expected true or false"));
    }
}

TEST(CheckedValue, TakesIntegersOfSixtyFourBits) {
    constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
    ExpectExactly(Checked("Integer", 3), 3);
    ExpectExactly(Checked("Integer", "3"), 3);
    ExpectExactly(Checked("Integer", "-9223372036854775808"), lowest);
    ExpectExactly(Checked("Integer", "9223372036854775807"), highest);
    ExpectExactly(Checked("Integer", 3.0), 3);
    ExpectExactly(Checked("Integer", 0x1p62), std::int64_t{1} << 62);
}

TEST(CheckedValue, RefusesIntegersThatWouldLoseSomething) {
    for (const kxVariant& value : {kxVariant(3.5),
                                   kxVariant(0x1p63),
                                   kxVariant(std::nan("")),
                                   kxVariant("3.0"),
                                   kxVariant("9223372036854775808"),
                                   kxVariant("0x10"),
                                   kxVariant(" 3"),
                                   kxVariant("3 "),
                                   kxVariant("+3"),
                                   kxVariant(true),
                                   kxVariant(kList)}) {
        EXPECT_THAT(RefusalOfValue("Integer", value),
                    HasSubstr("expected a whole decimal number of 64 bits"));
    }
}

TEST(CheckedValue, TakesFiniteDoubles) {
    ExpectExactly(Checked("Double", 2.5), 2.5);
    ExpectExactly(Checked("Double", 2.5F), 2.5);
    ExpectExactly(Checked("Double", 3), 3.0);
    ExpectExactly(Checked("Double", "1e-3"), 1e-3);
    ExpectExactly(Checked("Double", std::int64_t{1} << 53), 0x1p53);
}

TEST(CheckedValue, RefusesDoublesThatAreNoNumberOrWouldLoseSomething) {
    for (const kxVariant& value : {kxVariant(std::nan("")),
                                   kxVariant(std::numeric_limits<double>::infinity()),
                                   kxVariant("nan"),
                                   kxVariant("inf"),
                                   kxVariant("1e999"),
                                   kxVariant("1,5"),
                                   kxVariant((std::int64_t{1} << 53) + 1),
                                   kxVariant(false),
                                   kxVariant(kList)}) {
        EXPECT_THAT(RefusalOfValue("Double", value), HasSubstr("expected a finite decimal number"));
    }
}

TEST(CheckedValue, TakesTextsAndTheTextsOfNumbers) {
    ExpectExactly(Checked("String", "Ölwanne \"3\"\n"), "Ölwanne \"3\"\n");
    ExpectExactly(Checked("String", 12), "12");
    ExpectExactly(Checked("String", 0.1), "0.1");
    ExpectExactly(Checked("String", true), "true");
    EXPECT_THAT(RefusalOfValue("String", kList), HasSubstr("expected one text"));
}

TEST(CheckedValue, RefusesTextsThatAreNotUtf8AndNamesTheOffset) {
    EXPECT_EQ(RefusalOfValue("String",
                             "ab\xE9"
                             "c"),
              "attribute 'a' of definition 'D' does not take the value 'ab\\xE9c': expected UTF-8 "
              "text, but the byte at offset 2 is not UTF-8");
    EXPECT_THAT(RefusalOfValue("String", kxString("x\0y", 3)),
                HasSubstr("expected text without NUL, but there is one at offset 1"));
    EXPECT_THAT(RefusalOfValue("StringList", kxStlVector<kxString>{"ok", "a\xFF"}),
                HasSubstr("expected entry 1 to be UTF-8 text, but the byte at offset 1"));
}

TEST(CheckedValue, TakesListsAndASingleTextAsAListOfOne) {
    ExpectExactly(Checked("StringList", kList), kList);
    ExpectExactly(Checked("StringList", "one two"), kxStlVector<kxString>{"one two"});
    EXPECT_THAT(RefusalOfValue("StringList", 3), HasSubstr("expected a list of texts"));
}

TEST(CheckedValue, WritesColorsInLowerCase) {
    ExpectExactly(Checked("Color", "#FF8000"), "#ff8000");
    ExpectExactly(Checked("Color", 0xFF8000), "#ff8000");
    ExpectExactly(Checked("Color", 0), "#000000");
    ExpectExactly(Checked("Color", 0xFFFFFF), "#ffffff");
    for (const kxVariant& value : {kxVariant("red"),
                                   kxVariant("#fff"),
                                   kxVariant("#ff80zz"),
                                   kxVariant(0x1000000),
                                   kxVariant(-1),
                                   kxVariant(1.0)}) {
        EXPECT_THAT(RefusalOfValue("Color", value), HasSubstr("expected a colour as #rrggbb"));
    }
}

TEST(CheckedValue, TakesTimesInUtcWithWholeSeconds) {
    for (const char* time : {"2026-01-31T12:00:00Z",
                             "2024-02-29T23:59:59Z",
                             "2000-02-29T00:00:00Z",
                             "0001-01-01T00:00:00Z"}) {
        ExpectExactly(Checked("Time", time), time);
    }
    for (const char* time : {"2026-02-29T12:00:00Z",
                             "1900-02-29T12:00:00Z",
                             "2026-13-01T12:00:00Z",
                             "2026-00-01T12:00:00Z",
                             "2026-04-31T12:00:00Z",
                             "2026-01-00T12:00:00Z",
                             "2026-01-31T24:00:00Z",
                             "2026-01-31T12:60:00Z",
                             "2026-01-31T12:00:60Z",
                             "0000-01-01T00:00:00Z",
                             "2026-01-31 12:00:00Z",
                             "2026-01-31T12:00:00",
                             "2026-01-31T12:00:00+01:00",
                             "2026-01-31T12:00:00.5Z",
                             "2026-01-31",
                             "now"}) {
        EXPECT_THAT(RefusalOfValue("Time", time),
                    HasSubstr("expected a UTC time such as 2026-01-31T12:00:00Z"));
    }
    EXPECT_THAT(RefusalOfValue("Time", 0), HasSubstr("expected a UTC time"));
}

TEST(CheckedValue, TakesTheValueAwayOnEmpty) {
    for (const char* type :
         {"Boolean", "Color", "Double", "Integer", "String", "StringList", "Time"}) {
        EXPECT_TRUE(Checked(type, kxVariant()).IsEmpty()) << type;
    }
    for (const char* type : {"Boolean", "Color", "Double", "Integer", "StringList", "Time"}) {
        EXPECT_TRUE(Checked(type, "").IsEmpty()) << type;
    }
    EXPECT_TRUE(Checked("StringList", kxStlVector<kxString>()).IsEmpty());
}

TEST(CheckedValue, KeepsAnEmptyTextAsAText) {
    ExpectExactly(Checked("String", ""), "");
}

TEST(CheckedValue, RefusesAnEmptyListWhereOneTextIsExpected) {
    EXPECT_THAT(RefusalOfValue("String", kxStlVector<kxString>()), HasSubstr("expected one text"));
}

TEST(CheckedValue, RefusesToLeaveAMandatoryAttributeWithoutValue) {
    for (const char* type : {"String", "StringList", "Integer"}) {
        AttributeDefinition attribute = Attribute(type);
        attribute.mandatory = true;
        for (const kxVariant& value :
             {kxVariant(), kxVariant(""), kxVariant(kxStlVector<kxString>())}) {
            EXPECT_THAT(Refusal([&] { CheckedValue(attribute, value); }),
                        HasSubstr("since the attribute is mandatory"));
        }
    }
}

TEST(CheckedValue, TakesOnlyValidValues) {
    AttributeDefinition attribute = Attribute("Integer");
    attribute.validValues = {"1", "2"};
    ExpectExactly(CheckedValue(attribute, "2"), 2);
    EXPECT_TRUE(CheckedValue(attribute, kxVariant()).IsEmpty());
    EXPECT_EQ(Refusal([&] { CheckedValue(attribute, 3, "D"); }),
              "attribute 'a' of definition 'D' does not take the value '3': expected one of '1', "
              "'2'");
}

TEST(CheckedValue, TakesListsOfValidValuesOnly) {
    AttributeDefinition attribute = Attribute("StringList");
    attribute.validValues = {"one", "two", "three"};
    ExpectExactly(CheckedValue(attribute, kList), kList);
    EXPECT_THAT(Refusal([&] {
                    CheckedValue(attribute, kxStlVector<kxString>{"one", "four"});
                }),
                HasSubstr("expected one of 'one', 'two', 'three'"));
}

TEST(CheckedValue, ListsTheFirstEightOfManyValidValues) {
    AttributeDefinition attribute = Attribute("String");
    for (char c = 'b'; c < 'n'; ++c) {
        attribute.validValues.push_back(kxString(1, c));
    }
    EXPECT_THAT(Refusal([&] { CheckedValue(attribute, "z"); }),
                AllOf(HasSubstr("'i', ..."), Not(HasSubstr("'j'"))));
}

TEST(CheckedValue, RefusesPointers) {
    int target = 0;
    for (const char* type :
         {"Boolean", "Color", "Double", "Integer", "String", "StringList", "Time"}) {
        EXPECT_THAT(RefusalOfValue(type, kxVariant(&target, "int")),
                    HasSubstr("does not take a pointer"));
    }
}

TEST(CheckedValue, CutsALongValueInItsRefusal) {
    const std::string refusal = RefusalOfValue("Integer", kxString(1000, 'x'));
    EXPECT_THAT(refusal, HasSubstr("'" + std::string(80, 'x') + "...'"));
    EXPECT_THAT(refusal, Not(HasSubstr(std::string(81, 'x'))));
}

TEST(Printable, CutsBetweenCharactersAndWritesTheUnprintableAsNumbers) {
    EXPECT_EQ(Printable("a\nb\x7F"), "a\\x0Ab\\x7F");
    EXPECT_EQ(Printable(std::string(79, 'x') + "ä"), std::string(79, 'x') + "...");
    EXPECT_EQ(Printable(std::string(78, 'x') + "ä"), std::string(78, 'x') + "ä");
    EXPECT_EQ(Printable("\xC3"), "\\xC3");
}

TEST(FirstInvalidUtf8, KnowsWellFormedText) {
    for (const char* text : {"",
                             "plain",
                             "é",
                             "€",
                             "\xF0\x9F\x94\xA7",
                             "\xED\x9F\xBF",
                             "\xEE\x80\x80",
                             "\xF4\x8F\xBF\xBF",
                             "\xE0\xA0\x80"}) {
        EXPECT_EQ(FirstInvalidUtf8(text), std::string_view::npos) << text;
    }
}

TEST(FirstInvalidUtf8, FindsWhatIsNoText) {
    for (const char* tail : {"\x80",
                             "\xC0\x80",
                             "\xC1\xBF",
                             "\xE0\x9F\xBF",
                             "\xED\xA0\x80",
                             "\xF0\x8F\xBF\xBF",
                             "\xF4\x90\x80\x80",
                             "\xF5\x80\x80\x80",
                             "\xFF",
                             "\xE2\x82",
                             "\xC3",
                             "\xE2\x82z"}) {
        EXPECT_EQ(FirstInvalidUtf8(std::string("ok ") + tail), 3U);
    }
}

}  // namespace
}  // namespace kxudm::catalogue::testing
