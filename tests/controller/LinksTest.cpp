// Children, references, relations, synchronisation.
#include "tests/controller/ControllerFixture.h"

namespace kxct::test {
namespace {

using mock::IsHandle;
using testing::_;
using testing::ElementsAre;
using testing::InSequence;
using testing::IsEmpty;
using testing::Return;

using Texts = kxStlVector<kxString>;

class ControllerImplLinks : public ControllerTest {
  protected:
    ControllerImplLinks() {
        definitions->Add("UDMRoot").groups.push_back({"uses", "reference", {"UDMPart"}});
        Entity("R:1", "UDMRoot", "Root");
        Entity("A:1", "UDMPart", "Bracket");
        Entity("B:1", "UDMPart", "Bolt");
        root = ItemOf("R:1");
        part = ItemOf("A:1");
        bolt = ItemOf("B:1");
        both = {part, bolt};
    }

    // A content whose handle is empty: the session has lost its entity.
    Item* EmptyContent() {
        Entity("E:1");
        auto* item = static_cast<ContentItem*>(ItemOf("E:1"));
        entities.erase("E:1");
        item->SetItemHandle(kxudm::UDMItemHandle());
        return item;
    }

    // Items that no operation on contents takes.
    Items Unfit() { return {nullptr, GroupNodeOf("A:1"), EmptyContent()}; }

