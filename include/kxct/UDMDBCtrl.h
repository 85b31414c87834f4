// One open session on a library.
//
// The model. A library is a repository of the data-model runtime; a session is one user's work on
// it in one workspace. A UDMDBCtrl opens its session when it is made and ends it when it goes. In
// between, everything that this system reads from or writes to the repository goes through it: it
// hands each request to the runtime's session (kxudm::IUDMProfile), gives every failure one form,
// fixes the arguments that this system never varies and turns the runtime's records into its own.
// It holds no content. What entities, revisions, check-out and links are, and which states follow
// one another, IUDMProfile.h tells; the operations here add nothing to those rules.
//
// An entity is named by a handle (kxudm::UDMItemHandle): a value that stands for one entity at one
// revision, or for nothing. A UID text is "<base>:<revision>", or "<base>" alone for the newest
// revision that this session sees.
//
// Connected or not. A session hears of changes through an observer (UDMSessionSlot), which Connect
// attaches. IsConnected tells whether it is attached and the runtime has not closed the session.
// It is a piece of information and no gate: all operations ask the runtime in either state.
//
// Failures. Unless an operation says otherwise it throws KXCTException:
//   - without a session in the runtime: "<signature>:: <source>. The pointer _udmProfilePtr is
//     null!", and nothing was asked;
//   - when the runtime fails with a std::exception: "<signature> <its what()>". What the runtime
//     leaves behind stands in IUDMProfile.h: a write that failed changed nothing.
// Anything that is no std::exception passes through. Nothing is logged, except the files that an
// import leaves out.
//
// Results. Vectors are appended to by the runtime and not emptied first, unless told otherwise.
//
// Layer: session; above the runtime, below items and controller. MasterDBManagerImpl makes the
// objects and DBCtrlCache owns them. Threads: the one of the session; Update runs on whatever
// thread the runtime notifies on. Nothing is locked.
//
//     kxStlMap<kxString, kxVariant> params;
//     params["DataSource"] = "local";
//     params["RepositoryName"] = "Demo";
//     ...
//     UDMDBCtrl session(params);
//     UDMItemHandle part = session.CreateEntity("UDMPart", "Bracket");
//     session.SetMetaData(part, "mass", 12.5);
//     session.Persist(part, "first version", false);
#pragma once

#include <kxct/kxct_export.h>
#include <kxudm/UDMUID.h>
#include <kxutl/kxStlMap.h>
#include <kxutl/kxStlSet.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>
#include <kxutl/kxVariant.h>

#include <boost/smart_ptr/shared_ptr.hpp>
#include <cstddef>
#include <vector>

namespace kxudm {
class IUDMProfile;
class IUDMProfileSlot;
class UDMAttributeDefinitionHandle;
class UDMContentDefinition;
class UDMContentDefinitionHandle;
class UDMGenericDocument;
class UDMHistoryNode;
class UDMItemHandle;
class UDMProfileUpdate;
class UDMQuerySettingHandle;
class UDMRelationHandle;
}  // namespace kxudm

namespace kxct {

enum CONN_TYPE : int;
enum HistoryCategory : int;
struct Metadata;

class KXCT_EXPORT UDMDBCtrl {
  public:
    // --- The session ---------------------------------------------------------------------------

    // Opens a session by its parameters ("DataSource", "RepositoryName", "WorkspaceName",
    // "username" and so on) and tries to connect it; a failing connection is no failure here. What
    // the runtime throws while opening passes as it is; no session at all is a KXCTException.
    explicit UDMDBCtrl(const kxStlMap<kxString, kxVariant>& params);
    // A copy shares the runtime's session and the observer, which goes on telling the original.
    // The first of them that goes ends the session for all.
    UDMDBCtrl(const UDMDBCtrl& other);
    UDMDBCtrl& operator=(const UDMDBCtrl& other);
    // Ends the runtime's session.
    ~UDMDBCtrl();

    // Attaches the observer. False if it is attached already, or if the runtime refuses.
    bool Connect();
    // Answers false and changes nothing on a living session: only the destructor ends one.
    bool Disconnect();
    bool IsConnected();
    // The runtime's session itself, for attaching further observers.
    boost::shared_ptr<kxudm::IUDMProfile> GetProfile();
    const kxudm::UDMUID& GetSessionUID() const;

