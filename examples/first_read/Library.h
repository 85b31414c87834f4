// A library as a host holds it: settings, manager, controller.
#pragma once

#include <kxctinterfaces/Controller.h>
#include <kxctinterfaces/Factory.h>
#include <kxctinterfaces/MasterDBManager.h>

#include <boost/smart_ptr/shared_ptr.hpp>
#include <filesystem>
#include <string>

namespace kxudm {
class IUDMProfile;
}

namespace demo {

class Library {
  public:
    // Makes the settings below `home` from the default ones in `data`, and a manager on them.
    // Throws std::exception where `home` can't be written.
    // Several may stand below one `home` at once, each by its name in a folder of its own.
    Library(const std::filesystem::path& data,
            const std::filesystem::path& home,
            const kxString& name = "Demo",
            const kxString& folder = "libraries");
    Library(const Library&) = delete;
    Library& operator=(const Library&) = delete;
    // Gives the controller, then the manager back to the factory.
    ~Library();

    // Whether the master database knows the library.
    bool Exists() const;
    // Connect a controller: to a library that is made now, or to the one that exists. Both throw
    // std::runtime_error with the reason where there is no connection.
    void Create();
    void Open();

    kxct::Controller& Controller() const { return *_controller; }
    // The session below the controller, for what the controller doesn't offer: progress, older
    // revisions, the catalogue's file extensions.
    const boost::shared_ptr<kxudm::IUDMProfile>& Session() const { return _session; }
    // Path of the library's file, as the master database has it.
    std::string Path() const;

  private:
    void Connected(kxct::Controller* controller);

    kxString _name;
    std::filesystem::path _libraries;
    std::filesystem::path _workspace;
    kxct::Factory* _factory = nullptr;
    kxct::MasterDBManager* _manager = nullptr;
    kxct::Controller* _controller = nullptr;
    boost::shared_ptr<kxudm::IUDMProfile> _session;
};

}  // namespace demo
