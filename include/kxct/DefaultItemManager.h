// The manager of the content tree: contents, their groups, contents without revision, views.
//
// CreateItem of a handle is the hot path of the whole library: a cached handle costs one look-up in
// an ordered map and allocates nothing. See ItemManager.h for the model.
#pragma once

#include <kxct/ItemManager.h>

namespace kxct {

class KXCT_EXPORT DefaultItemManager : public ItemManager {
  public:
    using ItemManager::CreateItem;

    DefaultItemManager(UDMDBCtrl* session, SignalHandler* signals);
    ~DefaultItemManager() override = default;

    // The group `name` of a content.
    Item* CreateItem(Item* parent, const kxString& name) override;
    // A view over items. Each call makes a new one.
    Item* CreateItem(kxStlVector<Item*>& items,
                     kxStlVector<kxString> attributes,
                     const kxString& name) override;
    // A content without revision.
    Item* CreateItem(const kxudm::UDMUID& uid) override;
    // A content.
    Item* CreateItem(const kxudm::UDMItemHandle& handle) override;

    bool GetFromCache(const kxudm::UDMItemHandle& handle, Item*& item) override;
    bool UpdateItem(const kxudm::UDMItemHandle& handle, Item*& item) override;
    void ToItems(void* handles, kxStlVector<Item*>& items) override;
};

}  // namespace kxct
