// One session of one user on one library and workspace, in terms of items.
//
// The model. A controller is what an application works through once it is connected. It finds items
// (by UID, folder path or query), creates contents and folders, reads and writes attributes, runs
// check-out, save and publish over sets of items, organises them under folders and classifications,
// and computes the structure that a tree view shows. It keeps one item manager, and so one cache of
// items, per ManagerType: the content tree and the history tree.
//
// Beside the repository's attributes, a controller can show scripted ones: a name registered with a
// Tcl procedure that computes it. A scripted attribute shadows a real one of the same name.
//
// Structure requests follow four settings of the controller: the hide map and filter map (which
// groups show as nodes, see ChildFilterMap), the child filter list, and the attributes to group by.
// Setting one touches no view; it takes effect at the next request.
//
// Ownership: the factory makes and deletes controllers. Items and signal handlers that a controller
// gives out are its own and go with it.
// Errors: a controller without a connection (IsDBValid() false) answers nearly everything with
// false, null, 0 or an empty value. On a live one, operations that change the repository tell a
// failure in the same way and its text is lost; those that read names, items and attributes let
// std::exception pass, as told per operation. Threads: the host's main thread; nothing is locked.
//
// Layer: interfaces.
//
//     if (Item* folder = controller->GetOrCreateFolder("/Decks/Bridge", true)) {
//         Item* deck = controller->CreateContent("UDMSimulation", "load case 1");
//         controller->MoveContent(deck, folder);
//         controller->AddFile(deck, "/home/anna/lc1.inp", false);
//     }
#pragma once

#include <kxctinterfaces/Item.h>
#include <kxctinterfaces/ItemFilterList.h>
#include <kxctinterfaces/Metadata.h>
#include <kxctinterfaces/kxctinterfaces_export.h>
#include <kxutl/kxStlMap.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>
#include <kxutl/kxVariant.h>

#include <cstddef>
#include <utility>

namespace kxct {

class SignalHandler;

// The engine of a query. Any other value finds nothing.
enum QueryMode : int {
    QUERY_ATTRIBUTES = -1,      // query expression over attributes
    QUERY_FULLTEXT_ALL = 0,     // full text: all words
    QUERY_FULLTEXT_ANY = 1,     // full text: any word
    QUERY_FULLTEXT_PHRASE = 2,  // full text: the words as a phrase
};

class KXCTINTERFACES_EXPORT Controller {
  public:
    Controller() = default;
    Controller(const Controller& other) = default;
    Controller& operator=(const Controller& other) = default;

    // The order of the virtual operations is part of the binary interface.

    virtual const kxString GetWorkspaceName() = 0;
    virtual const kxString GetLibraryName() = 0;

    // Attaches a file to a content. `flag`: record it as an external file, by path only.
    virtual bool AddFile(Item* item, const kxString& path, bool flag) = 0;
    // Makes a content of definition `type` for the file, named after it, and hangs it into `group`
    // of `item`. What was made before a failure stays.
    virtual bool AddFile(Item* item,
                         const kxString& type,
                         const kxString& fileType,
                         const kxString& path,
                         bool flag,
                         kxString group) = 0;

    // Deletes all cached items of a tree. Every pointer to one of them is invalid afterwards.
    virtual void ClearCache(const ManagerType& type) = 0;

    // Puts a content under a classification (a content of type "Categories"), or takes it out.
    virtual bool AddClassification(Item* item, Item* classification) = 0;
    virtual bool RemoveClassification(Item* item, Item* classification) = 0;

    // A new content whose name is made free among the children of `parent`. It is not linked to
    // `parent`; AddChildren, MoveContent and AddClassification do that. Null on failure, and for a
    // folder under a classification or the reverse.
    virtual Item* CreateContent(const kxString& type, const kxString& name, Item* parent) = 0;
    // A new content of exactly this name. Null on failure.
    virtual Item* CreateContent(const kxString& type, const kxString& name) = 0;

    // Changes a content definition, or reads it afresh from the settings file. Unlike their
    // neighbours these two need a session: calling them on a dead controller is undefined.
    virtual bool UpdateContentDefinition(const kxString& definition,
                                         kxStlVector<Metadata>& metadata) = 0;
    virtual bool UpdateContentDefinition(const kxString& definition) = 0;

    virtual const kxStlVector<kxString> GetContentDefinitionNames() = 0;

    // Appends one record per attribute of the definition; the result is the size of `metadata`.
    virtual size_t GetContentDefinitionMetadata(const kxString& definition,
                                                kxStlVector<Metadata>& metadata) = 0;

    // The history items of these contents. `items` is replaced; the result is its size.
    virtual size_t GetHistory(const kxStlVector<kxString>& uids, kxStlVector<Item*>& items) = 0;

    // The item of a UID, with or without a revision. `latest` asks for the newest revision whatever
    // the UID says. Null if the repository has none; an exception if it can't be asked.
    virtual Item* GetItem(const kxString& id, bool latest) = 0;
    virtual Item* GetItem(const kxString& id, const ManagerType& type, bool latest) = 0;

