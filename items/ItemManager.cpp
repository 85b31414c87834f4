// ItemManager: life, cache and connection. Updates are in ItemManagerUpdate.cpp, structure in
// Structure.cpp and Grouping.cpp.
#include <kxct/Cache.h>
#include <kxct/GhostItem.h>
#include <kxct/ItemManager.h>
#include <kxct/UDMDBCtrl.h>
#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMDefinitionHandles.h>
#include <kxudm/UDMUID.h>

#include <memory>

#include "items/Contained.h"
#include "items/Retired.h"
#include "items/UDMKXCTSlot.h"

using kxudm::UDMItemHandle;
using kxudm::UDMUID;

namespace kxct {

ItemManager::ItemManager(UDMDBCtrl* session, SignalHandler* signals)
    : m_cache(new Cache), m_session(session), m_signals(signals) {}

ItemManager::ItemManager(const ItemManager& other)
    : ItemManager(other.m_session, other.m_signals) {}

ItemManager& ItemManager::operator=(const ItemManager& other) {
    if (this != &other) {
        disconnect();
        _DeleteItems();
        m_session = other.m_session;
        m_signals = other.m_signals;
    }
    return *this;
}

ItemManager::~ItemManager() {
    disconnect();
    _DeleteItems();
    delete m_cache;
}

Item* ItemManager::CreateItem(Item*, HistoryCategory) {
    return nullptr;
}

Item* ItemManager::CreateItem(const kxString&, const kxString&) {
    return nullptr;
}

Item* ItemManager::CreateItem(Item*, const kxString&) {
    return nullptr;
}

// By value: the interface's form, which hosts override.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
Item* ItemManager::CreateItem(kxStlVector<Item*>&, kxStlVector<kxString>, const kxString&) {
    return nullptr;
}

Item* ItemManager::CreateItem(const UDMUID&) {
    return nullptr;
}

Item* ItemManager::CreateItem(const UDMItemHandle&) {
    return nullptr;
}

Item* ItemManager::CreateItem(const boost::shared_ptr<kxudm::UDMClassification>&) {
    return nullptr;
}

Item* ItemManager::CreateItem(const boost::shared_ptr<kxudm::UDMContentDefinition>&) {
    return nullptr;
}

bool ItemManager::GetFromCache(const UDMItemHandle& handle, Item*& item) {
    return m_cache->Find(handle.Uid(), item);
}

size_t ItemManager::GetAllItemsInCache(kxStlVector<Item*>& items) {
    return m_cache->GetAll(items);
}

bool ItemManager::UpdateItem(const UDMItemHandle&, Item*&) {
    return false;
}

void ItemManager::ClearCache() {
    _DeleteItems();
}

void ItemManager::_DeleteItems() {
    m_cache->Clear();
    m_ghostUsers = 0;
    delete m_ghost;
    m_ghost = nullptr;
}

Item* ItemManager::GetGhost() {
    if (!m_ghost) {
        m_ghostUsers = 0;
        m_ghost = _CreateGhostItem();
    }
    return m_ghost;
}

Item* ItemManager::_CreateGhostItem() {
    return new GhostItem(this);
}

Item* ItemManager::_Cached(Item* candidate) {
    Item* item = nullptr;
    m_cache->Get(candidate, item);
    if (item != candidate) {
        RetireItem(candidate);
    }
    return item;
}

bool ItemManager::connect(SignalHandler* signals) {
    if (!m_signals) {
        m_signals = signals;
    }
    if (m_connected || !m_session) {
        return false;
    }
    m_connected = Contained(false, [&] {
        const auto profile = m_session->GetProfile();
        if (!profile) {
            return false;
        }
        if (!m_slot) {
            m_slot = boost::shared_ptr<UDMKXCTSlot>(new UDMKXCTSlot(this));
        }
        boost::shared_ptr<kxudm::IUDMProfileSlot> slot = m_slot;
        profile->Connect(slot);
        return true;
    });
    return m_connected;
}

bool ItemManager::disconnect() {
    if (!m_connected || !m_session || !m_slot) {
        return false;
    }
    m_connected = false;
    return Contained(false, [&] {
        const auto profile = m_session->GetProfile();
        if (!profile) {
            return false;
        }
        boost::shared_ptr<kxudm::IUDMProfileSlot> slot = m_slot;
        profile->Disconnect(slot);
        return true;
    });
}

}  // namespace kxct
