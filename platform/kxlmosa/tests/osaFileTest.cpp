#include <gtest/gtest.h>
#include <kxlmosa/osaFile.h>

#include "TemporaryFolder.h"

namespace {

TEST(osaFile, ExistsForAFileAndADirectory) {
    const TemporaryFolder folder;
    folder.MakeFile("a");
    EXPECT_TRUE(osaFile::Exists(folder / "a"));
    EXPECT_TRUE(osaFile::Exists(folder.path()));
    EXPECT_TRUE(osaFile::Exists(folder.path() + "/"));
}

TEST(osaFile, DoesNotExistForWhatIsNotThere) {
    const TemporaryFolder folder;
    folder.MakeFile("a");
    EXPECT_FALSE(osaFile::Exists(folder / "b"));
    EXPECT_FALSE(osaFile::Exists(folder / "a/b"));
    EXPECT_FALSE(osaFile::Exists(""));
    EXPECT_FALSE(osaFile::Exists(kxString(100'000, 'x')));
}

TEST(osaFile, APathWithANulIsNotCutToAnExistingOne) {
    const TemporaryFolder folder;
    folder.MakeFile("a");
    EXPECT_FALSE(osaFile::Exists((folder / "a") + kxString("\0b", 2)));
}

TEST(osaFile, ALinkCountsAsItsTarget) {
    const TemporaryFolder folder;
    folder.MakeFile("a");
    std::filesystem::create_symlink("a", std::string(folder / "good"));
    std::filesystem::create_symlink("missing", std::string(folder / "bad"));
    EXPECT_TRUE(osaFile::Exists(folder / "good"));
    EXPECT_FALSE(osaFile::Exists(folder / "bad"));
}

TEST(osaFile, TakesNamesOfAnyBytes) {
    const TemporaryFolder folder;
    folder.MakeFile("\xff\n \xc3");
    EXPECT_TRUE(osaFile::Exists(folder / "\xff\n \xc3"));
}

}  // namespace
