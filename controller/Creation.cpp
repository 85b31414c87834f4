// New contents and folders.
#include <kxct/ControllerImpl.h>
#include <kxct/ItemManager.h>
#include <kxct/UDMDBCtrl.h>

#include "controller/_private/Contents.h"

namespace kxct {

namespace {

constexpr char kCategories[] = "Categories";
constexpr char kFoldertype[] = "Foldertype";

// `name` up to its last underscore; the whole of it without one.
kxString BaseName(const kxString& name) {
    const size_t underscore = name.rfind('_');
    return underscore == kxString::npos ? name : kxString(name.substr(0, underscore));
}

// A name that stands free among siblings found by their like names. Only their number counts, and
// only one collision is seen to: that is the rule for names here.
kxString FreeName(const kxString& name, const kxStlVector<kxudm::UDMItemHandle>& siblings) {
    kxString candidate = name;
    if (!siblings.empty()) {
        candidate += "_" + std::to_string(siblings.size());
    }
    for (const kxudm::UDMItemHandle& sibling : siblings) {
        if (sibling.GetDisplayName() == candidate) {
            candidate += "_1";
            break;
        }
    }
    return candidate;
}

}  // namespace

Item* ControllerImpl::CreateContent(const kxString& type, const kxString& name) {
    try {
        ItemManager* manager = IsDBValid() ? _GetItemManager(MANAGER_DEFAULT) : nullptr;
        if (manager == nullptr) {
            return nullptr;
        }
        const kxudm::UDMItemHandle handle = _dbCtrl->CreateEntity(type, name);
        return manager->CreateItem(handle);
    } catch (const std::exception&) {
        return nullptr;
    }
}

Item* ControllerImpl::CreateContent(const kxString& type, const kxString& name, Item* parent) {
    try {
        if (!IsDBValid()) {
            return nullptr;
        }
        const char* attribute = type == kCategories || type == kFoldertype ? "name" : "displayname";
        const kxString expression =
            "(type == " + type + ") && (attrib." + attribute + " like \"" + BaseName(name) + "\")";
        kxStlVector<kxudm::UDMItemHandle> siblings;
        if (!_FindSiblings(type, expression, parent, siblings)) {
            return nullptr;
        }
        return CreateContent(type, FreeName(name, siblings));
    } catch (const std::exception&) {
        return nullptr;
    }
}

// False for a folder below a classification and the reverse, which the content model forbids.
bool ControllerImpl::_FindSiblings(const kxString& type,
                                   const kxString& expression,
                                   Item* parent,
                                   kxStlVector<kxudm::UDMItemHandle>& siblings) {
    if (parent == nullptr) {
        if (type == kCategories) {
            _dbCtrl->GetOtherClassifications(siblings, expression);
        }
        return true;
    }
    const kxString parentType = parent->GetType();
    if ((type == kCategories && parentType == kFoldertype) ||
        (type == kFoldertype && parentType == kCategories)) {
        return false;
    }
    _dbCtrl->GetChildren(siblings, parent->GetItemHandle(), "", expression);
    return true;
}

// The item of the folder whose handle `find` fills.
Item* ControllerImpl::_FolderItem(const std::function<void(kxudm::UDMItemHandle&)>& find) {
    try {
        ItemManager* manager = _GetItemManager(MANAGER_DEFAULT);
        if (manager == nullptr) {
            return nullptr;
        }
        kxudm::UDMItemHandle handle;
        find(handle);
        return manager->CreateItem(handle);
    } catch (const std::exception&) {
        return nullptr;
    }
}

Item* ControllerImpl::CreateFolder(const kxString& path) {
    return _FolderItem([&](kxudm::UDMItemHandle& handle) { _dbCtrl->CreateFolder(handle, path); });
}

Item* ControllerImpl::GetOrCreateFolder(const kxString& path, bool flag) {
    return _FolderItem(
        [&](kxudm::UDMItemHandle& handle) { _dbCtrl->GetOrCreateFolder(handle, path, flag); });
}

Item* ControllerImpl::GetFolder(const kxString& path, bool flag) {
    return _FolderItem(
        [&](kxudm::UDMItemHandle& handle) { _dbCtrl->GetFolder(handle, path, flag); });
}

}  // namespace kxct
