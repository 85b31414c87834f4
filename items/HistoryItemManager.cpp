#include <kxct/Cache.h>
#include <kxct/HistoryCategoryItem.h>
#include <kxct/HistoryItem.h>
#include <kxct/HistoryItemManager.h>
#include <kxct/UDMDBCtrl.h>
#include <kxudm/UDMHistoryNode.h>
#include <kxudm/UDMUID.h>

#include "items/Contained.h"

using kxudm::UDMItemHandle;

namespace kxct {

HistoryItemManager::HistoryItemManager(UDMDBCtrl* session, SignalHandler* signals)
    : ItemManager(session, signals) {}

Item* HistoryItemManager::CreateItem(const UDMItemHandle& handle) {
    return handle.Uid().empty() ? nullptr : _Cached(new HistoryItem(this, m_session, handle));
}

Item* HistoryItemManager::CreateItem(Item* parent, HistoryCategory category) {
    return _Cached(
        new HistoryCategoryItem(this, m_session, static_cast<HistoryItem*>(parent), category));
}

bool HistoryItemManager::GetFromCache(const UDMItemHandle& handle, Item*& item) {
    return Contained(false, [&] {
        const kxString& uid = handle.Uid();
        if (!m_cache->Find(uid, item)) {
            return false;
        }
        if (item->GetUID() == uid) {
            return true;
        }
        if (!m_session) {
            return false;
        }
        const UDMItemHandle fresh = m_session->GetUDMItemHandle(uid);
        if (auto* history = dynamic_cast<HistoryItem*>(item)) {
            history->SetItemHandle(fresh);
        }
        return true;
    });
}

void HistoryItemManager::ToItems(void* handles, kxStlVector<Item*>& items) {
    items.clear();
    for (const UDMItemHandle& handle : *static_cast<const kxStlVector<UDMItemHandle>*>(handles)) {
        items.push_back(CreateItem(handle));
        if (!m_session) {
            continue;
        }
        const auto root = m_session->GetHistory(handle);
        if (!root) {
            continue;
        }
        for (const auto& node : root->GetVersionList()) {
            const kxString key = node->GetBaseUID() + ":" + std::to_string(node->GetVersion());
            const UDMItemHandle version = m_session->GetUDMItemHandle(key);
            Item* item = nullptr;
            items.push_back(GetFromCache(version, item) ? item : CreateItem(version));
        }
    }
}

}  // namespace kxct
