// A host on a folder of its own: settings, manager, controllers. For the system tests.
#pragma once

#include <kxctinterfaces/Controller.h>
#include <kxctinterfaces/Factory.h>
#include <kxctinterfaces/MasterDBManager.h>

#include <filesystem>

namespace kxct {
class MasterDBManagerImpl;
class UDMDBCtrl;
}  // namespace kxct

// A folder that is there while the object is.
class TemporaryFolder {
  public:
    TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder();

    const std::filesystem::path& Path() const { return _path; }

  private:
    std::filesystem::path _path;
};

class Host {
  public:
    // Settings, master database and libraries go below `home`. Several hosts may share it.
    explicit Host(const std::filesystem::path& home);
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;
    ~Host();

    kxct::MasterDBManager& Manager() { return *_manager; }
    // The same, as the class behind it: it lets failures out.
    kxct::MasterDBManagerImpl& Impl();

    // Controllers that the host gives back when it goes.
    kxct::Controller* Create(const kxString& library,
                             const kxString& workspace = "ws",
                             const kxString& user = "anna");
    kxct::Controller* CreateIn(const std::filesystem::path& baseDirectory, const kxString& library);
    kxct::Controller* Open(const kxString& library,
                           const kxString& workspace = "ws",
                           const kxString& user = "anna");
    void Close(kxct::Controller* controller);

    // What opening a library throws one layer below the controller; empty if it opens.
    std::string OpenFailure(const kxString& library,
                            const kxString& workspace = "ws",
                            const kxString& user = "anna");
    // The same for creating it.
    std::string CreateFailure(const std::filesystem::path& baseDirectory, const kxString& library);

    std::filesystem::path LibraryFile(const kxString& library) const;
    std::filesystem::path Libraries() const { return _home / "libraries"; }

  private:
    kxct::Controller* Keep(kxct::Controller* controller);

    std::filesystem::path _home;
    kxct::Factory* _factory;
    kxct::MasterDBManager* _manager;
    kxStlVector<kxct::Controller*> _controllers;
};
