#include "LibraryFixture.h"

using namespace kxudm::store;
using kxudm::UDMException;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class LibraryLinks : public LibraryFixture {
  protected:
    void Relate(LinkKind kind, EntityId parent, EntityId child, std::string_view name = "r") {
        store_->AddLink({.parent = parent, .child = child, .kind = kind, .name = name}, {ANN, 1});
    }
    int Remove(LinkKind kind,
               EntityId parent,
               EntityId child,
               std::string_view name = {},
               int revision = 0) {
        return store_->RemoveLink(parent, child, kind, name, revision, {ANN, 3000});
    }
    // A parent at published revision 1 with children A and B, checked out as revision 2.
    EntityId CheckedOutParent() {
        const EntityId parent = Add("P", {}, RevisionState::Working);
        PublishByHand(parent, 0);
        CheckOutByHand(parent, 1);
        a_ = Add("A");
        b_ = Add("B");
        Own(parent, a_, "parts", 1);
        Own(parent, b_, "parts", 1);
        PublishByHand(parent, 1);
        CheckOutByHand(parent, 2);
        return parent;
    }

    EntityId a_ = 0;
    EntityId b_ = 0;
};

}  // namespace

TEST_F(LibraryLinks, ChildrenComeInTheOrderInWhichTheyWereAdded) {
    const EntityId parent = Add("P");
    const EntityId z = Add("Z");
    const EntityId a = Add("A");
    const EntityId m = Add("M");
    Own(parent, z);
    Own(parent, m);
    Own(parent, a);
    EXPECT_THAT(ChildrenOf(parent), ElementsAre("Z", "M", "A"));
    Remove(LinkKind::Owner, parent, z);
    Own(parent, z);
    EXPECT_THAT(ChildrenOf(parent), ElementsAre("M", "A", "Z"));
}

TEST_F(LibraryLinks, ChildrenAreListedByGroupOrAllGroupsByName) {
    const EntityId parent = Add("P");
    Own(parent, Add("W1"), "wheels");
    Own(parent, Add("D1"), "doors");
    Own(parent, Add("W2"), "wheels");
    EXPECT_THAT(ChildrenOf(parent, LinkKind::Owner, "wheels"), ElementsAre("W1", "W2"));
    EXPECT_THAT(ChildrenOf(parent, LinkKind::Owner, "doors"), ElementsAre("D1"));
    EXPECT_THAT(ChildrenOf(parent, LinkKind::Owner, "Doors"), ElementsAre());
    EXPECT_THAT(ChildrenOf(parent), ElementsAre("D1", "W1", "W2"));
    EXPECT_EQ(store_->CountChildren(parent, 0, LinkKind::Owner, "wheels", ANN), 2);
    EXPECT_EQ(store_->CountChildren(parent, 0, LinkKind::Owner, "", ANN), 3);
}

TEST_F(LibraryLinks, AListedRowIsWholeAndHasAttributesWhenAsked) {
    const EntityId parent = Add("P");
    const EntityId child = Add("C", {{"x", 1}});
    Own(parent, child, "wheels");
    std::vector<LinkedRow> rows;
    store_->Children(parent, 0, LinkKind::Owner, "wheels", ANN, rows);
    store_->Children(parent, 0, LinkKind::Owner, "", ANN, rows, true);
    ASSERT_EQ(rows.size(), 2u);
    EXPECT_EQ(rows[0].entity.id, child);
    EXPECT_EQ(rows[0].entity.definition, "Part");
    EXPECT_EQ(rows[0].entity.displayName, "The C");
    EXPECT_EQ(rows[0].kind, LinkKind::Owner);
    EXPECT_EQ(rows[0].name, "wheels");
    EXPECT_EQ(rows[0].entity.packed, "");
    EXPECT_EQ(UnpackAttributes(rows[1].entity.packed).at(0).second, kxVariant(1));
}

TEST_F(LibraryLinks, KindsDoNotMix) {
    const EntityId a = Add("A");
    const EntityId b = Add("B");
    Relate(LinkKind::Reference, a, b);
    Relate(LinkKind::Relation, a, b);
    EXPECT_THAT(ChildrenOf(a), ElementsAre());
    EXPECT_THAT(ChildrenOf(a, LinkKind::Reference), ElementsAre("B"));
    EXPECT_THAT(ParentsOf(b, LinkKind::Relation), ElementsAre("A"));
    EXPECT_FALSE(store_->HasParent(b, 0, LinkKind::Owner, ANN));
    EXPECT_EQ(Remove(LinkKind::Reference, a, b), 1);
    EXPECT_THAT(ChildrenOf(a, LinkKind::Relation), ElementsAre("B"));
}

