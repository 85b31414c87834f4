// References: links through the groups of category "reference".
#include "Revisions.h"
#include "store/LibraryStore.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

Names References(const ProfilePtr& profile,
                 const UDMItemHandle& handle,
                 const kxString& type = "") {
    kxStlVector<UDMItemHandle> targets;
    profile->GetReferences(targets, handle, type);
    return DisplayNames(targets);
}

// "<name> <type>" of each that refers.
Names ReferredBy(const ProfilePtr& profile,
                 const UDMItemHandle& handle,
                 kxStlVector<kxString> types = {}) {
    kxStlVector<UDMItemHandle> referring;
    profile->GetReferredBy(referring, types, handle);
    Names names = DisplayNames(referring);
    EXPECT_EQ(names.size(), types.size());
    for (std::size_t i = 0; i < names.size() && i < types.size(); ++i) {
        names[i] += " " + types[i];
    }
    return names;
}

class AReference : public testing::Test {
  protected:
    Library library;
    ProfilePtr ann = library.Open("ann");
    UDMItemHandle hub = ann->CreateEntity("Node", "Hub");
    UDMItemHandle rim = ann->CreateEntity("Node", "Rim");
};

TEST_F(AReference, IsFoundFromBothEnds) {
    ann->AddReference(hub, rim, "uses");
    EXPECT_THAT(References(ann, hub, "uses"), ElementsAre("Rim"));
    EXPECT_THAT(References(ann, hub), ElementsAre("Rim"));
    EXPECT_THAT(Children(ann, hub, "uses"), ElementsAre("Rim"));
    EXPECT_THAT(Children(ann, hub), IsEmpty());
    EXPECT_THAT(ReferredBy(ann, rim), ElementsAre("Hub uses"));
    EXPECT_THAT(Parents(ann, rim, "reference"), ElementsAre("Hub"));
    EXPECT_THAT(Parents(ann, rim, "uses"), ElementsAre("Hub"));
    EXPECT_TRUE(rim.IsRootEntity());
}

TEST_F(AReference, NeedsAGroupOfReferencesThatTakesTheTarget) {
    const std::string owner =
        Refusal<UDMNotFoundException>([&] { ann->AddReference(hub, rim, "kits"); });
    EXPECT_THAT(owner, HasSubstr("\"kits\""));
    EXPECT_THAT(owner, HasSubstr("\"uses\""));
    EXPECT_THROW(ann->AddReference(hub, rim, "wings"), UDMNotFoundException);
    const UDMItemHandle note = ann->CreateEntity("Note", "Note");
    EXPECT_THAT(Refusal([&] { ann->AddReference(hub, note, "uses"); }), HasSubstr("Note"));
    EXPECT_THAT(Refusal([&] { ann->AddReference(hub, note, ""); }), HasSubstr("takes a \"Note\""));
    EXPECT_THROW(ann->AddReference(UDMItemHandle(), rim, "uses"), UDMException);
    EXPECT_THROW(ann->AddReference(hub, UDMItemHandle(), "uses"), UDMException);
    EXPECT_THAT(References(ann, hub), IsEmpty());
}

TEST_F(AReference, OfNoTypeGoesIntoTheFirstGroupOfReferences) {
    ann->AddReference(hub, rim, "");
    EXPECT_THAT(ReferredBy(ann, rim), ElementsAre("Hub uses"));
    EXPECT_THAT(Children(ann, hub), IsEmpty());
}

TEST_F(AReference, IsThereOnceInEachGroup) {
    ann->AddReference(hub, rim, "uses");
    EXPECT_THAT(Refusal([&] { ann->AddReference(hub, rim, "uses"); }), HasSubstr("already"));
    ann->AddReference(hub, rim, "sees");
    EXPECT_THAT(ReferredBy(ann, rim), ElementsAre("Hub sees", "Hub uses"));
}

