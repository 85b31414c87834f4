// Sessions: creating and attaching libraries, opening known ones, closing.

#include <kxct/DBCtrlCache.h>
#include <kxct/KXCTFramework.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/Settings.h>
#include <kxct/UDMDBCtrl.h>
#include <kxlmosa/osaDirectory.h>
#include <kxlmosa/osaFile.h>
#include <kxlmosa/osaFileInfo.h>

#include <algorithm>
#include <stdexcept>

#include "frwk/_private/MasterDBManagerImpl/Parameters.h"

namespace kxct {

using namespace masterdb;

namespace {

constexpr int ALL_PERMISSIONS = 4095;

// The library that lies in a directory: the base name of its first *.ldb file, empty if none. The
// extension counts as it is written, capitals are another one.
kxString ExistingLibrary(const kxString& directory) {
    for (const kxString& name : osaDirectory::GetFileNames(directory)) {
        const osaFileInfo file(name);
        if (file.GetFileExtension() == "ldb") {
            return file.GetBaseName();
        }
    }
    return {};
}

bool MakeDirectoryOf(const kxString& path) {
    const kxString directory = osaFileInfo(path).GetPath();
    return osaFile::Exists(directory) ||
           osaDirectory::Create(directory, ALL_PERMISSIONS, true) == 0;
}

// Puts the argument in the place of the stored credential and notes the change.
void Replace(kxStlMap<kxString, kxVariant>& credentials,
             const kxString& key,
             const kxString& argument,
             kxStlMap<kxString, kxString>& changed) {
    const auto stored = credentials.find(key);
    if (stored != credentials.end() && stored->second.GetString() != argument) {
        stored->second = argument;
        changed[key] = argument;
    }
}

// The folder of definitions beside those of the settings file: that of the profile, else the common
// one. Nothing is set where there is none, and one that can't be found is passed on as it is
// written: the runtime reads it where definitions are taken in, and libraries open without.
void AddCustomDefinitions(const Settings& settings,
                          const kxString& profile,
                          kxStlMap<kxString, kxVariant>& params) {
    for (const kxString& prefix : {profile, kxString("common")}) {
        const kxString key = prefix + "/CustomEntityDefinitionsFolder";
        const kxString written = settings.GetValue(key);
        if (written.empty()) {
            continue;
        }
        kxString found;
        try {
            found = settings.GetPath(key);
        } catch (const std::exception&) {
            found.clear();
        }
        params["CustomEntityDefinitionsFolder"] = found.empty() ? written : found;
        return;
    }
}

}  // namespace

MasterDBManagerImpl::MasterDBManagerImpl(const kxString& defaultSettingsPath,
                                         const kxString& userSettingsPath)
    : _settings(std::make_unique<Settings>(defaultSettingsPath, userSettingsPath)),
      _cache(std::make_unique<DBCtrlCache>()) {
    KXCTFramework::SetMasterDBManager(userSettingsPath, this);
}

MasterDBManagerImpl::~MasterDBManagerImpl() {
    _unshared.clear();
    _cache.reset();
    if (_settings) {
        KXCTFramework::SetMasterDBManager(_settings->GetSettingsFile(false), nullptr);
    }
}

UDMDBCtrl* MasterDBManagerImpl::Create(const kxString& profileName,
                                       const kxString& repositoryName,
                                       const kxString& repositoryBaseDir,
                                       const kxString& workspaceName,
                                       const kxString& workspaceBaseDir,
                                       const kxString& username,
                                       const kxString& password,
                                       const kxString& host,
                                       const kxString& port,
                                       const kxString& dbusername,
                                       const kxString& dbpassword,
                                       const kxString& fileServerCache,
                                       const kxString& transferMode) {
    if (UDMDBCtrl* shared = _cache->Get(repositoryName, workspaceName, username)) {
        return shared;
    }
    const kxString server = WithoutLeadingSlashes(host);
    const kxString dataSource = _settings->GetValue(profileName);
    if (dataSource == "UDMXML") {
        return _ConnectToFile(profileName, repositoryName, repositoryBaseDir);
    }
    if (dataSource == "Teamcenter" || dataSource == "Windchill") {
        return _ConnectToPDMRepo(profileName,
                                 repositoryName,
                                 username,
                                 password,
                                 server,
                                 port,
                                 dbusername,
                                 dbpassword,
                                 fileServerCache,
                                 transferMode);
    }

    const kxString existingLibrary = ExistingLibrary(repositoryBaseDir);
    const bool isPostgres = dataSource == POSTGRES;
    kxStlMap<kxString, kxString> changedCredentials;
    const Parameters collected =
        isPostgres ? _PostgresParameters(profileName, server, port, changedCredentials)
                   : Parameters();

    if (!existingLibrary.empty()) {
        Parameters attach;
        attach["DataSource"] = LOCAL;
        if (!_FillLibraryParameters(attach, *_settings, existingLibrary, workspaceName, username)) {
            return nullptr;
        }
        if (!collected.empty()) {
            attach["DataSource"] = POSTGRES;
            AddMissing(attach, collected);
        }
        attach["RepositoryBaseDir"] = repositoryBaseDir;
        attach["ProfileName"] = profileName;
        attach["WorkspaceBaseDir"] = workspaceBaseDir;
        UDMDBCtrl::AddExistingLibrary(attach, repositoryName);
    }
    if (!MakeDirectoryOf(repositoryBaseDir)) {
        return nullptr;
    }

    Parameters params;
    params["DataSource"] = isPostgres ? POSTGRES : LOCAL;
    params["UDMConfigFile"] = GetUDMSettingsPath("");
    params["MasterDBFile"] = GetMasterDBPath();
    params["BinDir"] = KXCTFramework::GetNorvikBinDir();
    params["username"] = username;
    params["password"] = password;
    params["RepositoryName"] = repositoryName;
    params["ProfileName"] = profileName;
    params["RepositoryBaseDir"] = repositoryBaseDir;
    AddMissing(params, collected);
    params["WorkspaceName"] = workspaceName;
    params["WorkspaceBaseDir"] = workspaceBaseDir;
    AddCustomDefinitions(*_settings, profileName, params);
    auto session = std::make_unique<UDMDBCtrl>(params);
    _SetPostgresDBCredentialSettings(profileName, changedCredentials);
    return _Keep(repositoryName, workspaceName, username, std::move(session));
}

UDMDBCtrl* MasterDBManagerImpl::Open(const kxString& repositoryName,
                                     const kxString& workspaceName,
                                     const kxString& username,
                                     const kxString& password,
                                     CONN_TYPE connType) {
    if (UDMDBCtrl* shared = _cache->Get(repositoryName, workspaceName, username)) {
        return shared;
    }
    if (connType == CONN_TYPE_PDM) {
        return _OpenPDMConnection(repositoryName, username);
    }
    const kxString id = GetLibraryIDByName(username, repositoryName, connType);
    const kxStlVector<kxString> names{"name", "profile_name", "ldbFile", "type"};
    kxStlVector<kxString> library;
    if (id.empty() || !GetLibraryInfoByID(username, id, names, library, connType) ||
        library.size() != 2 * names.size()) {
        throw std::runtime_error("Error: library not found!");
    }
    const kxString& storedName = library[1];
    const kxString& profile = library[3];
    const kxString baseDir = DirectoryOf(library[5]);

    kxStlVector<kxString> workspace;
    if (!GetWorkspaceInfo(username, workspaceName, {"workingDir"}, workspace) ||
        workspace.size() != 2) {
        throw std::runtime_error("Error: workspace not found!");
    }

    Parameters params;
    params["DataSource"] = LOCAL;
    Parameters clientSettings;
    if (_settings->GetValue(profile) == POSTGRES) {
        params["DataSource"] = POSTGRES;
        GetLibraryClientSettings(username, id, clientSettings);
    }
    params["UDMConfigFile"] = GetUDMSettingsPath("");
    params["MasterDBFile"] = GetMasterDBPath();
    params["BinDir"] = KXCTFramework::GetNorvikBinDir();
    params["username"] = username;
    params["password"] = password;
    params["RepositoryName"] = storedName;
    params["ProfileName"] = profile;
    params["RepositoryBaseDir"] = baseDir;
    AddMissing(params, clientSettings);
    params["WorkspaceName"] = workspaceName;
    params["WorkspaceBaseDir"] = workspace[1];
    AddCustomDefinitions(*_settings, profile, params);
    return _Keep(repositoryName, workspaceName, username, std::make_unique<UDMDBCtrl>(params));
}

void MasterDBManagerImpl::Close(UDMDBCtrl* session) {
    if (!session) {
        return;
    }
    const auto own = std::find_if(_unshared.begin(), _unshared.end(), [&](const auto& kept) {
        return kept.get() == session;
    });
    if (own != _unshared.end()) {
        _unshared.erase(own);
        return;
    }
    try {
        _cache->Drop(session);
    } catch (const std::exception&) {
        return;  // a session that can't be ended cleanly is gone for the caller all the same
    }
}

// The cache key of a file connection has pseudo names for workspace and user, so a later Create
// with the caller's real ones misses it and opens the file once more. Callers count on a session of
// their own; do not "correct" the key.
UDMDBCtrl* MasterDBManagerImpl::_ConnectToFile(const kxString& profileName,
                                               const kxString& repositoryName,
                                               const kxString& repositoryBaseDir) {
    Parameters params;
    params["DataSource"] = _settings->GetValue(profileName);
    params["UDMConfigFile"] = GetUDMSettingsPath(profileName);
    params["BinDir"] = KXCTFramework::GetNorvikBinDir();
    params["ConnectionIdentifier"] = repositoryName;
    params["FileDataSource"] = repositoryBaseDir;
    AddCustomDefinitions(*_settings, profileName, params);
    return _Keep(repositoryName, NO_WORKSPACE, NO_USER, std::make_unique<UDMDBCtrl>(params));
}

// Drivers and credentials for a new library. Incomplete ones are left out: the runtime then says
// what it misses. Host and port of the arguments win over the stored ones, also as empty texts.
MasterDBManagerImpl::Parameters MasterDBManagerImpl::_PostgresParameters(
    const kxString& profileName,
    const kxString& host,
    const kxString& port,
    kxStlMap<kxString, kxString>& changedCredentials) {
    Parameters collected;
    if (!GetPostgresDBDriverSettings(collected)) {
        return collected;
    }
    Parameters credentials;
    if (GetPostgresDBCredentialSettings(profileName, credentials)) {
        Replace(credentials, "dbhost", host, changedCredentials);
        Replace(credentials, "dbport", port, changedCredentials);
        AddMissing(collected, credentials);
    }
    return collected;
}

UDMDBCtrl* MasterDBManagerImpl::_Keep(const kxString& repositoryName,
                                      const kxString& workspaceName,
                                      const kxString& username,
                                      std::unique_ptr<UDMDBCtrl> session) {
    UDMDBCtrl* const kept = session.get();
    if (_cache->Add(repositoryName, workspaceName, username, kept, true)) {
        static_cast<void>(session.release());
    } else {
        _unshared.push_back(std::move(session));
    }
    return kept;
}

}  // namespace kxct
