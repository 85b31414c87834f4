// The factory of this library; kxctinterfaces/Factory.h tells what it promises.
//
// Layer: framework, above master databases and controllers. One instance for the life of the
// process; it keeps no list of what it made. Threads: the host's main thread.
//
//     kxct::Factory* factory = kxct::FactoryImpl::GetInstance();   // or CreateFactory()
#pragma once

#include <kxct/kxct_export.h>
#include <kxctinterfaces/Factory.h>

namespace kxct {

class KXCT_EXPORT FactoryImpl : public Factory {
  public:
    // Makes the factory at the first call. Null only if that failed.
    static Factory* GetInstance();

    FactoryImpl(const FactoryImpl&) = delete;
    FactoryImpl& operator=(const FactoryImpl&) = delete;

    MasterDBManager* CreateMasterDBManager(const kxString& defaultSettingsPath,
                                           const kxString& userSettingsPath) override;
    void DeleteMasterDBManager(MasterDBManager* manager) override;
    Controller* CreateController(const kxString& defaultSettingsPath,
                                 const kxString& userSettingsPath,
                                 const kxString& profileName,
                                 const kxString& repositoryName,
                                 const kxString& repositoryBaseDir,
                                 const kxString& workspaceName,
                                 const kxString& workspaceBaseDir,
                                 const kxString& username,
                                 const kxString& password,
                                 const kxString& host,
                                 const kxString& port) override;
    Controller* CreateController(MasterDBManager* manager,
                                 const kxString& profileName,
                                 const kxString& repositoryName,
                                 const kxString& repositoryBaseDir,
                                 const kxString& workspaceName,
                                 const kxString& workspaceBaseDir,
                                 const kxString& username,
                                 const kxString& password,
                                 const kxString& host,
                                 const kxString& port) override;
    void DeleteController(Controller* controller) override;
    Controller* GetController(const kxString& masterDBName,
                              const kxString& repositoryName,
                              const kxString& workspaceName,
                              const kxString& username,
                              const kxString& password) override;
    Controller* GetController(MasterDBManager* manager,
                              const kxString& repositoryName,
                              const kxString& workspaceName,
                              const kxString& username,
                              const kxString& password) override;

  private:
    FactoryImpl();
    ~FactoryImpl() override;

    static Factory* _instance;
};

}  // namespace kxct
