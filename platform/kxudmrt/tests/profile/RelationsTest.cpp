// Relations of free types: what they join, on which revisions they hold, who is told.
#include "Revisions.h"
#include "store/LibraryStore.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

Names RelatedTo(const ProfilePtr& profile,
                const UDMItemHandle& handle,
                const kxString& type,
                bool anyRevision = false) {
    kxStlVector<UDMItemHandle> parents;
    profile->GetParents(parents, handle, type, anyRevision);
    Names names;
    for (const UDMItemHandle& parent : parents) {
        names.push_back(parent.GetDisplayName() + ":" + std::to_string(parent.GetRevision()));
    }
    return names;
}

class Relations : public testing::Test {
  protected:
    UDMRelationHandle Relate(const UDMItemHandle& first,
                             const UDMItemHandle& second,
                             const kxString& type = "fits",
                             bool exact = false) {
        return ann->CreateRelation(first, second, type, exact);
    }

    Library library;
    ProfilePtr ann = library.Open("ann");
    UDMItemHandle nut = ann->CreateEntity("Part", "Nut");
    UDMItemHandle bolt = ann->CreateEntity("Drawing", "Bolt");
};

TEST_F(Relations, AreFoundByTheirTypeFromTheSecondEnd) {
    const UDMRelationHandle relation = Relate(nut, bolt);
    EXPECT_EQ(relation.GetFirst().GetUID(), nut.GetUID());
    EXPECT_EQ(relation.GetSecond().GetUID(), bolt.GetUID());
    EXPECT_EQ(relation.GetType(), "fits");
    EXPECT_THAT(RelatedTo(ann, bolt, "fits"), ElementsAre("Nut:0"));
    EXPECT_THAT(RelatedTo(ann, bolt, "fit"), IsEmpty());
    EXPECT_THAT(RelatedTo(ann, nut, "fits"), IsEmpty());
}

TEST_F(Relations, MakeNobodyAnOwnerOrAReference) {
    Relate(nut, bolt);
    EXPECT_TRUE(bolt.IsRootEntity());
    EXPECT_FALSE(bolt.hasparent());
    for (const char* category : {"owner", "reference", "folder", "category"}) {
        EXPECT_THAT(RelatedTo(ann, bolt, category), IsEmpty()) << category;
    }
    EXPECT_THAT(Children(ann, nut), IsEmpty());
    kxStlVector<UDMItemHandle> referring;
    kxStlVector<kxString> types;
    ann->GetReferredBy(referring, types, bolt);
    EXPECT_THAT(referring, IsEmpty());
}

TEST_F(Relations, OfManyTypesAndFirstEndsComeInTheOrderOfCreation) {
    const UDMItemHandle washer = ann->CreateEntity("Note", "Washer");
    Relate(washer, bolt, "fits");
    Relate(nut, bolt, "replaces");
    Relate(nut, bolt, "fits");
    EXPECT_THAT(RelatedTo(ann, bolt, "fits"), ElementsAre("Nut:0", "Washer:0"));
    EXPECT_THAT(RelatedTo(ann, bolt, "replaces"), ElementsAre("Nut:0"));
}

TEST_F(Relations, OfOneNameWithAGroupAreFoundBesideItsParents) {
    const UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    ann->AddChild(wheel, bolt, "drawings");
    Relate(nut, bolt, "drawings");
    EXPECT_THAT(RelatedTo(ann, bolt, "drawings"), ElementsAre("Wheel:0", "Nut:0"));
    Relate(wheel, bolt, "drawings");
    // Each parent once.
    EXPECT_THAT(RelatedTo(ann, bolt, "drawings"), ElementsAre("Wheel:0", "Nut:0"));
}

TEST_F(Relations, MayLeadInACircleAndBackToTheirBegin) {
    Relate(nut, bolt);
    Relate(bolt, nut);
    Relate(nut, nut);
    EXPECT_THAT(RelatedTo(ann, nut, "fits"), ElementsAre("Nut:0", "Bolt:0"));
}

