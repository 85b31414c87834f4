// The controller: one session on one library and workspace, as applications work through it.
//
// Layer: controller. The contract of each operation stands in <kxctinterfaces/Controller.h>; this
// header says what an implementation adds.
//
// Ownership: the session belongs to the manager's cache and is given back when the controller goes;
// item managers, signal handlers and the attribute settings are the controller's own. A clone
// shares the session of its source and never closes it.
//
// A connection that fails leaves a dead controller, IsDBValid() false: constructors never throw
// std::exception. Nothing brings a dead controller back.
#pragma once

#include <kxct/kxct_export.h>
#include <kxctinterfaces/Controller.h>
#include <kxctinterfaces/MasterDBManager.h>

#include <functional>

namespace kxudm {
class UDMItemHandle;
}

namespace kxct {

class ItemManager;
class MasterDBManagerImpl;
class PASettings;
class UDMDBCtrl;

class KXCT_EXPORT ControllerImpl : public Controller {
  public:
    // A dead controller.
    ControllerImpl();
    // Creates what is missing of library and workspace, and connects.
    ControllerImpl(MasterDBManager* manager,
                   const kxString& profileName,
                   const kxString& repositoryName,
                   const kxString& repositoryBaseDir,
                   const kxString& workspaceName,
                   const kxString& workspaceBaseDir,
                   const kxString& username,
                   const kxString& password,
                   const kxString& host,
                   const kxString& port);
    // Connects to a library and workspace that exist.
    ControllerImpl(MasterDBManager* manager,
                   const kxString& repositoryName,
                   const kxString& workspaceName,
                   const kxString& username,
                   const kxString& password);
    // A clone: the session, filter map, hide map, group-by attributes and scripted attributes of
    // `other`, and its attribute settings read afresh. Not its child filters, and item managers of
    // its own. Dead where `other` is no ControllerImpl.
    explicit ControllerImpl(Controller* other);
    // Member by member: the copy shares the session, the managers and the settings with its source,
    // so that only one of the two may be destroyed.
    ControllerImpl(const ControllerImpl& other);
    ControllerImpl& operator=(const ControllerImpl& other);

