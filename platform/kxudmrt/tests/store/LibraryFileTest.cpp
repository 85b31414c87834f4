#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "LibraryFixture.h"
#include "TemporaryFolder.h"
#include "store/schema/Schema.h"

using namespace kxudm::store;
using kxudm::UDMException;
namespace sql = kxudm::sql;
using testing::AllOf;
using testing::HasSubstr;

namespace {

const LibraryInfo INFO{.name = "Crash", .id = "id", .baseDirectory = "/base", .created = 12345678};

std::string TextOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const UDMException& error) {
        return error.what();
    }
    return "no failure";
}

}  // namespace

TEST(LibraryFile, KeepsWhatItWasCreatedWith) {
    TemporaryFolder folder;
    (void)LibraryStore::Create(folder.File("N.ldb"), INFO, "<catalogue/>");
    const auto store = LibraryStore::Open(folder.File("N.ldb"));
    EXPECT_EQ(store->Info().name, "Crash");
    EXPECT_EQ(store->Info().id, "id");
    EXPECT_EQ(store->Info().baseDirectory, "/base");
    EXPECT_EQ(store->Info().created, 12345678);
    EXPECT_EQ(store->CatalogueXml(), "<catalogue/>");
}

TEST(LibraryFile, TakesANewCatalogueBaseDirectoryAndNotes) {
    TemporaryFolder folder;
    {
        const auto store = LibraryStore::Create(folder.File("N.ldb"), INFO, "<catalogue/>");
        store->SetCatalogueXml("<other/>");
        store->SetBaseDirectory("/elsewhere");
        EXPECT_EQ(store->Note("catalogue"), "");
        store->SetNote("catalogue", "a note of this key is no catalogue");
    }
    const auto store = LibraryStore::Open(folder.File("N.ldb"));
    EXPECT_EQ(store->CatalogueXml(), "<other/>");
    EXPECT_EQ(store->Info().baseDirectory, "/elsewhere");
    EXPECT_EQ(store->Note("catalogue"), "a note of this key is no catalogue");
}

TEST(LibraryFile, OfNoBytesIsNoLibraryButMayBecomeOne) {
    TemporaryFolder folder;
    { std::ofstream empty(folder.File("N.ldb")); }
    EXPECT_THAT(TextOf([&] { (void)LibraryStore::Open(folder.File("N.ldb")); }),
                AllOf(HasSubstr(folder.File("N.ldb")), HasSubstr("empty")));
    (void)LibraryStore::Create(folder.File("N.ldb"), INFO, "");
    EXPECT_EQ(LibraryStore::Open(folder.File("N.ldb"))->Info().name, "Crash");
}

TEST(LibraryFile, ThatExistsIsNotCreatedAgain) {
    TemporaryFolder folder;
    (void)LibraryStore::Create(folder.File("N.ldb"), INFO, "<first/>");
    EXPECT_THAT(
        TextOf([&] { (void)LibraryStore::Create(folder.File("N.ldb"), INFO, "<second/>"); }),
        AllOf(HasSubstr(folder.File("N.ldb")), HasSubstr("exists already")));
    EXPECT_EQ(LibraryStore::Open(folder.File("N.ldb"))->CatalogueXml(), "<first/>");
}

TEST(LibraryFile, ThatIsMissingIsNamedAndNotMade) {
    TemporaryFolder folder;
    EXPECT_THAT(TextOf([&] { (void)LibraryStore::Open(folder.File("N.ldb")); }),
                HasSubstr("library '" + folder.File("N.ldb") + "'"));
    EXPECT_FALSE(std::filesystem::exists(folder.File("N.ldb")));
}

TEST(LibraryFile, OfAnotherFormatIsRefusedByName) {
    TemporaryFolder folder;
    std::ofstream(folder.File("N.ldb")) << "schema=team\n" << std::string(2000, ' ');
    EXPECT_THAT(TextOf([&] { (void)LibraryStore::Open(folder.File("N.ldb")); }),
                AllOf(HasSubstr(folder.File("N.ldb")), HasSubstr("something else")));
}

