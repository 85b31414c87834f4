#pragma once

// Who answers when a library manager needs a person. Layer: above kxutl. The order of the virtual
// operations is part of the binary interface. All calls come on the thread of the user interface.

#include <kxlmcore/kxlmcore_export.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

namespace kxlm {

class QuestionDialog;

class KXLMCORE_EXPORT iLibraryManagerResponder {
  public:
    iLibraryManagerResponder() = default;
    iLibraryManagerResponder(const iLibraryManagerResponder&) = default;
    iLibraryManagerResponder& operator=(const iLibraryManagerResponder&) = default;
    virtual ~iLibraryManagerResponder();

    // One of `options`, or empty for no answer.
    virtual kxString GetAnswer(const kxString& question, kxStlVector<kxString> options) = 0;
    // False unless the operations below may be called.
    virtual bool SupportsNewInterface();
    // As GetAnswer, with a second list of texts and two numbers for the dialog of the host.
    virtual kxString GetAnswerExtended(const kxString& question,
                                       kxStlVector<kxString> options,
                                       kxStlVector<kxString> details,
                                       int first,
                                       int second) = 0;
    // The line that was typed.
    virtual kxString GetInputText(const kxString& question, kxStlVector<kxString> options) = 0;
    // Index of the chosen option, or -1. The dialog stays the caller's.
    virtual int PostQuestionDialog(QuestionDialog* dialog) = 0;
};

}  // namespace kxlm
