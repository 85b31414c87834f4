#include <kxct/HistoryItem.h>
#include <kxct/ItemManager.h>
#include <kxct/UDMDBCtrl.h>
#include <kxudm/UDMHistoryNode.h>
#include <kxudm/UDMUID.h>

#include "items/Contained.h"
#include "items/Definitions.h"
#include "items/HandleValue.h"

using kxudm::UDMItemHandle;

namespace kxct {

HistoryItem::HistoryItem(ItemManager* manager, UDMDBCtrl* session, const UDMItemHandle& handle)
    : ItemImpl(manager, session, handle.Uid()) {
    m_handle = handle;
}

const kxString& HistoryItem::IsA() {
    static const kxString name("HistoryItem");
    return name;
}

void HistoryItem::SetItemHandle(const UDMItemHandle& handle) {
    m_handle = handle;
}

kxString HistoryItem::_GetDefinitionName() const {
    return DefinitionTypeOf(m_session, m_handle);
}

kxVariant HistoryItem::GetAttributeValue(const kxString& attribute) const {
    return ValueOf(
        _Handle(), attribute, [] { return kxVariant(6); }, [&] { return _GetDefinitionName(); });
}

size_t HistoryItem::GetChildren(kxStlVector<Item*>& children) {
    if (!m_manager || !m_session) {
        return 0;
    }
    return Contained<size_t>(0, [&] {
        children.clear();
        const auto root = m_session->GetHistory(GetItemHandle());
        if (root && !root->GetBranchList().empty()) {
            children.push_back(m_manager->CreateItem(this, HISTORY_BRANCHES));
        }
        return children.size();
    });
}

size_t HistoryItem::GetNumChildren() {
    if (m_session) {
        Contained(false, [&] { return m_session->GetHistory(GetItemHandle()) != nullptr; });
    }
    // 0 in all cases, as the header says.
    return 0;
}

}  // namespace kxct
