#include <kxct/Cache.h>
#include <kxct/ItemImpl.h>
#include <kxudm/UDMItemHandle.h>

#include <iterator>
#include <utility>

namespace kxct {

Item* Cache::Add(const kxString& key, Item*& item) {
    return m_items.try_emplace(key, item).first->second;
}

Cache::Items::const_iterator Cache::_Search(const kxString& key) const {
    const auto end = m_items.end();
    if (m_items.empty() || m_items.rbegin()->first < key) {
        return end;
    }
    if (m_run.inOrder) {
        const auto next = std::next(m_run.last);
        if (next != end && next->first == key) {
            return m_run.last = next;
        }
        m_run.inOrder = false;
    }
    const auto found = m_items.find(key);
    if (found != end) {
        // Looking whether a run has begun costs, so not each time.
        if (m_run.known && ++m_run.searches % 8 == 0) {
            m_run.inOrder = std::next(m_run.last) == found;
        }
        m_run.last = found;
        m_run.known = true;
    }
    return found;
}

bool Cache::Find(const kxString& key, Item*& item) const {
    const auto found = _Search(key);
    if (found == m_items.end() || !found->second) {
        return false;
    }
    item = found->second;
    return true;
}

bool Cache::Get(Item* candidate, Item*& item) {
    kxString uid = candidate->GetUID();
    if (uid.empty()) {
        return true;
    }
    const size_t before = m_items.size();
    // New UIDs are greater than older ones.
    const auto entry = m_items.try_emplace(m_items.end(), std::move(uid), candidate);
    if (m_items.size() == before && entry->second) {
        item = entry->second;
        return true;
    }
    item = entry->second;
    return false;
}

bool Cache::Drop(const kxString& key) {
    m_run = Run();
    return m_items.erase(key) != 0;
}

void Cache::Clear() {
    for (const auto& [key, item] : m_items) {
        delete item;
    }
    m_run = Run();
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
        m_run = Run();
        m_items.erase(entry);
    }
    return true;
}

}  // namespace kxct
