#include <kxct/ControllerImpl.h>
#include <kxct/DefaultItemManager.h>
#include <kxct/HistoryItemManager.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/PASettings.h>
#include <kxct/SignalHandler.h>
#include <kxct/UDMDBCtrl.h>

#include <memory>

#include "controller/_private/Contents.h"

namespace kxct {

ContentItem* AsContent(Item* item) {
    return item != nullptr && item->IsA() == "ContentItem" ? dynamic_cast<ContentItem*>(item)
                                                           : nullptr;
}

ContentItem* AsFilledContent(Item* item) {
    ContentItem* content = AsContent(item);
    return content != nullptr && !content->GetItemHandle().IsEmpty() ? content : nullptr;
}

ControllerImpl::ControllerImpl() = default;

ControllerImpl::ControllerImpl(MasterDBManager* manager,
                               const kxString& profileName,
                               const kxString& repositoryName,
                               const kxString& repositoryBaseDir,
                               const kxString& workspaceName,
                               const kxString& workspaceBaseDir,
                               const kxString& username,
                               const kxString& password,
                               const kxString& host,
                               const kxString& port) {
    try {
        _masterDB = dynamic_cast<MasterDBManagerImpl*>(manager);
        if (_masterDB != nullptr) {
            _dbCtrl = _masterDB->Create(profileName,
                                        repositoryName,
                                        repositoryBaseDir,
                                        workspaceName,
                                        workspaceBaseDir,
                                        username,
                                        password,
                                        host,
                                        port,
                                        "",
                                        "",
                                        "",
                                        "");
        }
    } catch (const std::exception&) {
        _dbCtrl = nullptr;
    }
}

ControllerImpl::ControllerImpl(MasterDBManager* manager,
                               const kxString& repositoryName,
                               const kxString& workspaceName,
                               const kxString& username,
                               const kxString& password) {
    try {
        _masterDB = dynamic_cast<MasterDBManagerImpl*>(manager);
        if (_masterDB != nullptr) {
            _dbCtrl = _masterDB->Open(
                repositoryName, workspaceName, username, password, CONN_TYPE_LIBRARY);
        }
    } catch (const std::exception&) {
        _dbCtrl = nullptr;
    }
}

ControllerImpl::ControllerImpl(Controller* other) {
    const auto* source = dynamic_cast<ControllerImpl*>(other);
    if (source == nullptr) {
        return;
    }
    _dbCtrl = source->_dbCtrl;
    _filterMap = source->_filterMap;
    _hideMap = source->_hideMap;
    _groupByAttributes = source->_groupByAttributes;
    _scriptedAttributes = source->_scriptedAttributes;
    if (source->_attributeSettings != nullptr) {
        const kxString file = source->_attributeSettings->GetSettingsFile();
        if (!file.empty()) {
            _attributeSettings = new PASettings(file);
        }
    }
}

ControllerImpl::ControllerImpl(const ControllerImpl& other) = default;
ControllerImpl& ControllerImpl::operator=(const ControllerImpl& other) = default;

ControllerImpl::~ControllerImpl() {
    delete _attributeSettings;
    _attributeSettings = nullptr;
    // The handlers go before the managers that point to them; the managers don't touch them then.
    for (auto& [type, handler] : _signalHandlers) {
        delete handler;
        handler = nullptr;
    }
    for (auto& [type, manager] : _itemManagers) {
        delete manager;
        manager = nullptr;
    }
    if (_dbCtrl != nullptr && _masterDB != nullptr) {
        _masterDB->Close(_dbCtrl);
        _dbCtrl = nullptr;
    }
}

bool ControllerImpl::IsDBValid() {
    return _dbCtrl != nullptr && _dbCtrl->IsConnected();
}

ItemManager* ControllerImpl::_GetItemManager(const ManagerType& type) {
    if (!IsDBValid()) {
        return nullptr;
    }
    if (const auto found = _itemManagers.find(type); found != _itemManagers.end()) {
        return found->second;
    }
    SignalHandler* handler = GetSignalHandler(type);
    std::unique_ptr<ItemManager> manager;
    if (type == MANAGER_DEFAULT) {
        manager = std::make_unique<DefaultItemManager>(_dbCtrl, handler);
        manager->connect(nullptr);
    } else if (type == MANAGER_HISTORY) {
        // Never connected: the history tree gets no updates.
        manager = std::make_unique<HistoryItemManager>(_dbCtrl, handler);
    }
    _itemManagers[type] = manager.get();
    return manager.release();
}

SignalHandler* ControllerImpl::GetSignalHandler(const ManagerType& type) {
    if (const auto found = _signalHandlers.find(type); found != _signalHandlers.end()) {
        return found->second;
    }
    auto handler = std::make_unique<SignalHandler>();
    _signalHandlers[type] = handler.get();
    return handler.release();
}

kxudm::UDMItemHandle ControllerImpl::_GetItemHandle(Item* item) const {
    ContentItem* content = AsContent(item);
    return content != nullptr ? content->GetItemHandle() : kxudm::UDMItemHandle();
}

Item* ControllerImpl::GetItem(const kxString& id, bool latest) {
    return GetItem(id, MANAGER_DEFAULT, latest);
}

Item* ControllerImpl::GetItem(const kxString& id, const ManagerType& type, bool latest) {
    ItemManager* manager = _GetItemManager(type);
    if (manager == nullptr || !IsDBValid()) {
        return nullptr;
    }
    kxudm::UDMItemHandle handle;
    if (!_dbCtrl->FindEntityById(handle, id, latest)) {
        return nullptr;
    }
    Item* item = nullptr;
    if (manager->GetFromCache(handle, item)) {
        return item;
    }
    return manager->CreateItem(handle);
}

bool ControllerImpl::_GetUDMItemHandleList(kxStlVector<kxudm::UDMItemHandle>& handles,
                                           const kxStlVector<kxString>& uids) {
    return IsDBValid() && _dbCtrl->GetUDMItemHandleList(handles, uids);
}

bool ControllerImpl::GetItemList(kxStlVector<Item*>& items,
                                 const kxStlVector<kxString>& uids,
                                 const ManagerType& type) {
    kxStlVector<kxudm::UDMItemHandle> handles;
    if (!_GetUDMItemHandleList(handles, uids)) {
        return false;
    }
    ToItems(type, &handles, items);
    return true;
}

void ControllerImpl::ToItems(const ManagerType& type, void* handles, kxStlVector<Item*>& items) {
    if (ItemManager* manager = _GetItemManager(type)) {
        manager->ToItems(handles, items);
    }
}

size_t ControllerImpl::GetAllItems(kxStlVector<Item*>& items, const ManagerType& type) {
    ItemManager* manager = _GetItemManager(type);
    return manager != nullptr && IsDBValid() ? manager->GetAllItemsInCache(items) : 0;
}

void ControllerImpl::ClearCache(const ManagerType& type) {
    if (ItemManager* manager = _GetItemManager(type)) {
        manager->ClearCache();
    }
}

size_t ControllerImpl::_ClassificationItems(
    kxStlVector<Item*>& items,
    void (UDMDBCtrl::*list)(kxStlVector<kxudm::UDMItemHandle>&, const kxString&)) {
    try {
        if (!IsDBValid()) {
            return 0;
        }
        kxStlVector<kxudm::UDMItemHandle> handles;
        (_dbCtrl->*list)(handles, "");
        ItemManager* manager = handles.empty() ? nullptr : _GetItemManager(MANAGER_DEFAULT);
        if (manager == nullptr) {
            return 0;
        }
        manager->ToItems(&handles, items);
        return items.size();
    } catch (const std::exception&) {
        return 0;
    }
}

size_t ControllerImpl::GetMasterClassifications(kxStlVector<Item*>& items) {
    return _ClassificationItems(items, &UDMDBCtrl::GetRootClassifications);
}

size_t ControllerImpl::GetOtherClassifications(kxStlVector<Item*>& items) {
    return _ClassificationItems(items, &UDMDBCtrl::GetOtherClassifications);
}

const kxString ControllerImpl::GetLibraryName() {
    return IsDBValid() ? _dbCtrl->GetLibraryName() : kxString();
}

const kxString ControllerImpl::GetWorkspaceName() {
    return IsDBValid() ? _dbCtrl->GetWorkspaceName() : kxString();
}

void ControllerImpl::DumpSession() {
    if (_dbCtrl != nullptr) {
        _dbCtrl->DumpSession();
    }
}

}  // namespace kxct
