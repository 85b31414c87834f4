#include <gmock/gmock.h>

#include "TclFixture.h"

namespace {

using testing::HasSubstr;

class kxInterpTclLife : public TclFixture {};

TEST_F(kxInterpTclLife, OneInterpreterHasOneWrapperThatShowsIt) {
    EXPECT_EQ(kxInterpTcl::Get(_raw), _interp);
    EXPECT_EQ(_interp->interp, _raw);
}

TEST_F(kxInterpTclLife, NoInterpreterHasNoWrapper) {
    EXPECT_EQ(kxInterpTcl::Get(nullptr), nullptr);
}

TEST_F(kxInterpTclLife, TheKindTclLeadsToTheInterpreterLastAskedFor) {
    kxInterp::RegisterCreator("tcl", new kxTclInterpCreator);
    EXPECT_EQ(kxInterp::Get("tcl"), _interp);
    Tcl_Interp* other = Tcl_CreateInterp();
    kxInterpTcl* otherWrapper = kxInterpTcl::Get(other);
    EXPECT_NE(otherWrapper, _interp);
    EXPECT_EQ(kxInterp::Get("tcl"), otherWrapper);
    kxInterpTcl::Get(_raw);
    EXPECT_EQ(kxInterp::Get("tcl"), _interp);
    kxInterpTcl::Get(other);
    Tcl_DeleteInterp(other);
    EXPECT_EQ(kxInterp::Get("tcl"), _interp);
    Delete();
    EXPECT_EQ(kxInterp::Get("tcl"), nullptr);
}

TEST_F(kxInterpTclLife, InterpretersKeepApart) {
    Tcl_Interp* other = Tcl_CreateInterp();
    kxInterpTcl* otherWrapper = kxInterpTcl::Get(other);
    Evaluate("set x first");
    kxStlVector<kxVariant> none;
    kxVariant result("");
    EXPECT_FALSE(otherWrapper->evaluate("set x", none, result));
    EXPECT_TRUE(otherWrapper->evaluate("set x second", none, result));
    EXPECT_EQ(Evaluate("set x", "").GetString(), "first");
    Tcl_DeleteInterp(other);
    EXPECT_EQ(Evaluate("set x", "").GetString(), "first");
}

TEST_F(kxInterpTclLife, AWrapperOutlivesItsInterpreterAndFails) {
    Delete();
    EXPECT_EQ(_interp->interp, nullptr);
    kxStlVector<kxVariant> none;
    kxVariant result("before");
    EXPECT_FALSE(_interp->invoke("info", none, result));
    EXPECT_EQ(_interp->LastError(), "the Tcl interpreter is deleted");
    EXPECT_FALSE(_interp->evaluate("set x 1", none, result));
    EXPECT_EQ(result.GetString(), "before");
}

TEST_F(kxInterpTclLife, ANewInterpreterGetsANewWrapper) {
    Delete();
    // Tcl may give the new interpreter the old one's place in memory.
    for (int i = 0; i < 20; ++i) {
        Tcl_Interp* next = Tcl_CreateInterp();
        kxInterpTcl* wrapper = kxInterpTcl::Get(next);
        EXPECT_NE(wrapper, _interp);
        EXPECT_EQ(wrapper->interp, next);
        Tcl_DeleteInterp(next);
    }
}

int DeleteSelf(ClientData, Tcl_Interp* raw, int, Tcl_Obj* const*) {
    Tcl_DeleteInterp(raw);
    return TCL_OK;
}

TEST_F(kxInterpTclLife, AScriptMayDeleteItsOwnInterpreter) {
    Tcl_CreateObjCommand(_raw, "suicide", DeleteSelf, nullptr, nullptr);
    _raw = nullptr;
    kxStlVector<kxVariant> none;
    kxVariant result("");
    _interp->evaluate("suicide; set x 1", none, result);
    EXPECT_EQ(_interp->interp, nullptr);
    EXPECT_FALSE(_interp->evaluate("set x 1", none, result));
}

TEST_F(kxInterpTclLife, AnInterpreterBeingDeletedHasNoWrapper) {
    Tcl_Interp* dying = Tcl_CreateInterp();
    Tcl_Preserve(dying);
    Tcl_DeleteInterp(dying);
    EXPECT_EQ(kxInterpTcl::Get(dying), nullptr);
    Tcl_Release(dying);
}

TEST_F(kxInterpTclLife, ACallBetweenDeletionAndReleaseFails) {
    Tcl_Preserve(_raw);
    Tcl_DeleteInterp(_raw);
    kxStlVector<kxVariant> none;
    kxVariant result("");
    EXPECT_FALSE(_interp->evaluate("set x 1", none, result));
    EXPECT_THAT(_interp->LastError(), HasSubstr("deleted"));
    Tcl_Release(_raw);
    _raw = nullptr;
}

TEST_F(kxInterpTclLife, SafeInterpretersWorkAlike) {
    Tcl_Interp* safe = Tcl_CreateSlave(_raw, "safe", 1);
    kxInterpTcl* wrapper = kxInterpTcl::Get(safe);
    kxStlVector<kxVariant> none;
    kxVariant result(0);
    EXPECT_TRUE(wrapper->evaluate("expr {6 * 7}", none, result));
    EXPECT_EQ(result.GetInteger(), 42);
    EXPECT_FALSE(wrapper->evaluate("open /etc/passwd", none, result));
    Run("interp delete safe");
    EXPECT_EQ(wrapper->interp, nullptr);
}

}  // namespace
