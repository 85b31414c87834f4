// External repositories.

#include <kxct/DBCtrlCache.h>
#include <kxct/KXCTFramework.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/Settings.h>
#include <kxct/UDMDBCtrl.h>

#include "frwk/_private/MasterDBManagerImpl/Parameters.h"

namespace kxct {

using namespace masterdb;

UDMDBCtrl* MasterDBManagerImpl::_ConnectToPDMRepo(const kxString& profileName,
                                                  const kxString& repositoryName,
                                                  const kxString& username,
                                                  const kxString& password,
                                                  const kxString& host,
                                                  const kxString& /*port*/,
                                                  const kxString& dbusername,
                                                  const kxString& dbpassword,
                                                  const kxString& fileServerCache,
                                                  const kxString& transferMode) {
    Parameters params;
    params["DataSource"] = _settings->GetValue(profileName);
    params["UDMConfigFile"] = GetUDMSettingsPath(profileName);
    params["BinDir"] = KXCTFramework::GetNorvikBinDir();
    params["MasterDBFile"] = GetMasterDBPath();
    params["ConnectionIdentifier"] = repositoryName;
    params["username"] = username;
    params["password"] = password;
    params["Host"] = host;
    params["dbusername"] = dbusername;
    params["dbpassword"] = dbpassword;
    params["FileServerCache"] = fileServerCache;
    params["TransferMode"] = transferMode;
    params["type"] = "2";
    params["ProfileName"] = profileName;
    return _Keep(repositoryName, NO_WORKSPACE, username, std::make_unique<UDMDBCtrl>(params));
}

// A repository that the master database does not know is tried all the same, with the default
// profile and nothing else; the session decides. The password of the caller is not passed on.
UDMDBCtrl* MasterDBManagerImpl::_OpenPDMConnection(const kxString& repositoryName,
                                                   const kxString& username) {
    kxString host, cache, mode, dbusername, dbpassword;
    kxString profile = "TCConnect";
    const kxString id = GetLibraryIDByName(username, repositoryName, CONN_TYPE_PDM);
    if (!id.empty()) {
        const kxStlVector<kxString> names{
            "host", "fscache", "trmode", "dbusername", "dbpasswd", "pname"};
        kxStlVector<kxString> values;
        if (GetLibraryInfoByID(username, id, names, values, CONN_TYPE_PDM) &&
            values.size() == 2 * names.size()) {
            host = values[1];
            cache = values[3];
            mode = values[5];
            dbusername = values[7];
            dbpassword = values[9];
            profile = values[11];
        }
    }
    return _ConnectToPDMRepo(profile,
                             repositoryName,
                             username,
                             kxString(),
                             host,
                             kxString(),
                             dbusername,
                             dbpassword,
                             cache,
                             mode);
}

}  // namespace kxct
