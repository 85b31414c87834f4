#pragma once

// A script procedure, or a script method of an object, that is called when something happens.
// Layer: above kxutl. A value; calls belong on the thread of the interpreter.
//
// A script method of class `View` is the command "View::<method>", which gets the object as its
// first argument:
//
//     namespace eval View {
//         proc OnItemUpdated {view item} { ... }
//     }
//
//     kxScriptCallback(kxVariant(view, "View"), "OnItemUpdated").Call({item});

#include <kxinterp/kxinterp_export.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>
#include <kxutl/kxVariant.h>

class KXINTERP_EXPORT kxScriptCallback {
  public:
    // The procedure is looked for when it is called.
    explicit kxScriptCallback(const kxString& procedure);
    // `object` is a pointer; its type name is the class.
    kxScriptCallback(const kxVariant& object, const kxString& method);

    // The name of the command that is called.
    const kxString& GetCommand() const noexcept { return _command; }

    // Calls it in the interpreter that "tcl" leads to; what it answers is dropped. False if there
    // is none or the script fails; the interpreter's LastError tells why. Never throws what a
    // script does wrong.
    bool Call(const kxStlVector<kxVariant>& arguments) const;

  private:
    kxString _command;
    // Empty for a procedure.
    kxVariant _object;
};
