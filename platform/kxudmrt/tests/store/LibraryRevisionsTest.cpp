#include "LibraryFixture.h"
#include "SyncCounter.h"
#include "TemporaryFolder.h"

using namespace kxudm::store;
namespace sql = kxudm::sql;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

constexpr Stamp BY_ANN{ANN, 1714566896000000};
constexpr Stamp BY_BOB{BOB, 1714566899000000};

class LibraryRevisions : public LibraryFixture {
  protected:
    EntityId Working(const std::string& uid, const AttributeList& attributes = {}) {
        return Add(uid, attributes, RevisionState::Working);
    }
    EntityId Published(const std::string& uid, const AttributeList& attributes = {}) {
        const EntityId id = Working(uid, attributes);
        store_->Publish(id, "", false, BY_ANN);
        return id;
    }
    EntityRow Row(EntityId id, const Viewer& viewer) {
        EntityRow row;
        EXPECT_TRUE(store_->FindById(id, viewer, row));
        return row;
    }
    bool Sees(EntityId id, const Viewer& viewer) {
        EntityRow row;
        return store_->FindById(id, viewer, row);
    }
    bool SeesRevision(const std::string& uid, int revision, const Viewer& viewer) {
        EntityRow row;
        return store_->FindRevision(uid, revision, viewer, row);
    }
    std::string Comment(EntityId id, int revision) {
        EntityDetails details;
        EXPECT_TRUE(store_->Details(id, revision, details));
        return details.comment;
    }
    // What queries find: "name working value" of each row.
    std::vector<std::string> Heads(EntityId id) {
        sql::Statement read(store_->Connection(),
                            "SELECT name || ' ' || working || ' ' || coalesce(value, 'NULL')"
                            " FROM head_attribute WHERE entity = " +
                                std::to_string(id) + " AND name <> 'displayname' ORDER BY 1");
        std::vector<std::string> heads;
        while (read.Step()) {
            heads.push_back(read.String(0));
        }
        return heads;
    }
    void Link(EntityId parent, EntityId child, LinkKind kind, int revision, int exact = -1) {
        store_->AddLink({.parent = parent,
                         .child = child,
                         .kind = kind,
                         .name = kind == LinkKind::Folder ? "" : "g",
                         .revision = revision,
                         .exactChildRevision = exact},
                        BY_ANN);
    }
    void Unlink(EntityId parent, EntityId child, LinkKind kind, int revision) {
        EXPECT_EQ(store_->RemoveLink(parent, child, kind, {}, revision, BY_ANN), 1);
    }
    void AddFileRow(EntityId id, const std::string& name, int from, const std::string& ending) {
        store_->Connection().Execute(
            "INSERT INTO file(entity, name, from_rev, ending, hash, size, modified_time, "
            "added_time,"
            " is_text) VALUES (" +
            std::to_string(id) + ", '" + name + "', " + std::to_string(from) + ", " + ending +
            ", 'h', 1, 2, 3, 0)");
    }
    // "name from to" of each file row.
    std::vector<std::string> Files(EntityId id) {
        sql::Statement read(store_->Connection(),
                            "SELECT name || ' ' || from_rev || ' ' || CASE to_rev WHEN 2147483647"
                            " THEN 'open' ELSE to_rev END FROM file WHERE entity = " +
                                std::to_string(id) + " ORDER BY name");
        std::vector<std::string> files;
        while (read.Step()) {
            files.push_back(read.String(0));
        }
        return files;
    }
    template <typename Action>
    std::string Refusal(Action&& action) {
        try {
            action();
        } catch (const kxudm::UDMException& failure) {
            return failure.what();
        }
        ADD_FAILURE() << "nothing was thrown";
        return {};
    }
};

}  // namespace

