#include <kxudm/UDMBulkEdit.h>

#include "Library.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ChildrenOf : public testing::Test {
  protected:
    Library library;
    ProfilePtr ann = library.Open("ann");
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
};

TEST_F(ChildrenOf, AGroupComeInTheOrderInWhichTheyWereAdded) {
    for (const char* name : {"C", "A", "B"}) {
        ann->CreateAndAddChild("Part", name, wheel, "parts");
    }
    EXPECT_THAT(Children(ann, wheel, "parts"), ElementsAre("C", "A", "B"));
    EXPECT_EQ(ann->GetChildCount(wheel, "parts", ""), 3U);
    UDMProfileMgr::DiscardProfile(ann);
    const ProfilePtr again = library.Open("ann");
    EXPECT_THAT(Children(again, again->GetEntity(wheel.GetUID()), "parts"),
                ElementsAre("C", "A", "B"));
}

TEST_F(ChildrenOf, AListingAskedForAgainGivesTheSameStates) {
    ann->CreateAndAddChild("Part", "A", wheel, "parts");
    ann->CreateAndAddChild("Part", "B", wheel, "parts");
    kxStlVector<UDMItemHandle> first;
    ann->GetChildren(first, wheel, "parts", "");
    kxStlVector<UDMItemHandle> again;
    ann->GetChildren(again, wheel, "parts", "");
    ASSERT_EQ(again.size(), 2U);
    EXPECT_EQ(again[0].State(), first[0].State());
    EXPECT_EQ(again[1].State(), first[1].State());
}

TEST_F(ChildrenOf, AListingAskedForAgainHasWhatWasAddedRemovedAndDeletedSince) {
    ann->CreateAndAddChild("Part", "A", wheel, "parts");
    const UDMItemHandle b = ann->CreateAndAddChild("Part", "B", wheel, "parts");
    const UDMItemHandle c = ann->CreateAndAddChild("Part", "C", wheel, "parts");
    kxStlVector<UDMItemHandle> kept;
    ann->GetChildren(kept, wheel, "parts", "");
    EXPECT_EQ(kept.size(), 3U);
    ann->CreateAndAddChild("Part", "D", wheel, "parts");
    EXPECT_THAT(Children(ann, wheel, "parts"), ElementsAre("A", "B", "C", "D"));
    ann->RemoveChild(wheel, b);
    EXPECT_THAT(Children(ann, wheel, "parts"), ElementsAre("A", "C", "D"));
    ann->DeleteEntity(c, true, false);
    EXPECT_THAT(Children(ann, wheel, "parts"), ElementsAre("A", "D"));
}

TEST_F(ChildrenOf, AListingAskedForAgainHasWhatAnotherSessionAdded) {
    const ProfilePtr other = library.Open("ann");
    ann->CreateAndAddChild("Part", "A", wheel, "parts");
    kxStlVector<UDMItemHandle> kept;
    ann->GetChildren(kept, wheel, "parts", "");
    other->CreateAndAddChild("Part", "B", other->GetEntity(wheel.GetUID()), "parts");
    EXPECT_THAT(Children(ann, wheel, "parts"), ElementsAre("A", "B"));
}

TEST_F(ChildrenOf, AListingOutlivesNoneOfItsHandles) {
    ann->CreateAndAddChild("Part", "A", wheel, "parts");
    const UDMItemHandle b = ann->CreateAndAddChild("Part", "B", wheel, "parts");
    // The only handle of A is gone after each listing.
    EXPECT_THAT(Children(ann, wheel, "parts"), ElementsAre("A", "B"));
    EXPECT_THAT(Children(ann, wheel, "parts"), ElementsAre("A", "B"));
    {
        kxStlVector<UDMItemHandle> all;
        ann->GetChildren(all, wheel, "parts", "");
    }
    EXPECT_THAT(Children(ann, wheel, "parts"), ElementsAre("A", "B"));
}

TEST_F(ChildrenOf, AListingMadeInABulkEditThatIsTakenBackIsForgotten) {
    kxStlVector<UDMItemHandle> kept;
    ann->CreateAndAddChild("Part", "A", wheel, "parts");
    {
        UDMBulkEdit edit(ann);
        ann->CreateAndAddChild("Part", "B", wheel, "parts");
        ann->GetChildren(kept, wheel, "parts", "");
        EXPECT_EQ(kept.size(), 2U);
    }
    EXPECT_THAT(Children(ann, wheel, "parts"), ElementsAre("A"));
}

