// How Settings turns values into paths: variables, home folder, relative paths.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/Settings.h>
#include <kxlmcore/kxLMUtls.h>
#include <stdlib.h>

#include <boost/filesystem/exception.hpp>

#include "TemporaryFolder.h"

namespace kxct::test {
namespace {

class ExpandingSettings : public Settings {
  public:
    using Settings::_ReplaceEnvVariables;
    using Settings::Settings;
};

// Variables of the environment for the length of a test.
class Variable {
  public:
    Variable(std::string name, const std::string& value) : _name(std::move(name)) {
        const char* old = getenv(_name.c_str());
        _wasSet = old != nullptr;
        _old = old ? old : "";
        setenv(_name.c_str(), value.c_str(), 1);
    }
    ~Variable() {
        if (_wasSet) {
            setenv(_name.c_str(), _old.c_str(), 1);
        } else {
            unsetenv(_name.c_str());
        }
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

  private:
    std::string _name;
    std::string _old;
    bool _wasSet;
};

class SettingsPathTest : public ::testing::Test {
  protected:
    SettingsPathTest() {
        unsetenv("KXCT_TEST_UNSET");
        _folder.File("conf/near.txt", "");
        _folder.File("far/file.txt", "");
    }

    // GetPath of a key with this value; the settings lie in "conf".
    std::string Path(const std::string& value) {
        const std::string file =
            _folder.File("conf/settings.xml", "<S><Key name='k' value='" + value + "'/></S>");
        return Settings(file).GetPath("k");
    }

    // The expanded text, or "(false)".
    static std::string Expand(const std::string& text) {
        const ExpandingSettings settings("", "");
        kxString expanded = text;
        return settings._ReplaceEnvVariables(expanded) ? expanded : "(false)";
    }