TEST_F(LibraryRevisions, TheFirstPublishMakesOneOutOfZeroForEverybody) {
    const EntityId id = Working("P", {{"mass", 2}});
    store_->AddSavePoint(id, "half", BY_ANN);
    EXPECT_EQ(store_->Publish(id, "done", false, BY_ANN), 1);
    const EntityRow row = Row(id, BOB);
    EXPECT_EQ(row.revision, 1);
    EXPECT_EQ(row.state, RevisionState::Published);
    EXPECT_EQ(row.working, NO_REVISION);
    EXPECT_FALSE(SeesRevision("P", 0, ANN));
    EXPECT_EQ(Comment(id, 1), "done");
    EXPECT_THAT(Heads(id), ElementsAre("mass 0 2"));
    // The save points went with it.
    ASSERT_EQ(store_->SavePoints(id, 1).size(), 1u);
    EXPECT_EQ(store_->SavePoints(id, 1)[0].comment, "half");
    EXPECT_TRUE(store_->SavePoints(id, 0).empty());
}

TEST_F(LibraryRevisions, ACheckOutIsSeenByItsHolderAlone) {
    const EntityId id = Published("P", {{"mass", 2}});
    EXPECT_EQ(store_->CheckOut(id, "why", BY_ANN), 2);
    EXPECT_EQ(Row(id, ANN).revision, 2);
    EXPECT_EQ(Row(id, ANN).packed, Row(id, BOB).packed);
    EXPECT_EQ(Row(id, BOB).revision, 1);
    EXPECT_EQ(Row(id, ANN_ELSEWHERE).revision, 1);
    EXPECT_FALSE(SeesRevision("P", 2, BOB));
    EXPECT_EQ(Comment(id, 2), "why");
    store_->UpdateAttributes(id, 2, {{"mass", 3}}, BY_ANN);
    EXPECT_THAT(Heads(id), ElementsAre("mass 0 2", "mass 1 3"));
    EXPECT_NE(Row(id, ANN).packed, Row(id, BOB).packed);
}

TEST_F(LibraryRevisions, ASecondCheckOutIsRefusedNamingTheHolder) {
    const EntityId id = Published("P");
    store_->CheckOut(id, "", BY_ANN);
    for (const Viewer& viewer : {BOB, ANN_ELSEWHERE}) {
        const std::string text = Refusal([&] { store_->CheckOut(id, "", {viewer, 1}); });
        EXPECT_THAT(text, HasSubstr("'P' can't be checked out: ann has it checked out in"));
        EXPECT_THAT(text, HasSubstr("workspace 'desk' since 2024-05-01 12:34:56 UTC"));
    }
    EXPECT_THAT(Refusal([&] { store_->CheckOut(id, "", BY_ANN); }),
                HasSubstr("checked out here already"));
}

TEST_F(LibraryRevisions, OnlyTheHolderSavesPublishesAndUndoes) {
    const EntityId id = Published("P");
    EXPECT_THAT(Refusal([&] { store_->Publish(id, "", false, BY_ANN); }),
                HasSubstr("'P' can't be published: it is not checked out"));
    store_->CheckOut(id, "", BY_ANN);
    EXPECT_THAT(Refusal([&] { store_->Publish(id, "", false, BY_BOB); }), HasSubstr("ann has it"));
    EXPECT_THAT(Refusal([&] { store_->Undo(id, BY_BOB); }), HasSubstr("ann has it"));
    EXPECT_THAT(Refusal([&] { store_->AddSavePoint(id, "", BY_BOB); }), HasSubstr("ann has it"));
    EXPECT_EQ(Row(id, ANN).revision, 2);
}

TEST_F(LibraryRevisions, PublishBringsWhatQueriesFindUpToDate) {
    const EntityId id = Published("P", {{"a", 1}, {"b", 2}, {"c", 3}});
    store_->CheckOut(id, "", BY_ANN);
    store_->UpdateAttributes(id, 2, {{"a", 10}, {"b", kxVariant()}, {"d", 4}}, BY_ANN);
    EXPECT_THAT(Heads(id), ElementsAre("a 0 1", "a 1 10", "b 0 2", "b 1 NULL", "c 0 3", "d 1 4"));
    EXPECT_EQ(store_->Publish(id, "", false, BY_ANN), 2);
    EXPECT_THAT(Heads(id), ElementsAre("a 0 10", "c 0 3", "d 0 4"));
}

