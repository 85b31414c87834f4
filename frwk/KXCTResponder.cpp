#include "frwk/KXCTResponder.h"

#include <kxct/EntryPoints.h>
#include <kxinterp/kxInterp.h>
#include <kxinterp/kxPointerRegistry.h>
#include <kxlmcore/QuestionDialog.h>
#include <kxlmcore/iSettings.h>

#include <algorithm>
#include <cctype>

namespace kxct {

namespace {

const kxString YES("Yes");

kxInterp* Interp() {
    return kxInterp::Get("tcl");
}

// Only a blank puts an option into braces. An empty option vanishes and a lone brace makes an
// invalid list: scripts of hosts take the text apart in the same way, so it must stay.
kxString ListText(const kxStlVector<kxString>& options) {
    kxString text;
    for (const kxString& option : options) {
        if (&option != &options.front()) {
            text += ' ';
        }
        text += option.find(' ') != kxString::npos ? kxString("{" + option + "}") : option;
    }
    return text;
}

kxString LowerCase(kxString text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char character) {
        return static_cast<char>(std::tolower(character));
    });
    return text;
}

}  // namespace

int KXCTResponder::_yestoall = 0;

KXCTResponder::KXCTResponder(int batchMode, const kxString& package, const kxString& procedure)
    : _batchMode(batchMode), _package(package), _procedure(procedure) {
    if (kxInterp* interp = Interp()) {
        kxStlVector<kxVariant> arguments{"require", _package};
        kxVariant result("");
        interp->evaluate("package", arguments, result);
    }
}

bool KXCTResponder::_AnswersYes() const {
    return _batchMode != 0 || _yestoall != 0 || Interp() == nullptr;
}

kxString KXCTResponder::_Choose(kxStlVector<kxVariant> arguments,
                                const kxStlVector<kxString>& options) const {
    kxVariant result(-1);
    Interp()->invoke(_procedure, arguments, result);
    const int index = result.GetInteger();
    if (index < 0 || static_cast<std::size_t>(index) >= options.size()) {
        return {};
    }
    const kxString& option = options[static_cast<std::size_t>(index)];
    _yestoall = LowerCase(option) == "yes to all" ? 1 : 0;
    return option;
}

kxString KXCTResponder::GetAnswer(const kxString& question, kxStlVector<kxString> options) {
    if (_AnswersYes()) {
        return YES;
    }
    return _Choose({"getAnswer", question, ListText(options)}, options);
}

bool KXCTResponder::SupportsNewInterface() {
    return true;
}

kxString KXCTResponder::GetAnswerExtended(const kxString& question,
                                          kxStlVector<kxString> options,
                                          kxStlVector<kxString> details,
                                          int first,
                                          int second) {
    if (_AnswersYes()) {
        return YES;
    }
    return _Choose({"getAnswerExtended", question, options, details, first, second}, options);
}

kxString KXCTResponder::GetInputText(const kxString& question, kxStlVector<kxString> options) {
    if (_batchMode != 0) {
        return YES;
    }
    kxVariant result("");
    if (kxInterp* interp = Interp()) {
        kxStlVector<kxVariant> arguments{"getInputText", question, ListText(options)};
        interp->invoke(_procedure, arguments, result);
    }
    return result.GetString();
}

int KXCTResponder::PostQuestionDialog(kxlm::QuestionDialog* dialog) {
    kxInterp* interp = Interp();
    if (interp == nullptr) {
        return -1;
    }
    kxStlVector<kxVariant> arguments{"postQuestionDialog",
                                     kxVariant(dialog, "kxlm::QuestionDialog")};
    kxVariant result(-1);
    interp->invoke(_procedure, arguments, result);
    // The caller may destroy it from here on, and a script may have kept its name.
    kxPointerRegistry::Forget(dialog);
    return result.GetInteger();
}

void KXCTResponder::Reset() {
    _yestoall = 0;
}

}  // namespace kxct

kxlm::iLibraryManagerResponder* KXCT_CreateResponder(int batchMode, kxlm::iSettings* settings) {
    const kxString package = settings->GetString("ResponderTclPackage", 1, 0);
    const kxString procedure = settings->GetString("ResponderTclProcedure", 1, 0);
    return new kxct::KXCTResponder(batchMode, package, procedure);
}