TEST_F(Relations, AreThereOnceForEachTypeAndExactness) {
    Relate(nut, bolt);
    const std::string refusal = Refusal([&] { Relate(nut, bolt); });
    EXPECT_THAT(refusal, HasSubstr("\"fits\""));
    EXPECT_THAT(refusal, HasSubstr(nut.GetUID()));
    EXPECT_THAT(refusal, HasSubstr("already"));
    Relate(nut, bolt, "fits", true);
    EXPECT_THAT(Refusal([&] { Relate(nut, bolt, "fits", true); }), HasSubstr("already"));
    EXPECT_THAT(RelatedTo(ann, bolt, "fits"), ElementsAre("Nut:0"));
}

TEST_F(Relations, NeedATypeThatGetParentsCanAskFor) {
    for (const char* type : {"", "owner", "reference", "folder", "category", "a\xFF"}) {
        EXPECT_THAT(Refusal([&] { Relate(nut, bolt, type); }), HasSubstr("relation type")) << type;
    }
    EXPECT_THROW(Relate(nut, bolt, kxString("a\0b", 3)), UDMException);
    EXPECT_THROW(Relate(UDMItemHandle(), bolt), UDMException);
    EXPECT_THROW(Relate(nut, UDMItemHandle()), UDMException);
    EXPECT_EQ(nut.GetAttributeValue("smd_contentrevision"), kxVariant(0));
}

TEST_F(Relations, RemovingTakesAllFromTheFirstEndToTheSecond) {
    Relate(nut, bolt, "fits");
    Relate(nut, bolt, "fits", true);
    Relate(nut, bolt, "replaces");
    Relate(bolt, nut, "fits");
    EXPECT_TRUE(ann->RemoveRelation(nut, bolt));
    EXPECT_THAT(RelatedTo(ann, bolt, "fits"), IsEmpty());
    EXPECT_THAT(RelatedTo(ann, bolt, "replaces"), IsEmpty());
    EXPECT_THAT(RelatedTo(ann, nut, "fits"), ElementsAre("Bolt:0"));
    EXPECT_FALSE(ann->RemoveRelation(nut, bolt));
}

TEST_F(Relations, RemovingLeavesChildrenAndReferencesAlone) {
    ann->AddChild(nut, bolt, "drawings");
    ann->AddChild(nut, bolt, "uses");
    EXPECT_FALSE(ann->RemoveRelation(nut, bolt));
    Relate(nut, bolt);
    EXPECT_TRUE(ann->RemoveRelation(nut, bolt));
    EXPECT_THAT(Children(ann, nut, "drawings"), ElementsAre("Bolt"));
    EXPECT_THAT(Children(ann, nut, "uses"), ElementsAre("Bolt"));
    Relate(nut, bolt);
    ann->RemoveChild(nut, bolt);
    EXPECT_THAT(RelatedTo(ann, bolt, "fits"), ElementsAre("Nut:0"));
}

TEST_F(Relations, BelongToTheFirstEndWhichMustBeEditable) {
    bolt = Publish(ann, bolt);
    Relate(nut, bolt);
    nut = Publish(ann, nut);
    EXPECT_THAT(Refusal([&] { Relate(nut, bolt, "replaces"); }), HasSubstr("check it out"));
    EXPECT_THAT(Refusal([&] { ann->RemoveRelation(nut, bolt); }), HasSubstr("check it out"));
    EXPECT_THAT(RelatedTo(ann, bolt, "fits"), ElementsAre("Nut:1"));
    const ProfilePtr bob = library.Open("bob");
    CheckOut(bob, bob->GetEntity(nut.GetUID()));
    EXPECT_THAT(Refusal([&] { Relate(nut, bolt, "replaces"); }), HasSubstr("bob"));
    // Nothing to remove is no edit.
    EXPECT_FALSE(ann->RemoveRelation(bolt, nut));
}

