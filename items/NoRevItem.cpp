#include <kxct/ItemManager.h>
#include <kxct/NoRevItem.h>
#include <kxct/UDMDBCtrl.h>
#include <kxudm/UDMUID.h>

using kxudm::UDMItemHandle;

namespace kxct {

NoRevItem::NoRevItem(ItemManager* manager, UDMDBCtrl* session, const kxudm::UDMUID& uid)
    : ItemImpl(manager, session, uid.GetDmUid()) {}

const kxString& NoRevItem::IsA() {
    static const kxString name("NoRevItem");
    return name;
}

Item* NoRevItem::GetLatest() {
    if (!m_session) {
        return nullptr;
    }
    UDMItemHandle handle;
    if (m_session->FindEntityById(handle, m_uid, true)) {
        m_uid = handle.Uid();
    }
    return m_manager ? m_manager->CreateItem(handle) : nullptr;
}

Item* NoRevItem::_Latest() const {
    return const_cast<NoRevItem*>(this)->GetLatest();
}

kxVariant NoRevItem::GetAttributeDescription(const kxString& attribute,
                                             const kxString& property) const {
    const Item* latest = _Latest();
    return latest ? latest->GetAttributeDescription(attribute, property) : kxVariant();
}

kxStlVector<kxString> NoRevItem::GetAttributeNameList(bool omitSystem, bool displayableOnly) const {
    const Item* latest = _Latest();
    return latest ? latest->GetAttributeNameList(omitSystem, displayableOnly)
                  : kxStlVector<kxString>();
}

kxStlVector<kxString> NoRevItem::GetAttributeNameDiplaynameMap(bool omitSystem,
                                                               bool displayableOnly) const {
    const Item* latest = _Latest();
    return latest ? latest->GetAttributeNameDiplaynameMap(omitSystem, displayableOnly)
                  : kxStlVector<kxString>();
}

kxVariant NoRevItem::GetAttributeValue(const kxString& attribute) const {
    const Item* latest = _Latest();
    return latest ? latest->GetAttributeValue(attribute) : kxVariant();
}

kxString NoRevItem::GetDisplayName() const {
    const Item* latest = _Latest();
    return latest ? latest->GetDisplayName() : kxString();
}

size_t NoRevItem::GetChildren(kxStlVector<Item*>& children) {
    Item* latest = GetLatest();
    if (!latest) {
        return 0;
    }
    kxStlVector<UDMItemHandle> handles;
    m_session->GetLineage(GetItemHandle(latest), HISTORY_VERSIONS, handles);
    m_manager->ToItems(&handles, children);
    // 0 in every case, as the header says.
    return 0;
}

size_t NoRevItem::GetNumChildren() {
    Item* latest = GetLatest();
    if (!latest) {
        return 0;
    }
    kxStlVector<UDMItemHandle> handles;
    return m_session->GetLineage(GetItemHandle(latest), HISTORY_VERSIONS, handles);
}

}  // namespace kxct
