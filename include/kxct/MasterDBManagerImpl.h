// The way from names to sessions: profile, library, workspace and user in, an open UDMDBCtrl out.
// kxctinterfaces/MasterDBManager.h tells the model and the contracts of the virtual operations.
//
// Layer: framework, above the session and the settings. A manager owns its settings document and
// the cache of the sessions that were opened through it; it is registered with KXCTFramework under
// the path of the user's settings file for as long as it lives. Threads: the host's main thread.
//
//     MasterDBManagerImpl manager(defaultSettings, userSettings);
//     UDMDBCtrl* session = manager.Open("Demo", "main", "anna", "", CONN_TYPE_LIBRARY);
//     ...
//     manager.Close(session);
//
// A profile is a top-level key of the settings whose value is the data source. "UDMXML" is a direct
// connection to a file, "Teamcenter" and "Windchill" are external repositories, "PostGres" is a
// library in a database server; every other value, also none, is a library kept in files. What a
// connection needs is collected in one parameter map for the session.
#pragma once

#include <kxct/kxct_export.h>
#include <kxctinterfaces/MasterDBManager.h>

#include <memory>

namespace kxct {

class DBCtrlCache;
class Settings;
class UDMDBCtrl;

class KXCT_EXPORT MasterDBManagerImpl : public MasterDBManager {
  public:
    using Parameters = kxStlMap<kxString, kxVariant>;

    // Reads the settings; where the user has no file yet, it is seeded from the default one.
    MasterDBManagerImpl(const kxString& defaultSettingsPath, const kxString& userSettingsPath);

    MasterDBManagerImpl(const MasterDBManagerImpl&) = delete;
    MasterDBManagerImpl& operator=(const MasterDBManagerImpl&) = delete;

    kxString GetSettingsFile() override;
    kxString GetSettingValue(const kxString& key, bool isPath) override;
    bool SetCustomEntityDefinitionFolder(const kxString& prefix, const kxString& folder) override;
    kxStlVector<kxString> GetSettingKeys(const kxString& key) override;
    kxString GetMasterDBPath() override;
    kxString GetUDMSettingsPath(const kxString& name) override;
    bool GetLibrariesInfo(const kxString& username,
                          const kxStlVector<kxString>& names,
                          kxStlVector<kxString>& values,
                          CONN_TYPE connType) override;
    kxString GetLibraryIDByName(const kxString& username,
                                const kxString& libraryName,
                                CONN_TYPE connType) override;
    bool GetLibraryInfoByID(const kxString& username,
                            const kxString& id,
                            const kxStlVector<kxString>& names,
                            kxStlVector<kxString>& values,
                            CONN_TYPE connType) override;
    bool GetLibraryInfoByName(const kxString& username,
                              const kxString& libraryName,
                              const kxStlVector<kxString>& names,
                              kxStlVector<kxString>& values,
                              CONN_TYPE connType) override;
    bool GetLibraryClientSettings(const kxString& username,
                                  const kxString& id,
                                  kxStlMap<kxString, kxVariant>& settings) override;
    kxString GetProfileName(const kxString& id,
                            const kxString& username,
                            CONN_TYPE connType) override;
    bool DeleteLibrary(const kxString& repositoryName,
                       const kxString& workspaceName,
                       bool flag,
                       const kxString& username) override;
    bool SetDefaultLibrary(const kxString& repositoryName,
                           const kxString& workspaceName,
                           const kxString& username) override;
    bool GetWorkspaceInfo(const kxString& username,
                          const kxString& workspaceName,
                          const kxStlVector<kxString>& names,
                          kxStlVector<kxString>& values) override;
    bool GetWorkspacesInfo(const kxString& username,
                           const kxStlVector<kxString>& names,
                           kxStlVector<kxString>& values) override;
    bool CheckConnection(kxString& message,
                         const kxString& profileName,
                         const kxString& a,
                         const kxString& b,
                         const kxString& host,
                         const kxString& c,
                         const kxString& username,
                         const kxString& password) override;

    // Ends the sessions that are still open and takes the manager out of the registry.
    ~MasterDBManagerImpl() override;

    // The session for these names. An open one is shared, whatever the other arguments say;
    // otherwise library and workspace are made where they are missing, and a library that lies in
    // `repositoryBaseDir` already (a file *.ldb) is attached to the master database first. The last
    // four arguments concern external repositories only. Null where the directory of the library
    // can't be made; failures of settings, runtime and file system pass as exceptions.
    // The session belongs to the manager; each call is given back by one Close.
    UDMDBCtrl* Create(const kxString& profileName,
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
                      const kxString& transferMode);

    // The session on a library and workspace that the master database knows. Throws
    // std::runtime_error "Error: library not found!" or "Error: workspace not found!"; with
    // CONN_TYPE_PDM an unknown repository is tried with default connection data instead.
    UDMDBCtrl* Open(const kxString& repositoryName,
                    const kxString& workspaceName,
                    const kxString& username,
                    const kxString& password,
                    CONN_TYPE connType);

    // Gives a session back; the last one to do so ends it. Null does nothing; never throws.
    void Close(UDMDBCtrl* session);

    // Adds the driver names for PostgreSQL to `settings`; existing keys stay. False, with nothing
    // added, unless all three are set.
    bool GetPostgresDBDriverSettings(kxStlMap<kxString, kxVariant>& settings);

    // Adds the credentials of a profile to `settings`; existing keys stay. False unless the profile
    // is a "PostGres" one with all five keys set; where only host or port is missing, the other
    // three have been added.
    bool GetPostgresDBCredentialSettings(const kxString& profileName,
                                         kxStlMap<kxString, kxVariant>& settings);

  protected:
    std::unique_ptr<Settings> _settings;
    std::unique_ptr<DBCtrlCache> _cache;

  private:
    bool _SetPostgresDBCredentialSettings(const kxString& profileName,
                                          const kxStlMap<kxString, kxString>& settings);
    UDMDBCtrl* _ConnectToFile(const kxString& profileName,
                              const kxString& repositoryName,
                              const kxString& repositoryBaseDir);
    UDMDBCtrl* _ConnectToPDMRepo(const kxString& profileName,
                                 const kxString& repositoryName,
                                 const kxString& username,
                                 const kxString& password,
                                 const kxString& host,
                                 const kxString& port,
                                 const kxString& dbusername,
                                 const kxString& dbpassword,
                                 const kxString& fileServerCache,
                                 const kxString& transferMode);
    UDMDBCtrl* _OpenPDMConnection(const kxString& repositoryName, const kxString& username);

    bool _FillLibraryParameters(Parameters& params,
                                const Settings& settings,
                                const kxString& repositoryName,
                                const kxString& workspaceName,
                                const kxString& username);
    static bool _FillBaseParameters(Parameters& params,
                                    const kxString& username,
                                    const kxString& udmConfigFile,
                                    const kxString& masterDBFile);
    Parameters _QueryParameters(const kxString& username);
    Parameters _PostgresParameters(const kxString& profileName,
                                   const kxString& host,
                                   const kxString& port,
                                   kxStlMap<kxString, kxString>& changedCredentials);
    UDMDBCtrl* _Keep(const kxString& repositoryName,
                     const kxString& workspaceName,
                     const kxString& username,
                     std::unique_ptr<UDMDBCtrl> session);

    // Sessions whose key the cache has already: direct connections open anew each time.
    kxStlVector<std::unique_ptr<UDMDBCtrl>> _unshared;
};

}  // namespace kxct
