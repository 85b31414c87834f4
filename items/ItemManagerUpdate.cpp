// ItemManager: what a change in the repository does to the cache and which signals it raises.
#include <kxct/Cache.h>
#include <kxct/ItemManager.h>
#include <kxct/SignalHandler.h>
#include <kxct/UDMDBCtrl.h>
#include <kxudm/UDMUID.h>

#include "items/Retired.h"

using kxudm::UDMItemHandle;
using kxudm::UDMProfileUpdate;

namespace kxct {

// By value: the form of the runtime's slots.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void ItemManager::update(UDMProfileUpdate update) {
    if (!m_signals) {
        return;
    }
    Item* item = nullptr;
    switch (update.GetOpCode()) {
        case kxudm::SIGNAL_SESSION_CLOSED:
            _OnSessionClosed(update.GetSessionId());
            break;
        case kxudm::SIGNAL_REVISION_ADVANCED:
            if (UpdateItem(update.GetUDMHandle(), item)) {
                m_signals->ItemUpdated.raise(item);
            }
            break;
        case kxudm::SIGNAL_REVISION_UNDONE:
            _OnReplaced(update.GetUDMHandle(), update.GetUID());
            break;
        case kxudm::SIGNAL_CONTENT_CHANGED:
        case kxudm::SIGNAL_STATE_CHANGED:
            if (GetFromCache(update.GetUDMHandle(), item)) {
                m_signals->ItemUpdated.raise(item);
            }
            break;
        case kxudm::SIGNAL_ENTITY_DELETED:
            _OnDeleted(update.GetUID());
            break;
        case kxudm::SIGNAL_CHILD_ADDED:
        case kxudm::SIGNAL_REFERENCE_ADDED:
        case kxudm::SIGNAL_CONTAINER_ENTERED:
            if (GetFromCache(update.GetUDMHandle(), item)) {
                m_signals->ItemStructureUpdated.raise(item);
            }
            break;
        case kxudm::SIGNAL_CHILD_REMOVED:
        case kxudm::SIGNAL_REFERENCE_REMOVED:
        case kxudm::SIGNAL_CONTAINER_LEFT:
            _OnChildRemoved(update.GetUDMHandle(), update.GetChild());
            break;
        case kxudm::SIGNAL_OWNED_CHILD_DELETED:
            _OnChildDeleted(update.GetUDMHandle(), update.GetChild());
            break;
    }
}

void ItemManager::_OnSessionClosed(const kxString& sessionId) {
    m_signals->SessionClosed.raise(sessionId);
    _DeleteItems();
    m_session = nullptr;
}

// The item of `uid` gives way to a new one, which its parents show from now on.
void ItemManager::_OnReplaced(const UDMItemHandle& handle, const kxString& uid) {
    Item* item = nullptr;
    if (!m_cache->Find(uid, item)) {
        return;
    }
    m_signals->ItemDeleted.raise(uid, item);
    _DropFromCache(uid);
    m_signals->ItemCreated.raise(nullptr, CreateItem(handle));
    // One list grows over the three rounds, so that a parent of an early round is told of again in
    // the later ones. Listeners count on that; it must stay.
    kxStlVector<UDMItemHandle> parents;
    for (const char* relation : {"category", "folder", "reference"}) {
        if (!m_session) {
            return;
        }
        m_session->GetParents(parents, handle, relation, false);
        for (const UDMItemHandle& parent : parents) {
            Item* parentItem = nullptr;
            if (GetFromCache(parent, parentItem)) {
                m_signals->ItemStructureUpdated.raise(parentItem);
            }
        }
    }
}

void ItemManager::_OnDeleted(const kxString& uid) {
    Item* item = nullptr;
    if (m_cache->Find(uid, item)) {
        m_signals->ItemDeleted.raise(uid, item);
        _DropFromCache(uid);
    }
}

void ItemManager::_OnChildRemoved(const UDMItemHandle& parent, const UDMItemHandle& child) {
    Item* parentItem = nullptr;
    Item* childItem = nullptr;
    if (GetFromCache(parent, parentItem) && GetFromCache(child, childItem)) {
        m_signals->ChildRemoved.raise(parentItem, childItem);
    }
}

void ItemManager::_OnChildDeleted(const UDMItemHandle& parent, const UDMItemHandle& child) {
    Item* parentItem = nullptr;
    Item* childItem = nullptr;
    if (GetFromCache(parent, parentItem) && GetFromCache(child, childItem)) {
        // Taken before the signal: a listener may clear the cache, and the child with it.
        const kxString uid = childItem->GetUID();
        m_signals->ItemStructureUpdated.raise(parentItem);
        _DropFromCache(uid);
    }
}

// Listeners may hold the item's pointer, so it is not deleted.
void ItemManager::_DropFromCache(const kxString& key) {
    Item* item = nullptr;
    if (m_cache->Find(key, item) && m_cache->Drop(key)) {
        RetireItem(item);
    }
}

}  // namespace kxct
