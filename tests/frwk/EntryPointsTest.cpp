#include <dlfcn.h>
#include <kxbrowser/IManager.h>
#include <kxct/EntryPoints.h>
#include <kxct/KXCTFramework.h>
#include <kxinterp/kxInterpTcl.h>
#include <tcl.h>

#include "tests/frwk/KeptVariable.h"

using kxct::KXCTFramework;

namespace {

// An interpreter for the life of the process, as a host has it.
Tcl_Interp* HostInterp() {
    static Tcl_Interp* interp = [] {
        Tcl_FindExecutable(nullptr);
        return Tcl_CreateInterp();
    }();
    return interp;
}

}  // namespace

TEST(EntryPoints, InitAnswersZeroEachTime) {
    EXPECT_EQ(Kxct_Init(HostInterp()), 0);
    EXPECT_EQ(Kxct_Init(HostInterp()), 0);
    EXPECT_EQ(Kxct_SafeInit(HostInterp()), 0);
    EXPECT_EQ(Kxct_Init(nullptr), 0);
}

TEST(EntryPoints, InitAndSafeInitAreOneFunction) {
    void* init = dlsym(RTLD_DEFAULT, "Kxct_Init");
    ASSERT_NE(init, nullptr);
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "Kxct_SafeInit"), init);
}

TEST(EntryPoints, PlainNamesAreExported) {
    EXPECT_NE(dlsym(RTLD_DEFAULT, "CreateFactory"), nullptr);
    EXPECT_NE(dlsym(RTLD_DEFAULT, "Kxct_SetUIBrowserManager"), nullptr);
    EXPECT_NE(dlsym(RTLD_DEFAULT, "KXCT_CreateLogger"), nullptr);
    EXPECT_NE(dlsym(RTLD_DEFAULT, "KXCT_CreateResponder"), nullptr);
}

TEST(EntryPoints, AfterInitTheHostsInterpreterIsTheOneThatTclLeadsTo) {
    Kxct_Init(HostInterp());
    ASSERT_NE(KXCTFramework::GetTclInterp(), nullptr);
    EXPECT_EQ(KXCTFramework::GetTclInterp()->interp, HostInterp());
    EXPECT_EQ(KXCTFramework::GetTclInterp(), KXCTFramework::GetTclInterp());
}

TEST(EntryPoints, TclProceduresAreCalledWithArgumentsAndAnswer) {
    Kxct_Init(HostInterp());
    ASSERT_EQ(Tcl_Eval(HostInterp(), "proc joined {a b} {return $a-$b}"), TCL_OK);
    kxStlVector<kxVariant> arguments{"x", "y"};
    kxVariant result("");
    EXPECT_TRUE(KXCTFramework::InvokeTclMethod("joined", arguments, result));
    EXPECT_EQ(result, kxVariant("x-y"));
}

TEST(EntryPoints, AFailingTclProcedureIsFalse) {
    Kxct_Init(HostInterp());
    ASSERT_EQ(Tcl_Eval(HostInterp(), "proc failing {} {error no}"), TCL_OK);
    kxStlVector<kxVariant> arguments;
    kxVariant result("before");
    EXPECT_FALSE(KXCTFramework::InvokeTclMethod("failing", arguments, result));
    EXPECT_EQ(result, kxVariant("before"));
    EXPECT_FALSE(KXCTFramework::InvokeTclMethod("no_such_procedure", arguments, result));
}

TEST(EntryPoints, WithoutAManagerOneIsMadeOnInterpreterAndHome) {
    KeptVariable binDir{kxct::ENVIRONMENT::NORVIK_KXE_KX_BIN_DIR};
    binDir.Set("/inst/kx/bin/linux64");
    Kxct_Init(HostInterp());
    Kxct_SetUIBrowserManager(nullptr);
    ui::browser::IManager* manager = KXCTFramework::GetUiBrowserManager();
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(manager->GetInterp(), HostInterp());
    EXPECT_EQ(manager->GetHome(), "/inst");
    KXCTFramework::SetUIBrowserManager(nullptr);
    EXPECT_EQ(KXCTFramework::GetUiBrowserManager(), manager);
}
