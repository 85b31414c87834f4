// Who is told what in the life of revisions: rows N21 to N28. "ann" listens in two sessions of one
// workspace, "bob" elsewhere.
#include "Revisions.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RevisionNotifications : public testing::Test {
  protected:
    void Silence() {
        for (Listening* each : {&me, &again, &bobs, &home}) {
            each->Take();
        }
    }
    // Both sessions of ann's workspace are told the same, bob and ann's other workspace alike.
    void ExpectTold(const Names& here, const Names& elsewhere) {
        EXPECT_EQ(me.Take(), here);
        EXPECT_EQ(again.Take(), here);
        EXPECT_EQ(bobs.Take(), elsewhere);
        EXPECT_EQ(home.Take(), elsewhere);
    }

    Library library;
    ProfilePtr ann = library.Open("ann");
    ProfilePtr annAgain = library.Open("ann");
    ProfilePtr bob = library.Open("bob");
    ProfilePtr annAtHome = library.Open("ann", "home");
    UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    Listening me{ann};
    Listening again{annAgain};
    Listening bobs{bob};
    Listening home{annAtHome};
};

TEST_F(RevisionNotifications, N21_ACheckOutTellsTheNewHandleHereAndTheLockElsewhere) {
    Publish(ann, part);
    Silence();
    CheckOut(ann, part);
    ExpectTold({"5 Wheel:2"}, {"10 Wheel:1"});
}

TEST_F(RevisionNotifications, N22_ASavePointIsToldInItsWorkspace) {
    ann->SaveEntity(part, "x", true);
    ExpectTold({"3 Wheel:0"}, {});
    CheckOut(ann, Publish(ann, part));
    Silence();
    ann->SaveEntity(Newest(ann, part), "y", true);
    ExpectTold({"3 Wheel:2"}, {});
}

TEST_F(RevisionNotifications, N23_TheFirstPublishTellsTheNewHandleToEverybody) {
    Publish(ann, part);
    ExpectTold({"5 Wheel:1"}, {"5 Wheel:1"});
}

TEST_F(RevisionNotifications, N24_APublishTellsTheStateHereAndTheNewRevisionElsewhere) {
    CheckOut(ann, Publish(ann, part));
    Silence();
    Publish(ann, part);
    ExpectTold({"10 Wheel:2"}, {"5 Wheel:2"});
}

TEST_F(RevisionNotifications, N25_PublishAndKeepTellsTheNextRevisionHereToo) {
    Publish(ann, part, "", true);
    // One step after the other, since each takes the place of the one before.
    ExpectTold({"5 Wheel:1", "5 Wheel:2"}, {"5 Wheel:1"});
    Publish(ann, part, "", true);
    ExpectTold({"10 Wheel:2", "5 Wheel:3"}, {"5 Wheel:2"});
}

TEST_F(RevisionNotifications, N26_AnUndoTellsWhatStandsAgainHereAndTheLockElsewhere) {
    CheckOut(ann, Publish(ann, part));
    Silence();
    ann->UndoCheckout(Newest(ann, part));
    ExpectTold({"39 Wheel:1 ~:2"}, {"10 Wheel:1"});
}

TEST_F(RevisionNotifications, N27_APublishTellsOthersOfThePlacesThatTheyNowSee) {
    UDMItemHandle f;
    UDMItemHandle g;
    ann->CreateFolder(f, "/F");
    ann->CreateFolder(g, "/G");
    const UDMItemHandle metals = Published(ann, "Metals", "Categories");
    const UDMItemHandle owner = ann->CreateEntity("Part", "Owner");
    const UDMItemHandle hidden = ann->CreateEntity("Part", "Hidden");
    ann->AddChild(owner, part, "parts");
    ann->AddChild(owner, part, "uses");
    ann->AddChild(hidden, part, "uses");
    Publish(ann, owner);
    ann->MoveContent(part, f);
    ann->AddClassification(part, metals);
    Silence();
    Publish(ann, part);
    EXPECT_THAT(me.Take(), ElementsAre("5 Wheel:1"));
    EXPECT_THAT(bobs.Take(),
                ElementsAre("5 Wheel:1", "42 F:0", "42 Metals:1", "35 Owner:1", "40 Owner:1"));
    Silence();
    const UDMItemHandle two = CheckOut(ann, part);
    ann->MoveContent(two, g);
    ann->RemoveClassification(two, metals);
    ann->AddClassification(two, metals);
    EXPECT_THAT(bobs.Take(), ElementsAre("10 Wheel:1"));
    Silence();
    Publish(ann, part);
    // Taken out and put back: nothing happened there.
    ExpectTold({"10 Wheel:2"}, {"5 Wheel:2", "43 F:0 Wheel:2", "42 G:0"});
}

