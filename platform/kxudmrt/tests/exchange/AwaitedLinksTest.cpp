// Links of an archive whose other end has not come: kept where nobody sees them, and carried on;
// rows X40, X48 and X49 of docs/exchange-format.md.
#include "Exchange.h"
#include "store/LibraryStore.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class AwaitedLinks : public Exchange {
  protected:
    // A wheel that uses a hub, has a rim as its child, and stands next to a bolt.
    void SetUp() override {
        wheel = ann->CreateEntity("Part", "Wheel");
        ann->AddReference(wheel, hub, "uses");
        ann->AddChild(wheel, rim, "parts");
        ann->CreateRelation(wheel, bolt, "next to", false);
        wheel = Publish(ann, wheel);
    }
    static std::size_t CountDeleted(const ProfilePtr& profile) {
        return UDMMaintenance(profile).DeletedEntities().size();
    }
    static std::size_t PurgeDeleted(const ProfilePtr& profile) {
        UDMPurgeOptions options;
        options.minimumAge = std::chrono::seconds(0);
        options.deletedEntities = true;
        return UDMMaintenance(profile).Purge(options).entities;
    }
    // A branch, in work, of an older revision of the wheel.
    UDMItemHandle Branch(const ProfilePtr& profile, int revision) {
        profile->Checkout(profile->GetEntity(At(wheel, revision)), "");
        kxStlVector<UDMItemHandle> found;
        profile->RunQuery(
            found, "name == \"Wheel\"", -1, 0, 0, UDMQuerySettingHandle(), false, false);
        return found.back();
    }
    // The number by which the tables know an entity.
    [[nodiscard]] std::int64_t NumberOf(const UDMItemHandle& handle) const {
        const auto store = providers::OpenLibraryFile(target.File(), 1000);
        store::EntityRow row;
        return store->FindByUid(Base(handle), store::THE_PUBLIC, row) ? row.id : 0;
    }

    UDMItemHandle wheel;
    const UDMItemHandle hub = Make(ann, "Hub");
    const UDMItemHandle rim = Make(ann, "Rim");
    const UDMItemHandle bolt = Make(ann, "Bolt");
};

