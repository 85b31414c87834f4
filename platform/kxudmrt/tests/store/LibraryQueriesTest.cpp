#include "LibraryFixture.h"

using namespace kxudm::store;
using testing::ElementsAre;

namespace {

class LibraryQueries : public LibraryFixture {
  protected:
    std::vector<std::string> InFolder(EntityId folder,
                                      std::string_view name,
                                      bool ignoreCase = false,
                                      std::string_view definition = {},
                                      const Viewer& viewer = ANN) {
        std::vector<EntityRow> rows;
        store_->FindInFolder(folder, definition, name, viewer, ignoreCase, rows);
        return Uids(rows);
    }
    EntityId Named(const std::string& uid,
                   const std::string& name,
                   const std::string& definition = "Folder") {
        return store_->Insert(
            {.uid = uid, .definition = definition, .name = name, .displayName = name},
            {},
            {ANN, 1});
    }
    std::int64_t Hits(const Condition& condition,
                      bool rootsOnly = false,
                      std::int64_t first = 0,
                      std::int64_t last = 0) {
        found_.clear();
        return store_->VisitHits(condition, ANN, rootsOnly, first, last, Into(found_));
    }

    std::vector<EntityRow> found_;
};

}  // namespace

TEST_F(LibraryQueries, AFolderPathIsWalkedByName) {
    const EntityId a = Named("1", "A");
    const EntityId b = Named("2", "B");
    Put(a, b);
    EXPECT_THAT(InFolder(0, "A"), ElementsAre("1"));
    EXPECT_THAT(InFolder(a, "B"), ElementsAre("2"));
    EXPECT_THAT(InFolder(0, "B"), ElementsAre());
    EXPECT_THAT(InFolder(a, "b"), ElementsAre());
    EXPECT_THAT(InFolder(b, "A"), ElementsAre());
}

TEST_F(LibraryQueries, CaseIsIgnoredWhenAskedBeyondAscii) {
    const EntityId a = Named("1",
                             "Stra\xc3\x9f"
                             "e");
    Put(a, Named("2", "\xc3\x84pfel"));
    Put(a, Named("3", "\xc3\xa4pfel"));
    EXPECT_THAT(InFolder(0, "STRASSE", true), ElementsAre("1"));
    EXPECT_THAT(InFolder(0, "strasse", true, "Folder"), ElementsAre("1"));
    EXPECT_THAT(InFolder(a, "\xc3\x84PFEL", true), ElementsAre("2", "3"));
    EXPECT_THAT(InFolder(a, "\xc3\x84PFEL", false), ElementsAre());
}

TEST_F(LibraryQueries, ADefinitionNarrowsTheLookUp) {
    const EntityId a = Named("1", "A");
    Named("2", "A", "Part");
    Put(a, Named("3", "B"));
    Put(a, Named("4", "B", "Part"));
    EXPECT_THAT(InFolder(0, "A", false, "Folder"), ElementsAre("1"));
    EXPECT_THAT(InFolder(0, "A", true, "Part"), ElementsAre("2"));
    EXPECT_THAT(InFolder(0, "A"), ElementsAre("1", "2"));
    EXPECT_THAT(InFolder(a, "B", false, "Part"), ElementsAre("4"));
    EXPECT_THAT(InFolder(a, "b", true, "Part"), ElementsAre("4"));
}

TEST_F(LibraryQueries, ARenamedFolderIsFoundUnderItsNewName) {
    const EntityId a = Named("1", "A");
    const EntityId b = Named("2", "B");
    Put(a, b);
    store_->SetName(b, "C", {ANN, 7000});
    EXPECT_THAT(InFolder(a, "B"), ElementsAre());
    EXPECT_THAT(InFolder(a, "C"), ElementsAre("2"));
    EntityRow row;
    ASSERT_TRUE(store_->FindById(b, ANN, row));
    EXPECT_EQ(row.name, "C");
    EXPECT_EQ(row.modifiedTime, 7000);
    EXPECT_THROW(store_->SetName(4711, "D", {ANN, 1}), kxudm::UDMNotFoundException);
}

