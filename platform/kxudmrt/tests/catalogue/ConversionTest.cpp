// What stored values become in another data type, and lists as one text.
#include "Support.h"
#include "catalogue/Conversion.h"
#include "catalogue/ListText.h"

namespace kxudm::catalogue {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Outcome = Conversion::Outcome;
using List = kxStlVector<kxString>;

struct Case {
    kxVariant from;
    const char* type;
    Outcome outcome;
    kxVariant to;
};

void PrintTo(const Case& each, std::ostream* out) {
    *out << "kind " << each.from.GetKind() << " '" << each.from.GetString() << "' to " << each.type;
}

class Conversions : public ::testing::TestWithParam<Case> {};

TEST_P(Conversions, LoseNothingOrSaySo) {
    const Case& each = GetParam();
    const Conversion conversion = Convert(each.from, each.type);
    EXPECT_EQ(conversion.outcome, each.outcome);
    EXPECT_EQ(conversion.value.GetKind(), each.to.GetKind());
    EXPECT_EQ(conversion.value, each.to);
}

INSTANTIATE_TEST_SUITE_P(
    OfEveryKind,
    Conversions,
    ::testing::Values(Case{kxVariant(), "Integer", Outcome::Unchanged, {}},
                      Case{kxVariant(5), "Integer", Outcome::Unchanged, kxVariant(5)},
                      Case{kxVariant(5), "Double", Outcome::Whole, kxVariant(5.0)},
                      Case{kxVariant(9007199254740993LL), "Double", Outcome::Refused, {}},
                      Case{kxVariant(5), "String", Outcome::Whole, kxVariant("5")},
                      Case{kxVariant(5), "StringList", Outcome::Whole, kxVariant(List{"5"})},
                      Case{kxVariant(1), "Boolean", Outcome::Whole, kxVariant(true)},
                      Case{kxVariant(2), "Boolean", Outcome::Refused, {}},
                      Case{kxVariant(255), "Color", Outcome::Rewritten, kxVariant("#0000ff")},
                      Case{kxVariant(5), "Time", Outcome::Refused, {}},
                      Case{kxVariant(2.0), "Integer", Outcome::Whole, kxVariant(2)},
                      Case{kxVariant(2.5), "Integer", Outcome::Refused, {}},
                      Case{kxVariant(1e300), "Integer", Outcome::Refused, {}},
                      Case{kxVariant(0.1), "String", Outcome::Whole, kxVariant("0.1")},
                      Case{kxVariant(1.0), "Boolean", Outcome::Whole, kxVariant(true)},
                      Case{kxVariant(true), "Integer", Outcome::Whole, kxVariant(1)},
                      Case{kxVariant(false), "Double", Outcome::Whole, kxVariant(0.0)},
                      Case{kxVariant(true), "String", Outcome::Whole, kxVariant("true")},
                      Case{kxVariant("12"), "Integer", Outcome::Whole, kxVariant(12)},
                      Case{kxVariant("012"), "Integer", Outcome::Rewritten, kxVariant(12)},
                      Case{kxVariant("twelve"), "Integer", Outcome::Refused, {}},
                      Case{kxVariant("2.5"), "Double", Outcome::Whole, kxVariant(2.5)},
                      Case{kxVariant("2.50"), "Double", Outcome::Rewritten, kxVariant(2.5)},
                      Case{kxVariant("true"), "Boolean", Outcome::Whole, kxVariant(true)},
                      Case{kxVariant("TRUE"), "Boolean", Outcome::Rewritten, kxVariant(true)},
                      Case{kxVariant("a"), "StringList", Outcome::Whole, kxVariant(List{"a"})},
                      Case{kxVariant("#00ff00"), "Color", Outcome::Unchanged, kxVariant("#00ff00")},
                      Case{kxVariant("#00FF00"), "Color", Outcome::Rewritten, kxVariant("#00ff00")},
                      Case{kxVariant("2026-01-31T12:00:00Z"),
                           "Time",
                           Outcome::Unchanged,
                           kxVariant("2026-01-31T12:00:00Z")},
                      Case{kxVariant("yesterday"), "Time", Outcome::Refused, {}},
                      Case{kxVariant(""), "Integer", Outcome::Whole, {}},
                      Case{kxVariant(""), "StringList", Outcome::Whole, {}},
                      Case{kxVariant(List{}), "Integer", Outcome::Whole, {}},
                      Case{kxVariant(List{"a"}), "String", Outcome::Whole, kxVariant("a")},
                      Case{kxVariant(List{"7"}), "Integer", Outcome::Whole, kxVariant(7)},
                      Case{kxVariant(List{"07"}), "Integer", Outcome::Rewritten, kxVariant(7)},
                      Case{kxVariant(List{""}), "Integer", Outcome::Rewritten, {}},
                      Case{kxVariant(List{"a", "b"}), "String", Outcome::Refused, {}}));

TEST(ListOfText, ReadsWhatAVariantWrites) {
    const std::vector<List> lists{{},
                                  {"a"},
                                  {""},
                                  {"a", "b"},
                                  {"", ""},
                                  {"a b", "c"},
                                  {"{a", "b}"},
                                  {"a{b c}d", "#e"},
                                  {"back\\slash", "quote\"", "$x [y];"},
                                  {"tab\t", "line\nfeed", " "},
                                  {"\\", "\\{ "},
                                  {"\xC3\xA4", "{}", "}{"}};
    for (const List& list : lists) {
        const kxString text = kxVariant(list).GetString();
        EXPECT_EQ(ListOfText(text), list) << text;
    }
}

TEST(ListOfText, TakesAnyBlanksBetweenEntries) {
    EXPECT_THAT(ListOfText("  a \t b\n{c d}  "), ElementsAre("a", "b", "c d"));
    EXPECT_THAT(ListOfText(" \n "), IsEmpty());
}

TEST(ListOfText, RefusesWhatIsNoList) {
    for (const char* text : {"{a", "{a}b", "a}", "a{b", "{a {b}", "{a\\}"}) {
        EXPECT_THAT(testing::Refusal([&] { static_cast<void>(ListOfText(text)); }),
                    HasSubstr("\"" + Printable(text) + "\" is no list"))
            << text;
    }
}

TEST(ContentDefinition, IsTheSameWhereEverythingAboveItIs) {
    const auto read = [](const std::string& type) {
        return testing::Read("<definition name=\"A\"><attribute name=\"a\" type=\"" + type +
                             "\"/></definition><definition name=\"B\" base=\"A\"/>"
                             "<definition name=\"C\"/>");
    };
    const auto one = read("String");
    const auto two = read("Integer");
    EXPECT_TRUE(one->Get("B").IsSameAs(read("String")->Get("B")));
    EXPECT_FALSE(one->Get("B").IsSameAs(two->Get("B")));
    EXPECT_FALSE(one->Get("B").IsSameAs(one->Get("A")));
    EXPECT_TRUE(one->Get("C").IsSameAs(two->Get("C")));
}

}  // namespace
}  // namespace kxudm::catalogue
