// Signals to scripts, with a real Tcl interpreter.
#include <gmock/gmock.h>
#include <kxinterp/kxInterpTcl.h>
#include <kxinterp/kxPointerRegistry.h>
#include <kxsigslot/kxSignal.h>
#include <tcl.h>

namespace model {

// Never defined: a signal may carry pointers to classes that the header doesn't know.
class Part;

// As a base that is not the first one, so that its address differs from the object's.
struct Padding {
    virtual ~Padding() = default;
    int padding = 0;
};

class View : public Padding, public kxListener<single_threaded> {
  public:
    void OnText(const kxString&) { ++heard; }
    int heard = 0;
};
class DetailView : public View {};

// Connects itself while it is no more than its base.
class EagerView : public kxListener<single_threaded> {
  public:
    explicit EagerView(kxiSignal1<const kxString&>& signal) {
        signal.connect_script(this, "OnText");
    }
};
class LateView : public EagerView {
  public:
    using EagerView::EagerView;
};

struct Plain {
    int value = 0;
};
class Shape {
  public:
    virtual ~Shape() = default;
};
class Circle : public Padding, public Shape {};

}  // namespace model

namespace {

class kxScriptConnectionTest : public testing::Test {
  protected:
    kxScriptConnectionTest() {
        Tcl_FindExecutable(nullptr);
        raw = Tcl_CreateInterp();
        kxInterp::RegisterCreator("tcl", new kxTclInterpCreator);  // the registry keeps it
        interp = kxInterpTcl::Get(raw);
        Run("set calls {}");
        Run("proc heard {args} {lappend ::calls $args}");
        for (const char* name : {"model::View",
                                 "model::DetailView",
                                 "model::EagerView",
                                 "model::LateView",
                                 "model::Plain",
                                 "model::Shape",
                                 "model::Circle"}) {
            Run(kxString("namespace eval ") + name +
                " {proc OnText {args} {lappend ::calls [list [namespace tail [namespace current]] "
                "{*}$args]}}");
        }
    }
    ~kxScriptConnectionTest() override { Delete(); }

    void Delete() {
        if (raw != nullptr) {
            Tcl_DeleteInterp(raw);
            raw = nullptr;
        }
    }
    void Run(const kxString& script) {
        ASSERT_EQ(Tcl_Eval(raw, script.c_str()), TCL_OK) << Tcl_GetStringResult(raw);
    }
    std::string Evaluate(const kxString& script) {
        Run(script);
        return Tcl_GetStringResult(raw);
    }
    std::string Calls() { return Evaluate("set calls"); }
    void MakeCommand(const char* name, Tcl_ObjCmdProc* command, void* data) {
        Tcl_CreateObjCommand(raw, name, command, data, nullptr);
    }