    const kxString GetWorkspaceName() override;
    const kxString GetLibraryName() override;
    bool AddFile(Item* item, const kxString& path, bool flag) override;
    bool AddFile(Item* item,
                 const kxString& type,
                 const kxString& fileType,
                 const kxString& path,
                 bool flag,
                 kxString group) override;
    void ClearCache(const ManagerType& type) override;
    bool AddClassification(Item* item, Item* classification) override;
    bool RemoveClassification(Item* item, Item* classification) override;
    Item* CreateContent(const kxString& type, const kxString& name, Item* parent) override;
    Item* CreateContent(const kxString& type, const kxString& name) override;
    bool UpdateContentDefinition(const kxString& definition,
                                 kxStlVector<Metadata>& metadata) override;
    bool UpdateContentDefinition(const kxString& definition) override;
    const kxStlVector<kxString> GetContentDefinitionNames() override;
    size_t GetContentDefinitionMetadata(const kxString& definition,
                                        kxStlVector<Metadata>& metadata) override;
    size_t GetHistory(const kxStlVector<kxString>& uids, kxStlVector<Item*>& items) override;
    Item* GetItem(const kxString& id, bool latest) override;
    Item* GetItem(const kxString& id, const ManagerType& type, bool latest) override;
    bool GetItemList(kxStlVector<Item*>& items,
                     const kxStlVector<kxString>& uids,
                     const ManagerType& type) override;
    size_t GetAllItems(kxStlVector<Item*>& items, const ManagerType& type) override;
    size_t GetMasterClassifications(kxStlVector<Item*>& items) override;
    size_t GetOtherClassifications(kxStlVector<Item*>& items) override;
    SignalHandler* GetSignalHandler(const ManagerType& type) override;
    bool CheckOut(kxStlVector<Item*>& items, const kxString& comment) override;
    bool Delete(kxStlVector<Item*>& items) override;
    bool Publish(kxStlVector<Item*>& items, const kxString& comment, bool flag) override;
    bool Revert(kxStlVector<Item*>& items) override;
    bool Save(kxStlVector<Item*>& items, const kxString& comment) override;
    bool Organize(kxStlVector<Item*>& items, Item* target) override;
    bool DropAllowed(Item* target, Item* dragged) override;
    size_t GetStructure(const ManagerType& type,
                        const kxStlVector<Item*>& items,
                        kxStlVector<Item*>& newItems,
                        kxStlVector<Item*>& deletedItems,
                        kxStlVector<std::pair<Item*, Item*>>& newRelations,
                        kxStlVector<std::pair<Item*, Item*>>& deletedRelations,
                        bool& moreExpected,
                        bool group) override;
    bool IsDBValid() override;
    bool Merge(const kxString& library,
               const kxString& folder,
               const kxString& comment,
               const kxStlMap<kxString, kxStlVector<kxString>>& entities,
               kxStlVector<Item*>& items,
               bool flag) override;
    bool Merge(const kxString& library,
               const kxString& folder,
               const kxString& comment,
               const kxStlVector<kxString>& entities,
               kxStlVector<Item*>& items) override;
    void DumpSession() override;
    size_t Query(const kxString& query,
                 kxStlVector<kxString>& uids,
                 const int& versions,
                 const QueryMode& mode,
                 long a,
                 long b,
                 bool c,
                 bool ignoreCase) override;
    size_t Query(const kxString& query,
                 kxStlVector<Item*>& items,
                 const int& versions,
                 const QueryMode& mode,
                 long a,
                 long b,
                 bool c,
                 bool ignoreCase) override;
    size_t Query(const kxString& query,
                 kxStlVector<Item*>& items,
                 const ManagerType& type,
                 const int& versions,
                 const QueryMode& mode,
                 long a,
                 long b,
                 bool c,
                 bool ignoreCase) override;
    const kxVariant GetAttributeDescription(Item* item,
                                            const kxString& attribute,
                                            const kxString& key) const override;
    const kxStlVector<kxString> GetAttributeNameList(Item* item,
                                                     bool omitSystem,
                                                     bool displayableOnly,
                                                     bool settingsOnly) const override;
    const kxStlVector<kxString> GetAttributeNameDiplaynameMap(Item* item,
                                                              bool omitSystem,
                                                              bool displayableOnly) const override;
    bool HasPendingAttributeChanges() const override;
    const kxVariant GetAttributeValue(const kxString& uid,
                                      const kxString& attribute) const override;
    const kxVariant GetAttributeValue(Item* item, const kxString& attribute) const override;
    bool IsAttributeEditable(Item* item, const kxString& attribute) override;
    bool SetAttributeValue(const kxString& uid,
                           const kxString& attribute,
                           kxVariant& value) override;
    bool SetAttributeValue(Item* item, const kxString& attribute, kxVariant& value) override;
    bool NextAttributeValue(Item* item, const kxString& attribute) override;
    void SetAttributeSettingsFile(const kxString& path) override;
    bool RegisterScriptedAttribute(const kxString& attribute, const kxString& procedure) override;
    bool UnRegisterScriptedAttribute(const kxString& attribute) override;
    const kxStlVector<kxString> GetScriptedAttributes() const override;
    void SetFilterMap(const ChildFilterMap& map) override;
    const ChildFilterMap GetFilterMap() const override;
    void SetHideMap(const ChildFilterMap& map) override;
    const ChildFilterMap GetHideMap() const override;
    void SetFilterMapForChildren(const ItemFilterList& filters) override;
    const ItemFilterList GetFilterMapForChildren() const override;
    void SetGroupByAttributes(const kxStlVector<kxString>& attributes) override;
    const kxStlVector<kxString> GetGroupByAttributes() const override;
    bool MoveContent(Item* item, Item* folder) override;
    Item* GetOrCreateFolder(const kxString& path, bool flag) override;
    Item* CreateFolder(const kxString& path) override;
    Item* GetFolder(const kxString& path, bool flag) override;
    const kxString GetFolderFullPath(Item* item) const override;
    int AddFoldersAndFiles(const kxStlVector<kxString>& folders,
                           const kxStlVector<kxString>& files,
                           const kxString& root,
                           const kxStlMap<kxString, kxString>& options) override;
    void AddReferences(Item* item,
                       kxStlVector<Item*>& targets,
                       const kxStlVector<kxString>& roles) override;
    void GetReferences(kxStlVector<Item*>& items,
                       kxStlVector<kxString>& roles,
                       Item* item) override;
    void RemoveReferences(kxStlVector<Item*>& targets, Item* item) override;
    void GetReferredBy(kxStlVector<Item*>& items,
                       kxStlVector<kxString>& roles,
                       Item* item) override;
    bool GetSyncStatus(Item* item) override;
    void Synchronize(Item* item) override;
    bool AddRelation(Item* from, Item* to, const kxString& name) override;
    bool RemoveRelation(Item* from, Item* to) override;
    bool AddChildren(Item* parent,
                     kxStlVector<Item*>& children,
                     const kxStlVector<kxString>& groups) override;
    bool Export(const kxString& path, const kxStlVector<kxString>& uids) override;
    bool Import(const kxString& path) override;
    void ToItems(const ManagerType& type, void* handles, kxStlVector<Item*>& items) override;
    // Deletes the attribute settings, the signal handlers, the managers with all their items, and
    // gives the session back to the manager that it came from.
    ~ControllerImpl() override;

