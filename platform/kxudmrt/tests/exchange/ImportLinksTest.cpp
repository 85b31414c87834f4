// What becomes of the links of an archive; rows X40 to X47 of docs/exchange-format.md. And who is
// told, X60 to X64.
#include "Exchange.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class ImportLinks : public Exchange {
  protected:
    static Names LeftOut(const UDMImportReport& report) {
        Names texts;
        for (const UDMLeftOutLink& each : report.leftOut) {
            texts.push_back(each.text);
        }
        return texts;
    }
};

TEST_F(ImportLinks, X40_HoldFromTheImportThatBringsTheirOtherEnd) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle hub = Make(ann, "Hub");
    const UDMItemHandle bolt = Make(ann, "Bolt");
    ann->AddReference(wheel, hub, "uses");
    ann->CreateRelation(wheel, bolt, "next to", false);
    wheel = Publish(ann, wheel);
    EXPECT_THAT(LeftOut(Carry(UidsOf({wheel}))), IsEmpty());
    EXPECT_THAT(References(tom, There(wheel)), IsEmpty());
    EXPECT_THAT(Outcomes(Carry(UidsOf({hub, bolt}))), ElementsAre("Hub new 1", "Bolt new 1"));
    EXPECT_THAT(References(tom, There(wheel)), ElementsAre("Hub"));
    EXPECT_THAT(Parents(tom, There(bolt), "next to"), ElementsAre("Wheel"));
    EXPECT_THAT(Problems(tom), IsEmpty());
    EXPECT_THAT(Outcomes(Carry(UidsOf({wheel}))), ElementsAre("Wheel equal 0"));
    EXPECT_THAT(References(tom, There(wheel)), ElementsAre("Hub"));
}

