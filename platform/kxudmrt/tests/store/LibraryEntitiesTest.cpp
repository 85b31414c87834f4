#include "LibraryFixture.h"

using namespace kxudm::store;
using kxudm::UDMException;
using kxudm::UDMNotFoundException;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class LibraryEntities : public LibraryFixture {
  protected:
    AttributeList AttributesOf(const std::string& uid, const Viewer& viewer = ANN) {
        EntityRow row;
        return store_->FindByUid(uid, viewer, row) ? UnpackAttributes(row.packed)
                                                   : AttributeList{{"not found", kxVariant()}};
    }
    bool Sees(const std::string& uid, const Viewer& viewer) {
        EntityRow row;
        return store_->FindByUid(uid, viewer, row);
    }
};

}  // namespace

TEST_F(LibraryEntities, ANewEntityIsFoundWithAllThatItHas) {
    const EntityId id = Add("A", {{"mass", 1.5}, {"colour", kxVariant("red")}});
    EntityRow row;
    ASSERT_TRUE(store_->FindByUid("A", BOB, row));
    EXPECT_EQ(row.id, id);
    EXPECT_EQ(row.uid, "A");
    EXPECT_EQ(row.definition, "Part");
    EXPECT_EQ(row.name, "A");
    EXPECT_EQ(row.displayName, "The A");
    EXPECT_EQ(row.revision, 0);
    EXPECT_EQ(row.state, RevisionState::Unversioned);
    EXPECT_EQ(row.createdTime, 1000);
    EXPECT_EQ(row.createdUser, "ann");
    EXPECT_EQ(row.modifiedTime, 1000);
    EXPECT_EQ(row.modifiedUser, "ann");
    EXPECT_EQ(row.published, 0);
    EXPECT_EQ(row.working, NO_REVISION);
    const AttributeList expected = {{"mass", 1.5}, {"colour", kxVariant("red")}};
    EXPECT_EQ(UnpackAttributes(row.packed), expected);
    EntityRow same;
    ASSERT_TRUE(store_->FindById(id, BOB, same));
    EXPECT_EQ(same.uid, "A");
}

TEST_F(LibraryEntities, AnUnknownOneIsNotFoundAndLeavesTheRowAlone) {
    EntityRow row;
    row.uid = "before";
    EXPECT_FALSE(store_->FindByUid("A", ANN, row));
    EXPECT_FALSE(store_->FindById(1, ANN, row));
    EXPECT_FALSE(store_->FindRevision("A", 0, ANN, row));
    EXPECT_EQ(row.uid, "before");
}

TEST_F(LibraryEntities, AKnownUidIsRefusedByName) {
    Add("A", {{"x", 1}});
    try {
        Add("A", {{"x", 2}});
        FAIL() << "the UID was taken twice";
    } catch (const UDMException& error) {
        EXPECT_THAT(error.what(), HasSubstr("'A'"));
    }
    EXPECT_EQ(AttributesOf("A").at(0).second, kxVariant(1));
}

TEST_F(LibraryEntities, ARefusedInsertDoesNotSpoilTheBatchAroundIt) {
    Add("A");
    store_->Update([&] {
        Add("B");
        EXPECT_THROW(Add("A"), UDMException);
        Add("C");
    });
    EXPECT_TRUE(Sees("B", ANN));
    EXPECT_TRUE(Sees("C", ANN));
}

TEST_F(LibraryEntities, NamesAndTextsMayHoldAnyBytes) {
    const std::string odd("qu'o\"te\0nul\xc3\xa9\xff%_;--", 19);
    const EntityId id =
        store_->Insert({.uid = "A", .definition = odd, .name = odd, .displayName = odd},
                       {{odd, kxVariant(odd)}},
                       {{odd, odd}, 1});
    EntityRow row;
    ASSERT_TRUE(store_->FindById(id, ANN, row));
    EXPECT_EQ(row.definition, odd);
    EXPECT_EQ(row.name, odd);
    EXPECT_EQ(row.displayName, odd);
    EXPECT_EQ(row.createdUser, odd);
    EXPECT_EQ(UnpackAttributes(row.packed).at(0).first, odd);
    std::vector<EntityRow> found;
    store_->FindInFolder(0, odd, odd, ANN, false, found);
    EXPECT_EQ(found.size(), 1u);
}

