#pragma once

// A question with a row of buttons, which a host shows to a person. Layer: above kxutl. Whoever
// makes it owns it; a responder only looks at it during the call.

#include <kxlmcore/kxlmcore_export.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

namespace kxlm {

class KXLMCORE_EXPORT QuestionDialog {
  public:
    QuestionDialog(const kxString& title,
                   const kxString& question,
                   const kxStlVector<kxString>& options);
    QuestionDialog(const QuestionDialog&) = default;
    QuestionDialog& operator=(const QuestionDialog&) = default;
    virtual ~QuestionDialog();

    const kxString& GetTitle() const noexcept;
    const kxString& GetQuestion() const noexcept;
    // The texts of the buttons; the answer to the dialog is an index into them, or -1 for none.
    const kxStlVector<kxString>& GetOptions() const noexcept;

  private:
    kxString _title;
    kxString _question;
    kxStlVector<kxString> _options;
};

}  // namespace kxlm
