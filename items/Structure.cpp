// ItemManager: what a view must add and remove to show items.
#include <kxct/ItemManager.h>
#include <kxctinterfaces/ItemFilterList.h>

#include <deque>

namespace kxct {

size_t ItemManager::GetStructure(const kxStlVector<Item*>& items,
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
                                 bool onDemand) {
    if (group && !onDemand) {
        _GroupByAttributes(items, newItems, newRelations, attributes);
    }
    const auto walk =
        onDemand ? &ItemManager::_GetStructure : &ItemManager::_GetStructureRecursively;
    return (this->*walk)(items,
                         filters,
                         newItems,
                         deletedItems,
                         newRelations,
                         deletedRelations,
                         hideMap,
                         filterMap,
                         moreExpected);
}

size_t ItemManager::GetStructure(const kxStlVector<Item*>& items,
                                 const ItemFilterList& filters,
                                 kxStlVector<Item*>& newItems,
                                 kxStlVector<Item*>& deletedItems,
                                 RelationList& newRelations,
                                 RelationList& deletedRelations,
                                 const ChildFilterMap& hideMap,
                                 const ChildFilterMap& filterMap,
                                 bool& moreExpected,
                                 bool group,
                                 bool onDemand) {
    if (group && !onDemand) {
        _GroupRevisions(items, newItems, newRelations);
    }
    const auto walk =
        onDemand ? &ItemManager::_GetStructure : &ItemManager::_GetStructureRecursively;
    return (this->*walk)(items,
                         filters,
                         newItems,
                         deletedItems,
                         newRelations,
                         deletedRelations,
                         hideMap,
                         filterMap,
                         moreExpected);
}

size_t ItemManager::_GetStructure(const kxStlVector<Item*>& items,
                                  const ItemFilterList& filters,
                                  kxStlVector<Item*>& newItems,
                                  kxStlVector<Item*>& deletedItems,
                                  RelationList& newRelations,
                                  RelationList& deletedRelations,
                                  const ChildFilterMap& hideMap,
                                  const ChildFilterMap& filterMap,
                                  bool& moreExpected) {
    Item* const ghost = GetGhost();
    if (items.empty()) {
        return newItems.size();
    }
    const int32_t usersBefore = m_ghostUsers;
    const auto hangOnGhost = [&](Item* item) {
        newRelations.push_back({item, ghost});
        ++m_ghostUsers;
        item->SetRenderState(RENDER_GHOSTED);
    };
    // Not emptied from item to item: later items walk the earlier ones' children again. Views are
    // used to the repeated edges, so it must stay.
    kxStlVector<Item*> children;
    for (Item* item : items) {
        if (!item->HasChildren(hideMap, filterMap, filters)) {
            continue;
        }
        const ItemRenderState state = item->GetRenderState();
        if (state == RENDER_NONE) {
            hangOnGhost(item);
            continue;
        }
        if (state == RENDER_GHOSTED) {
            deletedRelations.push_back({item, ghost});
            --m_ghostUsers;
        }
        item->GetChildren(children, hideMap, filterMap, filters);
        for (Item* child : children) {
            newRelations.push_back({item, child});
            newItems.push_back(child);
            if (!child->HasChildren(hideMap, filterMap, filters)) {
                continue;
            }
            if (child->GetRenderState() == RENDER_NONE) {
                hangOnGhost(child);
            } else if (state == RENDER_GHOSTED) {
                moreExpected = true;
            }
        }
        if (state == RENDER_GHOSTED) {
            item->SetRenderState(RENDER_EXPANDED);
        }
    }
    if (m_ghostUsers != 0 && usersBefore == 0) {
        newItems.push_back(ghost);
    }
    if (m_ghostUsers == 0) {
        deletedItems.push_back(ghost);
    }
    return newItems.size();
}

size_t ItemManager::_GetStructureRecursively(const kxStlVector<Item*>& items,
                                             const ItemFilterList& filters,
                                             kxStlVector<Item*>& newItems,
                                             kxStlVector<Item*>&,
                                             RelationList& newRelations,
                                             RelationList&,
                                             const ChildFilterMap& hideMap,
                                             const ChildFilterMap& filterMap,
                                             bool& moreExpected) {
    std::deque<Item*> queue(items.begin(), items.end());
    kxStlVector<Item*> children;
    while (!queue.empty()) {
        Item* const item = queue.front();
        queue.pop_front();
        children.clear();
        if (item->GetChildren(children, hideMap, filterMap, filters) == 0) {
            continue;
        }
        for (Item* child : children) {
            newRelations.push_back({item, child});
            newItems.push_back(child);
            queue.push_back(child);
            moreExpected = true;
        }
        item->SetRenderState(RENDER_EXPANDED);
    }
    return newItems.size();
}

}  // namespace kxct
