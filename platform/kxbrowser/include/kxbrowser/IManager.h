#pragma once

// The manager of a host's browser views: which interpreter they run in and where the installation
// lies. Layer: above kxutl; of Tcl only the name of its interpreter type appears here.
//
// A process has one manager, made by CreateUIBrowserManager or by the host itself. All calls come
// on the thread of the interpreter.
//
//     ui::browser::IManager* manager = CreateUIBrowserManager(interp, "/opt/kx");

#include <kxbrowser/kxbrowser_export.h>
#include <kxutl/kxString.h>

struct Tcl_Interp;

namespace ui::browser {

class KXBROWSER_EXPORT IManager {
  public:
    virtual ~IManager();

    // The interpreter that views are shown by; null when working without a user interface.
    virtual Tcl_Interp* GetInterp() const noexcept = 0;
    // The installation's home directory, as it was given.
    virtual const kxString& GetHome() const noexcept = 0;

  protected:
    IManager() = default;
    IManager(const IManager&) = delete;
    IManager& operator=(const IManager&) = delete;
};

}  // namespace ui::browser

// A new manager, owned by the caller. `interp` may be null and must outlive the manager's use of
// it.
KXBROWSER_EXPORT ui::browser::IManager* CreateUIBrowserManager(Tcl_Interp* interp,
                                                               const kxString& home);
