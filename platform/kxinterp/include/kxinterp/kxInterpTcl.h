#pragma once

// Tcl interpreters as kxInterp. Layer: above kxutl; of Tcl only the name of its interpreter type
// appears here. The rules of life and thread stand in kxInterp.h.
//
// Values cross as follows, in both directions:
// - booleans, integers of 64 bits, floats and doubles as Tcl's numbers, exactly;
// - text as Tcl's text: NUL bytes and characters beyond the basic plane are translated to Tcl's
//   form and back, and every other byte passes unchanged, also where it is not UTF-8, as long as
//   the script hands the text on without changing it;
// - lists of texts as Tcl lists;
// - pointers as the text that kxPointerRegistry makes, accepted back only while it is known there.
//
// A call leaves the interpreter's own result and error state as they were, so that it may come from
// within a running Tcl command.

#include <kxinterp/kxInterp.h>

// Ends with its interpreter, and by nobody else's hand.
class KXINTERP_EXPORT kxInterpTcl final : public kxInterp {
  public:
    // The wrapper of an interpreter, made at the first call. The kind "tcl" leads to it from now
    // on, until another one is asked for here or this one is deleted. Null for null and for an
    // interpreter that is being deleted.
    static kxInterpTcl* Get(Tcl_Interp* interp);
    // What the kind "tcl" leads to: of the living interpreters the one last asked for; null if
    // none.
    static kxInterpTcl* GetCurrent();

    bool invoke(const kxString& method,
                kxStlVector<kxVariant>& arguments,
                kxVariant& result) override;
    bool evaluate(const kxString& script,
                  kxStlVector<kxVariant>& arguments,
                  kxVariant& result) override;

  private:
    class Call;
    friend struct kxInterpTclBook;

    explicit kxInterpTcl(Tcl_Interp* raw);
    kxInterpTcl(const kxInterpTcl&) = delete;
    kxInterpTcl& operator=(const kxInterpTcl&) = delete;
    ~kxInterpTcl() override;

    static void InterpDeleted(void* wrapper, Tcl_Interp* raw);
    bool Fail(const kxString& error);
};

// Leads the kind "tcl" to kxInterpTcl::GetCurrent.
class KXINTERP_EXPORT kxTclInterpCreator final : public kxIInterpCreator {
  public:
    kxTclInterpCreator();
    kxTclInterpCreator(const kxTclInterpCreator&) = delete;
    kxTclInterpCreator& operator=(const kxTclInterpCreator&) = delete;
    ~kxTclInterpCreator() override;

    kxInterp* GetInterp() override;
};
