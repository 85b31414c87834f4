#pragma once

// A script interpreter of the host, whatever its language, and the registry that finds it by the
// name of its kind. Layer: above kxutl.
//
// An interpreter object is made once for each interpreter of the host and is never freed, so that a
// pointer to it can be kept: when the host's interpreter goes, the object stays and each call on it
// fails. Calls belong on the thread of the host's interpreter; the registry may be used from any.
//
//     kxStlVector<kxVariant> arguments = {"get", item};
//     kxVariant result("");                          // wants text
//     if (kxInterp* interp = kxInterp::Get("tcl")) {
//         if (!interp->invoke("costOf", arguments, result)) {
//             Log(interp->LastErrorTrace());
//         }
//     }

#include <kxinterp/kxinterp_export.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>
#include <kxutl/kxVariant.h>

struct Tcl_Interp;

class kxInterp;

// Finds the interpreter of one kind for the registry.
class KXINTERP_EXPORT kxIInterpCreator {
  public:
    kxIInterpCreator() = default;
    kxIInterpCreator(const kxIInterpCreator&) = default;
    kxIInterpCreator& operator=(const kxIInterpCreator&) = default;
    virtual ~kxIInterpCreator();

    // The interpreter that the kind's name leads to at present; null if there is none.
    virtual kxInterp* GetInterp() = 0;
};

// Whoever made an interpreter ends it: callers of Get must not be able to.
class KXINTERP_EXPORT kxInterp {
  public:
    // Calls the command `method` with exactly these arguments. `result` says by its kind what is
    // wanted: an integer gets an integer, a text gets text and so on, and an empty one whatever
    // fits best. Returns false if the script fails or its answer is not of the wanted kind;
    // `result` is then as it was, and LastError tells why.
    virtual bool invoke(const kxString& method,
                        kxStlVector<kxVariant>& arguments,
                        kxVariant& result) = 0;
    // The same, but `script` may be any script; the arguments are words at its end.
    virtual bool evaluate(const kxString& script,
                          kxStlVector<kxVariant>& arguments,
                          kxVariant& result) = 0;

    // One line about the last call, and where in the scripts it failed. Both are empty after a call
    // that succeeded.
    const kxString& LastError() const noexcept { return _lastError; }
    const kxString& LastErrorTrace() const noexcept { return _lastErrorTrace; }

    // `creator` finds the interpreters of `kind` from now on. The registry keeps every creator for
    // the life of the process, also those that were replaced.
    static void RegisterCreator(const kxString& kind, kxIInterpCreator* creator);
    // Null if nobody registered the kind or it has no interpreter now.
    static kxInterp* Get(const kxString& kind);

    // The host's own interpreter, for those who must speak to it directly; null when it is gone or
    // of another language.
    Tcl_Interp* interp = nullptr;

  protected:
    kxInterp() = default;
    virtual ~kxInterp();
    kxInterp(const kxInterp&) = delete;
    kxInterp& operator=(const kxInterp&) = delete;

    void SetLastError(const kxString& error, const kxString& trace);

  private:
    kxString _lastError;
    kxString _lastErrorTrace;
};
