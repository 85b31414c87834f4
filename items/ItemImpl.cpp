#include <kxct/ItemImpl.h>
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Attributes.h>
#include <kxinterp/kxPointerRegistry.h>

namespace kxct {

namespace {

// Puts the render state back when a count ends, however it ends.
class RenderStateKeeper {
  public:
    explicit RenderStateKeeper(ItemRenderState& state) : _state(state), _kept(state) {}
    RenderStateKeeper(const RenderStateKeeper&) = delete;
    RenderStateKeeper& operator=(const RenderStateKeeper&) = delete;
    ~RenderStateKeeper() { _state = _kept; }

  private:
    ItemRenderState& _state;
    const ItemRenderState _kept;
};

}  // namespace

ItemImpl::ItemImpl(ItemManager* manager, UDMDBCtrl* session, const kxString& uid)
    : m_manager(manager), m_session(session), m_uid(uid) {}

ItemImpl::~ItemImpl() {
    // Scripts know items under the pointer of the interface.
    kxPointerRegistry::Forget(static_cast<Item*>(this));
}

bool ItemImpl::Checkout(const kxString&) {
    return false;
}

bool ItemImpl::Save(const kxString&) {
    return false;
}

kxVariant ItemImpl::GetAttributeDescription(const kxString&, const kxString&) const {
    return kxVariant();
}

kxStlVector<kxString> ItemImpl::GetAttributeNameList(bool, bool) const {
    return {};
}

kxStlVector<kxString> ItemImpl::GetAttributeNameDiplaynameMap(bool, bool) const {
    return {};
}

kxVariant ItemImpl::GetAttributeValue(const kxString& attribute) const {
    if (attribute == ATTRIBUTE_NAME::ICON) {
        return kxVariant(6);
    }
    if (attribute == ATTRIBUTE_NAME::LABEL) {
        return kxVariant("###");
    }
    if (attribute == ATTRIBUTE_NAME::ID) {
        return kxVariant(GetUID());
    }
    return kxVariant();
}

bool ItemImpl::IsAttributeEditable(const kxString&) {
    return false;
}

kxString ItemImpl::GetDisplayName() const {
    return kxString();
}

kxString ItemImpl::GetQueryString() const {
    return kxString();
}

kxString ItemImpl::GetUID() const {
    return m_uid;
}

kxString ItemImpl::GetType() const {
    return m_handle.IsEmpty() ? kxString() : m_handle.GetCdef();
}

bool ItemImpl::IsEditable() {
    return false;
}

bool ItemImpl::Persist(const kxString&, bool) {
    return false;
}

bool ItemImpl::RetrieveFilesIntoFolder(const kxString&,
                                       kxStlVector<kxString>&,
                                       const bool&,
                                       const bool&) {
    return false;
}

bool ItemImpl::RetrieveFilesIntoFolder(const kxString& folder) {
    kxStlVector<kxString> paths;
    return RetrieveFilesIntoFolder(folder, paths, false, false);
}

bool ItemImpl::RetrieveFilesIntoFolder(const kxString&, const kxString&, kxStlVector<kxString>&) {
    return false;
}

bool ItemImpl::RetrieveFilesIntoWorkspace(kxStlVector<kxString>&, const bool&, const bool&) {
    return false;
}

bool ItemImpl::RetrieveFilesIntoWorkspace() {
    return false;
}

bool ItemImpl::GetDocuments(kxStlVector<kxString>&) {
    return false;
}

bool ItemImpl::GetDocumentNames(kxStlVector<kxString>&) {
    return false;
}

bool ItemImpl::GetDocumentInfo(kxStlVector<DocumentInfo>&) {
    return false;
}

bool ItemImpl::SetAttributeValue(const kxString& attribute, const float& value) {
    kxVariant variant(value);
    return SetAttributeValue(attribute, variant);
}

bool ItemImpl::SetAttributeValue(const kxString& attribute, const int& value) {
    kxVariant variant(value);
    return SetAttributeValue(attribute, variant);
}

bool ItemImpl::SetAttributeValue(const kxString& attribute, const kxString& value) {
    kxVariant variant(value);
    return SetAttributeValue(attribute, variant);
}

bool ItemImpl::SetAttributeValue(const kxString&, kxVariant&) {
    return false;
}

bool ItemImpl::NextAttributeValue(const kxString&) {
    return false;
}

size_t ItemImpl::GetChildren(kxStlVector<Item*>& children,
                             const ChildFilterMap&,
                             const ChildFilterMap&,
                             const ItemFilterList&) {
    return GetChildren(children);
}

size_t ItemImpl::GetChildren(kxStlVector<Item*>& children,
                             const ChildFilterMap&,
                             const ChildFilterMap&) {
    return GetChildren(children);
}

size_t ItemImpl::GetChildren(kxStlVector<Item*>&) {
    return 0;
}

size_t ItemImpl::GetChildren(kxStlVector<Item*>&, const kxString&, const kxString&) {
    return 0;
}

size_t ItemImpl::GetChildren(kxStlVector<Item*>&, const kxString&) {
    return 0;
}

size_t ItemImpl::GetNumChildren(const ChildFilterMap&,
                                const ChildFilterMap&,
                                const ItemFilterList&) {
    return GetNumChildren();
}

size_t ItemImpl::GetNumChildren(const ChildFilterMap&, const ChildFilterMap&) {
    return GetNumChildren();
}

size_t ItemImpl::GetNumChildren(const kxString&) {
    return 0;
}

size_t ItemImpl::GetNumChildren() {
    return 0;
}

DataType ItemImpl::GetDataType() {
    return DATA_TYPE_ITEM;
}

bool ItemImpl::HasChildren(const ChildFilterMap& hideMap,
                           const ChildFilterMap& filterMap,
                           const ItemFilterList& filters) {
    const RenderStateKeeper keeper(m_renderState);
    return GetNumChildren(hideMap, filterMap, filters) != 0;
}

bool ItemImpl::HasChildren(const kxString& group) {
    const RenderStateKeeper keeper(m_renderState);
    return GetNumChildren(group) != 0;
}

bool ItemImpl::HasChildren() {
    const RenderStateKeeper keeper(m_renderState);
    return GetNumChildren() != 0;
}

bool ItemImpl::HasParent() const {
    return false;
}

Item* ItemImpl::GetParent(bool) {
    return nullptr;
}

size_t ItemImpl::GetParents(kxStlVector<Item*>&, const kxString&, bool) {
    return 0;
}

ItemRenderState ItemImpl::GetRenderState() {
    return m_renderState;
}

void ItemImpl::SetRenderState(ItemRenderState state) {
    m_renderState = state;
}

bool ItemImpl::UsedAsChild() {
    return m_useCount != 0;
}

void ItemImpl::UseAsChild(bool use) {
    if (use) {
        ++m_useCount;
    } else if (m_useCount != 0) {
        --m_useCount;
    }
}

bool ItemImpl::UndoCheckout() {
    return false;
}

bool ItemImpl::Add(Item*, const kxString&) {
    return false;
}

bool ItemImpl::AddFile(const kxString&, const kxString&, bool) {
    return false;
}

bool ItemImpl::Remove(Item*) {
    return false;
}

bool ItemImpl::RemoveFile(const kxString&) {
    return false;
}

bool ItemImpl::ReAddFile(const kxString&, bool, bool) {
    return false;
}

kxudm::UDMItemHandle& ItemImpl::GetItemHandle(Item* other) {
    return static_cast<ItemImpl*>(other)->GetItemHandle();
}

kxudm::UDMItemHandle& ItemImpl::GetItemHandle() {
    if (m_session && m_handle.IsEmpty()) {
        m_session->FindEntityById(m_handle, GetUID(), false);
    }
    return m_handle;
}

bool ItemImpl::AddItem(kxudm::UDMItemHandle&, const kxString&, const kxString&) {
    return false;
}

const kxudm::UDMItemHandle& ItemImpl::_Handle() const {
    return const_cast<ItemImpl*>(this)->GetItemHandle();
}

}  // namespace kxct
