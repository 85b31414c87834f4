// A disk that is really full, and a vault on another file system than the files that go into it: a
// clear error that names file and vault, or library; nothing half done; and success once there is
// room.
#include "../vault/Support.h"
#include "Maintained.h"
#include "SmallDisk.h"

namespace kxudm::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using vault::Deck;
using vault::ReadFile;

constexpr std::size_t ROOM = 300'000;

// Bytes that no compression makes smaller.
std::string Noise(std::size_t size, unsigned seed) {
    std::string noise(size, '\0');
    for (char& byte : noise) {
        seed = seed * 1664525U + 1013904223U;
        byte = static_cast<char>(seed >> 24);
    }
    return noise;
}

void Add(const ProfilePtr& profile, const UDMItemHandle& handle, const std::string& path) {
    profile->BeginAddFile(handle).setFilePath(path).setIsExternal(false).go();
}

// The contents of a revision's documents, by their names.
std::map<std::string, std::string> Contents(const ProfilePtr& profile,
                                            const UDMItemHandle& handle) {
    const vault::Folder folder;
    kxStlVector<kxString> paths;
    profile->RetrieveFilesToFolder(handle, folder.File("out"), false, false, paths);
    std::map<std::string, std::string> contents;
    for (const kxString& path : paths) {
        contents[std::filesystem::path(path.c_str()).filename()] = ReadFile(path);
    }
    return contents;
}

Names Findings(const ProfilePtr& profile) {
    return Texts(UDMMaintenance(profile).Verify(AT_ONCE));
}

// A library in base and vault directories of its own on 8 MiB, and sources elsewhere.
struct World {
    World() : disk(library.BaseDirectory(), 8), ann(library.Open("ann")) {
        part = ann->CreateEntity("Part", "Wheel");
    }
    [[nodiscard]] std::string Vault() const { return library.BaseDirectory() + "/vault"; }
    // From here on the database can't grow into what it has once taken.
    void EmptyLog() {
        store::LibraryStore::Open(library.File())
            ->Connection()
            .Execute("PRAGMA wal_checkpoint(TRUNCATE)");
    }

    vault::Folder sources;
    Library library;
    SmallDisk disk;
    ProfilePtr ann;
    UDMItemHandle part;
};

TEST(AFullDisk, RefusesAnAdditionByFileAndVaultAndTakesItOnceThereIsRoom) {
    KXUDM_WITH_MOUNTS([] {
        World world;
        const std::string content = Noise(2'000'000, 1);
        const std::string source = world.sources.Write("a.bin", content);
        world.disk.FillUpTo(ROOM);
        EXPECT_THAT(Refusal<UDMStoreException>([&] { Add(world.ann, world.part, source); }),
                    AllOf(HasSubstr(source), HasSubstr(world.Vault()), HasSubstr("No space left")));
        EXPECT_THAT(Contents(world.ann, world.part), IsEmpty());
        EXPECT_THAT(Findings(world.ann), IsEmpty());
        EXPECT_EQ(vault::CountFiles(world.Vault()), 0U);
        world.disk.MakeRoom();
        Add(world.ann, world.part, source);
        EXPECT_THAT(Contents(world.ann, world.part), ElementsAre(testing::Pair("a.bin", content)));
        EXPECT_THAT(Findings(world.ann), IsEmpty());
    });
}

TEST(AFullDisk, RefusesAReplacementAndTheOldDocumentStays) {
    KXUDM_WITH_MOUNTS([] {
        World world;
        Add(world.ann, world.part, world.sources.Write("a.bin", "old"));
        const std::string content = Noise(2'000'000, 2);
        const std::string source = world.sources.Write("a.bin", content);
        world.disk.FillUpTo(ROOM);
        for (const bool move : {false, true}) {
            EXPECT_THAT(
                Refusal<UDMStoreException>(
                    [&] { world.ann->ReAddFile(world.part, source, move, false); }),
                AllOf(HasSubstr(source), HasSubstr(world.Vault()), HasSubstr("No space left")));
            EXPECT_TRUE(vault::Exists(source));
            EXPECT_THAT(Contents(world.ann, world.part),
                        ElementsAre(testing::Pair("a.bin", "old")));
        }
        EXPECT_THAT(Findings(world.ann), IsEmpty());
        world.disk.MakeRoom();
        world.ann->ReAddFile(world.part, source, true, false);
        EXPECT_FALSE(vault::Exists(source));
        EXPECT_THAT(Contents(world.ann, world.part), ElementsAre(testing::Pair("a.bin", content)));
    });
}

