// The maker and keeper of items.
//
// The model. Whoever needs an item asks a manager for it, by handle, by UID or by what it groups.
// The manager keeps every item in a cache by UID, so that one entity of the repository is one
// object as long as it stays cached. Connected to the session, it hears of changes in the
// repository and does two things on each: it brings the cache into line, and it raises the signals
// of a SignalHandler. It also computes what a tree view must show (GetStructure).
//
// What lives how long. ClearCache() and the end of the session (code 34) delete all cached items.
// An item that a single update drops from the cache is not deleted, ever: a listener may have its
// pointer. Such items stay readable and allocated for the life of the process, and so does an item
// that was made for a UID which the cache has an item for already.
//
// What an update does (all others: nothing; without a signal handler: nothing at all):
//
//     code            cache                               signal
//     34              cleared, session forgotten          SessionClosed, first
//     5               item follows to the new revision    ItemUpdated
//     39              old item dropped, new one made      ItemDeleted, ItemCreated, then
//                                                         ItemStructureUpdated of each parent
//     3, 10           -                                   ItemUpdated
//     44              item dropped, after the signal      ItemDeleted
//     35, 40, 42      -                                   ItemStructureUpdated
//     36, 41, 43      -                                   ChildRemoved
//     12              child dropped, after the signal     ItemStructureUpdated of the parent
//
// Ownership: the controller owns managers; a manager owns its items, and neither session nor signal
// handler. Errors: connecting and cache look-ups answer false; an update lets exceptions of the
// session and of listeners pass to the runtime. Threads: nothing is locked; updates run on the
// thread that the runtime delivers them on, and callers keep to that thread.
#pragma once

#include <kxct/kxct_export.h>
#include <kxctinterfaces/Item.h>
#include <kxudm/UDMProfileUpdate.h>

#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <utility>

namespace kxudm {
class UDMClassification;
class UDMContentDefinition;
class UDMUID;
}  // namespace kxudm

namespace kxct {

class Cache;
class SignalHandler;
class UDMDBCtrl;
class UDMKXCTSlot;

class KXCT_EXPORT ItemManager {
  public:
    // (parent, child)
    using RelationList = kxStlVector<std::pair<Item*, Item*>>;

    ItemManager(UDMDBCtrl* session, SignalHandler* signals);
    // A copy works on the same session and signal handler with an empty cache of its own, and is
    // not connected: items know the manager that made them and stay with it. Moving is copying.
    ItemManager(const ItemManager& other);
    ItemManager& operator=(const ItemManager& other);

    // The order of the virtual operations is part of the binary interface.

    // Disconnects and deletes all items.
    virtual ~ItemManager();

    // The item for each kind of thing; null from a manager that has no items of that kind. Asking
    // for a handle that is cached gives the cached item and makes nothing; an empty handle, null.
    virtual Item* CreateItem(Item* parent, HistoryCategory category);
    virtual Item* CreateItem(const kxString& first, const kxString& second);
    virtual Item* CreateItem(Item* parent, const kxString& name);
    virtual Item* CreateItem(kxStlVector<Item*>& items,
                             kxStlVector<kxString> attributes,
                             const kxString& name);
    virtual Item* CreateItem(const kxudm::UDMUID& uid);
    virtual Item* CreateItem(const kxudm::UDMItemHandle& handle);
    virtual Item* CreateItem(const boost::shared_ptr<kxudm::UDMClassification>& classification);
    virtual Item* CreateItem(const boost::shared_ptr<kxudm::UDMContentDefinition>& definition);

    // Whether the UID of the handle is cached, and by which item. Managers of contents also see to
    // it that the item stands at that UID.
    virtual bool GetFromCache(const kxudm::UDMItemHandle& handle, Item*& item);

    // Replaces `items` by all cached items, ordered by UID; the result is their number.
    virtual size_t GetAllItemsInCache(kxStlVector<Item*>& items);

    // Lets the item of the previous revision follow to this one. False if neither is cached.
    virtual bool UpdateItem(const kxudm::UDMItemHandle& handle, Item*& item);

    // What a view must add and remove to show `items`. The output lists are appended to; the result
    // is the size of `newItems`. With `onDemand` one level, with a ghost for children not fetched
    // yet; it goes by, and moves on, the render state of the items. Without it the whole tree
    // below, as deep as it goes: nothing guards against cycles in the repository. `group` then
    // first groups `items` by the values of `attributes` into a tree of ViewItems, or without
    // attributes puts revisions of one content under a NoRevItem. `moreExpected` is set to true
    // where the result left something for another pass. Catches nothing.
    virtual size_t GetStructure(const kxStlVector<Item*>& items,
                                const kxStlVector<kxString>& attributes,
                                const ItemFilterList& filters,
                                kxStlVector<Item*>& newItems,
                                kxStlVector<Item*>& deletedItems,
                                RelationList& newRelations,
                                RelationList& deletedRelations,
                                const ChildFilterMap& hideMap,
                                const ChildFilterMap& filterMap,
                                bool& moreExpected,
                                bool group,
                                bool onDemand);
    virtual size_t GetStructure(const kxStlVector<Item*>& items,
                                const ItemFilterList& filters,
                                kxStlVector<Item*>& newItems,
                                kxStlVector<Item*>& deletedItems,
                                RelationList& newRelations,
                                RelationList& deletedRelations,
                                const ChildFilterMap& hideMap,
                                const ChildFilterMap& filterMap,
                                bool& moreExpected,
                                bool group,
                                bool onDemand);

