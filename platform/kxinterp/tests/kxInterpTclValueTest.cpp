#include <gmock/gmock.h>
#include <kxinterp/kxPointerRegistry.h>

#include <cmath>
#include <limits>

#include "TclFixture.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using List = kxStlVector<kxString>;

class kxInterpTclValue : public TclFixture {
  protected:
    // The error of a call whose answer is not of the wanted kind.
    kxString Refused(const char* script, const kxVariant& wanted) {
        kxStlVector<kxVariant> none;
        kxVariant result = wanted;
        EXPECT_FALSE(_interp->evaluate(script, none, result)) << script;
        EXPECT_EQ(result.GetKind(), wanted.GetKind());
        EXPECT_EQ(result.GetString(), wanted.GetString());
        return _interp->LastError();
    }
};

TEST_F(kxInterpTclValue, IntegersPassWith64Bits) {
    for (const std::int64_t number : {std::int64_t{0},
                                      std::int64_t{-1},
                                      std::numeric_limits<std::int64_t>::max(),
                                      std::numeric_limits<std::int64_t>::min()}) {
        EXPECT_EQ(Echo(number, 0).GetInteger64(), number);
        EXPECT_EQ(Echo(number, kxVariant()), kxVariant(number));
    }
    EXPECT_EQ(Evaluate("return 0x10", -1), kxVariant(16));
}

TEST_F(kxInterpTclValue, WhatIsNoIntegerIsRefusedWhereOneIsWanted) {
    EXPECT_EQ(Refused("return abc", -1), "expected an integer of 64 bits but got \"abc\"");
    Refused("return {}", -1);
    Refused("return 1.5", -1);
    Refused("return 9223372036854775808", -1);
    Refused("return 18446744073709551615", -1);
    Refused("expr {2 ** 100}", -1);
    Refused("return -9223372036854775809", -1);
}

TEST_F(kxInterpTclValue, ALongAnswerIsShownInPart) {
    const kxString error = Refused("string repeat x 1000000", -1);
    EXPECT_LT(error.size(), 300u);
    EXPECT_THAT(error, HasSubstr("xxx..."));
}

TEST_F(kxInterpTclValue, BooleansPass) {
    EXPECT_EQ(Echo(true, false), kxVariant(true));
    EXPECT_EQ(Echo(false, true), kxVariant(false));
    EXPECT_EQ(Evaluate("return yes", false), kxVariant(true));
    EXPECT_EQ(Evaluate("return off", true), kxVariant(false));
    EXPECT_THAT(Refused("return maybe", true), HasSubstr("a boolean"));
}

TEST_F(kxInterpTclValue, DoublesPassExactly) {
    for (const double number : {0.1,
                                -2.5e300,
                                std::numeric_limits<double>::denorm_min(),
                                std::numeric_limits<double>::infinity(),
                                12.0}) {
        const kxVariant result = Echo(number, 0.0);
        EXPECT_EQ(result.GetKind(), kxVariant::DOUBLE);
        EXPECT_EQ(result.GetDouble(), number);
    }
    EXPECT_TRUE(std::isnan(Echo(std::nan(""), 0.0).GetDouble()));
    EXPECT_EQ(Evaluate("return 7", 0.0), kxVariant(7.0));
    EXPECT_THAT(Refused("return x", 1.5), HasSubstr("a number"));
}

TEST_F(kxInterpTclValue, FloatsPassExactly) {
    const kxVariant result = Echo(0.1F, 0.0F);
    EXPECT_EQ(result.GetKind(), kxVariant::FLOAT);
    EXPECT_EQ(result, kxVariant(0.1F));
    Refused("return x", 1.5F);
}

