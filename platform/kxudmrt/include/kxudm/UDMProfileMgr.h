// Where sessions come from: the registry of providers by data source, and the operations on the
// master database that need no session.
//
// A parameter map that holds "DataSource" goes to the provider registered under that name; one
// without it concerns the master database and goes to "local". An unknown data source throws
// UDMNotFoundException that lists the known ones. "local" is registered from the start.
//
// All operations belong to one thread at a time.
//
//     kxStlMap<kxString, kxVariant> params;
//     params["DataSource"] = "local";
//     ...
//     boost::shared_ptr<IUDMProfile> profile = UDMProfileMgr::GetProfile(params);
//     ...
//     UDMProfileMgr::DiscardProfile(profile);
#pragma once

#include <kxudmrt/kxudmrt_export.h>
#include <kxutl/kxStlMap.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>
#include <kxutl/kxVariant.h>

#include <boost/smart_ptr/shared_ptr.hpp>

namespace kxudm {

class IUDMProfile;

namespace spi {
class IUDMProvider;
}

class KXUDMRT_EXPORT UDMProfileMgr {
  public:
    using Parameters = kxStlMap<kxString, kxVariant>;

    UDMProfileMgr() = delete;

    // Puts `provider` in charge of the data source `name` and returns the one that was, or null.
    // A null `provider` takes the name out of the registry. Open sessions stay with the provider
    // that opened them.
    static boost::shared_ptr<spi::IUDMProvider> RegisterProvider(
        const kxString& name, boost::shared_ptr<spi::IUDMProvider> provider);
    // The registered data sources, in byte order.
    static kxStlVector<kxString> GetDataSources();

    // Opens a session; what is missing (library, workspace) is created.
    static boost::shared_ptr<IUDMProfile> GetProfile(const Parameters& params);
    // Ends the session, tells code 34 to its slots, and resets `profile`. Null does nothing.
    static void DiscardProfile(boost::shared_ptr<IUDMProfile>& profile);
    // Tries a connection. `message` becomes one sentence on what was reached or what failed.
    static bool CheckConnection(const kxString& dataSource,
                                const kxString& a,
                                const kxString& b,
                                const kxString& host,
                                const kxString& c,
                                const kxString& username,
                                const kxString& password,
                                kxString& message);

    // Appends the ids of all libraries of a connection type (1: libraries of the master database,
    // 2: external repositories), in order of registration.
    static void GetRepositoryIds(kxStlVector<kxString>& ids,
                                 const Parameters& params,
                                 unsigned int connType);
    // Adds the wanted fields of one library to `info`; a field that the library doesn't have is
    // left out. An unknown id throws UDMNotFoundException.
    static void GetRepositoryInfo(kxStlMap<kxString, kxString>& info,
                                  const kxString& id,
                                  const kxStlVector<kxString>& keys,
                                  const Parameters& params,
                                  unsigned int connType);
    // Adds what a client needs to reach a library; nothing for a local one.
    static void GetRepositoryClientSettings(kxStlMap<kxString, kxVariant>& out,
                                            const kxString& id,
                                            const Parameters& params);
    // Appends the ids of the workspaces of the user `params` names.
    static void GetWorkspaces(kxStlVector<kxString>& ids, const Parameters& params);
    static void GetWorkspaceInfo(kxStlMap<kxString, kxString>& info,
                                 const kxString& id,
                                 const kxStlVector<kxString>& keys,
                                 const Parameters& params);
    // Registers the library file that `params` names ("RepositoryBaseDir", "RepositoryName")
    // under `name`.
    static void AddExistingRepository(const Parameters& params, const kxString& name);
    static void SetDefaultRepository(const Parameters& params);
    // Removes the library that `params` names ("RepositoryName") from the master database; with
    // `deleteFiles` its files too. `force`: also while a session of this process has it open.
    static void DeleteRepository(const Parameters& params, bool deleteFiles, bool force);

    // Hands the changes that other processes made since to the slots of this process's sessions.
    // Call it from the host's idle loop; every operation of a session does it too.
    static void DispatchUpdates();
};

}  // namespace kxudm