    Tcl_Interp* raw = nullptr;
    kxInterpTcl* interp = nullptr;
    kxiSignal1<const kxString&> text;
    kxiSignal1<model::Part*> part;
    kxiSignal2<const kxString&, model::Part*> both;
    int storage = 0;
    model::Part* const aPart = reinterpret_cast<model::Part*>(&storage);
};

TEST_F(kxScriptConnectionTest, AProcedureHearsATextAsAText) {
    text.connect_script("heard");
    text.raise("two words $x [y]");
    EXPECT_EQ(Calls(), "{{two words $x [y]}}");
}

TEST_F(kxScriptConnectionTest, APointerGoesUnderTheSimpleNameOfItsClass) {
    part.connect_script("heard");
    part.raise(aPart);
    void* pointer = nullptr;
    kxString type;
    ASSERT_TRUE(kxPointerRegistry::FromText(Evaluate("lindex $calls 0 0"), pointer, type));
    EXPECT_EQ(pointer, aPart);
    EXPECT_EQ(type, "model::Part");
    part.raise(nullptr);
    EXPECT_EQ(Evaluate("lindex $calls 1 0"), "kxptr:model::Part:0");
    kxPointerRegistry::Forget(aPart);
}

TEST_F(kxScriptConnectionTest, BothArgumentsOfASignalOfTwoArrive) {
    both.connect_script("heard");
    both.raise("uid", aPart);
    EXPECT_EQ(Evaluate("lindex $calls 0 0"), "uid");
    EXPECT_EQ(Evaluate("lindex $calls 0 1"), kxPointerRegistry::ToText(aPart, "model::Part"));
    kxPointerRegistry::Forget(aPart);
}

TEST_F(kxScriptConnectionTest, VariantsNumbersAndConstPointersArriveToo) {
    kxiSignal2<const kxString&, const kxVariant&> list;
    list.connect_script("heard");
    list.raise("view", kxVariant(kxStlVector<kxString>{"a b", "c"}));
    EXPECT_EQ(Evaluate("lindex $calls 0 1 0"), "a b");
    kxiSignal2<int, bool> number;
    number.connect_script("heard");
    number.raise(-7, true);
    EXPECT_EQ(Evaluate("lindex $calls 1"), "-7 1");
    kxiSignal2<const model::Part*, const char*> constant;
    constant.connect_script("heard");
    constant.raise(nullptr, "text");
    EXPECT_EQ(Evaluate("lindex $calls 2"), "kxptr:model::Part:0 text");
}

TEST_F(kxScriptConnectionTest, ScriptsAndMethodsAreCalledInTheOrderOfTheirConnections) {
    kxiSignal1<const kxString&> signal;
    model::View view;
    Run("proc second {args} {lappend ::calls second}");
    signal.connect_script("heard");
    signal.connect(&view, &model::View::OnText);
    signal.connect_script("second");
    signal.connect_script("heard");
    signal.raise("x");
    EXPECT_EQ(Calls(), "x second x");
    EXPECT_EQ(view.heard, 1);
}

TEST_F(kxScriptConnectionTest, AListenersMethodGetsTheListenerFirst) {
    model::View view;
    text.connect_script(&view, "OnText");
    EXPECT_EQ(view.GetNumConnections(), 1U);
    text.raise("x");
    EXPECT_EQ(Evaluate("lindex $calls 0 0"), "View");
    EXPECT_EQ(Evaluate("lindex $calls 0 2"), "x");
    void* pointer = nullptr;
    kxString type;
    ASSERT_TRUE(kxPointerRegistry::FromText(Evaluate("lindex $calls 0 1"), pointer, type));
    EXPECT_EQ(static_cast<model::View*>(pointer), &view);
    EXPECT_EQ(type, "model::View");
}

TEST_F(kxScriptConnectionTest, TheRunTimeClassNamesTheMethodAndThePointerIsToTheWholeObject) {
    model::DetailView view;
    kxListener<single_threaded>* listener = &view;
    text.connect_script(listener, "OnText");
    text.raise("x");
    EXPECT_EQ(Evaluate("lindex $calls 0 0"), "DetailView");
    void* pointer = nullptr;
    kxString type;
    ASSERT_TRUE(kxPointerRegistry::FromText(Evaluate("lindex $calls 0 1"), pointer, type));
    EXPECT_EQ(static_cast<model::DetailView*>(pointer), &view);
}

TEST_F(kxScriptConnectionTest, TheClassIsLookedAtAnewAtEachRaising) {
    model::LateView view(text);
    text.raise("x");
    EXPECT_EQ(Evaluate("lindex $calls 0 0"), "LateView");
}

TEST_F(kxScriptConnectionTest, AListenerThatDiesIsDisconnectedAndItsPointerUnknown) {
    {
        model::View view;
        text.connect_script(&view, "OnText");
        text.raise("x");
    }
    text.raise("y");
    EXPECT_EQ(Evaluate("llength $calls"), "1");
    void* pointer = nullptr;
    kxString type;
    EXPECT_FALSE(kxPointerRegistry::FromText(Evaluate("lindex $calls 0 1"), pointer, type));
}

TEST_F(kxScriptConnectionTest, AListenersPointerIsUnknownAtOnceWhenItDiesInARound) {
    auto* view = new model::View;
    text.connect_script(view, "OnText");
    text.connect_script("drop");
    text.connect_script("look");
    static bool known = true;
    MakeCommand(
        "drop",
        [](ClientData data, Tcl_Interp*, int, Tcl_Obj* const*) {
            delete static_cast<model::View*>(data);
            return TCL_OK;
        },
        view);
    MakeCommand(
        "known",
        [](ClientData, Tcl_Interp*, int, Tcl_Obj* const* words) {
            void* pointer = nullptr;
            kxString type;
            known = kxPointerRegistry::FromText(Tcl_GetString(words[1]), pointer, type);
            return TCL_OK;
        },
        nullptr);
    Run("proc look {args} {known [lindex $::calls 0 1]}");
    text.raise("x");
    EXPECT_FALSE(known);
    text.disconnect_script("drop");
    text.raise("y");
    EXPECT_EQ(Evaluate("llength $calls"), "1");
}

TEST_F(kxScriptConnectionTest, DisconnectingAListenerEndsItsScriptMethodsToo) {
    model::View view;
    text.connect_script(&view, "OnText");
    text.connect(&view, &model::View::OnText);
    EXPECT_TRUE(text.disconnect(&view));
    text.raise("x");
    EXPECT_EQ(Calls(), "");
    EXPECT_EQ(view.heard, 0);
    EXPECT_EQ(view.GetNumConnections(), 0U);
}

TEST_F(kxScriptConnectionTest, AnyOtherObjectsMethodGetsTheObjectFirst) {
    model::Plain plain;
    text.connect_script(&plain, "OnText");
    text.raise("x");
    EXPECT_EQ(Calls(), "{Plain " + kxPointerRegistry::ToText(&plain, "model::Plain") + " x}");
    EXPECT_TRUE(text.disconnect_script(&plain, "OnText"));
    kxPointerRegistry::Forget(&plain);
}

TEST_F(kxScriptConnectionTest, AnyOtherObjectIsCalledByItsRunTimeClassToo) {
    model::Circle circle;
    model::Shape* shape = &circle;
    text.connect_script(shape, "OnText");
    text.raise("x");
    EXPECT_EQ(Calls(), "{Circle " + kxPointerRegistry::ToText(&circle, "model::Circle") + " x}");
    EXPECT_TRUE(text.disconnect_script(&circle, "OnText"));
    kxPointerRegistry::Forget(&circle);
}

// Scripts may know such an object from elsewhere, so that its pointer is the host's to end.
TEST_F(kxScriptConnectionTest, DisconnectingAnyOtherObjectLeavesItsPointerKnown) {
    model::Plain plain;
    text.connect_script(&plain, "OnText");
    text.raise("x");
    text.disconnect_script(&plain, "OnText");
    void* pointer = nullptr;
    kxString type;
    EXPECT_TRUE(kxPointerRegistry::FromText(Evaluate("lindex $calls 0 1"), pointer, type));
    kxPointerRegistry::Forget(&plain);
}

TEST_F(kxScriptConnectionTest, DisconnectingEndsExactlyWhatIsNamed) {
    model::Plain plain;
    model::Plain other;
    model::View view;
    EXPECT_FALSE(text.disconnect_script("heard"));
    EXPECT_FALSE(text.disconnect_script(&plain, "OnText"));
    EXPECT_TRUE(text.IsEmpty());
    text.connect_script("heard");
    text.connect_script("heard");
    text.connect_script(&plain, "OnText");
    text.connect_script(&view, "OnText");
    text.connect(&view, &model::View::OnText);
    EXPECT_FALSE(text.disconnect_script("OnText"));
    EXPECT_FALSE(text.disconnect_script(&other, "OnText"));
    EXPECT_FALSE(text.disconnect_script(&plain, "heard"));
    EXPECT_EQ(text.GetSignal().GetNumConnections(), 5U);
    EXPECT_TRUE(text.disconnect_script("heard"));
    EXPECT_EQ(text.GetSignal().GetNumConnections(), 3U);
    EXPECT_TRUE(text.disconnect_script(&view, "OnText"));
    EXPECT_TRUE(text.disconnect_script(&plain, "OnText"));
    EXPECT_EQ(text.GetSignal().GetNumConnections(), 1U);
    EXPECT_TRUE(text.disconnect(&view, &model::View::OnText));
}

TEST_F(kxScriptConnectionTest, AFailingScriptDoesNotEndTheRound) {
    text.connect_script("no_such_procedure");
    text.connect_script("failing");
    Run("proc failing {text} {error \"no $text\"}");
    text.raise("x");
    EXPECT_EQ(interp->LastError(), "no x");
    text.connect_script("heard");
    text.raise("y");
    EXPECT_EQ(Calls(), "y");
    EXPECT_EQ(interp->LastError(), "");
}

TEST_F(kxScriptConnectionTest, AScriptMayDisconnectItself) {
    MakeCommand(
        "once",
        [](ClientData data, Tcl_Interp* in, int, Tcl_Obj* const*) {
            static_cast<kxiSignal1<const kxString&>*>(data)->disconnect_script("once");
            return Tcl_Eval(in, "lappend calls once");
        },
        &text);
    text.connect_script("once");
    text.connect_script("heard");
    text.raise("x");
    text.raise("y");
    EXPECT_EQ(Calls(), "once x y");
}

TEST_F(kxScriptConnectionTest, AScriptMayConnectAnotherWhichIsCalledInTheSameRound) {
    MakeCommand(
        "more",
        [](ClientData data, Tcl_Interp*, int, Tcl_Obj* const*) {
            static_cast<kxiSignal1<const kxString&>*>(data)->connect_script("heard");
            return TCL_OK;
        },
        &text);
    text.connect_script("more");
    text.raise("x");
    EXPECT_EQ(Calls(), "x");
}

TEST_F(kxScriptConnectionTest, RaisingFromAScriptDoesNothing) {
    MakeCommand(
        "again",
        [](ClientData data, Tcl_Interp*, int, Tcl_Obj* const*) {
            static_cast<kxiSignal1<const kxString&>*>(data)->raise("again");
            return TCL_OK;
        },
        &text);
    text.connect_script("again");
    text.connect_script("heard");
    text.raise("x");
    EXPECT_EQ(Calls(), "x");
}

TEST_F(kxScriptConnectionTest, AScriptMayDestroyTheSignalOrItsOwnListener) {
    static std::unique_ptr<kxiSignal1<const kxString&>> signal;
    signal = std::make_unique<kxiSignal1<const kxString&>>();
    auto* view = new model::View;
    signal->connect_script(view, "OnText");
    signal->connect_script("heard");
    MakeCommand(
        "destroy",
        [](ClientData data, Tcl_Interp*, int, Tcl_Obj* const*) {
            delete static_cast<model::View*>(data);
            signal.reset();
            return TCL_OK;
        },
        view);
    Run("proc model::View::OnText {args} {destroy; lappend ::calls destroyed}");
    signal->raise("x");
    EXPECT_EQ(signal, nullptr);
    EXPECT_EQ(Evaluate("lindex $calls 0"), "destroyed");
}

TEST_F(kxScriptConnectionTest, ABlockedSignalCallsNoScript) {
    text.connect_script("heard");
    text.block();
    text.raise("x");
    text.unblock();
    text.raise("y");
    EXPECT_EQ(Calls(), "y");
}

TEST_F(kxScriptConnectionTest, WithoutAnInterpreterNothingIsCalled) {
    model::View view;
    text.connect_script("heard");
    text.connect_script(&view, "OnText");
    text.connect(&view, &model::View::OnText);
    Delete();
    text.raise("x");
    EXPECT_EQ(view.heard, 1);
}

TEST_F(kxScriptConnectionTest, AnInterpreterMayBeDeletedByTheScript) {
    MakeCommand(
        "finish",
        [](ClientData, Tcl_Interp* in, int, Tcl_Obj* const*) {
            Tcl_DeleteInterp(in);
            return TCL_OK;
        },
        nullptr);
    text.connect_script("finish");
    text.connect_script("heard");
    text.raise("x");
    raw = nullptr;
    EXPECT_EQ(interp->interp, nullptr);
}

TEST_F(kxScriptConnectionTest, ACallbackTellsItsCommandAndWhetherItWorked) {
    EXPECT_EQ(kxScriptCallback("heard").GetCommand(), "heard");
    EXPECT_TRUE(kxScriptCallback("heard").Call({"a", 1}));
    EXPECT_EQ(Calls(), "{a 1}");
    const kxScriptCallback method(kxVariant(nullptr, "model::View"), "OnText");
    EXPECT_EQ(method.GetCommand(), "model::View::OnText");
    EXPECT_TRUE(method.Call({}));
    EXPECT_EQ(Evaluate("lindex $calls 1"), "View kxptr:model::View:0");
    EXPECT_FALSE(kxScriptCallback("no such").Call({}));
    Delete();
    EXPECT_FALSE(kxScriptCallback("heard").Call({}));
}

}  // namespace
