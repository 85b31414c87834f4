// The items of one manager by their UID text, in byte order.
//
// Ownership: only Clear() deletes items. The destructor, Drop() and the losers of Add() and Get()
// leave them alone, since somebody may still hold the pointer.
// Cost: each operation is one or two look-ups in an ordered map, a repeated one mostly a look at
// one bucket. Threads: the one of the manager.
#pragma once

#include <kxct/kxct_export.h>
#include <kxutl/kxStlMap.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace kxudm {
class UDMItemHandle;
}

namespace kxct {

class Item;

class KXCT_EXPORT Cache {
  public:
    // Enters `item` unless the key is there already. The result is what is stored afterwards.
    Item* Add(const kxString& key, Item*& item);

    // Whether the key has an item; `item` is left alone if not.
    bool Find(const kxString& key, Item*& item) const;

    // Enters `candidate` under its UID unless that is there already, and sets `item` to what is
    // stored. True if it was there. A candidate with an empty UID gives true as well, with `item`
    // left alone and nothing stored, so it must not come here unless `item` has a sensible value.
    bool Get(Item* candidate, Item*& item);

    // Takes the entry out, without deleting the item. False if there was none.
    bool Drop(const kxString& key);

    // Deletes all items, in the order of their keys.
    void Clear();

    // Replaces `items` by all items, in the order of their keys; the result is their number.
    size_t GetAll(kxStlVector<Item*>& items) const;

    // Moves an item from `oldKey` to the UID of `handle`, and sets `item` to it. False, with `item`
    // left alone, if the old key isn't there.
    bool Update(const kxString& oldKey, const kxudm::UDMItemHandle& handle, Item*& item);

    // Gives `item` the state of `other` and moves the entry from `oldKey` to `newKey`. An item that
    // stands under the new key already stays there. False if the old key isn't there.
    bool Update(const kxString& oldKey, Item* item, const kxString& newKey, Item* other);

  private:
    using Items = kxStlMap<kxString, Item*>;

    using Entry = Items::value_type;

    // Two entries whose keys have hashes that lead here, each with the rest of its hash.
    struct Bucket {
        uint32_t tags[2] = {};
        const Entry* entries[2] = {};
    };
    // Ways to entries that were searched for before. What is not here may still be in the map. A
    // copy begins empty.
    struct Shortcuts {
        Shortcuts() = default;
        Shortcuts(const Shortcuts&) {}
        Shortcuts& operator=(const Shortcuts&) {
            buckets.clear();
            return *this;
        }
        ~Shortcuts() = default;
        std::vector<Bucket> buckets;
    };

    const Entry* _Search(const kxString& key) const;
    void _Note(size_t hash, const Entry& entry) const;
    void _Erase(Items::iterator entry);

    Items m_items;
    mutable Shortcuts m_shortcuts;
};

}  // namespace kxct