TEST_F(RevisionNotifications, N28_AnUndoTellsOfThePlacesThatItPutsTheContentBackTo) {
    UDMItemHandle f;
    UDMItemHandle g;
    ann->CreateFolder(f, "/F");
    ann->CreateFolder(g, "/G");
    ann->MoveContent(part, f);
    ann->MoveContent(CheckOut(ann, Publish(ann, part)), g);
    Silence();
    ann->UndoCheckout(Newest(ann, part));
    EXPECT_THAT(me.Take(), ElementsAre("43 G:0 Wheel:2", "39 Wheel:1 ~:2", "42 F:0"));
    EXPECT_THAT(bobs.Take(), ElementsAre("10 Wheel:1"));
    EXPECT_THAT(home.Take(), ElementsAre("10 Wheel:1"));
}

TEST_F(RevisionNotifications, N29_ABranchTellsThePlacesOfItsOriginInItsWorkspace) {
    UDMItemHandle f;
    ann->CreateFolder(f, "/F");
    const UDMItemHandle metals = Published(ann, "Metals", "Categories");
    ann->MoveContent(part, f);
    ann->AddClassification(part, metals);
    Publish(ann, part, "", true);
    Publish(ann, part);
    Silence();
    ann->Checkout(ann->GetEntity(At(part, 1)), "");
    ExpectTold({"42 F:0", "42 Metals:1"}, {});
    EXPECT_THAT(Children(ann, f, "folder"), ElementsAre("Wheel", "Wheel"));
    EXPECT_THAT(Children(bob, f, "folder"), ElementsAre("Wheel"));
}

TEST_F(RevisionNotifications, N15_EditsOfAWorkingRevisionAreToldInItsWorkspace) {
    const UDMItemHandle two = CheckOut(ann, Publish(ann, part));
    Silence();
    ann->SetAttributeValue(two, "mass", 3.0);
    ann->CreateAndAddChild("Drawing", "Front", two, "drawings");
    ExpectTold({"3 Wheel:2", "35 Wheel:2"}, {});
}

TEST_F(RevisionNotifications, N3_ANameIsToldToThoseWhoSeeThePublishedRevisionToo) {
    const UDMItemHandle two = CheckOut(ann, Publish(ann, part));
    Silence();
    ann->SetAttributeValue(two, "name", "Rim");
    ExpectTold({"3 Wheel:2"}, {"3 Wheel:1"});
}

TEST_F(RevisionNotifications, N10_ADeletionTellsOthersNoRevisionThatTheyNeverSaw) {
    const UDMItemHandle hidden = ann->CreateAndAddChild("Drawing", "Front", part, "drawings");
    CheckOut(ann, Publish(ann, part));
    Silence();
    ann->DeleteEntity(Newest(ann, part), true, false);
    EXPECT_THAT(me.Take(), testing::Contains("44 ~:2"));
    // Bob holds no handle of it: the revision that he would have got is told.
    EXPECT_THAT(bobs.Take(), ElementsAre("44 ~:1"));
    EXPECT_FALSE(Sees(ann, Base(hidden)));
}

TEST_F(RevisionNotifications, N10_ADeletedDraftTakesPublishedChildrenAlongForEverybody) {
    const UDMItemHandle drawing = ann->CreateAndAddChild("Drawing", "Front", part, "drawings");
    Publish(ann, drawing);
    const UDMItemHandle seen = Newest(bob, drawing);
    Silence();
    ann->DeleteEntity(part, true, false);
    EXPECT_THAT(bobs.Take(), ElementsAre("44 ~:1"));
    EXPECT_FALSE(seen.IsEditable());
    EXPECT_FALSE(Sees(bob, Base(drawing)));
}

