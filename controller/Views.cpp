// Content definitions, structure requests and the settings that they follow.
#include <kxct/ControllerImpl.h>
#include <kxct/ItemManager.h>
#include <kxct/UDMDBCtrl.h>

namespace kxct {

const kxStlVector<kxString> ControllerImpl::GetContentDefinitionNames() {
    try {
        return IsDBValid() ? _dbCtrl->GetContentDefinitionNames() : kxStlVector<kxString>();
    } catch (const std::exception&) {
        return {};
    }
}

size_t ControllerImpl::GetContentDefinitionMetadata(const kxString& definition,
                                                    kxStlVector<Metadata>& metadata) {
    try {
        return IsDBValid() ? _dbCtrl->GetContentDefinitionMetadata(definition, metadata) : 0;
    } catch (const std::exception&) {
        return 0;
    }
}

// These two go to the session without asking whether there is one, unlike their neighbours. That
// difference is part of the interface.
bool ControllerImpl::UpdateContentDefinition(const kxString& definition,
                                             kxStlVector<Metadata>& metadata) {
    try {
        return _dbCtrl->UpdateContentDefinition(definition, metadata);
    } catch (const std::exception&) {
        return false;
    }
}

bool ControllerImpl::UpdateContentDefinition(const kxString& definition) {
    try {
        return _dbCtrl->UpdateContentDefinition(definition);
    } catch (const std::exception&) {
        return false;
    }
}

size_t ControllerImpl::GetStructure(const ManagerType& type,
                                    const kxStlVector<Item*>& items,
                                    kxStlVector<Item*>& newItems,
                                    kxStlVector<Item*>& deletedItems,
                                    kxStlVector<std::pair<Item*, Item*>>& newRelations,
                                    kxStlVector<std::pair<Item*, Item*>>& deletedRelations,
                                    bool& moreExpected,
                                    bool group) {
    constexpr bool kOnDemand = false;
    try {
        ItemManager* manager = _GetItemManager(type);
        if (manager == nullptr) {
            return 0;
        }
        if (!_groupByAttributes.empty()) {
            return manager->GetStructure(items,
                                         _groupByAttributes,
                                         _childFilters,
                                         newItems,
                                         deletedItems,
                                         newRelations,
                                         deletedRelations,
                                         _hideMap,
                                         _filterMap,
                                         moreExpected,
                                         group,
                                         kOnDemand);
        }
        return manager->GetStructure(items,
                                     _childFilters,
                                     newItems,
                                     deletedItems,
                                     newRelations,
                                     deletedRelations,
                                     _hideMap,
                                     _filterMap,
                                     moreExpected,
                                     group,
                                     kOnDemand);
    } catch (const std::exception&) {
        return 0;
    }
}

void ControllerImpl::SetFilterMap(const ChildFilterMap& map) {
    if (&map != &_filterMap) {
        _filterMap = map;
    }
}

const ChildFilterMap ControllerImpl::GetFilterMap() const {
    return _filterMap;
}

void ControllerImpl::SetHideMap(const ChildFilterMap& map) {
    if (&map != &_hideMap) {
        _hideMap = map;
    }
}

const ChildFilterMap ControllerImpl::GetHideMap() const {
    return _hideMap;
}

void ControllerImpl::SetFilterMapForChildren(const ItemFilterList& filters) {
    _childFilters = filters;
}

const ItemFilterList ControllerImpl::GetFilterMapForChildren() const {
    return _childFilters;
}

void ControllerImpl::SetGroupByAttributes(const kxStlVector<kxString>& attributes) {
    if (&attributes != &_groupByAttributes) {
        _groupByAttributes = attributes;
    }
}

const kxStlVector<kxString> ControllerImpl::GetGroupByAttributes() const {
    return _groupByAttributes;
}

}  // namespace kxct
