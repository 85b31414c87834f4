#include <kxinterp/kxInterp.h>
#include <kxinterp/kxScriptCallback.h>

kxScriptCallback::kxScriptCallback(const kxString& procedure) : _command(procedure) {}

kxScriptCallback::kxScriptCallback(const kxVariant& object, const kxString& method)
    : _command(object.GetPointerTypeName() + "::" + method), _object(object) {}

bool kxScriptCallback::Call(const kxStlVector<kxVariant>& arguments) const {
    kxInterp* interp = kxInterp::Get("tcl");
    if (interp == nullptr) {
        return false;
    }
    kxStlVector<kxVariant> words;
    words.reserve(arguments.size() + 1);
    if (!_object.IsEmpty()) {
        words.push_back(_object);
    }
    words.insert(words.end(), arguments.begin(), arguments.end());
    // Any answer passes as a text.
    kxVariant dropped("");
    return interp->invoke(_command, words, dropped);
}
