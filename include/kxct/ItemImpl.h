// What all items share: their place in the system and the answers that a kind of item doesn't give
// itself.
//
// An ItemImpl knows the manager that made it, the session that it asks, its UID text, its handle in
// the repository, and what views have seen of it. Seven classes derive from it directly and none
// from another: ContentItem, NoRevItem, ContentGroupItem, ViewItem, GhostItem, HistoryItem,
// HistoryCategoryItem. What an operation does here is the default of all of them: nothing, with
// false, 0, null or an empty value, unless told otherwise below. The contracts stand in Item.h.
//
// Ownership: manager and session are not owned. Items are made by an ItemManager and live in its
// cache.
// Errors: nothing is caught here; exceptions of the session pass.
#pragma once

#include <kxct/kxct_export.h>
#include <kxctinterfaces/Item.h>
#include <kxudm/UDMItemHandle.h>

#include <cstdint>

namespace kxct {

class ItemManager;
class UDMDBCtrl;

class KXCT_EXPORT ItemImpl : public Item {
  public:
    ItemImpl() = default;
    ItemImpl(ItemManager* manager, UDMDBCtrl* session, const kxString& uid);
    ItemImpl(const ItemImpl& other) = default;
    ItemImpl& operator=(const ItemImpl& other) = default;

    bool Checkout(const kxString& comment) override;
    bool Save(const kxString& comment) override;
    const kxString& IsA() override = 0;
    kxVariant GetAttributeDescription(const kxString& attribute,
                                      const kxString& property) const override;
    kxStlVector<kxString> GetAttributeNameList(bool omitSystem,
                                               bool displayableOnly) const override;
    kxStlVector<kxString> GetAttributeNameDiplaynameMap(bool omitSystem,
                                                        bool displayableOnly) const override;
    // "icon" is 6, "label" the text "###", "id" the UID; anything else an empty variant.
    kxVariant GetAttributeValue(const kxString& attribute) const override;
    bool IsAttributeEditable(const kxString& attribute) override;
    kxString GetDisplayName() const override;
    kxString GetQueryString() const override;
    kxString GetUID() const override;
    // The content definition of the handle; empty while the handle is empty.
    kxString GetType() const override;
    bool IsEditable() override;
    bool Persist(const kxString& comment, bool flag) override;
    bool RetrieveFilesIntoFolder(const kxString& folder,
                                 kxStlVector<kxString>& paths,
                                 const bool& first,
                                 const bool& second) override;
    // The form above with both flags false; the paths are dropped.
    bool RetrieveFilesIntoFolder(const kxString& folder) override;
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
    // These three wrap the value and call the variant form.
    bool SetAttributeValue(const kxString& attribute, const float& value) override;
    bool SetAttributeValue(const kxString& attribute, const int& value) override;
    bool SetAttributeValue(const kxString& attribute, const kxString& value) override;
    bool SetAttributeValue(const kxString& attribute, kxVariant& value) override;
    bool NextAttributeValue(const kxString& attribute) override;
    // The forms with maps ignore them and forward to the form without.
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
    size_t GetNumChildren() override;
    DataType GetDataType() override;
    // Each asks GetNumChildren of the same arguments and keeps the render state.
    bool HasChildren(const ChildFilterMap& hideMap,
                     const ChildFilterMap& filterMap,
                     const ItemFilterList& filters) override;
    bool HasChildren(const kxString& group) override;
    bool HasChildren() override;
    // ContentItem hides it on purpose, which g++ reports here.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Woverloaded-virtual"
    bool HasParent() const override;
#pragma GCC diagnostic pop
    Item* GetParent(bool flag) override;
    size_t GetParents(kxStlVector<Item*>& parents, const kxString& relation, bool flag) override;
    ItemRenderState GetRenderState() override;
    void SetRenderState(ItemRenderState state) override;
    bool UsedAsChild() override;
    void UseAsChild(bool use) override;
    bool UndoCheckout() override;
    bool Add(Item* child, const kxString& group) override;
    bool AddFile(const kxString& fileType, const kxString& path, bool flag) override;
    bool Remove(Item* child) override;
    bool RemoveFile(const kxString& path) override;
    bool ReAddFile(const kxString& path, bool first, bool second) override;
    ~ItemImpl() override;
    kxudm::UDMItemHandle& GetItemHandle(Item* other) override;
    // An empty handle is first looked up by the UID.
    kxudm::UDMItemHandle& GetItemHandle() override;
    bool AddItem(kxudm::UDMItemHandle& handle,
                 const kxString& group,
                 const kxString& definition) override;

  protected:
    // GetItemHandle() for const operations: looking up the handle changes nothing that shows.
    const kxudm::UDMItemHandle& _Handle() const;

    ItemManager* m_manager = nullptr;
    UDMDBCtrl* m_session = nullptr;
    kxudm::UDMItemHandle m_handle;
    // The key of the item in its manager's cache.
    kxString m_uid;
    ItemRenderState m_renderState = RENDER_NONE;
    // How many views show the item as a child.
    uint32_t m_useCount = 0;
};

}  // namespace kxct