TEST_F(LibraryRevisions, UndoLeavesNothingOfTheWorkingRevision) {
    const EntityId child = Published("C");
    const EntityId other = Published("D");
    const EntityId id = Working("P", {{"a", 1}});
    Link(id, child, LinkKind::Owner, 0);
    store_->Publish(id, "", false, BY_ANN);
    AddFileRow(id, "old", 1, "2");
    store_->CheckOut(id, "", BY_ANN);
    store_->UpdateAttributes(id, 2, {{"a", 10}}, BY_ANN);
    store_->AddSavePoint(id, "x", BY_ANN);
    Unlink(id, child, LinkKind::Owner, 2);
    Link(id, other, LinkKind::Owner, 2);
    AddFileRow(id, "new", 2, "NULL");
    EXPECT_EQ(store_->Undo(id, BY_ANN), 1);
    EXPECT_EQ(Row(id, ANN).revision, 1);
    EXPECT_EQ(Row(id, ANN).working, NO_REVISION);
    EXPECT_THAT(Heads(id), ElementsAre("a 0 1"));
    EXPECT_THAT(ChildrenOf(id, LinkKind::Owner, {}, 1), ElementsAre("C"));
    EXPECT_THAT(Files(id), ElementsAre("old 1 open"));
    EXPECT_EQ(Ask("SELECT count(*) FROM link WHERE ending IS NOT NULL OR from_rev = 2"), "0");
    EXPECT_EQ(Ask("SELECT count(*) FROM file WHERE ending IS NOT NULL"), "0");
    EXPECT_EQ(Ask("SELECT count(*) FROM savepoint"), "0");
    // And it can be checked out anew, by anybody.
    EXPECT_EQ(store_->CheckOut(id, "", BY_BOB), 2);
    EXPECT_THAT(store_->SavePoints(id, 2), IsEmpty());
}

TEST_F(LibraryRevisions, WhatWasNeverPublishedCantBeUndone) {
    const EntityId id = Working("P");
    EXPECT_THAT(Refusal([&] { store_->Undo(id, BY_ANN); }),
                HasSubstr("'P' was never published, so that there is nothing to go back to"));
    EXPECT_TRUE(Sees(id, ANN));
}

TEST_F(LibraryRevisions, LinksHoldForTheRevisionsInWhichTheyWere) {
    const EntityId a = Published("A");
    const EntityId b = Published("B");
    const EntityId c = Published("C");
    const EntityId id = Working("P");
    Link(id, a, LinkKind::Owner, 0);
    Link(id, b, LinkKind::Owner, 0);
    store_->Publish(id, "", false, BY_ANN);  // 1: A B
    store_->CheckOut(id, "", BY_ANN);
    Unlink(id, a, LinkKind::Owner, 2);
    Link(id, c, LinkKind::Owner, 2);
    EXPECT_THAT(ChildrenOf(id, LinkKind::Owner, {}, 1, BOB), ElementsAre("A", "B"));
    EXPECT_THAT(ChildrenOf(id, LinkKind::Owner, {}, 2), ElementsAre("B", "C"));
    EXPECT_THAT(ParentsOf(c, LinkKind::Owner, {}, false, 1, BOB), IsEmpty());
    EXPECT_THAT(ParentsOf(a, LinkKind::Owner, {}, false, 1, BOB), ElementsAre("P"));
    EXPECT_THAT(ParentsOf(a), IsEmpty());
    store_->Publish(id, "", false, BY_ANN);  // 2: B C
    store_->CheckOut(id, "", BY_ANN);
    Unlink(id, b, LinkKind::Owner, 3);
    Link(id, a, LinkKind::Owner, 3);
    store_->Publish(id, "", false, BY_ANN);  // 3: C A
    EXPECT_THAT(ChildrenOf(id, LinkKind::Owner, {}, 1, BOB), ElementsAre("A", "B"));
    EXPECT_THAT(ChildrenOf(id, LinkKind::Owner, {}, 2, BOB), ElementsAre("B", "C"));
    EXPECT_THAT(ChildrenOf(id, LinkKind::Owner, {}, 3, BOB), ElementsAre("C", "A"));
    EXPECT_THAT(ParentsOf(b, LinkKind::Owner, {}, false, 1, BOB), IsEmpty());
    EXPECT_THAT(ParentsOf(b, LinkKind::Owner, {}, true, 1, BOB), ElementsAre("P"));
}

