#include "Library.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Notifications : public testing::Test {
  protected:
    static std::string Gone(const UDMItemHandle& handle) { return "44 " + handle.GetUID(); }

    Library library;
    ProfilePtr ann = library.Open("ann");
    // Unversioned: both sessions see it.
    UDMItemHandle note = ann->CreateEntity("Note", "Note");
    UDMItemHandle part = ann->CreateEntity("Part", "Part");
    boost::shared_ptr<Recorder> told = Listen(ann);
};

TEST_F(Notifications, N1_AChangedAttributeTellsTheHandle) {
    ann->SetAttributeValue(part, "mass", 7.0);
    EXPECT_THAT(told->Take(), ElementsAre("3 Part"));
    EXPECT_EQ(told->updates.front().GetUDMHandle().GetAttributeValue("mass"), kxVariant(7.0));
}

TEST_F(Notifications, N2_AChangedDisplayNameTellsTheHandle) {
    ann->SetDisplayName("Other", part);
    EXPECT_THAT(told->Take(), ElementsAre("3 Other"));
}

TEST_F(Notifications, N3_AChangedNameOrMasterMarkTellsTheHandle) {
    ann->SetAttributeValue(part, "name", "Other");
    EXPECT_THAT(told->Take(), ElementsAre("3 Part"));
    const UDMItemHandle metals = ann->CreateEntity("Categories", "Metals");
    ann->SetMaster(metals, true);
    EXPECT_THAT(told->Take(), ElementsAre("3 Metals"));
}

TEST_F(Notifications, N4_AnOwnedChildTellsItsParent) {
    ann->CreateAndAddChild("Drawing", "Front", part, "drawings");
    EXPECT_THAT(told->Take(), ElementsAre("35 Part"));
    ann->AddChild(part, ann->CreateEntity("Drawing", "Side"), "drawings");
    EXPECT_THAT(told->Take(), ElementsAre("35 Part"));
}

TEST_F(Notifications, N5_AReferenceTellsTheReferringOne) {
    ann->AddChild(part, ann->CreateEntity("Part", "Other"), "uses");
    EXPECT_THAT(told->Take(), ElementsAre("40 Part"));
}

TEST_F(Notifications, N6_AContentMovedIntoAFolderTellsTheOldAndTheNewOne) {
    UDMItemHandle a;
    UDMItemHandle b;
    ann->CreateFolder(a, "/A");
    ann->CreateFolder(b, "/B");
    EXPECT_THAT(told->Take(), IsEmpty());
    ann->MoveContent(part, a);
    EXPECT_THAT(told->Take(), ElementsAre("42 A"));
    ann->MoveContent(part, b);
    EXPECT_THAT(told->Take(), ElementsAre("43 A Part", "42 B"));
    ann->MoveContent(part, b);
    EXPECT_THAT(told->Take(), IsEmpty());
}

TEST_F(Notifications, N6_AFolderMadeInAnotherTellsThatOne) {
    UDMItemHandle folder;
    ann->GetOrCreateFolder(folder, "/A/B/C", true);
    EXPECT_THAT(told->Take(), ElementsAre("42 A", "42 B"));
    ann->GetOrCreateFolder(folder, "/A/B/C", true);
    EXPECT_THAT(told->Take(), IsEmpty());
}

TEST_F(Notifications, N7_ClassifyingTellsTheClassificationAndLeavingItTheContentToo) {
    const UDMItemHandle metals = ann->CreateEntity("Categories", "Metals");
    ann->AddClassification(part, metals);
    EXPECT_THAT(told->Take(), ElementsAre("42 Metals"));
    ann->RemoveClassification(part, metals);
    EXPECT_THAT(told->Take(), ElementsAre("43 Metals Part"));
}

TEST_F(Notifications, N8_ARemovedChildTellsParentAndChild) {
    const UDMItemHandle front = ann->CreateAndAddChild("Drawing", "Front", part, "drawings");
    told->Take();
    ann->RemoveChild(part, front);
    EXPECT_THAT(told->Take(), ElementsAre("36 Part Front"));
}