TEST_F(LibraryLinks, FolderAndCategoryAreReadFromBothEnds) {
    const EntityId folder = Add("F");
    const EntityId category = Add("K");
    const EntityId one = Add("1");
    const EntityId two = Add("2");
    Put(folder, two);
    Put(folder, one);
    Relate(LinkKind::Category, category, one, "");
    // Creation, not the time of the link, gives the order.
    EXPECT_THAT(ChildrenOf(folder, LinkKind::Folder), ElementsAre("1", "2"));
    EXPECT_THAT(ChildrenOf(category, LinkKind::Category), ElementsAre("1"));
    EXPECT_THAT(ParentsOf(one, LinkKind::Folder), ElementsAre("F"));
    EXPECT_THAT(ParentsOf(two, LinkKind::Category), ElementsAre());
    EXPECT_TRUE(store_->HasParent(one, 0, LinkKind::Folder, ANN));
    EXPECT_FALSE(store_->HasParent(two, 0, LinkKind::Category, ANN));
    EXPECT_EQ(store_->CountChildren(folder, 0, LinkKind::Folder, "", ANN), 2);
    EXPECT_EQ(Remove(LinkKind::Folder, folder, two), 1);
    EXPECT_THAT(ChildrenOf(folder, LinkKind::Folder), ElementsAre("1"));
}

TEST_F(LibraryLinks, TheSameLinkTwiceIsRefusedByName) {
    const EntityId parent = Add("P");
    const EntityId child = Add("C");
    Own(parent, child, "wheels");
    try {
        Own(parent, child, "wheels");
        FAIL() << "the link was made twice";
    } catch (const UDMException& error) {
        EXPECT_THAT(error.what(), HasSubstr("'wheels'"));
    }
    Own(parent, child, "doors");
    EXPECT_TRUE(store_->HasLink(parent, child, LinkKind::Owner, "doors", 0));
    EXPECT_FALSE(store_->HasLink(child, parent, LinkKind::Owner, "doors", 0));
    EXPECT_EQ(Remove(LinkKind::Owner, parent, child), 2);
    EXPECT_EQ(Remove(LinkKind::Owner, parent, child), 0);
}

TEST_F(LibraryLinks, ALinkToAnUnknownEntityIsRefused) {
    EXPECT_THROW(Own(Add("P"), 4711), UDMException);
    EXPECT_THROW(Own(4711, Add("C")), UDMException);
}

TEST_F(LibraryLinks, AnOddGroupNameIsOnlyAName) {
    const std::string odd("x' OR 1=1 --\0\"", 14);
    const EntityId parent = Add("P");
    Own(parent, Add("A"), odd);
    Own(parent, Add("B"), "other");
    EXPECT_THAT(ChildrenOf(parent, LinkKind::Owner, odd), ElementsAre("A"));
}

TEST_F(LibraryLinks, AddingAndRemovingStampsTheBearingEnd) {
    const EntityId parent = Add("P");
    const EntityId child = Add("C");
    const EntityId folder = Add("F");
    EntityRow row;
    Own(parent, child);
    ASSERT_TRUE(store_->FindById(parent, ANN, row));
    EXPECT_EQ(row.modifiedTime, 2000);
    ASSERT_TRUE(store_->FindById(child, ANN, row));
    EXPECT_EQ(row.modifiedTime, 1000);
    Remove(LinkKind::Owner, parent, child);
    ASSERT_TRUE(store_->FindById(parent, ANN, row));
    EXPECT_EQ(row.modifiedTime, 3000);
    Put(folder, child);
    ASSERT_TRUE(store_->FindById(child, ANN, row));
    EXPECT_EQ(row.modifiedTime, 2000);
    ASSERT_TRUE(store_->FindById(folder, ANN, row));
    EXPECT_EQ(row.modifiedTime, 1000);
}

TEST_F(LibraryLinks, ACycleIsRefusedAndNothingChanges) {
    for (const LinkKind kind : {LinkKind::Owner, LinkKind::Folder, LinkKind::Category}) {
        const std::string mark = std::to_string(static_cast<int>(kind));
        const EntityId a = Add("A" + mark);
        const EntityId b = Add("B" + mark);
        const EntityId c = Add("C" + mark);
        Relate(kind, a, b);
        Relate(kind, b, c);
        EXPECT_TRUE(store_->WouldCycle(c, a, kind));
        EXPECT_TRUE(store_->WouldCycle(a, a, kind));
        EXPECT_FALSE(store_->WouldCycle(a, c, kind));
        try {
            Relate(kind, c, a);
            FAIL() << "a cycle was closed";
        } catch (const UDMException& error) {
            EXPECT_THAT(error.what(), HasSubstr("cycle"));
        }
        EXPECT_THROW(Relate(kind, a, a), UDMException);
        EXPECT_THAT(ChildrenOf(c, kind), ElementsAre());
        Relate(kind, a, c);
    }
}

