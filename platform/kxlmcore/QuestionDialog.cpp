#include <kxlmcore/QuestionDialog.h>

namespace kxlm {

QuestionDialog::QuestionDialog(const kxString& title,
                               const kxString& question,
                               const kxStlVector<kxString>& options)
    : _title(title), _question(question), _options(options) {}

QuestionDialog::~QuestionDialog() = default;

const kxString& QuestionDialog::GetTitle() const noexcept {
    return _title;
}

const kxString& QuestionDialog::GetQuestion() const noexcept {
    return _question;
}

const kxStlVector<kxString>& QuestionDialog::GetOptions() const noexcept {
    return _options;
}

}  // namespace kxlm