TEST_F(AReference, OfAllTypesComeInTheDefinitionsOrderAndEachInItsOwn) {
    const UDMItemHandle nut = ann->CreateEntity("Node", "Nut");
    ann->AddReference(hub, rim, "sees");
    ann->AddReference(hub, nut, "sees");
    ann->AddReference(hub, nut, "uses");
    ann->AddReference(hub, rim, "uses");
    EXPECT_THAT(References(ann, hub), ElementsAre("Nut", "Rim", "Rim", "Nut"));
    EXPECT_THAT(References(ann, hub), ElementsAre("Nut", "Rim", "Rim", "Nut"));
    EXPECT_THAT(References(ann, hub, "sees"), ElementsAre("Rim", "Nut"));
    EXPECT_THAT(Children(ann, hub, "reference"), ElementsAre("Nut", "Rim", "Rim", "Nut"));
}

TEST_F(AReference, OfATypeThatIsNoneIsAnErrorThatNamesThoseThatAreThere) {
    for (const char* type : {"wings", "kits", "reference"}) {
        EXPECT_THAT(Refusal<UDMNotFoundException>([&] { References(ann, hub, type); }),
                    HasSubstr("\"sees\""))
            << type;
    }
    const UDMItemHandle drawing = ann->CreateEntity("Drawing", "D");
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] { References(ann, drawing, "uses"); }),
                HasSubstr("it has none"));
    EXPECT_THAT(References(ann, drawing), IsEmpty());
}

TEST_F(AReference, IsAppendedToTheResult) {
    ann->AddReference(hub, rim, "uses");
    kxStlVector<UDMItemHandle> out;
    out.push_back(hub);
    ann->GetReferences(out, hub, "");
    EXPECT_THAT(DisplayNames(out), ElementsAre("Hub", "Rim"));
    kxStlVector<kxString> types;
    ann->GetReferredBy(out, types, rim);
    EXPECT_THAT(DisplayNames(out), ElementsAre("Hub", "Rim", "Hub"));
    // One type for each result of this question.
    EXPECT_THAT(types, ElementsAre("uses"));
}

TEST_F(AReference, IsSiftedByTheTypesGiven) {
    const UDMItemHandle nut = ann->CreateEntity("Node", "Nut");
    ann->AddReference(hub, rim, "uses");
    ann->AddReference(nut, rim, "sees");
    ann->AddReference(nut, rim, "uses");
    EXPECT_THAT(ReferredBy(ann, rim), ElementsAre("Hub uses", "Nut sees", "Nut uses"));
    EXPECT_THAT(ReferredBy(ann, rim, {"sees"}), ElementsAre("Nut sees"));
    EXPECT_THAT(ReferredBy(ann, rim, {"uses", "none", "uses"}),
                ElementsAre("Hub uses", "Nut uses"));
    EXPECT_THAT(ReferredBy(ann, rim, {"sees", "uses"}),
                ElementsAre("Hub uses", "Nut sees", "Nut uses"));
    EXPECT_THAT(ReferredBy(ann, rim, {"none"}), IsEmpty());
    EXPECT_THAT(ReferredBy(ann, rim, {"sees", ""}),
                ElementsAre("Hub uses", "Nut sees", "Nut uses"));
    EXPECT_THAT(ReferredBy(ann, rim, {""}), ElementsAre("Hub uses", "Nut sees", "Nut uses"));
    EXPECT_THAT(ReferredBy(ann, hub), IsEmpty());
}

TEST_F(AReference, LeavesTheTypesAloneWhereTheQuestionFails) {
    kxStlVector<UDMItemHandle> referring;
    kxStlVector<kxString> types{"uses"};
    EXPECT_THROW(ann->GetReferredBy(referring, types, UDMItemHandle()), UDMException);
    EXPECT_THAT(types, ElementsAre("uses"));
}

