// Children, files, references, relations, synchronisation.
#include <kxct/ControllerImpl.h>
#include <kxct/UDMDBCtrl.h>
#include <kxudm/UDMRelationHandle.h>

#include <boost/filesystem/path.hpp>

#include "controller/_private/Contents.h"

namespace kxct {

bool ControllerImpl::AddChildren(Item* parent,
                                 kxStlVector<Item*>& children,
                                 const kxStlVector<kxString>& groups) {
    try {
        ContentItem* content = AsFilledContent(parent);
        if (content == nullptr || children.size() != groups.size()) {
            return false;
        }
        for (size_t i = 0; i < children.size(); ++i) {
            if (ContentItem* child = AsFilledContent(children[i])) {
                _dbCtrl->AddChild(content->GetItemHandle(), child->GetItemHandle(), groups[i]);
            }
        }
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool ControllerImpl::AddFile(Item* item, const kxString& path, bool flag) {
    try {
        ContentItem* content = IsDBValid() ? AsContent(item) : nullptr;
        return content != nullptr && _dbCtrl->AddFile(content->GetItemHandle(), path, flag);
    } catch (const std::exception&) {
        return false;
    }
}

bool ControllerImpl::AddFile(Item* item,
                             const kxString& type,
                             const kxString& fileType,
                             const kxString& path,
                             bool flag,
                             // By value: the interface's form.
                             // NOLINTNEXTLINE(performance-unnecessary-value-param)
                             kxString group) {
    try {
        if (!IsDBValid() || AsContent(item) == nullptr) {
            return false;
        }
        const kxString fileName = boost::filesystem::path(path).filename().string();
        Item* content = CreateContent(type, fileName);
        if (content == nullptr) {
            return false;
        }
        item->Add(content, group);
        kxVariant displayName(fileName);
        SetAttributeValue(content, "displayname", displayName);
        kxVariant fileTypeValue(fileType);
        SetAttributeValue(content, "filetype", fileTypeValue);
        kxudm::UDMItemHandle handle = _GetItemHandle(content);
        return _dbCtrl->AddFile(handle, path, flag);
    } catch (const std::exception&) {
        return false;
    }
}

// Contains nothing: a failure reaches the caller.
int ControllerImpl::AddFoldersAndFiles(const kxStlVector<kxString>& folders,
                                       const kxStlVector<kxString>& files,
                                       const kxString& root,
                                       const kxStlMap<kxString, kxString>& options) {
    return IsDBValid() ? _dbCtrl->AddFoldersAndFiles(folders, files, root, options) : -1;
}

void ControllerImpl::AddReferences(Item* item,
                                   kxStlVector<Item*>& targets,
                                   const kxStlVector<kxString>& roles) {
    try {
        ContentItem* content = AsFilledContent(item);
        if (content == nullptr || targets.size() != roles.size()) {
            return;
        }
        for (size_t i = 0; i < targets.size(); ++i) {
            if (ContentItem* target = AsFilledContent(targets[i])) {
                _dbCtrl->AddReference(content->GetItemHandle(), target->GetItemHandle(), roles[i]);
            }
        }
    } catch (const std::exception&) {
        return;
    }
}

void ControllerImpl::RemoveReferences(kxStlVector<Item*>& targets, Item* item) {
    try {
        ContentItem* content = AsFilledContent(item);
        if (content == nullptr) {
            return;
        }
        for (Item* entry : targets) {
            if (ContentItem* target = AsFilledContent(entry)) {
                // The reference first, then who refers: the session turns the two round.
                _dbCtrl->RemoveReference(target->GetItemHandle(), content->GetItemHandle());
            }
        }
    } catch (const std::exception&) {
        return;
    }
}

void ControllerImpl::GetReferences(kxStlVector<Item*>& items,
                                   kxStlVector<kxString>& roles,
                                   Item* item) {
    try {
        ContentItem* content = AsFilledContent(item);
        if (content == nullptr) {
            return;
        }
        kxStlVector<kxudm::UDMItemHandle> handles;
        for (const kxString& role : roles) {
            _dbCtrl->GetReferences(handles, role, content->GetItemHandle());
        }
        ToItems(MANAGER_DEFAULT, &handles, items);
    } catch (const std::exception&) {
        return;
    }
}

void ControllerImpl::GetReferredBy(kxStlVector<Item*>& items,
                                   kxStlVector<kxString>& roles,
                                   Item* item) {
    try {
        if (item == nullptr || (item->IsA() != "ContentItem" && item->IsA() != "HistoryItem")) {
            return;
        }
        const kxudm::UDMItemHandle handle = item->GetItemHandle();
        if (handle.IsEmpty()) {
            return;
        }
        kxStlVector<kxudm::UDMItemHandle> handles;
        _dbCtrl->GetReferredBy(handles, roles, handle);
        ToItems(MANAGER_DEFAULT, &handles, items);
    } catch (const std::exception&) {
        return;
    }
}

bool ControllerImpl::GetSyncStatus(Item* item) {
    try {
        ContentItem* content = AsFilledContent(item);
        return content != nullptr && _dbCtrl->GetSyncStatus(content->GetItemHandle());
    } catch (const std::exception&) {
        return false;
    }
}

void ControllerImpl::Synchronize(Item* item) {
    try {
        if (ContentItem* content = AsFilledContent(item)) {
            _dbCtrl->Synchronize(content->GetItemHandle());
        }
    } catch (const std::exception&) {
        return;
    }
}

bool ControllerImpl::AddRelation(Item* from, Item* to, const kxString& name) {
    try {
        ContentItem* first = IsDBValid() ? AsFilledContent(from) : nullptr;
        ContentItem* second = AsFilledContent(to);
        if (first == nullptr || second == nullptr) {
            return false;
        }
        _dbCtrl->CreateRelation(name, first->GetItemHandle(), second->GetItemHandle());
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

bool ControllerImpl::RemoveRelation(Item* from, Item* to) {
    try {
        ContentItem* first = IsDBValid() ? AsFilledContent(from) : nullptr;
        ContentItem* second = AsFilledContent(to);
        return first != nullptr && second != nullptr &&
               _dbCtrl->RemoveRelation(first->GetItemHandle(), second->GetItemHandle());
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace kxct
