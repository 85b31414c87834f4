// One session on one library: the whole of what a repository does.
//
// The model. An entity has a base UID and one content definition for life. A versioned entity
// lives in revisions: it is created at revision 0, visible to its creator's workspace alone; the
// first publish makes it revision 1 for everybody; a check-out opens a working revision, which is
// a lock; publishing or undoing ends it. Unversioned ones (folders) stay at revision 0, always
// editable and visible to everybody at once. Links join entities: owned children, references,
// folders, classifications, relations. docs/data-model.md holds the tables.
//
// A UID without a revision means the newest revision that this session sees: its own working
// revision if there is one, else the newest published one.
//
// Every operation that changes something is one transaction: when it returns, the change survives
// the death of the process, and when it throws, nothing changed. Slots are told after the commit,
// before the operation returns. Failures are exceptions derived from std::exception (UDMException
// for the runtime's own) with a text that names the object, what was wrong and what would be right.
// Result vectors are appended to. A session belongs to one thread.
#pragma once

#include <kxudm/AddFileBuilder.h>
#include <kxudm/IUDMProfileSlot.h>
#include <kxudm/UDMCdefMetaData.h>
#include <kxudm/UDMGenericDocument.h>
#include <kxudm/UDMHistoryNode.h>
#include <kxudm/UDMItemHandle.h>
#include <kxudm/UDMProfileUtils.h>
#include <kxudm/UDMQuerySettings.h>
#include <kxudm/UDMRelationHandle.h>
#include <kxutl/kxStlMap.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxVariant.h>

#include <cstddef>

namespace kxudm {

class KXUDMRT_EXPORT IUDMProfile {
  public:
    IUDMProfile() = default;
    IUDMProfile(const IUDMProfile&) = delete;
    IUDMProfile& operator=(const IUDMProfile&) = delete;
    virtual ~IUDMProfile();

    // --- Entities and attributes ---------------------------------------------------------------

    // The entity of a UID text. Unknown, invisible and deleted ones throw UDMNotFoundException.
    virtual UDMItemHandle GetEntity(const kxString& uid) = 0;
    // A new root entity. Its attributes have their defaults, "name" and the display name are
    // `name`. Unknown and abstract definitions throw.
    virtual UDMItemHandle CreateEntity(const kxString& definition, const kxString& name) = 0;
    // Hides the entity with all its revisions and its owned children, and removes the links to
    // it. `withChildren` false refuses an entity that has owned children; `force` true also takes
    // one that somebody else has checked out.
    virtual void DeleteEntity(const UDMItemHandle& handle, bool withChildren, bool force) = 0;
    // Takes a child out of all owner and reference groups of a parent. No link: throws.
    virtual void RemoveChild(const UDMItemHandle& parent, const UDMItemHandle& child) = 0;
    // CreateEntity and AddChild in one transaction.
    virtual UDMItemHandle CreateAndAddChild(const kxString& definition,
                                            const kxString& name,
                                            const UDMItemHandle& parent,
                                            const kxString& group) = 0;
    // A relation of a free type, which may not be empty or the word of a category. `exact` false
    // follows the newest revisions of both ends, true stays on these two. Throws where `first`
    // isn't editable and where the relation is there already.
    virtual UDMRelationHandle CreateRelation(const UDMItemHandle& first,
                                             const UDMItemHandle& second,
                                             const kxString& type,
                                             bool exact) = 0;
    // Removes all relations from first to second, exact ones too; false if there was none. `first`
    // must be editable if there is any.
    virtual bool RemoveRelation(const UDMItemHandle& first, const UDMItemHandle& second) = 0;
    // Adds `child` as the last one of a group of the parent's definition. Refused: a group that
    // the definition doesn't have, a child of a definition that the group doesn't allow, a second
    // owner in a composition group, a cycle, more than the group's maximum, a parent that isn't
    // editable.
    virtual void AddChild(const UDMItemHandle& parent,
                          const UDMItemHandle& child,
                          const kxString& group) = 0;
    // Children of a group: a group's name; "" for all groups of category "owner", in the
    // definition's order; or a category's word ("owner", "reference", "folder", "category"). A
    // query expression thins them out; empty takes all.
    virtual std::size_t GetChildCount(const UDMItemHandle& parent,
                                      const kxString& group,
                                      const kxString& queryExpression) = 0;
    virtual void GetChildren(kxStlVector<UDMItemHandle>& children,
                             const UDMItemHandle& parent,
                             const kxString& group,
                             const kxString& queryExpression) = 0;
    // Entities that hold a link to this one: of a category ("owner", "reference", "folder",
    // "category"), else of a relation type or group name. `anyRevision` true also reports parents
    // of which only an older revision holds the link.
    virtual void GetParents(kxStlVector<UDMItemHandle>& parents,
                            const UDMItemHandle& handle,
                            const kxString& relation,
                            bool anyRevision) = 0;
    // Checked against the attribute's type and valid values. System attributes are refused.
    virtual void SetAttributeValue(const UDMItemHandle& handle,
                                   const kxString& key,
                                   const kxVariant& value) = 0;