TEST_F(LibraryQueries, DeletedAndForeignEntitiesAreNotFoundInFolders) {
    const EntityId a = Named("1", "A");
    const EntityId b = Named("2", "B");
    Put(a, b);
    const EntityId mine = Add("M", {}, RevisionState::Working);
    Put(a, mine);
    EXPECT_THAT(InFolder(a, "M"), ElementsAre("M"));
    EXPECT_THAT(InFolder(a, "M", false, "", BOB), ElementsAre());
    store_->Delete(b, {ANN, 1});
    EXPECT_THAT(InFolder(a, "B"), ElementsAre());
    // What lay in a deleted folder lies in none.
    store_->Delete(a, {ANN, 1});
    EXPECT_THAT(InFolder(0, "M"), ElementsAre("M"));
}

TEST_F(LibraryQueries, RootsOfADefinitionHaveNoParentOfTheKind) {
    const EntityId a = Named("1", "A", "Category");
    const EntityId b = Named("2", "B", "Category");
    Named("3", "C", "Category");
    Named("4", "D", "Other");
    store_->AddLink({.parent = a, .child = b, .kind = LinkKind::Category}, {ANN, 1});
    std::vector<EntityRow> rows;
    store_->RootsOfDefinition("Category", LinkKind::Category, ANN, rows);
    EXPECT_THAT(Uids(rows), ElementsAre("1", "3"));
    rows.clear();
    store_->RootsOfDefinition("Category", LinkKind::Owner, ANN, rows);
    EXPECT_THAT(Uids(rows), ElementsAre("1", "2", "3"));
    rows.clear();
    store_->RootsOfDefinition(
        "Category", LinkKind::Category, ANN, rows, {"e.name = ?", {std::string("C")}});
    EXPECT_THAT(Uids(rows), ElementsAre("3"));
}

TEST_F(LibraryQueries, WithoutAConditionEverythingVisibleIsFound) {
    Add("A");
    Add("B", {}, RevisionState::Working);
    store_->Delete(Add("C"), {ANN, 1});
    EXPECT_EQ(Hits({}), 2);
    EXPECT_THAT(Uids(found_), ElementsAre("A", "B"));
    EXPECT_EQ(store_->VisitHits({}, BOB, false, 0, 0, Into(found_)), 1);
}

TEST_F(LibraryQueries, AttributesAreFoundThroughTheirIndexedValues) {
    Add("A", {{"mass", 1.5}});
    Add("B", {{"mass", 2.5}});
    Add("C", {{"mass", 3}});
    const Condition heavy{
        "e.id IN (SELECT entity FROM head_attribute WHERE name = ? AND value > ?)",
        {std::string("mass"), 2.0}};
    EXPECT_EQ(Hits(heavy), 2);
    EXPECT_THAT(Uids(found_), ElementsAre("B", "C"));
}

TEST_F(LibraryQueries, ARangeIsCutAndAllHitsAreCounted) {
    for (int i = 0; i < 10; ++i) {
        Add(std::to_string(i));
    }
    EXPECT_EQ(Hits({}, false, 3, 5), 10);
    EXPECT_THAT(Uids(found_), ElementsAre("3", "4"));
    EXPECT_EQ(Hits({}, false, 8, 100), 10);
    EXPECT_THAT(Uids(found_), ElementsAre("8", "9"));
    EXPECT_EQ(Hits({}, false, 5, 5), 10);
    EXPECT_TRUE(found_.empty());
}

TEST_F(LibraryQueries, RootsOnlyLeavesOutWhatHasAnOwner) {
    const EntityId parent = Add("P");
    Own(parent, Add("C"));
    EXPECT_EQ(Hits({}, true), 1);
    EXPECT_THAT(Uids(found_), ElementsAre("P"));
    EXPECT_EQ(Hits({"e.name = ? OR e.name = ?", {std::string("C"), std::string("P")}}, true), 1);
}

TEST_F(LibraryQueries, HitsBringTheirAttributes) {
    Add("A", {{"x", 1}});
    std::vector<EntityRow> rows;
    store_->VisitHits({}, ANN, false, 0, 0, Into(rows));
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(UnpackAttributes(rows[0].packed).at(0).second, kxVariant(1));
}