TEST_F(LibraryRevisions, ACheckOutTouchesNoLink) {
    const EntityId id = Working("P");
    for (int i = 0; i < 50; ++i) {
        Link(id, Published("C" + std::to_string(i)), LinkKind::Owner, 0);
    }
    store_->Publish(id, "", false, BY_ANN);
    const std::int64_t before = store_->Connection().TotalChanges();
    store_->CheckOut(id, "", BY_ANN);
    // The revision and the lock.
    EXPECT_EQ(store_->Connection().TotalChanges() - before, 2);
    EXPECT_EQ(ChildrenOf(id, LinkKind::Owner, {}, 2).size(), 50u);
}

TEST_F(LibraryRevisions, FilesEndWithThePublishThatTookThemOut) {
    const EntityId id = Published("P");
    AddFileRow(id, "a", 0, "NULL");
    AddFileRow(id, "b", 0, "2");
    store_->CheckOut(id, "", BY_ANN);
    store_->Publish(id, "", false, BY_ANN);
    EXPECT_THAT(Files(id), ElementsAre("a 0 open", "b 0 2"));
}

TEST_F(LibraryRevisions, PublishAndKeepOpensTheNextOneAtOnce) {
    const EntityId id = Working("P");
    EXPECT_EQ(store_->Publish(id, "first", true, BY_ANN), 1);
    EXPECT_EQ(Row(id, ANN).revision, 2);
    EXPECT_EQ(Row(id, BOB).revision, 1);
    EXPECT_EQ(Comment(id, 2), "");
    EXPECT_EQ(store_->Publish(id, "second", true, BY_ANN), 2);
    EXPECT_EQ(Row(id, ANN).revision, 3);
    EXPECT_THAT(store_->RevisionNumbers(id, ANN), ElementsAre(1, 2, 3));
    EXPECT_THAT(store_->RevisionNumbers(id, BOB), ElementsAre(1, 2));
}

TEST_F(LibraryRevisions, AnEmptyCommentLeavesTheOneBefore) {
    const EntityId id = Published("P");
    store_->CheckOut(id, "for the wheel", BY_ANN);
    store_->AddSavePoint(id, "", BY_ANN);
    EXPECT_EQ(Comment(id, 2), "for the wheel");
    store_->AddSavePoint(id, "half done", BY_ANN);
    EXPECT_EQ(Comment(id, 2), "half done");
    store_->Publish(id, "", false, BY_ANN);
    EXPECT_EQ(Comment(id, 2), "half done");
    ASSERT_EQ(store_->SavePoints(id, 2).size(), 2u);
    EXPECT_EQ(store_->SavePoints(id, 2)[1].user, "ann");
    EXPECT_EQ(store_->SavePoints(id, 2)[1].time, BY_ANN.time);
}

TEST_F(LibraryRevisions, ALinkToAnExactRevisionFollowsTheFirstPublishAndDiesWithAnUndo) {
    const EntityId id = Working("P");
    const EntityId from = Working("F");
    const EntityId other = Working("G");
    Link(from, id, LinkKind::Relation, 0, 0);
    store_->Publish(id, "", false, BY_ANN);
    EXPECT_EQ(Ask("SELECT exact FROM link"), "1");
    EXPECT_THAT(ChildrenOf(from, LinkKind::Relation), ElementsAre("P"));
    store_->CheckOut(id, "", BY_ANN);
    Link(other, id, LinkKind::Relation, 0, 2);
    EXPECT_THAT(ChildrenOf(other, LinkKind::Relation), ElementsAre("P"));
    store_->Undo(id, BY_ANN);
    EXPECT_THAT(ChildrenOf(other, LinkKind::Relation), IsEmpty());
    EXPECT_EQ(Ask("SELECT count(*) FROM link"), "1");
}

