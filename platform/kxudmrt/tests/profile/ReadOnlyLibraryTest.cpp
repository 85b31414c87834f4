// A library that can only be read: on a file system that was mounted so, and for a user who has no
// rights in its folder. What was published is there with its files; each change is an error that
// names the library, and leaves nothing behind.
#include <kxudm/UDMMaintenance.h>

#include "../vault/Support.h"
#include "Maintained.h"
#include "SmallDisk.h"

namespace kxudm::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace fs = std::filesystem;

// A library with a published content, its file and a folder; nobody has it open.
class World {
  public:
    World() : source(sources.Write("a.txt", "content")) {
        fs::permissions(sources.Path(), fs::perms::all);
        fs::permissions(library.Folder().Path(), fs::perms::all);
    }
    void Make() const {
        ProfilePtr ann = UDMProfileMgr::GetProfile(library.Params("ann"));
        const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
        ann->BeginAddFile(part).setFilePath(source).setIsExternal(false).go();
        UDMItemHandle folder;
        ann->CreateFolder(folder, "/F");
        ann->MoveContent(part, folder);
        Publish(ann, part);
        UDMProfileMgr::DiscardProfile(ann);
    }
    // A master database and a workspace that the reader may write.
    [[nodiscard]] Parameters Elsewhere(const std::string& user) const {
        Parameters params = library.Params(user);
        params["MasterDBFile"] = library.Folder().File("other/master.db");
        params["WorkspaceBaseDir"] = library.Folder().File("other/" + user);
        return params;
    }
    ProfilePtr Open(const Parameters& params) {
        return library.Keep(UDMProfileMgr::GetProfile(params));
    }

    vault::Folder sources;
    Library library;
    std::string source;
};

UDMItemHandle Wheel(const ProfilePtr& profile) {
    kxStlVector<UDMItemHandle> hits;
    profile->RunQuery(hits, "name == \"Wheel\"", -1, 0, 0, {}, false, false);
    return hits.at(0);
}

void ExpectReadable(const ProfilePtr& reader, const std::string& out) {
    const UDMItemHandle wheel = Wheel(reader);
    EXPECT_EQ(wheel.GetRevision(), 1);
    EXPECT_EQ(wheel.GetAttributeValue("smd_folder"), kxVariant("/F"));
    EXPECT_EQ(Versions(reader, wheel), std::vector<int>{1});
    kxStlVector<kxString> paths;
    reader->RetrieveFilesToFolder(wheel, out, false, false, paths);
    ASSERT_EQ(paths.size(), 1U);
    EXPECT_EQ(vault::ReadFile(paths[0]), "content");
    EXPECT_THAT(Texts(UDMMaintenance(reader).Verify(AT_ONCE)), IsEmpty());
}

void ExpectNoChange(const ProfilePtr& reader, const World& world) {
    const UDMItemHandle wheel = Wheel(reader);
    const auto refusal = [&](const std::function<void()>& step) {
        EXPECT_THAT(Refusal<UDMStoreException>(step),
                    AllOf(HasSubstr("library '" + world.library.File() + "'"),
                          HasSubstr("can't be written")));
    };
    Listening told(reader);
    refusal([&] { reader->Checkout(wheel, ""); });
    refusal([&] { reader->CreateEntity("Part", "Rim"); });
    refusal([&] {
        UDMItemHandle folder;
        reader->CreateFolder(folder, "/G");
    });
    refusal([&] { reader->DeleteEntity(wheel, true, false); });
    refusal([&] { reader->AddFoldersAndFiles({}, {world.source}, "", {{"definition", "Part"}}); });
    refusal([&] { UDMBulkEdit edit(reader); });
    refusal([&] {
        UDMPurgeOptions options;
        options.deletedEntities = true;
        UDMMaintenance(reader).Purge(options);
    });
    EXPECT_THAT(told.Take(), IsEmpty());
    EXPECT_EQ(Versions(reader, wheel), std::vector<int>{1});
    EXPECT_TRUE(vault::Exists(world.source));
}

TEST(AReadOnlyFileSystem, B19_GivesWhatIsInItsLibraryAndTakesNothing) {
    KXUDM_WITH_MOUNTS([] {
        World world;
        world.Make();
        const std::string base = world.library.BaseDirectory();
        const std::string file = base + "/Lib.ldb";
        const std::string before = vault::ReadFile(file);
        ASSERT_EQ(mount(base.c_str(), base.c_str(), "none", MS_BIND, nullptr), 0);
        ASSERT_EQ(mount(nullptr, base.c_str(), "none", MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr),
                  0);
        {
            const ProfilePtr ann = world.Open(world.library.Params("ann"));
            ExpectReadable(ann, world.sources.File("out"));
            ExpectNoChange(ann, world);
            const ProfilePtr bob = world.Open(world.Elsewhere("bob"));
            ExpectReadable(bob, world.sources.File("bobs"));
            ExpectNoChange(bob, world);
        }
        EXPECT_EQ(vault::ReadFile(file), before);
        EXPECT_THAT(vault::CountFiles(base), 2U);
        umount2(base.c_str(), MNT_DETACH);
        ExpectReadable(world.Open(world.library.Params("eve")), world.sources.File("eves"));
    });
}