TEST_F(LibraryEntities, AWorkingOneIsSeenByItsUserInItsWorkspaceOnly) {
    Add("A", {}, RevisionState::Working);
    EntityRow row;
    ASSERT_TRUE(store_->FindByUid("A", ANN, row));
    EXPECT_EQ(row.state, RevisionState::Working);
    EXPECT_EQ(row.published, NO_REVISION);
    EXPECT_EQ(row.working, 0);
    EXPECT_EQ(row.lockUser, "ann");
    EXPECT_EQ(row.lockWorkspace, "desk");
    EXPECT_EQ(row.lockTime, 1000);
    EXPECT_FALSE(Sees("A", ANN_ELSEWHERE));
    EXPECT_FALSE(Sees("A", BOB));
    EXPECT_FALSE(store_->FindRevision("A", 0, BOB, row));
    EXPECT_TRUE(store_->FindRevision("A", 0, ANN, row));
}

TEST_F(LibraryEntities, NoneBeginsAsPublished) {
    EXPECT_THROW(Add("A", {}, RevisionState::Published), UDMException);
}

TEST_F(LibraryEntities, WhileCheckedOutOthersSeeThePublishedRevision) {
    const EntityId id = Add("A", {{"x", 1}}, RevisionState::Working);
    PublishByHand(id, 0);
    CheckOutByHand(id, 1);
    store_->UpdateAttributes(id, 1, {{"x", 2}}, {ANN, 5000});
    EntityRow row;
    ASSERT_TRUE(store_->FindByUid("A", ANN, row));
    EXPECT_EQ(row.revision, 1);
    EXPECT_EQ(row.modifiedTime, 5000);
    ASSERT_TRUE(store_->FindByUid("A", BOB, row));
    EXPECT_EQ(row.revision, 0);
    EXPECT_EQ(row.lockUser, "ann");
    EXPECT_EQ(AttributesOf("A").at(0).second, kxVariant(2));
    EXPECT_EQ(AttributesOf("A", BOB).at(0).second, kxVariant(1));
    EXPECT_TRUE(store_->FindRevision("A", 0, ANN, row));
    EXPECT_EQ(row.revision, 0);
    EXPECT_FALSE(store_->FindRevision("A", 1, BOB, row));
    EXPECT_THAT(store_->RevisionNumbers(id, ANN), ElementsAre(0, 1));
    EXPECT_THAT(store_->RevisionNumbers(id, BOB), ElementsAre(0));
}

TEST_F(LibraryEntities, ARevisionNumberNeverReachesTheNextEntity) {
    Add("A");
    Add("B");
    EntityRow row;
    EXPECT_FALSE(store_->FindRevision("A", MAX_REVISION + 1, ANN, row));
    EXPECT_FALSE(store_->FindRevision("B", -1 - MAX_REVISION, ANN, row));
    EXPECT_FALSE(store_->FindRevision("A", MAX_REVISION, ANN, row));
}

TEST_F(LibraryEntities, DetailsTellOfBranchVaultAndWorkspace) {
    const EntityId id = store_->Insert({.uid = "B",
                                        .definition = "Part",
                                        .name = "b",
                                        .state = RevisionState::Working,
                                        .branchUid = "A",
                                        .branchRevision = 4},
                                       {},
                                       {ANN, 1000});
    store_->SetVault(id, "vault2");
    EntityDetails details;
    ASSERT_TRUE(store_->Details(id, 0, details));
    EXPECT_EQ(details.branchUid, "A");
    EXPECT_EQ(details.branchRevision, 4);
    EXPECT_EQ(details.vault, "vault2");
    EXPECT_EQ(details.createdWorkspace, "desk");
    EXPECT_EQ(details.revisionCreatedUser, "ann");
    EXPECT_EQ(details.publishedTime, 0);
    EXPECT_FALSE(store_->Details(id, 1, details));
}

TEST_F(LibraryEntities, AnEditIsStampedAndGivesAllAttributesBack) {
    const EntityId id = Add("A", {{"x", 1}, {"y", 2}});
    const AttributeList expected = {{"x", 1}, {"y", kxVariant("two")}, {"z", 3}};
    EXPECT_EQ(UnpackAttributes(store_->UpdateAttributes(
                  id, 0, {{"y", kxVariant("two")}, {"z", 3}}, {BOB, 3000})),
              expected);
    EntityRow row;
    ASSERT_TRUE(store_->FindById(id, ANN, row));
    EXPECT_EQ(UnpackAttributes(row.packed), expected);
    EXPECT_EQ(row.modifiedTime, 3000);
    EXPECT_EQ(row.modifiedUser, "bob");
    EXPECT_EQ(row.createdTime, 1000);
    EXPECT_EQ(row.createdUser, "ann");
}

