// The rows of the life of an entity, S4 to S11, as two users and two workspaces see them.
#include "Revisions.h"
#include "store/LibraryStore.h"

namespace kxudm::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;

class Revisions : public testing::Test {
  protected:
    Library library;
    ProfilePtr ann = library.Open("ann");
    ProfilePtr bob = library.Open("bob");
    ProfilePtr annAtHome = library.Open("ann", "home");
    UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
};

TEST_F(Revisions, S4_TheFirstPublishMakesRevisionOneForEverybody) {
    EXPECT_FALSE(Sees(bob, Base(part)));
    EXPECT_FALSE(Sees(annAtHome, Base(part)));
    ann->PersistEntity(part, "first", false, true, true);
    for (const ProfilePtr& session : {ann, bob, annAtHome}) {
        const UDMItemHandle seen = session->GetEntity(Base(part));
        EXPECT_EQ(seen.GetRevision(), 1);
        EXPECT_EQ(seen.GetUID(), At(part, 1));
        EXPECT_FALSE(seen.IsEditable());
        EXPECT_EQ(seen.GetAttributeValue("smd_comment"), kxVariant("first"));
        EXPECT_EQ(seen.GetAttributeValue("smd_contentrevision"), kxVariant(1));
        EXPECT_FALSE(Sees(session, At(part, 0)));
    }
    // Revision 0 is no more; its handle still says what it stood for.
    EXPECT_FALSE(part.IsEditable());
    EXPECT_EQ(part.GetUID(), At(part, 0));
    EXPECT_EQ(part.GetDisplayName(), "Wheel");
    EXPECT_THROW(part.GetAttributeValue("mass"), UDMNotFoundException);
}

TEST_F(Revisions, S4_ThePublishedRevisionIsRefusedToEverybodysEdits) {
    const UDMItemHandle child = ann->CreateEntity("Drawing", "Front");
    UDMItemHandle folder;
    ann->CreateFolder(folder, "/F");
    const UDMItemHandle published = Publish(ann, part);
    const std::vector<std::function<void()>> edits{
        [&] { ann->SetAttributeValue(published, "mass", 2.0); },
        [&] { ann->SetAttributeValue(published, "name", "Other"); },
        [&] { ann->SetDisplayName("Other", published); },
        [&] { ann->AddChild(published, child, "drawings"); },
        [&] { ann->CreateAndAddChild("Drawing", "Side", published, "drawings"); },
        [&] { ann->MoveContent(published, folder); },
        [&] { ann->SaveEntity(published, "", true); },
        [&] { ann->PersistEntity(published, "", false, true, true); },
        [&] { bob->SetAttributeValue(bob->GetEntity(Base(part)), "mass", 2.0); }};
    for (const auto& edit : edits) {
        EXPECT_THAT(Refusal(edit), HasSubstr("is published; check it out first"));
    }
    EXPECT_EQ(published.GetAttributeValue("mass"), kxVariant(1.5));
    EXPECT_THAT(Children(ann, published), IsEmpty());
    EXPECT_THAT(Children(ann, folder, "folder"), IsEmpty());
}

TEST_F(Revisions, S4_PublishAsksForMandatoryAttributesAndTheMinimumOfGroups) {
    const UDMItemHandle order = ann->CreateEntity("Order", "4711");
    EXPECT_THAT(Refusal([&] { Publish(ann, order); }),
                HasSubstr("can't be published: it must have a value of \"number\", \"receivers\""));
    ann->SetAttributeValue(order, "number", "4711");
    ann->SetAttributeValue(order, "receivers", kxStlVector<kxString>{"bob"});
    EXPECT_THAT(
        Refusal([&] { Publish(ann, order); }),
        HasSubstr("its group \"lines\" has 0 and needs at least 2; add what is missing first"));
    ann->AddChild(order, ann->CreateEntity("Part", "a"), "lines");
    EXPECT_THAT(Refusal([&] { Publish(ann, order); }), HasSubstr("\"lines\" has 1 and needs"));
    ann->AddChild(order, ann->CreateEntity("Part", "b"), "lines");
    EXPECT_THAT(Refusal([&] { Publish(ann, order); }), HasSubstr("\"annexes\" has 0"));
    EXPECT_TRUE(order.IsEditable());
    EXPECT_FALSE(Sees(bob, Base(order)));
    ann->AddChild(order, part, "annexes");
    EXPECT_EQ(Publish(ann, order).GetRevision(), 1);
}

