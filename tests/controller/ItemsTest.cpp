// Managers, signal handlers, the cache, items by UID, classifications.
#include <kxct/UDMDBCtrl.h>

#include "tests/controller/ControllerFixture.h"

namespace kxct::test {
namespace {

using mock::IsHandle;
using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Return;

constexpr auto UNKNOWN_TYPE = static_cast<ManagerType>(7);

class ControllerImplItems : public ControllerTest {
  protected:
    ControllerImplItems() {
        Entity("A:1", "UDMPart", "Bracket");
        Entity("B:2", "UDMPart", "Bolt");
    }

    Items out;
};

TEST_F(ControllerImplItems, ASignalHandlerNeedsNoSessionAndIsKept) {
    ControllerImpl dead;
    SignalHandler* handler = dead.GetSignalHandler(MANAGER_DEFAULT);
    ASSERT_NE(handler, nullptr);
    EXPECT_EQ(dead.GetSignalHandler(MANAGER_DEFAULT), handler);
}

TEST_F(ControllerImplItems, EachTypeHasASignalHandlerOfItsOwn) {
    EXPECT_NE(controller->GetSignalHandler(MANAGER_DEFAULT),
              controller->GetSignalHandler(MANAGER_HISTORY));
    EXPECT_NE(controller->GetSignalHandler(UNKNOWN_TYPE), nullptr);
}

TEST_F(ControllerImplItems, AManagerIsMadeOnceForEachType) {
    ItemManager* contents = controller->_GetItemManager(MANAGER_DEFAULT);
    ItemManager* history = controller->_GetItemManager(MANAGER_HISTORY);
    ASSERT_NE(contents, nullptr);
    ASSERT_NE(history, nullptr);
    EXPECT_NE(contents, history);
    EXPECT_EQ(controller->_GetItemManager(MANAGER_DEFAULT), contents);
    EXPECT_EQ(controller->_GetItemManager(MANAGER_HISTORY), history);
}

TEST_F(ControllerImplItems, TheContentManagerListensToTheSessionAndTheHistoryManagerDoesNot) {
    EXPECT_CALL(*profile, Connect).Times(1);
    controller->_GetItemManager(MANAGER_DEFAULT);
    testing::Mock::VerifyAndClearExpectations(&*profile);
    EXPECT_CALL(*profile, Connect).Times(0);
    controller->_GetItemManager(MANAGER_HISTORY);
    controller->_GetItemManager(MANAGER_DEFAULT);
    testing::Mock::VerifyAndClearExpectations(&*profile);
}

TEST_F(ControllerImplItems, AManagerRaisesTheSignalsOfTheHandlerOfItsType) {
    ItemSpy updated(controller->GetSignalHandler(MANAGER_DEFAULT)->ItemUpdated);
    Item* item = ItemOf("A:1");
    controller->_GetItemManager(MANAGER_DEFAULT)
        ->update(kxudm::UDMProfileUpdate::OfHandle(kxudm::SIGNAL_CONTENT_CHANGED, HandleOf("A:1")));
    EXPECT_THAT(updated.items, ElementsAre(item));
}

TEST_F(ControllerImplItems, AnUnknownTypeHasNoManager) {
    EXPECT_EQ(controller->_GetItemManager(UNKNOWN_TYPE), nullptr);
    EXPECT_EQ(controller->_GetItemManager(UNKNOWN_TYPE), nullptr);
    EXPECT_EQ(controller->GetItem("A:1", UNKNOWN_TYPE, false), nullptr);
    EXPECT_NO_THROW(controller->ClearCache(UNKNOWN_TYPE));
    EXPECT_EQ(controller->GetAllItems(out, UNKNOWN_TYPE), 0U);
    Handles handles{HandleOf("A:1")};
    controller->ToItems(UNKNOWN_TYPE, &handles, out);
    EXPECT_THAT(out, IsEmpty());
}

TEST_F(ControllerImplItems, WithoutAConnectionThereIsNoManagerAlsoNotOneMadeBefore) {
    controller->_GetItemManager(MANAGER_DEFAULT);
    LoseConnection();
    EXPECT_EQ(controller->_GetItemManager(MANAGER_DEFAULT), nullptr);
}

TEST_F(ControllerImplItems, AnItemComesFromTheRuntimeAndThenFromTheCache) {
    Item* item = controller->GetItem("A:1", false);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->IsA(), "ContentItem");
    EXPECT_EQ(item->GetDisplayName(), "Bracket");
    EXPECT_EQ(controller->GetItem("A:1", false), item);
    EXPECT_EQ(controller->GetItem("A:1", MANAGER_DEFAULT, false), item);
}

TEST_F(ControllerImplItems, AnItemIsLookedUpByTheIdAsItIs) {
    EXPECT_CALL(*profile, GetEntity(kxString("A:1")));
    controller->GetItem("A:1", false);
    testing::Mock::VerifyAndClearExpectations(&*profile);
}

TEST_F(ControllerImplItems, TheLatestRevisionIsLookedUpWithoutTheRevisionOfTheId) {
    Entity("A:5");
    EXPECT_CALL(*profile, GetEntity(kxString("A"))).WillOnce(Return(HandleOf("A:5")));
    Item* item = controller->GetItem("A:1", true);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->GetUID(), "A:5");
}

