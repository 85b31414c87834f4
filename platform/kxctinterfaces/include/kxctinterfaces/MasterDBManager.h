// What libraries and workspaces an installation has, and where its settings lie.
//
// The model. An installation has two settings files, one with defaults and one of the user. They
// name profiles (ways to connect: "local" files, a PostgreSQL server, an external repository) and
// the master database, a file that lists libraries and workspaces. A library is a repository with
// an id, a name and a profile; a workspace is a user's working directory for one. The manager reads
// and maintains that list. No session is needed for it.
//
// Records come as name-value lists: one flat vector of name, value, name, value. A caller names the
// fields that it wants and gets them in that order; naming none asks for all. Lists are appended
// to.
//
// Ownership: the factory makes and deletes managers; a manager owns the sessions that were opened
// through it, so controllers go first.
// Errors: queries answer false or an empty value; exceptions of the settings layer pass.
// Threads: the host's main thread; nothing is locked.
//
// Layer: interfaces.
//
//     kxStlVector<kxString> fields, values;
//     fields.push_back("ldbFile");
//     if (manager->GetLibraryInfoByName("anna", "Demo", fields, values, CONN_TYPE_LIBRARY)) {
//         std::cout << values[1] << '\n';   // values[0] is the name of the field
//     }
#pragma once

#include <kxctinterfaces/kxctinterfaces_export.h>
#include <kxutl/kxStlMap.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>
#include <kxutl/kxVariant.h>

namespace kxct {

// The class of repositories that a lookup concerns. Other values pass to the runtime as they are.
enum CONN_TYPE : int {
    CONN_TYPE_LIBRARY = 1,  // libraries of the master database
    CONN_TYPE_PDM = 2,      // external repositories
};

class KXCTINTERFACES_EXPORT MasterDBManager {
  public:
    MasterDBManager() = default;
    MasterDBManager(const MasterDBManager& other) = default;
    MasterDBManager& operator=(const MasterDBManager& other) = default;

    // The order of the virtual operations is part of the binary interface.

    // Path of the user's settings file; empty without settings.
    virtual kxString GetSettingsFile() = 0;

    // The value at a slash-separated key. With `isPath`, each [NAME] in it is replaced from the
    // environment, and an unset one gives an empty text. Empty for a missing key.
    virtual kxString GetSettingValue(const kxString& key, bool isPath) = 0;

    // Sets "<prefix>/CustomEntityDefinitionsFolder" and writes the user's file. True also where the
    // prefix starts with no existing key, which changes nothing in the document. Sessions that are
    // opened from then on take their custom content definitions from the folder of the profile, the
    // prefix being its name, else from that of the prefix "common": a new library at its creation,
    // a known one where a definition is reloaded.
    virtual bool SetCustomEntityDefinitionFolder(const kxString& prefix,
                                                 const kxString& folder) = 0;

    // Names of the keys directly below a key.
    virtual kxStlVector<kxString> GetSettingKeys(const kxString& key) = 0;

    virtual kxString GetMasterDBPath() = 0;

    // Path of the runtime's settings file for a profile; an empty name stands for "common".
    virtual kxString GetUDMSettingsPath(const kxString& name) = 0;

    // All libraries: `values` is replaced by, for each, its id and then the name-value pairs of
    // those `names` that its record has.
    virtual bool GetLibrariesInfo(const kxString& username,
                                  const kxStlVector<kxString>& names,
                                  kxStlVector<kxString>& values,
                                  CONN_TYPE connType) = 0;

    // Empty if there is no library of that name.
    virtual kxString GetLibraryIDByName(const kxString& username,
                                        const kxString& libraryName,
                                        CONN_TYPE connType) = 0;

    // Fields of one library. A field that its record lacks comes with an empty value.
    virtual bool GetLibraryInfoByID(const kxString& username,
                                    const kxString& id,
                                    const kxStlVector<kxString>& names,
                                    kxStlVector<kxString>& values,
                                    CONN_TYPE connType) = 0;
    virtual bool GetLibraryInfoByName(const kxString& username,
                                      const kxString& libraryName,
                                      const kxStlVector<kxString>& names,
                                      kxStlVector<kxString>& values,
                                      CONN_TYPE connType) = 0;

    // Settings that a client needs to reach a library.
    virtual bool GetLibraryClientSettings(const kxString& username,
                                          const kxString& id,
                                          kxStlMap<kxString, kxVariant>& settings) = 0;

    // The profile of a library. Here the id comes first and the user second, unlike the neighbours.
    // Throws std::runtime_error, "Error: library not found!", for an unknown one.
    virtual kxString GetProfileName(const kxString& id,
                                    const kxString& username,
                                    CONN_TYPE connType) = 0;

    // Removes a library. False while a session on it by this user is open in this manager.
    virtual bool DeleteLibrary(const kxString& repositoryName,
                               const kxString& workspaceName,
                               bool flag,
                               const kxString& username) = 0;

    virtual bool SetDefaultLibrary(const kxString& repositoryName,
                                   const kxString& workspaceName,
                                   const kxString& username) = 0;

    // Fields of one workspace. Unlike a library, a field that the record lacks makes the result
    // false, and `values` is then replaced by the names of all fields.
    virtual bool GetWorkspaceInfo(const kxString& username,
                                  const kxString& workspaceName,
                                  const kxStlVector<kxString>& names,
                                  kxStlVector<kxString>& values) = 0;

    // All workspaces of the user, in the form of GetLibrariesInfo.
    virtual bool GetWorkspacesInfo(const kxString& username,
                                   const kxStlVector<kxString>& names,
                                   kxStlVector<kxString>& values) = 0;

    // Tries a connection by a profile. For a local one `a` is the base directory and `b` the
    // library; for PostgreSQL the connection string and the driver, with `c` as port. `message` is
    // a report for the user, in both cases.
    virtual bool CheckConnection(kxString& message,
                                 const kxString& profileName,
                                 const kxString& a,
                                 const kxString& b,
                                 const kxString& host,
                                 const kxString& c,
                                 const kxString& username,
                                 const kxString& password) = 0;

    virtual ~MasterDBManager();
};

}  // namespace kxct