TEST_F(LibraryEntities, QueriedValuesFollowEachEdit) {
    const EntityId id = Add("A", {{"x", 1}, {"list", kxStlVector<kxString>{"a b", "c"}}});
    const std::string where =
        "SELECT typeof(value) || ' ' || value FROM head_attribute"
        " WHERE working=0 AND name=";
    EXPECT_EQ(Ask(where + "'x'"), "integer 1");
    EXPECT_EQ(Ask(where + "'list'"), "text {a b} c");
    EXPECT_EQ(Ask(where + "'displayname'"), "text The A");
    store_->UpdateAttributes(id, 0, {{"x", 2.5}, {"new", true}}, {ANN, 1});
    EXPECT_EQ(Ask(where + "'x'"), "real 2.5");
    EXPECT_EQ(Ask(where + "'new'"), "integer 1");
    store_->UpdateAttributes(id, 0, {{"x", kxVariant()}}, {ANN, 1});
    EXPECT_EQ(Ask(where + "'x'"), "no row");
    store_->SetDisplayName(id, 0, "Other", {ANN, 1});
    EXPECT_EQ(Ask(where + "'displayname'"), "text Other");
}

TEST_F(LibraryEntities, FoldedTextsAreKeptWhereTheyDifferAndFollowEachEdit) {
    const EntityId id = Add("A", {{"x", kxVariant("Steel")}, {"y", kxVariant("wood")}, {"n", 2}});
    const std::string where =
        "SELECT coalesce(folded, 'none') FROM head_attribute WHERE working=0 AND name=";
    EXPECT_EQ(Ask(where + "'x'"), "steel");
    EXPECT_EQ(Ask(where + "'y'"), "none");
    EXPECT_EQ(Ask(where + "'n'"), "none");
    EXPECT_EQ(Ask(where + "'displayname'"), "the a");
    EXPECT_EQ(Ask("SELECT name_folded FROM entity"), "a");
    store_->UpdateAttributes(
        id, 0, {{"x", kxVariant("iron")}, {"y", kxVariant("\xC3\x84")}}, {ANN, 1});
    EXPECT_EQ(Ask(where + "'x'"), "none");
    EXPECT_EQ(Ask(where + "'y'"), "a");
    store_->UpdateAttributes(id, 0, {{"y", 5}}, {ANN, 1});
    EXPECT_EQ(Ask(where + "'y'"), "none");
    store_->SetName(id, "B C", {ANN, 1});
    EXPECT_EQ(Ask("SELECT name_folded FROM entity"), "b c");
    store_->SetName(id, "b", {ANN, 1});
    EXPECT_EQ(Ask("SELECT coalesce(name_folded, 'none') FROM entity"), "none");
}

TEST_F(LibraryEntities, AnEditOfAWorkingRevisionLeavesTheQueriedPublishedValues) {
    const EntityId id = Add("A", {{"x", 1}});
    PublishByHand(id, 0);
    CheckOutByHand(id, 1);
    store_->UpdateAttributes(id, 1, {{"x", kxVariant()}}, {ANN, 1});
    EXPECT_EQ(Ask("SELECT value FROM head_attribute WHERE name='x' AND working=0"), "1");
    EXPECT_EQ(Ask("SELECT value IS NULL FROM head_attribute WHERE name='x' AND working=1"), "1");
}

TEST_F(LibraryEntities, APublishedRevisionCannotBeEdited) {
    const EntityId id = Add("A", {{"x", 1}}, RevisionState::Working);
    PublishByHand(id, 0);
    try {
        store_->UpdateAttributes(id, 0, {{"x", 2}}, {ANN, 1});
        FAIL() << "a published revision was edited";
    } catch (const UDMException& error) {
        EXPECT_THAT(error.what(), AllOf(HasSubstr("'A'"), HasSubstr("check it out")));
    }
    EXPECT_THROW(store_->SetDisplayName(id, 0, "Other", {ANN, 1}), UDMException);
    EXPECT_EQ(AttributesOf("A").at(0).second, kxVariant(1));
}

TEST_F(LibraryEntities, AnUnknownRevisionCannotBeEdited) {
    const EntityId id = Add("A");
    try {
        store_->UpdateAttributes(id, 7, {{"x", 2}}, {ANN, 1});
        FAIL() << "an unknown revision was edited";
    } catch (const UDMNotFoundException& error) {
        EXPECT_THAT(error.what(), AllOf(HasSubstr("revision 7"), HasSubstr("'A'")));
    }
}

TEST_F(LibraryEntities, AnEditThatCannotBeStoredChangesNothing) {
    const EntityId id = Add("A", {{"x", 1}});
    EXPECT_THROW(store_->UpdateAttributes(id, 0, {{"x", 2}, {"p", kxVariant(this, "t")}}, {ANN, 1}),
                 UDMException);
    EXPECT_EQ(AttributesOf("A").at(0).second, kxVariant(1));
}

