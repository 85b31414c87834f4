// What stands behind a data source. Derive, implement what is marked MUST, and hand an instance to
// UDMProfileMgr::RegisterProvider.
//
// A provider opens sessions (IUDMProfile) and answers what libraries and workspaces there are. It
// is called on the thread that calls UDMProfileMgr. Failures are exceptions derived from
// std::exception whose text names the object, what was wrong and what would be right.
#pragma once

#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMKXMergeToCatalog.h>
#include <kxudm/UDMProfileMgr.h>

namespace kxudm::spi {

class KXUDMRT_EXPORT IUDMProvider {
  public:
    using Parameters = UDMProfileMgr::Parameters;

    IUDMProvider() = default;
    IUDMProvider(const IUDMProvider&) = delete;
    IUDMProvider& operator=(const IUDMProvider&) = delete;
    virtual ~IUDMProvider();

    // MUST: opens a session. A null result counts as a failure without a text.
    virtual boost::shared_ptr<IUDMProfile> OpenProfile(const Parameters& params) = 0;
    // MUST: ends a session that this provider opened. Called once per session.
    virtual void CloseProfile(const boost::shared_ptr<IUDMProfile>& profile) = 0;

    // MAY, each of them: where one is not provided it throws UDMNotSupportedException, which
    // names the operation. UDMProfileMgr.h tells their contracts.
    virtual bool CheckConnection(const kxString& dataSource,
                                 const kxString& a,
                                 const kxString& b,
                                 const kxString& host,
                                 const kxString& c,
                                 const kxString& username,
                                 const kxString& password,
                                 kxString& message);
    virtual void GetRepositoryIds(kxStlVector<kxString>& ids,
                                  const Parameters& params,
                                  unsigned int connType);
    virtual void GetRepositoryInfo(kxStlMap<kxString, kxString>& info,
                                   const kxString& id,
                                   const kxStlVector<kxString>& keys,
                                   const Parameters& params,
                                   unsigned int connType);
    virtual void GetRepositoryClientSettings(kxStlMap<kxString, kxVariant>& out,
                                             const kxString& id,
                                             const Parameters& params);
    virtual void GetWorkspaces(kxStlVector<kxString>& ids, const Parameters& params);
    virtual void GetWorkspaceInfo(kxStlMap<kxString, kxString>& info,
                                  const kxString& id,
                                  const kxStlVector<kxString>& keys,
                                  const Parameters& params);
    virtual void AddExistingRepository(const Parameters& params, const kxString& name);
    virtual void SetDefaultRepository(const Parameters& params);
    virtual void DeleteRepository(const Parameters& params, bool deleteFiles, bool force);

    // MAY: an engine that copies entities of `profile` into another library; null, can't merge, if
    // not provided.
    virtual boost::shared_ptr<UDMKXMergeToCatalog> CreateMerge(
        const kxString& library,
        const kxString& folder,
        const boost::shared_ptr<IUDMProfile>& profile,
        const kxString& comment);

    // MAY: hands changes of other processes to the slots of this provider's sessions; nothing
    // happens if not provided.
    virtual void DispatchUpdates();
};

}  // namespace kxudm::spi