TEST_F(LibraryLinks, ReferencesAndRelationsMayRunInACircle) {
    for (const LinkKind kind : {LinkKind::Reference, LinkKind::Relation}) {
        const std::string mark = std::to_string(static_cast<int>(kind));
        const EntityId a = Add("A" + mark);
        const EntityId b = Add("B" + mark);
        Relate(kind, a, b);
        Relate(kind, b, a);
        EXPECT_THAT(ChildrenOf(b, kind), ElementsAre("A" + mark));
    }
}

TEST_F(LibraryLinks, InvisibleChildrenAndParentsAreLeftOut) {
    const EntityId parent = Add("P");
    const EntityId secret = Add("S", {}, RevisionState::Working);
    Own(parent, secret);
    EXPECT_THAT(ChildrenOf(parent, LinkKind::Owner, "", 0, ANN), ElementsAre("S"));
    EXPECT_THAT(ChildrenOf(parent, LinkKind::Owner, "", 0, BOB), ElementsAre());
    const EntityId child = Add("C");
    Own(secret, child);
    EXPECT_TRUE(store_->HasParent(child, 0, LinkKind::Owner, ANN));
    EXPECT_FALSE(store_->HasParent(child, 0, LinkKind::Owner, BOB));
}

TEST_F(LibraryLinks, AWorkingRevisionsRemovalIsSeenByItsOwnerOnly) {
    const EntityId parent = CheckedOutParent();
    EXPECT_EQ(Remove(LinkKind::Owner, parent, a_, "", 2), 1);
    EXPECT_THAT(ChildrenOf(parent, LinkKind::Owner, "", 2, ANN), ElementsAre("B"));
    EXPECT_THAT(ChildrenOf(parent, LinkKind::Owner, "", 1, BOB), ElementsAre("A", "B"));
    EXPECT_FALSE(store_->HasParent(a_, 0, LinkKind::Owner, ANN));
    EXPECT_TRUE(store_->HasParent(a_, 0, LinkKind::Owner, BOB));
    EXPECT_FALSE(store_->HasLink(parent, a_, LinkKind::Owner, "", 2));
    EXPECT_TRUE(store_->HasLink(parent, a_, LinkKind::Owner, "", 1));
    // Removed twice is removed once; added again it is last.
    EXPECT_EQ(Remove(LinkKind::Owner, parent, a_, "", 2), 0);
    Own(parent, a_, "parts", 2);
    EXPECT_THAT(ChildrenOf(parent, LinkKind::Owner, "", 2, ANN), ElementsAre("B", "A"));
    EXPECT_THAT(ChildrenOf(parent, LinkKind::Owner, "", 1, BOB), ElementsAre("A", "B"));
}

TEST_F(LibraryLinks, OlderRevisionsKeepTheirChildrenInTheirOrder) {
    const EntityId parent = CheckedOutParent();
    Remove(LinkKind::Owner, parent, a_, "", 2);
    Own(parent, Add("C"), "parts", 2);
    PublishByHand(parent, 2);
    EXPECT_THAT(ChildrenOf(parent, LinkKind::Owner, "", 0), ElementsAre());
    EXPECT_THAT(ChildrenOf(parent, LinkKind::Owner, "", 1), ElementsAre("A", "B"));
    EXPECT_THAT(ChildrenOf(parent, LinkKind::Owner, "parts", 1), ElementsAre("A", "B"));
    EXPECT_THAT(ChildrenOf(parent, LinkKind::Owner, "parts", 2), ElementsAre("B", "C"));
    EXPECT_EQ(store_->CountChildren(parent, 1, LinkKind::Owner, "parts", ANN), 2);
    EXPECT_EQ(store_->CountChildren(parent, 0, LinkKind::Owner, "", ANN), 0);
}