    // The session's "username", "RepositoryName" and "WorkspaceName". std::out_of_range where it
    // was opened without that parameter, as a direct connection to files is.
    const kxString GetUser();
    const kxString GetLibraryName();
    const kxString GetWorkspaceName();

    // Writes the runtime's state of the session to the standard output.
    void DumpSession();
    // Takes a notification. The end of this very session makes IsConnected false.
    void Update(const kxudm::UDMProfileUpdate& update);

    // --- Libraries and workspaces --------------------------------------------------------------
    // These need no session, only `params`: where the master database is and who asks. False or an
    // empty text, for whatever reason, means that there is no answer; an empty `params` is such a
    // reason and leaves the result as it was. The last three report failures as the runtime throws
    // them.

    // Replaces `out` by, for each library: its id, then for each of `keys` that its record has, in
    // the order of `keys`: the key and its value. A key that is missing takes no place.
    static bool GetLibrariesInfo(const kxStlMap<kxString, kxVariant>& params,
                                 const kxStlVector<kxString>& keys,
                                 kxStlVector<kxString>& out,
                                 CONN_TYPE type);
    // The same for workspaces.
    static bool GetWorkspacesInfo(const kxStlMap<kxString, kxVariant>& params,
                                  const kxStlVector<kxString>& keys,
                                  kxStlVector<kxString>& out);
    // The id of the first library of exactly this name; empty if there is none.
    static const kxString GetLibraryIDByName(const kxStlMap<kxString, kxVariant>& params,
                                             const kxString& name,
                                             CONN_TYPE type);
    // Adds the fields "id", "name", "profile_name", "is_default", "type", "ldbFile", "dbhost" and
    // "dbport" that the library has to `out`. True if `out` then holds any.
    static bool GetLibraryInfoByID(const kxStlMap<kxString, kxVariant>& params,
                                   const kxString& id,
                                   kxStlMap<kxString, kxString>& out,
                                   CONN_TYPE type);
    // Replaces `out` by the fields "name", "workingDir", "client_working_dir", "host_name",
    // "user_name", "uname" and "is_default" that the workspace has. True if there are any.
    static bool GetWorkspaceInfo(const kxStlMap<kxString, kxVariant>& params,
                                 const kxString& id,
                                 kxStlMap<kxString, kxString>& out);
    // Adds to `out` what a client needs to reach a library. True if `out` then holds anything.
    static bool GetLibraryClientSettings(const kxStlMap<kxString, kxVariant>& params,
                                         const kxString& id,
                                         kxStlMap<kxString, kxVariant>& out);
    // Tries a connection; `message` becomes a sentence for the user. Throws KXCTException.
    static bool CheckConnection(const kxString& dataSource,
                                const kxString& a,
                                const kxString& b,
                                const kxString& host,
                                const kxString& c,
                                const kxString& username,
                                const kxString& password,
                                kxString& message);
    static void AddExistingLibrary(const kxStlMap<kxString, kxVariant>& params,
                                   const kxString& name);
    // `deleteFiles` takes the library's files too. Always by force: also while it is open.
    static void DeleteLibrary(const kxStlMap<kxString, kxVariant>& params, bool deleteFiles);
    static void SetDefaultLibrary(const kxStlMap<kxString, kxVariant>& params);

    // --- Entities ------------------------------------------------------------------------------
    // `group` is the name of a relation group of the parent's content definition.

