// The settings document as callers see it, and the keys at which the system keeps its own places.

#include <kxct/DBCtrlCache.h>
#include <kxct/KXCTFramework.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/Settings.h>
#include <kxct/UDMDBCtrl.h>

#include "frwk/_private/Guards.h"

namespace kxct {

kxString MasterDBManagerImpl::GetSettingsFile() {
    return _settings ? _settings->GetSettingsFile(false) : kxString();
}

kxString MasterDBManagerImpl::GetSettingValue(const kxString& key, bool isPath) {
    KXCT_GUARD(_settings);
    return isPath ? _settings->GetPath(key) : _settings->GetValue(key);
}

// True whatever came of it: a prefix without an existing key changes nothing in the document, and
// callers treat that as done.
bool MasterDBManagerImpl::SetCustomEntityDefinitionFolder(const kxString& prefix,
                                                          const kxString& folder) {
    KXCT_GUARD(_settings);
    _settings->Set(prefix + "/CustomEntityDefinitionsFolder", folder);
    _settings->Write();
    return true;
}

kxStlVector<kxString> MasterDBManagerImpl::GetSettingKeys(const kxString& key) {
    KXCT_GUARD(_settings);
    return _settings->GetKeys(key);
}

kxString MasterDBManagerImpl::GetMasterDBPath() {
    KXCT_GUARD(_settings);
    kxString unused;
    const bool isTest =
        KXCTFramework::GetEnvironmentVar(ENVIRONMENT::ZQA_TEST_UDMRT_TMP_DIR, unused, true);
    const kxString place = isTest ? kxString("auto") : KXCTFramework::GetPlatform();
    return _settings->GetPath("common/System/" + KXCTFramework::GetCurrentVersion() + "/MasterDB/" +
                              place);
}

kxString MasterDBManagerImpl::GetUDMSettingsPath(const kxString& name) {
    KXCT_GUARD(_settings);
    const kxString branch = name.empty() ? kxString("common") : name;
    return _settings->GetPath(branch + "/System/" + KXCTFramework::GetCurrentVersion() +
                              "/UDMSettings");
}

}  // namespace kxct