  protected:
    // The manager of a type, made at its first use. Null without a session and for an unknown
    // type; that null is remembered.
    ItemManager* _GetItemManager(const ManagerType& type);
    // The handle of a content; an empty one for any other item.
    kxudm::UDMItemHandle _GetItemHandle(Item* item) const;
    bool _GetUDMItemHandleList(kxStlVector<kxudm::UDMItemHandle>& handles,
                               const kxStlVector<kxString>& uids);

    // Append the hits to `items`. False where the query failed or can't be asked.
    bool _ExecQuery(const kxString& query,
                    kxStlVector<Item*>* items,
                    const ManagerType& type,
                    const int& versions,
                    long a,
                    long b,
                    bool c,
                    bool ignoreCase);
    bool _ExecQueryFullText(const kxString& query,
                            int mode,
                            kxStlVector<Item*>* items,
                            const ManagerType& type,
                            long a,
                            long b,
                            bool c,
                            bool ignoreCase);

    // What the procedure of a scripted attribute answers; an empty variant or false for a name
    // that is not registered.
    const kxVariant _GetScriptedAttributeValue(Item* item, const kxString& attribute) const;
    const kxVariant _GetScriptedAttributeDescription(Item* item,
                                                     const kxString& attribute,
                                                     const kxString& key) const;
    bool _SetScriptedAttributeValue(Item* item, const kxString& attribute, kxVariant& value);
    bool _NextScriptedAttributeValue(Item* item, const kxString& attribute);
    bool _IsScriptedAttributeEditable(Item* item, const kxString& attribute);

  private:
    bool _IsScripted(const kxString& attribute) const;
    bool _IsInAttributeSettings(const kxString& definition) const;
    kxVariant _AskScript(const kxString& attribute,
                         const char* verb,
                         Item* item,
                         const kxVariant* argument) const;
    void _RaiseItemUpdated(Item* item);
    Item* _FolderItem(const std::function<void(kxudm::UDMItemHandle&)>& find);
    size_t _ClassificationItems(kxStlVector<Item*>& items,
                                void (UDMDBCtrl::*list)(kxStlVector<kxudm::UDMItemHandle>&,
                                                        const kxString&));
    void _DropBarrenItems(kxStlVector<Item*>& items);
    bool _FindSiblings(const kxString& type,
                       const kxString& expression,
                       Item* parent,
                       kxStlVector<kxudm::UDMItemHandle>& siblings);
    bool _Classify(Item* item,
                   Item* classification,
                   void (UDMDBCtrl::*operation)(kxudm::UDMItemHandle&, kxudm::UDMItemHandle&));
    bool _IsDefinitionType(Item* item, const char* type) const;

    UDMDBCtrl* _dbCtrl = nullptr;
    kxStlMap<ManagerType, ItemManager*> _itemManagers;
    kxStlMap<ManagerType, SignalHandler*> _signalHandlers;
    ChildFilterMap _hideMap;
    ChildFilterMap _filterMap;
    ItemFilterList _childFilters;
    kxStlVector<kxString> _groupByAttributes;
    kxStlMap<kxString, kxString> _scriptedAttributes;
    PASettings* _attributeSettings = nullptr;
    MasterDBManagerImpl* _masterDB = nullptr;
};

}  // namespace kxct