TEST_F(LibraryRevisions, AnExactRelationHoldsForTheRevisionOfItsFirstEndAlone) {
    const EntityId id = Working("P");
    const EntityId other = Published("O");
    Link(id, other, LinkKind::Relation, 0, 1);
    const auto holds = [&](int revision) {
        std::vector<LinkedRow> rows;
        store_->Children(id, revision, LinkKind::Relation, {}, ANN, rows);
        return rows.size() == 1;
    };
    EXPECT_TRUE(holds(0));
    store_->Publish(id, "", false, BY_ANN);
    EXPECT_TRUE(holds(1));
    store_->CheckOut(id, "", BY_ANN);
    EXPECT_FALSE(holds(2));
    EXPECT_TRUE(holds(1));
    // An undo brings back what was removed, and this was not.
    store_->Undo(id, BY_ANN);
    store_->CheckOut(id, "", BY_ANN);
    EXPECT_FALSE(holds(2));
    Link(id, other, LinkKind::Relation, 2, 1);
    EXPECT_TRUE(holds(2));
    store_->Publish(id, "", true, BY_ANN);
    EXPECT_TRUE(holds(1));
    EXPECT_TRUE(holds(2));
    EXPECT_FALSE(holds(3));
    store_->Publish(id, "", false, BY_ANN);
    EXPECT_TRUE(holds(2));
    EXPECT_FALSE(holds(3));
    EXPECT_EQ(Ask("SELECT group_concat(from_rev || '-' || to_rev, ' ') FROM link"), "0-2 2-3");
}

TEST_F(LibraryRevisions, RelatedEntitiesAreFoundByTypeAndByTheRevisionOfTheSecondEnd) {
    const EntityId other = Published("O");
    const EntityId follows = Published("F");
    const EntityId exact = Published("E");
    for (const EntityId id : {exact, follows}) {
        store_->CheckOut(id, "", BY_ANN);
    }
    Link(follows, other, LinkKind::Relation, 2);
    Link(exact, other, LinkKind::Relation, 2, 1);
    const auto related = [&](int revision, std::string_view type, bool older) {
        std::vector<LinkedRow> rows;
        store_->Parents(other, revision, LinkKind::Relation, type, ANN, rows, older);
        std::vector<std::string> uids;
        for (const LinkedRow& row : rows) {
            uids.push_back(row.entity.uid);
        }
        return uids;
    };
    EXPECT_THAT(related(1, "g", false), ElementsAre("F", "E"));
    EXPECT_THAT(related(1, "", false), ElementsAre("F", "E"));
    EXPECT_THAT(related(2, "g", false), ElementsAre("F"));
    EXPECT_THAT(related(NO_REVISION, "g", false), ElementsAre("F", "E"));
    EXPECT_THAT(related(1, "h", false), IsEmpty());
    store_->Publish(exact, "", true, BY_ANN);
    Unlink(follows, other, LinkKind::Relation, 2);
    EXPECT_THAT(related(1, "g", false), IsEmpty());
    EXPECT_THAT(related(1, "g", true), ElementsAre("E"));
    EXPECT_THAT(related(2, "g", true), IsEmpty());
}

TEST_F(LibraryRevisions, ABranchIsANewEntityWithWhatTheRevisionHad) {
    const EntityId folder = Add("Folder", {}, RevisionState::Unversioned, "Foldertype");
    const EntityId shared = Published("Shared");
    const EntityId own = Published("Own");
    const EntityId id = Working("P", {{"a", 1}});
    Link(id, shared, LinkKind::Owner, 0);
    Link(id, shared, LinkKind::Reference, 0);
    Link(id, shared, LinkKind::Relation, 0);
    Own(id, own, "drawings");
    Link(folder, id, LinkKind::Folder, 0);
    store_->Publish(id, "", false, BY_ANN);
    AddFileRow(id, "deck", 0, "NULL");
    store_->SetVault(id, "big");
    store_->CheckOut(id, "", BY_ANN);
    store_->UpdateAttributes(id, 2, {{"a", 2}}, BY_ANN);
    Unlink(id, shared, LinkKind::Reference, 2);
    Unlink(folder, id, LinkKind::Folder, 2);
    store_->Publish(id, "", false, BY_ANN);

    const EntityId branch = store_->Branch(id, 1, "B", "another way", BY_BOB);
    const EntityRow row = Row(branch, BOB);
    EXPECT_EQ(row.uid, "B");
    EXPECT_EQ(row.revision, 0);
    EXPECT_EQ(row.state, RevisionState::Working);
    EXPECT_EQ(row.displayName, "The P");
    EXPECT_EQ(row.createdUser, "bob");
    EXPECT_FALSE(Sees(branch, ANN));
    EXPECT_THAT(Heads(branch), ElementsAre("a 1 1"));
    EXPECT_THAT(ChildrenOf(branch, LinkKind::Owner, {}, 0, BOB), ElementsAre("Shared"));
    EXPECT_THAT(ChildrenOf(branch, LinkKind::Reference, {}, 0, BOB), ElementsAre("Shared"));
    EXPECT_THAT(ChildrenOf(branch, LinkKind::Relation, {}, 0, BOB), IsEmpty());
    EXPECT_THAT(ParentsOf(branch, LinkKind::Folder, {}, false, 0, BOB), ElementsAre("Folder"));
    EXPECT_THAT(ParentsOf(branch, LinkKind::Owner, {}, false, 0, BOB), IsEmpty());
    EXPECT_THAT(Files(branch), ElementsAre("deck 0 open"));
    EntityDetails details;
    ASSERT_TRUE(store_->Details(branch, 0, details));
    EXPECT_EQ(details.comment, "another way");
    EXPECT_EQ(details.branchUid, "P");
    EXPECT_EQ(details.branchRevision, 1);
    EXPECT_EQ(details.vault, "big");
}

