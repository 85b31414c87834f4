#include <kxct/EntryPoints.h>
#include <kxct/KXCTFramework.h>

#include <cstdlib>

#include "KeptVariable.h"

using kxct::KXCTFramework;
namespace ENVIRONMENT = kxct::ENVIRONMENT;

namespace {

class Installation : public testing::Test {
  protected:
    KeptVariable binDir{ENVIRONMENT::NORVIK_KXE_KX_BIN_DIR};
};

template <class T>
T* SomePointer(int which) {
    static int places[4];
    return reinterpret_cast<T*>(&places[which]);
}

}  // namespace

TEST_F(Installation, WithoutTheVariableEverythingIsEmpty) {
    binDir.Unset();
    EXPECT_EQ(KXCTFramework::GetNorvikHome(), "");
    EXPECT_EQ(KXCTFramework::GetNorvikBinDir(), "");
    EXPECT_EQ(KXCTFramework::GetPlatform(), "");
}

TEST_F(Installation, AnEmptyVariableCountsAsNone) {
    binDir.Set("");
    EXPECT_EQ(KXCTFramework::GetNorvikHome(), "");
    EXPECT_EQ(KXCTFramework::GetNorvikBinDir(), "");
    EXPECT_EQ(KXCTFramework::GetPlatform(), "");
}

TEST_F(Installation, HomeLiesThreeLevelsAboveTheBinaryDirectory) {
    binDir.Set("C:/inst/kx/bin/win64");
    EXPECT_EQ(KXCTFramework::GetNorvikHome(), "C:/inst");
    EXPECT_EQ(KXCTFramework::GetNorvikBinDir(), "C:/inst/kx/bin/win64");
    EXPECT_EQ(KXCTFramework::GetPlatform(), "win64");
}

TEST_F(Installation, HomeComesBackWithForwardSlashes) {
    binDir.Set("C:\\inst\\kx\\bin\\win64");
    EXPECT_EQ(KXCTFramework::GetNorvikHome(), "C:/inst");
    EXPECT_EQ(KXCTFramework::GetNorvikBinDir(), "C:\\inst\\kx\\bin\\win64");
    EXPECT_EQ(KXCTFramework::GetPlatform(), "win64");
}

TEST_F(Installation, APlatformLosesOneFinalLetterD) {
    binDir.Set("/opt/inst/kx/bin/win64d");
    EXPECT_EQ(KXCTFramework::GetPlatform(), "win64");
    binDir.Set("/opt/inst/kx/bin/arm_sdd");
    EXPECT_EQ(KXCTFramework::GetPlatform(), "arm_sd");
}

TEST_F(Installation, AShallowBinaryDirectoryHasNoHome) {
    binDir.Set("kx/bin/linux");
    EXPECT_EQ(KXCTFramework::GetNorvikHome(), "");
}

// A strip takes the character before the separator along; that is how it has to be.
TEST_F(Installation, AStripTakesTwoCharactersForEachSeparator) {
    const struct {
        const char* value;
        const char* stripped;
    } table[] = {{"C:/inst/bin/", "C:/inst/bi"},
                 {"C:/a/b/", "C"},
                 {"/a/", "/"},
                 {"//a/", ""},
                 {"a//", "a"},
                 {"/opt/bin\\", "/opt/bin\\"},
                 {"/opt/bin", "/opt/bin"}};
    for (const auto& [value, stripped] : table) {
        binDir.Set(value);
        kxString read;
        EXPECT_TRUE(
            KXCTFramework::GetEnvironmentVar(ENVIRONMENT::NORVIK_KXE_KX_BIN_DIR, read, true));
        EXPECT_EQ(read, stripped) << value;
        EXPECT_EQ(KXCTFramework::GetNorvikBinDir(), stripped) << value;
    }
}

TEST_F(Installation, AValueOfOneOrTwoCharactersIsNeverStripped) {
    for (const char* value : {"/", "a/", "//"}) {
        binDir.Set(value);
        EXPECT_EQ(KXCTFramework::GetNorvikBinDir(), value);
    }
}

TEST_F(Installation, AStrippedValueOfOneSeparatorEndsTheStrip) {
    binDir.Set("///");
    EXPECT_EQ(KXCTFramework::GetNorvikBinDir(), "/");
}

TEST_F(Installation, PlatformAndHomeAreComputedFromTheStrippedValue) {
    binDir.Set("/opt/inst/kx/bin/linux64x/");
    EXPECT_EQ(KXCTFramework::GetPlatform(), "linux64");
    EXPECT_EQ(KXCTFramework::GetNorvikHome(), "/opt/inst");
}

TEST_F(Installation, NoOtherVariableStandsInForTheBinaryDirectory) {
    binDir.Unset();
    KeptVariable home{ENVIRONMENT::NOVRIK_HOME};
    KeptVariable root{ENVIRONMENT::KX_ROOTDIR};
    home.Set("/opt/inst");
    root.Set("/opt/inst");
    EXPECT_EQ(KXCTFramework::GetNorvikHome(), "");
}

