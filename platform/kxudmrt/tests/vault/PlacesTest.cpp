// Where a vault may lie: full disks, other file systems, folders that can't be written.
#include <fcntl.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "SmallDisk.h"
#include "Support.h"
#include "vault/Vault.h"

namespace kxudm::vault {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

class PlacesTest : public testing::Test {
  protected:
    Folder folder_;
};

constexpr std::uint64_t kDisk = std::uint64_t{1} << 20;

// Fails as a disk of kDisk bytes does that holds nothing but the folder.
class SmallDiskLayer final : public MeddlingLayer {
  public:
    explicit SmallDiskLayer(const std::string& folder) {
        mostBytes = 4096;
        before = [folder](const std::string& call, const std::string& path) {
            if (call == "Write" && Used(folder) + 4096 > kDisk) {
                throw FileError(ENOSPC, "written", path);
            }
        };
    }

  private:
    static std::uint64_t Used(const std::string& folder) {
        std::uint64_t used = 0;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            used += entry.is_directory() ? 0 : entry.file_size();
        }
        return used;
    }
};

// Fills the disk in every way in; answers the errors and what is left.
std::string FillDisk(const Folder& folder, const std::string& disk, FileLayer& layer) {
    Vault vault(disk + "/vault", layer);
    const std::string medium = folder.File("medium");
    vault.Add(folder.File("small"));
    std::string errors = ErrorOf([&] { vault.Add(folder.File("large")); }) + "\n";
    // In the middle of a batch, and a file that would fit by itself.
    {
        Batch batch(vault);
        batch.Add(medium);
        errors += ErrorOf([&] { batch.Add(folder.File("other")); }) + "\n";
    }
    vault.Add(medium);
    errors +=
        ErrorOf([&] { vault.Retrieve(vault.Add(folder.File("small")).hash, disk + "/fits"); });
    const std::string hash = vault.Add(medium).hash;
    errors += ErrorOf([&] { vault.Retrieve(hash, disk + "/back"); }) + "\n";
    errors += Exists(disk + "/back") ? "a part was retrieved\n" : "";
    errors += Problems(vault);
    return errors + std::to_string(Temporaries(vault.Directory())) + " temporaries, " +
           std::to_string(CountFiles(disk)) + " files";
}

TEST_F(PlacesTest, AFullDiskIsAnErrorAndWhatWasThereStaysWhole) {
    const std::string disk = folder_.File("disk");
    std::filesystem::create_directory(disk);
    folder_.Write("small", Noise(1000));
    folder_.Write("medium", Noise(700000));
    folder_.Write("other", Noise(700000, 2));
    folder_.Write("large", Noise(3 * kBlock));
    const std::string reason = ": No space left on device; free some space there, then try again\n";
    const auto notStored = [&](const std::string& name) {
        return "'" + folder_.File(name) + "' was not stored: '" + disk +
               "/vault/tmp/.*' can't be written" + reason;
    };
    const auto expected = testing::MatchesRegex(
        notStored("large") + notStored("other") + "'" + disk + "/back' was not retrieved: '" +
        disk + "/.part-.*' can't be written" + reason + "0 temporaries, 3 files");

    // A real one where this process may mount it, and in any case one that only says so.
    constexpr char kCannotMount[] = "can't mount";
    const std::string real = InChild([&]() -> std::string {
        if (!test::SeeMountsOfItsOwn() ||
            mount("none", disk.c_str(), "tmpfs", 0, "size=1m,mode=0777") != 0) {
            return kCannotMount;
        }
        return FillDisk(folder_, disk, MachineFiles());
    });
    if (real != kCannotMount) {
        EXPECT_THAT(real, expected);
    }
    SmallDiskLayer layer(disk);
    EXPECT_THAT(FillDisk(folder_, disk, layer), expected);
}

