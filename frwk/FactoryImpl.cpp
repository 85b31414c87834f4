#include <kxct/ControllerImpl.h>
#include <kxct/EntryPoints.h>
#include <kxct/FactoryImpl.h>
#include <kxct/KXCTFramework.h>
#include <kxct/MasterDBManagerImpl.h>

#include <exception>

namespace kxct {

Factory* FactoryImpl::_instance = nullptr;

FactoryImpl::FactoryImpl() = default;

FactoryImpl::~FactoryImpl() = default;

Factory* FactoryImpl::GetInstance() {
    if (!_instance) {
        try {
            _instance = new FactoryImpl;
        } catch (const std::exception&) {
            return nullptr;
        }
    }
    return _instance;
}

MasterDBManager* FactoryImpl::CreateMasterDBManager(const kxString& defaultSettingsPath,
                                                    const kxString& userSettingsPath) {
    return new MasterDBManagerImpl(defaultSettingsPath, userSettingsPath);
}

void FactoryImpl::DeleteMasterDBManager(MasterDBManager* manager) {
    delete dynamic_cast<MasterDBManagerImpl*>(manager);
}

// The manager stays alive and registered after the controller: nobody owns it, and hosts rely on
// finding it again by name. Do not tie it to the controller.
Controller* FactoryImpl::CreateController(const kxString& defaultSettingsPath,
                                          const kxString& userSettingsPath,
                                          const kxString& profileName,
                                          const kxString& repositoryName,
                                          const kxString& repositoryBaseDir,
                                          const kxString& workspaceName,
                                          const kxString& workspaceBaseDir,
                                          const kxString& username,
                                          const kxString& password,
                                          const kxString& host,
                                          const kxString& port) {
    MasterDBManager* manager = CreateMasterDBManager(defaultSettingsPath, userSettingsPath);
    if (!manager) {
        return nullptr;
    }
    return CreateController(manager,
                            profileName,
                            repositoryName,
                            repositoryBaseDir,
                            workspaceName,
                            workspaceBaseDir,
                            username,
                            password,
                            host,
                            port);
}

Controller* FactoryImpl::CreateController(MasterDBManager* manager,
                                          const kxString& profileName,
                                          const kxString& repositoryName,
                                          const kxString& repositoryBaseDir,
                                          const kxString& workspaceName,
                                          const kxString& workspaceBaseDir,
                                          const kxString& username,
                                          const kxString& password,
                                          const kxString& host,
                                          const kxString& port) {
    return new ControllerImpl(manager,
                              profileName,
                              repositoryName,
                              repositoryBaseDir,
                              workspaceName,
                              workspaceBaseDir,
                              username,
                              password,
                              host,
                              port);
}

void FactoryImpl::DeleteController(Controller* controller) {
    delete dynamic_cast<ControllerImpl*>(controller);
}

Controller* FactoryImpl::GetController(const kxString& masterDBName,
                                       const kxString& repositoryName,
                                       const kxString& workspaceName,
                                       const kxString& username,
                                       const kxString& password) {
    MasterDBManager* manager = KXCTFramework::GetMasterDBManager(masterDBName);
    if (!manager) {
        return nullptr;
    }
    return GetController(manager, repositoryName, workspaceName, username, password);
}

Controller* FactoryImpl::GetController(MasterDBManager* manager,
                                       const kxString& repositoryName,
                                       const kxString& workspaceName,
                                       const kxString& username,
                                       const kxString& password) {
    return new ControllerImpl(manager, repositoryName, workspaceName, username, password);
}

}  // namespace kxct

kxct::Factory* CreateFactory() {
    return kxct::FactoryImpl::GetInstance();
}