TEST_F(kxInterpTclValue, ListsOfTextsPassAsTclLists) {
    const List list = {"a b", "", "{", "\\", "$x", kxString("n\0n", 3), "\xf0\x9f\x98\x80", "#"};
    EXPECT_EQ(Echo(list, List{}).GetStringList(), list);
    Run("proc third x {lindex $x 2}");
    EXPECT_EQ(Invoke("third", list, "").GetString(), "{");
    EXPECT_THAT(Evaluate("return {}", List{"old"}).GetStringList(), IsEmpty());
    EXPECT_THAT(Refused("return \"\\{\"", List{"old"}), HasSubstr("a list"));
}

TEST_F(kxInterpTclValue, OurTextOfAListIsAListForTcl) {
    const List list = {"a b", "", "{", "\\", "}\\", "$x[y]", "n\n", "\\\n", "\"", "#", "a#", ";"};
    EXPECT_EQ(Echo(kxVariant(list).GetString(), List{}).GetStringList(), list);
}

TEST_F(kxInterpTclValue, LongListsPass) {
    List list(200'000, "entry");
    EXPECT_EQ(Echo(list, List{}).GetStringList().size(), list.size());
}

TEST_F(kxInterpTclValue, AnEmptyVariantIsEmptyTextForTcl) {
    EXPECT_EQ(Echo(kxVariant(), ""), kxVariant(""));
}

TEST_F(kxInterpTclValue, WhatAnEmptyResultGetsIsWhatTclUsedTheValueAs) {
    EXPECT_EQ(Evaluate("expr {1 + 2}"), kxVariant(3));
    EXPECT_EQ(Evaluate("expr {1 / 4.0}"), kxVariant(0.25));
    EXPECT_EQ(Evaluate("list a b"), kxVariant(List{"a", "b"}));
    EXPECT_EQ(Evaluate("return abc"), kxVariant("abc"));
    EXPECT_EQ(Evaluate("expr {2 ** 100}"), kxVariant("1267650600228229401496703205376"));
    EXPECT_EQ(Echo(true, kxVariant()).GetBoolean(), true);
}

TEST_F(kxInterpTclValue, PointersPassAsTextsThatLeadBack) {
    int target = 0;
    const kxVariant pointer(&target, "kxct::Item");
    const kxString text = Echo(pointer, "").GetString();
    EXPECT_THAT(text, testing::MatchesRegex("kxptr:kxct::Item:[0-9a-f]+"));
    EXPECT_EQ(Echo(text, kxVariant()), pointer);
    EXPECT_EQ(Echo(pointer, kxVariant(nullptr, "kxct::Item")), pointer);
    EXPECT_EQ(Echo(pointer, kxVariant(nullptr, "")), pointer);
    kxPointerRegistry::Forget(&target);
}

TEST_F(kxInterpTclValue, NullPointersPass) {
    const kxVariant null(nullptr, "kxct::Item");
    EXPECT_EQ(Echo(null, "").GetString(), "kxptr:kxct::Item:0");
    EXPECT_EQ(Echo(null, null), null);
}

TEST_F(kxInterpTclValue, UnknownPointersAreRefusedAndNeverMade) {
    int target = 0;
    const kxVariant wanted(&target, "kxct::Item");
    EXPECT_THAT(Refused("return kxptr:kxct::Item:deadbeef", wanted), HasSubstr("known pointer"));
    Refused("return {}", wanted);
    Refused("return kxptr:", wanted);
    EXPECT_EQ(Evaluate("return kxptr:kxct::Item:deadbeef"), kxVariant("kxptr:kxct::Item:deadbeef"));
}

TEST_F(kxInterpTclValue, PointersOfAnotherTypeOrOfAForgottenObjectAreRefused) {
    int target = 0;
    const kxString text = Echo(kxVariant(&target, "kxct::Item"), "").GetString();
    const kxString script = "return " + text;
    Refused(script.c_str(), kxVariant(nullptr, "kxct::Other"));
    kxPointerRegistry::Forget(&target);
    Refused(script.c_str(), kxVariant(nullptr, "kxct::Item"));
}

}  // namespace