TEST_F(RevisionNotifications, N10_AForcedDeletionTellsTheHolderAndNobodyOfWhatHeNeverSaw) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Note");
    const UDMItemHandle draft =
        bob->CreateAndAddChild("Drawing", "Draft", bob->GetEntity(Base(note)), "sketches");
    Silence();
    ann->DeleteEntity(note, true, true);
    EXPECT_THAT(me.Take(), ElementsAre("44 ~:0"));
    EXPECT_THAT(bobs.Take(), ElementsAre("44 ~:0", "44 ~:0"));
    EXPECT_FALSE(draft.IsEditable());
}

TEST_F(RevisionNotifications, N11_EachIsToldTheParentsThatHeSees) {
    const UDMItemHandle child = Published(ann, "Child");
    const UDMItemHandle other = CheckOut(ann, Published(ann, "Other"));
    ann->AddChild(part, child, "parts");
    const UDMItemHandle two = CheckOut(ann, Publish(ann, part));
    ann->RemoveChild(two, child);
    ann->AddChild(other, child, "parts");
    const UDMItemHandle seen = Newest(bob, child);
    Silence();
    ann->DeleteEntity(child, true, false);
    EXPECT_THAT(me.Take(), ElementsAre("12 Other:2 Child:1", "44 ~:1"));
    EXPECT_THAT(bobs.Take(), ElementsAre("12 Wheel:1 Child:1", "44 ~:1"));
}

TEST_F(RevisionNotifications, N11_EachHolderIsToldThePlacesOfHisWorkingRevisions) {
    const UDMItemHandle child = Published(ann, "Child");
    const UDMItemHandle bobsOwn = bob->CreateEntity("Part", "Draft");
    const UDMItemHandle other = CheckOut(annAtHome, Published(ann, "Other"));
    bob->AddChild(bobsOwn, Newest(bob, child), "uses");
    annAtHome->AddChild(other, Newest(annAtHome, child), "parts");
    Silence();
    ann->DeleteEntity(child, true, false);
    EXPECT_THAT(me.Take(), ElementsAre("44 ~:1"));
    EXPECT_THAT(bobs.Take(), ElementsAre("41 Draft:0 Child:1", "44 ~:1"));
    EXPECT_THAT(home.Take(), ElementsAre("12 Other:2 Child:1", "44 ~:1"));
}

TEST_F(RevisionNotifications, N11_AForcedDeletionTellsTheHolderThePlacesThatHeSaw) {
    UDMItemHandle f;
    UDMItemHandle g;
    ann->CreateFolder(f, "/F");
    ann->CreateFolder(g, "/G");
    ann->MoveContent(part, f);
    Publish(ann, part);
    bob->MoveContent(CheckOut(bob, part), bob->GetEntity(Base(g)));
    Silence();
    ann->DeleteEntity(Newest(ann, part), true, true);
    EXPECT_THAT(me.Take(), ElementsAre("43 F:0 Wheel:1", "44 ~:0", "44 ~:1"));
    EXPECT_THAT(bobs.Take(), ElementsAre("43 G:0 Wheel:2", "44 ~:2"));
}

TEST_F(RevisionNotifications, N10_TheEntityGoesWhicheverRevisionIsGiven) {
    const UDMItemHandle one = Publish(ann, part);
    const UDMItemHandle two = CheckOut(ann, part);
    ann->CreateAndAddChild("Note", "Remark", two, "notes");
    EXPECT_THROW(ann->DeleteEntity(one, false, false), UDMException);
    ann->DeleteEntity(one, true, false);
    EXPECT_FALSE(Sees(ann, Base(part)));
    EXPECT_FALSE(Sees(bob, Base(part)));
}