TEST_F(Revisions, S5_ACheckOutOpensTheNextRevisionForItsWorkspaceAlone) {
    ann->SetAttributeValue(part, "mass", 3.0);
    const UDMItemHandle one = Publish(ann, part);
    ann->Checkout(one, "thicker");
    const UDMItemHandle two = ann->GetEntity(Base(part));
    EXPECT_EQ(two.GetUID(), At(part, 2));
    EXPECT_TRUE(two.IsEditable());
    EXPECT_EQ(two.GetAttributeValue("mass"), kxVariant(3.0));
    EXPECT_EQ(two.GetAttributeValue("smd_comment"), kxVariant("thicker"));
    EXPECT_EQ(ann->GetWorkingHandle(one).GetUID(), two.GetUID());
    EXPECT_FALSE(one.IsEditable());
    for (const ProfilePtr& other : {bob, annAtHome}) {
        EXPECT_EQ(other->GetEntity(Base(part)).GetRevision(), 1);
        EXPECT_FALSE(Sees(other, At(part, 2)));
        EXPECT_TRUE(Sees(other, At(part, 1)));
    }
    EXPECT_TRUE(Sees(ann, At(part, 1)));
}

TEST_F(Revisions, S5_EditsOfTheWorkingRevisionAreSeenInItsWorkspaceAlone) {
    const UDMItemHandle annTwo = CheckOut(ann, Publish(ann, part));
    const UDMItemHandle bobOne = bob->GetEntity(Base(part));
    const ProfilePtr annAgain = library.Open("ann");
    const UDMItemHandle againTwo = annAgain->GetEntity(Base(part));
    ann->SetAttributeValue(annTwo, "mass", 9.0);
    ann->SetDisplayName("Big wheel", annTwo);
    const UDMItemHandle child = ann->CreateAndAddChild("Drawing", "Front", annTwo, "drawings");
    EXPECT_EQ(againTwo.GetAttributeValue("mass"), kxVariant(9.0));
    EXPECT_THAT(Children(annAgain, againTwo), ElementsAre("Front"));
    EXPECT_EQ(bobOne.GetAttributeValue("mass"), kxVariant(1.5));
    EXPECT_EQ(bobOne.GetDisplayName(), "Wheel");
    EXPECT_THAT(Children(bob, bobOne), IsEmpty());
    EXPECT_THAT(Children(ann, ann->GetEntity(At(part, 1))), IsEmpty());
    // A second session at the same place holds the same check-out.
    annAgain->SetAttributeValue(againTwo, "count", 4);
    EXPECT_EQ(annTwo.GetAttributeValue("count"), kxVariant(4));
}

TEST_F(Revisions, AHandleOfARevisionThatIsNoMoreNamesTheOneThatStands) {
    ann->PersistEntity(part, "", false, true, true);
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] { ann->Checkout(part, ""); }),
                AllOf(HasSubstr("revision " + At(part, 0) + " is there no more"),
                      HasSubstr("stands at revision 1; use that")));
    const UDMItemHandle two = CheckOut(ann, ann->GetEntity(Base(part)));
    ann->UndoCheckout(two);
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] { ann->SetAttributeValue(two, "mass", 1.0); }),
                HasSubstr("stands at revision 1; use that"));
    ann->DeleteEntity(ann->GetEntity(Base(part)), true, false);
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] { ann->Checkout(two, ""); }),
                HasSubstr("is deleted or not visible any more"));
}

