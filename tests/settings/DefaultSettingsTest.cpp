// The default settings file that is shipped: its keys are where the library looks for them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/Settings.h>
#include <kxlmcore/kxLMUtls.h>

#include <filesystem>

#include "TemporaryFolder.h"

namespace kxct::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsSupersetOf;

const std::string dataFolder = KXCT_TEST_DATA_DIR;

class DefaultSettings : public ::testing::Test {
  protected:
    const Settings _settings{dataFolder + "/settings/default.xml"};
};

TEST_F(DefaultSettings, TopLevelKeysAreTheCommonBranchAndTheProfiles) {
    EXPECT_THAT(_settings.GetKeys(""), ElementsAre("common", "local", "UDMXML", "PostGres"));
}

TEST_F(DefaultSettings, TheValueOfAProfileIsItsDataSource) {
    EXPECT_EQ(_settings.GetValue("local"), "local");
    EXPECT_EQ(_settings.GetValue("UDMXML"), "UDMXML");
    EXPECT_EQ(_settings.GetValue("PostGres"), "PostGres");
}

TEST_F(DefaultSettings, EveryVersionHasItsBranch) {
    EXPECT_THAT(_settings.GetKeys("common/System"), ElementsAre("2017", "2020"));
    for (const std::string version : {"2017", "2020"}) {
        const std::string branch = "common/System/" + version;
        EXPECT_THAT(_settings.GetKeys(branch),
                    ElementsAre("MasterDB", "UDMSettings", "PostGresDrivers"));
        EXPECT_THAT(_settings.GetKeys(branch + "/MasterDB"),
                    IsSupersetOf({"linux64", "win64", "auto"}));
        for (const std::string driver :
             {"PersistenceDatabaseDriver", "StorageDatabaseDriver", "ClientDatabaseDriver"}) {
            EXPECT_NE(_settings.GetValue(branch + "/PostGresDrivers/" + driver), "");
        }
    }
}

TEST_F(DefaultSettings, TheContentDefinitionsAreTheShippedCatalogue) {
    const std::string catalogue =
        std::filesystem::canonical(dataFolder + "/catalogue/engineering.xml").string();
    for (const char* branch :
         {"common/System/2017", "common/System/2020", "UDMXML/System/2017", "UDMXML/System/2020"}) {
        EXPECT_EQ(_settings.GetPath(std::string(branch) + "/UDMSettings"), catalogue) << branch;
    }
}

TEST_F(DefaultSettings, TheMasterDatabaseNeedNotExistToHaveAPath) {
    const std::string home = kxLMUtls::GetUserDirectory();
    for (const char* platform : {"linux64", ""}) {
        const std::string path =
            _settings.GetPath(std::string("common/System/2020/MasterDB/") + platform);
        EXPECT_EQ(path, "/" + home + "/.kxct/master.mdb");
    }
}

TEST_F(DefaultSettings, TheMasterDatabaseOfTestsLiesInTheirFolder) {
    const TemporaryFolder folder;
    ASSERT_EQ(setenv("ZQA_TEST_UDMRT_TMP_DIR", folder.Path().c_str(), 1), 0);
    EXPECT_EQ(_settings.GetPath("common/System/2020/MasterDB/auto"),
              "/" + folder.Path() + "/master.mdb");
    ASSERT_EQ(unsetenv("ZQA_TEST_UDMRT_TMP_DIR"), 0);
    EXPECT_EQ(_settings.GetPath("common/System/2020/MasterDB/auto"), "");
}

TEST_F(DefaultSettings, TheCredentialBranchIsThereButNotConfigured) {
    EXPECT_THAT(_settings.GetKeys("PostGres/PostGresCredentials"),
                ElementsAre("dbusername", "dbpasswd", "dbconnectstring", "dbhost", "dbport"));
    EXPECT_EQ(_settings.GetValue("PostGres/PostGresCredentials/dbpasswd"), "");
}

TEST_F(DefaultSettings, ACopyForAUserAnswersAlike) {
    const TemporaryFolder folder;
    const Settings first(dataFolder + "/settings/default.xml", folder / "user.xml");
    const Settings second(dataFolder + "/settings/default.xml", folder / "user.xml");
    EXPECT_EQ(second.GetKeys(""), _settings.GetKeys(""));
    EXPECT_EQ(second.GetPath("common/System/2020/UDMSettings"),
              _settings.GetPath("common/System/2020/UDMSettings"));
}

}  // namespace
}  // namespace kxct::test