TEST_F(LibraryRevisions, ABranchTakesNoChildThatHasFoundItsOneOwner) {
    const EntityId child = Published("C");
    const EntityId gone = Published("Gone");
    const EntityId id = Working("P");
    Link(id, child, LinkKind::Owner, 0);
    Link(id, child, LinkKind::Reference, 0);
    Link(id, gone, LinkKind::Reference, 0);
    store_->Publish(id, "", false, BY_ANN);
    store_->CheckOut(id, "", BY_ANN);
    EXPECT_EQ(store_->RemoveLink(id, child, LinkKind::Owner, {}, 2, BY_ANN), 1);
    store_->Publish(id, "", false, BY_ANN);
    const EntityId owner = Working("O");
    Own(owner, child);
    store_->Delete(gone, BY_ANN);
    const EntityId branch = store_->Branch(id, 1, "B", "", BY_BOB);
    EXPECT_THAT(ChildrenOf(branch, LinkKind::Owner, {}, 0, BOB), IsEmpty());
    EXPECT_THAT(ChildrenOf(branch, LinkKind::Reference, {}, 0, BOB), ElementsAre("C"));
    EXPECT_EQ(Ask("SELECT count(*) FROM link WHERE first = " + std::to_string(branch)), "1");
    // An owner that is deleted owns nothing any more.
    store_->Connection().Execute("UPDATE entity SET deleted = 9 WHERE uid = 'O'");
    const EntityId next = store_->Branch(id, 1, "B2", "", BY_BOB);
    EXPECT_THAT(ChildrenOf(next, LinkKind::Owner, {}, 0, BOB), ElementsAre("C"));
}

TEST_F(LibraryRevisions, BranchesAreListedInTheOrderOfTheirCreationToWhomSeesThem) {
    const EntityId id = Published("P");
    store_->CheckOut(id, "", BY_ANN);
    store_->Publish(id, "", false, BY_ANN);
    const EntityId second = store_->Branch(id, 1, "B2", "", BY_BOB);
    store_->Branch(id, 2, "B1", "", {ANN, BY_BOB.time + 1});
    std::vector<BranchRow> branches;
    store_->Branches("P", BOB, branches);
    ASSERT_EQ(branches.size(), 1u);
    EXPECT_EQ(branches[0].entity.uid, "B2");
    EXPECT_EQ(branches[0].originRevision, 1);
    store_->Publish(second, "", false, BY_BOB);
    branches.clear();
    store_->Branches("P", ANN, branches);
    ASSERT_EQ(branches.size(), 2u);
    EXPECT_EQ(branches[0].entity.uid, "B2");
    EXPECT_EQ(branches[0].entity.revision, 1);
    EXPECT_EQ(branches[1].entity.uid, "B1");
    EXPECT_EQ(branches[1].originRevision, 2);
}

