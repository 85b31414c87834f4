#include <gmock/gmock.h>
#include <kxlmosa/osaDirectory.h>
#include <sys/stat.h>

#include <cerrno>

#include "TemporaryFolder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

bool IsDirectory(const kxString& path) {
    return std::filesystem::is_directory(std::string(path));
}

TEST(osaDirectory, ListsFilesInByteOrderWithoutDirectories) {
    const TemporaryFolder folder;
    for (const char* name : {"b.ldb", "B", ".hidden", "a\xff", "a b"}) {
        folder.MakeFile(name);
    }
    std::filesystem::create_directory(std::string(folder / "vault"));
    std::filesystem::create_directory_symlink("vault", std::string(folder / "tovault"));
    std::filesystem::create_symlink("B", std::string(folder / "toB"));
    EXPECT_THAT(osaDirectory::GetFileNames(folder.path()),
                ElementsAre(".hidden", "B", "a b", "a\xff", "b.ldb", "toB"));
}

TEST(osaDirectory, ListsNothingForAMissingOrEmptyDirectoryOrAFile) {
    const TemporaryFolder folder;
    EXPECT_THAT(osaDirectory::GetFileNames(folder.path()), IsEmpty());
    folder.MakeFile("a");
    EXPECT_THAT(osaDirectory::GetFileNames(folder / "missing"), IsEmpty());
    EXPECT_THAT(osaDirectory::GetFileNames(folder / "a"), IsEmpty());
    EXPECT_THAT(osaDirectory::GetFileNames(""), IsEmpty());
    EXPECT_THAT(osaDirectory::GetFileNames(folder.path() + kxString("\0x", 2)), IsEmpty());
}

TEST(osaDirectory, CreatesADirectoryWithItsParents) {
    const TemporaryFolder folder;
    EXPECT_EQ(osaDirectory::Create(folder / "a/b//c\xff/", 4095, true), 0);
    EXPECT_TRUE(IsDirectory(folder / "a/b/c\xff"));
}

TEST(osaDirectory, CreateOfAnExistingDirectorySucceeds) {
    const TemporaryFolder folder;
    EXPECT_EQ(osaDirectory::Create(folder.path(), 4095, true), 0);
    EXPECT_EQ(osaDirectory::Create(folder.path(), 4095, false), 0);
    EXPECT_EQ(osaDirectory::Create("/", 4095, true), 0);
    EXPECT_EQ(osaDirectory::Create(".", 4095, true), 0);
}

TEST(osaDirectory, CreateWithoutParentsTellsWhenTheyAreMissing) {
    const TemporaryFolder folder;
    EXPECT_EQ(osaDirectory::Create(folder / "a/b", 4095, false), ENOENT);
    EXPECT_FALSE(IsDirectory(folder / "a"));
    EXPECT_EQ(osaDirectory::Create(folder / "a", 4095, false), 0);
}

TEST(osaDirectory, CreateTellsWhatFailed) {
    const TemporaryFolder folder;
    folder.MakeFile("file");
    EXPECT_EQ(osaDirectory::Create(folder / "file", 4095, true), EEXIST);
    EXPECT_EQ(osaDirectory::Create(folder / "file/a/b", 4095, true), ENOTDIR);
    EXPECT_EQ(osaDirectory::Create("", 4095, true), ENOENT);
    EXPECT_EQ(osaDirectory::Create(folder / kxString(300, 'x'), 4095, true), ENAMETOOLONG);
    EXPECT_EQ(osaDirectory::Create((folder / "n") + kxString("\0x", 2), 4095, true), EINVAL);
    EXPECT_FALSE(IsDirectory(folder / "n"));
}

TEST(osaDirectory, CreateSetsPermissionsAndNoOtherModeBits) {
    const TemporaryFolder folder;
    ASSERT_EQ(osaDirectory::Create(folder / "p/q", 0550 | 07000, true), 0);
    const mode_t mask = ::umask(0);
    ::umask(mask);
    struct stat status;
    ASSERT_EQ(::stat((folder / "p/q").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0550 & ~mask);
    ASSERT_EQ(::stat((folder / "p").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0750 & ~mask);
}

}  // namespace