TEST_F(Relations, FollowTheNewestRevisionsOfBothEnds) {
    Relate(nut, bolt);
    nut = Publish(ann, nut);
    bolt = Publish(ann, bolt);
    nut = CheckOut(ann, nut);
    bolt = CheckOut(ann, bolt);
    EXPECT_THAT(RelatedTo(ann, bolt, "fits"), ElementsAre("Nut:2"));
    // Also for an older revision of the second end.
    EXPECT_THAT(RelatedTo(ann, ann->GetEntity(At(bolt, 1)), "fits"), ElementsAre("Nut:2"));
    const ProfilePtr bob = library.Open("bob");
    EXPECT_THAT(RelatedTo(bob, bob->GetEntity(Base(bolt)), "fits"), ElementsAre("Nut:1"));
}

TEST_F(Relations, ThatAreExactStayOnTheTwoRevisions) {
    bolt = Publish(ann, bolt, "", true);
    ASSERT_EQ(bolt.GetRevision(), 2);
    const UDMItemHandle first = ann->GetEntity(At(bolt, 1));
    Relate(nut, first, "fits", true);
    EXPECT_THAT(RelatedTo(ann, first, "fits"), ElementsAre("Nut:0"));
    EXPECT_THAT(RelatedTo(ann, bolt, "fits"), IsEmpty());
    // Revision 0 becomes 1, and that keeps the relation.
    nut = Publish(ann, nut);
    EXPECT_THAT(RelatedTo(ann, first, "fits"), ElementsAre("Nut:1"));
    // The next one doesn't have it; the flag finds it in the older one.
    nut = CheckOut(ann, nut);
    EXPECT_THAT(RelatedTo(ann, first, "fits"), IsEmpty());
    EXPECT_THAT(RelatedTo(ann, first, "fits", true), ElementsAre("Nut:2"));
    EXPECT_THAT(RelatedTo(ann, bolt, "fits", true), IsEmpty());
    EXPECT_FALSE(ann->RemoveRelation(nut, first));
    ann->UndoCheckout(nut);
    EXPECT_THAT(RelatedTo(ann, first, "fits"), ElementsAre("Nut:1"));
    nut = Publish(ann, CheckOut(ann, nut));
    nut = Publish(ann, CheckOut(ann, nut));
    EXPECT_THAT(RelatedTo(ann, first, "fits"), IsEmpty());
    EXPECT_THAT(RelatedTo(ann, first, "fits", true), ElementsAre("Nut:3"));
}

TEST_F(Relations, ThatAreExactMayLeadToManyRevisionsOfOneContent) {
    bolt = Publish(ann, bolt, "", true);
    const UDMItemHandle first = ann->GetEntity(At(bolt, 1));
    Relate(nut, first, "fits", true);
    Relate(nut, bolt, "fits", true);
    EXPECT_THAT(RelatedTo(ann, first, "fits"), ElementsAre("Nut:0"));
    EXPECT_THAT(RelatedTo(ann, bolt, "fits"), ElementsAre("Nut:0"));
    EXPECT_TRUE(ann->RemoveRelation(nut, bolt));
    EXPECT_THAT(RelatedTo(ann, first, "fits"), IsEmpty());
}

TEST_F(Relations, ToARevisionOfOneselfAreExactOnes) {
    nut = Publish(ann, nut, "", true);
    const UDMItemHandle first = ann->GetEntity(At(nut, 1));
    Relate(nut, first, "made of", true);
    EXPECT_THAT(RelatedTo(ann, first, "made of"), ElementsAre("Nut:2"));
    EXPECT_THAT(RelatedTo(ann, nut, "made of"), IsEmpty());
}

TEST_F(Relations, ToARevisionThatIsUndoneAreGone) {
    bolt = CheckOut(ann, Publish(ann, bolt));
    Relate(nut, bolt, "fits", true);
    EXPECT_THAT(RelatedTo(ann, bolt, "fits"), ElementsAre("Nut:0"));
    ann->UndoCheckout(bolt);
    bolt = CheckOut(ann, bolt);
    EXPECT_THAT(RelatedTo(ann, bolt, "fits"), IsEmpty());
}

