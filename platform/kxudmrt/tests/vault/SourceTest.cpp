// Files that can't be read as they are at one moment.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "Support.h"
#include "vault/Vault.h"

namespace kxudm::vault {
namespace {

using testing::AllOf;
using testing::HasSubstr;

class SourceTest : public testing::Test {
  protected:
    // A file of some age, so that a change alters its time whatever the clock's resolution.
    std::string OldFile(const std::string& content) const {
        std::string path = folder_.Write("source", content);
        const timespec times[2] = {{1600000000, 0}, {1600000000, 0}};
        EXPECT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
        return path;
    }

    // Does something to the file once its first bytes have been read, and expects that it is
    // refused by both ways in, with nothing left. Large and small, plain and compressed.
    void ExpectRefused(const std::function<void(const std::string& path)>& change,
                       const std::string& expected) {
        for (const std::string& content :
             {Deck(5000), Noise(5000), Deck(3 * kBlock), Noise(3 * kBlock)}) {
            const std::string path = OldFile(content);
            Arm(path, change);
            Vault vault(folder_.File("vault"), layer_);
            EXPECT_EQ(ErrorOf([&] { vault.Add(path); }), "'" + path + "' " + expected);
            OldFile(content);
            Arm(path, change);
            Batch batch(vault);
            EXPECT_EQ(ErrorOf([&] { batch.Add(path); }), "'" + path + "' " + expected);
            EXPECT_EQ(batch.Count(), 0U);
            EXPECT_EQ(CountFiles(folder_.File("vault")), 0U);
        }
    }

    void Arm(const std::string& path, const std::function<void(const std::string&)>& change) {
        layer_.before = [path, change, reads = 0](const std::string& call,
                                                  const std::string& where) mutable {
            if (call == "Read" && where == path && ++reads == 2) {
                change(path);
            }
        };
    }