    // --- The life of revisions -----------------------------------------------------------------

    // A versioned entity has a working revision, of one user in one workspace, or it is published;
    // docs/data-model.md has the steps as a table. All of them do nothing to an unversioned one. An
    // entity that somebody else has checked out is an error that names who, where and since when. A
    // failed step leaves everything as it was.

    // Publishes this working revision, with files and links whatever the flags say; 0 becomes 1.
    // `keep`: stays checked out at the next working revision. An empty comment leaves the one that
    // is there. Throws, naming what is missing, without a mandatory attribute or a group's minimum.
    // Survives a loss of power.
    virtual void PersistEntity(const UDMItemHandle& handle,
                               const kxString& comment,
                               bool keep,
                               bool withFiles,
                               bool withLinks) = 0;
    // Records a save point of this working revision, with comment, time and user.
    virtual void SaveEntity(const UDMItemHandle& handle,
                            const kxString& comment,
                            bool withFiles) = 0;
    // Drops the entity's working revision with all that was done in it; handles of it are dead from
    // then on. Throws if the entity was never published.
    virtual void UndoCheckout(const UDMItemHandle& handle) = 0;
    // Of the newest revision: opens the next one for editing, at the same cost for any number of
    // children. Of an older one: makes a branch of it, which is found through GetHistory; throws if
    // the definition doesn't allow that.
    virtual void Checkout(const UDMItemHandle& handle, const kxString& comment) = 0;
    virtual void SetDisplayName(const kxString& name, const UDMItemHandle& handle) = 0;

    // --- Queries -------------------------------------------------------------------------------

    // Hits `from` up to but not including `to` (0, 0: all), in order of creation. `mode`: -1 for an
    // attribute query, 0 all words, 1 any word, 2 phrase. Returns the number before the range is
    // cut.
    virtual std::size_t RunQuery(kxStlVector<UDMItemHandle>& hits,
                                 const kxString& query,
                                 int mode,
                                 long from,
                                 long to,
                                 const UDMQuerySettingHandle& settings,
                                 bool rootsOnly,
                                 bool fullText) = 0;

    // --- Observers -----------------------------------------------------------------------------

    // Adds a slot; one that is connected already is refused. The session shares its ownership.
    virtual void Connect(boost::shared_ptr<IUDMProfileSlot>& slot) = 0;
    // Takes a slot out; one that isn't connected throws.
    virtual void Disconnect(boost::shared_ptr<IUDMProfileSlot>& slot) = 0;

    // --- History -------------------------------------------------------------------------------

    // A node of the handle's revision with all versions of the entity that the session sees, and
    // its branches. Never null.
    virtual boost::shared_ptr<UDMHistoryNode> GetHistory(const UDMItemHandle& handle) = 0;
    // The working revision of this session for the entity, whichever of its revisions the handle
    // is or was of; throws where there is none.
    virtual UDMItemHandle GetWorkingHandle(const UDMItemHandle& handle) = 0;

    // --- Files ---------------------------------------------------------------------------------

    // Documents belong to a revision: what changes them needs an editable one. Names are plain file
    // names that every system can have.

    // Of the handle's revision, in the byte order of their names; `documents` is appended to.
    // `withExternal`: files that are recorded by their path only, too.
    virtual void GetDocuments(const UDMItemHandle& handle,
                              kxStlVector<UDMGenericDocument>& documents,
                              bool withExternal) = 0;
    // Adds a file under its own name, which must be new to the revision. The file is copied into
    // the library and survives a loss of power, or, external, stays where it is. Adding and
    // replacing tell a UDMProgressScope of a copy; cancelled, they throw UDMCancelledException, and
    // the documents and the source are as they were.
    virtual AddFileBuilder BeginAddFile(const UDMItemHandle& handle) = 0;
    // Replaces the document of the file's name, which must be there. `move`: the source is removed
    // once the document is safe; if that fails, the text of the error says that the document was
    // stored. Not of an external file, of one that is external somewhere, and of a vault's own.
    virtual void ReAddFile(const UDMItemHandle& handle,
                           const kxString& path,
                           bool move,
                           bool external) = 0;
    // Older revisions keep it.
    virtual void RemoveFile(const UDMItemHandle& handle, const kxString& name) = 0;

