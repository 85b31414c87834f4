// The first object that an application holds: it makes and deletes master database managers and
// controllers.
//
// The model. A master database manager stands for an installation: two settings files say where the
// list of libraries lies and how each profile connects. A controller stands for one session of one
// user on one library and workspace. "Get" attaches to what exists, "Create" makes what is named: a
// new library or workspace where needed.
//
// Ownership: the caller owns what it gets and gives it back through the matching Delete operation,
// controllers before their manager. The factory itself lives for the process and keeps no list.
// Errors: a failed connection is no null pointer: the controller exists and IsDBValid() is false.
// Threads: the host's main thread.
//
//     Factory* factory = CreateFactory();
//     MasterDBManager* manager = factory->CreateMasterDBManager(defaults, userSettings);
//     Controller* controller = factory->GetController(manager, "Demo", "main", "anna", "");
//     if (controller->IsDBValid()) { ... }
//     factory->DeleteController(controller);
//     factory->DeleteMasterDBManager(manager);
#pragma once

#include <kxctinterfaces/kxctinterfaces_export.h>
#include <kxutl/kxString.h>

namespace kxct {

class Controller;
class MasterDBManager;

// Hosts don't delete it; the destructor has its place behind the operations.
class KXCTINTERFACES_EXPORT Factory {
  public:
    Factory() = default;
    Factory(const Factory&) = delete;
    Factory& operator=(const Factory&) = delete;

    // The order of the virtual operations is part of the binary interface.

    // A manager over the two settings files, which is also registered under `userSettingsPath`. A
    // missing or malformed file counts as an empty one.
    virtual MasterDBManager* CreateMasterDBManager(const kxString& defaultSettingsPath,
                                                   const kxString& userSettingsPath) = 0;

    // Deletes a manager of this factory's making. Null and any other class: nothing happens.
    virtual void DeleteMasterDBManager(MasterDBManager* manager) = 0;

    // Makes a manager, which stays alive and registered when the controller goes, and goes on as
    // the next form.
    virtual Controller* CreateController(const kxString& defaultSettingsPath,
                                         const kxString& userSettingsPath,
                                         const kxString& profileName,
                                         const kxString& repositoryName,
                                         const kxString& repositoryBaseDir,
                                         const kxString& workspaceName,
                                         const kxString& workspaceBaseDir,
                                         const kxString& username,
                                         const kxString& password,
                                         const kxString& host,
                                         const kxString& port) = 0;

    // A controller on a library and workspace that are created where they don't exist.
    virtual Controller* CreateController(MasterDBManager* manager,
                                         const kxString& profileName,
                                         const kxString& repositoryName,
                                         const kxString& repositoryBaseDir,
                                         const kxString& workspaceName,
                                         const kxString& workspaceBaseDir,
                                         const kxString& username,
                                         const kxString& password,
                                         const kxString& host,
                                         const kxString& port) = 0;

    // Deletes a controller of this factory's making. Null and any other class: nothing happens.
    virtual void DeleteController(Controller* controller) = 0;

    // A controller on an existing library, through the manager that is registered under
    // `masterDBName`, its user settings path. Null if there is none.
    virtual Controller* GetController(const kxString& masterDBName,
                                      const kxString& repositoryName,
                                      const kxString& workspaceName,
                                      const kxString& username,
                                      const kxString& password) = 0;

    // The same through a given manager. Each call makes a controller of its own; calls with the
    // same names share the session below.
    virtual Controller* GetController(MasterDBManager* manager,
                                      const kxString& repositoryName,
                                      const kxString& workspaceName,
                                      const kxString& username,
                                      const kxString& password) = 0;

  protected:
    virtual ~Factory();
};

}  // namespace kxct
