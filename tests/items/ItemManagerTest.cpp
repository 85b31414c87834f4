#include <kxct/GhostItem.h>
#include <kxct/HistoryItemManager.h>
#include <kxct/NoRevItem.h>

#include "tests/items/Fixture.h"

namespace kxct::test {
namespace {

using ::testing::_;
using ::testing::Return;
using ::testing::SaveArg;
using ::testing::Throw;

// A manager with no items of any kind, and a window into what it protects.
class PlainManager : public ItemManager {
  public:
    using ItemManager::_CreateGhostItem;
    using ItemManager::GetGhost;
    using ItemManager::ItemManager;

    void ToItems(void*, Items&) override {}
    bool HasSession() const { return m_session != nullptr; }
    bool IsConnected() const { return m_connected; }
    bool HasSlot() const { return m_slot != nullptr; }
    SignalHandler* Signals() const { return m_signals; }
    Item* Ghost() const { return m_ghost; }
    void SetGhostUsers(int users) { m_ghostUsers = users; }
    int GhostUsers() const { return m_ghostUsers; }
};

class ItemManagerTest : public SessionTest {
  protected:
    ItemManagerTest() : plain(session.get(), &signals) {}

    PlainManager plain;
};

TEST_F(ItemManagerTest, TheBaseMakesNothing) {
    Items items;
    Item* item = nullptr;
    EXPECT_EQ(plain.CreateItem(nullptr, HISTORY_BRANCHES), nullptr);
    EXPECT_EQ(plain.CreateItem(kxString("a"), kxString("b")), nullptr);
    EXPECT_EQ(plain.CreateItem(static_cast<Item*>(nullptr), kxString("a")), nullptr);
    EXPECT_EQ(plain.CreateItem(items, Names(), "a"), nullptr);
    EXPECT_EQ(plain.CreateItem(kxudm::UDMUID("A")), nullptr);
    EXPECT_EQ(plain.CreateItem(mock::NewHandle("A:1")), nullptr);
    EXPECT_EQ(plain.CreateItem(boost::shared_ptr<kxudm::UDMClassification>()), nullptr);
    EXPECT_EQ(plain.CreateItem(boost::shared_ptr<kxudm::UDMContentDefinition>()), nullptr);
    EXPECT_FALSE(plain.UpdateItem(mock::NewHandle("A:1"), item));
    EXPECT_FALSE(plain.GetFromCache(mock::NewHandle("A:1"), item));
    EXPECT_EQ(plain.GetAllItemsInCache(items), 0u);
}

TEST_F(ItemManagerTest, TheGhostIsMadeOnceAndAnExtraOneBelongsToTheCaller) {
    Item* ghost = plain.GetGhost();
    EXPECT_EQ(ghost->IsA(), "GhostItem");
    EXPECT_EQ(plain.GetGhost(), ghost);
    const std::unique_ptr<Item> extra(plain._CreateGhostItem());
    EXPECT_NE(extra.get(), ghost);
}

TEST_F(ItemManagerTest, ClearCacheTakesTheGhostAndItsUsersWithIt) {
    plain.GetGhost();
    plain.SetGhostUsers(3);
    plain.ClearCache();
    EXPECT_EQ(plain.Ghost(), nullptr);
    EXPECT_EQ(plain.GhostUsers(), 0);
}

TEST_F(ItemManagerTest, ConnectAttachesASlotOnce) {
    boost::shared_ptr<kxudm::IUDMProfileSlot> slot;
    EXPECT_CALL(*profile, Connect(_)).WillOnce(SaveArg<0>(&slot));
    EXPECT_TRUE(plain.connect(nullptr));
    EXPECT_TRUE(plain.IsConnected());
    EXPECT_FALSE(plain.connect(nullptr));
    EXPECT_TRUE(plain.IsConnected());
    EXPECT_NE(slot, nullptr);
    EXPECT_CALL(*profile, Disconnect(slot));
}

TEST_F(ItemManagerTest, ConnectTakesSignalsOnlyIfItHasNone) {
    SignalHandler other;
    PlainManager deaf(session.get(), nullptr);
    EXPECT_TRUE(deaf.connect(&other));
    EXPECT_EQ(deaf.Signals(), &other);
    EXPECT_TRUE(plain.connect(&other));
    EXPECT_EQ(plain.Signals(), &signals);
    // Also where it then doesn't connect.
    PlainManager offline(nullptr, nullptr);
    EXPECT_FALSE(offline.connect(&other));
    EXPECT_EQ(offline.Signals(), &other);
}

TEST_F(ItemManagerTest, AConnectionThatTheRuntimeRefusesIsNone) {
    EXPECT_CALL(*profile, Connect(_)).WillOnce(Throw(std::runtime_error("no"))).WillOnce(Return());
    EXPECT_FALSE(plain.connect(nullptr));
    EXPECT_FALSE(plain.IsConnected());
    EXPECT_TRUE(plain.connect(nullptr));
}

TEST_F(ItemManagerTest, DisconnectNeedsAConnection) {
    EXPECT_CALL(*profile, Disconnect(_)).Times(0);
    EXPECT_FALSE(plain.disconnect());
}

TEST_F(ItemManagerTest, DisconnectDetachesTheSameSlotAndConnectingAgainReusesIt) {
    boost::shared_ptr<kxudm::IUDMProfileSlot> first;
    boost::shared_ptr<kxudm::IUDMProfileSlot> second;
    EXPECT_CALL(*profile, Connect(_)).WillOnce(SaveArg<0>(&first)).WillOnce(SaveArg<0>(&second));
    plain.connect(nullptr);
    EXPECT_CALL(*profile, Disconnect(first)).Times(2);
    EXPECT_TRUE(plain.disconnect());
    EXPECT_FALSE(plain.IsConnected());
    EXPECT_FALSE(plain.disconnect());
    EXPECT_TRUE(plain.connect(nullptr));
    EXPECT_EQ(first, second);
}

TEST_F(ItemManagerTest, AFailingDisconnectAnswersFalseAndEndsTheConnection) {
    plain.connect(nullptr);
    EXPECT_CALL(*profile, Disconnect(_)).WillOnce(Throw(std::runtime_error("no")));
    EXPECT_FALSE(plain.disconnect());
    EXPECT_FALSE(plain.IsConnected());
}

TEST_F(ItemManagerTest, TheDestructorDisconnects) {
    EXPECT_CALL(*profile, Connect(_));
    EXPECT_CALL(*profile, Disconnect(_));
    PlainManager brief(session.get(), &signals);
    brief.connect(nullptr);
}

TEST_F(ItemManagerTest, TheSlotHandsUpdatesToTheManager) {
    class Listening : public PlainManager {
      public:
        using PlainManager::PlainManager;
        void update(kxudm::UDMProfileUpdate update) override { code = update.GetOpCode(); }
        int code = 0;
    } listening(session.get(), &signals);
    boost::shared_ptr<kxudm::IUDMProfileSlot> slot;
    EXPECT_CALL(*profile, Connect(_)).WillOnce(SaveArg<0>(&slot));
    listening.connect(nullptr);
    slot->update(kxudm::UDMProfileUpdate::OfDeletion(kxudm::UDMUID("A:1")));
    EXPECT_EQ(listening.code, 44);
}

TEST_F(ItemManagerTest, ACopyHasAnEmptyCacheAndNoConnection) {
    DefaultItemManager original(session.get(), &signals);
    original.CreateItem(mock::NewHandle("A:1"));
    original.connect(nullptr);
    DefaultItemManager copy(original);
    DefaultItemManager moved(std::move(copy));
    DefaultItemManager assigned(nullptr, nullptr);
    assigned.CreateItem(mock::NewHandle("B:1"));
    assigned = original;
    Items items;
    EXPECT_EQ(original.GetAllItemsInCache(items), 1u);
    for (DefaultItemManager* other : {&moved, &assigned}) {
        EXPECT_EQ(other->GetAllItemsInCache(items), 0u);
        EXPECT_TRUE(other->connect(nullptr));
    }
}

class DefaultItemManagerTest : public SessionTest {
  protected:
    DefaultItemManagerTest() {
        manager = std::make_unique<DefaultItemManager>(session.get(), &signals);
    }