TEST_F(ChildrenOf, AllOwnerGroupsComeInTheOrderOfTheDefinition) {
    ann->CreateAndAddChild("Note", "n", wheel, "notes");
    ann->CreateAndAddChild("Part", "p", wheel, "parts");
    ann->CreateAndAddChild("Drawing", "d", wheel, "drawings");
    ann->AddChild(wheel, ann->CreateEntity("Part", "referred"), "uses");
    EXPECT_THAT(Children(ann, wheel), ElementsAre("d", "p", "n"));
    EXPECT_THAT(Children(ann, wheel, "owner"), ElementsAre("d", "p", "n"));
    EXPECT_THAT(Children(ann, wheel, "reference"), ElementsAre("referred"));
    EXPECT_EQ(ann->GetChildCount(wheel, "", ""), 3U);
}

TEST_F(ChildrenOf, ResultsAreAppended) {
    ann->CreateAndAddChild("Part", "p", wheel, "parts");
    kxStlVector<UDMItemHandle> out;
    out.push_back(wheel);
    ann->GetChildren(out, wheel, "", "");
    EXPECT_THAT(DisplayNames(out), ElementsAre("Wheel", "p"));
}

TEST_F(ChildrenOf, AnUnknownGroupIsAnErrorThatNamesTheOnesThatAreThere) {
    const std::string refusal =
        Refusal<UDMNotFoundException>([&] { Children(ann, wheel, "wings"); });
    EXPECT_THAT(refusal, HasSubstr("wings"));
    EXPECT_THAT(refusal, HasSubstr("drawings"));
}

TEST_F(ChildrenOf, AChildKnowsItsOwner) {
    const UDMItemHandle drawing = ann->CreateAndAddChild("Drawing", "d", wheel, "drawings");
    EXPECT_TRUE(drawing.hasparent());
    EXPECT_FALSE(drawing.IsRootEntity());
    EXPECT_THAT(Parents(ann, drawing, "owner"), ElementsAre("Wheel"));
    EXPECT_THAT(Parents(ann, drawing, "drawings"), ElementsAre("Wheel"));
    EXPECT_THAT(Parents(ann, drawing, "parts"), IsEmpty());
    EXPECT_THAT(Parents(ann, drawing, "reference"), IsEmpty());
    ann->RemoveChild(wheel, drawing);
    EXPECT_FALSE(drawing.hasparent());
    EXPECT_TRUE(drawing.IsRootEntity());
    EXPECT_THAT(Children(ann, wheel), IsEmpty());
}

TEST_F(ChildrenOf, AGroupTakeWhatItAllowsOnly) {
    const UDMItemHandle note = ann->CreateEntity("Note", "n");
    EXPECT_THAT(Refusal([&] { ann->AddChild(wheel, note, "drawings"); }), HasSubstr("Note"));
    EXPECT_THROW(ann->AddChild(wheel, note, "wings"), UDMNotFoundException);
    EXPECT_THROW(ann->CreateAndAddChild("Note", "m", wheel, "drawings"), UDMException);
    EXPECT_THAT(Children(ann, wheel), IsEmpty());
}

TEST_F(ChildrenOf, AnEmptyGroupMeansTheFirstThatTakesTheChild) {
    ann->CreateAndAddChild("Part", "p", wheel, "");
    EXPECT_THAT(Children(ann, wheel, "parts"), ElementsAre("p"));
    EXPECT_THROW(ann->AddChild(wheel, ann->CreateEntity("Foldertype", "F"), ""), UDMException);
}

TEST_F(ChildrenOf, AFullGroupTakesNoMore) {
    ann->CreateAndAddChild("Drawing", "1", wheel, "drawings");
    ann->CreateAndAddChild("Drawing", "2", wheel, "drawings");
    EXPECT_THAT(Refusal([&] { ann->CreateAndAddChild("Drawing", "3", wheel, "drawings"); }),
                HasSubstr("full"));
    EXPECT_THAT(Children(ann, wheel, "drawings"), ElementsAre("1", "2"));
}

TEST_F(ChildrenOf, ACompositionHaveOneOwner) {
    const UDMItemHandle drawing = ann->CreateAndAddChild("Drawing", "d", wheel, "drawings");
    const UDMItemHandle axle = ann->CreateEntity("Part", "Axle");
    EXPECT_THAT(Refusal([&] { ann->AddChild(axle, drawing, "drawings"); }), HasSubstr("one owner"));
    ann->RemoveChild(wheel, drawing);
    ann->AddChild(axle, drawing, "drawings");
    EXPECT_THAT(Parents(ann, drawing, "owner"), ElementsAre("Axle"));
}