TEST_F(PlacesTest, ALimitOfFileSizesIsAnErrorThatLeavesNothing) {
    const std::string large = folder_.Write("large", Noise(3 * kBlock));
    const std::string deck = folder_.Write("deck", Deck(3 * kBlock));
    const std::string directory = folder_.File("vault");
    const std::string answer = InChild([&]() -> std::string {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{1 << 20, 1 << 20};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) {
            return "no limit";
        }
        Vault vault(directory);
        vault.Add(deck);
        return ErrorOf([&] { vault.Add(large); }) + Problems(vault);
    });
    EXPECT_THAT(answer, StartsWith("'" + large + "' was not stored: "));
    EXPECT_THAT(answer,
                HasSubstr("can't be written: File too large; its file system or a limit of this "
                          "process allows no larger file"));
    EXPECT_EQ(CountFiles(directory), 1U);
}

TEST_F(PlacesTest, TheVaultMayLieOnAnotherFileSystemThanTheFiles) {
    struct stat here {};
    struct stat there {};
    ASSERT_EQ(stat(folder_.Path().c_str(), &here), 0);
    ASSERT_EQ(stat("/dev/shm", &there), 0);
    // Where temporary files lie in memory themselves, the tests' own folder is on another one.
    const Folder elsewhere(here.st_dev != there.st_dev ? "/dev/shm" : ".");
    ASSERT_EQ(stat(elsewhere.Path().c_str(), &there), 0);
    ASSERT_NE(here.st_dev, there.st_dev) << "set TMPDIR to a folder that is not in /dev/shm";
    Vault vault(elsewhere.File("vault"));
    Batch batch(vault);
    for (const std::string& content : {Deck(5000), Noise(2 * kBlock)}) {
        const std::string path = folder_.Write("file", content);
        const Stored stored = vault.Add(path);
        EXPECT_TRUE(batch.Add(path).wasThere);
        vault.Retrieve(stored.hash, folder_.File("back"), {.overwrite = true, .flush = true});
        EXPECT_TRUE(ReadFile(folder_.File("back")) == content);
    }
    batch.Add(folder_.Write("file", Deck(7000)));
    batch.Commit();
    EXPECT_EQ(Problems(vault), "");
}

TEST_F(PlacesTest, AReadOnlyVaultGivesItsContentsAndTakesNone) {
    const std::string directory = folder_.File("vault");
    const std::string known = folder_.Write("known", Deck(5000));
    const std::string unknown = folder_.Write("unknown", Deck(6000));
    Vault vault(directory);
    const Stored stored = vault.Add(known);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
        std::filesystem::permissions(entry, std::filesystem::perms(0555));
    }
    std::filesystem::permissions(directory, std::filesystem::perms(0555));
    const std::string answer = AsNobody([&] {
        Vault readOnly(directory);
        readOnly.Retrieve(stored.hash, folder_.File("back"));
        Batch batch(readOnly);
        std::string errors = ErrorOf([&] { readOnly.Add(known); });
        errors += ErrorOf([&] { readOnly.Add(unknown); }) + "\n";
        errors += ErrorOf([&] { batch.Add(unknown); }) + "\n";
        errors += ErrorOf([&] { readOnly.Remove(stored.hash); }) + "\n";
        return errors + Problems(readOnly);
    });
    const std::string reason =
        ": Permission denied; give this user the permission for the file and its folder\n";
    const std::string notStored =
        "'" + unknown + "' was not stored: '" + directory + "/tmp/.part-.*' can't be made" + reason;
    EXPECT_THAT(answer,
                testing::MatchesRegex(notStored + notStored + "'.*' can't be removed" + reason));
    EXPECT_TRUE(ReadFile(folder_.File("back")) == Deck(5000));
    EXPECT_EQ(CountFiles(directory), 1U);
}

TEST_F(PlacesTest, ATargetFolderThatCannotBeWrittenIsAnError) {
    const std::string target = folder_.File("closed");
    std::filesystem::create_directory(target);
    std::filesystem::permissions(target, std::filesystem::perms(0555));
    Vault vault(folder_.File("vault"));
    const std::string hash = vault.Add(folder_.Write("file", "x")).hash;
    EXPECT_THAT(AsNobody([&] { return ErrorOf([&] { vault.Retrieve(hash, target + "/back"); }); }),
                StartsWith("'" + target + "/back' was not retrieved: "));
    EXPECT_EQ(CountFiles(target), 0U);
}

}  // namespace
}  // namespace kxudm::vault