TEST_F(Relations, OfARevisionThatIsUndoneAreAsTheyWere) {
    const UDMItemHandle washer = ann->CreateEntity("Drawing", "Washer");
    Relate(nut, bolt);
    nut = CheckOut(ann, Publish(ann, nut));
    EXPECT_TRUE(ann->RemoveRelation(nut, bolt));
    Relate(nut, washer);
    Relate(nut, washer, "fits", true);
    EXPECT_THAT(RelatedTo(ann, bolt, "fits"), IsEmpty());
    EXPECT_THAT(RelatedTo(ann, bolt, "fits", true), ElementsAre("Nut:2"));
    ann->UndoCheckout(nut);
    EXPECT_THAT(RelatedTo(ann, bolt, "fits"), ElementsAre("Nut:1"));
    EXPECT_THAT(RelatedTo(ann, washer, "fits", true), IsEmpty());
}

TEST_F(Relations, RemovedInAPublishedRevisionAreStillInTheOneBefore) {
    bolt = Publish(ann, bolt);
    Relate(nut, bolt);
    nut = CheckOut(ann, Publish(ann, nut));
    EXPECT_TRUE(ann->RemoveRelation(nut, bolt));
    const ProfilePtr bob = library.Open("bob");
    const UDMItemHandle seen = bob->GetEntity(Base(bolt));
    EXPECT_THAT(RelatedTo(bob, seen, "fits"), ElementsAre("Nut:1"));
    nut = Publish(ann, nut);
    EXPECT_THAT(RelatedTo(bob, seen, "fits"), IsEmpty());
    EXPECT_THAT(RelatedTo(bob, seen, "fits", true), ElementsAre("Nut:2"));
}

TEST_F(Relations, StayWithTheOriginOfABranch) {
    Relate(nut, bolt);
    nut = Publish(ann, CheckOut(ann, Publish(ann, nut)));
    ann->Checkout(ann->GetEntity(At(nut, 1)), "");
    EXPECT_THAT(RelatedTo(ann, bolt, "fits", true), ElementsAre("Nut:2"));
}

TEST_F(Relations, OfUnversionedContentsHoldAtOnceForEverybody) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Note");
    bolt = Publish(ann, bolt);
    const ProfilePtr bob = library.Open("bob");
    Relate(note, bolt, "explains", true);
    EXPECT_THAT(RelatedTo(bob, bob->GetEntity(Base(bolt)), "explains"), ElementsAre("Note:0"));
    EXPECT_TRUE(bob->RemoveRelation(bob->GetEntity(note.GetUID()), bob->GetEntity(Base(bolt))));
    EXPECT_THAT(RelatedTo(ann, bolt, "explains"), IsEmpty());
}

TEST_F(Relations, ToWhatIsDeletedVanishAndComeBackWithIt) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Note");
    Relate(nut, note);
    Relate(bolt, note);
    const kxString uid = note.GetUID();
    const kxString deleted = Base(nut);
    ann->DeleteEntity(note, true, false);
    EXPECT_THROW(RelatedTo(ann, note, "fits"), UDMNotFoundException);
    EXPECT_THROW(Relate(nut, note, "replaces"), UDMNotFoundException);
    ann->DeleteEntity(nut, true, false);
    UDMProfileMgr::DiscardProfile(ann);
    const auto store = store::LibraryStore::Open(library.File());
    ASSERT_TRUE(store->Undelete(Base(note)));
    const ProfilePtr later = library.Open("ann");
    EXPECT_THAT(RelatedTo(later, later->GetEntity(uid), "fits"), ElementsAre("Bolt:0"));
    ASSERT_TRUE(store->Undelete(deleted));
    const ProfilePtr last = library.Open("ann");
    EXPECT_THAT(RelatedTo(last, last->GetEntity(uid), "fits"), ElementsAre("Nut:0", "Bolt:0"));
}

TEST_F(Relations, InABulkEditThatIsTakenBackAreGone) {
    {
        UDMBulkEdit edit(ann);
        Relate(nut, bolt);
        EXPECT_THAT(RelatedTo(ann, bolt, "fits"), ElementsAre("Nut:0"));
    }
    EXPECT_THAT(RelatedTo(ann, bolt, "fits"), IsEmpty());
}

