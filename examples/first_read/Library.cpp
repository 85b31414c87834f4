#include "Library.h"

#include <kxct/EntryPoints.h>
#include <kxct/KXCTFramework.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/Settings.h>
#include <kxct/UDMDBCtrl.h>

#include <cstdlib>
#include <regex>
#include <stdexcept>

namespace demo {

namespace {

constexpr char kWorkspace[] = "first_read";
constexpr char kProfile[] = "local";

kxString User() {
    const char* name = std::getenv("USER");
    return name != nullptr && *name != '\0' ? kxString(name) : kxString("engineer");
}

// Where the demo keeps its master database: in its own folder, not among the user's libraries. A
// setting that begins with two slashes may name a file that isn't there yet.
void WriteSettings(const std::string& defaults,
                   const std::string& user,
                   const std::filesystem::path& masterDatabase) {
    kxct::Settings settings(defaults, user);
    const kxString branch =
        "common/System/" + kxct::KXCTFramework::GetCurrentVersion() + "/MasterDB";
    const kxString keys[] = {
        branch, branch + "/" + kxct::KXCTFramework::GetPlatform(), branch + "/auto"};
    for (const kxString& key : keys) {
        settings.Set(key, "/" + masterDatabase.string());
    }
    settings.Write();
}

}  // namespace

Library::Library(const std::filesystem::path& data,
                 const std::filesystem::path& home,
                 const kxString& name,
                 const kxString& folder)
    : _name(name), _libraries(home / std::string(folder)), _workspace(home / "workspace") {
    std::error_code error;
    std::filesystem::create_directories(home, error);
    if (error) {
        throw std::runtime_error("The folder \"" + home.string() +
                                 "\" can't be made: " + error.message());
    }
    // Settings expand both in whatever is a path.
    if (std::regex_search(home.string(), std::regex("~|\\[[[:alnum:]_.]*\\]"))) {
        throw std::runtime_error("The folder \"" + home.string() +
                                 "\" can't hold the library: settings take \"~\" and \"[NAME]\" "
                                 "for what they stand for; name another one in KXCT_DEMO_DIR");
    }
    const std::string defaults = (data / "settings" / "default.xml").string();
    const std::string user = (home / "settings.xml").string();
    WriteSettings(defaults, user, home / "master.mdb");

    _factory = CreateFactory();
    _manager = _factory->CreateMasterDBManager(defaults, user);
}

Library::~Library() {
    _session.reset();
    _factory->DeleteController(_controller);
    _factory->DeleteMasterDBManager(_manager);
}

bool Library::Exists() const {
    return !_manager->GetLibraryIDByName(User(), _name, kxct::CONN_TYPE_LIBRARY).empty();
}

void Library::Create() {
    std::filesystem::create_directories(_libraries);
    Connected(_factory->CreateController(_manager,
                                         kProfile,
                                         _name,
                                         _libraries.string(),
                                         kWorkspace,
                                         _workspace.string(),
                                         User(),
                                         "",
                                         "",
                                         ""));
}

void Library::Open() {
    kxct::Controller* controller = _factory->GetController(_manager, _name, kWorkspace, User(), "");
    if (!controller->IsDBValid()) {
        // A user who is new to the library has no workspace yet; creating attaches to what exists.
        _factory->DeleteController(controller);
        Create();
        return;
    }
    Connected(controller);
}

void Library::Connected(kxct::Controller* controller) {
    _controller = controller;
    auto* manager = dynamic_cast<kxct::MasterDBManagerImpl*>(_manager);
    // A controller that could not connect keeps the reason to itself; the manager tells it. On a
    // connected one this is the same session, with one more user.
    kxct::UDMDBCtrl* session = nullptr;
    if (_controller->IsDBValid()) {
        session = manager->Open(_name, kWorkspace, User(), "", kxct::CONN_TYPE_LIBRARY);
    } else {
        session = manager->Create(kProfile,
                                  _name,
                                  _libraries.string(),
                                  kWorkspace,
                                  _workspace.string(),
                                  User(),
                                  "",
                                  "",
                                  "",
                                  "",
                                  "",
                                  "",
                                  "");
        manager->Close(session);
        throw std::runtime_error("The library \"" + _name + "\" could not be opened");
    }
    _session = session->GetProfile();
    manager->Close(session);
}

std::string Library::Path() const {
    kxStlVector<kxString> values;
    _manager->GetLibraryInfoByName(User(), _name, {"ldbFile"}, values, kxct::CONN_TYPE_LIBRARY);
    return values.size() == 2 ? values[1] : kxString();
}

}  // namespace demo
