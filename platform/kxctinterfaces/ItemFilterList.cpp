#include <kxctinterfaces/ItemFilterList.h>

namespace kxct {

void ItemFilterList::Add(const kxString& parentType,
                         const kxString& group,
                         const kxString& childType,
                         const kxString& expression) {
    for (Filter& filter : _filters) {
        if (filter.parentType == parentType && filter.group == group) {
            filter.childType = childType;
            filter.expression = expression;
            return;
        }
    }
    _filters.push_back(Filter{parentType, group, childType, expression});
}

void ItemFilterList::Clear() {
    _filters.clear();
}

size_t ItemFilterList::size() const {
    return _filters.size();
}

kxStlSet<kxString> ItemFilterList::GetParentTypes() const {
    kxStlSet<kxString> types;
    for (const Filter& filter : _filters) {
        types.insert(filter.parentType);
    }
    return types;
}

// Both texts by value: the interface's form, which hosts link against.
// NOLINTBEGIN(performance-unnecessary-value-param)
void ItemFilterList::GetChildQueryExpr(kxString& childType,
                                       kxString& expression,
                                       kxString parentType,
                                       kxString group) const {
    // NOLINTEND(performance-unnecessary-value-param)
    const Filter* filter = _Find(parentType, group);
    if (!filter) {
        filter = _Find(parentType, kxString());
    }
    if (!filter) {
        childType.clear();
        expression.clear();
        return;
    }
    childType = filter->childType;
    expression = filter->expression;
}

const ItemFilterList::Filter* ItemFilterList::_Find(const kxString& parentType,
                                                    const kxString& group) const {
    for (const Filter& filter : _filters) {
        if (filter.parentType == parentType && filter.group == group) {
            return &filter;
        }
    }
    return nullptr;
}

}  // namespace kxct
