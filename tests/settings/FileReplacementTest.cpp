#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ChildProcess.h"
#include "TemporaryFolder.h"
#include "settings/_private/FileReplacement.h"

namespace kxct::test {
namespace {

bool Replace(const std::string& path, const std::string& content) {
    FileReplacement file{boost::filesystem::path(path)};
    file.Stream() << content;
    return file.Commit();
}

mode_t Mode(const std::string& path) {
    struct stat file {};
    EXPECT_EQ(stat(path.c_str(), &file), 0);
    return file.st_mode & 07777U;
}

TEST(FileReplacement, ANewFileHasTheContentAndNothingElseStaysBehind) {
    const TemporaryFolder folder;
    EXPECT_TRUE(Replace(folder / "new", "content"));
    EXPECT_EQ(Content(folder / "new"), "content");
    EXPECT_EQ(folder.Entries(), 1U);
}

TEST(FileReplacement, AShorterContentLeavesNoRestOfTheOldOne) {
    const TemporaryFolder folder;
    const std::string path = folder.File("file", "a long old content");
    EXPECT_TRUE(Replace(path, "new"));
    EXPECT_EQ(Content(path), "new");
    EXPECT_EQ(folder.Entries(), 1U);
}

TEST(FileReplacement, UntilCommitTheOldContentStands) {
    const TemporaryFolder folder;
    const std::string path = folder.File("file", "old");
    {
        FileReplacement file{boost::filesystem::path(path)};
        file.Stream() << "new" << std::flush;
        EXPECT_EQ(Content(path), "old");
    }
    EXPECT_EQ(Content(path), "old");
    EXPECT_EQ(folder.Entries(), 1U);
}

TEST(FileReplacement, TheModeOfTheOldFileIsKept) {
    const TemporaryFolder folder;
    const std::string path = folder.File("file", "old");
    ASSERT_EQ(chmod(path.c_str(), 0640), 0);
    EXPECT_TRUE(Replace(path, "new"));
    EXPECT_EQ(Mode(path), 0640U);
}

TEST(FileReplacement, ALinkStaysAndItsFileIsReplaced) {
    const TemporaryFolder folder;
    const std::string path = folder.File("real/file", "old");
    ASSERT_EQ(symlink("real/file", (folder / "link").c_str()), 0);
    EXPECT_TRUE(Replace(folder / "link", "new"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
    EXPECT_EQ(Content(path), "new");
}

TEST(FileReplacement, ALinkToNothingMakesItsFile) {
    const TemporaryFolder folder;
    ASSERT_EQ(symlink("target", (folder / "link").c_str()), 0);
    EXPECT_TRUE(Replace(folder / "link", "new"));
    EXPECT_TRUE(std::filesystem::is_symlink(folder / "link"));
    EXPECT_EQ(Content(folder / "target"), "new");
}

TEST(FileReplacement, AFullDeviceIsAFailureAndStaysADevice) {
    EXPECT_FALSE(Replace("/dev/full", "content"));
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/full"));
}

TEST(FileReplacement, AFolderAndAPathBelowAFileAreFailures) {
    const TemporaryFolder folder;
    const std::string file = folder.File("file", "old");
    EXPECT_FALSE(Replace(folder.Path(), "content"));
    EXPECT_FALSE(Replace(file + "/below", "content"));
    EXPECT_FALSE(Replace(folder / "missing/file", "content"));
    EXPECT_FALSE(Replace("", "content"));
    EXPECT_EQ(Content(file), "old");
    EXPECT_EQ(folder.Entries(), 1U);
}

// A limit of the size of files stands in for a full disk: writes fail after some bytes.
TEST(FileReplacement, OutOfSpaceTheOldContentStands) {
    const TemporaryFolder folder;
    const std::string path = folder.File("file", "old");
    for (const std::size_t size : {101U, 5000U, 200000U}) {
        EXPECT_TRUE(InChild([&] {
            signal(SIGXFSZ, SIG_IGN);
            const rlimit limit{100, 100};
            return setrlimit(RLIMIT_FSIZE, &limit) == 0 && !Replace(path, std::string(size, 'x'));
        }));
        EXPECT_EQ(Content(path), "old");
        EXPECT_EQ(folder.Entries(), 1U);
    }
}

// Permissions bind everybody but root, who becomes nobody. For child processes.
bool IsBound() {
    return geteuid() != 0 || setuid(65534) == 0;
}

TEST(FileReplacement, AWritableFileInAFolderThatTakesNoOtherIsWrittenDirectly) {
    const TemporaryFolder folder;
    const std::string path = folder.File("file", "old");
    ASSERT_EQ(chmod(path.c_str(), 0666), 0);
    ASSERT_EQ(chmod(folder.Path().c_str(), 0555), 0);
    EXPECT_TRUE(InChild([&] { return IsBound() && Replace(path, "new"); }));
    EXPECT_EQ(Content(path), "new");
    EXPECT_EQ(chmod(folder.Path().c_str(), 0755), 0);
}

TEST(FileReplacement, AWriteProtectedFileStaysOneInAFolderThatIsNot) {
    const TemporaryFolder folder;
    const std::string path = folder.File("file", "old");
    ASSERT_EQ(chmod(path.c_str(), 0444), 0);
    ASSERT_EQ(chmod(folder.Path().c_str(), 0777), 0);
    EXPECT_TRUE(InChild(
        [&] { return IsBound() && access(path.c_str(), R_OK) == 0 && !Replace(path, "new"); }));
    EXPECT_EQ(Content(path), "old");
    EXPECT_EQ(folder.Entries(), 1U);
}

}  // namespace
}  // namespace kxct::test
