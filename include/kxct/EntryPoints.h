// The plain functions by which a host comes in: C linkage, undecorated names.
//
// Layer: framework. A host that embeds Tcl loads the library (`load libkxct.so`), which calls
// Kxct_Init, and goes on with CreateFactory. Loading alone does nothing. All calls belong to the
// host's main thread, the thread of the interpreter.
//
//     Kxct_Init(interp);
//     kxct::Factory* factory = CreateFactory();
//     kxct::Controller* controller = factory->GetController(...);
#pragma once

#include <kxct/kxct_export.h>

struct Tcl_Interp;

namespace kxct {
class Factory;
}
namespace kxlm {
class iLibraryManagerResponder;
class iMessageLogger;
class iSettings;
}  // namespace kxlm
namespace ui::browser {
class IManager;
}

extern "C" {

// The factory of the process, made at the first call and never deleted. Null only if it could not
// be made.
KXCT_EXPORT kxct::Factory* CreateFactory();

// Makes `interp` the interpreter that the kind "tcl" leads to. Answers 0, Tcl's success code,
// always. May be called again; each call does the same once more.
KXCT_EXPORT int Kxct_Init(Tcl_Interp* interp);

// The same function under the name that Tcl's loader looks for in a safe interpreter.
KXCT_EXPORT int Kxct_SafeInit(Tcl_Interp* interp);

// See kxct::KXCTFramework::SetUIBrowserManager.
KXCT_EXPORT void Kxct_SetUIBrowserManager(ui::browser::IManager* manager);

// A logger for the host's library manager; the caller deletes it. With `mode` 0 it appends lines to
// the file that the setting "KXEDMLogFilePath" names, from the message type "KXEDMLogLevel" on (0
// if that is no number). With any other mode it hands errors to the host's file manager. A file
// that can't be opened gives a logger that writes nothing. `settings` is read during the call only
// and may not be null.
KXCT_EXPORT kxlm::iMessageLogger* KXCT_CreateLogger(int mode, kxlm::iSettings* settings);

// Who answers the questions of the host's library manager; the caller deletes it. It asks the Tcl
// procedure that the setting "ResponderTclProcedure" names, of the package "ResponderTclPackage",
// which is loaded here if Kxct_Init was called before. With `batchMode` not 0 it answers "Yes"
// by itself. `settings` as above.
KXCT_EXPORT kxlm::iLibraryManagerResponder* KXCT_CreateResponder(int batchMode,
                                                                 kxlm::iSettings* settings);
}
