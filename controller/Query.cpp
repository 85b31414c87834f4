// Queries with older versions and the filter walk, and history.
#include <kxct/ControllerImpl.h>
#include <kxct/ItemManager.h>
#include <kxct/UDMDBCtrl.h>
#include <kxudm/UDMItemHandle.h>
#include <kxudm/UDMQuerySettings.h>

#include <algorithm>

namespace kxct {

namespace {

kxudm::UDMQuerySettingHandle SettingsFor(bool ignoreCase) {
    kxudm::UDMQuerySettingHandle settings;
    settings.GetSettings().SearchInExcluded(true);
    settings.GetSettings().SetIgnoreCase(ignoreCase);
    return settings;
}

// Appends to `hits` the older versions of each of them, at most `versions` a hit, 0 for all.
void AppendVersions(UDMDBCtrl& session, int versions, kxStlVector<kxudm::UDMItemHandle>& hits) {
    kxStlVector<kxudm::UDMItemHandle> older;
    for (const kxudm::UDMItemHandle& hit : hits) {
        kxStlVector<kxudm::UDMItemHandle> lineage;
        session.GetLineage(hit, HISTORY_VERSIONS, lineage);
        size_t count = lineage.size();
        if (versions >= 1) {
            count = std::min(count, static_cast<size_t>(versions));
        }
        older.insert(
            older.end(), lineage.begin(), lineage.begin() + static_cast<std::ptrdiff_t>(count));
    }
    hits.insert(hits.end(), older.begin(), older.end());
}

// A manager replaces the list that it is given; a query adds to its caller's.
void AppendItems(ItemManager& manager,
                 kxStlVector<kxudm::UDMItemHandle>& handles,
                 kxStlVector<Item*>& items) {
    kxStlVector<Item*> found;
    manager.ToItems(&handles, found);
    items.insert(items.end(), found.begin(), found.end());
}

}  // namespace

size_t ControllerImpl::Query(const kxString& query,
                             kxStlVector<kxString>& uids,
                             const int& versions,
                             const QueryMode& mode,
                             long a,
                             long b,
                             bool c,
                             bool ignoreCase) {
    kxStlVector<Item*> items;
    const size_t count = Query(query, items, MANAGER_DEFAULT, versions, mode, a, b, c, ignoreCase);
    for (Item* item : items) {
        if (item != nullptr) {
            uids.push_back(item->GetUID());
        }
    }
    return count;
}

size_t ControllerImpl::Query(const kxString& query,
                             kxStlVector<Item*>& items,
                             const int& versions,
                             const QueryMode& mode,
                             long a,
                             long b,
                             bool c,
                             bool ignoreCase) {
    return Query(query, items, MANAGER_DEFAULT, versions, mode, a, b, c, ignoreCase);
}

size_t ControllerImpl::Query(const kxString& query,
                             kxStlVector<Item*>& items,
                             const ManagerType& type,
                             const int& versions,
                             const QueryMode& mode,
                             long a,
                             long b,
                             bool c,
                             bool ignoreCase) {
    try {
        bool done = false;
        if (mode == QUERY_ATTRIBUTES) {
            done = _ExecQuery(query, &items, type, versions, a, b, c, ignoreCase);
        } else if (mode >= QUERY_FULLTEXT_ALL && mode <= QUERY_FULLTEXT_PHRASE) {
            done = _ExecQueryFullText(query, mode, &items, type, a, b, c, ignoreCase);
        }
        if (!done) {
            return 0;
        }
        if (_childFilters.size() != 0) {
            _DropBarrenItems(items);
        }
        return items.size();
    } catch (const std::exception&) {
        return 0;
    }
}

// Takes out the items that could have children under the child filters and have none. Where asking
// one fails, those before it are thinned out and the rest stays.
void ControllerImpl::_DropBarrenItems(kxStlVector<Item*>& items) {
    size_t kept = 0;
    size_t next = 0;
    const auto closeGap = [&] {
        items.erase(items.begin() + static_cast<std::ptrdiff_t>(kept),
                    items.begin() + static_cast<std::ptrdiff_t>(next));
    };
    try {
        for (; next < items.size(); ++next) {
            Item* item = items[next];
            const bool isBarren = item != nullptr &&
                                  _childFilters.GetParentTypes().count(item->GetType()) != 0 &&
                                  !item->HasChildren(_hideMap, _filterMap, _childFilters);
            if (!isBarren) {
                items[kept++] = item;
            }
        }
    } catch (...) {
        closeGap();
        throw;
    }
    closeGap();
}

bool ControllerImpl::_ExecQuery(const kxString& query,
                                kxStlVector<Item*>* items,
                                const ManagerType& type,
                                const int& versions,
                                long a,
                                long b,
                                bool c,
                                bool ignoreCase) {
    try {
        ItemManager* manager = _GetItemManager(type);
        if (manager == nullptr || !IsDBValid()) {
            return false;
        }
        kxudm::UDMQuerySettingHandle settings = SettingsFor(ignoreCase);
        kxStlVector<kxudm::UDMItemHandle> hits;
        _dbCtrl->ExecQuery(query, settings, hits, a, b, c);
        if (versions >= 0) {
            AppendVersions(*_dbCtrl, versions, hits);
        }
        AppendItems(*manager, hits, *items);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool ControllerImpl::_ExecQueryFullText(const kxString& query,
                                        int mode,
                                        kxStlVector<Item*>* items,
                                        const ManagerType& type,
                                        long a,
                                        long b,
                                        bool c,
                                        bool ignoreCase) {
    try {
        ItemManager* manager = _GetItemManager(type);
        if (manager == nullptr || !IsDBValid()) {
            return false;
        }
        kxudm::UDMQuerySettingHandle settings = SettingsFor(ignoreCase);
        kxStlVector<kxudm::UDMItemHandle> hits;
        _dbCtrl->ExecQueryFullText(query, mode, settings, hits, a, b, c);
        AppendItems(*manager, hits, *items);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

size_t ControllerImpl::GetHistory(const kxStlVector<kxString>& uids, kxStlVector<Item*>& items) {
    try {
        kxStlVector<kxudm::UDMItemHandle> handles;
        if (!IsDBValid() || !_dbCtrl->GetUDMItemHandleList(handles, uids) || handles.empty()) {
            return 0;
        }
        ItemManager* manager = _GetItemManager(MANAGER_HISTORY);
        if (manager == nullptr) {
            return 0;
        }
        manager->ToItems(&handles, items);
        return items.size();
    } catch (const std::exception&) {
        return 0;
    }
}

}  // namespace kxct
