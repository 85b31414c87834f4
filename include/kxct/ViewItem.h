// A node of a grouped view: a name over items that have something in common, such as one value of
// an attribute.
//
// It belongs to no session and stands for nothing in the repository. Of the attributes that it was
// made to show it answers the values of its first item.
//
// Ownership: made and owned by a DefaultItemManager; the items that it holds are not owned. Its UID
// is 32 characters drawn by the C library's generator, which nothing here seeds: the sequence
// repeats from one process to the next.
#pragma once

#include <kxct/ItemImpl.h>

namespace kxct {

class KXCT_EXPORT ViewItem : public ItemImpl {
  public:
    using ItemImpl::GetChildren;
    using ItemImpl::GetNumChildren;

    ViewItem(kxStlVector<Item*>& items, kxStlVector<kxString> attributes, const kxString& name);
    ViewItem(const ViewItem& other) = default;
    ViewItem(ViewItem&& other) = default;
    ViewItem& operator=(const ViewItem& other) = default;
    ViewItem& operator=(ViewItem&& other) = default;
    ~ViewItem() override;

    const kxString& IsA() override;
    kxVariant GetAttributeDescription(const kxString& attribute,
                                      const kxString& property) const override;
    // The attributes that it was made with; the flags are not read.
    kxStlVector<kxString> GetAttributeNameList(bool omitSystem,
                                               bool displayableOnly) const override;
    kxStlVector<kxString> GetAttributeNameDiplaynameMap(bool omitSystem,
                                                        bool displayableOnly) const override;
    // "label" is its name and ATTRIBUTE_NAME::CONTENTDEFINITION the text "ViewItem".
    kxVariant GetAttributeValue(const kxString& attribute) const override;
    kxString GetDisplayName() const override;
    // Replaces `children`.
    size_t GetChildren(kxStlVector<Item*>& children) override;
    size_t GetNumChildren() override;
    // Takes one more item. The group is not read.
    bool Add(Item* child, const kxString& group) override;

  private:
    // The item that answers for an attribute; null where it isn't one of this view's.
    const Item* _Speaker(const kxString& attribute) const;

    kxStlVector<Item*> m_items;
    kxStlVector<kxString> m_attributes;
    kxString m_name;
};

}  // namespace kxct
