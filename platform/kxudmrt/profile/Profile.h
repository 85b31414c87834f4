// IUDMProfile over a library's store. What each operation promises stands in IUDMProfile.h; here
// are only the files that they are in.
//
// Layer: profile, its top.
#pragma once

#include <kxudm/IUDMProfile.h>
#include <kxudm/spi/IBulkEdit.h>
#include <kxudm/spi/IBulkRetrieval.h>
#include <kxudm/spi/IExchange.h>
#include <kxudm/spi/IMaintenance.h>
#include <kxudm/spi/IProgressSource.h>

#include "profile/Groups.h"
#include "profile/Session.h"

namespace kxudm::profile {

class Profile final : public IUDMProfile,
                      public spi::IBulkEdit,
                      public spi::IBulkRetrieval,
                      public spi::IExchange,
                      public spi::IMaintenance,
                      public spi::IProgressSource {
  public:
    explicit Profile(boost::shared_ptr<Session> session) : _session(std::move(session)) {}
    Profile(const Profile&) = delete;
    Profile& operator=(const Profile&) = delete;
    ~Profile() override;

    // Ends the session; see Session::Close.
    void Close() noexcept { _session->Close(); }
    [[nodiscard]] const boost::shared_ptr<Session>& TheSession() const { return _session; }

    // Entities: ProfileEntities.cpp
    UDMItemHandle GetEntity(const kxString& uid) override;
    UDMItemHandle CreateEntity(const kxString& definition, const kxString& name) override;
    void DeleteEntity(const UDMItemHandle& handle, bool withChildren, bool force) override;
    void SetAttributeValue(const UDMItemHandle& handle,
                           const kxString& key,
                           const kxVariant& value) override;
    void SetDisplayName(const kxString& name, const UDMItemHandle& handle) override;

    // Children and parents: ProfileChildren.cpp
    void RemoveChild(const UDMItemHandle& parent, const UDMItemHandle& child) override;
    UDMItemHandle CreateAndAddChild(const kxString& definition,
                                    const kxString& name,
                                    const UDMItemHandle& parent,
                                    const kxString& group) override;
    void AddChild(const UDMItemHandle& parent,
                  const UDMItemHandle& child,
                  const kxString& group) override;
    std::size_t GetChildCount(const UDMItemHandle& parent,
                              const kxString& group,
                              const kxString& queryExpression) override;
    void GetChildren(kxStlVector<UDMItemHandle>& children,
                     const UDMItemHandle& parent,
                     const kxString& group,
                     const kxString& queryExpression) override;
    void GetParents(kxStlVector<UDMItemHandle>& parents,
                    const UDMItemHandle& handle,
                    const kxString& relation,
                    bool anyRevision) override;

    // Relations and references: ProfileRelations.cpp, ProfileReferences.cpp
    UDMRelationHandle CreateRelation(const UDMItemHandle& first,
                                     const UDMItemHandle& second,
                                     const kxString& type,
                                     bool exact) override;
    bool RemoveRelation(const UDMItemHandle& first, const UDMItemHandle& second) override;
    void AddReference(const UDMItemHandle& handle,
                      const UDMItemHandle& target,
                      const kxString& type) override;
    void GetReferences(kxStlVector<UDMItemHandle>& targets,
                       const UDMItemHandle& handle,
                       const kxString& type) override;
    void RemoveReference(const UDMItemHandle& handle, const UDMItemHandle& target) override;
    void GetReferredBy(kxStlVector<UDMItemHandle>& referring,
                       kxStlVector<kxString>& types,
                       const UDMItemHandle& handle) override;

    // Classifications and folders: ProfileContainers.cpp
    void GetClassifications(kxStlVector<UDMItemHandle>& classifications,
                            const kxString& expression) override;
    void AddClassification(const UDMItemHandle& content,
                           const UDMItemHandle& classification) override;
    void RemoveClassification(const UDMItemHandle& content,
                              const UDMItemHandle& classification) override;
    void SetMaster(const UDMItemHandle& classification, bool master) override;
    void MoveContent(const UDMItemHandle& content, const UDMItemHandle& folder) override;
    void GetOrCreateFolder(UDMItemHandle& folder, const kxString& path, bool withParents) override;
    void CreateFolder(UDMItemHandle& folder, const kxString& path) override;
    void GetFolder(UDMItemHandle& folder, const kxString& path, bool ignoreCase) override;
    void GetFolderFullPath(kxString& path, const UDMItemHandle& folder) override;

    // The session and its definitions: ProfileSession.cpp
    void Connect(boost::shared_ptr<IUDMProfileSlot>& slot) override;
    void Disconnect(boost::shared_ptr<IUDMProfileSlot>& slot) override;
    kxString GetSessionId() override;
    void DumpSession() override;
    void GetContentDefinitionMetadata(const kxString& definition,
                                      kxStlVector<UDMCdefMetaData>& metadata) override;
    UDMProfileUtils GetProfileUtils() override;
    void BeginBulk() override;
    void CommitBulk() override;
    void RollbackBulk() noexcept override;
    IUDMProgressListener* SetProgressListener(IUDMProgressListener* listener) noexcept override;
    [[nodiscard]] IUDMProgressListener* ProgressListener() const noexcept override;

    // The life of revisions: ProfileRevisions.cpp
    void PersistEntity(const UDMItemHandle& handle,
                       const kxString& comment,
                       bool keep,
                       bool withFiles,
                       bool withLinks) override;
    void SaveEntity(const UDMItemHandle& handle, const kxString& comment, bool withFiles) override;
    void UndoCheckout(const UDMItemHandle& handle) override;
    void Checkout(const UDMItemHandle& handle, const kxString& comment) override;
    UDMItemHandle GetWorkingHandle(const UDMItemHandle& handle) override;

    // History, and how it stands to the data source: History.cpp
    boost::shared_ptr<UDMHistoryNode> GetHistory(const UDMItemHandle& handle) override;
    bool GetSyncStatus(const UDMItemHandle& handle) override;
    void Synchronize(const UDMItemHandle& handle) override;

    // The care of the library: Maintenance.cpp and Undelete.cpp
    kxStlVector<UDMFinding> VerifyLibrary(const UDMVerifyOptions& options) override;
    UDMPurged PurgeLibrary(const UDMPurgeOptions& options) override;
    kxStlVector<UDMDeletedEntity> ListDeleted() override;
    bool UndeleteEntity(const kxString& uid) override;
    void RebuildFullTextIndex() override;

    // Changes of definitions: ProfileDefinitions.cpp
    bool ReloadContentDefinition(const kxString& definition) override;
    bool UpdateContentDefinition(const kxString& definition,
                                 const kxStlVector<UDMCdefMetaData>& metadata,
                                 bool force) override;

    // Queries: ProfileQueries.cpp
    std::size_t RunQuery(kxStlVector<UDMItemHandle>& hits,
                         const kxString& query,
                         int mode,
                         long from,
                         long to,
                         const UDMQuerySettingHandle& settings,
                         bool rootsOnly,
                         bool fullText) override;

    // Documents: ProfileFiles.cpp
    void GetDocuments(const UDMItemHandle& handle,
                      kxStlVector<UDMGenericDocument>& documents,
                      bool withExternal) override;
    AddFileBuilder BeginAddFile(const UDMItemHandle& handle) override;
    void ReAddFile(const UDMItemHandle& handle,
                   const kxString& path,
                   bool move,
                   bool external) override;
    void RemoveFile(const UDMItemHandle& handle, const kxString& name) override;
    void RetrieveFilesIntoWorkspace(const UDMItemHandle& handle,
                                    const bool& overwrite,
                                    const bool& withChildren,
                                    kxStlVector<kxString>& paths) override;
    void RetrieveFilesToPath(const UDMItemHandle& handle,
                             const kxString& folder,
                             kxStlVector<kxString>& paths,
                             const kxString& document) override;
    void RetrieveFilesToFolder(const UDMItemHandle& handle,
                               const kxString& folder,
                               const bool& overwrite,
                               const bool& withChildren,
                               kxStlVector<kxString>& paths) override;
    void RetrieveBulk(const std::vector<UDMRetrieved>& wanted,
                      bool overwrite,
                      kxStlVector<kxString>& paths) override;
    void SetVault(const UDMItemHandle& handle, const kxString& directory) override;

    // Bulk import: ProfileImport.cpp
    int AddFoldersAndFiles(const kxStlVector<kxString>& folders,
                           const kxStlVector<kxString>& files,
                           const kxString& root,
                           const kxStlMap<kxString, kxString>& options) override;

    // Archives: ProfileExchange.cpp
    void Export(const kxString& path, const kxStlVector<kxString>& uids, int scope) override;
    void Import(const kxString& path) override;
    UDMImportReport ImportArchive(const kxString& path) override;

  private:
    boost::shared_ptr<Session> _session;
};

}  // namespace kxudm::profile
