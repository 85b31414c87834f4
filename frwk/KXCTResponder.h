// Answers the questions of a library manager by asking a Tcl procedure of the host.
//
// Layer: framework. Hosts get one from KXCT_CreateResponder (<kxct/EntryPoints.h>) and see the
// interface; the class is hidden outside the library.
//
// The procedure is called with a verb first:
//
//     getAnswer QUESTION OPTIONS              an index into OPTIONS
//     getAnswerExtended QUESTION OPTIONS DETAILS N M
//     getInputText QUESTION OPTIONS           a text
//     postQuestionDialog DIALOG               an index; DIALOG can be used during the call only
//
// A script that fails, or answers what is not asked for, counts as no answer. Once the option "yes
// to all" was chosen, in any case of its letters, every responder of the process answers "Yes" to
// questions without asking, until Reset. Nothing here throws.
//
// Threads: that of the interpreter; nothing is locked.
#pragma once

#include <kxlmcore/iLibraryManagerResponder.h>
#include <kxutl/kxVariant.h>

namespace kxct {

class KXCTResponder : public kxlm::iLibraryManagerResponder {
  public:
    // Loads `package` into the interpreter, if there is one by now. One that can't be loaded shows
    // at the first question. With `batchMode` not 0 nobody is asked.
    KXCTResponder(int batchMode, const kxString& package, const kxString& procedure);
    ~KXCTResponder() override = default;

    // The order of the virtual operations is that of the interface.

    // The chosen option, in its own case. "Yes" in batch mode, after "yes to all" and without an
    // interpreter, even if it is not among the options. Empty for no answer.
    kxString GetAnswer(const kxString& question, kxStlVector<kxString> options) override;
    bool SupportsNewInterface() override;
    kxString GetAnswerExtended(const kxString& question,
                               kxStlVector<kxString> options,
                               kxStlVector<kxString> details,
                               int first,
                               int second) override;
    // "Yes" in batch mode. "Yes to all" plays no part: a text can't be answered by it.
    kxString GetInputText(const kxString& question, kxStlVector<kxString> options) override;
    // Asks in batch mode too. -1 without an interpreter or an answer.
    int PostQuestionDialog(kxlm::QuestionDialog* dialog) override;

    // Ends "yes to all".
    static void Reset();

    // Not 0 once a person answered "yes to all"; shared by all responders.
    static int _yestoall;

  private:
    bool _AnswersYes() const;
    // Asks for an index into `options` and returns that option, or an empty text.
    kxString _Choose(kxStlVector<kxVariant> arguments, const kxStlVector<kxString>& options) const;

    int _batchMode;
    kxString _package;
    kxString _procedure;
};

}  // namespace kxct
