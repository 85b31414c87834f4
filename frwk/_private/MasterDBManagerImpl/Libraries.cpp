// What libraries and workspaces there are, and their maintenance.

#include <kxct/DBCtrlCache.h>
#include <kxct/KXCTFramework.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/Settings.h>
#include <kxct/UDMDBCtrl.h>

#include <stdexcept>

#include "frwk/_private/MasterDBManagerImpl/Parameters.h"

namespace kxct {

using namespace masterdb;

namespace {

using Record = kxStlMap<kxString, kxString>;

void Append(kxStlVector<kxString>& values, const kxString& name, const kxString& value) {
    values.push_back(name);
    values.push_back(value);
}

void AppendAll(kxStlVector<kxString>& values, const Record& record) {
    for (const auto& [name, value] : record) {
        Append(values, name, value);
    }
}

kxString TextOf(const kxStlMap<kxString, kxVariant>& map, const kxString& key) {
    const auto found = map.find(key);
    return found == map.end() ? kxString() : found->second.GetString();
}

}  // namespace

bool MasterDBManagerImpl::GetLibrariesInfo(const kxString& username,
                                           const kxStlVector<kxString>& names,
                                           kxStlVector<kxString>& values,
                                           CONN_TYPE connType) {
    return UDMDBCtrl::GetLibrariesInfo(_QueryParameters(username), names, values, connType);
}

kxString MasterDBManagerImpl::GetLibraryIDByName(const kxString& username,
                                                 const kxString& libraryName,
                                                 CONN_TYPE connType) {
    return UDMDBCtrl::GetLibraryIDByName(_QueryParameters(username), libraryName, connType);
}

// A field that the record lacks comes with an empty value, so that the list stays in step with
// `names`; GetWorkspaceInfo refuses in that case. Callers rely on both.
bool MasterDBManagerImpl::GetLibraryInfoByID(const kxString& username,
                                             const kxString& id,
                                             const kxStlVector<kxString>& names,
                                             kxStlVector<kxString>& values,
                                             CONN_TYPE connType) {
    Record record;
    if (!UDMDBCtrl::GetLibraryInfoByID(_QueryParameters(username), id, record, connType)) {
        return false;
    }
    if (names.empty()) {
        AppendAll(values, record);
        return true;
    }
    for (const kxString& name : names) {
        const auto found = record.find(name);
        Append(values, name, found == record.end() ? kxString() : found->second);
    }
    return true;
}

bool MasterDBManagerImpl::GetLibraryInfoByName(const kxString& username,
                                               const kxString& libraryName,
                                               const kxStlVector<kxString>& names,
                                               kxStlVector<kxString>& values,
                                               CONN_TYPE connType) {
    const kxString id = GetLibraryIDByName(username, libraryName, connType);
    return GetLibraryInfoByID(username, id, names, values, connType);
}

bool MasterDBManagerImpl::GetLibraryClientSettings(const kxString& username,
                                                   const kxString& id,
                                                   kxStlMap<kxString, kxVariant>& settings) {
    return UDMDBCtrl::GetLibraryClientSettings(_QueryParameters(username), id, settings);
}

kxString MasterDBManagerImpl::GetProfileName(const kxString& id,
                                             const kxString& username,
                                             CONN_TYPE connType) {
    kxStlVector<kxString> values;
    if (!GetLibraryInfoByID(username, id, {"profile_name"}, values, connType) ||
        values.size() != 2) {
        throw std::runtime_error("Error: library not found!");
    }
    return values[1];
}

bool MasterDBManagerImpl::DeleteLibrary(const kxString& repositoryName,
                                        const kxString& workspaceName,
                                        bool flag,
                                        const kxString& username) {
    if (_cache->Exists(repositoryName, workspaceName, username)) {
        return false;
    }
    Parameters params;
    if (!_FillLibraryParameters(params, *_settings, repositoryName, workspaceName, username)) {
        return false;
    }
    try {
        UDMDBCtrl::DeleteLibrary(params, flag);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool MasterDBManagerImpl::SetDefaultLibrary(const kxString& repositoryName,
                                            const kxString& workspaceName,
                                            const kxString& username) {
    Parameters params;
    if (!_FillLibraryParameters(params, *_settings, repositoryName, workspaceName, username)) {
        return false;
    }
    try {
        UDMDBCtrl::SetDefaultLibrary(params);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

// The first name that the record lacks throws the list away, what was in it before too, and leaves
// the names of all fields: the caller learns what could have been asked. Kept apart from
// GetLibraryInfoByID on purpose.
bool MasterDBManagerImpl::GetWorkspaceInfo(const kxString& username,
                                           const kxString& workspaceName,
                                           const kxStlVector<kxString>& names,
                                           kxStlVector<kxString>& values) {
    Record record;
    if (!UDMDBCtrl::GetWorkspaceInfo(_QueryParameters(username), workspaceName, record)) {
        return false;
    }
    if (names.empty()) {
        AppendAll(values, record);
        return true;
    }
    for (const kxString& name : names) {
        const auto found = record.find(name.c_str());  // a name ends at its first NUL
        if (found == record.end()) {
            values.clear();
            for (const auto& field : record) {
                values.push_back(field.first);
            }
            return false;
        }
        Append(values, found->first, found->second);
    }
    return true;
}

bool MasterDBManagerImpl::GetWorkspacesInfo(const kxString& username,
                                            const kxStlVector<kxString>& names,
                                            kxStlVector<kxString>& values) {
    return UDMDBCtrl::GetWorkspacesInfo(_QueryParameters(username), names, values);
}

bool MasterDBManagerImpl::CheckConnection(kxString& message,
                                          const kxString& profileName,
                                          const kxString& a,
                                          const kxString& b,
                                          const kxString& host,
                                          const kxString& c,
                                          const kxString& username,
                                          const kxString& password) {
    const kxString server = WithoutLeadingSlashes(host);
    const kxString dataSource = _settings->GetValue(profileName);
    kxString user = username;
    kxString secret = password;
    Parameters credentials;
    if (dataSource == POSTGRES && GetPostgresDBCredentialSettings(profileName, credentials)) {
        user = TextOf(credentials, "dbusername");
        secret = TextOf(credentials, "dbpasswd");
    }
    return UDMDBCtrl::CheckConnection(dataSource, a, b, server, c, user, secret, message);
}

MasterDBManagerImpl::Parameters MasterDBManagerImpl::_QueryParameters(const kxString& username) {
    const kxString masterDBFile = GetMasterDBPath();
    const kxString udmConfigFile = GetUDMSettingsPath("");
    Parameters params;
    _FillBaseParameters(params, username, udmConfigFile, masterDBFile);
    return params;
}

bool MasterDBManagerImpl::_FillBaseParameters(Parameters& params,
                                              const kxString& username,
                                              const kxString& udmConfigFile,
                                              const kxString& masterDBFile) {
    params["username"] = username;
    params["UDMConfigFile"] = udmConfigFile;
    params["MasterDBFile"] = masterDBFile;
    return true;
}

bool MasterDBManagerImpl::_FillLibraryParameters(Parameters& params,
                                                 const Settings& settings,
                                                 const kxString& repositoryName,
                                                 const kxString& workspaceName,
                                                 const kxString& username) {
    params["BinDir"] = KXCTFramework::GetNorvikBinDir();
    params["UDMConfigFile"] = GetUDMSettingsPath("");
    params["MasterDBFile"] = GetMasterDBPath();
    params["username"] = username;
    params["password"] = kxString();
    params["RepositoryName"] = repositoryName;

    kxString dataSource = LOCAL;
    const kxString id = GetLibraryIDByName(username, repositoryName, CONN_TYPE_LIBRARY);
    if (!id.empty()) {
        const kxString profile = GetProfileName(id, username, CONN_TYPE_LIBRARY);
        params["ProfileName"] = profile;
        kxStlVector<kxString> library;
        GetLibraryInfoByID(username, id, {"ldbFile"}, library, CONN_TYPE_LIBRARY);
        if (library.size() == 2) {
            params["RepositoryBaseDir"] = DirectoryOf(library[1]);
        }
        dataSource = settings.GetValue(profile);
        if (dataSource.empty()) {
            dataSource = LOCAL;
        }
        params["DataSource"] = dataSource;
        if (dataSource == POSTGRES) {
            Parameters clientSettings;
            GetLibraryClientSettings(username, id, clientSettings);
            AddMissing(params, clientSettings);
        }
    }
    if (dataSource == LOCAL || dataSource == POSTGRES) {
        params["WorkspaceName"] = workspaceName;
        kxStlVector<kxString> workspace;
        GetWorkspaceInfo(username, workspaceName, {"workingDir"}, workspace);
        if (workspace.size() == 2) {
            params["WorkspaceBaseDir"] = workspace[1];
        }
    }
    return true;
}

}  // namespace kxct
