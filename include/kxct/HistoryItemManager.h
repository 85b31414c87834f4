// The manager of the history tree: history items and their categories.
//
// The controller never connects it, so nothing in this tree changes after it was made, until the
// cache is cleared. See ItemManager.h for the model.
#pragma once

#include <kxct/ItemManager.h>

namespace kxct {

class KXCT_EXPORT HistoryItemManager : public ItemManager {
  public:
    using ItemManager::CreateItem;

    HistoryItemManager(UDMDBCtrl* session, SignalHandler* signals);
    ~HistoryItemManager() override = default;

    // A category of a history item. Each call makes a new one.
    Item* CreateItem(Item* parent, HistoryCategory category) override;
    // A history item.
    Item* CreateItem(const kxudm::UDMItemHandle& handle) override;

    bool GetFromCache(const kxudm::UDMItemHandle& handle, Item*& item) override;
    // Each handle's item, followed by the items of all its versions.
    void ToItems(void* handles, kxStlVector<Item*>& items) override;
};

}  // namespace kxct