TEST_F(ChildrenOf, OtherOwnerGroupsMayHaveSeveralOwners) {
    const UDMItemHandle screw = ann->CreateAndAddChild("Part", "Screw", wheel, "parts");
    const UDMItemHandle axle = ann->CreateEntity("Part", "Axle");
    ann->AddChild(axle, screw, "parts");
    EXPECT_THAT(Parents(ann, screw, "owner"), testing::UnorderedElementsAre("Wheel", "Axle"));
}

TEST_F(ChildrenOf, AGroupAreThereOnce) {
    const UDMItemHandle screw = ann->CreateAndAddChild("Part", "Screw", wheel, "parts");
    EXPECT_THAT(Refusal([&] { ann->AddChild(wheel, screw, "parts"); }), HasSubstr("already"));
    EXPECT_EQ(ann->GetChildCount(wheel, "parts", ""), 1U);
}

TEST_F(ChildrenOf, OwnersNeverFormACycle) {
    const UDMItemHandle hub = ann->CreateAndAddChild("Part", "Hub", wheel, "parts");
    const UDMItemHandle screw = ann->CreateAndAddChild("Part", "Screw", hub, "parts");
    for (const UDMItemHandle& below : {wheel, hub}) {
        EXPECT_THAT(Refusal([&] { ann->AddChild(screw, below, "parts"); }),
                    HasSubstr("lies below"));
    }
    EXPECT_THROW(ann->AddChild(screw, screw, "parts"), UDMException);
    EXPECT_THAT(Children(ann, screw), IsEmpty());
}

TEST_F(ChildrenOf, ReferencesMayFormACycle) {
    const UDMItemHandle axle = ann->CreateEntity("Part", "Axle");
    ann->AddChild(wheel, axle, "uses");
    ann->AddChild(axle, wheel, "uses");
    EXPECT_THAT(Parents(ann, wheel, "reference"), ElementsAre("Axle"));
    EXPECT_TRUE(wheel.IsRootEntity());
}

TEST_F(ChildrenOf, RemovingWhatIsNoChildIsAnError) {
    const UDMItemHandle axle = ann->CreateEntity("Part", "Axle");
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] { ann->RemoveChild(wheel, axle); }),
                HasSubstr("no child"));
}

TEST_F(ChildrenOf, RemovingTakesAChildOutOfAllOwnerAndReferenceGroups) {
    const UDMItemHandle axle = ann->CreateEntity("Part", "Axle");
    ann->AddChild(wheel, axle, "parts");
    ann->AddChild(wheel, axle, "uses");
    ann->RemoveChild(wheel, axle);
    EXPECT_THAT(Children(ann, wheel), IsEmpty());
    EXPECT_THAT(Children(ann, wheel, "uses"), IsEmpty());
}

TEST_F(ChildrenOf, WhatOthersDoNotSeeIsLeftOutForThem) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Shared");
    ann->CreateAndAddChild("Drawing", "private", note, "sketches");
    ann->CreateAndAddChild("Note", "public", note, "answers");
    const ProfilePtr bob = library.Open("bob");
    const UDMItemHandle seen = bob->GetEntity(note.GetUID());
    EXPECT_THAT(Children(bob, seen), ElementsAre("public"));
    EXPECT_EQ(bob->GetChildCount(seen, "", ""), 1U);
    EXPECT_THAT(Children(ann, note), ElementsAre("public", "private"));
}

TEST_F(ChildrenOf, ListedChildrenShareTheStateOfOtherHandles) {
    const UDMItemHandle screw = ann->CreateAndAddChild("Part", "Screw", wheel, "parts");
    kxStlVector<UDMItemHandle> out;
    ann->GetChildren(out, wheel, "parts", "");
    ann->SetAttributeValue(out.front(), "mass", 9.0);
    EXPECT_EQ(screw.GetAttributeValue("mass"), kxVariant(9.0));
    EXPECT_EQ(out.front().State(), screw.State());
}

TEST_F(ChildrenOf, ATreeOfManyAreListedWhole) {
    UDMBulkEdit edit(ann);
    for (int i = 0; i < 2000; ++i) {
        ann->CreateAndAddChild("Part", "p" + std::to_string(i), wheel, "parts");
    }
    edit.Commit();
    const Names names = Children(ann, wheel, "parts");
    ASSERT_EQ(names.size(), 2000U);
    EXPECT_EQ(names.front(), "p0");
    EXPECT_EQ(names.back(), "p1999");
}

}  // namespace
}  // namespace kxudm::test