TEST_F(Relations, StampTheRevisionThatBearsThem) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Note");
    const ProfilePtr bob = library.Open("bob");
    bob->CreateRelation(bob->GetEntity(note.GetUID()), bob->GetEntity(note.GetUID()), "is", false);
    EXPECT_EQ(bob->GetEntity(note.GetUID()).GetModifiedBy(), kxVariant("bob"));
}

TEST_F(Relations, AClosedSessionHasNone) {
    const ProfilePtr closed = ann;
    UDMProfileMgr::DiscardProfile(ann);
    EXPECT_THAT(Refusal([&] { closed->CreateRelation(nut, bolt, "fits", false); }),
                HasSubstr("CreateRelation"));
    EXPECT_THAT(Refusal([&] { closed->RemoveRelation(nut, bolt); }), HasSubstr("RemoveRelation"));
}

TEST_F(Relations, N5_TellTheFirstEndAndN9_BothEnds) {
    const auto told = Listen(ann);
    Relate(nut, bolt);
    EXPECT_THAT(told->Take(), ElementsAre("40 Nut"));
    Relate(nut, bolt, "fits", true);
    told->Take();
    EXPECT_THROW(Relate(nut, bolt), UDMException);
    EXPECT_THAT(told->Take(), IsEmpty());
    ann->RemoveRelation(nut, bolt);
    EXPECT_THAT(told->Take(), ElementsAre("41 Nut Bolt"));
    ann->RemoveRelation(nut, bolt);
    EXPECT_THAT(told->Take(), IsEmpty());
}

TEST_F(Relations, N11_ToWhatIsDeletedTellTheFirstEndOnce) {
    bolt = Publish(ann, bolt, "", true);
    Relate(nut, bolt);
    Relate(nut, ann->GetEntity(At(bolt, 1)), "fits", true);
    Relate(nut, bolt, "replaces");
    const auto told = Listen(ann);
    ann->DeleteEntity(bolt, true, false);
    EXPECT_EQ(told->Take().front(), "41 Nut Bolt");
    EXPECT_EQ(std::count(told->told.begin(), told->told.end(), "41 Nut Bolt"), 0);
}

TEST_F(Relations, N15_AreToldToThoseWhoSeeThem) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Note");
    bolt = Publish(ann, bolt);
    const auto here = Listen(library.Open("ann"));
    const auto elsewhere = Listen(library.Open("bob"));
    Relate(nut, bolt);  // a private first end
    Relate(note, nut);  // a private second end
    EXPECT_THAT(here->Take(), ElementsAre("40 Nut", "40 Note"));
    EXPECT_THAT(elsewhere->Take(), IsEmpty());
    Relate(note, bolt);  // both public
    EXPECT_THAT(here->Take(), ElementsAre("40 Note"));
    EXPECT_THAT(elsewhere->Take(), ElementsAre("40 Note"));
    bolt = CheckOut(ann, bolt);
    elsewhere->Take();
    Relate(note, bolt, "fits", true);  // a revision that nobody else sees
    EXPECT_THAT(elsewhere->Take(), IsEmpty());
    ann->RemoveRelation(note, bolt);
    EXPECT_THAT(elsewhere->Take(), ElementsAre("41 Note Bolt"));
}

TEST_F(Relations, N27_AreToldElsewhereWhenTheSecondEndIsFirstPublished) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Note");
    Relate(note, nut);
    const auto elsewhere = Listen(library.Open("bob"));
    nut = Publish(ann, nut);
    EXPECT_THAT(elsewhere->Take(), ElementsAre("5 Nut", "40 Note"));
}

TEST_F(Relations, N16_OfABulkEditAreToldOnceForEachFirstEnd) {
    const auto told = Listen(ann);
    UDMBulkEdit edit(ann);
    for (const char* type : {"a", "b", "c"}) {
        Relate(nut, bolt, type);
    }
    edit.Commit();
    EXPECT_THAT(told->Take(), ElementsAre("40 Nut"));
}

}  // namespace
}  // namespace kxudm::test