    // The three that follow write copies, with their times, into one folder, which is made if it is
    // missing, and append their absolute paths. All or none: where a document is missing or
    // damaged, where two different ones would meet under one name, where a file in the folder
    // differs and `overwrite` is false, nothing is touched. Equal files are left alone and their
    // paths told. A listener (UDMProgress.h) that cancels leaves everything as it was.
    // `withChildren`: with the documents of owned children at any depth, each child at the newest
    // revision that the session sees.

    // Into the directory of the session's workspace.
    virtual void RetrieveFilesIntoWorkspace(const UDMItemHandle& handle,
                                            const bool& overwrite,
                                            const bool& withChildren,
                                            kxStlVector<kxString>& paths) = 0;
    // One document by name, or all of them where it is empty. Overwrites nothing.
    virtual void RetrieveFilesToPath(const UDMItemHandle& handle,
                                     const kxString& folder,
                                     kxStlVector<kxString>& paths,
                                     const kxString& document) = 0;
    virtual void RetrieveFilesToFolder(const UDMItemHandle& handle,
                                       const kxString& folder,
                                       const bool& overwrite,
                                       const bool& withChildren,
                                       kxStlVector<kxString>& paths) = 0;

    // --- Classifications -----------------------------------------------------------------------

    // Classifications without one above them; `expression`, if not empty, must hold for them.
    virtual void GetClassifications(kxStlVector<UDMItemHandle>& classifications,
                                    const kxString& expression) = 0;
    virtual void AddClassification(const UDMItemHandle& content,
                                   const UDMItemHandle& classification) = 0;
    virtual void RemoveClassification(const UDMItemHandle& content,
                                      const UDMItemHandle& classification) = 0;
    // Makes a classification a master one, or one of the others.
    virtual void SetMaster(const UDMItemHandle& classification, bool master) = 0;
    // Puts the entity's further files into another directory, below the library's base directory;
    // that itself stands for the common vault. Of the entity, not of a revision, which must be an
    // editable one all the same.
    virtual void SetVault(const UDMItemHandle& handle, const kxString& directory) = 0;

    // --- Definitions ---------------------------------------------------------------------------

    // Both change a content definition in the library, for all its sessions. The answer is true if
    // something changed, and false if the library has the definition like that already. Entities
    // that are there follow: an added attribute answers its default, the values of a removed one
    // are kept and hidden, and those of one with another data type are converted. All is one
    // transaction; an error leaves the library as it was. Errors: an unknown definition, one that
    // does not fit the others, a value that would be lost (names attribute, value and revision), a
    // change of what a definition is, or of a group with links, under its entities, and an open
    // bulk edit. Slots are told code 3 for each entity that they hold and that follows.

    // Takes a definition afresh from the catalogue file and the custom definitions, one that the
    // library doesn't have, too. An error in the file speaks against all of it.
    virtual bool ReloadContentDefinition(const kxString& definition) = 0;
    // The definition gets the attributes of the list, as GetContentDefinitionMetadata gives it, and
    // no others of its own. Inherited ones must be listed; one that differs from what is inherited
    // is overridden here. With `force`, also values that can't be told from their new form are
    // converted ("007" to 7), but none that the new type doesn't take.
    virtual bool UpdateContentDefinition(const kxString& definition,
                                         const kxStlVector<UDMCdefMetaData>& metadata,
                                         bool force) = 0;

    // --- Bulk import ---------------------------------------------------------------------------

    // Takes folders of the file system, each as a folder of its name, with all in them, and single
    // files into the library's folder `root` ("/A/B", made with its parents; "" or "/" is the top).
    // Each file becomes a content of its name with the file as its document. Returns how many
    // contents were made. docs/data-model.md has the rules; in short:
    //   - options, all of them texts: "recursive" (true), "include" and "exclude" (globs, separated
    //     by ";"), "definition" (else by the file's extension), "publish" (false), "comment",
    //     "external" (false), "strict" (false). Others, and other values than "true" and "false"
    //     where that is the choice, throw before anything is done.
    //   - a file that is there already under its name is left alone; if it differs, it fails.
    //   - what fails is left out and told to the listener of a UDMProgressScope. With "strict" the
    //     first failure throws, and nothing of the import is kept.
    //   - committed group by group: a crash, a cancellation or a failure of the library itself
    //     (UDMStoreException, which says how many contents stand) leaves whole contents only. A
    //     cancelled import returns what it has made; a strict one throws UDMCancelledException and
    //     keeps nothing.
    // Slots are told each parent once.
    virtual int AddFoldersAndFiles(const kxStlVector<kxString>& folders,
                                   const kxStlVector<kxString>& files,
                                   const kxString& root,
                                   const kxStlMap<kxString, kxString>& options) = 0;