TEST_F(AReference, IsRemovedFromAllGroupsOfReferencesAndNoOthers) {
    ann->AddChild(hub, rim, "kits");
    ann->AddReference(hub, rim, "uses");
    ann->AddReference(hub, rim, "sees");
    ann->RemoveReference(hub, rim);
    EXPECT_THAT(References(ann, hub), IsEmpty());
    EXPECT_THAT(Children(ann, hub, "kits"), ElementsAre("Rim"));
    const std::string refusal =
        Refusal<UDMNotFoundException>([&] { ann->RemoveReference(hub, rim); });
    EXPECT_THAT(refusal, HasSubstr(hub.GetUID()));
    EXPECT_THAT(refusal, HasSubstr(rim.GetUID()));
    // Nor the other way round.
    ann->AddReference(hub, rim, "uses");
    EXPECT_THROW(ann->RemoveReference(rim, hub), UDMNotFoundException);
}

TEST_F(AReference, MayFormACircle) {
    ann->AddReference(hub, rim, "uses");
    ann->AddReference(rim, hub, "uses");
    ann->AddReference(hub, hub, "uses");
    EXPECT_THAT(References(ann, hub), ElementsAre("Rim", "Hub"));
    EXPECT_THAT(ReferredBy(ann, hub), ElementsAre("Hub uses", "Rim uses"));
}

TEST_F(AReference, KeepsItsPlaceInTheOrder) {
    std::vector<UDMItemHandle> nuts;
    for (const char* name : {"c", "a", "b"}) {
        nuts.push_back(ann->CreateEntity("Node", name));
        ann->AddReference(hub, nuts.back(), "uses");
    }
    ann->RemoveReference(hub, nuts[1]);
    ann->AddReference(hub, nuts[1], "uses");
    EXPECT_THAT(References(ann, hub), ElementsAre("c", "b", "a"));
    hub = CheckOut(ann, Publish(ann, hub));
    ann->RemoveReference(hub, nuts[0]);
    ann->AddReference(hub, nuts[0], "uses");
    EXPECT_THAT(References(ann, hub), ElementsAre("b", "a", "c"));
    EXPECT_THAT(References(ann, ann->GetEntity(At(hub, 1))), ElementsAre("c", "b", "a"));
    hub = Publish(ann, hub);
    EXPECT_THAT(References(ann, hub), ElementsAre("b", "a", "c"));
    EXPECT_THAT(References(ann, ann->GetEntity(At(hub, 1))), ElementsAre("c", "b", "a"));
}

TEST_F(AReference, BelongsToTheRevisionThatRefers) {
    rim = Publish(ann, rim);
    hub = Publish(ann, hub);
    EXPECT_THAT(Refusal([&] { ann->AddReference(hub, rim, "uses"); }), HasSubstr("check it out"));
    hub = CheckOut(ann, hub);
    ann->AddReference(hub, rim, "uses");
    const ProfilePtr bob = library.Open("bob");
    const UDMItemHandle seen = bob->GetEntity(Base(rim));
    EXPECT_THAT(ReferredBy(bob, seen), IsEmpty());
    EXPECT_THAT(References(bob, bob->GetEntity(Base(hub))), IsEmpty());
    hub = Publish(ann, hub);
    EXPECT_THAT(Refusal([&] { ann->RemoveReference(hub, rim); }), HasSubstr("check it out"));
    EXPECT_THAT(ReferredBy(bob, seen), ElementsAre("Hub uses"));
    hub = CheckOut(ann, hub);
    ann->RemoveReference(hub, rim);
    EXPECT_THAT(References(ann, hub), IsEmpty());
    EXPECT_THAT(References(ann, ann->GetEntity(At(hub, 2))), ElementsAre("Rim"));
    EXPECT_THAT(ReferredBy(ann, rim), IsEmpty());
    EXPECT_THAT(ReferredBy(bob, seen), ElementsAre("Hub uses"));
    ann->UndoCheckout(hub);
    EXPECT_THAT(ReferredBy(ann, rim), ElementsAre("Hub uses"));
}