    Item* root = nullptr;
    Item* part = nullptr;
    Item* bolt = nullptr;
    Items both;
    Items out;
};

TEST_F(ControllerImplLinks, ChildrenAreAddedEachInItsGroup) {
    InSequence order;
    EXPECT_CALL(*profile, AddChild(IsHandle("R:1"), IsHandle("A:1"), kxString("parts")));
    EXPECT_CALL(*profile, AddChild(IsHandle("R:1"), IsHandle("B:1"), kxString("files")));
    EXPECT_TRUE(controller->AddChildren(root, both, {"parts", "files"}));
}

TEST_F(ControllerImplLinks, ChildrenAndGroupsOfDifferentLengthAreFalseWithoutACall) {
    EXPECT_CALL(*profile, AddChild).Times(0);
    EXPECT_FALSE(controller->AddChildren(root, both, {"parts"}));
    EXPECT_FALSE(controller->AddChildren(root, both, {"a", "b", "c"}));
    Items none;
    EXPECT_TRUE(controller->AddChildren(root, none, {}));
}

TEST_F(ControllerImplLinks, ChildrenThatAreNoContentsAreSkippedWithTheirGroup) {
    Items mixed{GroupNodeOf("A:1"), EmptyContent(), bolt};
    EXPECT_CALL(*profile, AddChild(IsHandle("R:1"), IsHandle("B:1"), kxString("third")));
    EXPECT_TRUE(controller->AddChildren(root, mixed, {"first", "second", "third"}));
}

TEST_F(ControllerImplLinks, AParentThatIsNoContentGetsNoChildren) {
    EXPECT_CALL(*profile, AddChild).Times(0);
    for (Item* parent : Unfit()) {
        EXPECT_FALSE(controller->AddChildren(parent, both, {"a", "b"}));
    }
}

TEST_F(ControllerImplLinks, AFailureAmongChildrenIsFalseAndKeepsThoseBefore) {
    InSequence order;
    EXPECT_CALL(*profile, AddChild(_, IsHandle("A:1"), _));
    EXPECT_CALL(*profile, AddChild(_, IsHandle("B:1"), _)).WillOnce(Fail());
    EXPECT_CALL(*profile, RemoveChild).Times(0);
    EXPECT_FALSE(controller->AddChildren(root, both, {"a", "b"}));
}

TEST_F(ControllerImplLinks, ReferencesAreAddedEachInItsRole) {
    InSequence order;
    EXPECT_CALL(*profile, AddReference(IsHandle("R:1"), IsHandle("A:1"), kxString("uses")));
    EXPECT_CALL(*profile, AddReference(IsHandle("R:1"), IsHandle("B:1"), kxString("cites")));
    controller->AddReferences(root, both, {"uses", "cites"});
}

TEST_F(ControllerImplLinks, ReferencesAndRolesOfDifferentLengthDoNothing) {
    EXPECT_CALL(*profile, AddReference).Times(0);
    controller->AddReferences(root, both, {"uses"});
    controller->AddReferences(root, both, {});
}

TEST_F(ControllerImplLinks, ReferencesToWhatIsNoContentAreSkipped) {
    Items mixed = Unfit();
    mixed.push_back(bolt);
    EXPECT_CALL(*profile, AddReference(_, IsHandle("B:1"), kxString("4")));
    controller->AddReferences(root, mixed, {"1", "2", "3", "4"});
}

// The session turns the two round, so that the runtime gets who refers first.
TEST_F(ControllerImplLinks, RemovedReferencesReachTheRuntimeInTheOrderOfAdding) {
    InSequence order;
    EXPECT_CALL(*profile, RemoveReference(IsHandle("R:1"), IsHandle("A:1")));
    EXPECT_CALL(*profile, RemoveReference(IsHandle("R:1"), IsHandle("B:1")));
    controller->RemoveReferences(both, root);
}

TEST_F(ControllerImplLinks, ReferencesOfWhatIsNoContentStay) {
    EXPECT_CALL(*profile, AddReference).Times(0);
    EXPECT_CALL(*profile, RemoveReference).Times(0);
    EXPECT_CALL(*profile, GetReferences).Times(0);
    EXPECT_CALL(*profile, GetReferredBy).Times(0);
    Texts roles{""};
    for (Item* item : Unfit()) {
        controller->AddReferences(item, both, {"a", "b"});
        controller->RemoveReferences(both, item);
        out = {part};
        controller->GetReferences(out, roles, item);
        controller->GetReferredBy(out, roles, item);
        EXPECT_THAT(out, ElementsAre(part));
    }
    Items unfit = Unfit();
    controller->RemoveReferences(unfit, root);
}

TEST_F(ControllerImplLinks, ReferencesOfAllRolesComeInOneList) {
    definitions->Add("UDMBoth").groups = {{"uses", "reference", {}}, {"cites", "reference", {}}};
    Entity("D:1", "UDMBoth");
    InSequence order;
    EXPECT_CALL(*profile, GetReferences(_, IsHandle("D:1"), kxString("cites")))
        .WillOnce(Give({HandleOf("B:1")}));
    EXPECT_CALL(*profile, GetReferences(_, IsHandle("D:1"), kxString("uses")))
        .WillOnce(Give({HandleOf("A:1")}));
    Texts roles{"cites", "uses"};
    controller->GetReferences(out, roles, ItemOf("D:1"));
    EXPECT_THAT(out, ElementsAre(bolt, part));
}

TEST_F(ControllerImplLinks, ARoleThatTheDefinitionLacksHasNoReferences) {
    EXPECT_CALL(*profile, GetReferences).Times(0);
    Texts roles{"no such role"};
    controller->GetReferences(out, roles, root);
    EXPECT_THAT(out, IsEmpty());
}

TEST_F(ControllerImplLinks, WithoutRolesThereAreNoReferences) {
    EXPECT_CALL(*profile, GetReferences).Times(0);
    Texts roles;
    controller->GetReferences(out, roles, root);
    EXPECT_THAT(out, IsEmpty());
}

TEST_F(ControllerImplLinks, WhoRefersComesWithItsTypes) {
    EXPECT_CALL(*profile, GetReferredBy(_, _, IsHandle("A:1")))
        .WillOnce([this](Handles& handles, Texts& types, const auto&) {
            EXPECT_THAT(types, ElementsAre("uses"));
            handles.push_back(HandleOf("R:1"));
            types = {"uses"};
        });
    Texts roles{"uses"};
    controller->GetReferredBy(out, roles, part);
    EXPECT_THAT(out, ElementsAre(root));
    EXPECT_THAT(roles, ElementsAre("uses"));
}

TEST_F(ControllerImplLinks, WhoRefersIsAskedForHistoryItemsToo) {
    EXPECT_CALL(*profile, GetReferredBy(_, _, IsHandle("A:1"))).WillOnce(Give({HandleOf("R:1")}));
    Texts roles;
    controller->GetReferredBy(out, roles, ItemOf("A:1", MANAGER_HISTORY));
    EXPECT_THAT(out, ElementsAre(root));
}

TEST_F(ControllerImplLinks, ReferencesAndTheirListAreOfContentsOnly) {
    EXPECT_CALL(*profile, GetReferences).Times(0);
    Texts roles{""};
    controller->GetReferences(out, roles, ItemOf("A:1", MANAGER_HISTORY));
}

TEST_F(ControllerImplLinks, ARelationFollowsToNewerRevisions) {
    EXPECT_CALL(*profile,
                CreateRelation(IsHandle("A:1"), IsHandle("B:1"), kxString("bolted to"), false));
    EXPECT_TRUE(controller->AddRelation(part, bolt, "bolted to"));
}

TEST_F(ControllerImplLinks, RemovingARelationAnswersWhatTheRuntimeAnswers) {
    EXPECT_CALL(*profile, RemoveRelation(IsHandle("A:1"), IsHandle("B:1")))
        .WillOnce(Return(true))
        .WillOnce(Return(false));
    EXPECT_TRUE(controller->RemoveRelation(part, bolt));
    EXPECT_FALSE(controller->RemoveRelation(part, bolt));
}

TEST_F(ControllerImplLinks, RelationsJoinContentsOnly) {
    EXPECT_CALL(*profile, CreateRelation).Times(0);
    EXPECT_CALL(*profile, RemoveRelation).Times(0);
    for (Item* item : Unfit()) {
        EXPECT_FALSE(controller->AddRelation(item, bolt, "x"));
        EXPECT_FALSE(controller->AddRelation(part, item, "x"));
        EXPECT_FALSE(controller->RemoveRelation(item, bolt));
        EXPECT_FALSE(controller->RemoveRelation(part, item));
    }
}

TEST_F(ControllerImplLinks, TheSyncStatusIsTheRuntimes) {
    EXPECT_CALL(*profile, GetSyncStatus(IsHandle("A:1")))
        .WillOnce(Return(true))
        .WillOnce(Return(false));
    EXPECT_TRUE(controller->GetSyncStatus(part));
    EXPECT_FALSE(controller->GetSyncStatus(part));
}

TEST_F(ControllerImplLinks, SynchronizeReachesTheRuntime) {
    EXPECT_CALL(*profile, Synchronize(IsHandle("A:1")));
    controller->Synchronize(part);
}

TEST_F(ControllerImplLinks, WhatIsNoContentIsNotSynchronized) {
    EXPECT_CALL(*profile, GetSyncStatus).Times(0);
    EXPECT_CALL(*profile, Synchronize).Times(0);
    for (Item* item : Unfit()) {
        EXPECT_FALSE(controller->GetSyncStatus(item));
        controller->Synchronize(item);
    }
}

TEST_F(ControllerImplLinks, AContentWithoutAHandleIsNotMovedEither) {
    Entity("F:0", "Foldertype");
    EXPECT_CALL(*profile, MoveContent).Times(0);
    EXPECT_FALSE(controller->MoveContent(EmptyContent(), ItemOf("F:0")));
}

}  // namespace
}  // namespace kxct::test
