// ContentItem: identity and attributes.
#include <kxct/ContentItem.h>
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Attributes.h>
#include <kxudm/UDMDefinitionHandles.h>

#include <algorithm>
#include <exception>

#include "items/Contained.h"
#include "items/Definitions.h"
#include "items/HandleValue.h"

using kxudm::UDMAttributeDefinitionHandle;
using kxudm::UDMItemHandle;

namespace kxct {

namespace {

// One property of an attribute, as its definition has it.
kxVariant Describe(const UDMAttributeDefinitionHandle& definition, const kxString& property) {
    using namespace ATTRIBUTE_DEFINITION;
    if (property == ISEDITABLE) {
        return kxVariant(definition.IsEditable());
    }
    if (property == ISDISPLAYABLE) {
        return kxVariant(definition.IsDisplayable());
    }
    if (property == ISMANDATORY) {
        return kxVariant(definition.IsMandatory());
    }
    if (property == ISSYSTEM) {
        return kxVariant(definition.IsSystem());
    }
    if (property == CATEGORY) {
        return kxVariant(definition.GetCategory());
    }
    if (property == TYPE) {
        return kxVariant(definition.GetDataType());
    }
    if (property == DESCRIPTION) {
        return kxVariant(definition.GetDescription());
    }
    if (property == DISPLAYNAME) {
        return kxVariant(definition.GetDisplayName());
    }
    if (property == VALIDVALUES) {
        kxStlVector<kxString> values;
        return definition.GetStaticValidValues(values) ? kxVariant(values) : kxVariant();
    }
    if (property == HASDEPENDENCIES) {
        return kxVariant(false);
    }
    return kxVariant();
}

}  // namespace

ContentItem::ContentItem(ItemManager* manager, UDMDBCtrl* session, const UDMItemHandle& handle)
    : ItemImpl(manager, session, handle.Uid()) {
    m_handle = handle;
}

const kxString& ContentItem::IsA() {
    static const kxString name("ContentItem");
    return name;
}

kxString ContentItem::GetUID() const {
    return m_handle.GetUID();
}

void ContentItem::SetItemHandle(const UDMItemHandle& handle) {
    m_handle = handle;
}

kxString ContentItem::GetDisplayName() const {
    return m_handle.IsEmpty() ? kxString() : m_handle.GetDisplayName();
}

bool ContentItem::IsEditable() {
    return !m_handle.IsEmpty() && m_handle.IsEditable();
}

bool ContentItem::IsAttributeEditable(const kxString&) {
    return IsEditable();
}

bool ContentItem::SetAttributeValue(const kxString& attribute, kxVariant& value) {
    // The text of a pointer stands for nothing once the program has ended.
    const bool pointer = value.GetKind() == kxVariant::POINTER;
    if (!m_session || (pointer && attribute == ATTRIBUTE_NAME::LABEL)) {
        return false;
    }
    return Contained(false, [&] {
        const UDMItemHandle handle = GetItemHandle();
        if (attribute == ATTRIBUTE_NAME::LABEL) {
            m_session->SetDisplayName(value.GetString(), handle);
        } else {
            m_session->SetMetaData(handle, attribute, value);
        }
        return true;
    });
}

kxVariant ContentItem::GetAttributeValue(const kxString& attribute) const {
    const UDMItemHandle& handle = _Handle();
    if (handle.IsEmpty()) {
        return kxVariant();
    }
    return ValueOf(
        handle, attribute, [&] { return _GetIcon(); }, [&] { return _GetDefinitionName(); });
}

// The pictures come in pairs: the even number stands for read-only, the odd one for editable.
kxVariant ContentItem::_GetIcon() const {
    const kxString type = _GetDefinitionName();
    int icon = 6;
    if (type == "Foldertype") {
        icon = 0;
    } else if (type == "Categories") {
        icon = 2;
    } else if (type == "UDMCTEntityCollector") {
        icon = 4;
    }
    const bool editable = const_cast<ContentItem*>(this)->IsEditable();
    return kxVariant(editable ? icon + 1 : icon);
}

kxVariant ContentItem::GetAttributeDescription(const kxString& attribute,
                                               const kxString& property) const {
    const UDMItemHandle& handle = _Handle();
    if (!m_session || handle.IsEmpty()) {
        return kxVariant();
    }
    if (attribute == ATTRIBUTE_NAME::CONTENTDEFINITION) {
        // The name is asked for like any other, but a repository that has no such attribute, as is
        // normal, may refuse it.
        Contained(false, [&] {
            m_session->GetAttributeDefinitionHandle(handle.GetCdef(), attribute);
            return true;
        });
        return _DescribeContentDefinition(property);
    }
    const UDMAttributeDefinitionHandle definition =
        m_session->GetAttributeDefinitionHandle(handle.GetCdef(), attribute);
    // A classification may be renamed until its first publication, whatever the definition says.
    if (property == ATTRIBUTE_DEFINITION::ISEDITABLE && attribute == ATTRIBUTE_NAME::NAME &&
        _GetDefinitionName() == "Categories") {
        return kxVariant(handle.GetRevision() == 0);
    }
    return Describe(definition, property);
}

// No attribute of the repository lies behind this name, so the answers are fixed.
kxVariant ContentItem::_DescribeContentDefinition(const kxString& property) const {
    using namespace ATTRIBUTE_DEFINITION;
    if (property == ISEDITABLE || property == HASDEPENDENCIES) {
        return kxVariant(false);
    }
    if (property == ISDISPLAYABLE || property == ISMANDATORY || property == ISSYSTEM) {
        return kxVariant(true);
    }
    if (property == DISPLAYNAME) {
        return kxVariant("Content Type");
    }
    return kxVariant();
}

kxStlVector<kxString> ContentItem::GetAttributeNameList(bool omitSystem,
                                                        bool displayableOnly) const {
    using namespace ATTRIBUTE_DEFINITION;
    const UDMItemHandle& handle = _Handle();
    if (handle.IsEmpty()) {
        return {};
    }
    kxStlVector<kxString> names = handle.GetFilteredAttributeNameList(omitSystem);
    for (const kxString& name : _GetCDEFAttributeNames()) {
        const bool isSystem = GetAttributeDescription(name, ISSYSTEM).GetBoolean();
        const bool isEditable = GetAttributeDescription(name, ISEDITABLE).GetBoolean();
        const bool isDisplayable = GetAttributeDescription(name, ISDISPLAYABLE).GetBoolean();
        const bool isListed = std::find(names.begin(), names.end(), name) != names.end();
        if (isListed || !isEditable || (omitSystem && isSystem) ||
            (displayableOnly && !isDisplayable)) {
            continue;
        }
        names.push_back(name);
    }
    names.push_back(ATTRIBUTE_NAME::CONTENTDEFINITION);
    return names;
}

kxStlVector<kxString> ContentItem::GetAttributeNameDiplaynameMap(bool omitSystem,
                                                                 bool displayableOnly) const {
    if (!m_session) {
        return {};
    }
    return m_session->GetContentDefinitionMetadata(
        _GetDefinitionName(), omitSystem, displayableOnly);
}

kxString ContentItem::_GetDefinitionName() const {
    return DefinitionTypeOf(m_session, m_handle);
}

kxStlVector<kxString> ContentItem::_GetCDEFAttributeNames() const {
    kxStlVector<kxString> names;
    if (m_session && !m_handle.IsEmpty()) {
        m_session->GetContentDefinitionHandle(m_handle.GetCdef()).GetAttributeNames(names);
    }
    return names;
}

}  // namespace kxct
