// A content with all its revisions together, as it is shown where several of them are grouped.
//
// It answers attributes as its latest revision does, and its children are the older revisions. The
// first question turns the key that it holds into that of the latest revision; the key in the
// manager's cache stays the one without revision.
//
// Ownership: made and owned by a DefaultItemManager. Errors: nothing is caught here.
#pragma once

#include <kxct/ItemImpl.h>

namespace kxudm {
class UDMUID;
}

namespace kxct {

class KXCT_EXPORT NoRevItem : public ItemImpl {
  public:
    using ItemImpl::GetChildren;
    using ItemImpl::GetNumChildren;

    // A revision in `uid` is left out of the item's key.
    NoRevItem(ItemManager* manager, UDMDBCtrl* session, const kxudm::UDMUID& uid);
    ~NoRevItem() override = default;

    const kxString& IsA() override;
    kxVariant GetAttributeDescription(const kxString& attribute,
                                      const kxString& property) const override;
    kxStlVector<kxString> GetAttributeNameList(bool omitSystem,
                                               bool displayableOnly) const override;
    kxStlVector<kxString> GetAttributeNameDiplaynameMap(bool omitSystem,
                                                        bool displayableOnly) const override;
    kxVariant GetAttributeValue(const kxString& attribute) const override;
    kxString GetDisplayName() const override;
    // Replaces `children` by the older revisions and answers 0 in every case: hosts read the
    // vector. GetNumChildren() has the true count. The difference must stay.
    size_t GetChildren(kxStlVector<Item*>& children) override;
    size_t GetNumChildren() override;

  protected:
    // The item of the latest revision; null without a session or where there is none.
    Item* GetLatest();

  private:
    Item* _Latest() const;
};

}  // namespace kxct
