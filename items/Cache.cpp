#include <kxct/Cache.h>
#include <kxct/ItemImpl.h>
#include <kxudm/UDMItemHandle.h>

#include <algorithm>
#include <bit>
#include <functional>
#include <string_view>
#include <utility>

namespace kxct {

namespace {

size_t HashOf(std::string_view key) {
    return std::hash<std::string_view>()(key);
}

// The upper half of a hash; never 0, which stands for no entry.
uint32_t TagOf(size_t hash) {
    return static_cast<uint32_t>(hash >> 32) | 1;
}

}  // namespace

Item* Cache::Add(const kxString& key, Item*& item) {
    return m_items.try_emplace(key, item).first->second;
}

const Cache::Entry* Cache::_Search(const kxString& key) const {
    const size_t hash = HashOf(key);
    if (!m_shortcuts.buckets.empty()) {
        const Bucket& bucket = m_shortcuts.buckets[hash & (m_shortcuts.buckets.size() - 1)];
        for (const int i : {0, 1}) {
            if (bucket.tags[i] == TagOf(hash) && bucket.entries[i]->first == key) {
                return bucket.entries[i];
            }
        }
    }
    const auto found = m_items.find(key);
    if (found == m_items.end()) {
        return nullptr;
    }
    _Note(hash, *found);
    return &*found;
}

void Cache::_Note(size_t hash, const Entry& entry) const {
    auto& buckets = m_shortcuts.buckets;
    if (buckets.size() * 2 < m_items.size()) {
        buckets.assign(std::bit_ceil(std::max<size_t>(m_items.size(), 16)) / 2, Bucket());
    }
    Bucket& bucket = buckets[hash & (buckets.size() - 1)];
    const int i = bucket.tags[0] != 0 ? 1 : 0;
    bucket.tags[i] = TagOf(hash);
    bucket.entries[i] = &entry;
}

void Cache::_Erase(Items::iterator entry) {
    if (!m_shortcuts.buckets.empty()) {
        const size_t hash = HashOf(entry->first);
        Bucket& bucket = m_shortcuts.buckets[hash & (m_shortcuts.buckets.size() - 1)];
        for (const int i : {0, 1}) {
            if (bucket.entries[i] == &*entry) {
                bucket.tags[i] = 0;
            }
        }
    }
    m_items.erase(entry);
}

bool Cache::Find(const kxString& key, Item*& item) const {
    const Entry* found = _Search(key);
    if (!found || !found->second) {
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
    const auto entry = m_items.find(key);
    if (entry == m_items.end()) {
        return false;
    }
    _Erase(entry);
    return true;
}

void Cache::Clear() {
    for (const auto& [key, item] : m_items) {
        delete item;
    }
    m_shortcuts.buckets.clear();
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
        _Erase(entry);
    }
    return true;
}

}  // namespace kxct
