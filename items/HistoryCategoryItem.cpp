#include <kxct/HistoryCategoryItem.h>
#include <kxct/HistoryItem.h>
#include <kxct/ItemManager.h>
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Attributes.h>
#include <kxudm/UDMHistoryNode.h>
#include <kxudm/UDMUID.h>

#include <iterator>

#include "items/Contained.h"

namespace kxct {

namespace {

kxString CategoryName(HistoryCategory category) {
    static const char* const names[] = {"Branches", "Versions"};
    const auto row = static_cast<size_t>(category);
    return row < std::size(names) ? kxString(names[row]) : kxString();
}

}  // namespace

int32_t HistoryCategoryItem::_counter = 0;

HistoryCategoryItem::HistoryCategoryItem(ItemManager* manager,
                                         UDMDBCtrl* session,
                                         HistoryItem* owner,
                                         HistoryCategory category)
    : ItemImpl(manager,
               session,
               "HistoryCategory_" + std::to_string(category) + "_" + std::to_string(_counter)),
      m_name(CategoryName(category)),
      m_owner(owner),
      m_category(category) {
    ++_counter;
}

const kxString& HistoryCategoryItem::IsA() {
    static const kxString name("HistoryCategoryItem");
    return name;
}

kxVariant HistoryCategoryItem::GetAttributeValue(const kxString& attribute) const {
    if (attribute == ATTRIBUTE_NAME::ICON) {
        return kxVariant(8);
    }
    if (attribute == ATTRIBUTE_NAME::LABEL) {
        return kxVariant(m_name);
    }
    if (attribute == ATTRIBUTE_NAME::ID) {
        return kxVariant(GetUID());
    }
    return kxVariant();
}

kxStlVector<kxString> HistoryCategoryItem::_GetChildKeys() const {
    kxStlVector<kxString> keys;
    const auto root = m_session->GetHistory(m_owner->GetItemHandle());
    if (!root) {
        return keys;
    }
    if (m_category == HISTORY_BRANCHES) {
        for (const auto& node : root->GetBranchList()) {
            keys.push_back(node->GetBaseUID());
        }
    } else if (m_category == HISTORY_VERSIONS) {
        for (const auto& node : root->GetVersionList()) {
            if (node->GetVersion() < root->GetVersion()) {
                keys.push_back(node->GetBaseUID() + ":" + std::to_string(node->GetVersion()));
            }
        }
    }
    return keys;
}

size_t HistoryCategoryItem::GetChildren(kxStlVector<Item*>& children) {
    if (!m_manager || !m_session || !m_owner) {
        return 0;
    }
    return Contained<size_t>(0, [&] {
        children.clear();
        for (const kxString& key : _GetChildKeys()) {
            children.push_back(m_manager->CreateItem(m_session->GetUDMItemHandle(key)));
        }
        return children.size();
    });
}

size_t HistoryCategoryItem::GetNumChildren() {
    if (!m_session || !m_owner) {
        return 0;
    }
    return Contained<size_t>(0, [&] { return _GetChildKeys().size(); });
}

}  // namespace kxct
