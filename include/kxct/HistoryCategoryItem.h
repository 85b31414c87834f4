// The node between a history item and its branches or older versions.
//
// Each has a key of its own, "HistoryCategory_<category>_<counter>", with a counter that runs
// through the process: the same owner and category never meet the same item twice.
//
// Ownership: made and owned by a HistoryItemManager. Errors: children answer 0.
#pragma once

#include <kxct/ItemImpl.h>

#include <cstdint>

namespace kxct {

class HistoryItem;

class KXCT_EXPORT HistoryCategoryItem : public ItemImpl {
  public:
    using ItemImpl::GetChildren;
    using ItemImpl::GetNumChildren;

    HistoryCategoryItem(ItemManager* manager,
                        UDMDBCtrl* session,
                        HistoryItem* owner,
                        HistoryCategory category);
    ~HistoryCategoryItem() override = default;

    const kxString& IsA() override;
    // "icon" is 8, "label" the category's name, "id" the key; anything else an empty variant.
    kxVariant GetAttributeValue(const kxString& attribute) const override;
    // Replaces `children` by the branches, or by the versions older than the owner's.
    size_t GetChildren(kxStlVector<Item*>& children) override;
    size_t GetNumChildren() override;

  private:
    // The UID texts of the children, in the order of the history.
    kxStlVector<kxString> _GetChildKeys() const;

    static int32_t _counter;

    kxString m_name;
    // Not owned.
    HistoryItem* m_owner;
    HistoryCategory m_category;
};

}  // namespace kxct
