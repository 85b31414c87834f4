#include <kxinterp/kxInterpTcl.h>
#include <tcl.h>

#include <algorithm>
#include <mutex>

#include "kxTclValue.h"

// All wrappers: the living ones in the order in which they were last asked for, and the dead ones,
// which somebody may still hold.
struct kxInterpTclBook {
    std::mutex mutex;
    kxStlVector<kxInterpTcl*> living;
    kxStlVector<kxInterpTcl*> dead;

    // Never destroyed: interpreters may be deleted while the process ends.
    static kxInterpTclBook& Get() {
        static auto* book = new kxInterpTclBook;
        return *book;
    }

    kxInterpTcl* Take(Tcl_Interp* raw) {
        const auto found = std::find_if(
            living.begin(), living.end(), [raw](const auto* one) { return one->interp == raw; });
        if (found == living.end()) {
            return nullptr;
        }
        kxInterpTcl* wrapper = *found;
        living.erase(found);
        return wrapper;
    }

    kxInterpTcl* MakeCurrent(Tcl_Interp* raw) {
        const std::lock_guard lock(mutex);
        kxInterpTcl* wrapper = Take(raw);
        if (wrapper == nullptr) {
            wrapper = new kxInterpTcl(raw);
        }
        living.push_back(wrapper);
        return wrapper;
    }

    void Bury(kxInterpTcl* wrapper) {
        const std::lock_guard lock(mutex);
        Take(wrapper->interp);
        dead.push_back(wrapper);
        wrapper->interp = nullptr;
    }

    kxInterpTcl* Current() {
        const std::lock_guard lock(mutex);
        return living.empty() ? nullptr : living.back();
    }
};

namespace {

kxString ErrorTrace(Tcl_Interp* raw, int code) {
    const kxTclValue::Object options(Tcl_GetReturnOptions(raw, code));
    const kxTclValue::Object key(Tcl_NewStringObj("-errorinfo", -1));
    Tcl_Obj* trace = nullptr;
    Tcl_DictObjGet(nullptr, options.get(), key.get(), &trace);
    return trace != nullptr ? kxTclValue::TextOf(trace) : kxString();
}

}  // namespace

// Keeps the interpreter's memory and its own result over a call. The script may delete the
// interpreter; then there is nothing to restore.
class kxInterpTcl::Call {
  public:
    explicit Call(Tcl_Interp* raw) : _raw(raw) {
        Tcl_Preserve(_raw);
        _state = Tcl_SaveInterpState(_raw, TCL_OK);
    }
    ~Call() {
        if (Tcl_InterpDeleted(_raw) != 0) {
            Tcl_DiscardInterpState(_state);
        } else {
            Tcl_RestoreInterpState(_raw, _state);
        }
        Tcl_Release(_raw);
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    bool Finish(kxInterpTcl& wrapper, int code, kxVariant& result) const {
        const kxTclValue::Object answer(Tcl_GetObjResult(_raw));
        if (code == TCL_OK || code == TCL_RETURN) {
            kxString error;
            if (kxTclValue::FromTcl(answer.get(), result, error)) {
                wrapper.SetLastError("", "");
                return true;
            }
            return wrapper.Fail(error);
        }
        if (code != TCL_ERROR) {
            return wrapper.Fail("the script ended by break or continue outside of a loop");
        }
        wrapper.SetLastError(kxTclValue::TextOf(answer.get()), ErrorTrace(_raw, code));
        return false;
    }

  private:
    Tcl_Interp* _raw;
    Tcl_InterpState _state;
};

kxInterpTcl::kxInterpTcl(Tcl_Interp* raw) {
    interp = raw;
    Tcl_CallWhenDeleted(raw, &kxInterpTcl::InterpDeleted, this);
}

kxInterpTcl::~kxInterpTcl() = default;

void kxInterpTcl::InterpDeleted(void* wrapper, Tcl_Interp*) {
    kxInterpTclBook::Get().Bury(static_cast<kxInterpTcl*>(wrapper));
}

kxInterpTcl* kxInterpTcl::Get(Tcl_Interp* interp) {
    if (interp == nullptr || Tcl_InterpDeleted(interp) != 0) {
        return nullptr;
    }
    return kxInterpTclBook::Get().MakeCurrent(interp);
}

kxInterpTcl* kxInterpTcl::GetCurrent() {
    return kxInterpTclBook::Get().Current();
}

bool kxInterpTcl::Fail(const kxString& error) {
    SetLastError(error, error);
    return false;
}

bool kxInterpTcl::invoke(const kxString& method,
                         kxStlVector<kxVariant>& arguments,
                         kxVariant& result) {
    if (interp == nullptr || Tcl_InterpDeleted(interp) != 0) {
        return Fail("the Tcl interpreter is deleted");
    }
    kxStlVector<kxTclValue::Object> objects;
    kxStlVector<Tcl_Obj*> words;
    objects.reserve(arguments.size() + 1);
    words.reserve(arguments.size() + 1);
    const auto add = [&](Tcl_Obj* object) {
        if (object != nullptr) {
            objects.emplace_back(object);
        }
        words.push_back(object);
        return object != nullptr;
    };
    bool allFit = add(kxTclValue::ToTcl(method));
    for (const kxVariant& argument : arguments) {
        allFit = allFit && add(kxTclValue::ToTcl(argument));
    }
    if (!allFit) {
        return Fail("an argument is larger than Tcl can hold");
    }
    const Call call(interp);
    Tcl_Interp* const raw = interp;
    const int code =
        Tcl_EvalObjv(raw, static_cast<int>(words.size()), words.data(), TCL_EVAL_GLOBAL);
    return call.Finish(*this, code, result);
}

bool kxInterpTcl::evaluate(const kxString& script,
                           kxStlVector<kxVariant>& arguments,
                           kxVariant& result) {
    if (interp == nullptr || Tcl_InterpDeleted(interp) != 0) {
        return Fail("the Tcl interpreter is deleted");
    }
    Tcl_Obj* whole = kxTclValue::ToTcl(script);
    if (whole == nullptr) {
        return Fail("the script is larger than Tcl can hold");
    }
    const kxTclValue::Object complete(whole);
    const kxTclValue::Object words(Tcl_NewListObj(0, nullptr));
    for (const kxVariant& argument : arguments) {
        Tcl_Obj* object = kxTclValue::ToTcl(argument);
        if (object == nullptr) {
            return Fail("an argument is larger than Tcl can hold");
        }
        Tcl_ListObjAppendElement(nullptr, words.get(), object);
    }
    if (!arguments.empty()) {
        Tcl_AppendToObj(complete.get(), " ", 1);
        Tcl_AppendObjToObj(complete.get(), words.get());
    }
    const Call call(interp);
    Tcl_Interp* const raw = interp;
    const int code = Tcl_EvalObjEx(raw, complete.get(), TCL_EVAL_GLOBAL);
    return call.Finish(*this, code, result);
}

kxTclInterpCreator::kxTclInterpCreator() = default;

kxTclInterpCreator::~kxTclInterpCreator() = default;

kxInterp* kxTclInterpCreator::GetInterp() {
    return kxInterpTcl::GetCurrent();
}