TEST_F(RevisionNotifications, N27_WhoHasAPlaceOrParentCheckedOutIsToldHisOwnRevisionOfIt) {
    const UDMItemHandle metals = Published(ann, "Metals", "Categories");
    const UDMItemHandle owner = ann->CreateEntity("Part", "Owner");
    ann->AddChild(owner, part, "uses");
    ann->AddClassification(part, metals);
    Publish(ann, owner);
    CheckOut(bob, owner);
    CheckOut(bob, metals);
    Silence();
    Publish(ann, part);
    EXPECT_THAT(bobs.Take(), ElementsAre("5 Wheel:1", "42 Metals:2", "40 Owner:2"));
    EXPECT_THAT(home.Take(), ElementsAre("5 Wheel:1", "42 Metals:1", "40 Owner:1"));
    EXPECT_THAT(Children(bob, Newest(bob, owner), "uses"), ElementsAre("Wheel"));
}

TEST_F(RevisionNotifications, N27_WhoAloneSeesABranchIsToldWhatIsPublishedBelowIt) {
    const UDMItemHandle owner = ann->CreateEntity("Part", "Owner");
    ann->AddChild(owner, part, "uses");
    ann->AddChild(owner, part, "parts");
    Publish(ann, owner, "", true);
    Publish(ann, owner);
    bob->Checkout(bob->GetEntity(At(owner, 1)), "");
    const auto history = bob->GetHistory(Newest(bob, owner));
    const UDMItemHandle branch = bob->GetEntity(history->GetBranchList().back()->GetBaseUID());
    bob->SetDisplayName("Branch", branch);
    Silence();
    Publish(ann, part);
    EXPECT_THAT(me.Take(), ElementsAre("5 Wheel:1"));
    EXPECT_THAT(bobs.Take(),
                ElementsAre("5 Wheel:1", "35 Owner:2", "40 Owner:2", "35 Branch:0", "40 Branch:0"));
    EXPECT_THAT(home.Take(), ElementsAre("5 Wheel:1", "35 Owner:2", "40 Owner:2"));
    EXPECT_THAT(Children(bob, branch, "uses"), ElementsAre("Wheel"));
    EXPECT_THAT(Children(bob, branch, "parts"), ElementsAre("Wheel"));
}

TEST_F(RevisionNotifications, N7_AClassificationIsToldAtItsNewestRevision) {
    const UDMItemHandle metals = Published(ann, "Metals", "Categories");
    Publish(ann, CheckOut(ann, metals));
    Silence();
    ann->AddClassification(part, ann->GetEntity(At(metals, 1)));
    ExpectTold({"42 Metals:2"}, {});
}

TEST_F(RevisionNotifications, N13_AStepThatFailsTellsNothing) {
    const UDMItemHandle one = Publish(ann, part);
    CheckOut(ann, part);
    Silence();
    EXPECT_THROW(bob->Checkout(Newest(bob, part), ""), UDMException);
    EXPECT_THROW(bob->UndoCheckout(Newest(bob, part)), UDMException);
    EXPECT_THROW(ann->Checkout(one, ""), UDMException);
    EXPECT_THROW(ann->PersistEntity(one, "", false, true, true), UDMException);
    ExpectTold({}, {});
}

TEST_F(RevisionNotifications, N16_ABulkEditTellsEachStepOnceAtItsCommit) {
    const UDMItemHandle one = Publish(ann, part);
    Silence();
    UDMBulkEdit bulk(ann);
    ann->Checkout(one, "");
    ann->SetAttributeValue(Newest(ann, part), "mass", 3.0);
    ann->PersistEntity(Newest(ann, part), "", false, true, true);
    ExpectTold({}, {});
    bulk.Commit();
    ExpectTold({"5 Wheel:2", "3 Wheel:2", "10 Wheel:2"}, {"10 Wheel:1", "5 Wheel:2"});
}

TEST_F(RevisionNotifications, N16_AStepTakenAgainInABulkEditIsToldAgain) {
    const UDMItemHandle one = Publish(ann, part);
    Silence();
    UDMBulkEdit bulk(ann);
    for (int i = 0; i < 2; ++i) {
        ann->Checkout(one, "");
        ann->UndoCheckout(one);
    }
    bulk.Commit();
    // What is gone by then has no handle.
    EXPECT_THAT(me.Take(), ElementsAre("39 Wheel:1 ~:2", "39 Wheel:1 ~:2"));
    EXPECT_THAT(again.Take(), ElementsAre("39 Wheel:1 ~:2", "39 Wheel:1 ~:2"));
    EXPECT_THAT(bobs.Take(), ElementsAre("10 Wheel:1"));
}

