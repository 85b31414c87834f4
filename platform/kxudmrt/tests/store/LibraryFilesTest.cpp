// The files of entities, and how they follow the life of revisions.
#include "LibraryFixture.h"

using namespace kxudm::store;
namespace sql = kxudm::sql;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr Stamp BY_ANN{ANN, 5000};

class LibraryFiles : public LibraryFixture {
  protected:
    EntityId Working(const std::string& uid = "P") { return Add(uid, {}, RevisionState::Working); }
    static FileRow File(const std::string& name, const std::string& hash = "h") {
        return {.name = name, .hash = hash, .size = 7, .modified = 11, .isText = true};
    }
    void Put(EntityId id, int revision, const std::string& name, const std::string& hash = "h") {
        EXPECT_TRUE(store_->AddFile(id, revision, File(name, hash), BY_ANN)) << name;
    }
    void Remove(EntityId id, int revision, const std::string& name) {
        EXPECT_TRUE(store_->RemoveFile(id, revision, name, BY_ANN)) << name;
    }
    void Replace(EntityId id, int revision, const std::string& name, const std::string& hash) {
        EXPECT_TRUE(store_->ReplaceFile(id, revision, File(name, hash), BY_ANN)) << name;
    }
    int Publish(EntityId id) { return store_->Publish(id, "", false, BY_ANN); }
    int CheckOut(EntityId id) { return store_->CheckOut(id, "", BY_ANN); }
    // "name hash" of each file.
    std::vector<std::string> Files(EntityId id, int revision) {
        std::vector<FileRow> rows;
        store_->Files(id, revision, rows);
        std::vector<std::string> files;
        for (const FileRow& row : rows) {
            files.push_back(row.name + " " + row.hash);
        }
        return files;
    }
    std::string Rows() { return Ask("SELECT count(*) FROM file"); }
};

}  // namespace

TEST_F(LibraryFiles, AFileIsReadAsItWasAdded) {
    const EntityId id = Working();
    EXPECT_TRUE(
        store_->AddFile(id,
                        0,
                        {.name = "a.inp", .hash = "abc", .size = 5, .modified = 9, .vault = "deep"},
                        BY_ANN));
    EXPECT_TRUE(store_->AddFile(
        id,
        0,
        {.name = "b", .size = std::int64_t{1} << 40, .isText = true, .externalPath = "/x/b"},
        BY_ANN));
    std::vector<FileRow> rows;
    store_->Files(id, 0, rows);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].name, "a.inp");
    EXPECT_EQ(rows[0].hash, "abc");
    EXPECT_EQ(rows[0].size, 5);
    EXPECT_EQ(rows[0].modified, 9);
    EXPECT_EQ(rows[0].added, 5000);
    EXPECT_EQ(rows[0].vault, "deep");
    EXPECT_FALSE(rows[0].isText);
    EXPECT_FALSE(rows[0].IsExternal());
    EXPECT_EQ(rows[0].externalPath, "");
    EXPECT_EQ(rows[1].size, std::int64_t{1} << 40);
    EXPECT_TRUE(rows[1].isText);
    EXPECT_TRUE(rows[1].IsExternal());
    EXPECT_EQ(rows[1].externalPath, "/x/b");
    EXPECT_EQ(rows[1].vault, "");
}

TEST_F(LibraryFiles, AreListedInByteOrderBehindWhatTheListHolds) {
    const EntityId id = Working();
    for (const char* name : {"b", "a", "B", "ä"}) {
        Put(id, 0, name);
    }
    std::vector<FileRow> rows{File("before")};
    store_->Files(id, 0, rows);
    std::vector<std::string> names;
    for (const FileRow& row : rows) {
        names.push_back(row.name);
    }
    EXPECT_THAT(names, ElementsAre("before", "B", "a", "b", "ä"));
}

TEST_F(LibraryFiles, AChangeStampsTheRevision) {
    const EntityId id = Working();
    Put(id, 0, "a");
    EXPECT_EQ(Ask("SELECT modified_time || modified_user FROM revision"), "5000ann");
}

TEST_F(LibraryFiles, ATakenNameIsNotAddedAgain) {
    const EntityId id = Working();
    Put(id, 0, "a", "1");
    EXPECT_FALSE(store_->AddFile(id, 0, File("a", "2"), {ANN, 6000}));
    EXPECT_THAT(Files(id, 0), ElementsAre("a 1"));
    EXPECT_EQ(Ask("SELECT modified_time FROM revision"), "5000");
}

TEST_F(LibraryFiles, ANameThatIsNotThereIsNotRemoved) {
    const EntityId id = Working();
    EXPECT_FALSE(store_->RemoveFile(id, 0, "a", BY_ANN));
    EXPECT_EQ(Ask("SELECT modified_time FROM revision"), "1000");
}

TEST_F(LibraryFiles, APublishedOrUnknownRevisionRefusesChanges) {
    const EntityId id = Working();
    Put(id, 0, "a");
    Publish(id);
    for (const int revision : {0, 1, 2}) {
        EXPECT_THROW(static_cast<void>(store_->AddFile(id, revision, File("b"), BY_ANN)),
                     kxudm::UDMException);
        EXPECT_THROW(store_->ReplaceFile(id, revision, File("a"), BY_ANN), kxudm::UDMException);
    }
    EXPECT_THROW(static_cast<void>(store_->RemoveFile(id, 1, "a", BY_ANN)), kxudm::UDMException);
    EXPECT_THAT(Files(id, 1), ElementsAre("a h"));
}

