#include "Host.h"

#include <kxct/EntryPoints.h>
#include <kxct/KXCTFramework.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/Settings.h>

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

namespace fs = std::filesystem;

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (fs::temp_directory_path() / "kxct-system-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) {
        throw std::runtime_error("no temporary folder");
    }
    _path = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    fs::remove_all(_path, ignored);
}

Host::Host(const fs::path& home) : _home(home), _factory(CreateFactory()) {
    const std::string defaults = KXCT_DATA_DIR "/settings/default.xml";
    const std::string user = (home / "settings.xml").string();
    if (!fs::exists(user)) {
        kxct::Settings settings(defaults, user);
        const kxString branch =
            "common/System/" + kxct::KXCTFramework::GetCurrentVersion() + "/MasterDB";
        settings.Set(branch, "/" + (home / "master.mdb").string());
        settings.Write();
    }
    fs::create_directories(Libraries());
    _manager = _factory->CreateMasterDBManager(defaults, user);
}

Host::~Host() {
    for (kxct::Controller* controller : _controllers) {
        _factory->DeleteController(controller);
    }
    _factory->DeleteMasterDBManager(_manager);
}

kxct::MasterDBManagerImpl& Host::Impl() {
    return dynamic_cast<kxct::MasterDBManagerImpl&>(*_manager);
}

kxct::Controller* Host::Keep(kxct::Controller* controller) {
    _controllers.push_back(controller);
    return controller;
}

kxct::Controller* Host::Create(const kxString& library,
                               const kxString& workspace,
                               const kxString& user) {
    return Keep(_factory->CreateController(_manager,
                                           "local",
                                           library,
                                           Libraries().string(),
                                           workspace,
                                           (_home / "work" / std::string(workspace)).string(),
                                           user,
                                           "",
                                           "",
                                           ""));
}

kxct::Controller* Host::CreateIn(const fs::path& baseDirectory, const kxString& library) {
    return Keep(_factory->CreateController(_manager,
                                           "local",
                                           library,
                                           baseDirectory.string(),
                                           "ws",
                                           (_home / "work" / "ws").string(),
                                           "anna",
                                           "",
                                           "",
                                           ""));
}

kxct::Controller* Host::Open(const kxString& library,
                             const kxString& workspace,
                             const kxString& user) {
    return Keep(_factory->GetController(_manager, library, workspace, user, ""));
}

void Host::Close(kxct::Controller* controller) {
    _controllers.erase(std::find(_controllers.begin(), _controllers.end(), controller));
    _factory->DeleteController(controller);
}

std::string Host::OpenFailure(const kxString& library,
                              const kxString& workspace,
                              const kxString& user) {
    try {
        Impl().Close(Impl().Open(library, workspace, user, "", kxct::CONN_TYPE_LIBRARY));
        return {};
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

std::string Host::CreateFailure(const fs::path& baseDirectory, const kxString& library) {
    try {
        kxct::UDMDBCtrl* session = Impl().Create("local",
                                                 library,
                                                 baseDirectory.string(),
                                                 "ws",
                                                 (_home / "work" / "ws").string(),
                                                 "anna",
                                                 "",
                                                 "",
                                                 "",
                                                 "",
                                                 "",
                                                 "",
                                                 "");
        Impl().Close(session);
        return session == nullptr ? "no session" : "";
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

fs::path Host::LibraryFile(const kxString& library) const {
    return Libraries() / std::string(library + ".ldb");
}
