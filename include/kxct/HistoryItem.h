// One revision of a content, as the history tree shows it.
//
// Below it stands at most one node, the category "Branches". Its older versions don't stand below
// it: they come into a view through HistoryItemManager::ToItems.
//
// Ownership: made and owned by a HistoryItemManager, which no update reaches. Errors: reading
// attributes lets exceptions of the session pass; children answer 0.
#pragma once

#include <kxct/ItemImpl.h>

namespace kxct {

class KXCT_EXPORT HistoryItem : public ItemImpl {
  public:
    using ItemImpl::GetChildren;
    using ItemImpl::GetNumChildren;

    HistoryItem(ItemManager* manager, UDMDBCtrl* session, const kxudm::UDMItemHandle& handle);
    ~HistoryItem() override = default;

    kxVariant GetAttributeValue(const kxString& attribute) const override;
    // Replaces `children` by the category "Branches" if there are branches.
    size_t GetChildren(kxStlVector<Item*>& children) override;
    // 0 in all cases, though it asks for the history and disagrees with GetChildren. Views rely on
    // it (they learn of branches only by asking for the children), so it must stay.
    size_t GetNumChildren() override;

    void SetItemHandle(const kxudm::UDMItemHandle& handle);

  protected:
    const kxString& IsA() override;

    kxString _GetDefinitionName() const;
};

}  // namespace kxct