TEST_F(LibraryFiles, WithoutRevisionsLeaveNoTraceBehind) {
    const EntityId id = Add("N");
    Put(id, 0, "a", "1");
    Replace(id, 0, "a", "2");
    EXPECT_THAT(Files(id, 0), ElementsAre("a 2"));
    Remove(id, 0, "a");
    EXPECT_EQ(Rows(), "0");
}

TEST_F(LibraryFiles, OfOldRevisionsStayForEver) {
    const EntityId id = Working();
    Put(id, 0, "a", "1");
    Put(id, 0, "b", "1");
    Publish(id);
    EXPECT_EQ(CheckOut(id), 2);
    Replace(id, 2, "a", "2");
    Remove(id, 2, "b");
    Put(id, 2, "c", "2");
    Publish(id);
    EXPECT_EQ(CheckOut(id), 3);
    Put(id, 3, "b", "3");
    Remove(id, 3, "a");
    EXPECT_THAT(Files(id, 1), ElementsAre("a 1", "b 1"));
    EXPECT_THAT(Files(id, 2), ElementsAre("a 2", "c 2"));
    EXPECT_THAT(Files(id, 3), ElementsAre("b 3", "c 2"));
    Publish(id);
    EXPECT_THAT(Files(id, 1), ElementsAre("a 1", "b 1"));
    EXPECT_THAT(Files(id, 2), ElementsAre("a 2", "c 2"));
    EXPECT_THAT(Files(id, 3), ElementsAre("b 3", "c 2"));
}

TEST_F(LibraryFiles, ACheckOutCopiesNone) {
    const EntityId id = Working();
    Put(id, 0, "a");
    Publish(id);
    CheckOut(id);
    EXPECT_EQ(Rows(), "1");
    EXPECT_THAT(Files(id, 2), ElementsAre("a h"));
}

TEST_F(LibraryFiles, UndoBringsBackWhatEndedAndDropsWhatIsNew) {
    const EntityId id = Working();
    Put(id, 0, "a", "1");
    Put(id, 0, "b", "1");
    Publish(id);
    CheckOut(id);
    Replace(id, 2, "a", "2");
    Replace(id, 2, "a", "3");
    Remove(id, 2, "b");
    Put(id, 2, "b", "2");
    Remove(id, 2, "b");
    Put(id, 2, "c", "2");
    EXPECT_THAT(Files(id, 2), ElementsAre("a 3", "c 2"));
    store_->Undo(id, BY_ANN);
    EXPECT_THAT(Files(id, 1), ElementsAre("a 1", "b 1"));
    EXPECT_EQ(Rows(), "2");
    CheckOut(id);
    EXPECT_THAT(Files(id, 2), ElementsAre("a 1", "b 1"));
}

TEST_F(LibraryFiles, AKeptCheckOutGoesOnWithThem) {
    const EntityId id = Working();
    Put(id, 0, "a", "1");
    EXPECT_EQ(store_->Publish(id, "", true, BY_ANN), 1);
    Replace(id, 2, "a", "2");
    EXPECT_THAT(Files(id, 1), ElementsAre("a 1"));
    EXPECT_THAT(Files(id, 2), ElementsAre("a 2"));
}

TEST_F(LibraryFiles, ABranchBeginsWithThoseOfItsRevision) {
    const EntityId id = Working();
    Put(id, 0, "a", "1");
    Put(id, 0, "b", "1");
    Publish(id);
    CheckOut(id);
    Replace(id, 2, "a", "2");
    Remove(id, 2, "b");
    // Also while the files of the newest revision are about to end.
    const EntityId early = store_->Branch(id, 1, "B1", "", BY_ANN);
    EXPECT_THAT(Files(early, 0), ElementsAre("a 1", "b 1"));
    Publish(id);
    const EntityId late = store_->Branch(id, 1, "B2", "", BY_ANN);
    EXPECT_THAT(Files(late, 0), ElementsAre("a 1", "b 1"));
    Replace(late, 0, "a", "4");
    EXPECT_THAT(Files(id, 1), ElementsAre("a 1", "b 1"));
    EXPECT_THAT(Files(id, 2), ElementsAre("a 2"));
    EXPECT_THAT(Files(early, 0), ElementsAre("a 1", "b 1"));
    EXPECT_THAT(Files(late, 0), ElementsAre("a 4", "b 1"));
}

TEST_F(LibraryFiles, ComeBackWithWhatWasDeleted) {
    const EntityId id = Working();
    Put(id, 0, "a");
    Publish(id);
    store_->Delete(id, BY_ANN);
    EXPECT_EQ(Rows(), "1");
    EXPECT_TRUE(store_->Undelete("P"));
    EXPECT_THAT(Files(id, 1), ElementsAre("a h"));
}

TEST_F(LibraryFiles, ExternalOnesAreFoundByPathInAnyRevision) {
    const EntityId id = Working();
    EXPECT_TRUE(store_->AddFile(id, 0, {.name = "a", .externalPath = "/x/a"}, BY_ANN));
    Publish(id);
    CheckOut(id);
    Remove(id, 2, "a");
    Publish(id);
    EXPECT_TRUE(store_->IsExternalSomewhere("/x/a"));
    EXPECT_FALSE(store_->IsExternalSomewhere("/x/b"));
}

TEST_F(LibraryFiles, VaultsAreThoseOfFilesAndEntities) {
    EXPECT_THAT(store_->Vaults(), IsEmpty());
    const EntityId id = Working();
    FileRow file = File("a");
    file.vault = "old";
    EXPECT_TRUE(store_->AddFile(id, 0, file, BY_ANN));
    store_->SetVault(id, "new");
    EXPECT_THAT(store_->Vaults(), ElementsAre("new", "old"));
    store_->SetVault(id, "");
    EXPECT_THAT(store_->Vaults(), ElementsAre("old"));
}
