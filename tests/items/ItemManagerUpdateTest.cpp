#include <kxct/HistoryItemManager.h>

#include "tests/items/Fixture.h"

namespace kxct::test {
namespace {

using kxudm::UDMProfileUpdate;
using kxudm::UDMUID;
using mock::IsHandle;
using mock::NewHandle;
using ::testing::_;
using ::testing::ElementsAre;
using ::testing::InSequence;
using ::testing::IsEmpty;
using ::testing::Throw;

kxudm::SignalOption Code(int number) {
    return static_cast<kxudm::SignalOption>(number);
}

class ItemManagerUpdate : public SessionTest {
  protected:
    ItemManagerUpdate() {
        manager = std::make_unique<DefaultItemManager>(session.get(), &signals);
        parent = manager->CreateItem(NewHandle("P:1"));
        item = manager->CreateItem(NewHandle("A:2"));
    }

    bool Cached(const kxString& uid) {
        Item* found = nullptr;
        return manager->GetFromCache(NewHandle(uid), found);
    }

    Item* parent = nullptr;
    Item* item = nullptr;
    SignalSpy spy{signals};
};

class UpdateWithHandle : public ItemManagerUpdate, public ::testing::WithParamInterface<int> {};
class ChangeUpdate : public UpdateWithHandle {};
class StructureUpdate : public UpdateWithHandle {};
class RemovalUpdate : public UpdateWithHandle {};
class OtherUpdate : public UpdateWithHandle {};

TEST_P(ChangeUpdate, RaisesItemUpdatedOfACachedItem) {
    manager->update(UDMProfileUpdate::OfHandle(Code(GetParam()), NewHandle("A:2")));
    manager->update(UDMProfileUpdate::OfHandle(Code(GetParam()), NewHandle("X:1")));
    EXPECT_THAT(spy.log, ElementsAre("ItemUpdated A:2"));
    EXPECT_EQ(spy.last, item);
}

INSTANTIATE_TEST_SUITE_P(OfCode, ChangeUpdate, ::testing::Values(3, 10));

TEST_P(StructureUpdate, RaisesItemStructureUpdatedOfACachedItem) {
    manager->update(UDMProfileUpdate::OfHandle(Code(GetParam()), NewHandle("P:1")));
    manager->update(UDMProfileUpdate::OfHandle(Code(GetParam()), NewHandle("X:1")));
    EXPECT_THAT(spy.log, ElementsAre("ItemStructureUpdated P:1"));
    EXPECT_EQ(spy.last, parent);
}

INSTANTIATE_TEST_SUITE_P(OfCode, StructureUpdate, ::testing::Values(35, 40, 42));

TEST_P(RemovalUpdate, RaisesChildRemovedIfBothAreCached) {
    const auto send = [&](const char* p, const char* c) {
        manager->update(UDMProfileUpdate::OfChild(Code(GetParam()), NewHandle(p), NewHandle(c)));
    };
    send("P:1", "X:1");
    send("X:1", "A:2");
    EXPECT_THAT(spy.log, IsEmpty());
    send("P:1", "A:2");
    EXPECT_THAT(spy.log, ElementsAre("ChildRemoved P:1 A:2"));
    EXPECT_TRUE(Cached("A:2"));
}

INSTANTIATE_TEST_SUITE_P(OfCode, RemovalUpdate, ::testing::Values(36, 41, 43));

TEST_P(OtherUpdate, DoesNothing) {
    manager->update(
        UDMProfileUpdate::OfChild(Code(GetParam()), NewHandle("P:1"), NewHandle("A:2")));
    EXPECT_THAT(spy.log, IsEmpty());
    Items items;
    EXPECT_EQ(manager->GetAllItemsInCache(items), 2u);
}

INSTANTIATE_TEST_SUITE_P(OfCode,
                         OtherUpdate,
                         ::testing::Values(-1, 0, 1, 2, 4, 6, 9, 11, 13, 33, 37, 38, 45, 1000));

TEST_F(ItemManagerUpdate, ANewRevisionKeepsTheObject) {
    manager->update(UDMProfileUpdate::OfHandle(Code(5), NewHandle("A:3")));
    EXPECT_THAT(spy.log, ElementsAre("ItemUpdated A:3"));
    EXPECT_EQ(spy.last, item);
    EXPECT_FALSE(Cached("A:2"));
    EXPECT_TRUE(Cached("A:3"));
}

TEST_F(ItemManagerUpdate, ANewRevisionOfAnUncachedContentRaisesNothing) {
    manager->update(UDMProfileUpdate::OfHandle(Code(5), NewHandle("A:4")));
    manager->update(UDMProfileUpdate::OfHandle(Code(5), NewHandle("X:2")));
    EXPECT_THAT(spy.log, IsEmpty());
    EXPECT_TRUE(Cached("A:2"));
}

TEST_F(ItemManagerUpdate, ADeletedEntityLeavesTheCacheAndStaysReadable) {
    manager->update(UDMProfileUpdate::OfDeletion(UDMUID("A:2")));
    EXPECT_THAT(spy.log, ElementsAre("ItemDeleted A:2 A:2"));
    EXPECT_EQ(spy.last, item);
    EXPECT_FALSE(Cached("A:2"));
    EXPECT_EQ(item->GetUID(), "A:2");
    manager->update(UDMProfileUpdate::OfDeletion(UDMUID("A:2")));
    EXPECT_EQ(spy.log.size(), 1u);
}

TEST_F(ItemManagerUpdate, TheItemIsStillCachedWhileItsDeletionIsTold) {
    struct Looker : kxListener<single_threaded> {
        explicit Looker(ItemManager& watched) : manager(watched) {}
        void Look(const kxString&, Item* item) {
            Item* found = nullptr;
            cached = manager.GetFromCache(item->GetItemHandle(), found);
        }
        ItemManager& manager;
        bool cached = false;
    } looker(*manager);
    signals.ItemDeleted.connect(&looker, &Looker::Look);
    manager->update(UDMProfileUpdate::OfDeletion(UDMUID("A:2")));
    EXPECT_TRUE(looker.cached);
}

TEST_F(ItemManagerUpdate, AnOwnedChildThatIsDeletedUpdatesItsParentAndLeavesTheCache) {
    const auto send = [&](const char* p, const char* c) {
        manager->update(UDMProfileUpdate::OfChild(Code(12), NewHandle(p), NewHandle(c)));
    };
    send("X:1", "A:2");
    send("P:1", "X:1");
    EXPECT_THAT(spy.log, IsEmpty());
    EXPECT_TRUE(Cached("A:2"));
    send("P:1", "A:2");
    EXPECT_THAT(spy.log, ElementsAre("ItemStructureUpdated P:1"));
    EXPECT_FALSE(Cached("A:2"));
    EXPECT_EQ(item->GetUID(), "A:2");
}

TEST_F(ItemManagerUpdate, AListenerMayClearTheCacheInAnyUpdate) {
    struct Clearer : kxListener<single_threaded> {
        explicit Clearer(ItemManager& cleared) : manager(cleared) {}
        void Clear(Item*) { manager.ClearCache(); }
        void ClearToo(const kxString&, Item*) { manager.ClearCache(); }
        ItemManager& manager;
    } clearer(*manager);
    signals.ItemStructureUpdated.disconnect(&spy);
    signals.ItemDeleted.disconnect(&spy);
    signals.ItemStructureUpdated.connect(&clearer, &Clearer::Clear);
    signals.ItemDeleted.connect(&clearer, &Clearer::ClearToo);
    manager->update(UDMProfileUpdate::OfChild(Code(12), NewHandle("P:1"), NewHandle("A:2")));
    manager->CreateItem(NewHandle("A:2"));
    manager->update(UDMProfileUpdate::OfDeletion(UDMUID("A:2")));
    Items items;
    EXPECT_EQ(manager->GetAllItemsInCache(items), 0u);
}

TEST_F(ItemManagerUpdate, AReplacedEntityBecomesANewObject) {
    manager->CreateItem(NewHandle("C:1"));
    manager->CreateItem(NewHandle("F:1"));
    const InSequence order;
    EXPECT_CALL(*profile, GetParents(_, IsHandle("A:1"), kxString("category"), false))
        .WillOnce(Give({NewHandle("C:1"), NewHandle("X:1")}));
    EXPECT_CALL(*profile, GetParents(_, IsHandle("A:1"), kxString("folder"), false))
        .WillOnce(Give({NewHandle("F:1")}));
    EXPECT_CALL(*profile, GetParents(_, IsHandle("A:1"), kxString("reference"), false));
    manager->update(UDMProfileUpdate::OfUndo(NewHandle("A:1"), UDMUID("A:2")));
    // A parent of an early round is told of again in the later ones.
    EXPECT_THAT(spy.log,
                ElementsAre("ItemDeleted A:2 A:2",
                            "ItemCreated null A:1",
                            "ItemStructureUpdated C:1",
                            "ItemStructureUpdated C:1",
                            "ItemStructureUpdated F:1",
                            "ItemStructureUpdated C:1",
                            "ItemStructureUpdated F:1"));
    EXPECT_FALSE(Cached("A:2"));
    EXPECT_TRUE(Cached("A:1"));
    EXPECT_EQ(item->GetUID(), "A:2");
}

TEST_F(ItemManagerUpdate, AReplacedEntityThatIsNotCachedRaisesNothing) {
    EXPECT_CALL(*profile, GetParents).Times(0);
    manager->update(UDMProfileUpdate::OfUndo(NewHandle("X:1"), UDMUID("X:2")));
    EXPECT_THAT(spy.log, IsEmpty());
    EXPECT_FALSE(Cached("X:1"));
}

TEST_F(ItemManagerUpdate, AFailureInsideAnUpdateTravelsOut) {
    EXPECT_CALL(*profile, GetParents).WillOnce(Throw(std::runtime_error("lost")));
    EXPECT_THROW(manager->update(UDMProfileUpdate::OfUndo(NewHandle("A:1"), UDMUID("A:2"))),
                 std::exception);
    EXPECT_THAT(spy.log, ElementsAre("ItemDeleted A:2 A:2", "ItemCreated null A:1"));
}

TEST_F(ItemManagerUpdate, AClosedSessionIsToldFirstAndThenForgottenWithAllItems) {
    struct Counter : kxListener<single_threaded> {
        explicit Counter(ItemManager& counted) : manager(counted) {}
        void Count(const kxString&) { items = manager.GetAllItemsInCache(list); }
        ItemManager& manager;
        Items list;
        size_t items = 0;
    } counter(*manager);
    signals.SessionClosed.connect(&counter, &Counter::Count);
    manager->update(UDMProfileUpdate::OfSession("session-9"));
    EXPECT_THAT(spy.log, ElementsAre("SessionClosed session-9"));
    EXPECT_EQ(counter.items, 2u);
    Items items;
    EXPECT_EQ(manager->GetAllItemsInCache(items), 0u);
    EXPECT_FALSE(manager->connect(nullptr));
    // Items made from now on have no session.
    EXPECT_EQ(manager->CreateItem(NewHandle("A:2"))->GetAttributeValue("contentdefinition"),
              kxVariant(""));
}

TEST_F(ItemManagerUpdate, WithoutASignalHandlerNothingHappensAtAll) {
    DefaultItemManager deaf(session.get(), nullptr);
    deaf.CreateItem(NewHandle("A:2"));
    deaf.update(UDMProfileUpdate::OfDeletion(UDMUID("A:2")));
    deaf.update(UDMProfileUpdate::OfSession("session-1"));
    deaf.update(UDMProfileUpdate::OfHandle(Code(5), NewHandle("A:3")));
    Items items;
    EXPECT_EQ(deaf.GetAllItemsInCache(items), 1u);
    EXPECT_EQ(items.front()->GetUID(), "A:2");
}

TEST_F(ItemManagerUpdate, TheHistoryManagerFollowsNoRevision) {
    HistoryItemManager history(session.get(), &signals);
    history.CreateItem(NewHandle("A:2"));
    history.update(UDMProfileUpdate::OfHandle(Code(5), NewHandle("A:3")));
    EXPECT_THAT(spy.log, IsEmpty());
    history.update(UDMProfileUpdate::OfHandle(Code(3), NewHandle("A:2")));
    EXPECT_THAT(spy.log, ElementsAre("ItemUpdated A:2"));
}

}  // namespace
}  // namespace kxct::test
