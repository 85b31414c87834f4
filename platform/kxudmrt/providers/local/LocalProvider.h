// The data source "local": libraries as SQLite files, told by the master database.
//
// Layer: providers. Keeps nothing between calls: the master database is opened for each question.
#pragma once

#include <kxudm/spi/IUDMProvider.h>

#include "core/Clock.h"
#include "vault/FileLayer.h"

namespace kxudm::profile {
class Session;
}

namespace kxudm::providers {

struct LocalOptions {
    // How long a session waits for a library that another process writes to.
    int busyTimeoutMilliseconds = 10000;
    // The machine's where null; used, not owned.
    core::Clock* clock = nullptr;
    // Through which vaults and documents are read and written; the machine's where null; used, not
    // owned.
    vault::FileLayer* files = nullptr;
};

class LocalProvider final : public spi::IUDMProvider {
  public:
    explicit LocalProvider(LocalOptions options = {}) : _options(options) {}

    boost::shared_ptr<IUDMProfile> OpenProfile(const Parameters& params) override;
    void CloseProfile(const boost::shared_ptr<IUDMProfile>& profile) override;
    // Of a library `b` in the base directory `a`. With an empty `b`, of the directory alone.
    bool CheckConnection(const kxString& dataSource,
                         const kxString& a,
                         const kxString& b,
                         const kxString& host,
                         const kxString& c,
                         const kxString& username,
                         const kxString& password,
                         kxString& message) override;
    void GetRepositoryIds(kxStlVector<kxString>& ids,
                          const Parameters& params,
                          unsigned int connType) override;
    void GetRepositoryInfo(kxStlMap<kxString, kxString>& info,
                           const kxString& id,
                           const kxStlVector<kxString>& keys,
                           const Parameters& params,
                           unsigned int connType) override;
    void GetRepositoryClientSettings(kxStlMap<kxString, kxVariant>& out,
                                     const kxString& id,
                                     const Parameters& params) override;
    void GetWorkspaces(kxStlVector<kxString>& ids, const Parameters& params) override;
    void GetWorkspaceInfo(kxStlMap<kxString, kxString>& info,
                          const kxString& id,
                          const kxStlVector<kxString>& keys,
                          const Parameters& params) override;
    void AddExistingRepository(const Parameters& params, const kxString& name) override;
    void SetDefaultRepository(const Parameters& params) override;
    void DeleteRepository(const Parameters& params, bool deleteFiles, bool force) override;
    // Null, too, where the library can't be opened.
    boost::shared_ptr<UDMKXMergeToCatalog> CreateMerge(
        const kxString& library,
        const kxString& folder,
        const boost::shared_ptr<IUDMProfile>& profile,
        const kxString& comment) override;
    void DispatchUpdates() override;

  private:
    [[nodiscard]] boost::shared_ptr<profile::Session> TargetOf(profile::Session& source,
                                                               const kxString& library) const;

    const LocalOptions _options;
};

}  // namespace kxudm::providers
