// A master database manager over settings files in a folder of its own, with mock providers in the
// place of all data sources. The catalogue of libraries and workspaces that the mocks answer from
// is the fixture's `libraries` and `workspaces`; sessions that were opened are listed in `opened`.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/DBCtrlCache.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/Settings.h>
#include <kxct/UDMDBCtrl.h>

#include <filesystem>
#include <memory>

#include "tests/frwk/KeptVariable.h"
#include "tests/mock/MockProfile.h"
#include "tests/mock/MockProvider.h"

using Parameters = kxStlMap<kxString, kxVariant>;
using Record = kxStlMap<kxString, kxString>;
using Texts = kxStlVector<kxString>;

// Lets a test see a manager without its settings, which no public operation brings about.
class ManagerPeer : public kxct::MasterDBManagerImpl {
  public:
    using MasterDBManagerImpl::MasterDBManagerImpl;
    void LoseSettings() { _settings.reset(); }
};

class ManagerTest : public testing::Test {
  protected:
    ManagerTest();
    ~ManagerTest() override;

    // The manager, made from the settings files at the first call.
    ManagerPeer& Manager();
    void DeleteManager() { _manager.reset(); }
    // The settings file alone, for tests that make managers of their own.
    void WriteDefaults() const { WriteFile("default.xml", _settings); }

    kxct::UDMDBCtrl* Create(const kxString& profile,
                            const kxString& host = "",
                            const kxString& port = "",
                            const kxString& repository = "Demo");
    kxct::UDMDBCtrl* Open(const kxString& repository = "Demo",
                          const kxString& workspace = "Work",
                          kxct::CONN_TYPE type = kxct::CONN_TYPE_LIBRARY);

    kxString Path(const kxString& name) const { return (folder / std::string(name)).string(); }
    void WriteFile(const kxString& name, const kxString& text = "") const;
    // Changes the text of the default settings; before Manager().
    void EditSettings(const std::string& from, const std::string& to);
    // What the user's settings file holds now.
    kxString Stored(const kxString& key) const;

    // The map that every question to the master database carries.
    Parameters Query(const kxString& user = "anna") const;

    std::filesystem::path folder;
    KeptVariable binDir{"NORVIK_KXE_KX_BIN_DIR"};
    KeptVariable testFolder{"ZQA_TEST_UDMRT_TMP_DIR"};
    kxct::mock::ProviderRegistration local{"local"};
    kxct::mock::ProviderRegistration postgres{"PostGres"};
    kxct::mock::ProviderRegistration xml{"UDMXML"};
    kxct::mock::ProviderRegistration teamcenter{"Teamcenter"};
    kxct::mock::ProviderRegistration windchill{"Windchill"};

    kxStlMap<kxString, Record> libraries;   // id -> record; "type" tells which lookup finds it
    kxStlMap<kxString, Record> workspaces;  // id -> record
    Parameters clientSettings;
    kxString libraryDir;  // where Create puts the library: "base/library" in the folder
    std::vector<Parameters> opened;

  private:
    void _Answer(kxct::mock::MockProvider& provider);

    std::string _settings;
    std::unique_ptr<ManagerPeer> _manager;
};
