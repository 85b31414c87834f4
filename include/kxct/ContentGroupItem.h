// One group of a content: the node between a content and its children in that group.
//
// It shows its owner's attributes, except for picture, label, identifier and revision. Its key,
// "<group>:<owner's UID>", is built once: it stays that of the revision for which it was made.
//
// Ownership: made and owned by a DefaultItemManager, found again by its owner. Errors: reading
// attributes lets exceptions pass; the other operations answer 0 or false.
#pragma once

#include <kxct/ItemImpl.h>

namespace kxct {

class ContentItem;

class KXCT_EXPORT ContentGroupItem : public ItemImpl {
  public:
    using ItemImpl::GetChildren;
    using ItemImpl::GetNumChildren;

    // Words for hosts that offer to add to a group: "Add" and "GROUP_ADD_REP".
    static const kxString LABEL_ADD_REP_PREFIX;
    static const kxString OPERATION_ADD_REP_PREFIX;

    ContentGroupItem(ItemManager* manager,
                     UDMDBCtrl* session,
                     ContentItem* owner,
                     const kxString& name);
    ContentGroupItem(const ContentGroupItem& other) = default;
    ContentGroupItem(ContentGroupItem&& other) = default;
    ContentGroupItem& operator=(const ContentGroupItem& other) = default;
    ContentGroupItem& operator=(ContentGroupItem&& other) = default;
    ~ContentGroupItem() override;

    const kxString& IsA() override;
    // "icon" is 8, "label" the group's name, "id" the key, "smd_contentrevision" an empty text;
    // anything else is the owner's answer.
    kxVariant GetAttributeValue(const kxString& attribute) const override;
    kxString GetDisplayName() const override;
    // Appends.
    size_t GetChildren(kxStlVector<Item*>& children) override;
    size_t GetNumChildren() override;
    // The texts mean something else than in ContentItem: the first is the definition, and the
    // second is not read, since the group is this one.
    bool AddItem(kxudm::UDMItemHandle& handle,
                 const kxString& definition,
                 const kxString& unused) override;

    kxString GetName() const;

  private:
    kxString m_name;
    // Not owned.
    ContentItem* m_owner;
};

}  // namespace kxct
