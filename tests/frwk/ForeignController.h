// A controller of another making than this library's: does nothing and tells when it is destroyed.
#pragma once

#include <kxctinterfaces/Controller.h>
#include <kxctinterfaces/ItemFilterList.h>
#include <kxctinterfaces/Metadata.h>

class ForeignController : public kxct::Controller {
  public:
    explicit ForeignController(bool& destroyed) : _destroyed(destroyed) {}
    ~ForeignController() override { _destroyed = true; }

    const kxString GetWorkspaceName() override { return {}; }
    const kxString GetLibraryName() override { return {}; }
    bool AddFile(kxct::Item*, const kxString&, bool) override { return {}; }
    bool AddFile(
        kxct::Item*, const kxString&, const kxString&, const kxString&, bool, kxString) override {
        return {};
    }
    void ClearCache(const kxct::ManagerType&) override {}
    bool AddClassification(kxct::Item*, kxct::Item*) override { return {}; }
    bool RemoveClassification(kxct::Item*, kxct::Item*) override { return {}; }
    kxct::Item* CreateContent(const kxString&, const kxString&, kxct::Item*) override { return {}; }
    kxct::Item* CreateContent(const kxString&, const kxString&) override { return {}; }
    bool UpdateContentDefinition(const kxString&, kxStlVector<kxct::Metadata>&) override {
        return {};
    }
    bool UpdateContentDefinition(const kxString&) override { return {}; }
    const kxStlVector<kxString> GetContentDefinitionNames() override { return {}; }
    size_t GetContentDefinitionMetadata(const kxString&, kxStlVector<kxct::Metadata>&) override {
        return {};
    }
    size_t GetHistory(const kxStlVector<kxString>&, kxStlVector<kxct::Item*>&) override {
        return {};
    }
    kxct::Item* GetItem(const kxString&, bool) override { return {}; }
    kxct::Item* GetItem(const kxString&, const kxct::ManagerType&, bool) override { return {}; }
    bool GetItemList(kxStlVector<kxct::Item*>&,
                     const kxStlVector<kxString>&,
                     const kxct::ManagerType&) override {
        return {};
    }
    size_t GetAllItems(kxStlVector<kxct::Item*>&, const kxct::ManagerType&) override { return {}; }
    size_t GetMasterClassifications(kxStlVector<kxct::Item*>&) override { return {}; }
    size_t GetOtherClassifications(kxStlVector<kxct::Item*>&) override { return {}; }
    kxct::SignalHandler* GetSignalHandler(const kxct::ManagerType&) override { return {}; }
    bool CheckOut(kxStlVector<kxct::Item*>&, const kxString&) override { return {}; }
    bool Delete(kxStlVector<kxct::Item*>&) override { return {}; }
    bool Publish(kxStlVector<kxct::Item*>&, const kxString&, bool) override { return {}; }
    bool Revert(kxStlVector<kxct::Item*>&) override { return {}; }
    bool Save(kxStlVector<kxct::Item*>&, const kxString&) override { return {}; }
    bool Organize(kxStlVector<kxct::Item*>&, kxct::Item*) override { return {}; }
    bool DropAllowed(kxct::Item*, kxct::Item*) override { return {}; }
    size_t GetStructure(const kxct::ManagerType&,
                        const kxStlVector<kxct::Item*>&,
                        kxStlVector<kxct::Item*>&,
                        kxStlVector<kxct::Item*>&,
                        kxStlVector<std::pair<kxct::Item*, kxct::Item*>>&,
                        kxStlVector<std::pair<kxct::Item*, kxct::Item*>>&,
                        bool&,
                        bool) override {
        return {};
    }
    bool IsDBValid() override { return {}; }
    bool Merge(const kxString&,
               const kxString&,
               const kxString&,
               const kxStlMap<kxString, kxStlVector<kxString>>&,
               kxStlVector<kxct::Item*>&,
               bool) override {
        return {};
    }
    bool Merge(const kxString&,
               const kxString&,
               const kxString&,
               const kxStlVector<kxString>&,
               kxStlVector<kxct::Item*>&) override {
        return {};
    }
    void DumpSession() override {}
    size_t Query(const kxString&,
                 kxStlVector<kxString>&,
                 const int&,
                 const kxct::QueryMode&,
                 long,
                 long,
                 bool,
                 bool) override {
        return {};
    }
    size_t Query(const kxString&,
                 kxStlVector<kxct::Item*>&,
                 const int&,
                 const kxct::QueryMode&,
                 long,
                 long,
                 bool,
                 bool) override {
        return {};
    }
    size_t Query(const kxString&,
                 kxStlVector<kxct::Item*>&,
                 const kxct::ManagerType&,
                 const int&,
                 const kxct::QueryMode&,
                 long,
                 long,
                 bool,
                 bool) override {
        return {};
    }
    const kxVariant GetAttributeDescription(kxct::Item*,
                                            const kxString&,
                                            const kxString&) const override {
        return {};
    }
    const kxStlVector<kxString> GetAttributeNameList(kxct::Item*, bool, bool, bool) const override {
        return {};
    }
    const kxStlVector<kxString> GetAttributeNameDiplaynameMap(kxct::Item*,
                                                              bool,
                                                              bool) const override {
        return {};
    }
    bool HasPendingAttributeChanges() const override { return {}; }
    const kxVariant GetAttributeValue(const kxString&, const kxString&) const override {
        return {};
    }
    const kxVariant GetAttributeValue(kxct::Item*, const kxString&) const override { return {}; }
    bool IsAttributeEditable(kxct::Item*, const kxString&) override { return {}; }
    bool SetAttributeValue(const kxString&, const kxString&, kxVariant&) override { return {}; }
    bool SetAttributeValue(kxct::Item*, const kxString&, kxVariant&) override { return {}; }
    bool NextAttributeValue(kxct::Item*, const kxString&) override { return {}; }
    void SetAttributeSettingsFile(const kxString&) override {}
    bool RegisterScriptedAttribute(const kxString&, const kxString&) override { return {}; }
    bool UnRegisterScriptedAttribute(const kxString&) override { return {}; }
    const kxStlVector<kxString> GetScriptedAttributes() const override { return {}; }
    void SetFilterMap(const kxct::ChildFilterMap&) override {}
    const kxct::ChildFilterMap GetFilterMap() const override { return {}; }
    void SetHideMap(const kxct::ChildFilterMap&) override {}
    const kxct::ChildFilterMap GetHideMap() const override { return {}; }
    void SetFilterMapForChildren(const kxct::ItemFilterList&) override {}
    const kxct::ItemFilterList GetFilterMapForChildren() const override { return {}; }
    void SetGroupByAttributes(const kxStlVector<kxString>&) override {}
    const kxStlVector<kxString> GetGroupByAttributes() const override { return {}; }
    bool MoveContent(kxct::Item*, kxct::Item*) override { return {}; }
    kxct::Item* GetOrCreateFolder(const kxString&, bool) override { return {}; }
    kxct::Item* CreateFolder(const kxString&) override { return {}; }
    kxct::Item* GetFolder(const kxString&, bool) override { return {}; }
    const kxString GetFolderFullPath(kxct::Item*) const override { return {}; }
    int AddFoldersAndFiles(const kxStlVector<kxString>&,
                           const kxStlVector<kxString>&,
                           const kxString&,
                           const kxStlMap<kxString, kxString>&) override {
        return {};
    }
    void AddReferences(kxct::Item*,
                       kxStlVector<kxct::Item*>&,
                       const kxStlVector<kxString>&) override {}
    void GetReferences(kxStlVector<kxct::Item*>&, kxStlVector<kxString>&, kxct::Item*) override {}
    void RemoveReferences(kxStlVector<kxct::Item*>&, kxct::Item*) override {}
    void GetReferredBy(kxStlVector<kxct::Item*>&, kxStlVector<kxString>&, kxct::Item*) override {}
    bool GetSyncStatus(kxct::Item*) override { return {}; }
    void Synchronize(kxct::Item*) override {}
    bool AddRelation(kxct::Item*, kxct::Item*, const kxString&) override { return {}; }
    bool RemoveRelation(kxct::Item*, kxct::Item*) override { return {}; }
    bool AddChildren(kxct::Item*,
                     kxStlVector<kxct::Item*>&,
                     const kxStlVector<kxString>&) override {
        return {};
    }
    bool Export(const kxString&, const kxStlVector<kxString>&) override { return {}; }
    bool Import(const kxString&) override { return {}; }
    void ToItems(const kxct::ManagerType&, void*, kxStlVector<kxct::Item*>&) override {}

  private:
    bool& _destroyed;
};