TEST(AReadOnlyFileSystem, B19_GivesNewsOnceTheLibraryIsOpenedAnew) {
    KXUDM_WITH_MOUNTS([] {
        World world;
        world.Make();
        const std::string base = world.library.BaseDirectory();
        const std::string view = world.library.Folder().File("view");
        fs::create_directory(view);
        ASSERT_EQ(mount(base.c_str(), view.c_str(), "none", MS_BIND, nullptr), 0);
        ASSERT_EQ(mount(nullptr, view.c_str(), "none", MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr),
                  0);
        Parameters there = world.Elsewhere("bob");
        there["RepositoryBaseDir"] = view;
        ProfilePtr bob = UDMProfileMgr::GetProfile(there);
        EXPECT_EQ(NewestNumber(bob, Wheel(bob)), 1);
        ProfilePtr ann = UDMProfileMgr::GetProfile(world.library.Params("ann"));
        Publish(ann, CheckOut(ann, Wheel(ann)));
        EXPECT_THAT(Refusal<UDMStoreException>([&] { Wheel(bob); }),
                    AllOf(HasSubstr(view + "/Lib.ldb"), HasSubstr("open it anew")));
        UDMProfileMgr::DiscardProfile(bob);
        // Beside a writer it follows the log.
        bob = UDMProfileMgr::GetProfile(there);
        EXPECT_EQ(NewestNumber(bob, Wheel(bob)), 2);
        Publish(ann, CheckOut(ann, Wheel(ann)));
        EXPECT_EQ(NewestNumber(bob, Wheel(bob)), 3);
        UDMProfileMgr::DiscardProfile(bob);
        UDMProfileMgr::DiscardProfile(ann);
        bob = UDMProfileMgr::GetProfile(there);
        EXPECT_EQ(NewestNumber(bob, Wheel(bob)), 3);
        UDMProfileMgr::DiscardProfile(bob);
        umount2(view.c_str(), MNT_DETACH);
    });
}

void Allow(const std::string& base, fs::perms folder, fs::perms file) {
    fs::permissions(base, fs::perms(0755));
    for (const auto& entry : fs::recursive_directory_iterator(base)) {
        fs::permissions(entry.path(), entry.is_directory() ? fs::perms(0755) : file);
    }
    fs::permissions(base, folder);
}

// What one finds who has these rights in the library: as root, another user; else the same, whose
// rights are taken away.
std::string AsReader(fs::perms folder,
                     fs::perms file,
                     const std::function<void(const ProfilePtr&, const World&)>& read) {
    World world;
    const std::string base = world.library.BaseDirectory();
    // A database must not be carried into a process.
    const std::string made = vault::InChild([&]() -> std::string {
        world.Make();
        Allow(base, folder, file);
        return "made";
    });
    EXPECT_EQ(made, "made");
    const std::string result = vault::AsNobody([&]() -> std::string {
        ProfilePtr bob = UDMProfileMgr::GetProfile(world.Elsewhere("bob"));
        read(bob, world);
        UDMProfileMgr::DiscardProfile(bob);
        std::fflush(nullptr);
        return testing::Test::HasFailure() ? "failed" : "fine";
    });
    Allow(base, fs::perms(0755), fs::perms(0644));
    return result;
}

TEST(AReaderWithoutRights, B19_ReadsALibraryInAFolderThatHeCanNotWrite) {
    EXPECT_EQ(AsReader(fs::perms(0555),
                       fs::perms(0444),
                       [](const ProfilePtr& bob, const World& world) {
                           ExpectReadable(bob, world.sources.File("out"));
                           ExpectNoChange(bob, world);
                       }),
              "fine");
}

TEST(AReaderWithoutRights, B19_ReadsALibraryWhoseFileAloneHeCanNotWrite) {
    EXPECT_EQ(AsReader(fs::perms(0777),
                       fs::perms(0444),
                       [](const ProfilePtr& bob, const World& world) {
                           ExpectReadable(bob, world.sources.File("out"));
                           ExpectNoChange(bob, world);
                       }),
              "fine");
}

TEST(AReaderWithoutRights, B19_ReadsALibraryWhoseFolderAloneHeCanNotWrite) {
    EXPECT_EQ(AsReader(fs::perms(0555),
                       fs::perms(0666),
                       [](const ProfilePtr& bob, const World& world) {
                           ExpectReadable(bob, world.sources.File("out"));
                           ExpectNoChange(bob, world);
                       }),
              "fine");
}

TEST(AReaderWithoutRights, B19_IsToldWhatHeCanNotRead) {
    const std::string refusal = AsReader(
        fs::perms(0755), fs::perms(0600), [](const ProfilePtr& /*bob*/, const World& /*world*/) {});
    if (geteuid() == 0) {
        EXPECT_THAT(refusal, AllOf(HasSubstr("Lib.ldb"), HasSubstr("can't be opened")));
    } else {
        EXPECT_EQ(refusal, "fine");
    }
}

}  // namespace
}  // namespace kxudm::test
