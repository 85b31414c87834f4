#include <gmock/gmock.h>

#include "TclFixture.h"

namespace {

using testing::HasSubstr;
using List = kxStlVector<kxString>;

class kxInterpTclCalls : public TclFixture {};

TEST_F(kxInterpTclCalls, InvokeHandsEachArgumentAsOneWord) {
    Run("proc show args {return [llength $args]:[::join $args |]}");
    kxStlVector<kxVariant> arguments = {"get", "a b", "$x [exit] \"{", "", 7};
    kxVariant result("");
    ASSERT_TRUE(_interp->invoke("show", arguments, result)) << _interp->LastError();
    EXPECT_EQ(result.GetString(), "5:get|a b|$x [exit] \"{||7");
}

TEST_F(kxInterpTclCalls, InvokeTakesTheMethodAsOneWordToo) {
    Run("proc {odd name} {} {return found}");
    kxStlVector<kxVariant> none;
    kxVariant result("");
    EXPECT_TRUE(_interp->invoke("odd name", none, result));
    EXPECT_EQ(result.GetString(), "found");
    EXPECT_FALSE(_interp->invoke("set x 1", none, result));
    EXPECT_THAT(_interp->LastError(), HasSubstr("invalid command name"));
}

TEST_F(kxInterpTclCalls, InvokeRunsAtGlobalLevel) {
    Run("proc level {} {return [info level]}");
    EXPECT_EQ(Evaluate("level", 0).GetInteger(), 1);
    kxStlVector<kxVariant> none;
    kxVariant result(0);
    ASSERT_TRUE(_interp->invoke("level", none, result));
    EXPECT_EQ(result.GetInteger(), 1);
}

TEST_F(kxInterpTclCalls, EvaluateRunsWholeScriptsWithArgumentsAsWordsAtTheEnd) {
    EXPECT_EQ(Evaluate("set a 1; incr a 2", 0).GetInteger(), 3);
    kxStlVector<kxVariant> arguments = {"x y", "[exit]", "{"};
    kxVariant result("");
    ASSERT_TRUE(_interp->evaluate("set n 0; list", arguments, result)) << _interp->LastError();
    EXPECT_EQ(result.GetString(), "{x y} {[exit]} \\{");
}

TEST_F(kxInterpTclCalls, EvaluateRequiresAPackage) {
    Run("package provide kxsample 1.5");
    kxStlVector<kxVariant> arguments = {"require", "kxsample"};
    kxVariant result("");
    EXPECT_TRUE(_interp->evaluate("package", arguments, result));
    EXPECT_EQ(result.GetString(), "1.5");
    arguments[1] = "kxnosuchpackage";
    EXPECT_FALSE(_interp->evaluate("package", arguments, result));
    EXPECT_EQ(result.GetString(), "1.5");
}

TEST_F(kxInterpTclCalls, AnErrorGivesFalseTextAndTraceAndLeavesTheResult) {
    Run("proc inner {} {error {it broke} {} {KX 7}}");
    Run("proc outer {} {inner}");
    kxStlVector<kxVariant> none;
    kxVariant result("before");
    EXPECT_FALSE(_interp->invoke("outer", none, result));
    EXPECT_EQ(result.GetString(), "before");
    EXPECT_EQ(_interp->LastError(), "it broke");
    EXPECT_THAT(_interp->LastErrorTrace(), HasSubstr("it broke"));
    EXPECT_THAT(_interp->LastErrorTrace(), HasSubstr("(procedure \"inner\" line 1)"));
    EXPECT_THAT(_interp->LastErrorTrace(), HasSubstr("(procedure \"outer\" line 1)"));
}

TEST_F(kxInterpTclCalls, ASuccessClearsTheLastError) {
    kxStlVector<kxVariant> none;
    kxVariant result("");
    EXPECT_FALSE(_interp->evaluate("error x", none, result));
    EXPECT_EQ(_interp->LastError(), "x");
    EXPECT_TRUE(_interp->evaluate("set y 1", none, result));
    EXPECT_EQ(_interp->LastError(), "");
    EXPECT_EQ(_interp->LastErrorTrace(), "");
}

TEST_F(kxInterpTclCalls, BreakOutsideOfALoopIsAFailureAndReturnIsNot) {
    kxStlVector<kxVariant> none;
    kxVariant result("before");
    for (const char* script : {"break", "continue", "return -code 17 x", "return -code error x"}) {
        EXPECT_FALSE(_interp->evaluate(script, none, result)) << script;
        EXPECT_NE(_interp->LastError(), "") << script;
    }
    EXPECT_EQ(result.GetString(), "before");
    EXPECT_TRUE(_interp->evaluate("return good", none, result));
    EXPECT_EQ(result.GetString(), "good");
}

TEST_F(kxInterpTclCalls, BadSyntaxAndEndlessRecursionAreErrors) {
    Run("proc forever {} {forever}");
    kxStlVector<kxVariant> none;
    kxVariant result("");
    EXPECT_FALSE(_interp->evaluate("set x {", none, result));
    EXPECT_THAT(_interp->LastError(), HasSubstr("missing close-brace"));
    EXPECT_FALSE(_interp->evaluate("forever", none, result));
    EXPECT_THAT(_interp->LastError(), HasSubstr("too many nested evaluations"));
    EXPECT_TRUE(_interp->evaluate("set x 1", none, result));
}

TEST_F(kxInterpTclCalls, AnEmptyScriptGivesEmptyText) {
    EXPECT_EQ(Evaluate("", ""), kxVariant(""));
}

// Registered as a Tcl command: calls back into the interpreter that runs it, once with an error.
int CallBack(ClientData data, Tcl_Interp* raw, int, Tcl_Obj* const*) {
    auto* interp = static_cast<kxInterpTcl*>(data);
    Tcl_SetObjResult(raw, Tcl_NewStringObj("own result", -1));
    kxStlVector<kxVariant> none;
    kxVariant result("");
    EXPECT_TRUE(interp->evaluate("set fromInside 5", none, result));
    EXPECT_EQ(result.GetString(), "5");
    EXPECT_FALSE(interp->evaluate("error inside", none, result));
    return TCL_OK;
}

TEST_F(kxInterpTclCalls, FromWithinACommandLeavesTheCommandsResultAlone) {
    Tcl_CreateObjCommand(_raw, "callback", CallBack, _interp, nullptr);
    EXPECT_EQ(Evaluate("callback", "").GetString(), "own result");
    EXPECT_EQ(_interp->LastError(), "");
}

TEST_F(kxInterpTclCalls, TheHostsResultStaysAsItWas) {
    Tcl_SetObjResult(_raw, Tcl_NewStringObj("host", -1));
    Evaluate("set x 1");
    EXPECT_STREQ(Tcl_GetStringResult(_raw), "host");
}

}  // namespace