    kxudm::UDMItemHandle CreateEntity(const kxString& definition, const kxString& name);
    kxudm::UDMItemHandle CreateAndAdd(const kxString& definition,
                                      const kxString& name,
                                      const kxudm::UDMItemHandle& parent,
                                      const kxString& group);
    void AddChild(const kxudm::UDMItemHandle& parent,
                  const kxudm::UDMItemHandle& child,
                  const kxString& group);
    void RemoveChildFromParent(kxudm::UDMItemHandle& parent, kxudm::UDMItemHandle& child);
    // Deletes with all owned children, never by force.
    void DeleteRootEntity(kxudm::UDMItemHandle& handle);
    // Puts a content or folder into a folder.
    void MoveContent(const kxudm::UDMItemHandle& content, const kxudm::UDMItemHandle& target);
    void GetChildren(kxStlVector<kxudm::UDMItemHandle>& out,
                     const kxudm::UDMItemHandle& parent,
                     const kxString& group,
                     const kxString& queryExpression);
    std::size_t GetNChildren(const kxudm::UDMItemHandle& parent,
                             const kxString& group,
                             const kxString& queryExpression) const;
    // `flag` also reports parents of which only an older revision holds the link.
    void GetParents(kxStlVector<kxudm::UDMItemHandle>& out,
                    const kxudm::UDMItemHandle& handle,
                    const kxString& relation,
                    bool flag);
    // The owners.
    void GetParents(kxStlVector<kxudm::UDMItemHandle>& out,
                    const kxudm::UDMItemHandle& handle,
                    bool flag);
    kxudm::UDMItemHandle GetUDMItemHandle(const kxString& uid);
    // The handles of all `uids`, in order. Stops at the first one that fails and answers false;
    // those before it are in `out`.
    bool GetUDMItemHandleList(kxStlVector<kxudm::UDMItemHandle>& out,
                              const kxStlVector<kxString>& uids);
    // Looks an entity up without ever reporting why it is not there: false then, and `out` stays as
    // it was. `latest` looks for its newest revision, whichever `id` names.
    bool FindEntityById(kxudm::UDMItemHandle& out, const kxString& id, bool latest) const;
    void SetDisplayName(const kxString& name, const kxudm::UDMItemHandle& handle) const;
    void SetMetaData(const kxudm::UDMItemHandle& handle,
                     const kxString& key,
                     const kxVariant& value);

    // --- Folders and classifications -----------------------------------------------------------

    // Paths are "/A/B".
    void CreateFolder(kxudm::UDMItemHandle& out, const kxString& path);
    // `flag` folds case.
    void GetFolder(kxudm::UDMItemHandle& out, const kxString& path, bool flag);
    // `flag` makes missing parents too.
    void GetOrCreateFolder(kxudm::UDMItemHandle& out, const kxString& path, bool flag);
    void FindFolderFullPath(kxString& out, const kxudm::UDMItemHandle& folder);
    // Placeholders of the interface: 0 and false, arguments untouched, nothing asked, no failure.
    long GetFolders(const kxString& path, std::vector<void*>& out);
    bool GetParentFolder(const kxString& path, void* folder, void*& out);

    // `first` is the content, `second` the classification.
    void AddClassification(kxudm::UDMItemHandle& first, kxudm::UDMItemHandle& second);
    void RemoveClassification(kxudm::UDMItemHandle& first, kxudm::UDMItemHandle& second);
    void SetIsMaster(const kxudm::UDMItemHandle& handle, bool flag);
    // The classifications without one above them, parted into master ones and others. `name`, if
    // not empty, selects some of them.
    void GetRootClassifications(kxStlVector<kxudm::UDMItemHandle>& out, const kxString& name);
    void GetOtherClassifications(kxStlVector<kxudm::UDMItemHandle>& out, const kxString& name);

    // --- Files ---------------------------------------------------------------------------------
    // The operations that answer bool answer true; failures are exceptions.