TEST_F(Revisions, ACommentThatIsNoTextIsRefusedByEachStep) {
    const UDMItemHandle published = Published(ann, "Hub");
    for (const kxString& bad : {kxString("\xFF"), kxString(std::string("a\0b", 3))}) {
        const auto refused = HasSubstr("is not UTF-8 text without zero bytes");
        EXPECT_THAT(Refusal([&] { ann->Checkout(published, bad); }), refused);
        EXPECT_THAT(Refusal([&] { ann->SaveEntity(part, bad, true); }), refused);
        EXPECT_THAT(Refusal([&] { ann->PersistEntity(part, bad, false, true, true); }), refused);
    }
    EXPECT_FALSE(Newest(ann, published).IsEditable());
    EXPECT_TRUE(part.IsEditable());
    EXPECT_TRUE(part.GetAttributeValue("smd_comment").IsEmpty());
}

TEST_F(Revisions, S5_ALockedEntityNamesItsHolderWorkspaceAndTime) {
    CheckOut(ann, Publish(ann, part));
    for (const ProfilePtr& other : {bob, annAtHome}) {
        EXPECT_THAT(Refusal([&] { CheckOut(other, part); }),
                    MatchesRegex(".*can't be checked out: ann has it checked out in workspace"
                                 " 'desk' since 20..-..-.. ..:..:.. UTC; it must be published or"
                                 " undone there first"));
        const UDMItemHandle seen = other->GetEntity(Base(part));
        EXPECT_THAT(Refusal([&] { other->SetAttributeValue(seen, "mass", 1.0); }),
                    MatchesRegex(".*can't be edited: ann has it checked out in workspace \"desk\" "
                                 "since 20..-..-..T..:..:..Z; it must be published or undone"));
        EXPECT_THAT(
            Refusal<UDMNotFoundException>([&] { other->GetWorkingHandle(seen); }),
            HasSubstr("no working revision in workspace \"" +
                      std::string(other == bob ? "desk" : "home") + "\": ann has it checked out"));
        EXPECT_THAT(Refusal([&] { other->UndoCheckout(seen); }),
                    HasSubstr("can't be undone: ann has it checked out"));
    }
    EXPECT_EQ(NewestNumber(ann, part), 2);
}

TEST_F(Revisions, S5_WhoHasItCheckedOutIsToldSo) {
    EXPECT_THAT(Refusal([&] { ann->Checkout(part, ""); }),
                HasSubstr("is checked out here already"));
    const UDMItemHandle one = Publish(ann, part);
    CheckOut(ann, one);
    EXPECT_THAT(Refusal([&] { ann->Checkout(one, ""); }),
                AllOf(HasSubstr("is checked out here already"), HasSubstr("edit its revision 2")));
    EXPECT_THAT(Refusal([&] { ann->SetAttributeValue(one, "mass", 1.0); }),
                HasSubstr("is published; edit the working revision 2"));
    EXPECT_THAT(Versions(ann, one), ElementsAre(1, 2));
}

TEST_F(Revisions, S5_WhatIsNotCheckedOutHasNoWorkingHandle) {
    const UDMItemHandle one = Publish(ann, part);
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] { ann->GetWorkingHandle(one); }),
                HasSubstr("in workspace \"desk\": it is published; check it out first"));
}

TEST_F(Revisions, S6_ASaveKeepsTheRevisionAndItsComment) {
    const UDMItemHandle two = CheckOut(ann, Publish(ann, part));
    ann->SetAttributeValue(two, "mass", 4.0);
    ann->SaveEntity(two, "half done", true);
    EXPECT_EQ(two.GetAttributeValue("smd_comment"), kxVariant("half done"));
    EXPECT_TRUE(two.IsEditable());
    EXPECT_EQ(NewestNumber(ann, part), 2);
    EXPECT_EQ(NewestNumber(bob, part), 1);
    ann->SaveEntity(two, "", true);
    EXPECT_EQ(two.GetAttributeValue("smd_comment"), kxVariant("half done"));
    // A first revision can be saved, too.
    const UDMItemHandle fresh = ann->CreateEntity("Part", "Fresh");
    ann->SaveEntity(fresh, "begun", true);
    EXPECT_EQ(fresh.GetRevision(), 0);
    EXPECT_FALSE(Sees(bob, Base(fresh)));
}

