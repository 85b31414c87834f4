#pragma once

#include <gtest/gtest.h>
#include <kxinterp/kxInterpTcl.h>
#include <tcl.h>

// A Tcl interpreter of its own, with its wrapper and a procedure `echo` that gives back what it
// gets.
class TclFixture : public testing::Test {
  protected:
    TclFixture() {
        Tcl_FindExecutable(nullptr);
        _raw = Tcl_CreateInterp();
        _interp = kxInterpTcl::Get(_raw);
        Run("proc echo {value} {return $value}");
    }
    ~TclFixture() override { Delete(); }

    void Delete() {
        if (_raw != nullptr) {
            Tcl_DeleteInterp(_raw);
            _raw = nullptr;
        }
    }
    void Run(const char* script) {
        ASSERT_EQ(Tcl_Eval(_raw, script), TCL_OK) << Tcl_GetStringResult(_raw);
    }
    // What `method` answers to one argument, read as the kind of `wanted`.
    kxVariant Invoke(const kxString& method, const kxVariant& argument, kxVariant wanted) {
        kxStlVector<kxVariant> arguments = {argument};
        EXPECT_TRUE(_interp->invoke(method, arguments, wanted)) << _interp->LastError();
        return wanted;
    }
    kxVariant Echo(const kxVariant& argument, const kxVariant& wanted) {
        return Invoke("echo", argument, wanted);
    }
    // What a whole script answers.
    kxVariant Evaluate(const kxString& script, kxVariant wanted = kxVariant()) {
        kxStlVector<kxVariant> none;
        EXPECT_TRUE(_interp->evaluate(script, none, wanted)) << _interp->LastError();
        return wanted;
    }

    Tcl_Interp* _raw = nullptr;
    kxInterpTcl* _interp = nullptr;
};
