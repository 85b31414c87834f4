// Links of an archive whose other end has not come: kept where nobody sees them, and carried on;
// rows X40, X48 and X49 of docs/exchange-format.md.
#include "Exchange.h"

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
    const UDMItemHandle branch = Publish(tom, CheckOut(tom, There(wheel, 1)));
    Carry(UidsOf({hub}), 1);
    EXPECT_THAT(References(tom, branch), ElementsAre("Hub"));
    EXPECT_THAT(Problems(tom), IsEmpty());
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
    UDMPurgeOptions options;
    options.minimumAge = std::chrono::seconds(0);
    options.deletedEntities = true;
    EXPECT_EQ(UDMMaintenance(tom).Purge(options).entities, 1U);
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

}  // namespace
}  // namespace kxudm::test