TEST_F(Revisions, S7_APublishShowsTheWorkingRevisionToEverybody) {
    const UDMItemHandle two = CheckOut(ann, Publish(ann, part));
    const UDMItemHandle bobsOne = bob->GetEntity(Base(part));
    ann->SetAttributeValue(two, "mass", 9.0);
    ann->PersistEntity(two, "done", false, true, true);
    EXPECT_FALSE(two.IsEditable());
    EXPECT_EQ(two.GetAttributeValue("mass"), kxVariant(9.0));
    for (const ProfilePtr& session : {ann, bob, annAtHome}) {
        const UDMItemHandle newest = session->GetEntity(Base(part));
        EXPECT_EQ(newest.GetRevision(), 2);
        EXPECT_EQ(newest.GetAttributeValue("mass"), kxVariant(9.0));
        EXPECT_EQ(session->GetEntity(At(part, 1)).GetAttributeValue("mass"), kxVariant(1.5));
    }
    // The lock is gone with it.
    EXPECT_EQ(CheckOut(bob, part).GetRevision(), 3);
    EXPECT_EQ(bobsOne.GetRevision(), 1);
}

TEST_F(Revisions, S8_PublishAndKeepGoesOnAtTheNextRevision) {
    const UDMItemHandle two = Publish(ann, part, "first", true);
    EXPECT_EQ(two.GetRevision(), 2);
    EXPECT_TRUE(two.IsEditable());
    EXPECT_EQ(NewestNumber(bob, part), 1);
    ann->SetAttributeValue(two, "mass", 5.0);
    const UDMItemHandle three = Publish(ann, part, "second", true);
    EXPECT_EQ(three.GetRevision(), 3);
    EXPECT_EQ(three.GetAttributeValue("mass"), kxVariant(5.0));
    EXPECT_EQ(bob->GetEntity(Base(part)).GetAttributeValue("mass"), kxVariant(5.0));
    EXPECT_FALSE(two.IsEditable());
    EXPECT_THAT(Refusal([&] { CheckOut(bob, part); }), HasSubstr("ann has it checked out"));
    ann->UndoCheckout(three);
    EXPECT_EQ(NewestNumber(ann, part), 2);
}

TEST_F(Revisions, S9_AnUndoGoesBackToWhatWasPublished) {
    const UDMItemHandle other = Published(ann, "Other", "Drawing");
    UDMItemHandle folder;
    ann->CreateFolder(folder, "/F");
    const UDMItemHandle front = ann->CreateAndAddChild("Drawing", "Front", part, "drawings");
    const UDMItemHandle one = Publish(ann, part);
    const UDMItemHandle two = CheckOut(ann, one);
    ann->SetAttributeValue(two, "mass", 9.0);
    ann->SetDisplayName("Other name", two);
    ann->RemoveChild(two, front);
    ann->AddChild(two, other, "drawings");
    ann->MoveContent(two, folder);
    EXPECT_THAT(Children(ann, two), ElementsAre("Other"));
    ann->UndoCheckout(two);
    const UDMItemHandle newest = ann->GetEntity(Base(part));
    EXPECT_EQ(newest.GetUID(), one.GetUID());
    EXPECT_EQ(newest.GetDisplayName(), "Wheel");
    EXPECT_EQ(newest.GetAttributeValue("mass"), kxVariant(1.5));
    EXPECT_THAT(Children(ann, newest), ElementsAre("Front"));
    EXPECT_THAT(Children(ann, folder, "folder"), IsEmpty());
    EXPECT_FALSE(Sees(ann, At(part, 2)));
    EXPECT_FALSE(two.IsEditable());
    EXPECT_THROW(two.GetAttributeValue("mass"), UDMNotFoundException);
    EXPECT_TRUE(other.IsRootEntity());
    // Anybody may have it now.
    EXPECT_EQ(CheckOut(bob, part).GetRevision(), 2);
}

