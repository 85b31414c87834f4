// ItemManager: grouping items before their structure is computed.
#include <kxct/ItemManager.h>
#include <kxudm/UDMUID.h>

#include <algorithm>
#include <deque>
#include <map>

using kxudm::UDMUID;

namespace kxct {

using Values = kxStlVector<kxVariant>;

bool ItemManager::ptr_less::operator()(const Values* a, const Values* b) const {
    return std::lexicographical_compare(a->begin(), a->end(), b->begin(), b->end());
}

size_t ItemManager::_GroupRevisions(const kxStlVector<Item*>& items,
                                    kxStlVector<Item*>& newItems,
                                    RelationList& newRelations) {
    std::map<UDMUID, kxStlVector<Item*>> byContent;
    for (Item* item : items) {
        byContent[UDMUID(UDMUID(item->GetUID()).GetDmUid())].push_back(item);
    }
    for (const auto& [uid, revisions] : byContent) {
        if (revisions.size() < 2) {
            continue;
        }
        Item* const content = CreateItem(uid);
        newItems.push_back(content);
        for (Item* revision : revisions) {
            newRelations.push_back({content, revision});
        }
    }
    return newItems.size();
}

namespace {

struct Entry {
    const Values* values;
    Item* item;
};

// Splits sorted entries attribute by attribute, and hands each entry with the level of its group to
// `place`.
template <class Place>
class Splitter {
  public:
    Splitter(const kxStlVector<Entry>& entries, Place place) : _entries(entries), _place(place) {}

    // The entries from `first` up to but not including `last`, which agree in all attributes before
    // `depth`. Recursion is as deep as there are attributes.
    //
    // The levels look off by one and are required so: a single entry hangs two levels above the
    // attribute that told it apart, entries at the deepest level one above their own, and the last
    // attribute never gets a group.
    void Split(size_t first, size_t last, size_t depth) {
        if (last - first == 1) {
            _place(_entries[first], depth < 2 ? 0 : depth - 2);
            return;
        }
        bool hasParts = false;
        const auto split = [&](size_t from, size_t to) {
            if (depth + 1 < _entries[from].values->size()) {
                Split(from, to, depth + 1);
                hasParts = true;
            }
        };
        size_t start = first;
        for (size_t i = first + 1; i < last; ++i) {
            if (_ValueAt(i, depth) != _ValueAt(start, depth)) {
                split(start, i);
                start = i;
            }
        }
        if (start < last) {
            split(start, last);
        }
        if (!hasParts) {
            for (size_t i = first; i < last; ++i) {
                _place(_entries[i], depth < 1 ? 0 : depth - 1);
            }
        }
    }

  private:
    const kxVariant& _ValueAt(size_t entry, size_t depth) const {
        return (*_entries[entry].values)[depth];
    }

    const kxStlVector<Entry>& _entries;
    Place _place;
};

}  // namespace

size_t ItemManager::_GroupByAttributes(const kxStlVector<Item*>& items,
                                       kxStlVector<Item*>& newItems,
                                       RelationList& newRelations,
                                       const kxStlVector<kxString>& attributes) {
    if (attributes.empty()) {
        return newItems.size();
    }
    std::deque<Values> keys;
    std::map<const Values*, Item*, ptr_less> sorted;
    for (Item* item : items) {
        Values& values = keys.emplace_back();
        for (const kxString& name : attributes) {
            values.push_back(item->GetAttributeValue(name));
        }
        sorted.try_emplace(&values, item);
    }
    kxStlVector<Entry> entries;
    for (const auto& [values, item] : sorted) {
        entries.push_back(Entry{values, item});
    }
    GroupMap groups;
    Splitter splitter(entries, [&](const Entry& entry, size_t levelIndex) {
        Item* const group = _GetGroupingItem(
            attributes, *entry.values, levelIndex, groups, keys, newItems, newRelations);
        group->Add(entry.item, kxString());
        newRelations.push_back({group, entry.item});
    });
    splitter.Split(0, entries.size(), 0);
    return newItems.size();
}

Item* ItemManager::_GetGroupingItem(const kxStlVector<kxString>& attributes,
                                    const Values& values,
                                    size_t levelIndex,
                                    GroupMap& groups,
                                    std::deque<Values>& keys,
                                    kxStlVector<Item*>& newItems,
                                    RelationList& newRelations) {
    Item* parent = nullptr;
    Values prefix;
    kxStlVector<kxString> names;
    for (size_t level = 0; level <= levelIndex; ++level) {
        prefix.push_back(values[level]);
        names.push_back(attributes[level]);
        const auto known = groups.find(&prefix);
        if (known != groups.end()) {
            parent = known->second;
            continue;
        }
        kxStlVector<Item*> noItems;
        Item* const group = CreateItem(noItems, names, values[level].GetString());
        groups.emplace(&keys.emplace_back(prefix), group);
        newItems.push_back(group);
        if (parent) {
            parent->Add(group, kxString());
            newRelations.push_back({parent, group});
        }
        parent = group;
    }
    return parent;
}

}  // namespace kxct
