// ContentItem: children and parents.
#include <kxct/ContentItem.h>
#include <kxct/ItemManager.h>
#include <kxct/KXCTException.h>
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/ItemFilterList.h>
#include <kxudm/UDMUID.h>

#include <algorithm>

#include "frwk/_private/Signature.h"
#include "items/Contained.h"

using kxudm::UDMItemHandle;

namespace kxct {

namespace {

bool Contains(const kxStlVector<kxString>& names, const kxString& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

// The expression that the children in a group must meet: the filter's type and expression together.
kxString ChildExpression(const ItemFilterList& filters,
                         const kxString& parentType,
                         const kxString& group) {
    kxString childType;
    kxString expression;
    filters.GetChildQueryExpr(childType, expression, parentType, group);
    if (childType.empty()) {
        return expression;
    }
    const kxString byType = "type == " + childType;
    return expression.empty() ? byType : kxString(byType + " && " + expression);
}

}  // namespace

size_t ContentItem::GetChildren(kxStlVector<Item*>& children) {
    if (!m_manager) {
        return 0;
    }
    return Contained<size_t>(0, [&] {
        _GetGroupItems(children, _GetGroupNames(false), nullptr);
        return children.size();
    });
}

size_t ContentItem::GetChildren(kxStlVector<Item*>& children, const kxString& group) {
    return GetChildren(children, group, kxString());
}

size_t ContentItem::GetChildren(kxStlVector<Item*>& children,
                                const kxString& group,
                                const kxString& queryExpression) {
    if (!m_manager || !m_session) {
        return 0;
    }
    return Contained<size_t>(0, [&] {
        kxStlVector<UDMItemHandle> handles;
        m_session->GetChildren(handles, GetItemHandle(), group, queryExpression);
        _AppendItems(children, handles);
        return children.size();
    });
}

size_t ContentItem::GetChildren(kxStlVector<Item*>& children,
                                const ChildFilterMap& hideMap,
                                const ChildFilterMap& filterMap,
                                const ItemFilterList& filters) {
    return _GetChildrenByMaps(children, hideMap, filterMap, &filters, __PRETTY_FUNCTION__);
}

size_t ContentItem::GetChildren(kxStlVector<Item*>& children,
                                const ChildFilterMap& hideMap,
                                const ChildFilterMap& filterMap) {
    return _GetChildrenByMaps(children, hideMap, filterMap, nullptr, __PRETTY_FUNCTION__);
}

size_t ContentItem::_GetChildrenByMaps(kxStlVector<Item*>& children,
                                       const ChildFilterMap& hideMap,
                                       const ChildFilterMap& filterMap,
                                       const ItemFilterList* filters,
                                       const char* where) {
    if (!m_manager) {
        return 0;
    }
    return Contained<size_t>(0, [&]() -> size_t {
        if (GetItemHandle().IsEmpty()) {
            return 0;
        }
        const kxString definition = m_handle.GetCdef();
        const kxStlVector<kxString> groups = _GetGroupNames(false);
        const auto hidden = hideMap.find(definition);
        if (hidden != hideMap.end()) {
            return _GetHiddenChildren(children, hidden->second, groups, filters, where);
        }
        const auto shown = filterMap.find(definition);
        return _GetGroupItems(
            children, groups, shown == filterMap.end() ? nullptr : &shown->second);
    });
}

// The children of each group of `hidden`, in its order, in place of the group items.
size_t ContentItem::_GetHiddenChildren(kxStlVector<Item*>& children,
                                       const kxStlVector<kxString>& hidden,
                                       const kxStlVector<kxString>& groups,
                                       const ItemFilterList* filters,
                                       const char* where) {
    const kxString parentType = GetType();
    size_t count = 0;
    for (const kxString& group : hidden) {
        if (!Contains(groups, group)) {
            ThrowKXCTException(
                SignatureText(where),
                "Group " + group + " not present in content definition " + m_handle.GetCdef());
        }
        kxStlVector<Item*> found;
        count += filters ? GetChildren(found, group, ChildExpression(*filters, parentType, group))
                         : GetChildren(found, group);
        children.insert(children.end(), found.begin(), found.end());
    }
    return count;
}

// The group items, in the definition's order; of those in `shown` only, unless that is null.
size_t ContentItem::_GetGroupItems(kxStlVector<Item*>& children,
                                   const kxStlVector<kxString>& groups,
                                   const kxStlVector<kxString>* shown) {
    size_t count = 0;
    for (const kxString& group : groups) {
        if (shown && !Contains(*shown, group)) {
            continue;
        }
        Item*& item = m_groups[group];
        if (!item) {
            item = m_manager->CreateItem(this, group);
        }
        children.push_back(item);
        ++count;
    }
    return count;
}

size_t ContentItem::GetNumChildren(const ChildFilterMap& hideMap,
                                   const ChildFilterMap& filterMap,
                                   const ItemFilterList& filters) {
    kxStlVector<Item*> children;
    return GetChildren(children, hideMap, filterMap, filters);
}

size_t ContentItem::GetNumChildren(const ChildFilterMap& hideMap, const ChildFilterMap& filterMap) {
    kxStlVector<Item*> children;
    return GetChildren(children, hideMap, filterMap);
}

size_t ContentItem::GetNumChildren(const kxString& group) {
    if (!m_session) {
        return 0;
    }
    return Contained<size_t>(
        0, [&] { return m_session->GetNChildren(GetItemHandle(), group, kxString()); });
}

size_t ContentItem::GetNumChildren() {
    return _GetGroupNames(false).size();
}

bool ContentItem::HasParent() {
    return !m_handle.IsEmpty() && m_handle.hasparent();
}

Item* ContentItem::GetParent(bool flag) {
    if (!m_manager || !m_session || !HasParent()) {
        return nullptr;
    }
    kxStlVector<UDMItemHandle> handles;
    m_session->GetParents(handles, m_handle, flag);
    return m_manager->CreateItem(handles.empty() ? UDMItemHandle() : handles.front());
}

size_t ContentItem::GetParents(kxStlVector<Item*>& parents, const kxString& relation, bool flag) {
    if (!m_manager || !m_session) {
        return 0;
    }
    return Contained<size_t>(0, [&] {
        kxStlVector<UDMItemHandle> handles;
        m_session->GetParents(handles, GetItemHandle(), relation, flag);
        _AppendItems(parents, handles);
        return parents.size();
    });
}

void ContentItem::_AppendItems(kxStlVector<Item*>& items,
                               const kxStlVector<UDMItemHandle>& handles) {
    items.reserve(items.size() + handles.size());
    for (const UDMItemHandle& handle : handles) {
        items.push_back(m_manager->CreateItem(handle));
    }
}

kxStlVector<kxString> ContentItem::_GetGroupNames(bool) const {
    kxStlVector<kxString> names;
    if (!m_session || m_handle.IsEmpty()) {
        return names;
    }
    const bool known = Contained(false, [&] {
        m_session->GetGroupNames(m_handle.GetCdef(), names);
        return true;
    });
    return known ? names : kxStlVector<kxString>();
}

kxStlMap<kxString, kxString> ContentItem::_GetAllowedChildCdefNames() const {
    kxStlMap<kxString, kxString> fileDefinitions;
    for (const kxString& group : _GetGroupNames(false)) {
        kxStlVector<kxString> allowed;
        m_session->GetAllowedChildCdefNames(m_handle.GetCdef(), allowed, group);
        for (const kxString& name : allowed) {
            if (name.rfind("UDMDS", 0) == 0) {
                fileDefinitions[group] = name;
            }
        }
    }
    return fileDefinitions;
}

}  // namespace kxct