TEST_F(Revisions, S9_WhatWasNeverPublishedCantBeUndone) {
    EXPECT_THAT(Refusal([&] { ann->UndoCheckout(part); }),
                HasSubstr("was never published, so that there is nothing to go back to"));
    EXPECT_TRUE(part.IsEditable());
    const UDMItemHandle one = Publish(ann, part);
    EXPECT_THAT(Refusal([&] { ann->UndoCheckout(one); }),
                HasSubstr("it is not checked out; check it out first"));
}

TEST_F(Revisions, S10_CheckingOutAnOlderRevisionBranchesIt) {
    UDMItemHandle folder;
    ann->CreateFolder(folder, "/F");
    const UDMItemHandle metals = Published(ann, "Metals", "Categories");
    const UDMItemHandle shared = Published(ann, "Shared");
    ann->SetAttributeValue(part, "mass", 3.0);
    ann->MoveContent(part, folder);
    ann->AddClassification(part, metals);
    ann->AddChild(part, shared, "parts");
    ann->AddChild(part, shared, "uses");
    ann->CreateAndAddChild("Drawing", "Front", part, "drawings");
    const UDMItemHandle owner = ann->CreateEntity("Part", "Owner");
    ann->AddChild(owner, part, "parts");
    const UDMItemHandle one = Publish(ann, part);
    const UDMItemHandle two = CheckOut(ann, one);
    ann->SetAttributeValue(two, "mass", 4.0);
    Publish(ann, two);

    bob->Checkout(bob->GetEntity(one.GetUID()), "another way");
    const auto history = bob->GetHistory(bob->GetEntity(Base(part)));
    ASSERT_EQ(history->GetBranchList().size(), 1u);
    const UDMItemHandle branch = bob->GetEntity(history->GetBranchList()[0]->GetBaseUID());
    EXPECT_NE(Base(branch), Base(part));
    EXPECT_EQ(branch.GetRevision(), 0);
    EXPECT_TRUE(branch.IsEditable());
    EXPECT_EQ(branch.GetDisplayName(), "Wheel");
    EXPECT_EQ(branch.GetAttributeValue("mass"), kxVariant(3.0));
    EXPECT_EQ(branch.GetAttributeValue("smd_branchfrom"), kxVariant(Base(part)));
    EXPECT_EQ(branch.GetAttributeValue("smd_comment"), kxVariant("another way"));
    EXPECT_EQ(branch.GetAttributeValue("smd_createduser"), kxVariant("bob"));
    EXPECT_EQ(branch.GetAttributeValue("smd_folder"), kxVariant("/F"));
    EXPECT_THAT(Parents(bob, branch, "category"), ElementsAre("Metals"));
    EXPECT_TRUE(branch.IsRootEntity());
    // What is owned by composition stays with its one owner.
    EXPECT_THAT(Children(bob, branch), ElementsAre("Shared"));
    EXPECT_THAT(Children(bob, branch, "uses"), ElementsAre("Shared"));
    EXPECT_FALSE(Sees(ann, Base(branch)));
    EXPECT_TRUE(ann->GetHistory(two)->GetBranchList().empty());
    // The origin is as it was, and a branch lives like anything else.
    EXPECT_EQ(NewestNumber(ann, part), 2);
    EXPECT_EQ(Publish(bob, branch).GetRevision(), 1);
    EXPECT_TRUE(Sees(ann, Base(branch)));
    EXPECT_EQ(ann->GetHistory(two)->GetBranchList().size(), 1u);
}

