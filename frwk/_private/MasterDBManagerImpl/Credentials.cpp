// PostgreSQL: drivers common to the version, credentials by profile.

#include <kxct/DBCtrlCache.h>
#include <kxct/KXCTFramework.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/Settings.h>
#include <kxct/UDMDBCtrl.h>

#include <array>

#include "frwk/_private/Guards.h"
#include "frwk/_private/MasterDBManagerImpl/Parameters.h"

namespace kxct {

using namespace masterdb;

namespace {

// Reads the values of `keys` below `prefix` into `values`, up to the first empty one; true if there
// was none.
template <std::size_t N>
bool ReadAll(const Settings& settings,
             const kxString& prefix,
             const std::array<const char*, N>& keys,
             kxStlMap<kxString, kxVariant>& values) {
    for (const char* key : keys) {
        const kxString value = settings.GetValue(prefix + key);
        if (value.empty()) {
            return false;
        }
        values[key] = value;
    }
    return true;
}

kxString CredentialPrefix(const kxString& profileName) {
    return profileName + "/PostGresCredentials/";
}

}  // namespace

bool MasterDBManagerImpl::GetPostgresDBDriverSettings(kxStlMap<kxString, kxVariant>& settings) {
    KXCT_GUARD(_settings);
    static constexpr std::array<const char*, 3> keys{
        "PersistenceDatabaseDriver", "StorageDatabaseDriver", "ClientDatabaseDriver"};
    const kxString prefix =
        "common/System/" + KXCTFramework::GetCurrentVersion() + "/PostGresDrivers/";
    Parameters drivers;
    if (!ReadAll(*_settings, prefix, keys, drivers)) {
        return false;
    }
    AddMissing(settings, drivers);
    return true;
}

bool MasterDBManagerImpl::GetPostgresDBCredentialSettings(const kxString& profileName,
                                                          kxStlMap<kxString, kxVariant>& settings) {
    KXCT_GUARD(_settings);
    static constexpr std::array<const char*, 3> account{
        "dbusername", "dbpasswd", "dbconnectstring"};
    static constexpr std::array<const char*, 2> server{"dbhost", "dbport"};
    if (_settings->GetValue(profileName) != POSTGRES) {
        return false;
    }
    Parameters credentials;
    if (!ReadAll(*_settings, CredentialPrefix(profileName), account, credentials)) {
        return false;
    }
    AddMissing(settings, credentials);
    // Without host and port the account alone stays in `settings`; callers rely on that.
    credentials.clear();
    if (!ReadAll(*_settings, CredentialPrefix(profileName), server, credentials)) {
        return false;
    }
    AddMissing(settings, credentials);
    return true;
}

bool MasterDBManagerImpl::_SetPostgresDBCredentialSettings(
    const kxString& profileName, const kxStlMap<kxString, kxString>& settings) {
    KXCT_GUARD(_settings);
    if (_settings->GetValue(profileName) != POSTGRES) {
        return false;
    }
    for (const auto& [key, value] : settings) {
        _settings->Set(CredentialPrefix(profileName) + key, value);
    }
    _settings->Write();
    return true;
}

}  // namespace kxct
