#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/Settings.h>
#include <kxct/SettingsImpl.h>
#include <sys/stat.h>

#include <boost/filesystem/exception.hpp>

#include "TemporaryFolder.h"

namespace kxct::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* defaultText =
    "<kxct:Settings><Key name='a' value='default'><Lookup value='l'/><Key name='b'/></Key>"
    "</kxct:Settings>";

class SettingsTest : public ::testing::Test {
  protected:
    TemporaryFolder _folder;
    const std::string _default = _folder.File("default/settings.xml", defaultText);
    const std::string _user = _folder / "home/user/settings.xml";
};

TEST_F(SettingsTest, AnExistingUserFileIsReadInsteadOfTheDefaultFile) {
    _folder.File("home/user/settings.xml", "<S><Key name='a' value='user'/></S>");
    Settings settings(_default, _user);
    EXPECT_EQ(settings.GetValue("a"), "user");
    EXPECT_EQ(Content(_user), "<S><Key name='a' value='user'/></S>");
}

TEST_F(SettingsTest, AMissingUserFileIsSeededFromTheDefaultFileWithItsFolders) {
    Settings settings(_default, _user);
    EXPECT_EQ(settings.GetValue("a"), "default");
    Settings seeded(_user);
    EXPECT_EQ(seeded.GetValue("a"), "default");
    EXPECT_EQ(Content(_default), defaultText);
}

TEST_F(SettingsTest, AMissingUserFileIsSeededInAFolderThatExists) {
    std::filesystem::create_directories(_folder / "home/user");
    Settings settings(_default, _user);
    EXPECT_TRUE(std::filesystem::exists(_user));
}

TEST_F(SettingsTest, AnUnreadableUserFileIsAnEmptyDocumentAndStaysAsItIs) {
    _folder.File("home/user/settings.xml", "not XML");
    Settings settings(_default, _user);
    EXPECT_TRUE(settings.IsValid());
    EXPECT_EQ(settings.GetValue("a"), "");
    EXPECT_EQ(Content(_user), "not XML");
}

TEST_F(SettingsTest, WithoutUserFileNothingIsWritten) {
    Settings settings(_default, "");
    settings.Set("a", "changed");
    settings.Write();
    EXPECT_EQ(settings.GetValue("a"), "changed");
    EXPECT_EQ(Content(_default), defaultText);
    EXPECT_EQ(settings.GetSettingsFile(false), "");
}

TEST_F(SettingsTest, MadeFromOneFileThatIsTheDefaultFileAndIsNeverWritten) {
    Settings settings(_default);
    EXPECT_EQ(settings.GetSettingsFile(true), _default);
    EXPECT_EQ(settings.GetSettingsFile(false), "");
    settings.Set("a", "changed");
    settings.Write();
    EXPECT_EQ(Content(_default), defaultText);
}

TEST_F(SettingsTest, IsValidEvenWithoutAnyFile) {
    EXPECT_TRUE(Settings(_folder / "missing").IsValid());
    EXPECT_TRUE(Settings("", "").IsValid());
    EXPECT_TRUE(Settings(_folder / "missing", "").IsValid());
}

TEST_F(SettingsTest, AMissingDefaultFileSeedsAnEmptyUserFile) {
    Settings settings(_folder / "missing", _user);
    EXPECT_THAT(settings.GetKeys(""), IsEmpty());
    EXPECT_THAT(Content(_user), HasSubstr("<kxct:Settings"));
}

TEST_F(SettingsTest, GetSettingsFileGivesThePathsAsTheyWereGiven) {
    Settings settings(_default, _user);
    EXPECT_EQ(settings.GetSettingsFile(true), _default);
    EXPECT_EQ(settings.GetSettingsFile(false), _user);
}

TEST_F(SettingsTest, WriteStoresChangesInTheUserFileOnly) {
    Settings settings(_default, _user);
    settings.Set("a/b", "changed");
    EXPECT_EQ(Settings(_user).GetValue("a/b"), "");
    settings.Write();
    EXPECT_EQ(Settings(_user).GetValue("a/b"), "changed");
    EXPECT_EQ(Content(_default), defaultText);
}

TEST_F(SettingsTest, WriteMakesTheFolderAgain) {
    Settings settings(_default, _user);
    std::filesystem::remove_all(_folder / "home");
    settings.Write();
    EXPECT_EQ(Settings(_user).GetValue("a"), "default");
}

TEST_F(SettingsTest, AFolderThatCannotBeMadeIsPassedOverInSilence) {
    const std::string below = _default + "/below/settings.xml";
    Settings settings(_default, below);
    EXPECT_EQ(settings.GetValue("a"), "default");
    settings.Write();
    EXPECT_FALSE(std::filesystem::exists(below));
    EXPECT_EQ(Content(_default), defaultText);
}

TEST_F(SettingsTest, AUserFileThatCannotBeWrittenIsPassedOverInSilence) {
    std::filesystem::create_directories(_user);
    Settings settings(_default, _user);
    settings.Write();
    EXPECT_TRUE(std::filesystem::is_directory(_user));
}

TEST_F(SettingsTest, GetValueIsTheRawText) {
    Settings settings(_folder.File("raw.xml", "<S><Key name='a' value='~/[HOME]/../x'/></S>"));
    EXPECT_EQ(settings.GetValue("a"), "~/[HOME]/../x");
}

TEST_F(SettingsTest, MissingKeysGiveEmptyResults) {
    Settings settings(_default, _user);
    EXPECT_EQ(settings.GetValue("x"), "");
    EXPECT_EQ(settings.GetValue("a/b"), "");
    EXPECT_EQ(settings.GetPath("x"), "");
    EXPECT_EQ(settings.GetPath("a/b"), "");
    EXPECT_THAT(settings.GetKeys("x"), IsEmpty());
    EXPECT_THAT(settings.GetKeys("/"), IsEmpty());
    EXPECT_THAT(settings.GetLookups("x"), IsEmpty());
    EXPECT_THAT(settings.GetLookups(""), IsEmpty());
}

TEST_F(SettingsTest, KeysAndLookupsAreListed) {
    const Settings settings(_default, _user);
    EXPECT_THAT(settings.GetKeys(""), ElementsAre("a"));
    EXPECT_THAT(settings.GetKeys("a"), ElementsAre("b"));
    EXPECT_THAT(settings.GetLookups("/a/"), ElementsAre("l"));
}

TEST_F(SettingsTest, SetOnANewTopLevelNameChangesNothing) {
    Settings settings(_default, _user);
    settings.Set("new", "v");
    EXPECT_EQ(settings.GetValue("new"), "");
    EXPECT_THAT(settings.GetKeys(""), ElementsAre("a"));
}

TEST_F(SettingsTest, CopiesShareOneDocument) {
    Settings settings(_default);
    // Only one of the copies may be destroyed: these stay until the process ends.
    static auto* copy = new Settings(settings);
    static auto* assigned = new Settings(_default);
    static auto* abandoned = new Settings(*assigned);  // keeps the replaced document reachable
    *assigned = settings;
    copy->Set("a", "shared");
    EXPECT_EQ(settings.GetValue("a"), "shared");
    EXPECT_EQ(assigned->GetValue("a"), "shared");
    EXPECT_EQ(abandoned->GetValue("a"), "default");
    EXPECT_EQ(copy->GetSettingsFile(true), _default);
}

}  // namespace
}  // namespace kxct::test