    // `external`: record the file by its path, without a copy.
    bool AddFile(kxudm::UDMItemHandle& handle, const kxString& path, bool external);
    // Replaces the file of the same name. `a`: the source goes; `b`: external.
    bool ReAddFile(kxudm::UDMItemHandle& handle, const kxString& path, bool a, bool b);
    bool RemoveFile(kxudm::UDMItemHandle& handle, const kxString& name);
    // External files among them.
    bool GetDocuments(kxudm::UDMItemHandle& handle, kxStlVector<kxudm::UDMGenericDocument>& out);
    // Folders with all in them, and single files, into the library's folder with the path `text`
    // ("" is the top); `map` has the options. IUDMProfile.h tells the rest. The number of contents
    // that were made. What is left out goes as an error to the host's file manager (kxLMUtls), and
    // to the listener of a kxudm::UDMProgressScope on the session.
    int AddFoldersAndFiles(const kxStlVector<kxString>& folders,
                           const kxStlVector<kxString>& files,
                           const kxString& text,
                           const kxStlMap<kxString, kxString>& map);
    // One file by its name `text`, or all where it is empty; `files` gets the paths of the copies.
    void RetrieveFilesIntoFolder(const kxudm::UDMItemHandle& handle,
                                 const kxString& folder,
                                 const kxString& text,
                                 kxStlVector<kxString>& files);
    void RetrieveFilesIntoFolder(const kxudm::UDMItemHandle& handle,
                                 const kxString& folder,
                                 const kxString& text);
    // `a`: overwrite what differs; `b`: with the files of owned children.
    void RetrieveFilesIntoFolder(const kxudm::UDMItemHandle& handle,
                                 const kxString& folder,
                                 const bool& a,
                                 const bool& b,
                                 kxStlVector<kxString>& files);
    void RetrieveFilesIntoFolder(const kxudm::UDMItemHandle& handle,
                                 const kxString& folder,
                                 const bool& a,
                                 const bool& b);
    void RetrieveFilesIntoWorkspace(const kxudm::UDMItemHandle& handle,
                                    const bool& a,
                                    const bool& b,
                                    kxStlVector<kxString>& files);
    void RetrieveFilesIntoWorkspace(const kxudm::UDMItemHandle& handle,
                                    const bool& a,
                                    const bool& b);
    // Puts the entity's further files below "<RepositoryBaseDir>/<vault>". std::out_of_range where
    // the session was opened without "RepositoryBaseDir".
    void SetVault(kxudm::UDMItemHandle& handle, const kxString& vault);

    // --- Revisions -----------------------------------------------------------------------------

    void Checkout(const kxudm::UDMItemHandle& handle, const kxString& comment);
    void UndoCheckout(const kxudm::UDMItemHandle& handle);
    // Save and Persist act on this session's working revision of the entity, whichever revision
    // `handle` stands for. The handle itself is left as it is.
    void Save(kxudm::UDMItemHandle& handle, const kxString& comment);
    // `flag` keeps the entity checked out.
    void Persist(kxudm::UDMItemHandle& handle, const kxString& comment, bool flag);
    void Synchronize(kxudm::UDMItemHandle& handle);
    bool GetSyncStatus(kxudm::UDMItemHandle& handle);
    boost::shared_ptr<kxudm::UDMHistoryNode> GetHistory(const kxudm::UDMItemHandle& handle) const;
    // A placeholder of the interface: does nothing.
    void BranchEntity(kxudm::UDMItemHandle& source,
                      kxudm::UDMItemHandle& target,
                      const kxString& name,
                      const kxString& comment,
                      const kxStlVector<kxudm::UDMItemHandle>& children);
    // Appends the branches of an entity, or its versions older than the one that the history
    // starts from, in the order of the history. One that can't be read is left out. Answers the
    // size of `out`.
    std::size_t GetLineage(const kxudm::UDMItemHandle& handle,
                           HistoryCategory category,
                           kxStlVector<kxudm::UDMItemHandle>& out);

    // --- Relations, references and queries -----------------------------------------------------

    // `flag`: the relation stays on the two exact revisions. Without it, it follows to newer ones.
    kxudm::UDMRelationHandle CreateRelation(const kxString& type,
                                            kxudm::UDMItemHandle& first,
                                            kxudm::UDMItemHandle& second,
                                            bool flag = false);
    // False if there was none.
    bool RemoveRelation(kxudm::UDMItemHandle& first, kxudm::UDMItemHandle& second);
    void AddReference(kxudm::UDMItemHandle& handle,
                      const kxudm::UDMItemHandle& target,
                      const kxString& type);
    // The referred entity comes first, unlike in AddReference.
    void RemoveReference(kxudm::UDMItemHandle& target, kxudm::UDMItemHandle& handle);
    // Nothing is appended where the entity's definition has no reference group `type`; an empty
    // `type` takes all. What the runtime throws on that look at the definition passes as it is.
    void GetReferences(kxStlVector<kxudm::UDMItemHandle>& out,
                       const kxString& type,
                       const kxudm::UDMItemHandle& handle);
    // `types` limits the answer if not empty; it then holds one type for each result.
    void GetReferredBy(kxStlVector<kxudm::UDMItemHandle>& out,
                       kxStlVector<kxString>& types,
                       const kxudm::UDMItemHandle& handle);
    // Hits from `a` up to but not including `b` (0, 0: all); `c`: root entities only. Answer the
    // number of hits before that cut.
    std::size_t ExecQuery(const kxString& query,
                          kxudm::UDMQuerySettingHandle& settings,
                          kxStlVector<kxudm::UDMItemHandle>& out,
                          long a,
                          long b,
                          bool c);
    // `mode`: 0 all words, 1 any word, 2 phrase.
    std::size_t ExecQueryFullText(const kxString& query,
                                  int mode,
                                  kxudm::UDMQuerySettingHandle& settings,
                                  kxStlVector<kxudm::UDMItemHandle>& out,
                                  long a,
                                  long b,
                                  bool c);