TEST_F(ControllerImplItems, AHistoryItemComesFromTheManagerOfItsType) {
    Item* item = controller->GetItem("A:1", MANAGER_HISTORY, false);
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->IsA(), "HistoryItem");
    EXPECT_NE(item, controller->GetItem("A:1", false));
}

TEST_F(ControllerImplItems, AnUnknownIdIsNull) {
    EXPECT_EQ(controller->GetItem("Z:1", false), nullptr);
    EXPECT_EQ(controller->GetItem("", false), nullptr);
}

// Looking up never reports why; what isn't a std::exception still comes through.
TEST_F(ControllerImplItems, AFailureOfTheLookUpThatTheSessionDoesNotContainPasses) {
    ON_CALL(*profile, GetEntity).WillByDefault(testing::Throw(3));
    EXPECT_THROW(controller->GetItem("A:1", false), int);
}

TEST_F(ControllerImplItems, ItemsOfManyIdsComeInOrder) {
    EXPECT_TRUE(controller->GetItemList(out, {"B:2", "A:1", "B:2"}, MANAGER_DEFAULT));
    EXPECT_THAT(UidsOf(out), ElementsAre("B:2", "A:1", "B:2"));
    EXPECT_EQ(out[0], out[2]);
}

TEST_F(ControllerImplItems, OneUnknownIdFailsTheWholeList) {
    EXPECT_FALSE(controller->GetItemList(out, {"A:1", "Z:1", "B:2"}, MANAGER_DEFAULT));
    EXPECT_THAT(out, IsEmpty());
}

TEST_F(ControllerImplItems, AnEmptyListOfIdsIsTrueAndEmptiesTheList) {
    out.push_back(ItemOf("A:1"));
    EXPECT_TRUE(controller->GetItemList(out, {}, MANAGER_DEFAULT));
    EXPECT_THAT(out, IsEmpty());
}

TEST_F(ControllerImplItems, AListForAnUnknownTypeIsTrueAndStaysAsItIs) {
    EXPECT_TRUE(controller->GetItemList(out, {"A:1"}, UNKNOWN_TYPE));
    EXPECT_THAT(out, IsEmpty());
}

TEST_F(ControllerImplItems, HandlesOfManyIdsNeedAConnection) {
    Handles handles;
    EXPECT_TRUE(controller->_GetUDMItemHandleList(handles, {"A:1", "B:2"}));
    EXPECT_EQ(handles.size(), 2U);
    LoseConnection();
    EXPECT_FALSE(controller->_GetUDMItemHandleList(handles, {"A:1"}));
    EXPECT_EQ(handles.size(), 2U);
}