TEST_F(Revisions, S10_ABranchNeedsNoLockOfItsOrigin) {
    const UDMItemHandle one = Publish(ann, part);
    CheckOut(ann, one);
    Publish(ann, part);
    CheckOut(ann, part);
    bob->Checkout(bob->GetEntity(At(part, 1)), "");
    EXPECT_EQ(bob->GetHistory(bob->GetEntity(Base(part)))->GetBranchList().size(), 1u);
    // Nor does holding the origin stand against it.
    ann->Checkout(ann->GetEntity(At(part, 1)), "");
    EXPECT_EQ(ann->GetHistory(ann->GetEntity(Base(part)))->GetBranchList().size(), 1u);
}

TEST_F(Revisions, S10_OnlyABranchableDefinitionAllowsIt) {
    const UDMItemHandle order = ann->CreateEntity("Order", "4711");
    ann->SetAttributeValue(order, "number", "4711");
    ann->SetAttributeValue(order, "receivers", kxStlVector<kxString>{"bob"});
    ann->AddChild(order, ann->CreateEntity("Part", "a"), "lines");
    ann->AddChild(order, ann->CreateEntity("Part", "b"), "lines");
    ann->AddChild(order, part, "annexes");
    const UDMItemHandle one = Publish(ann, order);
    CheckOut(ann, one);
    Publish(ann, order);
    EXPECT_THAT(Refusal([&] { ann->Checkout(one, ""); }),
                HasSubstr("it is not the newest revision, which is 2, and \"Order\" can't be "
                          "branched; check out the newest one"));
}

TEST_F(Revisions, S11_AnUnversionedEntityHasNoneOfThis) {
    const UDMItemHandle note = ann->CreateEntity("Note", "n");
    bob->Checkout(bob->GetEntity(note.GetUID()), "");
    ann->SaveEntity(note, "x", true);
    ann->PersistEntity(note, "x", true, true, true);
    bob->UndoCheckout(bob->GetEntity(note.GetUID()));
    EXPECT_EQ(note.GetRevision(), 0);
    EXPECT_TRUE(note.IsEditable());
    EXPECT_THAT(Versions(bob, bob->GetEntity(note.GetUID())), ElementsAre(0));
}

TEST_F(Revisions, S13_ALockStandsAgainstDeletion) {
    const UDMItemHandle one = Publish(ann, part);
    CheckOut(ann, one);
    EXPECT_THAT(Refusal([&] { bob->DeleteEntity(bob->GetEntity(Base(part)), true, false); }),
                HasSubstr("ann has it checked out in workspace 'desk'"));
    Publish(ann, part);
    bob->DeleteEntity(bob->GetEntity(Base(part)), true, false);
    EXPECT_FALSE(Sees(ann, Base(part)));
    EXPECT_FALSE(Sees(ann, At(part, 1)));
}

TEST_F(Revisions, AChildMovesBetweenTwoOwnersWithinOneWorkspace) {
    const UDMItemHandle drawing = ann->CreateAndAddChild("Drawing", "Front", part, "drawings");
    const UDMItemHandle from = CheckOut(ann, Publish(ann, part));
    const UDMItemHandle to = ann->CreateEntity("Part", "Hub");
    ann->RemoveChild(from, drawing);
    ann->AddChild(to, drawing, "drawings");
    EXPECT_THAT(Parents(ann, drawing, "owner"), ElementsAre("Hub"));
    EXPECT_THAT(Refusal([&] { Publish(ann, to); }), HasSubstr("is still owned by"));
    EXPECT_THAT(Refusal([&] { ann->UndoCheckout(from); }), HasSubstr("is owned by"));
    Publish(ann, from);
    Publish(ann, to);
    Publish(ann, drawing);
    EXPECT_THAT(Parents(bob, bob->GetEntity(Base(drawing)), "owner"), ElementsAre("Hub"));
}