TEST_F(LibraryEntities, ANewDisplayNameLeavesTheNameAndIsStamped) {
    const EntityId id = Add("A");
    store_->SetDisplayName(id, 0, "Other", {BOB, 3000});
    EntityRow row;
    ASSERT_TRUE(store_->FindById(id, ANN, row));
    EXPECT_EQ(row.displayName, "Other");
    EXPECT_EQ(row.name, "A");
    EXPECT_EQ(row.modifiedTime, 3000);
    EXPECT_EQ(row.modifiedUser, "bob");
}

TEST_F(LibraryEntities, ADeletionHidesAllThatIsOwnedAtAnyDepth) {
    const EntityId top = Add("top");
    const EntityId middle = Add("middle");
    const EntityId leaf = Add("leaf");
    const EntityId other = Add("other");
    Own(top, middle);
    Own(middle, leaf);
    store_->AddLink({.parent = top, .child = other, .name = "shared"}, {ANN, 1});
    const std::vector<DeletedRow> rows = store_->Delete(top, {ANN, 1});
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[0].uid, "top");
    EXPECT_EQ(rows[0].id, top);
    EXPECT_EQ(rows[0].newestRevision, 0);
    EXPECT_EQ(rows[1].uid, "middle");
    EXPECT_EQ(rows[2].uid, "leaf");
    EXPECT_FALSE(Sees("top", ANN));
    EXPECT_FALSE(Sees("middle", ANN));
    EXPECT_FALSE(Sees("leaf", ANN));
    EXPECT_TRUE(Sees("other", ANN));
    EXPECT_FALSE(store_->HasParent(other, 0, LinkKind::Owner, ANN));
}

TEST_F(LibraryEntities, ADeletedChildLeavesItsParentsListing) {
    const EntityId parent = Add("P");
    const EntityId child = Add("C");
    Own(parent, child);
    store_->Delete(child, {ANN, 1});
    EXPECT_THAT(ChildrenOf(parent), ElementsAre());
    EXPECT_EQ(store_->CountChildren(parent, 0, LinkKind::Owner, "", ANN), 0);
}

TEST_F(LibraryEntities, WhatOneDeletionHidComesBackTogether) {
    const EntityId top = Add("top");
    const EntityId leaf = Add("leaf");
    Own(top, leaf);
    const EntityId alone = Add("alone");
    store_->Delete(alone, {ANN, 1});
    store_->Delete(top, {ANN, 1});
    EXPECT_TRUE(store_->Undelete("leaf"));
    EXPECT_TRUE(Sees("top", ANN));
    EXPECT_THAT(ChildrenOf(top), ElementsAre("leaf"));
    EXPECT_FALSE(Sees("alone", ANN));
    EXPECT_FALSE(store_->Undelete("top"));
    EXPECT_FALSE(store_->Undelete("unknown"));
}

TEST_F(LibraryEntities, WhatSomebodyElseHasCheckedOutCannotBeDeleted) {
    const EntityId top = Add("top");
    const EntityId leaf = Add("leaf");
    Own(top, leaf);
    PublishByHand(leaf, 0);
    CheckOutByHand(leaf, 1);
    for (const Viewer& viewer : {BOB, ANN_ELSEWHERE}) {
        try {
            store_->Delete(top, {viewer, 1});
            FAIL() << "it was deleted";
        } catch (const UDMException& error) {
            EXPECT_THAT(error.what(),
                        AllOf(HasSubstr("'leaf'"),
                              HasSubstr("ann"),
                              HasSubstr("'desk'"),
                              HasSubstr("2024-05-01 12:34:56 UTC")));
        }
    }
    EXPECT_TRUE(Sees("top", BOB));
    EXPECT_EQ(store_->Delete(top, {ANN, 1}).size(), 2u);
}

TEST_F(LibraryEntities, ADeletedOneCannotBeDeletedAgain) {
    const EntityId id = Add("A");
    store_->Delete(id, {ANN, 1});
    EXPECT_THROW(store_->Delete(id, {ANN, 1}), UDMNotFoundException);
    EXPECT_THROW(store_->Delete(4711, {ANN, 1}), UDMNotFoundException);
}

TEST_F(LibraryEntities, ManyChangesInOneUpdateGoTogetherOrNotAtAll) {
    try {
        store_->Update([&] {
            Add("A");
            Add("B");
            throw std::runtime_error("changed my mind");
        });
        FAIL() << "the exception was swallowed";
    } catch (const std::runtime_error&) {
    }
    EXPECT_FALSE(Sees("A", ANN));
    const EntityId id = store_->Update([&] { return Add("A"); });
    EXPECT_EQ(store_->View([&] {
        EntityRow row;
        return store_->FindByUid("A", ANN, row) ? row.id : 0;
    }),
              id);
}