TEST_F(AwaitedLinks, AreInTheNextArchiveByteForByte) {
    for (const int scope : {0, 1, 2}) {
        Library third;
        const ProfilePtr eve = third.Open("eve");
        Export(UidsOf({wheel}), scope == 2 ? 1 : scope);
        Import(eve);
        EXPECT_TRUE(Exported(eve, {}, scope == 2 ? 1 : scope) == ReadFile(Archive())) << scope;
    }
    ann->CreateRelation(CheckOut(ann, wheel), hub, "made of", true);
    wheel = Publish(ann, wheel);
    Revise(ann, wheel, [&](const UDMItemHandle& working) { ann->RemoveReference(working, hub); });
    // Owned children come along in scope 2; what is referred to and related does not.
    Carry(UidsOf({wheel}));
    EXPECT_TRUE(Exported(tom) == ReadFile(Archive()));
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(AwaitedLinks, OfARelationToAnOlderRevisionAreInTheNextArchiveToo) {
    ann->CreateRelation(CheckOut(ann, wheel), ann->GetEntity(At(hub, 1)), "made of", true);
    wheel = Publish(ann, wheel);
    Describe(ann, hub, "second");
    Carry({}, 0);
    EXPECT_TRUE(Exported(tom, {}, 0) == ReadFile(Archive()));
    EXPECT_THAT(Parents(tom, There(hub), "made of"), IsEmpty());
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(AwaitedLinks, ShowNothingOfTheirOtherEnd) {
    Carry(UidsOf({wheel}), 1);
    EXPECT_THAT(Children(tom, There(wheel)), IsEmpty());
    EXPECT_THAT(References(tom, There(wheel)), IsEmpty());
    EXPECT_THAT(ErrorOf([&] { tom->GetEntity(Base(hub)); }), HasSubstr("unknown"));
    EXPECT_FALSE(UDMMaintenance(tom).Undelete(Base(hub)));
    EXPECT_EQ(CountDeleted(tom), 0U);
    EXPECT_THAT(Problems(tom, true), IsEmpty());
}

TEST_F(AwaitedLinks, GoOnThroughRevisionsHere) {
    Carry(UidsOf({wheel}), 1);
    Describe(tom, There(wheel), "second");
    CheckOut(tom, There(wheel));
    tom->UndoCheckout(There(wheel));
    Carry(UidsOf({hub, rim}), 1);
    EXPECT_THAT(References(tom, There(wheel, 1)), ElementsAre("Hub"));
    EXPECT_THAT(References(tom, There(wheel)), ElementsAre("Hub"));
    EXPECT_THAT(Children(tom, There(wheel)), ElementsAre("Rim"));
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(AwaitedLinks, AreInheritedByABranch) {
    Carry(UidsOf({wheel}), 1);
    Describe(tom, There(wheel), "second");
    const UDMItemHandle branch = Publish(tom, Branch(tom, 1));
    ASSERT_NE(Base(branch), Base(wheel));
    Carry(UidsOf({hub}), 1);
    EXPECT_THAT(References(tom, branch), ElementsAre("Hub"));
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(AwaitedLinks, OfABranchInWorkAreToldToWhoHasIt) {
    wheel = Revise(
        ann, wheel, [&](const UDMItemHandle& working) { ann->RemoveReference(working, hub); });
    Carry(UidsOf({wheel}));
    const ProfilePtr eve = target.Open("eve");
    const UDMItemHandle branch = Branch(eve, 1);
    EXPECT_THAT(Children(eve, branch, "uses"), IsEmpty());
    Listening here(tom);
    Listening there(eve);
    Carry(UidsOf({hub}));
    EXPECT_THAT(here.Take(), IsEmpty());
    EXPECT_THAT(there.Take(), ElementsAre("40 Wheel:0"));
    EXPECT_THAT(Children(eve, branch, "uses"), ElementsAre("Hub"));
}

TEST_F(AwaitedLinks, OfAnOlderRevisionShowInOtherSessionsToo) {
    wheel = Revise(
        ann, wheel, [&](const UDMItemHandle& working) { ann->RemoveReference(working, hub); });
    Carry(UidsOf({wheel}));
    const ProfilePtr eve = target.Open("eve");
    EXPECT_THAT(Children(eve, eve->GetEntity(At(wheel, 1)), "uses"), IsEmpty());
    Listening there(eve);
    Carry(UidsOf({hub}));
    EXPECT_THAT(Children(eve, eve->GetEntity(At(wheel, 1)), "uses"), ElementsAre("Hub"));
    EXPECT_THAT(there.Take(), IsEmpty());
}

TEST_F(AwaitedLinks, KeepTheirPlaceAmongOthers) {
    const UDMItemHandle tyre = Make(ann, "Tyre");
    Revise(
        ann, wheel, [&](const UDMItemHandle& working) { ann->AddChild(working, tyre, "parts"); });
    Carry(UidsOf({wheel, tyre}), 1);
    Revise(tom, There(wheel), [&](const UDMItemHandle& working) {
        tom->AddChild(working, Make(tom, "Spoke"), "parts");
    });
    EXPECT_THAT(Children(tom, There(wheel)), ElementsAre("Tyre", "Spoke"));
    Carry(UidsOf({rim}), 1);
    EXPECT_THAT(Children(tom, There(wheel)), ElementsAre("Rim", "Tyre", "Spoke"));
}

TEST_F(AwaitedLinks, EndWithTheRevisionsThatTheArchiveSays) {
    Carry(UidsOf({wheel}), 1);
    wheel = Revise(
        ann, wheel, [&](const UDMItemHandle& working) { ann->RemoveReference(working, hub); });
    Carry(UidsOf({wheel}), 1);
    Carry(UidsOf({hub, rim}), 1);
    EXPECT_THAT(References(tom, There(wheel, 1)), ElementsAre("Hub"));
    EXPECT_THAT(References(tom, There(wheel)), IsEmpty());
    EXPECT_THAT(Children(tom, There(wheel)), ElementsAre("Rim"));
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(AwaitedLinks, ToldByBothArchivesHoldOnce) {
    Carry(UidsOf({wheel}), 1);
    Carry();
    EXPECT_THAT(References(tom, There(wheel)), ElementsAre("Hub"));
    EXPECT_THAT(Children(tom, There(wheel)), ElementsAre("Rim"));
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(AwaitedLinks, X48_OfASecondOwnerAreLeftOutAndTold) {
    UDMItemHandle frame = ann->CreateEntity("Part", "Frame");
    const UDMItemHandle front =
        Publish(ann, ann->CreateAndAddChild("Drawing", "Front", frame, "drawings"));
    frame = Publish(ann, frame);
    Carry(UidsOf({frame}), 1);
    Revise(ann, frame, [&](const UDMItemHandle& working) { ann->RemoveChild(working, front); });
    Revise(ann, wheel, [&](const UDMItemHandle& working) {
        ann->AddChild(working, front, "drawings");
    });
    const UDMImportReport second = Carry(UidsOf({wheel}), 1);
    ASSERT_EQ(second.leftOut.size(), 1U);
    EXPECT_EQ(
        second.leftOut[0].text,
        "\"drawings\" to " + Base(front) + ": the child is owned by " + Base(frame) + " here");
    EXPECT_THAT(Outcomes(Carry(UidsOf({front}), 1)), ElementsAre("Front new 1"));
    EXPECT_THAT(Children(tom, There(frame)), ElementsAre("Front"));
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(AwaitedLinks, X48_ThatStayOnARevisionThatNeverCameAreLeftOutAndTold) {
    ann->CreateRelation(CheckOut(ann, wheel), hub, "made of", true);
    wheel = Publish(ann, wheel);
    Export(UidsOf({hub}), 1);
    const std::string first = ReadFile(Archive());
    UDMItemHandle second = Describe(ann, hub, "second");
    ann->CreateRelation(CheckOut(ann, wheel), second, "made of", true);
    wheel = Publish(ann, wheel);
    Carry(UidsOf({wheel}), 1);
    std::ofstream(Archive(), std::ios::binary) << first;
    const UDMImportReport report = Import();
    ASSERT_EQ(report.leftOut.size(), 1U);
    EXPECT_EQ(report.leftOut[0].uid, Base(wheel));
    EXPECT_EQ(report.leftOut[0].text,
              "\"made of\" to " + Base(hub) + ": there is no revision 2 of it");
    EXPECT_THAT(References(tom, There(wheel)), ElementsAre("Hub"));
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(AwaitedLinks, OfWhatIsDeletedComeBackWithIt) {
    Carry(UidsOf({wheel}), 1);
    tom->DeleteEntity(There(wheel), false, false);
    EXPECT_EQ(CountDeleted(tom), 1U);
    Listening here(tom);
    Carry(UidsOf({hub}), 1);
    EXPECT_THAT(here.Take(), IsEmpty());
    EXPECT_TRUE(UDMMaintenance(tom).Undelete(Base(wheel)));
    EXPECT_THAT(References(tom, There(wheel)), ElementsAre("Hub"));
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(AwaitedLinks, LeaveNothingBehindWhenWhatBearsThemIsPurged) {
    Carry(UidsOf({wheel}), 1);
    tom->DeleteEntity(There(wheel), false, false);
    Make(tom, "Youngest");
    EXPECT_EQ(PurgeDeleted(tom), 1U);
    EXPECT_THAT(Problems(tom), IsEmpty());
    EXPECT_THAT(Outcomes(Carry(UidsOf({wheel}), 1)), ElementsAre("Wheel new 1"));
    EXPECT_TRUE(Exported(tom, UidsOf({wheel}), 1) == ReadFile(Archive()));
}

TEST_F(AwaitedLinks, X49_LeadToTheFolderThatStandsForTheOneOfTheArchive) {
    const UDMItemHandle shelf = Folder(ann, "/Shelf");
    ann->CreateRelation(CheckOut(ann, wheel), shelf, "made for", false);
    wheel = Publish(ann, wheel);
    Carry(UidsOf({wheel}), 1);
    const UDMItemHandle there = Folder(tom, "/Shelf");
    const UDMImportReport report = Carry(UidsOf({shelf}), 1);
    EXPECT_THAT(Outcomes(report), ElementsAre("Shelf same place 0"));
    EXPECT_THAT(Parents(tom, there, "made for"), ElementsAre("Wheel"));
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(AwaitedLinks, LeadToTheBranchThatALineBecomes) {
    Carry(UidsOf({hub}));
    Library third;
    const ProfilePtr eve = third.Open("eve");
    Import(eve);
    Describe(eve, eve->GetEntity(Base(hub)), "eve's");
    Describe(ann, hub, "ann's");
    Describe(tom, There(hub), "tom's");
    Export(UidsOf({hub}));
    const kxString branch = Import(eve).entities.at(0).target;
    UDMItemHandle axle = eve->CreateEntity("Part", "Axle");
    eve->AddReference(axle, eve->GetEntity(branch), "uses");
    eve->CreateRelation(axle, eve->GetEntity(branch), "made of", true);
    axle = Publish(eve, axle);
    eve->Export(Archive(), UidsOf({axle}), 1);
    Import();
    EXPECT_THAT(References(tom, There(axle)), IsEmpty());
    EXPECT_THAT(Outcomes(Carry(UidsOf({hub}))), ElementsAre("Hub branched 1"));
    EXPECT_THAT(References(tom, There(axle)), ElementsAre("Hub"));
    EXPECT_THAT(Parents(tom, tom->GetEntity(branch), "made of"), ElementsAre("Axle"));
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(AwaitedLinks, OfWhatHasNoRevisionsOutliveItsChanges) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Note");
    const UDMItemHandle answer = ann->CreateAndAddChild("Note", "Answer", note, "answers");
    Carry(UidsOf({note}), 1);
    tom->SetAttributeValue(There(note), "text", "changed");
    tom->CreateAndAddChild("Note", "Own", There(note), "answers");
    EXPECT_THAT(Outcomes(Carry(UidsOf({note}), 1)), ElementsAre("Note kept 0"));
    Carry(UidsOf({answer}), 1);
    EXPECT_THAT(Children(tom, There(note)), ElementsAre("Answer", "Own"));
    tom->RemoveChild(There(note), There(answer));
    Carry(UidsOf({note, answer}), 1);
    EXPECT_THAT(Children(tom, There(note)), ElementsAre("Own"));
    EXPECT_THAT(Problems(tom), IsEmpty());
}

// Another session might take the one for the other.
TEST_F(AwaitedLinks, LetNoNumberBeGivenTwice) {
    const UDMItemHandle shelf = Folder(ann, "/Shelf");
    UDMItemHandle peg = ann->CreateEntity("Part", "Peg");
    ann->CreateRelation(peg, shelf, "made for", false);
    peg = Publish(ann, peg);
    Folder(tom, "/Shelf");
    Carry(UidsOf({peg}));
    const std::int64_t number = NumberOf(peg);
    tom->DeleteEntity(There(peg), false, false);
    EXPECT_EQ(PurgeDeleted(tom), 1U);
    Carry(UidsOf({shelf}));
    EXPECT_GT(NumberOf(Make(tom, "Later")), number);
    EXPECT_THAT(Problems(tom), IsEmpty());
}

}  // namespace
}  // namespace kxudm::test