    // Items of many UIDs; `items` is replaced. False if one of them is unknown.
    virtual bool GetItemList(kxStlVector<Item*>& items,
                             const kxStlVector<kxString>& uids,
                             const ManagerType& type) = 0;

    // All cached items of a tree, ordered by UID. It lists what is cached, not what the repository
    // holds.
    virtual size_t GetAllItems(kxStlVector<Item*>& items, const ManagerType& type) = 0;

    // The classifications at the top: those kept by administrators, and the others.
    virtual size_t GetMasterClassifications(kxStlVector<Item*>& items) = 0;
    virtual size_t GetOtherClassifications(kxStlVector<Item*>& items) = 0;

    // The signals of a tree. Works without a session, so that slots can be connected first.
    virtual SignalHandler* GetSignalHandler(const ManagerType& type) = 0;

    // Over all contents among `items`; other items are skipped. The first failure ends the walk
    // with false, and what was done stays done. CheckOut takes those not editable, the next three
    // those that are. Delete takes root entities and is false if there was none.
    virtual bool CheckOut(kxStlVector<Item*>& items, const kxString& comment) = 0;
    virtual bool Delete(kxStlVector<Item*>& items) = 0;
    // `flag` keeps the contents checked out, as their next working revision.
    virtual bool Publish(kxStlVector<Item*>& items, const kxString& comment, bool flag) = 0;
    virtual bool Revert(kxStlVector<Item*>& items) = 0;
    virtual bool Save(kxStlVector<Item*>& items, const kxString& comment) = 0;

    // Moves contents into a folder or puts them under a classification, checking each out where
    // needed and publishing it. Lets exceptions of check-out and publish pass.
    virtual bool Organize(kxStlVector<Item*>& items, Item* target) = 0;

    // Whether `dragged` may go below `target`: false for a second child of one name under a
    // published classification.
    virtual bool DropAllowed(Item* target, Item* dragged) = 0;

    // Computes what a view of `items` must add and remove: nodes, and (parent, child) edges. With
    // `group`, the items are first grouped by the controller's attributes, or else by content. The
    // lists are appended to; the result is the size of `newItems`. `moreExpected` is set to true
    // where the result leaves something for another pass.
    virtual size_t GetStructure(const ManagerType& type,
                                const kxStlVector<Item*>& items,
                                kxStlVector<Item*>& newItems,
                                kxStlVector<Item*>& deletedItems,
                                kxStlVector<std::pair<Item*, Item*>>& newRelations,
                                kxStlVector<std::pair<Item*, Item*>>& deletedRelations,
                                bool& moreExpected,
                                bool group) = 0;

    // Whether the controller has a live session. A plain read.
    virtual bool IsDBValid() = 0;

    // Merges entities into another library: target library, folder path in it, comment; `entities`
    // maps each UID to the groups to bring along (none: all), `flag` publishes the result. `items`
    // is replaced by the merged ones, if there are any.
    virtual bool Merge(const kxString& library,
                       const kxString& folder,
                       const kxString& comment,
                       const kxStlMap<kxString, kxStlVector<kxString>>& entities,
                       kxStlVector<Item*>& items,
                       bool flag) = 0;
    virtual bool Merge(const kxString& library,
                       const kxString& folder,
                       const kxString& comment,
                       const kxStlVector<kxString>& entities,
                       kxStlVector<Item*>& items) = 0;

    // Writes the state of the session where the repository puts it, for support.
    virtual void DumpSession() = 0;

    // Runs a query: hits `a` up to but not including `b` (0, 0: all), `c` for root entities only.
    // `versions`: negative for the hits alone, 0 for all their older versions too, n for at most n
    // of them each. The list is appended to; the result is its size for items, and the number found
    // for UIDs. Hits that could have children under the child filter list and have none are
    // dropped. A failing query finds nothing.
    virtual size_t Query(const kxString& query,
                         kxStlVector<kxString>& uids,
                         const int& versions,
                         const QueryMode& mode,
                         long a,
                         long b,
                         bool c,
                         bool ignoreCase) = 0;
    virtual size_t Query(const kxString& query,
                         kxStlVector<Item*>& items,
                         const int& versions,
                         const QueryMode& mode,
                         long a,
                         long b,
                         bool c,
                         bool ignoreCase) = 0;
    virtual size_t Query(const kxString& query,
                         kxStlVector<Item*>& items,
                         const ManagerType& type,
                         const int& versions,
                         const QueryMode& mode,
                         long a,
                         long b,
                         bool c,
                         bool ignoreCase) = 0;

    // Attributes, as Item tells them, with scripted attributes and the attribute settings document
    // laid over. Exceptions of the repository and of scripts pass. A null item gives an empty value
    // or false.
    virtual const kxVariant GetAttributeDescription(Item* item,
                                                    const kxString& attribute,
                                                    const kxString& key) const = 0;
    // `settingsOnly` limits the list to what the settings document names, where it knows the
    // content definition.
    virtual const kxStlVector<kxString> GetAttributeNameList(Item* item,
                                                             bool omitSystem,
                                                             bool displayableOnly,
                                                             bool settingsOnly) const = 0;
    virtual const kxStlVector<kxString> GetAttributeNameDiplaynameMap(
        Item* item, bool omitSystem, bool displayableOnly) const = 0;