    // Replaces `items` by the items of the handles; `handles` points to a
    // kxStlVector<kxudm::UDMItemHandle>.
    virtual void ToItems(void* handles, kxStlVector<Item*>& items) = 0;

    // Takes one change of the repository; see the table above.
    virtual void update(kxudm::UDMProfileUpdate update);

  protected:
    virtual size_t _GetStructure(const kxStlVector<Item*>& items,
                                 const ItemFilterList& filters,
                                 kxStlVector<Item*>& newItems,
                                 kxStlVector<Item*>& deletedItems,
                                 RelationList& newRelations,
                                 RelationList& deletedRelations,
                                 const ChildFilterMap& hideMap,
                                 const ChildFilterMap& filterMap,
                                 bool& moreExpected);
    virtual size_t _GetStructureRecursively(const kxStlVector<Item*>& items,
                                            const ItemFilterList& filters,
                                            kxStlVector<Item*>& newItems,
                                            kxStlVector<Item*>& deletedItems,
                                            RelationList& newRelations,
                                            RelationList& deletedRelations,
                                            const ChildFilterMap& hideMap,
                                            const ChildFilterMap& filterMap,
                                            bool& moreExpected);
    virtual size_t _GroupRevisions(const kxStlVector<Item*>& items,
                                   kxStlVector<Item*>& newItems,
                                   RelationList& newRelations);

  public:
    // Deletes all items, the ghost too. Raises no signal.
    void ClearCache();

    // Starts to listen to the session, and takes `signals` if there is no signal handler yet. False
    // if already connected, without a session, or if the runtime refuses.
    bool connect(SignalHandler* signals);
    bool disconnect();

  protected:
    // The manager's ghost, made on first use.
    Item* GetGhost();
    // One more ghost, which belongs to the caller.
    Item* _CreateGhostItem();

    // Orders values by what they hold and not by their address.
    struct ptr_less {
        bool operator()(const kxStlVector<kxVariant>* a, const kxStlVector<kxVariant>* b) const;
    };
    using GroupMap = std::map<const kxStlVector<kxVariant>*, Item*, ptr_less>;

    // Groups items into a tree of ViewItems by the values of `attributes`. An item whose values
    // equal those of an earlier one is left out. The result is the size of `newItems`.
    size_t _GroupByAttributes(const kxStlVector<Item*>& items,
                              kxStlVector<Item*>& newItems,
                              RelationList& newRelations,
                              const kxStlVector<kxString>& attributes);

    // The group for the first `levelIndex` + 1 of `values`, made with all groups above it where
    // `groups` lacks them. `groups` does not own its keys: each is made here and kept in `keys`.
    Item* _GetGroupingItem(const kxStlVector<kxString>& attributes,
                           const kxStlVector<kxVariant>& values,
                           size_t levelIndex,
                           GroupMap& groups,
                           std::deque<kxStlVector<kxVariant>>& keys,
                           kxStlVector<Item*>& newItems,
                           RelationList& newRelations);

    // What the cache has for the candidate's UID; the candidate itself if that was free.
    Item* _Cached(Item* candidate);

    // Owned.
    Cache* m_cache;
    UDMDBCtrl* m_session;
    boost::shared_ptr<UDMKXCTSlot> m_slot;
    // Not owned; null turns update off.
    SignalHandler* m_signals;
    bool m_connected = false;
    // Owned; null until needed.
    Item* m_ghost = nullptr;
    // How many items hang on the ghost in some view.
    int32_t m_ghostUsers = 0;

  private:
    void _DeleteItems();
    void _DropFromCache(const kxString& key);
    void _OnSessionClosed(const kxString& sessionId);
    void _OnReplaced(const kxudm::UDMItemHandle& handle, const kxString& uid);
    void _OnDeleted(const kxString& uid);
    void _OnChildRemoved(const kxudm::UDMItemHandle& parent, const kxudm::UDMItemHandle& child);
    void _OnChildDeleted(const kxudm::UDMItemHandle& parent, const kxudm::UDMItemHandle& child);
};

}  // namespace kxct
