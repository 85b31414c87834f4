// Check-out, save, publish, revert and delete over lists of items.
#include "tests/controller/ControllerFixture.h"

namespace kxct::test {
namespace {

using mock::IsHandle;
using testing::_;
using testing::InSequence;

class ControllerImplLifecycle : public ControllerTest {
  protected:
    ControllerImplLifecycle() {
        for (const char* uid : {"A:1", "B:1", "C:1"}) {
            Entity(uid, "UDMPart", uid);
            items.push_back(ItemOf(uid));
        }
    }

    void SetEditable(std::initializer_list<const char*> uids) {
        for (auto& [uid, state] : entities) {
            state->isEditable = std::find(uids.begin(), uids.end(), uid) != uids.end();
        }
    }

    Items items;
};

TEST_F(ControllerImplLifecycle, CheckOutTakesThoseNotEditableInOrder) {
    SetEditable({"B:1"});
    InSequence order;
    EXPECT_CALL(*profile, Checkout(IsHandle("A:1"), kxString("why")));
    EXPECT_CALL(*profile, Checkout(IsHandle("C:1"), kxString("why")));
    EXPECT_TRUE(controller->CheckOut(items, "why"));
}

TEST_F(ControllerImplLifecycle, WhatIsEditableIsNotCheckedOutAgain) {
    SetEditable({"A:1", "B:1", "C:1"});
    EXPECT_CALL(*profile, Checkout).Times(0);
    EXPECT_TRUE(controller->CheckOut(items, "why"));
}

TEST_F(ControllerImplLifecycle, SaveActsOnTheWorkingHandleOfThoseEditable) {
    SetEditable({"A:1", "C:1"});
    Entity("A:2");
    Entity("C:2");
    InSequence order;
    EXPECT_CALL(*profile, GetWorkingHandle(IsHandle("A:1")))
        .WillOnce(testing::Return(HandleOf("A:2")));
    EXPECT_CALL(*profile, SaveEntity(IsHandle("A:2"), kxString("note"), true));
    EXPECT_CALL(*profile, GetWorkingHandle(IsHandle("C:1")))
        .WillOnce(testing::Return(HandleOf("C:2")));
    EXPECT_CALL(*profile, SaveEntity(IsHandle("C:2"), kxString("note"), true));
    EXPECT_TRUE(controller->Save(items, "note"));
}

TEST_F(ControllerImplLifecycle, PublishHandsCommentAndFlagOn) {
    SetEditable({"B:1"});
    InSequence order;
    EXPECT_CALL(*profile, GetWorkingHandle(IsHandle("B:1")));
    EXPECT_CALL(*profile, PersistEntity(IsHandle("B:1"), kxString("done"), true, true, true));
    EXPECT_CALL(*profile, GetWorkingHandle(IsHandle("B:1")));
    EXPECT_CALL(*profile, PersistEntity(IsHandle("B:1"), kxString(""), false, true, true));
    EXPECT_TRUE(controller->Publish(items, "done", true));
    EXPECT_TRUE(controller->Publish(items, "", false));
}

TEST_F(ControllerImplLifecycle, RevertUndoesTheCheckOutOfThoseEditable) {
    SetEditable({"A:1", "B:1"});
    InSequence order;
    EXPECT_CALL(*profile, UndoCheckout(IsHandle("A:1")));
    EXPECT_CALL(*profile, UndoCheckout(IsHandle("B:1")));
    EXPECT_TRUE(controller->Revert(items));
}

TEST_F(ControllerImplLifecycle, DeleteTakesRootEntitiesNeverByForce) {
    entities["B:1"]->isRoot = false;
    InSequence order;
    EXPECT_CALL(*profile, DeleteEntity(IsHandle("A:1"), true, false));
    EXPECT_CALL(*profile, DeleteEntity(IsHandle("C:1"), true, false));
    EXPECT_TRUE(controller->Delete(items));
}

TEST_F(ControllerImplLifecycle, DeletingWhatIsNoRootEntityIsFalseAndChangesNothing) {
    entities["A:1"]->isRoot = false;
    EXPECT_CALL(*profile, DeleteEntity).Times(0);
    Items one{items[0]};
    EXPECT_FALSE(controller->Delete(one));
}

TEST_F(ControllerImplLifecycle, DeletingOneRootEntityAndOneOtherIsTrue) {
    entities["A:1"]->isRoot = false;
    Items two{items[0], items[1]};
    EXPECT_CALL(*profile, DeleteEntity(IsHandle("B:1"), _, _));
    EXPECT_TRUE(controller->Delete(two));
}

TEST_F(ControllerImplLifecycle, AnEmptyListIsTrueExceptForDelete) {
    Items none;
    EXPECT_TRUE(controller->CheckOut(none, ""));
    EXPECT_TRUE(controller->Save(none, ""));
    EXPECT_TRUE(controller->Publish(none, "", false));
    EXPECT_TRUE(controller->Revert(none));
    EXPECT_FALSE(controller->Delete(none));
}

TEST_F(ControllerImplLifecycle, NullEntriesAndItemsOfOtherKindsAreSkipped) {
    SetEditable({"A:1"});
    Items mixed{nullptr, GroupNodeOf("B:1"), ItemOf("B:1", MANAGER_HISTORY), items[0], nullptr};
    EXPECT_CALL(*profile, SaveEntity(IsHandle("A:1"), _, _));
    EXPECT_TRUE(controller->Save(mixed, ""));
    EXPECT_CALL(*profile, Checkout).Times(0);
    EXPECT_TRUE(controller->CheckOut(mixed, ""));
    EXPECT_CALL(*profile, PersistEntity(IsHandle("A:1"), _, _, _, _));
    EXPECT_TRUE(controller->Publish(mixed, "", false));
    EXPECT_CALL(*profile, UndoCheckout(IsHandle("A:1")));
    EXPECT_TRUE(controller->Revert(mixed));
    EXPECT_CALL(*profile, DeleteEntity(IsHandle("A:1"), _, _));
    EXPECT_TRUE(controller->Delete(mixed));
}

TEST_F(ControllerImplLifecycle, OnlyOtherKindsAreNothingToDelete) {
    Items others{nullptr, GroupNodeOf("A:1")};
    EXPECT_CALL(*profile, DeleteEntity).Times(0);
    EXPECT_FALSE(controller->Delete(others));
}

TEST_F(ControllerImplLifecycle, TheFirstFailureEndsTheWalkAndKeepsWhatWasDone) {
    SetEditable({});
    InSequence order;
    EXPECT_CALL(*profile, Checkout(IsHandle("A:1"), _));
    EXPECT_CALL(*profile, Checkout(IsHandle("B:1"), _)).WillOnce(Fail());
    EXPECT_CALL(*profile, Checkout(IsHandle("C:1"), _)).Times(0);
    EXPECT_CALL(*profile, UndoCheckout).Times(0);
    EXPECT_FALSE(controller->CheckOut(items, ""));
}

TEST_F(ControllerImplLifecycle, AFailureAfterADeletionIsFalseAllTheSame) {
    InSequence order;
    EXPECT_CALL(*profile, DeleteEntity(IsHandle("A:1"), _, _));
    EXPECT_CALL(*profile, DeleteEntity(IsHandle("B:1"), _, _)).WillOnce(Fail());
    EXPECT_CALL(*profile, DeleteEntity(IsHandle("C:1"), _, _)).Times(0);
    EXPECT_FALSE(controller->Delete(items));
}

TEST_F(ControllerImplLifecycle, WithoutAWorkingHandleNothingIsSavedOrPublished) {
    SetEditable({"A:1"});
    ON_CALL(*profile, GetWorkingHandle).WillByDefault(Fail());
    EXPECT_CALL(*profile, SaveEntity).Times(0);
    EXPECT_CALL(*profile, PersistEntity).Times(0);
    EXPECT_FALSE(controller->Save(items, ""));
    EXPECT_FALSE(controller->Publish(items, "", false));
}

}  // namespace
}  // namespace kxct::test