TEST_F(RevisionNotifications, N16_AWorkingRevisionOpenedAgainInABulkEditIsTheLastThingTold) {
    const UDMItemHandle one = Publish(ann, part);
    Silence();
    UDMBulkEdit bulk(ann);
    ann->Checkout(one, "");
    ann->UndoCheckout(one);
    ann->Checkout(one, "");
    bulk.Commit();
    EXPECT_THAT(me.Take(), ElementsAre("5 Wheel:2", "39 Wheel:1 ~:2", "5 Wheel:2"));
    EXPECT_EQ(again.Take().back(), "5 Wheel:2");
    EXPECT_THAT(bobs.Take(), ElementsAre("10 Wheel:1"));
}

TEST_F(RevisionNotifications, N16_ABulkEditTellsNothingOfRevisionsThatItHasEnded) {
    const UDMItemHandle owner = Published(ann, "Owner");
    Silence();
    {
        UDMBulkEdit edit(ann);
        ann->SetAttributeValue(part, "mass", 2.0);
        Publish(ann, part);
        ann->SetAttributeValue(CheckOut(ann, owner), "mass", 3.0);
        ann->UndoCheckout(Newest(ann, owner));
        edit.Commit();
    }
    // Neither 3 nor 5 of Wheel:0 and Owner:2.
    EXPECT_EQ(me.Take(), Names({"5 Wheel:1", "39 Owner:1 ~:2"}));
    EXPECT_EQ(again.Take(), Names({"5 Wheel:1", "39 Owner:1 ~:2"}));
    EXPECT_EQ(bobs.Take(), Names({"5 Wheel:1", "10 Owner:1"}));
}

TEST_F(RevisionNotifications, N16_ABulkEditTellsOfParentsAsTheyAreAtItsEnd) {
    const UDMItemHandle owner = ann->CreateEntity("Part", "Owner");
    ann->AddChild(owner, part, "uses");
    Publish(ann, owner, "", true);
    Silence();
    {
        UDMBulkEdit edit(ann);
        Publish(ann, part);
        Publish(ann, owner);
        edit.Commit();
    }
    EXPECT_THAT(bobs.Take(), ElementsAre("5 Wheel:1", "40 Owner:2", "5 Owner:2"));
}

TEST_F(RevisionNotifications, N16_WhatABulkEditDeletesInTheEndIsToldAsDeletedAlone) {
    const UDMItemHandle other = Published(ann, "Other");
    const kxString uid = Base(other);
    Silence();
    {
        UDMBulkEdit edit(ann);
        ann->SetDisplayName("Changed", CheckOut(ann, other));
        Publish(ann, other);
        ann->DeleteEntity(Newest(ann, other), true, false);
        edit.Commit();
    }
    for (const Names& told : {me.Take(), again.Take(), bobs.Take()}) {
        for (const std::string& step : told) {
            EXPECT_EQ(step.substr(0, 3), "44 ") << step;
        }
        EXPECT_FALSE(told.empty());
    }
}

TEST_F(RevisionNotifications, N17_ASlotMayTakeTheNextStepAtOnce) {
    int steps = 0;
    bobs.Slot().react = [&](const UDMProfileUpdate& update) {
        if (update.GetOpCode() == SIGNAL_REVISION_ADVANCED && ++steps == 1) {
            bob->Checkout(update.GetUDMHandle(), "at once");
            bob->PersistEntity(Newest(bob, part), "", false, true, true);
        }
    };
    ann->PersistEntity(part, "", false, true, true);
    EXPECT_EQ(NewestNumber(ann, part), 2);
    EXPECT_THAT(me.Take(), ElementsAre("5 Wheel:1", "10 Wheel:1", "5 Wheel:2"));
    EXPECT_THAT(bobs.Take(), ElementsAre("5 Wheel:1", "5 Wheel:2", "10 Wheel:2"));
}

}  // namespace
}  // namespace kxudm::test
