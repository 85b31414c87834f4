#include <kxbrowser/IManager.h>

namespace {

class Manager final : public ui::browser::IManager {
  public:
    Manager(Tcl_Interp* interp, const kxString& home) : _interp(interp), _home(home) {}

    Tcl_Interp* GetInterp() const noexcept override { return _interp; }
    const kxString& GetHome() const noexcept override { return _home; }

  private:
    Tcl_Interp* const _interp;
    const kxString _home;
};

}  // namespace

namespace ui::browser {

IManager::~IManager() = default;

}  // namespace ui::browser

ui::browser::IManager* CreateUIBrowserManager(Tcl_Interp* interp, const kxString& home) {
    return new Manager(interp, home);
}
