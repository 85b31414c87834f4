// Check-out, save, publish, revert, delete; organising under folders and classifications; merge,
// export and import.
#include <kxct/ControllerImpl.h>
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Attributes.h>
#include <kxudm/UDMUID.h>

#include "controller/_private/Contents.h"

namespace kxct {

namespace {

// Runs `step` for the handle of each content that passes `test`. Other items are skipped. False
// as soon as a step fails; what was done before stays done.
template <class Test, class Step>
bool ForContents(const kxStlVector<Item*>& items, Test&& test, Step&& step) {
    try {
        for (Item* item : items) {
            ContentItem* content = AsContent(item);
            if (content == nullptr) {
                continue;
            }
            kxudm::UDMItemHandle handle = content->GetItemHandle();
            if (test(handle)) {
                step(handle);
            }
        }
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool IsEditable(const kxudm::UDMItemHandle& handle) {
    return handle.IsEditable();
}

}  // namespace

bool ControllerImpl::CheckOut(kxStlVector<Item*>& items, const kxString& comment) {
    return _dbCtrl != nullptr &&
           ForContents(
               items,
               [](const kxudm::UDMItemHandle& handle) { return !handle.IsEditable(); },
               [&](kxudm::UDMItemHandle& handle) { _dbCtrl->Checkout(handle, comment); });
}

bool ControllerImpl::Save(kxStlVector<Item*>& items, const kxString& comment) {
    return _dbCtrl != nullptr && ForContents(items, IsEditable, [&](kxudm::UDMItemHandle& handle) {
               _dbCtrl->Save(handle, comment);
           });
}

bool ControllerImpl::Publish(kxStlVector<Item*>& items, const kxString& comment, bool flag) {
    return _dbCtrl != nullptr && ForContents(items, IsEditable, [&](kxudm::UDMItemHandle& handle) {
               _dbCtrl->Persist(handle, comment, flag);
           });
}

bool ControllerImpl::Revert(kxStlVector<Item*>& items) {
    return _dbCtrl != nullptr && ForContents(items, IsEditable, [&](kxudm::UDMItemHandle& handle) {
               _dbCtrl->UndoCheckout(handle);
           });
}

bool ControllerImpl::Delete(kxStlVector<Item*>& items) {
    bool deleted = false;
    return _dbCtrl != nullptr &&
           ForContents(
               items,
               [](const kxudm::UDMItemHandle& handle) { return handle.IsRootEntity(); },
               [&](kxudm::UDMItemHandle& handle) {
                   _dbCtrl->DeleteRootEntity(handle);
                   deleted = true;
               }) &&
           deleted;
}

bool ControllerImpl::_IsDefinitionType(Item* item, const char* type) const {
    return item->GetAttributeValue(ATTRIBUTE_NAME::CONTENTDEFINITION).GetString() == type;
}

bool ControllerImpl::DropAllowed(Item* target, Item* dragged) {
    try {
        if (!IsDBValid() || target == nullptr || dragged == nullptr) {
            return false;
        }
        if (target->GetType() != "Categories") {
            return true;
        }
        const kxudm::UDMItemHandle handle = target->GetItemHandle();
        if (handle.GetRevision() == 0) {
            return true;
        }
        kxStlVector<kxudm::UDMItemHandle> children;
        _dbCtrl->GetChildren(children, handle, "category", "");
        const kxString name = dragged->GetItemHandle().GetDisplayName();
        for (const kxudm::UDMItemHandle& child : children) {
            if (child.GetDisplayName() == name) {
                return false;
            }
        }
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

// Contains nothing: what a check-out or a publish throws reaches the caller.
bool ControllerImpl::Organize(kxStlVector<Item*>& items, Item* target) {
    if (!IsDBValid()) {
        return false;
    }
    for (Item* item : items) {
        if (!DropAllowed(target, item)) {
            return false;
        }
    }
    if (AsContent(target) == nullptr) {
        return false;
    }
    const kxString type = target->GetAttributeValue(ATTRIBUTE_NAME::CONTENTDEFINITION).GetString();
    const bool toFolder = type == "Foldertype";
    if (!toFolder && type != "Categories") {
        return false;
    }
    for (Item* item : items) {
        if (!item->IsEditable()) {
            item->Checkout("");
        }
        if (!(toFolder ? MoveContent(item, target) : AddClassification(item, target))) {
            return false;
        }
        item->Persist("", false);
    }
    return true;
}

bool ControllerImpl::MoveContent(Item* item, Item* folder) {
    try {
        if (!IsDBValid() || item == nullptr || folder == nullptr) {
            return false;
        }
        ContentItem* content = AsFilledContent(item);
        ContentItem* target = AsContent(folder);
        if (content == nullptr || target == nullptr || !_IsDefinitionType(folder, "Foldertype") ||
            target->GetItemHandle().IsEmpty()) {
            return false;
        }
        _dbCtrl->MoveContent(content->GetItemHandle(), target->GetItemHandle());
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool ControllerImpl::_Classify(Item* item,
                               Item* classification,
                               void (UDMDBCtrl::*operation)(kxudm::UDMItemHandle&,
                                                            kxudm::UDMItemHandle&)) {
    try {
        ContentItem* content = IsDBValid() ? AsContent(item) : nullptr;
        ContentItem* target = AsContent(classification);
        if (content == nullptr || target == nullptr ||
            !_IsDefinitionType(classification, "Categories")) {
            return false;
        }
        kxudm::UDMItemHandle contentHandle = content->GetItemHandle();
        kxudm::UDMItemHandle targetHandle = target->GetItemHandle();
        (_dbCtrl->*operation)(contentHandle, targetHandle);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool ControllerImpl::AddClassification(Item* item, Item* classification) {
    return _Classify(item, classification, &UDMDBCtrl::AddClassification);
}

bool ControllerImpl::RemoveClassification(Item* item, Item* classification) {
    return _Classify(item, classification, &UDMDBCtrl::RemoveClassification);
}

const kxString ControllerImpl::GetFolderFullPath(Item* item) const {
    try {
        ContentItem* folder =
            _dbCtrl != nullptr && _dbCtrl->IsConnected() ? AsFilledContent(item) : nullptr;
        if (folder == nullptr || !_IsDefinitionType(item, "Foldertype")) {
            return {};
        }
        kxString path;
        _dbCtrl->FindFolderFullPath(path, folder->GetItemHandle());
        return path;
    } catch (const std::exception&) {
        return {};
    }
}

bool ControllerImpl::Merge(const kxString& library,
                           const kxString& folder,
                           const kxString& comment,
                           const kxStlMap<kxString, kxStlVector<kxString>>& entities,
                           kxStlVector<Item*>& items,
                           bool flag) {
    if (_dbCtrl == nullptr) {
        return false;
    }
    try {
        kxStlMap<kxudm::UDMUID, kxStlVector<kxString>> uids;
        for (const auto& [uid, groups] : entities) {
            uids.emplace(kxudm::UDMUID(uid), groups);
        }
        kxStlVector<kxudm::UDMItemHandle> merged;
        _dbCtrl->Merge(library, folder, comment, uids, merged, flag);
        if (!merged.empty()) {
            ToItems(MANAGER_DEFAULT, &merged, items);
        }
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool ControllerImpl::Merge(const kxString& library,
                           const kxString& folder,
                           const kxString& comment,
                           const kxStlVector<kxString>& entities,
                           kxStlVector<Item*>& items) {
    if (_dbCtrl == nullptr) {
        return false;
    }
    try {
        const kxStlVector<kxudm::UDMUID> uids(entities.begin(), entities.end());
        kxStlVector<kxudm::UDMItemHandle> merged;
        _dbCtrl->Merge(library, folder, comment, uids, merged);
        if (!merged.empty()) {
            ToItems(MANAGER_DEFAULT, &merged, items);
        }
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool ControllerImpl::Export(const kxString& path, const kxStlVector<kxString>& uids) {
    try {
        if (!IsDBValid()) {
            return false;
        }
        _dbCtrl->Export(path, uids);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool ControllerImpl::Import(const kxString& path) {
    try {
        if (!IsDBValid()) {
            return false;
        }
        _dbCtrl->Import(path);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace kxct
