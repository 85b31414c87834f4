// The order of the managers' virtual operations and of the signals is part of the binary interface.
// See the same test of the interfaces for how a slot is read.
#include <algorithm>
#include <cstring>
#include <functional>

#include "tests/items/Fixture.h"

namespace kxct::test {
namespace {

template <class Member>
size_t SlotOf(Member member) {
    std::ptrdiff_t raw = 0;
    std::memcpy(&raw, &member, sizeof raw);
    return static_cast<size_t>(raw - 1) / sizeof(void*);
}

template <class Signature>
size_t As(Signature ItemManager::*member) {
    return SlotOf(member);
}

// A window into the protected part.
class Open : public ItemManager {
  public:
    static std::vector<size_t> ProtectedSlots() {
        return {SlotOf(&Open::_GetStructure),
                SlotOf(&Open::_GetStructureRecursively),
                SlotOf(&Open::_GroupRevisions)};
    }
};

TEST(SlotOrder, OfItemManager) {
    using M = ItemManager;
    using Maps = ChildFilterMap;
    using Relations = ItemManager::RelationList;
    std::vector<size_t> slots = {
        As<Item*(Item*, HistoryCategory)>(&M::CreateItem),
        As<Item*(const kxString&, const kxString&)>(&M::CreateItem),
        As<Item*(Item*, const kxString&)>(&M::CreateItem),
        As<Item*(Items&, Names, const kxString&)>(&M::CreateItem),
        As<Item*(const kxudm::UDMUID&)>(&M::CreateItem),
        As<Item*(const kxudm::UDMItemHandle&)>(&M::CreateItem),
        As<Item*(const boost::shared_ptr<kxudm::UDMClassification>&)>(&M::CreateItem),
        As<Item*(const boost::shared_ptr<kxudm::UDMContentDefinition>&)>(&M::CreateItem),
        SlotOf(&M::GetFromCache),
        SlotOf(&M::GetAllItemsInCache),
        SlotOf(&M::UpdateItem),
        As<size_t(const Items&,
                  const Names&,
                  const ItemFilterList&,
                  Items&,
                  Items&,
                  Relations&,
                  Relations&,
                  const Maps&,
                  const Maps&,
                  bool&,
                  bool,
                  bool)>(&M::GetStructure),
        As<size_t(const Items&,
                  const ItemFilterList&,
                  Items&,
                  Items&,
                  Relations&,
                  Relations&,
                  const Maps&,
                  const Maps&,
                  bool&,
                  bool,
                  bool)>(&M::GetStructure),
        SlotOf(&M::ToItems),
        SlotOf(&M::update),
    };
    for (const size_t slot : Open::ProtectedSlots()) {
        slots.push_back(slot);
    }
    // The destructor comes first and takes two slots.
    size_t expected = 2;
    for (const size_t slot : slots) {
        EXPECT_EQ(slot, expected);
        ++expected;
    }
}

TEST(SlotOrder, OfSignals) {
    const SignalHandler s;
    const void* const order[] = {&s.ViewInitialized,
                                 &s.ItemUpdated,
                                 &s.ItemStructureUpdated,
                                 &s.SessionClosed,
                                 &s.ItemMetadataUpdated,
                                 &s.Signal5Reserved,
                                 &s.ItemDeleted,
                                 &s.Signal7Reserved,
                                 &s.Signal8Reserved,
                                 &s.ChildAdded,
                                 &s.ChildRemoved,
                                 &s.SelectionChanged,
                                 &s.ItemCreated};
    EXPECT_TRUE(std::is_sorted(std::begin(order), std::end(order), std::less<>()));
    EXPECT_EQ(sizeof(SignalHandler), 13 * sizeof(s.ItemUpdated));
}

TEST(SignalHandler, CostsNothingUntilSomebodyConnects) {
    const SignalHandler signals;
    signals.ItemUpdated.raise(nullptr);
    signals.SelectionChanged.raise("view", kxVariant(1));
    EXPECT_TRUE(signals.ItemUpdated.IsEmpty());
    EXPECT_TRUE(signals.SelectionChanged.IsEmpty());
}

}  // namespace
}  // namespace kxct::test
