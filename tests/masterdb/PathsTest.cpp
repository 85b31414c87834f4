#include <kxct/KXCTException.h>

#include "tests/masterdb/ManagerFixture.h"

using testing::ElementsAre;
using testing::IsEmpty;

using PathsTest = ManagerTest;

TEST_F(PathsTest, TheSettingsFileIsTheUsers) {
    EXPECT_EQ(Manager().GetSettingsFile(), Path("user.xml"));
}

TEST_F(PathsTest, WithoutSettingsTheSettingsFileIsEmpty) {
    Manager().LoseSettings();
    EXPECT_EQ(Manager().GetSettingsFile(), "");
}

TEST_F(PathsTest, ASettingIsReadAsValueOrAsPath) {
    const kxString key = "common/System/2020/UDMSettings";
    EXPECT_EQ(Manager().GetSettingValue(key, false), "udm.xml");
    EXPECT_EQ(Manager().GetSettingValue(key, true), Path("udm.xml"));
    EXPECT_EQ(Manager().GetSettingValue("no/such/key", false), "");
    EXPECT_EQ(Manager().GetSettingValue("no/such/key", true), "");
}

TEST_F(PathsTest, AnUnsetVariableInAPathGivesAnEmptyText) {
    KeptVariable variable{"KXCT_TEST_UNSET"};
    variable.Unset();
    EditSettings(R"(value="udm.xml")", R"(value="[KXCT_TEST_UNSET]/udm.xml")");
    EXPECT_EQ(Manager().GetSettingValue("common/System/2020/UDMSettings", true), "");
    EXPECT_EQ(Manager().GetSettingValue("common/System/2020/UDMSettings", false),
              "[KXCT_TEST_UNSET]/udm.xml");
}

TEST_F(PathsTest, KeysAreListedInTheirOrder) {
    EXPECT_THAT(Manager().GetSettingKeys("common/System"), ElementsAre("2017", "2020"));
    EXPECT_THAT(Manager().GetSettingKeys("no/such/key"), IsEmpty());
}

TEST_F(PathsTest, TheMasterDatabaseIsChosenByPlatform) {
    EXPECT_EQ(Manager().GetMasterDBPath(), Path("master.db"));
    binDir.Set("/inst/kx/bin/linux64d");
    EXPECT_EQ(Manager().GetMasterDBPath(), Path("master.db"));
    binDir.Set("/inst/kx/bin/other");
    EXPECT_EQ(Manager().GetMasterDBPath(), "");
}

TEST_F(PathsTest, TheMereTestVariableChoosesTheAutomaticMasterDatabase) {
    testFolder.Set("/anything/");
    EXPECT_EQ(Manager().GetMasterDBPath(), Path("auto.db"));
    testFolder.Set("");
    EXPECT_EQ(Manager().GetMasterDBPath(), Path("auto.db"));
}

TEST_F(PathsTest, AMissingMasterDatabaseKeyGivesTheSessionAnEmptyFile) {
    EditSettings(R"(<Key name="linux64" value="master.db"/>)", "");
    ASSERT_NE(Create("Files"), nullptr);
    EXPECT_EQ(opened.at(0).at("MasterDBFile"), kxVariant(""));
}

TEST_F(PathsTest, TheDataModelSettingsOfNoNameAreTheCommonOnes) {
    EXPECT_EQ(Manager().GetUDMSettingsPath(""), Path("udm.xml"));
    EXPECT_EQ(Manager().GetUDMSettingsPath("common"), Path("udm.xml"));
    EXPECT_EQ(Manager().GetUDMSettingsPath("Single"), Path("own.xml"));
    EXPECT_EQ(Manager().GetUDMSettingsPath("Files"), "");
}

TEST_F(PathsTest, TheCustomDefinitionsFolderIsStoredInTheUsersFile) {
    EXPECT_TRUE(Manager().SetCustomEntityDefinitionFolder("Files", "/custom"));
    EXPECT_EQ(Stored("Files/CustomEntityDefinitionsFolder"), "/custom");
    EXPECT_EQ(kxct::Settings(Path("default.xml")).GetValue("Files/CustomEntityDefinitionsFolder"),
              "");
}

TEST_F(PathsTest, AnUnknownPrefixChangesNothingAndIsTrueAllTheSame) {
    Manager();
    std::filesystem::remove(folder / "user.xml");
    EXPECT_TRUE(Manager().SetCustomEntityDefinitionFolder("Nowhere", "/custom"));
    EXPECT_TRUE(std::filesystem::exists(folder / "user.xml"));
    EXPECT_THAT(kxct::Settings(Path("user.xml")).GetKeys("Nowhere"), IsEmpty());
    EXPECT_EQ(Stored("Files"), "local");
}

TEST_F(PathsTest, WithoutSettingsEachOperationNamesItselfAndThePointer) {
    Manager().LoseSettings();
    const auto textOf = [](auto&& call) -> std::string {
        try {
            call();
        } catch (const kxct::KXCTException& failure) {
            return failure.what();
        }
        return "no KXCTException";
    };
    const std::string scope = "__cdecl kxct::MasterDBManagerImpl::";
    const std::string tail =
        ":: frwk/_private/MasterDBManagerImpl/Paths.cpp. The pointer _settings is null!";
    EXPECT_EQ(textOf([&] { Manager().GetMasterDBPath(); }),
              "class kxString " + scope + "GetMasterDBPath(void)" + tail);
    EXPECT_EQ(textOf([&] { Manager().GetUDMSettingsPath(""); }),
              "class kxString " + scope + "GetUDMSettingsPath(const class kxString &)" + tail);
    EXPECT_EQ(textOf([&] { Manager().GetSettingValue("a", true); }),
              "class kxString " + scope + "GetSettingValue(const class kxString &,bool)" + tail);
    EXPECT_EQ(textOf([&] { Manager().GetSettingKeys("a"); }),
              "class kxStlVector<class kxString,class std::allocator<class kxString> > " + scope +
                  "GetSettingKeys(const class kxString &)" + tail);
    EXPECT_EQ(textOf([&] { Manager().SetCustomEntityDefinitionFolder("a", "b"); }),
              "bool " + scope +
                  "SetCustomEntityDefinitionFolder(const class kxString &,const class kxString &)" +
                  tail);
}
