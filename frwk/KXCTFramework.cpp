#include <kxbrowser/IManager.h>
#include <kxct/EntryPoints.h>
#include <kxct/KXCTFramework.h>
#include <kxinterp/kxInterp.h>
#include <kxinterp/kxInterpTcl.h>
#include <kxudm/GetEnvironmentVar.h>
#include <kxutl/kxRuntime.h>
#include <kxutl/kxStlMap.h>

#include <algorithm>
#include <boost/filesystem/path.hpp>

namespace kxct {

kxInterpTcl* KXCTFramework::_interp = nullptr;
ui::browser::IManager* KXCTFramework::_bm = nullptr;

namespace {

kxStlMap<kxString, MasterDBManager*>& Registry() {
    static auto* registry = new kxStlMap<kxString, MasterDBManager*>;  // outlives every manager
    return *registry;
}

// Each separator takes the character before it along: installations set the variable in a form
// that counts on it, so one character per separator would be wrong here. The length is tested once,
// before the loop. A lone separator stays, for there is nothing before it to take.
void StripSeparators(kxString& value) {
    if (value.size() <= 2) {
        return;
    }
    const char separator = kxRuntime::GetInstance().GetPathSeparator();
    while (value.size() >= 2 && value.back() == separator) {
        value.resize(value.size() - 2);
    }
}

// Installations on every platform may be named with either slash.
boost::filesystem::path InstallationPath(kxString value) {
    std::replace(value.begin(), value.end(), '\\', '/');
    return boost::filesystem::path(value.begin(), value.end());
}

}  // namespace

const kxString KXCTFramework::GetNorvikBinDir() {
    kxString value;
    if (!GetEnvironmentVar(ENVIRONMENT::NORVIK_KXE_KX_BIN_DIR, value, true)) {
        return {};
    }
    return value;
}

const kxString KXCTFramework::GetNorvikHome() {
    const kxString binDir = GetNorvikBinDir();
    if (binDir.empty()) {
        return {};
    }
    const auto home = InstallationPath(binDir).parent_path().parent_path().parent_path();
    return home.generic_string();
}

const kxString KXCTFramework::GetPlatform() {
    kxString platform;
    if (!GetEnvironmentVar(ENVIRONMENT::NORVIK_KXE_KX_BIN_DIR, platform, true)) {
        return platform;
    }
    platform = InstallationPath(platform).filename().generic_string();
    if (platform.ends_with('d')) {
        platform.pop_back();
    }
    return platform;
}

kxStlVector<kxString> KXCTFramework::GetVersions() {
    return {"2017", "2020"};
}

kxString KXCTFramework::GetCurrentVersion() {
    return GetVersions().back();
}

bool KXCTFramework::GetEnvironmentVar(const kxString& name, kxString& value, bool strip) {
    const bool exists = kxudm::GetEnvironmentVar(value, name);
    if (exists && strip) {
        StripSeparators(value);
    }
    return exists;
}

MasterDBManager* KXCTFramework::GetMasterDBManager(const kxString& name) {
    const auto found = Registry().find(name);
    return found == Registry().end() ? nullptr : found->second;
}

void KXCTFramework::SetMasterDBManager(const kxString& name, MasterDBManager* manager) {
    Registry()[name] = manager;
}

kxInterpTcl* KXCTFramework::GetTclInterp() {
    if (!_interp) {
        _interp = dynamic_cast<kxInterpTcl*>(kxInterp::Get("tcl"));
    }
    return _interp;
}

ui::browser::IManager* KXCTFramework::GetUiBrowserManager() {
    return _bm;
}

void KXCTFramework::SetUIBrowserManager(ui::browser::IManager* manager) {
    if (_bm) {
        return;
    }
    if (manager) {
        _bm = manager;
        return;
    }
    const kxString home = GetNorvikHome();
    kxInterpTcl* interp = GetTclInterp();
    _bm = CreateUIBrowserManager(interp ? interp->interp : nullptr, home);
}

bool KXCTFramework::InvokeTclMethod(const kxString& method,
                                    kxStlVector<kxVariant>& arguments,
                                    kxVariant& result) {
    return GetTclInterp()->invoke(method, arguments, result);
}

}  // namespace kxct

int Kxct_Init(Tcl_Interp* interp) {
    kxInterp::RegisterCreator("tcl", new kxTclInterpCreator);  // the registry keeps it
    kxInterpTcl::Get(interp);
    return 0;
}

// One function under two names, so that both are found and neither can drift from the other.
extern "C" KXCT_EXPORT int Kxct_SafeInit(Tcl_Interp* interp) __attribute__((alias("Kxct_Init")));

void Kxct_SetUIBrowserManager(ui::browser::IManager* manager) {
    kxct::KXCTFramework::SetUIBrowserManager(manager);
}