TEST_F(Revisions, AnOwnerThatOnlyAnotherWorkspaceSeesCounts) {
    const UDMItemHandle drawing = Published(ann, "Front", "Drawing");
    ann->AddChild(part, drawing, "drawings");
    const UDMItemHandle bobs = bob->CreateEntity("Part", "Hub");
    const UDMItemHandle seen = bob->GetEntity(Base(drawing));
    EXPECT_TRUE(seen.IsRootEntity());
    EXPECT_THAT(Refusal([&] { bob->AddChild(bobs, seen, "drawings"); }),
                AllOf(HasSubstr("is owned by " + Base(part)),
                      HasSubstr("ann has that checked out in workspace 'desk' since")));
}

TEST_F(Revisions, RootsAreThoseWithoutAnOwnerThatTheSessionSees) {
    const auto roots = [](const ProfilePtr& session) {
        kxStlVector<UDMItemHandle> hits;
        session->RunQuery(hits, "", -1, 0, 0, {}, true, false);
        return DisplayNames(hits);
    };
    const UDMItemHandle child = Published(ann, "Child");
    ann->AddChild(part, child, "parts");
    // The owner is nobody else's business yet.
    EXPECT_THAT(roots(ann), ElementsAre("Wheel"));
    EXPECT_THAT(roots(bob), ElementsAre("Child"));
    EXPECT_TRUE(Newest(bob, child).IsRootEntity());
    Publish(ann, part);
    EXPECT_THAT(roots(bob), ElementsAre("Wheel"));
    ann->RemoveChild(CheckOut(ann, part), child);
    // Given up, for ann alone.
    EXPECT_THAT(roots(ann), ElementsAre("Wheel", "Child"));
    EXPECT_THAT(roots(bob), ElementsAre("Wheel"));
    EXPECT_THAT(roots(annAtHome), ElementsAre("Wheel"));
    EXPECT_FALSE(Newest(bob, child).IsRootEntity());
    ann->UndoCheckout(Newest(ann, part));
    EXPECT_THAT(roots(ann), ElementsAre("Wheel"));
    const UDMItemHandle late = Published(ann, "Late");
    ann->AddChild(CheckOut(ann, part), late, "parts");
    EXPECT_THAT(roots(ann), ElementsAre("Wheel"));
    EXPECT_THAT(roots(bob), ElementsAre("Wheel", "Late"));
}

TEST_F(Revisions, AClosedSessionRefusesEachStep) {
    ProfilePtr closing = ann;
    UDMProfileMgr::DiscardProfile(closing);
    const std::vector<std::function<void()>> steps{
        [&] { ann->Checkout(part, ""); },
        [&] { ann->SaveEntity(part, "", true); },
        [&] { ann->PersistEntity(part, "", false, true, true); },
        [&] { ann->UndoCheckout(part); },
        [&] { ann->GetWorkingHandle(part); },
        [&] { ann->GetHistory(part); },
        [&] { ann->GetSyncStatus(part); },
        [&] { ann->Synchronize(part); }};
    for (const auto& step : steps) {
        EXPECT_THAT(Refusal(step), HasSubstr("is closed"));
    }
}

TEST_F(Revisions, AnEmptyHandleIsRefusedByEachStep) {
    const std::vector<std::function<void()>> steps{
        [&] { ann->Checkout({}, ""); },
        [&] { ann->SaveEntity({}, "", true); },
        [&] { ann->PersistEntity({}, "", false, true, true); },
        [&] { ann->UndoCheckout({}); },
        [&] { ann->GetWorkingHandle({}); },
        [&] { ann->GetHistory({}); },
        [&] { ann->GetSyncStatus({}); },
        [&] { ann->Synchronize({}); }};
    for (const auto& step : steps) {
        EXPECT_THAT(Refusal(step), HasSubstr("empty handle"));
    }
}