TEST_F(ControllerImplItems, OnlyAContentHasAHandleForTheController) {
    EXPECT_EQ(controller->_GetItemHandle(ItemOf("A:1")).Uid(), "A:1");
    EXPECT_TRUE(controller->_GetItemHandle(ItemOf("A:1", MANAGER_HISTORY)).IsEmpty());
    EXPECT_TRUE(controller->_GetItemHandle(nullptr).IsEmpty());
}

TEST_F(ControllerImplItems, HandlesBecomeItemsAndReplaceTheList) {
    out.push_back(ItemOf("A:1"));
    Handles handles{HandleOf("B:2")};
    controller->ToItems(MANAGER_DEFAULT, &handles, out);
    EXPECT_THAT(UidsOf(out), ElementsAre("B:2"));
}

TEST_F(ControllerImplItems, AFreshControllerHasNoItems) {
    EXPECT_EQ(controller->GetAllItems(out, MANAGER_DEFAULT), 0U);
}

TEST_F(ControllerImplItems, AllItemsAreThoseOfTheCacheOfTheirType) {
    ItemOf("B:2");
    ItemOf("A:1");
    ItemOf("A:1", MANAGER_HISTORY);
    EXPECT_EQ(controller->GetAllItems(out, MANAGER_DEFAULT), 2U);
    EXPECT_THAT(UidsOf(out), ElementsAre("A:1", "B:2"));
    EXPECT_EQ(controller->GetAllItems(out, MANAGER_HISTORY), 1U);
}

TEST_F(ControllerImplItems, ClearCacheForgetsTheItemsOfItsTypeAlone) {
    ItemOf("A:1");
    ItemOf("A:1", MANAGER_HISTORY);
    controller->ClearCache(MANAGER_DEFAULT);
    EXPECT_EQ(controller->GetAllItems(out, MANAGER_DEFAULT), 0U);
    EXPECT_EQ(controller->GetAllItems(out, MANAGER_HISTORY), 1U);
}

TEST_F(ControllerImplItems, ClearCacheMakesAManagerThatWasNotAskedForBefore) {
    EXPECT_CALL(*profile, Connect);
    controller->ClearCache(MANAGER_DEFAULT);
    testing::Mock::VerifyAndClearExpectations(&*profile);
}

class ControllerImplClassifications : public ControllerTest {
  protected:
    ControllerImplClassifications() {
        Entity("M:0", "Categories", "Master").isMaster = true;
        Entity("N:0", "Categories", "Own").isMaster = false;
        Entity("O:0", "Categories", "Other").isMaster = false;
        ON_CALL(*profile, GetClassifications)
            .WillByDefault(Give({HandleOf("M:0"), HandleOf("N:0"), HandleOf("O:0")}));
    }

    Items out;
};

TEST_F(ControllerImplClassifications, MastersAndOthersPartTheTopOnes) {
    EXPECT_CALL(*profile, GetClassifications(_, kxString(""))).Times(2);
    EXPECT_EQ(controller->GetMasterClassifications(out), 1U);
    EXPECT_THAT(UidsOf(out), ElementsAre("M:0"));
    Items others;
    EXPECT_EQ(controller->GetOtherClassifications(others), 2U);
    EXPECT_THAT(UidsOf(others), ElementsAre("N:0", "O:0"));
}

TEST_F(ControllerImplClassifications, WithoutAnyTheListStaysAndTheCountIsZero) {
    ON_CALL(*profile, GetClassifications).WillByDefault(Return());
    out.push_back(ItemOf("M:0"));
    EXPECT_EQ(controller->GetMasterClassifications(out), 0U);
    EXPECT_EQ(controller->GetOtherClassifications(out), 0U);
    EXPECT_THAT(UidsOf(out), ElementsAre("M:0"));
}

TEST_F(ControllerImplClassifications, WhatIsNoClassificationFailsTheListing) {
    Entity("A:1");
    ON_CALL(*profile, GetClassifications).WillByDefault(Give({HandleOf("A:1")}));
    EXPECT_EQ(controller->GetMasterClassifications(out), 0U);
    EXPECT_THAT(out, IsEmpty());
}

}  // namespace
}  // namespace kxct::test
