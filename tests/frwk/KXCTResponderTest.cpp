// The responder with a real Tcl interpreter. The class is hidden inside the library, so this
// program has its own copy of it.
#include <kxct/EntryPoints.h>
#include <kxinterp/kxInterpTcl.h>
#include <kxinterp/kxPointerRegistry.h>
#include <kxlmcore/QuestionDialog.h>
#include <tcl.h>

#include <memory>

#include "frwk/KXCTResponder.h"
#include "tests/frwk/LibraryManager.h"

namespace kxct {
namespace {

using testing::ElementsAre;

// Without an interpreter.
class KXCTResponderAlone : public testing::Test {
  protected:
    KXCTResponderAlone() { KXCTResponder::Reset(); }
    ~KXCTResponderAlone() override { KXCTResponder::Reset(); }

    const kxStlVector<kxString> options{"No", "Later"};
    kxlm::QuestionDialog dialog{"Title", "Question", {"OK"}};
};

TEST_F(KXCTResponderAlone, AnswersYesToQuestions) {
    KXCTResponder responder(0, "answers", "answer");
    EXPECT_EQ(responder.GetAnswer("Delete?", options), "Yes");
    EXPECT_EQ(responder.GetAnswerExtended("Delete?", options, {}, 1, 2), "Yes");
}

TEST_F(KXCTResponderAlone, HasNoTextAndNoDialog) {
    KXCTResponder responder(0, "answers", "answer");
    EXPECT_EQ(responder.GetInputText("Name?", options), "");
    EXPECT_EQ(responder.PostQuestionDialog(&dialog), -1);
}

TEST_F(KXCTResponderAlone, SupportsTheNewInterface) {
    EXPECT_TRUE(KXCTResponder(0, "", "").SupportsNewInterface());
}

class KXCTResponderInTcl : public KXCTResponderAlone {
  protected:
    KXCTResponderInTcl() {
        Tcl_FindExecutable(nullptr);
        raw = Tcl_CreateInterp();
        kxInterp::RegisterCreator("tcl", new kxTclInterpCreator);  // the registry keeps it
        kxInterpTcl::Get(raw);
        // Writes down its arguments and answers what `answer` holds.
        Run("set calls {}; set answer 0");
        Run("proc spy {args} {lappend ::calls $args; return $::answer}");
        responder = std::make_unique<KXCTResponder>(0, "", "spy");
    }
    ~KXCTResponderInTcl() override {
        if (raw != nullptr) {
            Tcl_DeleteInterp(raw);
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

    Tcl_Interp* raw = nullptr;
    std::unique_ptr<KXCTResponder> responder;
};

TEST_F(KXCTResponderInTcl, AQuestionPassesVerbQuestionAndOptions) {
    Run("set answer 1");
    EXPECT_EQ(responder->GetAnswer("Delete $x [y]?", options), "Later");
    EXPECT_EQ(Calls(), "{getAnswer {Delete $x [y]?} {No Later}}");
}

TEST_F(KXCTResponderInTcl, AnOptionWithABlankIsPutInBraces) {
    responder->GetAnswer("?", {"a b", "c", "  "});
    EXPECT_EQ(Evaluate("lindex $calls 0 2"), "{a b} c {  }");
    EXPECT_EQ(Evaluate("lindex $calls 0 2 0"), "a b");
}

// Other characters don't make braces, which is required: hosts' scripts count on the plain text.
TEST_F(KXCTResponderInTcl, OtherOptionsReachTheScriptAsTheyAre) {
    responder->GetAnswer("?", {"", "a\tb", "{", "$x", "[exit]", "a} b"});
    EXPECT_EQ(Evaluate("lindex $calls 0 2"), " a\tb { $x [exit] {a} b}");
    responder->GetAnswer("?", {});
    EXPECT_EQ(Evaluate("lindex $calls 1 2"), "");
}

TEST_F(KXCTResponderInTcl, AnIndexOutsideTheOptionsIsNoAnswer) {
    for (const char* index :
         {"-1", "2", "-2", "2147483647", "2147483648", "-9223372036854775808"}) {
        Run(kxString("set answer ") + index);
        EXPECT_EQ(responder->GetAnswer("?", options), "") << index;
    }
    Run("set answer 0");
    EXPECT_EQ(responder->GetAnswer("?", {}), "");
}

TEST_F(KXCTResponderInTcl, AScriptThatFailsOrGivesNoNumberIsNoAnswer) {
    for (const char* answer : {"error no", "return Later", "return {}", "return 0.5", "break"}) {
        Run(kxString("proc spy {args} {") + answer + "}");
        EXPECT_EQ(responder->GetAnswer("?", options), "") << answer;
        EXPECT_EQ(responder->GetAnswerExtended("?", options, {}, 0, 0), "") << answer;
        EXPECT_EQ(responder->PostQuestionDialog(&dialog), -1) << answer;
    }
    EXPECT_EQ(KXCTResponder(0, "", "no_such_procedure").GetAnswer("?", options), "");
}

TEST_F(KXCTResponderInTcl, YesToAllAnswersLaterQuestionsWithoutACall) {
    EXPECT_EQ(responder->GetAnswer("?", {"YES to All"}), "YES to All");
    EXPECT_EQ(KXCTResponder::_yestoall, 1);
    EXPECT_EQ(responder->GetAnswer("?", options), "Yes");
    EXPECT_EQ(responder->GetAnswerExtended("?", options, {}, 0, 0), "Yes");
    EXPECT_EQ(KXCTResponder(0, "", "spy").GetAnswer("?", options), "Yes");
    EXPECT_EQ(Evaluate("llength $calls"), "1");
}

TEST_F(KXCTResponderInTcl, YesToAllDoesNotAnswerForATextOrADialog) {
    responder->GetAnswer("?", {"Yes to all"});
    Run("set answer 7");
    EXPECT_EQ(responder->GetInputText("?", options), "7");
    EXPECT_EQ(responder->PostQuestionDialog(&dialog), 7);
}

TEST_F(KXCTResponderInTcl, AfterResetTheNextQuestionIsAsked) {
    responder->GetAnswer("?", {"Yes to all"});
    KXCTResponder::Reset();
    EXPECT_EQ(responder->GetAnswer("?", options), "No");
    EXPECT_EQ(Evaluate("llength $calls"), "2");
}

TEST_F(KXCTResponderInTcl, OnlyTheExactWordsAreYesToAll) {
    for (const char* option : {"Yes", "yes to all ", " yes to all", "yes  to all", "yes to all!"}) {
        EXPECT_EQ(responder->GetAnswer("?", {option}), option);
        EXPECT_EQ(KXCTResponder::_yestoall, 0) << option;
    }
}

TEST_F(KXCTResponderInTcl, AnotherAnswerTakesYesToAllBackAndNoAnswerLeavesIt) {
    // The flag can only stand while a question is answered if the script itself sets it.
    Run("proc spy {args} {again; return $::answer}");
    static KXCTResponder* other = nullptr;
    KXCTResponder second(0, "", "all");
    other = &second;
    Run("proc all {args} {return 0}");
    Tcl_CreateObjCommand(
        raw,
        "again",
        [](ClientData, Tcl_Interp*, int, Tcl_Obj* const*) {
            other->GetAnswer("?", {"yes to all"});
            return TCL_OK;
        },
        nullptr,
        nullptr);
    Run("set answer -1");
    EXPECT_EQ(responder->GetAnswer("?", options), "");
    EXPECT_EQ(KXCTResponder::_yestoall, 1);
    KXCTResponder::Reset();
    Run("set answer 1");
    EXPECT_EQ(responder->GetAnswer("?", options), "Later");
    EXPECT_EQ(KXCTResponder::_yestoall, 0);
}

TEST_F(KXCTResponderInTcl, AnExtendedQuestionPassesListsAndNumbers) {
    Run("set answer 1");
    EXPECT_EQ(responder->GetAnswerExtended("Replace?", {"a {b", ""}, {"x", "y z"}, -3, 4), "");
    EXPECT_EQ(Evaluate("llength [lindex $calls 0]"), "6");
    EXPECT_EQ(Evaluate("lrange [lindex $calls 0] 0 1"), "getAnswerExtended Replace?");
    EXPECT_EQ(Evaluate("lindex $calls 0 2 0"), "a {b");
    EXPECT_EQ(Evaluate("llength [lindex $calls 0 2]"), "2");
    EXPECT_EQ(Evaluate("lindex $calls 0 3 1"), "y z");
    EXPECT_EQ(Evaluate("lrange [lindex $calls 0] 4 5"), "-3 4");
    EXPECT_EQ(responder->GetAnswerExtended("?", options, {"No more", "Much later"}, 0, 0), "Later");
}

TEST_F(KXCTResponderInTcl, AnExtendedAnswerCanBeYesToAll) {
    Run("set answer 1");
    EXPECT_EQ(responder->GetAnswerExtended("?", {"No", "yes TO all"}, {}, 0, 0), "yes TO all");
    EXPECT_EQ(responder->GetAnswer("?", options), "Yes");
}

TEST_F(KXCTResponderInTcl, ATextIsWhatTheScriptReturns) {
    Run("set answer {two  words é}");
    EXPECT_EQ(responder->GetInputText("Name?", {"a b", "c"}), "two  words é");
    EXPECT_EQ(Calls(), "{getInputText Name? {{a b} c}}");
    Run("proc spy {args} {error no}");
    EXPECT_EQ(responder->GetInputText("Name?", {}), "");
}

TEST_F(KXCTResponderInTcl, ADialogGoesAsAPointerThatIsGoodDuringTheCall) {
    Run("proc spy {verb dialog} {set ::verb $verb; set ::dialog $dialog; known $dialog}");
    Tcl_CreateObjCommand(
        raw,
        "known",
        [](ClientData, Tcl_Interp* interp, int, Tcl_Obj* const* words) {
            void* pointer = nullptr;
            kxString type;
            if (!kxPointerRegistry::FromText(Tcl_GetString(words[1]), pointer, type) ||
                type != "kxlm::QuestionDialog") {
                return TCL_ERROR;
            }
            const auto* known = static_cast<kxlm::QuestionDialog*>(pointer);
            Tcl_SetObjResult(interp,
                             Tcl_NewIntObj(static_cast<int>(known->GetOptions().size()) + 40));
            return TCL_OK;
        },
        nullptr,
        nullptr);
    EXPECT_EQ(responder->PostQuestionDialog(&dialog), 41);
    EXPECT_EQ(Evaluate("set verb"), "postQuestionDialog");
    void* pointer = nullptr;
    kxString type;
    EXPECT_FALSE(kxPointerRegistry::FromText(Evaluate("set dialog"), pointer, type));
}

TEST_F(KXCTResponderInTcl, ANullDialogGoesAsANullPointer) {
    responder->PostQuestionDialog(nullptr);
    EXPECT_EQ(Calls(), "{postQuestionDialog kxptr:kxlm::QuestionDialog:0}");
}

TEST_F(KXCTResponderInTcl, InBatchModeOnlyADialogIsPut) {
    for (const int mode : {1, -1, 5}) {
        KXCTResponder batch(mode, "", "spy");
        EXPECT_EQ(batch.GetAnswer("?", options), "Yes");
        EXPECT_EQ(batch.GetAnswerExtended("?", options, {}, 0, 0), "Yes");
        EXPECT_EQ(batch.GetInputText("?", options), "Yes");
    }
    EXPECT_EQ(Calls(), "");
    Run("set answer 3");
    EXPECT_EQ(KXCTResponder(1, "", "spy").PostQuestionDialog(&dialog), 3);
}

TEST_F(KXCTResponderInTcl, ThePackageIsLoadedWhenTheResponderIsMade) {
    Run("package ifneeded {my answers} 1.0 {set loaded 1; package provide {my answers} 1.0}");
    const KXCTResponder one(0, "my answers", "spy");
    EXPECT_EQ(Evaluate("set loaded"), "1");
    // One that can't be loaded shows at the first question only.
    KXCTResponder other(0, "no such package", "no_such_procedure");
    EXPECT_EQ(other.GetAnswer("?", options), "");
}

TEST_F(KXCTResponderInTcl, AScriptMayDeleteTheRunningProcedureOrTheResponder) {
    Run("proc spy {args} {rename spy {}; return 1}");
    EXPECT_EQ(responder->GetAnswer("?", options), "Later");
    EXPECT_EQ(responder->GetAnswer("?", options), "");
    static std::unique_ptr<KXCTResponder>* owner = nullptr;
    owner = &responder;
    Tcl_CreateObjCommand(
        raw,
        "spy",
        [](ClientData, Tcl_Interp* interp, int, Tcl_Obj* const*) {
            owner->reset();
            Tcl_SetObjResult(interp, Tcl_NewIntObj(0));
            return TCL_OK;
        },
        nullptr,
        nullptr);
    EXPECT_EQ(responder->GetAnswer("?", options), "No");
    EXPECT_EQ(responder, nullptr);
}

TEST_F(KXCTResponderInTcl, AfterTheInterpreterIsGoneAnswersAreThoseWithoutOne) {
    Tcl_DeleteInterp(raw);
    raw = nullptr;
    EXPECT_EQ(responder->GetAnswer("?", options), "Yes");
    EXPECT_EQ(responder->GetInputText("?", options), "");
    EXPECT_EQ(responder->PostQuestionDialog(&dialog), -1);
}

TEST_F(KXCTResponderInTcl, TheFactoryReadsPackageAndProcedureFromTheSettings) {
    HostSettings settings{{"ResponderTclPackage", "answers"}, {"ResponderTclProcedure", "spy"}};
    Run("package ifneeded answers 1.0 {set loaded 1; package provide answers 1.0}");
    const std::unique_ptr<kxlm::iLibraryManagerResponder> made(KXCT_CreateResponder(0, &settings));
    EXPECT_THAT(settings.asked,
                ElementsAre("ResponderTclPackage 1 0", "ResponderTclProcedure 1 0"));
    EXPECT_EQ(Evaluate("set loaded"), "1");
    EXPECT_EQ(made->GetAnswer("?", options), "No");
    const std::unique_ptr<kxlm::iLibraryManagerResponder> batch(KXCT_CreateResponder(1, &settings));
    EXPECT_EQ(batch->GetAnswer("?", options), "Yes");
}

}  // namespace
}  // namespace kxct