    TemporaryFolder _folder;
};

TEST_F(SettingsPathTest, ARelativePathStartsAtTheFolderOfTheDefaultFile) {
    EXPECT_EQ(Path("near.txt"), _folder / "conf/near.txt");
    EXPECT_EQ(Path("../far/file.txt"), _folder / "far/file.txt");
}

TEST_F(SettingsPathTest, TheDefaultFileCountsAlsoWhenTheUserFileWasRead) {
    const std::string user =
        _folder.File("user/settings.xml", "<S><Key name='k' value='near.txt'/></S>");
    const Settings settings(_folder / "conf/settings.xml", user);
    EXPECT_EQ(settings.GetPath("k"), _folder / "conf/near.txt");
}

TEST_F(SettingsPathTest, AnAbsolutePathIsResolvedToo) {
    EXPECT_EQ(Path(_folder / "conf/../far/./file.txt"), _folder / "far/file.txt");
    std::filesystem::create_symlink(_folder / "far", _folder / "link");
    EXPECT_EQ(Path(_folder / "link/file.txt"), _folder / "far/file.txt");
}

TEST_F(SettingsPathTest, ATargetThatDoesNotExistIsAnError) {
    EXPECT_THROW(Path("missing.txt"), boost::filesystem::filesystem_error);
    EXPECT_THROW(Path(_folder / "missing/file.txt"), boost::filesystem::filesystem_error);
}

TEST_F(SettingsPathTest, APathWithTwoLeadingSlashesIsTakenAsItStands) {
    EXPECT_EQ(Path("//host/share/missing/../x"), "//host/share/missing/../x");
}

TEST_F(SettingsPathTest, AnEmptyValueIsTheFolderOfTheDefaultFile) {
    EXPECT_EQ(Path(""), _folder / "conf");
}

TEST_F(SettingsPathTest, AVariableIsExpanded) {
    const Variable variable("KXCT_TEST_DIR", _folder / "far");
    EXPECT_EQ(Path("[KXCT_TEST_DIR]/file.txt"), _folder / "far/file.txt");
}

TEST_F(SettingsPathTest, AnUnsetVariableGivesAnEmptyPath) {
    EXPECT_EQ(Path("[KXCT_TEST_UNSET]/x"), "");
    const Variable variable("KXCT_TEST_DIR", _folder / "far");
    EXPECT_EQ(Path("[KXCT_TEST_DIR]/[KXCT_TEST_UNSET]"), "");
}

TEST_F(SettingsPathTest, EmptyBracketsNameNoVariable) {
    EXPECT_EQ(Path("[]"), "");
}

TEST_F(SettingsPathTest, TheFirstTildeAnywhereIsTheHomeFolder) {
    const Variable home("HOME", _folder / "far");
    ASSERT_EQ(kxLMUtls::GetUserDirectory(), _folder / "far");
    EXPECT_EQ(Path("~/file.txt"), _folder / "far/file.txt");
    EXPECT_EQ(Path("//x/~"), "//x/" + (_folder / "far"));
    EXPECT_EQ(Path("//x~y~z"), "//x" + (_folder / "fary~z"));
}

TEST_F(SettingsPathTest, ATildeOfAVariableIsReplacedToo) {
    const Variable home("HOME", _folder / "far");
    const Variable variable("KXCT_TEST_DIR", "~/file.txt");
    EXPECT_EQ(Path("[KXCT_TEST_DIR]"), _folder / "far/file.txt");
}

TEST_F(SettingsPathTest, ADefaultFileWithoutFolderMeansTheCurrentFolder) {
    const std::string user = _folder.File("u.xml", "<S><Key name='k' value='.'/></S>");
    const Settings settings("default.xml", user);
    EXPECT_EQ(settings.GetPath("k"), std::filesystem::canonical(".").string());
}

TEST_F(SettingsPathTest, SeparatorsInAPathKeyDoNotMatter) {
    const std::string file =
        _folder.File("conf/s.xml", "<S><Key name='a'><Key name='b' value='near.txt'/></Key></S>");
    const Settings settings(file);
    EXPECT_EQ(settings.GetPath("/a//b/"), _folder / "conf/near.txt");
}

TEST_F(SettingsPathTest, ValuesAreExpandedAgain) {
    const Variable outer("KXCT_TEST_OUTER", "<[KXCT_TEST_INNER]>");
    const Variable inner("KXCT_TEST_INNER", "in");
    EXPECT_EQ(Expand("[KXCT_TEST_OUTER][KXCT_TEST_INNER]"), "<in>in");
}

TEST_F(SettingsPathTest, ATokenMayBePutTogetherFromValues) {
    const Variable part("KXCT_TEST_PART", "KXCT_TEST_WHOLE");
    const Variable whole("KXCT_TEST_WHOLE", "w");
    EXPECT_EQ(Expand("[[KXCT_TEST_PART]]"), "w");
}

TEST_F(SettingsPathTest, NamesAreOfWordCharactersAndDots) {
    const Variable dotted("KXCT.TEST.DOT", "d");
    EXPECT_EQ(Expand("a[KXCT.TEST.DOT]b"), "adb");
    for (const char* text :
         {"[", "]", "a[b", "a]b", "[A B]", "[A-B]", "[A/B]", "][", "", "plain"}) {
        EXPECT_EQ(Expand(text), text);
    }
}

TEST_F(SettingsPathTest, AVariableMayBeSetAndEmpty) {
    const Variable empty("KXCT_TEST_EMPTY", "");
    EXPECT_EQ(Expand("a[KXCT_TEST_EMPTY]b"), "ab");
}

TEST_F(SettingsPathTest, ValuesAreNoPatterns) {
    const Variable variable("KXCT_TEST_DOLLAR", "$1\\1&(.*)");
    EXPECT_EQ(Expand("[KXCT_TEST_DOLLAR]"), "$1\\1&(.*)");
}

TEST_F(SettingsPathTest, AnUnsetVariableLeavesTheTextAsFarAsItGot) {
    const Variable variable("KXCT_TEST_SET", "s");
    const ExpandingSettings settings("", "");
    kxString text = "[KXCT_TEST_SET][KXCT_TEST_UNSET][KXCT_TEST_SET]";
    EXPECT_FALSE(settings._ReplaceEnvVariables(text));
    EXPECT_EQ(text, "s[KXCT_TEST_UNSET][KXCT_TEST_SET]");
}

TEST_F(SettingsPathTest, VariablesThatReferToEachOtherWithoutEndAnswerFalse) {
    const Variable self("KXCT_TEST_SELF", "[KXCT_TEST_SELF]");
    EXPECT_EQ(Expand("[KXCT_TEST_SELF]"), "(false)");
    const Variable growing("KXCT_TEST_GROW", "xxxxxxxx[KXCT_TEST_GROW][KXCT_TEST_GROW]");
    EXPECT_EQ(Expand("[KXCT_TEST_GROW]"), "(false)");
    const Variable large("KXCT_TEST_LARGE", std::string(60000, 'x') + "[KXCT_TEST_LARGE]");
    EXPECT_EQ(Expand("[KXCT_TEST_LARGE]"), "(false)");
}

}  // namespace
}  // namespace kxct::test
