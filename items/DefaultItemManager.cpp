#include <kxct/Cache.h>
#include <kxct/ContentGroupItem.h>
#include <kxct/ContentItem.h>
#include <kxct/DefaultItemManager.h>
#include <kxct/NoRevItem.h>
#include <kxct/UDMDBCtrl.h>
#include <kxct/ViewItem.h>
#include <kxudm/UDMUID.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <typeinfo>

using kxudm::UDMItemHandle;
using kxudm::UDMUID;

namespace kxct {

namespace {

// The UID of the revision before `uid`, "A:2" for "A:3"; empty for a text of another form. A
// revision that is no number reads as 0 and gives a key that no entry has.
kxString PreviousRevision(const kxString& uid) {
    if (std::count(uid.begin(), uid.end(), ':') != 1) {
        return kxString();
    }
    const size_t colon = uid.find(':');
    const int revision = static_cast<int>(std::strtol(uid.c_str() + colon + 1, nullptr, 10));
    return uid.substr(0, colon + 1) + std::to_string(static_cast<long long>(revision) - 1);
}

// Whether the cached item answers to another UID than the one it is cached under. Contents, nearly
// all of a cache, are compared without a copy of their UID.
bool Differs(const Item& item, const UDMItemHandle& handle) {
    return typeid(item) == typeid(ContentItem)
               ? !static_cast<const ContentItem&>(item).HasUIDOf(handle)
               : item.GetUID() != handle.Uid();
}

}  // namespace

DefaultItemManager::DefaultItemManager(UDMDBCtrl* session, SignalHandler* signals)
    : ItemManager(session, signals) {}

Item* DefaultItemManager::CreateItem(const UDMItemHandle& handle) {
    Item* item = nullptr;
    if (GetFromCache(handle, item)) {
        return item;
    }
    // The cache takes no item without a UID.
    return handle.Uid().empty() ? nullptr : _Cached(new ContentItem(this, m_session, handle));
}

Item* DefaultItemManager::CreateItem(const UDMUID& uid) {
    return _Cached(new NoRevItem(this, m_session, uid));
}

Item* DefaultItemManager::CreateItem(Item* parent, const kxString& name) {
    return _Cached(new ContentGroupItem(this, m_session, static_cast<ContentItem*>(parent), name));
}

Item* DefaultItemManager::CreateItem(kxStlVector<Item*>& items,
                                     kxStlVector<kxString> attributes,
                                     const kxString& name) {
    return _Cached(new ViewItem(items, attributes, name));
}

bool DefaultItemManager::GetFromCache(const UDMItemHandle& handle, Item*& item) {
    try {
        const kxString& uid = handle.Uid();
        if (!m_cache->Find(uid, item)) {
            return false;
        }
        if (!Differs(*item, handle)) {
            return true;
        }
        if (!m_session) {
            return false;
        }
        const UDMItemHandle fresh = m_session->GetUDMItemHandle(uid);
        if (auto* content = dynamic_cast<ContentItem*>(item)) {
            content->SetItemHandle(fresh);
        }
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool DefaultItemManager::UpdateItem(const UDMItemHandle& handle, Item*& item) {
    if (GetFromCache(handle, item)) {
        return true;
    }
    const kxString previous = PreviousRevision(handle.Uid());
    if (previous.empty() || !m_cache->Update(previous, handle, item)) {
        return false;
    }
    if (auto* content = dynamic_cast<ContentItem*>(item)) {
        content->SetItemHandle(handle);
    }
    return true;
}

void DefaultItemManager::ToItems(void* handles, kxStlVector<Item*>& items) {
    const auto& list = *static_cast<const kxStlVector<UDMItemHandle>*>(handles);
    items.clear();
    items.reserve(list.size());
    for (const UDMItemHandle& handle : list) {
        items.push_back(CreateItem(handle));
    }
}

}  // namespace kxct
