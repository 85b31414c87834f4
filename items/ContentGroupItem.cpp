#include <kxct/ContentGroupItem.h>
#include <kxct/ContentItem.h>
#include <kxct/ItemManager.h>
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Attributes.h>
#include <kxudm/UDMUID.h>

#include "items/Contained.h"
#include "items/Definitions.h"

using kxudm::UDMItemHandle;

namespace kxct {

const kxString ContentGroupItem::LABEL_ADD_REP_PREFIX("Add");
const kxString ContentGroupItem::OPERATION_ADD_REP_PREFIX("GROUP_ADD_REP");

ContentGroupItem::ContentGroupItem(ItemManager* manager,
                                   UDMDBCtrl* session,
                                   ContentItem* owner,
                                   const kxString& name)
    : ItemImpl(manager, session, name + ":" + owner->GetUID()), m_name(name), m_owner(owner) {}

ContentGroupItem::~ContentGroupItem() = default;

const kxString& ContentGroupItem::IsA() {
    static const kxString name("ContentGroupItem");
    return name;
}

kxString ContentGroupItem::GetDisplayName() const {
    return m_name;
}

kxString ContentGroupItem::GetName() const {
    return m_name;
}

kxVariant ContentGroupItem::GetAttributeValue(const kxString& attribute) const {
    if (attribute == ATTRIBUTE_NAME::ICON) {
        return kxVariant(8);
    }
    if (attribute == ATTRIBUTE_NAME::LABEL) {
        return kxVariant(m_name);
    }
    if (attribute == ATTRIBUTE_NAME::ID) {
        return kxVariant(m_uid);
    }
    if (attribute == ATTRIBUTE_NAME::SMD_CONTENTREVISION) {
        return kxVariant("");
    }
    return m_owner->GetAttributeValue(attribute);
}

size_t ContentGroupItem::GetChildren(kxStlVector<Item*>& children) {
    if (!m_manager || !m_session) {
        return 0;
    }
    return Contained<size_t>(0, [&] {
        kxStlVector<UDMItemHandle> handles;
        m_session->GetChildren(handles, GetItemHandle(m_owner), m_name, kxString());
        children.reserve(children.size() + handles.size());
        for (const UDMItemHandle& handle : handles) {
            children.push_back(m_manager->CreateItem(handle));
        }
        return children.size();
    });
}

size_t ContentGroupItem::GetNumChildren() {
    if (!m_session) {
        return 0;
    }
    return Contained<size_t>(
        0, [&] { return m_session->GetNChildren(GetItemHandle(m_owner), m_name, kxString()); });
}

bool ContentGroupItem::AddItem(UDMItemHandle& handle, const kxString& definition, const kxString&) {
    if (!m_session) {
        return false;
    }
    return Contained(false, [&] {
        CreateUnderFreeName(*m_session, handle, GetItemHandle(m_owner), m_name, definition);
        return true;
    });
}

}  // namespace kxct