TEST_F(AReference, FollowsTheNewestRevisionOfItsTarget) {
    ann->AddReference(hub, rim, "uses");
    rim = CheckOut(ann, Publish(ann, rim));
    kxStlVector<UDMItemHandle> targets;
    ann->GetReferences(targets, hub, "uses");
    ASSERT_EQ(targets.size(), 1U);
    EXPECT_EQ(targets.front().GetRevision(), 2);
    EXPECT_THAT(ReferredBy(ann, ann->GetEntity(At(rim, 1))), ElementsAre("Hub uses"));
}

TEST_F(AReference, GoesAlongIntoABranch) {
    ann->AddReference(hub, rim, "uses");
    hub = Publish(ann, CheckOut(ann, Publish(ann, hub)));
    ann->Checkout(ann->GetEntity(At(hub, 1)), "");
    EXPECT_THAT(ReferredBy(ann, rim), ElementsAre("Hub uses", "Hub uses"));
}

TEST_F(AReference, ToWhatIsDeletedVanishesAndComesBackInItsPlace) {
    const UDMItemHandle nut = ann->CreateEntity("Node", "Nut");
    ann->AddReference(hub, rim, "uses");
    ann->AddReference(hub, nut, "uses");
    ann->DeleteEntity(rim, true, false);
    EXPECT_THAT(References(ann, hub), ElementsAre("Nut"));
    EXPECT_THROW(ann->RemoveReference(hub, rim), UDMNotFoundException);
    UDMProfileMgr::DiscardProfile(ann);
    ASSERT_TRUE(store::LibraryStore::Open(library.File())->Undelete(Base(rim)));
    const ProfilePtr later = library.Open("ann");
    EXPECT_THAT(References(later, later->GetEntity(hub.GetUID())), ElementsAre("Rim", "Nut"));
}

TEST_F(AReference, OfAClosedSessionIsAnError) {
    const ProfilePtr closed = ann;
    UDMProfileMgr::DiscardProfile(ann);
    EXPECT_THAT(Refusal([&] { closed->AddReference(hub, rim, "uses"); }),
                HasSubstr("AddReference"));
    EXPECT_THAT(Refusal([&] { References(closed, hub); }), HasSubstr("GetReferences"));
    EXPECT_THAT(Refusal([&] { closed->RemoveReference(hub, rim); }), HasSubstr("RemoveReference"));
    EXPECT_THAT(Refusal([&] { ReferredBy(closed, hub); }), HasSubstr("GetReferredBy"));
}

TEST_F(AReference, N5_TellsTheReferringOneAndN9_BothEnds) {
    const auto told = Listen(ann);
    ann->AddReference(hub, rim, "uses");
    ann->AddReference(hub, rim, "sees");
    EXPECT_THAT(told->Take(), ElementsAre("40 Hub", "40 Hub"));
    ann->RemoveReference(hub, rim);
    EXPECT_THAT(told->Take(), ElementsAre("41 Hub Rim"));
    EXPECT_THROW(ann->RemoveReference(hub, rim), UDMException);
    EXPECT_THAT(told->Take(), IsEmpty());
}

TEST_F(AReference, N15_IsToldToThoseWhoSeeIt) {
    const UDMItemHandle page = ann->CreateEntity("Note", "Page");
    const UDMItemHandle other = ann->CreateEntity("Note", "Other");
    const auto here = Listen(library.Open("ann"));
    const auto elsewhere = Listen(library.Open("bob"));
    ann->AddReference(hub, rim, "uses");
    ann->RemoveReference(hub, rim);
    EXPECT_THAT(here->Take(), ElementsAre("40 Hub", "41 Hub Rim"));
    EXPECT_THAT(elsewhere->Take(), IsEmpty());
    ann->AddReference(page, other, "see");
    ann->RemoveReference(page, other);
    EXPECT_THAT(here->Take(), ElementsAre("40 Page", "41 Page Other"));
    EXPECT_THAT(elsewhere->Take(), ElementsAre("40 Page", "41 Page Other"));
}

}  // namespace
}  // namespace kxudm::test