    // --- References ----------------------------------------------------------------------------

    // Links through the groups of category "reference" of the referring entity's definition; `type`
    // is the group's name. A type that is none of them throws UDMNotFoundException.

    // As the last one of the group; empty `type`: the first group that takes the target. Refused: a
    // target that the group doesn't allow, one that is there, more than the group's maximum, a
    // referring entity that isn't editable. Circles are allowed.
    virtual void AddReference(const UDMItemHandle& handle,
                              const UDMItemHandle& target,
                              const kxString& type) = 0;
    // An empty `type` takes all groups, in the definition's order.
    virtual void GetReferences(kxStlVector<UDMItemHandle>& targets,
                               const UDMItemHandle& handle,
                               const kxString& type) = 0;
    // Out of all groups of references. No reference: throws.
    virtual void RemoveReference(const UDMItemHandle& handle, const UDMItemHandle& target) = 0;
    // One result for each reference in the newest revision of an entity. `types`, if not empty on
    // entry, filters (an empty text in it: all); on return it holds one type for each result.
    virtual void GetReferredBy(kxStlVector<UDMItemHandle>& referring,
                               kxStlVector<kxString>& types,
                               const UDMItemHandle& handle) = 0;
    virtual bool GetSyncStatus(const UDMItemHandle& handle) = 0;
    virtual void Synchronize(const UDMItemHandle& handle) = 0;

    // --- Folders -------------------------------------------------------------------------------
    // Paths are "/A/B": names byte-exact, no empty part, no "." or "..".

    // Puts a content or folder into a folder; it leaves the one that it was in.
    virtual void MoveContent(const UDMItemHandle& content, const UDMItemHandle& folder) = 0;
    // `withParents` true makes missing parents; false throws where the parent is missing.
    virtual void GetOrCreateFolder(UDMItemHandle& folder,
                                   const kxString& path,
                                   bool withParents) = 0;
    // Throws where the folder exists or its parent doesn't.
    virtual void CreateFolder(UDMItemHandle& folder, const kxString& path) = 0;
    // A missing folder throws. `ignoreCase` folds case; the exact name wins where both exist.
    virtual void GetFolder(UDMItemHandle& folder, const kxString& path, bool ignoreCase) = 0;
    virtual void GetFolderFullPath(kxString& path, const UDMItemHandle& folder) = 0;

    // --- The session ---------------------------------------------------------------------------

    // Appends a record for each attribute, in order of definition.
    virtual void GetContentDefinitionMetadata(const kxString& definition,
                                              kxStlVector<UDMCdefMetaData>& metadata) = 0;
    virtual kxString GetSessionId() = 0;
    virtual UDMProfileUtils GetProfileUtils() = 0;
    // Writes the state of the session, for support, to the standard output.
    virtual void DumpSession() = 0;

    // --- Exchange ------------------------------------------------------------------------------

    // Archives; docs/exchange-format.md describes them and numbers what export and import do.
    // Neither may be part of a bulk edit. Both tell a progress listener; cancelled, they throw
    // UDMCancelledException. Any failure leaves file, library and vault as they were.

    // Writes entities into an archive at `path`, whose folder must be there; what has the name is
    // replaced when the archive is whole. `uids` with or without revision, which makes no
    // difference; none: all of the library. `scope`: 0 the newest published revisions without
    // files, 1 with files, 2 all published revisions with files, and whatever they own. Folders and
    // classifications that they lie in always come along. Working revisions never do: an entity
    // that was never published is an error that names it, as is an unknown one.
    virtual void Export(const kxString& path, const kxStlVector<kxString>& uids, int scope) = 0;
    // Takes an archive in, in one transaction. New entities keep UIDs, history, users and times;
    // newer revisions of known ones come behind those that are equal, others become a branch;
    // nothing is overwritten. UDMExchange::Import does the same and reports each entity. A damaged
    // or hostile archive, and content definitions that don't fit, are errors.
    virtual void Import(const kxString& path) = 0;
};

}  // namespace kxudm