TEST_F(Notifications, N9_ARemovedReferenceTellsBothEnds) {
    const UDMItemHandle other = ann->CreateEntity("Part", "Other");
    ann->AddChild(part, other, "uses");
    told->Take();
    ann->RemoveChild(part, other);
    EXPECT_THAT(told->Take(), ElementsAre("41 Part Other"));
}

TEST_F(Notifications, N10_ADeletedEntityTellsItsUid) {
    ann->DeleteEntity(part, true, false);
    EXPECT_THAT(told->Take(), ElementsAre(Gone(part)));
}

TEST_F(Notifications, N11_ADeletedChildTellsItsPlacesFirst) {
    const UDMItemHandle front = ann->CreateAndAddChild("Drawing", "Front", part, "drawings");
    const UDMItemHandle other = ann->CreateEntity("Part", "Other");
    const UDMItemHandle metals = ann->CreateEntity("Categories", "Metals");
    UDMItemHandle folder;
    ann->CreateFolder(folder, "/A");
    ann->AddChild(other, front, "uses");
    ann->AddClassification(front, metals);
    ann->MoveContent(front, folder);
    told->Take();
    ann->DeleteEntity(front, true, false);
    EXPECT_THAT(
        told->Take(),
        ElementsAre(
            "43 A Front", "43 Metals Front", "41 Other Front", "12 Part Front", Gone(front)));
}

TEST_F(Notifications, N11_OwnedOnesThatGoAlongTellTheirOwnPlaces) {
    const UDMItemHandle front = ann->CreateAndAddChild("Drawing", "Front", part, "drawings");
    UDMItemHandle folder;
    ann->CreateFolder(folder, "/A");
    ann->MoveContent(front, folder);
    told->Take();
    ann->DeleteEntity(part, true, false);
    // The parent is gone itself, so nobody is told of its child.
    EXPECT_THAT(told->Take(), ElementsAre("43 A Front", Gone(part), Gone(front)));
}

TEST_F(Notifications, N12_AClosedSessionTellsItsIdAsTheLastThing) {
    const kxString id = ann->GetSessionId();
    ProfilePtr closing = ann;
    UDMProfileMgr::DiscardProfile(closing);
    ASSERT_THAT(told->Take(), ElementsAre("34"));
    EXPECT_EQ(told->updates.back().GetSessionId(), id);
}

TEST_F(Notifications, N13_WhatChangesNothingTellsNothing) {
    ann->SetAttributeValue(part, "mass", 1.5);
    ann->SetAttributeValue(part, "name", "Part");
    ann->SetDisplayName("Part", part);
    ann->SetMaster(ann->CreateEntity("Categories", "Metals"), false);
    EXPECT_THROW(ann->SetAttributeValue(part, "mass", "much"), UDMException);
    EXPECT_THAT(told->Take(), IsEmpty());
}

TEST_F(Notifications, N14_AnotherSessionOfTheProcessIsToldBeforeTheOperationReturns) {
    const ProfilePtr bob = library.Open("bob");
    const auto heard = Listen(bob);
    const UDMItemHandle seen = bob->GetEntity(note.GetUID());
    ann->SetAttributeValue(note, "text", "new");
    ASSERT_THAT(heard->Take(), ElementsAre("3 Note"));
    // The handle belongs to Bob's session and is the one he has.
    EXPECT_EQ(heard->updates.back().GetUDMHandle().State(), seen.State());
    EXPECT_EQ(seen.GetAttributeValue("text"), kxVariant("new"));
    UDMItemHandle answer = ann->CreateAndAddChild("Note", "Answer", note, "answers");
    EXPECT_THAT(heard->Take(), ElementsAre("35 Note"));
    ann->AddChild(note, ann->CreateEntity("Note", "Other"), "see");
    EXPECT_THAT(heard->Take(), ElementsAre("40 Note"));
    ann->RemoveChild(note, answer);
    EXPECT_THAT(heard->Take(), ElementsAre("36 Note Answer"));
}

TEST_F(Notifications, N14_AnotherSessionIsToldOfDeletions) {
    const UDMItemHandle answer = ann->CreateAndAddChild("Note", "Answer", note, "answers");
    const ProfilePtr bob = library.Open("bob");
    const auto heard = Listen(bob);
    const UDMItemHandle seen = bob->GetEntity(answer.GetUID());
    ann->DeleteEntity(answer, true, false);
    EXPECT_THAT(heard->Take(), ElementsAre("12 Note Answer", Gone(answer)));
    EXPECT_FALSE(seen.IsEditable());
    // One that Bob never saw: its UID is all that is known of it.
    ann->DeleteEntity(note, true, false);
    EXPECT_THAT(heard->Take(), ElementsAre(Gone(note)));
}