TEST(AFullDisk, EndsAnImportWithWholeContentsAndTheNextOneBringsTheRest) {
    KXUDM_WITH_MOUNTS([] {
        World world;
        for (unsigned i = 0; i < 12; ++i) {
            std::filesystem::create_directories(world.sources.File("tree"));
            world.sources.Write("tree/" + std::to_string(10 + i) + ".bin", Noise(200'000, i));
        }
        const kxStlVector<kxString> folders{world.sources.File("tree")};
        const kxStlMap<kxString, kxString> options{{"definition", "Part"}};
        world.disk.FillUpTo(1'500'000);
        EXPECT_THAT(
            Refusal<UDMStoreException>(
                [&] { world.ann->AddFoldersAndFiles(folders, {}, "", options); }),
            AllOf(HasSubstr(folders[0] + "/1"), HasSubstr(world.Vault()), HasSubstr("No space")));
        EXPECT_THAT(Texts(UDMMaintenance(world.ann).Verify()), IsEmpty());
        UDMItemHandle tree;
        world.disk.MakeRoom();
        EXPECT_EQ(world.ann->AddFoldersAndFiles(folders, {}, "", options), 12);
        world.ann->GetFolder(tree, "/tree", false);
        EXPECT_THAT(Children(world.ann, tree, "folder"), SizeIs(12));
        EXPECT_THAT(Findings(world.ann), IsEmpty());
        const UDMItemHandle last = [&] {
            kxStlVector<UDMItemHandle> all;
            world.ann->GetChildren(all, tree, "folder", "name == \"21.bin\"");
            return all.at(0);
        }();
        EXPECT_EQ(Contents(world.ann, last).at("21.bin"), Noise(200'000, 11));
    });
}

TEST(AFullDisk, RefusesStepsOfALifeByTheLibraryAndTakesThemOnceThereIsRoom) {
    KXUDM_WITH_MOUNTS([] {
        World world;
        Publish(world.ann, world.part);
        CheckOut(world.ann, world.part);
        world.ann->SetAttributeValue(Newest(world.ann, world.part), "mass", 4.0);
        Listening told(world.ann);
        world.EmptyLog();
        world.disk.FillUpTo(0);
        const auto refusal = [&](const std::function<void()>& step) {
            EXPECT_THAT(Refusal<UDMStoreException>(step),
                        AllOf(HasSubstr(world.library.File()), HasSubstr("full")));
        };
        const UDMItemHandle working = Newest(world.ann, world.part);
        refusal([&] { world.ann->PersistEntity(working, "", false, true, true); });
        refusal([&] { world.ann->PersistEntity(working, "", true, true, true); });
        refusal([&] { world.ann->SaveEntity(working, "", true); });
        refusal([&] { world.ann->UndoCheckout(working); });
        refusal([&] { world.ann->SetAttributeValue(working, "mass", 5.0); });
        refusal([&] { world.ann->CreateEntity("Part", "Rim"); });
        refusal([&] { world.ann->DeleteEntity(working, true, false); });
        EXPECT_THAT(told.Take(), IsEmpty());
        EXPECT_EQ(NewestNumber(world.ann, world.part), 2);
        EXPECT_TRUE(working.IsEditable());
        EXPECT_EQ(working.GetAttributeValue("mass"), kxVariant(4.0));
        EXPECT_THAT(Findings(world.ann), IsEmpty());
        world.disk.MakeRoom();
        EXPECT_FALSE(Publish(world.ann, working).IsEditable());
        EXPECT_THAT(told.Take(), ElementsAre("10 Wheel:2"));
        EXPECT_EQ(NewestNumber(world.library.Open("bob"), world.part), 2);
        EXPECT_THAT(Findings(world.ann), IsEmpty());
    });
}

TEST(AVaultOnAnotherFileSystem, TakesGivesAndMovesFilesAndIsNamedWhereItIsFull) {
    KXUDM_WITH_MOUNTS([] {
        const vault::Folder sources;
        Library library;
        SmallDisk disk(library.BaseDirectory() + "/vault", 4);
        const ProfilePtr ann = library.Open("ann");
        const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
        const std::string text = Deck(300'000, 1);
        Add(ann, part, sources.Write("a.inp", text));
        Add(ann, part, sources.Write("b.bin", Noise(300'000, 3)));
        const std::string moved = sources.Write("b.bin", "moved");
        ann->ReAddFile(part, moved, true, false);
        EXPECT_FALSE(vault::Exists(moved));
        EXPECT_THAT(Contents(ann, part),
                    ElementsAre(testing::Pair("a.inp", text), testing::Pair("b.bin", "moved")));
        const std::string large = sources.Write("c.bin", Noise(5'000'000, 4));
        EXPECT_THAT(Refusal<UDMStoreException>([&] { Add(ann, part, large); }),
                    AllOf(HasSubstr(large), HasSubstr(library.BaseDirectory() + "/vault")));
        EXPECT_THAT(Contents(ann, part), SizeIs(2));
        EXPECT_THAT(Texts(UDMMaintenance(ann).Verify()), IsEmpty());
        Publish(ann, part);
    });
}

}  // namespace
}  // namespace kxudm::test
