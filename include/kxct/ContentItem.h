// One revision of one entity of the repository.
//
// A content keeps no attribute values: each question goes to its handle, or through the session to
// its content definition. When the entity moves on to a new revision the manager gives the same
// object a new handle, so GetUID() answers from the handle and not from the key that the item was
// cached under.
//
// Seen from a view, a content has one ContentGroupItem per group that its content definition
// declares, and the contents in a group hang below it. The hide map and the filter map change that
// picture; see GetChildren.
//
// Ownership: made and owned by a DefaultItemManager. Errors: reading attributes and GetParent let
// exceptions of the session pass; all other operations catch std::exception and answer false or 0.
//
//     ContentItem* deck = static_cast<ContentItem*>(manager->CreateItem(handle));
//     kxVariant time = deck->GetAttributeValue(ATTRIBUTE_NAME::SMD_CTIME);
#pragma once

#include <kxct/ItemImpl.h>

namespace kxct {

// HasParent.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Woverloaded-virtual"

class KXCT_EXPORT ContentItem : public ItemImpl {
  public:
    using ItemImpl::RetrieveFilesIntoFolder;
    using ItemImpl::SetAttributeValue;

    ContentItem(ItemManager* manager, UDMDBCtrl* session, const kxudm::UDMItemHandle& handle);
    ~ContentItem() override = default;

    bool Checkout(const kxString& comment) override;
    bool Save(const kxString& comment) override;
    kxVariant GetAttributeDescription(const kxString& attribute,
                                      const kxString& property) const override;
    // What the handle reports, then the editable attributes of the definition that it left out,
    // then ATTRIBUTE_NAME::CONTENTDEFINITION. Empty for an empty handle.
    kxStlVector<kxString> GetAttributeNameList(bool omitSystem,
                                               bool displayableOnly) const override;
    kxStlVector<kxString> GetAttributeNameDiplaynameMap(bool omitSystem,
                                                        bool displayableOnly) const override;
    // An empty handle answers every name with an empty variant.
    kxVariant GetAttributeValue(const kxString& attribute) const override;
    // IsEditable(), whatever the attribute; what the definition allows, GetAttributeDescription
    // tells.
    bool IsAttributeEditable(const kxString& attribute) override;
    kxString GetDisplayName() const override;
    kxString GetUID() const override;
    bool IsEditable() override;
    bool Persist(const kxString& comment, bool flag) override;
    bool RetrieveFilesIntoFolder(const kxString& folder,
                                 kxStlVector<kxString>& paths,
                                 const bool& first,
                                 const bool& second) override;
    bool RetrieveFilesIntoFolder(const kxString& folder,
                                 const kxString& document,
                                 kxStlVector<kxString>& paths) override;
    bool RetrieveFilesIntoWorkspace(kxStlVector<kxString>& paths,
                                    const bool& first,
                                    const bool& second) override;
    bool RetrieveFilesIntoWorkspace() override;
    bool GetDocuments(kxStlVector<kxString>& paths) override;
    bool GetDocumentNames(kxStlVector<kxString>& names) override;
    bool GetDocumentInfo(kxStlVector<DocumentInfo>& info) override;
    bool SetAttributeValue(const kxString& attribute, kxVariant& value) override;

    // With maps, and this item's definition being a key of `hideMap`: the children in its groups,
    // in the list's order, thinned out by `filters`. A group that the definition lacks ends the
    // walk with 0; what was appended before it stays. Otherwise: the group items, in the
    // definition's order, limited to the names under this definition in `filterMap` if it has any
    // there; names that the definition lacks are ignored.
    size_t GetChildren(kxStlVector<Item*>& children,
                       const ChildFilterMap& hideMap,
                       const ChildFilterMap& filterMap,
                       const ItemFilterList& filters) override;
    size_t GetChildren(kxStlVector<Item*>& children,
                       const ChildFilterMap& hideMap,
                       const ChildFilterMap& filterMap) override;
    size_t GetChildren(kxStlVector<Item*>& children) override;
    size_t GetChildren(kxStlVector<Item*>& children,
                       const kxString& group,
                       const kxString& queryExpression) override;
    size_t GetChildren(kxStlVector<Item*>& children, const kxString& group) override;
    size_t GetNumChildren(const ChildFilterMap& hideMap,
                          const ChildFilterMap& filterMap,
                          const ItemFilterList& filters) override;
    size_t GetNumChildren(const ChildFilterMap& hideMap, const ChildFilterMap& filterMap) override;
    size_t GetNumChildren(const kxString& group) override;
    // The number of groups, with no regard to what they hold.
    size_t GetNumChildren() override;

    // Without const, so it hides the virtual HasParent() const and doesn't override it: through an
    // Item* the answer stays false. Hosts rely on that split; it must not be mended.
    bool HasParent();
    Item* GetParent(bool flag) override;
    size_t GetParents(kxStlVector<Item*>& parents, const kxString& relation, bool flag) override;
    bool UndoCheckout() override;
    bool Add(Item* child, const kxString& group) override;
    bool AddFile(const kxString& fileType, const kxString& path, bool flag) override;
    bool Remove(Item* child) override;
    bool RemoveFile(const kxString& path) override;
    bool ReAddFile(const kxString& path, bool first, bool second) override;
    bool AddItem(kxudm::UDMItemHandle& handle,
                 const kxString& group,
                 const kxString& definition) override;

    // Replaces the handle and leaves the key alone: the manager moves that.
    void SetItemHandle(const kxudm::UDMItemHandle& handle);
    // Whether GetUID() is this text, or that of a handle, without making a copy of it.
    bool HasUID(const kxString& uid) const { return m_handle.Uid() == uid; }
    bool HasUIDOf(const kxudm::UDMItemHandle& handle) const {
        return m_handle.State() == handle.State() || HasUID(handle.Uid());
    }

  protected:
    const kxString& IsA() override;

    // The type of the content definition, such as "Foldertype". Not its name, which is GetType().
    kxString _GetDefinitionName() const;
    kxStlVector<kxString> _GetCDEFAttributeNames() const;
    // The definition's groups; empty if they can't be had. The argument is not read.
    kxStlVector<kxString> _GetGroupNames(bool unused) const;
    // For each group, the name of the file definition ("UDMDS...") that may stand in it; of several
    // the last one.
    kxStlMap<kxString, kxString> _GetAllowedChildCdefNames() const;

  private:
    kxVariant _GetIcon() const;
    kxVariant _DescribeContentDefinition(const kxString& property) const;
    size_t _GetChildrenByMaps(kxStlVector<Item*>& children,
                              const ChildFilterMap& hideMap,
                              const ChildFilterMap& filterMap,
                              const ItemFilterList* filters,
                              const char* where);
    size_t _GetHiddenChildren(kxStlVector<Item*>& children,
                              const kxStlVector<kxString>& shown,
                              const kxStlVector<kxString>& groups,
                              const ItemFilterList* filters,
                              const char* where);
    size_t _GetGroupItems(kxStlVector<Item*>& children,
                          const kxStlVector<kxString>& groups,
                          const kxStlVector<kxString>* shown);
    void _AppendItems(kxStlVector<Item*>& items, const kxStlVector<kxudm::UDMItemHandle>& handles);

    // Group name to group item. Not owned: they are cached items of the same manager.
    kxStlMap<kxString, Item*> m_groups;
};

#pragma GCC diagnostic pop

}  // namespace kxct