TEST_F(LibraryRevisions, OnlyAPublishedRevisionCanBeBranched) {
    const EntityId id = Working("P");
    EXPECT_THAT(Refusal([&] { store_->Branch(id, 0, "B", "", BY_ANN); }),
                HasSubstr("no published"));
    EXPECT_THAT(Refusal([&] { store_->Branch(id, 7, "B", "", BY_ANN); }), HasSubstr("revision 7"));
    EXPECT_EQ(Ask("SELECT count(*) FROM entity"), "1");
}

TEST_F(LibraryRevisions, NoPublishAndNoUndoGivesAChildTwoOwners) {
    const EntityId child = Published("C");
    const EntityId from = Working("From");
    const EntityId to = Working("To");
    Own(from, child);
    store_->Publish(from, "", false, BY_ANN);
    store_->CheckOut(from, "", BY_ANN);
    Unlink(from, child, LinkKind::Owner, 2);
    OwnerInfo owner;
    // Ann may move it, others must wait for the publish.
    EXPECT_FALSE(store_->AnyOwner(child, false, ANN, owner));
    EXPECT_TRUE(store_->AnyOwner(child, false, BOB, owner));
    EXPECT_EQ(owner.uid, "From");
    EXPECT_THAT(owner.elsewhere, HasSubstr("ann has that checked out in workspace 'desk' since"));
    Own(to, child);
    EXPECT_THAT(Refusal([&] { store_->Publish(to, "", false, BY_ANN); }),
                HasSubstr("'To' can't be published: its child 'C' is still owned by 'From'"));
    EXPECT_THAT(
        Refusal([&] { store_->Undo(from, BY_ANN); }),
        HasSubstr("check-out of 'From' can't be undone: 'C', which would come back to it, is "
                  "owned by 'To'"));
    store_->Publish(from, "", false, BY_ANN);
    store_->Publish(to, "", false, BY_ANN);
    EXPECT_THAT(ParentsOf(child, LinkKind::Owner, {}, false, 1, BOB), ElementsAre("To"));
}

TEST_F(LibraryRevisions, AnOwnerInAWorkingRevisionThatIsNotSeenCounts) {
    const EntityId child = Published("C");
    const EntityId id = Working("P");
    Link(id, child, LinkKind::Owner, 0);
    OwnerInfo owner;
    EXPECT_FALSE(store_->AnyOwner(child, false, BOB, owner));
    EXPECT_TRUE(store_->AnyOwner(child, true, BOB, owner));
    EXPECT_EQ(owner.uid, "P");
    EXPECT_THAT(owner.elsewhere, HasSubstr("ann has that"));
    EXPECT_TRUE(store_->AnyOwner(child, true, ANN, owner));
    EXPECT_EQ(owner.elsewhere, "");
}

TEST_F(LibraryRevisions, RootsAreThoseThatTheViewerSeesNoOwnerOf) {
    const EntityId child = Published("C");
    const EntityId id = Published("P");
    const auto roots = [&](const Viewer& viewer) {
        std::vector<EntityRow> rows;
        store_->VisitHits({}, viewer, true, 0, 0, Into(rows));
        return Uids(rows);
    };
    store_->CheckOut(id, "", BY_ANN);
    Link(id, child, LinkKind::Owner, 2);
    EXPECT_THAT(roots(ANN), ElementsAre("P"));
    EXPECT_THAT(roots(BOB), ElementsAre("C", "P"));
    store_->Publish(id, "", false, BY_ANN);
    EXPECT_THAT(roots(BOB), ElementsAre("P"));
    store_->CheckOut(id, "", BY_ANN);
    Unlink(id, child, LinkKind::Owner, 3);
    EXPECT_THAT(roots(ANN), ElementsAre("C", "P"));
    EXPECT_THAT(roots(BOB), ElementsAre("P"));
}