TEST_F(ImportLinks, X41_FindOtherEndsThatAreHereAndNotInTheArchive) {
    const UDMItemHandle hub = Make(ann, "Hub");
    Carry();
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    ann->AddReference(wheel, hub, "uses");
    ann->CreateRelation(wheel, hub, "made of", true);
    wheel = Publish(ann, wheel);
    EXPECT_THAT(Outcomes(Carry(UidsOf({wheel}))), ElementsAre("Wheel new 1"));
    EXPECT_THAT(References(tom, There(wheel)), ElementsAre("Hub"));
    EXPECT_THAT(Parents(tom, There(hub), "made of"), ElementsAre("Wheel"));
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(ImportLinks, X42_OfAnOlderArchiveEndBehindItsNewestRevision) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle hub = Make(ann, "Hub");
    ann->AddReference(wheel, hub, "uses");
    wheel = Publish(ann, wheel);
    Carry(UidsOf({hub}));
    tom->DeleteEntity(There(hub), false, false);
    Carry(UidsOf({wheel}));
    Describe(tom, There(wheel), "second");
    EXPECT_TRUE(UDMMaintenance(tom).Undelete(Base(hub)));
    EXPECT_THAT(References(tom, There(wheel, 1)), IsEmpty());
    Carry(UidsOf({wheel}));
    EXPECT_THAT(References(tom, There(wheel, 1)), ElementsAre("Hub"));
    EXPECT_THAT(References(tom, There(wheel)), IsEmpty());
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(ImportLinks, X43_OfAMissingOwnerLeaveARootEntity) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle front = ann->CreateAndAddChild("Drawing", "Front", wheel, "drawings");
    Publish(ann, front);
    wheel = Publish(ann, wheel);
    EXPECT_THAT(Outcomes(Carry(UidsOf({front}))), ElementsAre("Front new 1"));
    EXPECT_TRUE(There(front).IsRootEntity());
    EXPECT_THAT(Outcomes(Carry(UidsOf({wheel}))), ElementsAre("Wheel new 1", "Front equal 0"));
    EXPECT_FALSE(There(front).IsRootEntity());
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(ImportLinks, X44_ThatWouldCloseACircleAreLeftOut) {
    const UDMItemHandle wheel = Make(ann, "Wheel");
    const UDMItemHandle hub = Make(ann, "Hub");
    Carry();
    Revise(tom, There(hub), [&](const UDMItemHandle& working) {
        tom->AddChild(working, There(wheel), "parts");
    });
    Revise(ann, wheel, [&](const UDMItemHandle& working) { ann->AddChild(working, hub, "parts"); });
    const UDMImportReport report = Carry(UidsOf({wheel}));
    EXPECT_THAT(
        LeftOut(report),
        ElementsAre("\"parts\" to " + Base(hub) + ": it would close a circle with what is here"));
    EXPECT_EQ(report.leftOut[0].uid, Base(wheel));
    EXPECT_THAT(Children(tom, There(wheel)), IsEmpty());
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(ImportLinks, X44_TurnRoundWhereBothEndsCome) {
    const UDMItemHandle hub = Make(ann, "Hub");
    const UDMItemHandle wheel = Make(ann, "Wheel");
    Revise(ann, wheel, [&](const UDMItemHandle& working) { ann->AddChild(working, hub, "parts"); });
    Carry();
    Revise(ann, wheel, [&](const UDMItemHandle& working) { ann->RemoveChild(working, hub); });
    Revise(ann, hub, [&](const UDMItemHandle& working) {
        ann->AddChild(working, wheel, "parts");
        ann->AddChild(working, Make(ann, "Nut"), "parts");
    });
    EXPECT_THAT(LeftOut(Carry()), IsEmpty());
    EXPECT_THAT(Children(tom, There(hub)), ElementsAre("Wheel", "Nut"));
    EXPECT_THAT(Children(tom, There(wheel)), IsEmpty());
    EXPECT_TRUE(Exported(tom) == Exported(ann));
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(ImportLinks, X45_OfAChildThatHasAnotherOwnerHereAreLeftOut) {
    UDMItemHandle wheel = Make(ann, "Wheel");
    const UDMItemHandle front = Published(ann, "Front", "Drawing");
    const UDMItemHandle rim = Make(ann, "Rim");
    Carry();
    Revise(tom, There(rim), [&](const UDMItemHandle& working) {
        tom->AddChild(working, There(front), "drawings");
    });
    Revise(ann, wheel, [&](const UDMItemHandle& working) {
        ann->AddChild(working, front, "drawings");
    });
    const UDMImportReport report = Carry(UidsOf({wheel}));
    EXPECT_THAT(LeftOut(report),
                ElementsAre("\"drawings\" to " + Base(front) + ": the child is owned by " +
                            Base(rim) + " here"));
    EXPECT_THAT(Children(tom, There(rim)), ElementsAre("Front"));
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(ImportLinks, X46_MoveAChildFromOneOwnerToTheOther) {
    UDMItemHandle wheel = Make(ann, "Wheel");
    UDMItemHandle rim = Make(ann, "Rim");
    const UDMItemHandle front = Published(ann, "Front", "Drawing");
    Revise(
        ann, rim, [&](const UDMItemHandle& working) { ann->AddChild(working, front, "drawings"); });
    Carry();
    Revise(ann, rim, [&](const UDMItemHandle& working) { ann->RemoveChild(working, front); });
    Revise(ann, wheel, [&](const UDMItemHandle& working) {
        ann->AddChild(working, front, "drawings");
    });
    EXPECT_THAT(LeftOut(Carry()), IsEmpty());
    EXPECT_THAT(Children(tom, There(wheel)), ElementsAre("Front"));
    EXPECT_THAT(Children(tom, There(rim)), IsEmpty());
    EXPECT_THAT(Problems(tom), IsEmpty());
    // Only half of it: the new owner, while the old one still has the child here.
    Library third;
    const ProfilePtr eve = third.Open("eve");
    Export(UidsOf({rim}));
    Import(eve);
    Revise(ann, wheel, [&](const UDMItemHandle& working) { ann->RemoveChild(working, front); });
    Revise(
        ann, rim, [&](const UDMItemHandle& working) { ann->AddChild(working, front, "drawings"); });
    EXPECT_THAT(LeftOut(Carry(UidsOf({rim}))), ElementsAre(HasSubstr(Base(wheel) + " here")));
    EXPECT_THAT(Problems(tom), IsEmpty());
    EXPECT_THAT(LeftOut(Carry()), IsEmpty());
}

TEST_F(ImportLinks, X47_StayOnExactRevisionsAlsoOnThoseOfABranch) {
    UDMItemHandle hub = Make(ann, "Hub");
    Carry();
    Describe(tom, There(hub), "tom's");
    hub = Describe(ann, hub, "ann's");
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    ann->CreateRelation(wheel, hub, "made of", true);
    ann->CreateRelation(wheel, ann->GetEntity(At(hub, 1)), "once of", true);
    wheel = Publish(ann, wheel);
    const UDMImportReport report = Carry();
    EXPECT_THAT(Outcomes(report), ElementsAre("Hub branched 1", "Wheel new 1"));
    const UDMItemHandle branch = tom->GetEntity(report.entities[0].target);
    EXPECT_THAT(Parents(tom, branch, "made of"), ElementsAre("Wheel"));
    EXPECT_THAT(Parents(tom, There(hub), "made of"), IsEmpty());
    EXPECT_THAT(Parents(tom, There(hub, 1), "once of"), ElementsAre("Wheel"));
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(ImportLinks, X47_ToARevisionThatIsInWorkHereAreLeftOutAndTold) {
    UDMItemHandle hub = Make(ann, "Hub");
    Carry();
    CheckOut(tom, There(hub));
    hub = Describe(ann, hub, "second");
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    ann->CreateRelation(wheel, hub, "made of", true);
    wheel = Publish(ann, wheel);
    EXPECT_THAT(LeftOut(Carry()),
                ElementsAre("\"made of\" to " + Base(hub) + ": there is no revision 2 of it"));
    tom->UndoCheckout(There(hub));
    EXPECT_THAT(LeftOut(Carry()), IsEmpty());
    EXPECT_THAT(Parents(tom, There(hub), "made of"), ElementsAre("Wheel"));
    EXPECT_THAT(Problems(tom), IsEmpty());
}

TEST_F(ImportLinks, KeepTheirOrder) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    std::vector<UDMItemHandle> parts;
    for (const char* name : {"c", "a", "d", "b"}) {
        parts.push_back(Make(ann, name));
        ann->AddChild(wheel, parts.back(), "parts");
    }
    wheel = Publish(ann, wheel);
    Carry();
    Revise(ann, wheel, [&](const UDMItemHandle& working) {
        ann->RemoveChild(working, parts[1]);
        ann->AddChild(working, Make(ann, "0"), "parts");
        ann->AddChild(working, parts[1], "parts");
    });
    Carry();
    EXPECT_THAT(Children(tom, There(wheel, 1)), ElementsAre("c", "a", "d", "b"));
    EXPECT_THAT(Children(tom, There(wheel)), ElementsAre("c", "d", "b", "0", "a"));
}

// --- Who is told ---

TEST_F(ImportLinks, X60_TellTheEntitiesThatWentOnToAllSessions) {
    const UDMItemHandle wheel = Make(ann, "Wheel");
    Carry();
    Describe(ann, wheel, "second");
    const UDMItemHandle held = There(wheel);
    const ProfilePtr eve = target.Open("eve");
    Listening here(tom);
    Listening there(eve);
    Carry();
    EXPECT_THAT(here.Take(), ElementsAre("5 Wheel:2"));
    EXPECT_THAT(there.Take(), ElementsAre("5 Wheel:2"));
    EXPECT_EQ(Attribute(There(wheel), "description"), "second");
    EXPECT_EQ(held.GetRevision(), 1);
}

TEST_F(ImportLinks, X61_TellFoldersAndClassificationsWhatCameAndWent) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    ann->MoveContent(wheel, Folder(ann, "/A"));
    wheel = Publish(ann, wheel);
    Folder(ann, "/B");
    Carry();
    wheel = Revise(ann, wheel, [&](const UDMItemHandle& working) {
        ann->MoveContent(working, Folder(ann, "/B"));
    });
    UDMItemHandle hub = ann->CreateEntity("Part", "Hub");
    ann->MoveContent(hub, Folder(ann, "/B"));
    Publish(ann, hub);
    const ProfilePtr eve = target.Open("eve");
    Listening here(tom);
    Listening there(eve);
    Carry();
    EXPECT_THAT(here.Take(), ElementsAre("43 A:0 Wheel:2", "5 Wheel:2", "42 B:0"));
    EXPECT_THAT(there.Take(), ElementsAre("43 A:0 Wheel:2", "5 Wheel:2", "42 B:0"));
}

TEST_F(ImportLinks, X62_TellParentsWhatWasMissingBefore) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle hub = Make(ann, "Hub");
    ann->AddReference(wheel, hub, "uses");
    Publish(ann, wheel);
    Carry(UidsOf({wheel}));
    Listening here(tom);
    Carry(UidsOf({hub}));
    EXPECT_THAT(here.Take(), ElementsAre("40 Wheel:1"));
}

TEST_F(ImportLinks, X63_TellNothingOfWhatIsNewOrEqual) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    ann->MoveContent(wheel, Folder(ann, "/A"));
    Publish(ann, wheel);
    Listening here(tom);
    Carry();
    Import();
    EXPECT_THAT(here.Take(), IsEmpty());
}

TEST_F(ImportLinks, X63_OfWhatIsNewShowInOtherSessionsAllTheSame) {
    const UDMItemHandle rim = Make(ann, "Rim");
    Carry();
    const ProfilePtr eve = target.Open("eve");
    EXPECT_TRUE(eve->GetEntity(Base(rim)).IsRootEntity());
    Listening there(eve);
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    ann->AddChild(wheel, rim, "parts");
    Publish(ann, wheel);
    Carry();
    EXPECT_FALSE(eve->GetEntity(Base(rim)).IsRootEntity());
    EXPECT_THAT(there.Take(), IsEmpty());
}

TEST_F(ImportLinks, X64_TellTheFolderOfABranch) {
    UDMItemHandle wheel = ann->CreateEntity("Part", "Wheel");
    ann->MoveContent(wheel, Folder(ann, "/A"));
    wheel = Publish(ann, wheel);
    Carry();
    Describe(tom, There(wheel), "tom's");
    Describe(ann, wheel, "ann's");
    Listening here(tom);
    Carry();
    EXPECT_THAT(here.Take(), ElementsAre("42 A:0"));
    EXPECT_THAT(Children(tom, tom->GetEntity(Base(Folder(tom, "/A"))), "folder"),
                ElementsAre("Wheel", "Wheel"));
}

}  // namespace
}  // namespace kxudm::test