TEST_F(Revisions, StepsOfABulkEditAreTakenBackTogether) {
    const UDMItemHandle one = Publish(ann, part);
    const UDMItemHandle fresh = ann->CreateEntity("Part", "Fresh");
    {
        UDMBulkEdit bulk(ann);
        ann->Checkout(one, "");
        const UDMItemHandle two = ann->GetEntity(Base(part));
        ann->SetAttributeValue(two, "mass", 9.0);
        ann->PersistEntity(two, "", true, true, true);
        ann->PersistEntity(fresh, "", false, true, true);
        EXPECT_EQ(NewestNumber(ann, part), 3);
        EXPECT_EQ(NewestNumber(ann, fresh), 1);
    }
    EXPECT_EQ(NewestNumber(ann, part), 1);
    EXPECT_EQ(one.GetAttributeValue("mass"), kxVariant(1.5));
    EXPECT_TRUE(fresh.IsEditable());
    EXPECT_EQ(NewestNumber(ann, fresh), 0);
    {
        UDMBulkEdit bulk(ann);
        ann->Checkout(one, "");
        ann->PersistEntity(ann->GetEntity(Base(part)), "", false, true, true);
        bulk.Commit();
    }
    EXPECT_EQ(NewestNumber(bob, part), 2);
}

// A step that fails at its very end, when all of it has been done but for the journal.
TEST_F(Revisions, AStepThatFailsAtItsEndLeavesLibraryAndHandlesAsTheyWere) {
    const UDMItemHandle one = Publish(ann, part);
    const UDMItemHandle other = CheckOut(ann, Published(ann, "Other"));
    ann->SetAttributeValue(other, "mass", 7.0);
    const UDMItemHandle fresh = ann->CreateEntity("Part", "Fresh");
    const auto told = Listen(ann);
    const auto execute = [&](const std::string& script) {
        store::LibraryStore::Open(library.File())->Connection().Execute(script);
    };
    execute("CREATE TRIGGER fail BEFORE INSERT ON journal BEGIN SELECT raise(ABORT, 'no'); END");
    EXPECT_THROW(ann->Checkout(one, ""), UDMException);
    EXPECT_THROW(ann->PersistEntity(other, "", true, true, true), UDMException);
    EXPECT_THROW(ann->UndoCheckout(other), UDMException);
    EXPECT_THROW(ann->PersistEntity(fresh, "", false, true, true), UDMException);
    EXPECT_THROW(ann->SaveEntity(fresh, "", true), UDMException);
    EXPECT_THAT(told->Take(), IsEmpty());
    EXPECT_EQ(NewestNumber(ann, part), 1);
    EXPECT_TRUE(other.IsEditable());
    EXPECT_EQ(other.GetAttributeValue("mass"), kxVariant(7.0));
    EXPECT_EQ(Newest(ann, other).GetUID(), other.GetUID());
    EXPECT_TRUE(fresh.IsEditable());
    EXPECT_FALSE(Sees(bob, Base(fresh)));
    execute("DROP TRIGGER fail");
    EXPECT_EQ(CheckOut(ann, one).GetRevision(), 2);
    EXPECT_EQ(Publish(ann, other).GetRevision(), 2);
    EXPECT_EQ(Publish(ann, fresh).GetRevision(), 1);
}

TEST_F(Revisions, ARenameInAWorkingRevisionIsSeenByAllBecauseTheNameIsTheEntitys) {
    const UDMItemHandle two = CheckOut(ann, Publish(ann, part));
    const UDMItemHandle bobs = bob->GetEntity(Base(part));
    EXPECT_EQ(bobs.GetAttributeValue("name"), kxVariant("Wheel"));
    ann->SetAttributeValue(two, "name", "Rim");
    EXPECT_EQ(bobs.GetAttributeValue("name"), kxVariant("Rim"));
}

}  // namespace
}  // namespace kxudm::test