    // --- Exchange ------------------------------------------------------------------------------

    void Import(const kxString& path);
    // All published revisions of the entities of the UIDs `texts`, with files.
    void Export(const kxString& path, const kxStlVector<kxString>& texts);
    // Copy entities into the library `first`, below its folder `second`, with the comment `third`.
    // `out` is replaced by the copies' handles; on a failure it stays as it was. The map names for
    // each entity the groups to bring along. `flag` publishes; the vector form never does. What
    // the runtime throws while making its engine passes as it is.
    void Merge(const kxString& first,
               const kxString& second,
               const kxString& third,
               const kxStlMap<kxudm::UDMUID, kxStlVector<kxString>>& entities,
               kxStlVector<kxudm::UDMItemHandle>& out,
               bool flag);
    void Merge(const kxString& first,
               const kxString& second,
               const kxString& third,
               const kxStlVector<kxudm::UDMUID>& entities,
               kxStlVector<kxudm::UDMItemHandle>& out);

    // --- Content definitions -------------------------------------------------------------------

    kxudm::UDMContentDefinitionHandle GetContentDefinitionHandle(const kxString& definition) const;
    kxudm::UDMAttributeDefinitionHandle GetAttributeDefinitionHandle(
        const kxString& definition, const kxString& attribute) const;
    const kxStlVector<kxString> GetContentDefinitionNames();
    kxStlVector<boost::shared_ptr<kxudm::UDMContentDefinition>> GetRegisteredContentDefinitions()
        const;
    // `out` is emptied first, and stays empty if the runtime fails.
    void GetClassNames(kxStlSet<kxString>& out);
    void GetAllowedChildCdefNames(const kxString& definition,
                                  kxStlVector<kxString>& out,
                                  const kxString& group) const;
    // The groups of every category.
    void GetGroupNames(const kxString& definition, kxStlVector<kxString>& out) const;
    // An unknown definition fails with two signatures: this operation's, then that of
    // GetContentDefinitionHandle.
    kxString GetCdefDisplayName(const kxString& definition) const;
    // Appends a record for each attribute. Answers the size of `out`.
    std::size_t GetContentDefinitionMetadata(const kxString& definition,
                                             kxStlVector<Metadata>& out);
    // Name, display name, name, display name, and so on; without system attributes, and only those
    // meant for display, as the flags say.
    kxStlVector<kxString> GetContentDefinitionMetadata(const kxString& definition,
                                                       bool omitSystem,
                                                       bool displayableOnly) const;
    // Takes the definition afresh from the catalogue file. True if that changed it in the library.
    // Entities that are there follow, see docs/data-model.md; a change that would lose a value of
    // theirs is an error.
    bool UpdateContentDefinition(const kxString& definition);
    // Changes the definition to these attributes, inherited ones among them, and no others: what
    // GetContentDefinitionMetadata gave, edited. True if that changed something.
    bool UpdateContentDefinition(const kxString& definition, kxStlVector<Metadata>& metadata);

  protected:
    // Writes `content` and a line end to "<directory>/<name>", replacing what was there, and
    // answers that path. A file that can't be opened gives an empty text and a word on the standard
    // output.
    kxString _CreateFileInTmpDirectory(const kxString& directory,
                                       const kxString& name,
                                       const kxString& content);

  private:
    friend class UDMDBCtrlPeer;  // lets tests see an object whose session is gone

    kxStlMap<kxString, kxVariant> _parameters;
    boost::shared_ptr<kxudm::IUDMProfile> _udmProfilePtr;
    // Made by the first Connect and kept for later ones.
    boost::shared_ptr<kxudm::IUDMProfileSlot> _sessionSlot;
    bool _isConnected = false;
    kxudm::UDMUID _sessionUID;
};

}  // namespace kxct