    Item* item = nullptr;
};

TEST_F(DefaultItemManagerTest, OneHandleIsOneItem) {
    Item* first = manager->CreateItem(mock::NewHandle("A:1"));
    EXPECT_EQ(first->IsA(), "ContentItem");
    EXPECT_EQ(manager->CreateItem(mock::NewHandle("A:1")), first);
    EXPECT_NE(manager->CreateItem(mock::NewHandle("A:2")), first);
    EXPECT_TRUE(manager->GetFromCache(mock::NewHandle("A:1"), item));
    EXPECT_EQ(item, first);
}

TEST_F(DefaultItemManagerTest, AHitAsksTheRuntimeNothing) {
    manager->CreateItem(mock::NewHandle("A:1"));
    EXPECT_CALL(*profile, GetEntity).Times(0);
    manager->CreateItem(mock::NewHandle("A:1"));
}

TEST_F(DefaultItemManagerTest, AnEmptyHandleMakesNoItem) {
    EXPECT_EQ(manager->CreateItem(kxudm::UDMItemHandle()), nullptr);
    EXPECT_FALSE(manager->GetFromCache(kxudm::UDMItemHandle(), item));
    Items items;
    EXPECT_EQ(manager->GetAllItemsInCache(items), 0u);
}

TEST_F(DefaultItemManagerTest, AContentWithoutRevisionIsOneItemToo) {
    Item* first = manager->CreateItem(kxudm::UDMUID("A"));
    EXPECT_EQ(first->IsA(), "NoRevItem");
    EXPECT_EQ(first->GetUID(), "A");
    EXPECT_EQ(manager->CreateItem(kxudm::UDMUID("A")), first);
}

TEST_F(DefaultItemManagerTest, AGroupIsOneItemOfItsOwner) {
    Item* owner = manager->CreateItem(mock::NewHandle("A:1"));
    Item* group = manager->CreateItem(owner, "reps");
    EXPECT_EQ(group->GetUID(), "reps:A:1");
    EXPECT_EQ(manager->CreateItem(owner, "reps"), group);
    EXPECT_NE(manager->CreateItem(owner, "files"), group);
}

TEST_F(DefaultItemManagerTest, EveryViewIsNew) {
    Items items;
    Item* first = manager->CreateItem(items, Names({"mass"}), "12");
    EXPECT_EQ(first->IsA(), "ViewItem");
    EXPECT_NE(manager->CreateItem(items, Names({"mass"}), "12"), first);
}

TEST_F(DefaultItemManagerTest, HasNoItemsOfOtherKinds) {
    EXPECT_EQ(manager->CreateItem(nullptr, HISTORY_VERSIONS), nullptr);
    EXPECT_EQ(manager->CreateItem(kxString("a"), kxString("b")), nullptr);
    EXPECT_EQ(manager->CreateItem(boost::shared_ptr<kxudm::UDMContentDefinition>()), nullptr);
}

TEST_F(DefaultItemManagerTest, AnItemThatStrayedFromItsKeyGetsAFreshHandle) {
    auto* content = static_cast<ContentItem*>(manager->CreateItem(mock::NewHandle("A:1")));
    content->SetItemHandle(mock::NewHandle("A:2"));
    EXPECT_CALL(*profile, GetEntity(kxString("A:1")))
        .WillOnce(Return(mock::NewHandle("A:1", "UDMPart", "Fresh")));
    EXPECT_TRUE(manager->GetFromCache(mock::NewHandle("A:1"), item));
    EXPECT_EQ(item, content);
    EXPECT_EQ(item->GetUID(), "A:1");
    EXPECT_EQ(item->GetDisplayName(), "Fresh");
}

TEST_F(DefaultItemManagerTest, AFailureToRefreshIsAMiss) {
    auto* content = static_cast<ContentItem*>(manager->CreateItem(mock::NewHandle("A:1")));
    content->SetItemHandle(mock::NewHandle("A:2"));
    EXPECT_CALL(*profile, GetEntity).WillRepeatedly(Throw(std::runtime_error("gone")));
    EXPECT_FALSE(manager->GetFromCache(mock::NewHandle("A:1"), item));
    // The key is taken, so creating gives the old item and not a second one.
    Item* created = manager->CreateItem(mock::NewHandle("A:1"));
    EXPECT_EQ(created, manager->CreateItem(mock::NewHandle("A:1")));
}

TEST_F(DefaultItemManagerTest, ACachedItemOfAnotherKindIsLeftAsItIs) {
    Item* content = manager->CreateItem(kxudm::UDMUID("A"));
    ON_CALL(*profile, GetEntity).WillByDefault(Return(mock::NewHandle("A:7")));
    content->GetDisplayName();
    ASSERT_EQ(content->GetUID(), "A:7");
    EXPECT_TRUE(manager->GetFromCache(mock::NewHandle("A"), item));
    EXPECT_EQ(item, content);
}

TEST_F(DefaultItemManagerTest, UpdateItemLetsTheObjectFollowToTheNextRevision) {
    Item* content = manager->CreateItem(mock::NewHandle("A:2", "UDMPart", "Old"));
    EXPECT_TRUE(manager->UpdateItem(mock::NewHandle("A:3", "UDMPart", "New"), item));
    EXPECT_EQ(item, content);
    EXPECT_EQ(item->GetUID(), "A:3");
    EXPECT_EQ(item->GetDisplayName(), "New");
    Item* none = nullptr;
    EXPECT_FALSE(manager->GetFromCache(mock::NewHandle("A:2"), none));
    EXPECT_TRUE(manager->GetFromCache(mock::NewHandle("A:3"), none));
}

TEST_F(DefaultItemManagerTest, UpdateItemFindsTheRevisionItselfFirst) {
    Item* second = manager->CreateItem(mock::NewHandle("A:2"));
    Item* third = manager->CreateItem(mock::NewHandle("A:3"));
    EXPECT_TRUE(manager->UpdateItem(mock::NewHandle("A:3"), item));
    EXPECT_EQ(item, third);
    EXPECT_TRUE(manager->GetFromCache(mock::NewHandle("A:2"), item));
    EXPECT_EQ(item, second);
}

TEST_F(DefaultItemManagerTest, UpdateItemFromRevisionZeroToOne) {
    Item* content = manager->CreateItem(mock::NewHandle("A:0"));
    EXPECT_TRUE(manager->UpdateItem(mock::NewHandle("A:1"), item));
    EXPECT_EQ(item, content);
}

class UpdateOfOddUid : public DefaultItemManagerTest,
                       public ::testing::WithParamInterface<const char*> {};

TEST_P(UpdateOfOddUid, AnswersFalse) {
    manager->CreateItem(mock::NewHandle("A:1"));
    EXPECT_FALSE(manager->UpdateItem(mock::NewHandle(GetParam()), item));
    EXPECT_EQ(item, nullptr);
}

INSTANTIATE_TEST_SUITE_P(OfAnyForm,
                         UpdateOfOddUid,
                         ::testing::Values("A",
                                           "",
                                           ":",
                                           "A:",
                                           "A:x",
                                           "A:1:2",
                                           "A:0",
                                           "A:4",
                                           "A:-99999999999999999999",
                                           "A:99999999999999999999"));

TEST_F(DefaultItemManagerTest, ARevisionThatIsNoNumberReadsAsZero) {
    Item* content = manager->CreateItem(mock::NewHandle("A:-1"));
    EXPECT_TRUE(manager->UpdateItem(mock::NewHandle("A:x"), item));
    EXPECT_EQ(item, content);
}

TEST_F(DefaultItemManagerTest, ToItemsReplacesTheListInTheOrderOfTheHandles) {
    Handles handles({mock::NewHandle("B:1"), mock::NewHandle("A:1"), mock::NewHandle("B:1")});
    Items items(5, nullptr);
    manager->ToItems(&handles, items);
    EXPECT_EQ(Uids(items), "B:1 A:1 B:1");
    EXPECT_EQ(items[0], items[2]);
}

TEST_F(DefaultItemManagerTest, ListsItsItemsByUid) {
    manager->CreateItem(mock::NewHandle("B:1"));
    manager->CreateItem(kxudm::UDMUID("A"));
    manager->CreateItem(mock::NewHandle("A:1"));
    Items items;
    EXPECT_EQ(manager->GetAllItemsInCache(items), 3u);
    EXPECT_EQ(Uids(items), "A A:1 B:1");
    manager->ClearCache();
    EXPECT_EQ(manager->GetAllItemsInCache(items), 0u);
    EXPECT_TRUE(items.empty());
}

}  // namespace
}  // namespace kxct::test