TEST(EnvironmentVariable, WithoutStripComesAsItIs) {
    KeptVariable variable{"KXCT_TEST_VARIABLE"};
    variable.Set("/opt/bin/");
    kxString value;
    EXPECT_TRUE(KXCTFramework::GetEnvironmentVar("KXCT_TEST_VARIABLE", value, false));
    EXPECT_EQ(value, "/opt/bin/");
}

TEST(EnvironmentVariable, MissingAnswersFalse) {
    KeptVariable variable{"KXCT_TEST_VARIABLE"};
    variable.Unset();
    kxString value;
    EXPECT_FALSE(KXCTFramework::GetEnvironmentVar("KXCT_TEST_VARIABLE", value, false));
    EXPECT_FALSE(KXCTFramework::GetEnvironmentVar("KXCT_TEST_VARIABLE", value, true));
    EXPECT_EQ(value, "");
}

// The transposed letters of NOVRIK_HOME are its true name.
TEST(EnvironmentNames, AreTheOnesThatInstallationsSet) {
    EXPECT_STREQ(ENVIRONMENT::NORVIK_KXE_KX_BIN_DIR, "NORVIK_KXE_KX_BIN_DIR");
    EXPECT_STREQ(ENVIRONMENT::ZQA_TEST_UDMRT_TMP_DIR, "ZQA_TEST_UDMRT_TMP_DIR");
    EXPECT_STREQ(ENVIRONMENT::NOVRIK_HOME, "NOVRIK_HOME");
    EXPECT_STREQ(ENVIRONMENT::NORVIK_KXE_KX_ROOTDIR, "NORVIK_KXE_KX_ROOTDIR");
    EXPECT_STREQ(ENVIRONMENT::NORVIK_KXE_UDMRT_DB_DIR, "NORVIK_KXE_UDMRT_DB_DIR");
    EXPECT_STREQ(ENVIRONMENT::NORVIK_KXE_UDMRT_LIB_DIR, "NORVIK_KXE_UDMRT_LIB_DIR");
    EXPECT_STREQ(ENVIRONMENT::NORVIK_LIB_MGR_PATH, "NORVIK_LIB_MGR_PATH");
    EXPECT_STREQ(ENVIRONMENT::NORVIK_KXE_UDMRT_WORKSPACE, "NORVIK_KXE_UDMRT_WORKSPACE");
    EXPECT_STREQ(ENVIRONMENT::KX_PLATFORM, "KX_PLATFORM");
    EXPECT_STREQ(ENVIRONMENT::KX_ROOTDIR, "KX_ROOTDIR");
    EXPECT_STREQ(ENVIRONMENT::UDMRT_HOME, "UDMRT_HOME");
    EXPECT_STREQ(ENVIRONMENT::UDMRT_LOGDIR, "UDMRT_LOGDIR");
}

TEST(Versions, AreListedOldestFirstAndTheLastIsCurrent) {
    EXPECT_THAT(KXCTFramework::GetVersions(), testing::ElementsAre("2017", "2020"));
    EXPECT_EQ(KXCTFramework::GetCurrentVersion(), "2020");
}

TEST(MasterDBManagerRegistry, AnUnknownNameAnswersNull) {
    EXPECT_EQ(KXCTFramework::GetMasterDBManager("nobody"), nullptr);
    EXPECT_EQ(KXCTFramework::GetMasterDBManager("nobody"), nullptr);
}

TEST(MasterDBManagerRegistry, ALaterManagerReplacesAnEarlierOne) {
    auto* first = SomePointer<kxct::MasterDBManager>(0);
    auto* second = SomePointer<kxct::MasterDBManager>(1);
    KXCTFramework::SetMasterDBManager("registry test", first);
    EXPECT_EQ(KXCTFramework::GetMasterDBManager("registry test"), first);
    KXCTFramework::SetMasterDBManager("registry test", second);
    EXPECT_EQ(KXCTFramework::GetMasterDBManager("registry test"), second);
    KXCTFramework::SetMasterDBManager("registry test", nullptr);
    EXPECT_EQ(KXCTFramework::GetMasterDBManager("registry test"), nullptr);
}

TEST(BrowserManager, TheFirstOneStaysForTheProcess) {
    auto* first = SomePointer<ui::browser::IManager>(2);
    auto* second = SomePointer<ui::browser::IManager>(3);
    EXPECT_EQ(KXCTFramework::GetUiBrowserManager(), nullptr);
    Kxct_SetUIBrowserManager(first);
    EXPECT_EQ(KXCTFramework::GetUiBrowserManager(), first);
    KXCTFramework::SetUIBrowserManager(second);
    EXPECT_EQ(KXCTFramework::GetUiBrowserManager(), first);
    Kxct_SetUIBrowserManager(second);
    Kxct_SetUIBrowserManager(nullptr);
    EXPECT_EQ(KXCTFramework::GetUiBrowserManager(), first);
}
