// Where the contents of documents lie.
#include <sys/stat.h>

#include <fstream>

#include "Files.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace fs = std::filesystem;

class FilesInVaults : public Files {
  protected:
    std::string Base(const std::string& name) const { return library.BaseDirectory() + "/" + name; }
    std::string PathOf(const UDMItemHandle& handle, std::size_t index) {
        return Documents(ann, handle).at(index).GetPath();
    }
};

TEST_F(FilesInVaults, FurtherFilesGoWhereSetVaultSaysAndEarlierOnesAreFound) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    ann->SetVault(part, Base("fast/disk"));
    Put(part, "b", "2");
    ann->SetVault(part, Base("slow/"));
    Put(part, "c", "3");
    EXPECT_THAT(PathOf(part, 0), StartsWith(Base("vault/")));
    EXPECT_THAT(PathOf(part, 1), StartsWith(Base("fast/disk/")));
    EXPECT_THAT(PathOf(part, 2), StartsWith(Base("slow/")));
    EXPECT_THAT(Contents(part), ElementsAre("a=1", "b=2", "c=3"));
    PutAgain(part, "b", "22");
    EXPECT_THAT(PathOf(part, 1), StartsWith(Base("slow/")));
    EXPECT_THAT(Contents(library.Open("ann"), part), ElementsAre("a=1", "b=22", "c=3"));
}

TEST_F(FilesInVaults, OtherEntitiesKeepTheirs) {
    const UDMItemHandle part = Part();
    const UDMItemHandle other = Part("Tyre");
    ann->SetVault(part, Base("fast"));
    Put(other, "a", "1");
    EXPECT_THAT(PathOf(other, 0), StartsWith(Base("vault/")));
    EXPECT_FALSE(Exists(Base("fast")));
}

TEST_F(FilesInVaults, ABranchHasTheVaultOfItsOrigin) {
    const UDMItemHandle part = Part();
    ann->SetVault(part, Base("fast"));
    Publish(ann, part);
    Publish(ann, CheckOut(ann, part));
    ann->Checkout(ann->GetEntity(At(part, 1)), "");
    const UDMItemHandle branch =
        ann->GetEntity(ann->GetHistory(Newest(ann, part))->GetBranchList().at(0)->GetBaseUID());
    Put(branch, "a", "1");
    EXPECT_THAT(PathOf(branch, 0), StartsWith(Base("fast/")));
}

TEST_F(FilesInVaults, TheBaseDirectoryItselfStandsForTheCommonVault) {
    const UDMItemHandle part = Part();
    for (const std::string& common : {Base(""), library.BaseDirectory(), Base("vault")}) {
        ann->SetVault(part, Base("fast"));
        ann->SetVault(part, common);
        Put(part, "a", "1");
        EXPECT_THAT(PathOf(part, 0), StartsWith(Base("vault/")));
        ann->RemoveFile(part, "a");
    }
}

TEST_F(FilesInVaults, AVaultMustLieBelowTheBaseDirectory) {
    const UDMItemHandle part = Part();
    for (const std::string& directory : {std::string("/tmp"),
                                         std::string("/"),
                                         Base("../beside"),
                                         Base("a/../../b"),
                                         library.BaseDirectory() + "2",
                                         Base("vault/inside"),
                                         Base("a\nb"),
                                         Base("con")}) {
        EXPECT_THROW(ann->SetVault(part, directory), UDMException) << directory;
    }
    EXPECT_THAT(Refusal([&] { ann->SetVault(part, "/tmp"); }), HasSubstr(library.BaseDirectory()));
    Put(part, "a", "1");
    EXPECT_THAT(PathOf(part, 0), StartsWith(Base("vault/")));
}

TEST_F(FilesInVaults, AVaultCannotBeWhereAFileLies) {
    const UDMItemHandle part = Part();
    for (const std::string& directory : {library.File(), library.File() + "/inside"}) {
        EXPECT_THAT(Refusal([&] { ann->SetVault(part, directory); }),
                    HasSubstr("can't be a vault, for a file lies there"));
    }
}

TEST_F(FilesInVaults, TheBaseDirectoryMayBeNamedThroughLinks) {
    const UDMItemHandle part = Part();
    fs::create_directory_symlink(library.BaseDirectory(), sources.File("link"));
    ann->SetVault(part, sources.File("link/fast"));
    Put(part, "a", "1");
    EXPECT_THAT(PathOf(part, 0), StartsWith(Base("fast/")));
}

TEST_F(FilesInVaults, AVaultMayBeALinkToAnotherFileSystem) {
    struct stat here {};
    struct stat there {};
    if (stat(library.BaseDirectory().c_str(), &here) != 0 || stat("/dev/shm", &there) != 0 ||
        here.st_dev == there.st_dev) {
        GTEST_SKIP() << "no second file system";
    }
    const vault::Folder elsewhere("/dev/shm");
    fs::create_directory_symlink(elsewhere.Path(), Base("vault"));
    fs::create_directory(elsewhere.File("fast"));
    fs::create_directory_symlink(elsewhere.File("fast"), Base("fast"));
    const UDMItemHandle part = Part();
    Put(part, "a", Deck(3000));
    ann->SetVault(part, Base("fast"));
    Put(part, "b", Deck(4000));
    EXPECT_EQ(vault::CountFiles(elsewhere.File("fast")), 1u);
    EXPECT_THAT(Contents(part), ElementsAre("a=" + Deck(3000), "b=" + Deck(4000)));
}

TEST_F(FilesInVaults, SetVaultTellsNobodyAndUndoKeepsIt) {
    const UDMItemHandle part = Part();
    Publish(ann, part);
    const UDMItemHandle working = CheckOut(ann, part);
    const auto told = Listen(ann);
    ann->SetVault(working, Base("fast"));
    EXPECT_THAT(told->Take(), IsEmpty());
    ann->UndoCheckout(working);
    Put(CheckOut(ann, part), "a", "1");
    EXPECT_THAT(PathOf(Newest(ann, part), 0), StartsWith(Base("fast/")));
}

TEST_F(FilesInVaults, DeletingTheLibraryWithItsFilesTakesItsVaultsAndNothingElse) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    ann->SetVault(part, Base("fast"));
    Put(part, "b", "2");
    ann->SetVault(part, Base("mixed"));
    Put(part, "c", "3");
    std::ofstream(Base("mixed/notes")) << "mine";
    UDMProfileMgr::DeleteRepository(library.Params(), true, true);
    EXPECT_THAT(FilesIn(library.BaseDirectory()), ElementsAre("mixed"));
    EXPECT_THAT(FilesIn(Base("mixed")), ElementsAre("notes"));
}

TEST_F(FilesInVaults, AHostileVaultIsNotDeletedWithTheLibrary) {
    const UDMItemHandle part = Part();
    Put(part, "a", "1");
    fs::create_directories(sources.File("victim/ab"));
    std::ofstream(sources.File("victim/ab/file")) << "precious";
    Tamper("UPDATE file SET vault = '" +
           fs::relative(sources.File("victim"), library.BaseDirectory()).string() + "'");
    UDMProfileMgr::DeleteRepository(library.Params(), true, true);
    EXPECT_TRUE(Exists(sources.File("victim/ab/file")));
}

}  // namespace
}  // namespace kxudm::test