TEST(LibraryFile, WithANewerSchemaIsRefusedByNameAndVersions) {
    TemporaryFolder folder;
    LibraryStore::Create(folder.File("N.ldb"), INFO, "")->Connection().SetSchemaVersion(999);
    EXPECT_THAT(TextOf([&] { (void)LibraryStore::Open(folder.File("N.ldb")); }),
                AllOf(HasSubstr(folder.File("N.ldb")),
                      HasSubstr("999"),
                      HasSubstr("up to " + std::to_string(LibrarySchema().back().version))));
}

TEST(LibraryFile, AReadTellsWhetherItCameUponSomethingNew) {
    TemporaryFolder folder;
    const auto mine = LibraryStore::Create(folder.File("N.ldb"), INFO, "");
    const auto other = LibraryStore::Open(folder.File("N.ldb"));
    EntityRow row;
    EXPECT_FALSE(mine->ReadNothingNew());
    (void)mine->ChangedByOthers();
    EXPECT_FALSE(mine->FindByUid("A", ANN, row));
    EXPECT_TRUE(mine->ReadNothingNew());
    other->Insert({.uid = "A", .definition = "Part", .name = "a"}, {}, {BOB, 1});
    EXPECT_TRUE(mine->FindByUid("A", ANN, row));
    EXPECT_FALSE(mine->ReadNothingNew());
    EXPECT_TRUE(mine->ChangedByOthers());
    EXPECT_TRUE(mine->FindByUid("A", ANN, row));
    EXPECT_TRUE(mine->ReadNothingNew());
}

TEST(LibraryFile, TwoStoresSeeEachOthersCommits) {
    TemporaryFolder folder;
    const auto mine = LibraryStore::Create(folder.File("N.ldb"), INFO, "");
    const auto other = LibraryStore::Open(folder.File("N.ldb"));
    EXPECT_TRUE(mine->ChangedByOthers());
    EXPECT_FALSE(mine->ChangedByOthers());
    const EntityId id =
        other->Insert({.uid = "A", .definition = "Part", .name = "a"}, {{"x", 1}}, {BOB, 1});
    EXPECT_TRUE(mine->ChangedByOthers());
    EXPECT_FALSE(mine->ChangedByOthers());
    // Each changes an attribute of its own without having read the other's change.
    mine->UpdateAttributes(id, 0, {{"mine", 1}}, {ANN, 2});
    other->UpdateAttributes(id, 0, {{"theirs", 2}}, {BOB, 3});
    EntityRow row;
    ASSERT_TRUE(mine->FindByUid("A", ANN, row));
    const AttributeList expected = {{"x", 1}, {"mine", 1}, {"theirs", 2}};
    EXPECT_EQ(UnpackAttributes(row.packed), expected);
}

TEST(LibraryFile, ProcessesThatWriteAtOnceLoseNothing) {
    constexpr int PROCESSES = 4;
    constexpr int EDITS = 25;
    TemporaryFolder folder;
    const std::string file = folder.File("N.ldb");
    EntityId shared = 0;
    shared = LibraryStore::Create(file, INFO, "")
                 ->Insert({.uid = "S", .definition = "Folder", .name = "s"}, {}, {ANN, 1});
    std::vector<pid_t> children;
    for (int process = 0; process < PROCESSES; ++process) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            int result = 0;
            try {
                const auto own = LibraryStore::Open(file);
                for (int i = 0; i < EDITS; ++i) {
                    const std::string uid = std::to_string(process) + "-" + std::to_string(i);
                    own->Update([&] {
                        const EntityId id = own->Insert(
                            {.uid = uid, .definition = "Part", .name = uid}, {}, {ANN, 1});
                        own->AddLink({.parent = shared, .child = id, .name = "parts"}, {ANN, 1});
                        own->Append({.op = 35, .entity = shared});
                    });
                    own->UpdateAttributes(shared, 0, {{uid, i}}, {ANN, 1});
                }
            } catch (...) {
                result = 1;
            }
            _exit(result);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    const auto store = LibraryStore::Open(file);
    EntityRow row;
    ASSERT_TRUE(store->FindById(shared, ANN, row));
    EXPECT_EQ(UnpackAttributes(row.packed).size(), PROCESSES * EDITS);
    EXPECT_EQ(store->CountChildren(shared, 0, LinkKind::Owner, "parts", ANN), PROCESSES * EDITS);
    EXPECT_EQ(store->LastSequence(), PROCESSES * EDITS);
}