TEST_F(Notifications, N15_WhatOneWorkspaceSeesIsToldOnlyThere) {
    const auto sameWorkspace = Listen(library.Open("ann"));
    const auto otherWorkspace = Listen(library.Open("ann", "bench"));
    const auto otherUser = Listen(library.Open("bob"));
    const UDMItemHandle draft = ann->CreateAndAddChild("Drawing", "Draft", note, "sketches");
    ann->SetAttributeValue(draft, "description", "x");
    UDMItemHandle folder;
    ann->CreateFolder(folder, "/A");
    ann->MoveContent(draft, folder);
    ann->DeleteEntity(draft, true, false);
    EXPECT_THAT(
        sameWorkspace->Take(),
        ElementsAre("35 Note", "3 Draft", "42 A", "43 A Draft", "12 Note Draft", Gone(draft)));
    EXPECT_THAT(otherWorkspace->Take(), IsEmpty());
    EXPECT_THAT(otherUser->Take(), IsEmpty());
}

TEST_F(Notifications, N17_ASlotMayCallBackAndSeesTheChangeCommitted) {
    const ProfilePtr bob = library.Open("bob");
    told->react = [&](const UDMProfileUpdate& update) {
        if (update.GetOpCode() == SIGNAL_CONTENT_CHANGED && told->told.size() == 1) {
            EXPECT_EQ(bob->GetEntity(note.GetUID()).GetAttributeValue("text"), kxVariant("one"));
            // A write by another session needs the lock that no transaction may hold.
            bob->SetAttributeValue(note, "text", "two");
            ann->CreateAndAddChild("Note", "Answer", note, "answers");
        }
    };
    ann->SetAttributeValue(note, "text", "one");
    EXPECT_THAT(told->Take(), ElementsAre("3 Note", "3 Note", "35 Note"));
    EXPECT_EQ(note.GetAttributeValue("text"), kxVariant("two"));
}

TEST_F(Notifications, N17_EachSlotGetsNestedUpdatesInTheirOrder) {
    const auto second = Listen(ann);
    told->react = [&](const UDMProfileUpdate&) {
        if (told->told.size() == 1) {
            ann->SetDisplayName("Renamed", part);
        }
    };
    ann->CreateAndAddChild("Note", "Remark", part, "notes");
    ASSERT_EQ(second->updates.size(), 2U);
    EXPECT_EQ(second->updates[0].GetOpCode(), SIGNAL_CHILD_ADDED);
    EXPECT_EQ(second->updates[1].GetOpCode(), SIGNAL_CONTENT_CHANGED);
}

TEST_F(Notifications, N18_AFailingSlotDoesNotKeepTheOthersFromBeingTold) {
    told->react = [](const UDMProfileUpdate&) { throw std::runtime_error("slot broke"); };
    const auto second = Listen(ann);
    const auto heard = Listen(library.Open("bob"));
    EXPECT_EQ(Refusal<std::runtime_error>([&] { ann->SetAttributeValue(note, "text", "new"); }),
              "slot broke");
    EXPECT_THAT(second->Take(), ElementsAre("3 Note"));
    EXPECT_THAT(heard->Take(), ElementsAre("3 Note"));
    EXPECT_EQ(note.GetAttributeValue("text"), kxVariant("new"));
    // It is told again in the next round.
    told->Take();
    told->react = nullptr;
    ann->SetAttributeValue(note, "text", "newer");
    EXPECT_THAT(told->Take(), ElementsAre("3 Note"));
}

TEST_F(Notifications, N18_AFailingSlotOfAnotherSessionReachesTheCallerToo) {
    const auto heard = Listen(library.Open("bob"));
    heard->react = [](const UDMProfileUpdate&) { throw std::runtime_error("peer broke"); };
    EXPECT_EQ(Refusal<std::runtime_error>([&] { ann->SetAttributeValue(note, "text", "new"); }),
              "peer broke");
    EXPECT_THAT(told->Take(), ElementsAre("3 Note"));
}

