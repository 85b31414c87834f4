#include <kxct/Cache.h>
#include <kxct/ItemImpl.h>
#include <kxudm/UDMItemHandle.h>

namespace kxct {

Item* Cache::Add(const kxString& key, Item*& item) {
    return m_items.try_emplace(key, item).first->second;
}

bool Cache::Find(const kxString& key, Item*& item) const {
    const auto found = m_items.find(key);
    if (found == m_items.end() || !found->second) {
        return false;
    }
    item = found->second;
    return true;
}

bool Cache::Get(Item* candidate, Item*& item) {
    const kxString uid = candidate->GetUID();
    if (uid.empty()) {
        return true;
    }
    const auto [entry, added] = m_items.try_emplace(uid, candidate);
    if (!added && entry->second) {
        item = entry->second;
        return true;
    }
    item = entry->second;
    return false;
}

bool Cache::Drop(const kxString& key) {
    return m_items.erase(key) != 0;
}

void Cache::Clear() {
    for (const auto& [key, item] : m_items) {
        delete item;
    }
    m_items.clear();
}

size_t Cache::GetAll(kxStlVector<Item*>& items) const {
    items.clear();
    items.reserve(m_items.size());
    for (const auto& [key, item] : m_items) {
        if (item) {
            items.push_back(item);
        }
    }
    return items.size();
}

bool Cache::Update(const kxString& oldKey, const kxudm::UDMItemHandle& handle, Item*& item) {
    if (!Find(oldKey, item)) {
        return false;
    }
    if (handle.Uid() != oldKey) {
        Add(handle.Uid(), item);
        Drop(oldKey);
    }
    return true;
}

bool Cache::Update(const kxString& oldKey, Item* item, const kxString& newKey, Item* other) {
    const auto entry = m_items.find(oldKey);
    if (entry == m_items.end()) {
        return false;
    }
    *static_cast<ItemImpl*>(item) = *static_cast<const ItemImpl*>(other);
    if (newKey != oldKey) {
        Add(newKey, item);
        m_items.erase(entry);
    }
    return true;
}

}  // namespace kxct