TEST_F(LibraryLinks, ParentsOfOlderRevisionsAreListedWhenAsked) {
    const EntityId parent = CheckedOutParent();
    Remove(LinkKind::Owner, parent, a_, "", 2);
    PublishByHand(parent, 2);
    EXPECT_THAT(ParentsOf(a_), ElementsAre());
    EXPECT_THAT(ParentsOf(a_, LinkKind::Owner, "", true), ElementsAre("P"));
    EXPECT_THAT(ParentsOf(a_, LinkKind::Owner, "other", true), ElementsAre());
    EXPECT_THAT(ParentsOf(b_, LinkKind::Owner, "parts", true), ElementsAre("P"));
}

TEST_F(LibraryLinks, AFolderIsKeptByTheContentsOlderRevisions) {
    const EntityId folder = Add("F");
    const EntityId content = Add("C", {}, RevisionState::Working);
    Put(folder, content);
    PublishByHand(content, 0);
    CheckOutByHand(content, 1);
    Remove(LinkKind::Folder, folder, content, "", 1);
    EXPECT_THAT(ChildrenOf(folder, LinkKind::Folder, "", 0, ANN), ElementsAre());
    EXPECT_THAT(ChildrenOf(folder, LinkKind::Folder, "", 0, BOB), ElementsAre("C"));
    PublishByHand(content, 1);
    EXPECT_THAT(ChildrenOf(folder, LinkKind::Folder, "", 0, BOB), ElementsAre());
    EXPECT_THAT(ParentsOf(content, LinkKind::Folder, "", false, 0), ElementsAre("F"));
    EXPECT_TRUE(store_->HasParent(content, 0, LinkKind::Folder, ANN));
    EXPECT_FALSE(store_->HasParent(content, 1, LinkKind::Folder, ANN));
    EXPECT_THAT(ParentsOf(content, LinkKind::Folder, "", true, 1), ElementsAre("F"));
}

TEST_F(LibraryLinks, AnExactLinkStaysOnTheRevision) {
    const EntityId child = Add("C", {}, RevisionState::Working);
    PublishByHand(child, 0);
    CheckOutByHand(child, 1);
    PublishByHand(child, 1);
    const EntityId parent = Add("P");
    store_->AddLink({.parent = parent,
                     .child = child,
                     .kind = LinkKind::Relation,
                     .name = "r",
                     .exactChildRevision = 0},
                    {ANN, 1});
    std::vector<LinkedRow> rows;
    store_->Children(parent, 0, LinkKind::Relation, "r", ANN, rows);
    ASSERT_EQ(rows.size(), 1u);
    EXPECT_EQ(rows[0].entity.revision, 0);
}

TEST_F(LibraryLinks, RelationsOfDifferentExactnessAreDifferentLinks) {
    const EntityId parent = Add("P");
    const EntityId child = Add("C");
    Link link{.parent = parent, .child = child, .kind = LinkKind::Relation, .name = "r"};
    for (const int exact : {NO_REVISION, 0, 1}) {
        link.exactChildRevision = exact;
        EXPECT_FALSE(store_->IsThere(link)) << exact;
        store_->AddLink(link, {ANN, 1});
        EXPECT_TRUE(store_->IsThere(link)) << exact;
        EXPECT_THROW(store_->AddLink(link, {ANN, 1}), UDMException) << exact;
    }
    EXPECT_EQ(Remove(LinkKind::Relation, parent, child), 3);
    EXPECT_FALSE(store_->IsThere(link));
}

TEST_F(LibraryLinks, AConditionThinsTheListingInTheDatabase) {
    const EntityId parent = Add("P");
    const EntityId folder = Add("F");
    for (const char* uid : {"A", "B", "C"}) {
        const EntityId child = Add(uid);
        Own(parent, child);
        Put(folder, child);
    }
    const Condition notB{"e.name <> ? OR e.name = ?", {std::string("B"), std::string("none")}};
    const Condition comment{"e.name = ? -- only B", {std::string("B")}};
    for (const std::string_view group : {"", "parts"}) {
        std::vector<LinkedRow> rows;
        store_->Children(parent, 0, LinkKind::Owner, group, ANN, rows, false, notB);
        EXPECT_THAT(Uids(rows), ElementsAre("A", "C"));
        EXPECT_EQ(store_->CountChildren(parent, 0, LinkKind::Owner, group, ANN, notB), 2);
    }
    std::vector<LinkedRow> rows;
    store_->Children(folder, 0, LinkKind::Folder, "", ANN, rows, true, comment);
    EXPECT_THAT(Uids(rows), ElementsAre("B"));
    EXPECT_EQ(store_->CountChildren(folder, 0, LinkKind::Folder, "", ANN, notB), 2);
}
