#include <stdexcept>

#include "tests/masterdb/ManagerFixture.h"

namespace {

class ExternalTest : public ManagerTest {
  protected:
    // As Create fills it from its arguments.
    Parameters Connection(const kxString& source,
                          const kxString& profile,
                          const kxString& udmSettings) const {
        return {{"DataSource", source},
                {"UDMConfigFile", udmSettings},
                {"BinDir", "/inst/kx/bin/linux64"},
                {"MasterDBFile", Path("master.db")},
                {"ConnectionIdentifier", "Demo"},
                {"username", "anna"},
                {"password", "secret"},
                {"Host", "pdm.example/path/"},
                {"dbusername", "pdmuser"},
                {"dbpassword", "pdmsecret"},
                {"FileServerCache", "fsc"},
                {"TransferMode", "fast"},
                {"type", "2"},
                {"ProfileName", profile}};
    }
    Parameters Unknown() const {
        Parameters params = Connection("Teamcenter", "TCConnect", "");
        for (const char* key :
             {"password", "Host", "dbusername", "dbpassword", "FileServerCache", "TransferMode"}) {
            params[key] = "";
        }
        return params;
    }
};

}  // namespace

TEST_F(ExternalTest, TeamcenterGetsExactlyTheseParameters) {
    ASSERT_NE(Create("TC", "/\\//pdm.example/path/", "7001"), nullptr);
    ASSERT_EQ(opened.size(), 1u);
    EXPECT_EQ(opened[0], Connection("Teamcenter", "TC", Path("own.xml")));
}

TEST_F(ExternalTest, WindchillGetsTheSameWithoutASettingsFileOfItsOwn) {
    EXPECT_CALL(*windchill, OpenProfile(Connection("Windchill", "WC", "")));
    ASSERT_NE(Create("WC", "//pdm.example/path/"), nullptr);
}

TEST_F(ExternalTest, MakesNoFolderAndAttachesNothing) {
    EXPECT_CALL(*local, AddExistingRepository).Times(0);
    EXPECT_CALL(*teamcenter, AddExistingRepository).Times(0);
    WriteFile("other/Demo.ldb");
    ASSERT_NE(Create("TC"), nullptr);
    EXPECT_FALSE(std::filesystem::exists(folder / "base"));
}

TEST_F(ExternalTest, ASessionIsSharedOnlyUnderThePseudoWorkspace) {
    kxct::UDMDBCtrl* session = Create("TC");
    EXPECT_EQ(Open("Demo", "nows", kxct::CONN_TYPE_PDM), session);
    EXPECT_NE(Create("TC"), session);
}

TEST_F(ExternalTest, AFailureOfTheRuntimePasses) {
    EXPECT_CALL(*teamcenter, OpenProfile).WillOnce(testing::Throw(std::runtime_error("no server")));
    EXPECT_THROW(Create("TC"), std::runtime_error);
}

TEST_F(ExternalTest, AnUnknownRepositoryIsTriedWithTheDefaults) {
    ASSERT_NE(Open("Demo", "Work", kxct::CONN_TYPE_PDM), nullptr);
    EXPECT_EQ(opened.at(0), Unknown());
}

TEST_F(ExternalTest, AKnownRepositoryIsOpenedAsItsRecordSays) {
    libraries["9"] = {{"id", "9"},
                      {"name", "Demo"},
                      {"type", "2"},
                      {"host", "//stored.example"},
                      {"fscache", "cache"},
                      {"trmode", "slow"},
                      {"dbusername", "storeduser"},
                      {"dbpasswd", "storedsecret"},
                      {"pname", "TC"}};
    ASSERT_NE(Open("Demo", "Work", kxct::CONN_TYPE_PDM), nullptr);
    auto expected = Connection("Teamcenter", "TC", Path("own.xml"));
    expected["password"] = "";  // the one that Open was given is not passed on
    expected["Host"] = "//stored.example";
    expected["FileServerCache"] = "cache";
    expected["TransferMode"] = "slow";
    expected["dbusername"] = "storeduser";
    expected["dbpassword"] = "storedsecret";
    EXPECT_EQ(opened.at(0), expected);
}

TEST_F(ExternalTest, AMissingFieldOfTheRecordIsEmpty) {
    libraries["9"] = {{"id", "9"}, {"name", "Demo"}, {"type", "2"}, {"pname", "TC"}};
    ASSERT_NE(Open("Demo", "Work", kxct::CONN_TYPE_PDM), nullptr);
    auto expected = Unknown();
    expected["ProfileName"] = "TC";
    expected["UDMConfigFile"] = Path("own.xml");
    EXPECT_EQ(opened.at(0), expected);
}

TEST_F(ExternalTest, OpenLooksInTheCacheByTheCallersWorkspace) {
    kxct::UDMDBCtrl* session = Open("Demo", "Work", kxct::CONN_TYPE_PDM);
    EXPECT_EQ(Open("Demo", "nows", kxct::CONN_TYPE_PDM), session);
    EXPECT_NE(Open("Demo", "Work", kxct::CONN_TYPE_PDM), session);
}

TEST_F(ExternalTest, EndsEverySessionWithTheManager) {
    Open("Demo", "Work", kxct::CONN_TYPE_PDM);
    Open("Demo", "Work", kxct::CONN_TYPE_PDM);
    EXPECT_CALL(*teamcenter, CloseProfile).Times(2);
    DeleteManager();
}
