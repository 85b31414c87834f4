#include "tests/masterdb/ManagerFixture.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace {

constexpr const char* SETTINGS = R"(<?xml version="1.0" encoding="UTF-8"?>
<kxct:Settings xmlns:kxct="http://kxct/KXCTSETTINGS_v1" version="1">
  <Key name="common">
    <Key name="System">
      <Key name="2017"><Key name="UDMSettings" value="old.xml"/></Key>
      <Key name="2020">
        <Key name="MasterDB">
          <Key name="linux64" value="master.db"/>
          <Key name="auto" value="auto.db"/>
        </Key>
        <Key name="UDMSettings" value="udm.xml"/>
        <Key name="PostGresDrivers">
          <Key name="PersistenceDatabaseDriver" value="pdriver"/>
          <Key name="StorageDatabaseDriver" value="sdriver"/>
          <Key name="ClientDatabaseDriver" value="cdriver"/>
        </Key>
      </Key>
    </Key>
  </Key>
  <Key name="Files" value="local"/>
  <Key name="Team" value="PostGres">
    <Key name="PostGresCredentials">
      <Key name="dbusername" value="dbuser"/>
      <Key name="dbpasswd" value="dbsecret"/>
      <Key name="dbconnectstring" value="dbname=kx"/>
      <Key name="dbhost" value="dbserver"/>
      <Key name="dbport" value="5432"/>
    </Key>
  </Key>
  <Key name="Single" value="UDMXML">
    <Key name="System"><Key name="2020"><Key name="UDMSettings" value="own.xml"/></Key></Key>
  </Key>
  <Key name="TC" value="Teamcenter">
    <Key name="System"><Key name="2020"><Key name="UDMSettings" value="own.xml"/></Key></Key>
  </Key>
  <Key name="WC" value="Windchill"/>
  <Key name="TCConnect" value="Teamcenter"/>
</kxct:Settings>
)";

std::filesystem::path NewFolder() {
    std::string name = (std::filesystem::temp_directory_path() / "kxct-manager-XXXXXX").string();
    if (!::mkdtemp(name.data())) {
        throw std::runtime_error("can't make " + name);
    }
    return std::filesystem::canonical(name);
}

}  // namespace

ManagerTest::ManagerTest() : folder(NewFolder()), _settings(SETTINGS) {
    libraryDir = Path("base/library");
    binDir.Set("/inst/kx/bin/linux64");
    testFolder.Unset();
    for (const char* name : {"master.db", "auto.db", "udm.xml", "own.xml", "old.xml"}) {
        WriteFile(name);
    }
    libraries["7"] = {{"id", "7"},
                      {"name", "Demo"},
                      {"profile_name", "Files"},
                      {"ldbFile", "/stored/base/Demo.ldb"},
                      {"type", "1"}};
    workspaces["Work"] = {{"name", "Work"}, {"workingDir", "/stored/work"}, {"uname", "anna"}};
    for (auto* provider : {&local, &postgres, &xml, &teamcenter, &windchill}) {
        _Answer(**provider);
    }
}

ManagerTest::~ManagerTest() {
    _manager.reset();
    std::filesystem::remove_all(folder);
}

ManagerPeer& ManagerTest::Manager() {
    if (!_manager) {
        WriteDefaults();
        _manager = std::make_unique<ManagerPeer>(Path("default.xml"), Path("user.xml"));
    }
    return *_manager;
}

kxct::UDMDBCtrl* ManagerTest::Create(const kxString& profile,
                                     const kxString& host,
                                     const kxString& port,
                                     const kxString& repository) {
    return Manager().Create(profile,
                            repository,
                            libraryDir,
                            "Work",
                            "/given/work",
                            "anna",
                            "secret",
                            host,
                            port,
                            "pdmuser",
                            "pdmsecret",
                            "fsc",
                            "fast");
}

kxct::UDMDBCtrl* ManagerTest::Open(const kxString& repository,
                                   const kxString& workspace,
                                   kxct::CONN_TYPE type) {
    return Manager().Open(repository, workspace, "anna", "secret", type);
}

void ManagerTest::WriteFile(const kxString& name, const kxString& text) const {
    const std::filesystem::path path = folder / std::string(name);
    std::filesystem::create_directories(path.parent_path());
    std::ofstream(path) << text;
}

void ManagerTest::EditSettings(const std::string& from, const std::string& to) {
    const auto at = _settings.find(from);
    if (at == std::string::npos) {
        throw std::logic_error("the settings don't hold " + from);
    }
    _settings.replace(at, from.size(), to);
}

kxString ManagerTest::Stored(const kxString& key) const {
    return kxct::Settings(Path("user.xml")).GetValue(key);
}

Parameters ManagerTest::Query(const kxString& user) const {
    return {{"username", user},
            {"UDMConfigFile", Path("udm.xml")},
            {"MasterDBFile", Path("master.db")}};
}

void ManagerTest::_Answer(kxct::mock::MockProvider& provider) {
    using testing::_;
    ON_CALL(provider, OpenProfile).WillByDefault([this](const Parameters& params) {
        opened.push_back(params);
        return kxct::mock::NewProfile("session-" + std::to_string(opened.size()));
    });
    ON_CALL(provider, GetRepositoryIds)
        .WillByDefault([this](Texts& ids, const Parameters&, unsigned int type) {
            for (const auto& [id, record] : libraries) {
                if (record.at("type") == std::to_string(type)) {
                    ids.push_back(id);
                }
            }
        });
    // A provider may tell more than it is asked for; this one does when asked for many fields.
    ON_CALL(provider, GetRepositoryInfo)
        .WillByDefault([this](Record& info,
                              const kxString& id,
                              const Texts& keys,
                              const Parameters&,
                              unsigned int) {
            for (const auto& [key, value] : libraries.at(id)) {
                if (keys.size() > 2 || std::count(keys.begin(), keys.end(), key)) {
                    info[key] = value;
                }
            }
        });
    ON_CALL(provider, GetRepositoryClientSettings)
        .WillByDefault([this](Parameters& out, const kxString&, const Parameters&) {
            out.insert(clientSettings.begin(), clientSettings.end());
        });
    ON_CALL(provider, GetWorkspaces).WillByDefault([this](Texts& ids, const Parameters&) {
        for (const auto& workspace : workspaces) {
            ids.push_back(workspace.first);
        }
    });
    ON_CALL(provider, GetWorkspaceInfo)
        .WillByDefault([this](Record& info, const kxString& id, const Texts&, const Parameters&) {
            info = workspaces.at(id);
        });
}