TEST_F(LibraryRevisions, TheTopIsWhatLiesInNoFolderInTheRevisionSeen) {
    const EntityId folder = Add("Folder", {}, RevisionState::Unversioned, "Foldertype");
    const EntityId id = Published("P");
    const auto top = [&](const Viewer& viewer) {
        std::vector<EntityRow> rows;
        store_->FindInFolder(0, "Part", "P", viewer, false, rows);
        return Uids(rows);
    };
    store_->CheckOut(id, "", BY_ANN);
    Link(folder, id, LinkKind::Folder, 2);
    EXPECT_THAT(top(ANN), IsEmpty());
    EXPECT_THAT(top(BOB), ElementsAre("P"));
    EXPECT_THAT(ChildrenOf(folder, LinkKind::Folder, {}, 0, BOB), IsEmpty());
    std::vector<MovedPlace> places;
    store_->MovedPlaces(id, 2, places);
    ASSERT_EQ(places.size(), 1u);
    EXPECT_TRUE(places[0].entered);
    EXPECT_EQ(places[0].place, folder);
    store_->Publish(id, "", false, BY_ANN);
    EXPECT_THAT(top(BOB), IsEmpty());
    store_->CheckOut(id, "", BY_ANN);
    Unlink(folder, id, LinkKind::Folder, 3);
    places.clear();
    store_->MovedPlaces(id, 3, places);
    ASSERT_EQ(places.size(), 1u);
    EXPECT_FALSE(places[0].entered);
}

TEST_F(LibraryRevisions, CountingChildrenEndsAtTheLimitAndCountsWhatTheViewerDoesNotSee) {
    const EntityId id = Working("P");
    for (const char* uid : {"A", "B", "C"}) {
        Link(id, Working(uid), LinkKind::Owner, 0);
    }
    EXPECT_EQ(store_->CountChildrenUpTo(2, id, LinkKind::Owner, "g"), 2);
    EXPECT_EQ(store_->CountChildrenUpTo(9, id, LinkKind::Owner, "g"), 3);
    EXPECT_EQ(store_->CountChildrenUpTo(9, id, LinkKind::Owner, "h"), 0);
    store_->Publish(id, "", false, BY_ANN);
    store_->CheckOut(id, "", BY_BOB);
    EXPECT_THAT(ChildrenOf(id, LinkKind::Owner, {}, 2, BOB), IsEmpty());
    EXPECT_EQ(store_->CountChildrenUpTo(9, id, LinkKind::Owner, "g"), 3);
}

TEST_F(LibraryRevisions, SeenRevisionTellsOfDeletedOnesToo) {
    const EntityId id = Published("P");
    store_->CheckOut(id, "", BY_ANN);
    store_->Delete(id, BY_ANN);
    EXPECT_EQ(store_->SeenRevision(id, ANN), 2);
    EXPECT_EQ(store_->SeenRevision(id, BOB), 1);
    EXPECT_EQ(store_->SeenRevision(Working("Q"), BOB), NO_REVISION);
    EXPECT_EQ(store_->SeenRevision(4711, BOB), NO_REVISION);
}

TEST_F(LibraryRevisions, AFailedStepLeavesEverythingAsItWas) {
    const EntityId id = Published("P", {{"a", 1}});
    store_->CheckOut(id, "", BY_ANN);
    store_->UpdateAttributes(id, 2, {{"a", 2}}, BY_ANN);
    store_->Connection().Execute(
        "CREATE TRIGGER fail BEFORE UPDATE OF published ON entity BEGIN"
        " SELECT raise(ABORT, 'no'); END");
    EXPECT_THROW(store_->Publish(id, "", false, BY_ANN), kxudm::UDMException);
    EXPECT_EQ(Row(id, ANN).revision, 2);
    EXPECT_EQ(Row(id, ANN).state, RevisionState::Working);
    EXPECT_THAT(Heads(id), ElementsAre("a 0 1", "a 1 2"));
}

TEST(LibraryRevisionsDurability, PublishFlushesAndACheckOutDoesNot) {
    const TemporaryFolder folder;
    const auto store = LibraryStore::Create(
        sql::sqlite::Open(
            {.file = folder.File("L.ldb"), .create = true, .vfs = RegisterSyncCounter()}),
        {.name = "L", .id = "I"},
        "<c/>");
    const EntityId id = store->Insert({.uid = "P", .state = RevisionState::Working}, {}, BY_ANN);
    const int before = SyncCount();
    store->Publish(id, "", false, BY_ANN);
    const int published = SyncCount();
    EXPECT_GT(published, before);
    store->CheckOut(id, "", BY_ANN);
    EXPECT_EQ(SyncCount(), published);
}