TEST_F(Notifications, N19_SlotsMayBeConnectedAndDisconnectedDuringARound) {
    const auto late = boost::make_shared<Recorder>();
    const auto leaving = Listen(ann);
    told->react = [&](const UDMProfileUpdate&) {
        if (told->told.size() == 1) {
            boost::shared_ptr<IUDMProfileSlot> out = leaving;
            ann->Disconnect(out);
            boost::shared_ptr<IUDMProfileSlot> in = late;
            ann->Connect(in);
        }
    };
    ann->SetAttributeValue(part, "mass", 2.0);
    EXPECT_THAT(leaving->Take(), IsEmpty());
    // What happened before a slot was connected is not for it.
    EXPECT_THAT(late->Take(), IsEmpty());
    ann->SetAttributeValue(part, "mass", 3.0);
    EXPECT_THAT(late->Take(), ElementsAre("3 Part"));
    EXPECT_THAT(leaving->Take(), IsEmpty());
}

TEST_F(Notifications, N19_ASlotMayDiscardTheSessionThatCallsIt) {
    told->react = [&](const UDMProfileUpdate& update) {
        if (update.GetOpCode() == SIGNAL_CONTENT_CHANGED) {
            ProfilePtr closing = ann;
            UDMProfileMgr::DiscardProfile(closing);
        }
    };
    ann->SetAttributeValue(part, "mass", 2.0);
    EXPECT_THAT(told->Take(), ElementsAre("3 Part", "34"));
}

class Slots : public Notifications {};

TEST_F(Slots, AreConnectedOnceAndDisconnectedOnce) {
    boost::shared_ptr<IUDMProfileSlot> slot = told;
    EXPECT_THROW(ann->Connect(slot), UDMException);
    ann->Disconnect(slot);
    EXPECT_THROW(ann->Disconnect(slot), UDMNotFoundException);
    ann->SetAttributeValue(part, "mass", 2.0);
    EXPECT_THAT(told->Take(), IsEmpty());
    boost::shared_ptr<IUDMProfileSlot> none;
    EXPECT_THROW(ann->Connect(none), UDMException);
    EXPECT_THROW(ann->Disconnect(none), UDMNotFoundException);
}

class Bracketed final : public IUDMProfileSlot {
  public:
    void connected(const kxString& id) override { log.push_back("connected " + id); }
    void disconnected(const kxString& id) override { log.push_back("disconnected " + id); }
    void beginUpdates() override { log.push_back("begin"); }
    void endUpdates() override { log.push_back("end"); }
    void update(UDMProfileUpdate update) override {
        log.push_back(std::to_string(update.GetOpCode()));
    }
    Names log;
};

TEST_F(Slots, AreToldOfTheirConnectionAndOfBeginAndEndOfARound) {
    const auto bracketed = boost::make_shared<Bracketed>();
    boost::shared_ptr<IUDMProfileSlot> slot = bracketed;
    const std::string id = ann->GetSessionId();
    ann->Connect(slot);
    ann->SetAttributeValue(part, "mass", 2.0);
    ann->DeleteEntity(ann->CreateAndAddChild("Note", "Remark", part, "notes"), true, false);
    ann->Disconnect(slot);
    EXPECT_THAT(bracketed->log,
                ElementsAre("connected " + id,
                            "begin",
                            "3",
                            "end",
                            "begin",
                            "35",
                            "end",
                            "begin",
                            "12",
                            "44",
                            "end",
                            "disconnected " + id));
}

TEST_F(Slots, AreSharedByTheSessionAsLongAsTheyAreConnected) {
    auto mine = boost::make_shared<Recorder>();
    boost::shared_ptr<IUDMProfileSlot> slot = mine;
    boost::weak_ptr<Recorder> watched = mine;
    ann->Connect(slot);
    slot.reset();
    mine.reset();
    EXPECT_FALSE(watched.expired());
    ProfilePtr closing = ann;
    UDMProfileMgr::DiscardProfile(closing);
    EXPECT_TRUE(watched.expired());
}

}  // namespace
}  // namespace kxudm::test