    // Whether attribute changes wait to be written. Never: each is written through at once. The
    // operation keeps its place in the interface.
    virtual bool HasPendingAttributeChanges() const = 0;

    virtual const kxVariant GetAttributeValue(const kxString& uid,
                                              const kxString& attribute) const = 0;
    virtual const kxVariant GetAttributeValue(Item* item, const kxString& attribute) const = 0;
    virtual bool IsAttributeEditable(Item* item, const kxString& attribute) = 0;
    // Setting a scripted attribute raises ItemUpdated, whatever the script answers.
    virtual bool SetAttributeValue(const kxString& uid,
                                   const kxString& attribute,
                                   kxVariant& value) = 0;
    virtual bool SetAttributeValue(Item* item, const kxString& attribute, kxVariant& value) = 0;
    virtual bool NextAttributeValue(Item* item, const kxString& attribute) = 0;

    // Replaces the attribute settings document. An empty path changes nothing; a file that can't be
    // read counts as an empty document.
    virtual void SetAttributeSettingsFile(const kxString& path) = 0;

    // False if the attribute is registered already; the first procedure stays. Whether the
    // procedure exists shows when it is called.
    virtual bool RegisterScriptedAttribute(const kxString& attribute,
                                           const kxString& procedure) = 0;
    virtual bool UnRegisterScriptedAttribute(const kxString& attribute) = 0;
    // The registered names, in byte order.
    virtual const kxStlVector<kxString> GetScriptedAttributes() const = 0;

    // The settings that structure requests follow. The getters give copies.
    virtual void SetFilterMap(const ChildFilterMap& map) = 0;
    virtual const ChildFilterMap GetFilterMap() const = 0;
    virtual void SetHideMap(const ChildFilterMap& map) = 0;
    virtual const ChildFilterMap GetHideMap() const = 0;
    virtual void SetFilterMapForChildren(const ItemFilterList& filters) = 0;
    virtual const ItemFilterList GetFilterMapForChildren() const = 0;
    virtual void SetGroupByAttributes(const kxStlVector<kxString>& attributes) = 0;
    virtual const kxStlVector<kxString> GetGroupByAttributes() const = 0;

    // Moves a content into a folder (a content of type "Foldertype"), out of the one it was in.
    virtual bool MoveContent(Item* item, Item* folder) = 0;

    // Folders by path, `/A/B`. Null on failure. GetOrCreateFolder: `flag` makes missing parents;
    // GetFolder: `flag` ignores case.
    virtual Item* GetOrCreateFolder(const kxString& path, bool flag) = 0;
    virtual Item* CreateFolder(const kxString& path) = 0;
    virtual Item* GetFolder(const kxString& path, bool flag) = 0;
    // Empty for anything but a folder.
    virtual const kxString GetFolderFullPath(Item* item) const = 0;

    // Brings folders and files of the disk into the repository below `root`. The number that the
    // repository reports; -1 without a session. Lets exceptions pass.
    virtual int AddFoldersAndFiles(const kxStlVector<kxString>& folders,
                                   const kxStlVector<kxString>& files,
                                   const kxString& root,
                                   const kxStlMap<kxString, kxString>& options) = 0;

    // References: weak links with a role. Targets that are no contents are skipped; lists of
    // different length: nothing is done.
    virtual void AddReferences(Item* item,
                               kxStlVector<Item*>& targets,
                               const kxStlVector<kxString>& roles) = 0;
    virtual void GetReferences(kxStlVector<Item*>& items,
                               kxStlVector<kxString>& roles,
                               Item* item) = 0;
    virtual void RemoveReferences(kxStlVector<Item*>& targets, Item* item) = 0;
    // Who refers to `item`. `roles`, if not empty, filters; on return it holds one role per result.
    virtual void GetReferredBy(kxStlVector<Item*>& items,
                               kxStlVector<kxString>& roles,
                               Item* item) = 0;

    // Whether a content of an external repository is up to date here, and bringing it up to date.
    virtual bool GetSyncStatus(Item* item) = 0;
    virtual void Synchronize(Item* item) = 0;

    // A relation of type `name` between the exact revisions of two contents.
    virtual bool AddRelation(Item* from, Item* to, const kxString& name) = 0;
    virtual bool RemoveRelation(Item* from, Item* to) = 0;

    // Links children below `parent`, each in the group of its place. False, with nothing done, for
    // lists of different length; children that are no contents are skipped.
    virtual bool AddChildren(Item* parent,
                             kxStlVector<Item*>& children,
                             const kxStlVector<kxString>& groups) = 0;

    // The portable archive: writes these contents to a file, or takes one in.
    virtual bool Export(const kxString& path, const kxStlVector<kxString>& uids) = 0;
    virtual bool Import(const kxString& path) = 0;

    // Items of a tree for repository handles: `handles` points to a kxStlVector of them. `items` is
    // replaced.
    virtual void ToItems(const ManagerType& type, void* handles, kxStlVector<Item*>& items) = 0;

    virtual ~Controller();
};

}  // namespace kxct