    Folder folder_;
    MeddlingLayer layer_;
};

constexpr char kChanged[] = "was changed while it was read; try again once nobody writes to it";
constexpr char kGone[] =
    "was removed or replaced while it was read; try again once nobody changes it";

TEST_F(SourceTest, AFileThatGrowsWhileItIsReadIsRefused) {
    ExpectRefused([](const std::string& path) { std::ofstream(path, std::ios::app) << "more"; },
                  kChanged);
}

TEST_F(SourceTest, AFileThatShrinksWhileItIsReadIsRefused) {
    ExpectRefused([](const std::string& path) { std::filesystem::resize_file(path, 100); },
                  kChanged);
}

TEST_F(SourceTest, AFileThatIsEmptiedWhileItIsReadIsRefused) {
    ExpectRefused([](const std::string& path) { std::filesystem::resize_file(path, 0); }, kChanged);
}

TEST_F(SourceTest, AFileOfTheSameSizeThatIsWrittenToWhileItIsReadIsRefused) {
    ExpectRefused(
        [](const std::string& path) {
            std::fstream(path, std::ios::in | std::ios::out) << "changed";
        },
        kChanged);
}

TEST_F(SourceTest, AChangeThatHidesItsTimeIsNoticed) {
    ExpectRefused(
        [](const std::string& path) {
            struct stat before {};
            struct stat after {};
            ASSERT_EQ(stat(path.c_str(), &before), 0);
            do {
                std::fstream(path, std::ios::in | std::ios::out) << "changed";
                const timespec times[2] = {{1600000000, 0}, {1600000000, 0}};
                ASSERT_EQ(utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
                ASSERT_EQ(stat(path.c_str(), &after), 0);
            } while (after.st_ctim.tv_sec == before.st_ctim.tv_sec &&
                     after.st_ctim.tv_nsec == before.st_ctim.tv_nsec);
        },
        kChanged);
}

TEST_F(SourceTest, AFileThatVanishesWhileItIsReadIsRefused) {
    ExpectRefused([](const std::string& path) { std::filesystem::remove(path); }, kGone);
}

TEST_F(SourceTest, AFileThatIsReplacedWhileItIsReadIsRefused) {
    ExpectRefused(
        [](const std::string& path) {
            std::ofstream(path + ".new") << "new";
            std::filesystem::rename(path + ".new", path);
        },
        kGone);
}

TEST_F(SourceTest, AFileThatGrowsAsFastAsItIsReadComesToAnEnd) {
    const std::string path = OldFile(Noise(kBlock));
    int reads = 0;
    layer_.before = [&](const std::string& call, const std::string& where) {
        if (call == "Read" && where == path) {
            ASSERT_LT(++reads, 1000);
            std::ofstream(path, std::ios::app) << Noise(kBlock);
        }
    };
    Vault vault(folder_.File("vault"), layer_);
    EXPECT_EQ(ErrorOf([&] { vault.Add(path); }), "'" + path + "' " + kChanged);
    EXPECT_LT(reads, 10);
}

TEST_F(SourceTest, AMissingFileIsAnError) {
    Vault vault(folder_.File("vault"));
    const std::string path = folder_.File("nothing");
    EXPECT_EQ(ErrorOf([&] { vault.Add(path); }),
              "'" + path + "' was not stored: '" + path +
                  "' can't be read: No such file or directory; name one that exists");
    EXPECT_FALSE(Exists(folder_.File("vault")));
}

TEST_F(SourceTest, AnUnreadableFileIsAnErrorThatSaysWhatIsMissing) {
    const std::string path = folder_.Write("source", "x");
    std::filesystem::permissions(path, std::filesystem::perms::none);
    EXPECT_EQ(AsNobody([&] {
                  Vault vault(folder_.File("vault"));
                  return ErrorOf([&] { vault.Add(path); });
              }),
              "'" + path + "' was not stored: '" + path +
                  "' can't be read: Permission denied; give this user the permission for the file "
                  "and its folder");
    EXPECT_EQ(CountFiles(folder_.File("vault")), 0U);
}

TEST_F(SourceTest, AFolderIsNoFile) {
    Vault vault(folder_.File("vault"));
    EXPECT_THAT(ErrorOf([&] { vault.Add(folder_.Path()); }), HasSubstr("Is a directory"));
}

TEST_F(SourceTest, APipeIsRefusedAndNotWaitedFor) {
    Vault vault(folder_.File("vault"));
    const std::string pipe = folder_.File("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_EQ(ErrorOf([&] { vault.Add(pipe); }),
              "'" + pipe + "' can't be stored: it is a device, pipe or socket; name a file");
    EXPECT_THAT(ErrorOf([&] { vault.Add("/dev/zero"); }), HasSubstr("it is a device"));
}

TEST_F(SourceTest, AFileWhoseSizeTheSystemDoesNotTellIsRefused) {
    Vault vault(folder_.File("vault"));
    EXPECT_THAT(ErrorOf([&] { vault.Add("/proc/self/status"); }), HasSubstr("was changed"));
}

TEST_F(SourceTest, ASymbolicLinkStandsForItsFile) {
    Vault vault(folder_.File("vault"));
    folder_.Write("source", "abc");
    std::filesystem::create_symlink("source", folder_.File("link"));
    EXPECT_EQ(vault.Add(folder_.File("link")).size, 3U);
    std::filesystem::create_symlink("loop", folder_.File("loop"));
    EXPECT_THAT(ErrorOf([&] { vault.Add(folder_.File("loop")); }), HasSubstr("symbolic links"));
}

TEST_F(SourceTest, APathWithANulIsRefused) {
    Vault vault(folder_.File("vault"));
    const std::string path = folder_.Write("source", "x") + std::string("\0.inp", 5);
    EXPECT_THAT(ErrorOf([&] { vault.Add(path); }), HasSubstr("Invalid argument"));
}

}  // namespace
}  // namespace kxudm::vault
