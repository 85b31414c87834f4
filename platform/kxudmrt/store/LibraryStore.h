// One library: entities, their revisions and files, links between them, and the journal of changes.
//
// Layer: store. Stands on sql/, knows no sessions, notifications or content definitions: what a
// definition allows is checked above, and who is looking comes in as a Viewer. A store belongs to
// one session and one thread at a time and owns its connection. Several stores, in one process or
// in many, may be open on one file.
//
// Which revision is the newest depends on the viewer: the working revision if that user has it in
// that workspace, else the newest published one; an entity without either is invisible, like a
// deleted one. "Row" below means this revision unless a number is asked for.
//
// Each changing operation is one transaction, or part of the transaction that is open:
//
//     store.Update([&] {                          // one commit for all of it
//         const EntityId id = store.Insert(entity, attributes, stamp);
//         store.AddLink({.parent = folder, .child = id, .kind = LinkKind::Folder}, stamp);
//         store.Append(journalEntry);
//     });
//
// Failures are UDMException: sql::Error where the database failed, else with the object named in
// the text. A failed operation leaves the library as it was.
#ifndef KXUDMRT_STORE_LIBRARYSTORE_H
#define KXUDMRT_STORE_LIBRARYSTORE_H

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sql/Connection.h"
#include "store/Rows.h"

namespace kxudm::store {

// What a library says of itself.
struct LibraryInfo {
    std::string name = {};
    std::string id = {};  // 26 characters, made like a UID
    std::string baseDirectory = {};
    Microseconds created = 0;
};

// A save of a working revision.
struct SavePoint {
    Microseconds time = 0;
    std::string user = {};
    std::string comment = {};
};

// A branch as the viewer sees it, without attributes.
struct BranchRow {
    EntityRow entity = {};
    int originRevision = NO_REVISION;
};

// A folder or classification where a working revision differs from the published one.
struct MovedPlace {
    LinkKind kind = LinkKind::Folder;
    EntityId place = 0;
    bool entered = false;  // else left
};

struct OwnerInfo {
    std::string uid = {};
    std::string elsewhere = {};  // who holds the owner, if that is why it is not seen as one
};

class LibraryStore {
  public:
    // Makes the library file; the folder must be there. A file of 0 bytes counts as missing, any
    // other existing one is an error. Survives a loss of power when it returns.
    [[nodiscard]] static std::unique_ptr<LibraryStore> Create(const std::string& file,
                                                              const LibraryInfo& info,
                                                              std::string_view catalogueXml);
    // Brings an older schema forward. A missing file, one that is no library and one with a newer
    // schema are errors that name it.
    [[nodiscard]] static std::unique_ptr<LibraryStore> Open(const std::string& file);
    // Either, over a connection that the caller made (tests, other backends).
    [[nodiscard]] static std::unique_ptr<LibraryStore> Create(
        std::unique_ptr<sql::Connection> connection,
        const LibraryInfo& info,
        std::string_view catalogueXml);
    [[nodiscard]] static std::unique_ptr<LibraryStore> Open(
        std::unique_ptr<sql::Connection> connection);
    LibraryStore(const LibraryStore&) = delete;
    LibraryStore& operator=(const LibraryStore&) = delete;
    ~LibraryStore();

    [[nodiscard]] sql::Connection& Connection() noexcept { return *connection_; }

    // Runs `change` in one transaction. Nested calls join it.
    template <typename Change>
    decltype(auto) Update(
        Change&& change,
        sql::Transaction::Durability durability = sql::Transaction::Durability::Normal) {
        return Within(sql::Transaction::Mode::Write, durability, std::forward<Change>(change));
    }
    // Runs `read` on one unchanging view of the library.
    template <typename Read>
    decltype(auto) View(Read&& read) {
        return Within(sql::Transaction::Mode::Read,
                      sql::Transaction::Durability::Normal,
                      std::forward<Read>(read));
    }

    // --- The library itself ---

    [[nodiscard]] LibraryInfo Info();
    void SetBaseDirectory(std::string_view directory);
    // Throws UDMStoreException that names the file where the library has none any more.
    [[nodiscard]] std::string CatalogueXml();
    void SetCatalogueXml(std::string_view xml);
    // Free notes by key, which are kept with the library; an absent one is "".
    [[nodiscard]] std::string Note(std::string_view key);
    void SetNote(std::string_view key, std::string_view text);

    // --- Entities and revisions ---

    // Adds an entity at revision 0, Unversioned or Working. A known UID is an error that names it.
    EntityId Insert(const NewEntity& entity, const AttributeList& attributes, const Stamp& stamp);

    // The newest revision for the viewer. False: unknown, invisible or deleted.
    bool FindByUid(std::string_view baseUid, const Viewer& viewer, EntityRow& row);
    bool FindById(EntityId id, const Viewer& viewer, EntityRow& row);
    // The newest revision that the viewer sees, or saw before the entity was deleted.
    bool FindEvenDeleted(EntityId id, const Viewer& viewer, EntityRow& row);
    // Exactly this revision; a working one only for its owner.
    bool FindRevision(std::string_view baseUid, int revision, const Viewer& viewer, EntityRow& row);
    bool Details(EntityId id, int revision, EntityDetails& details);
    // Numbers of the revisions that the viewer may see, ascending.
    [[nodiscard]] std::vector<int> RevisionNumbers(EntityId id, const Viewer& viewer);

    // Sets attributes of one revision and stamps it; returns all of its attributes, packed, as they
    // stand now. An unknown or published revision is an error.
    std::string UpdateAttributes(EntityId id,
                                 int revision,
                                 const AttributeList& changes,
                                 const Stamp& stamp);
    void SetDisplayName(EntityId id, int revision, std::string_view name, const Stamp& stamp);
    // The name belongs to the entity, not to a revision; folder paths are made of it.
    void SetName(EntityId id, std::string_view name, const Stamp& stamp);
    void SetVault(EntityId id, std::string_view directory);

    // Hides the entity, and what it owns by composition at any depth. Error if somebody other than
    // the viewer of the stamp has one of them checked out: names who, where and since when. `force`
    // deletes it all the same.
    std::vector<DeletedRow> Delete(EntityId id, const Stamp& stamp, bool force = false);
    // Brings back what one deletion has hidden. False: the UID is unknown or not deleted.
    bool Undelete(std::string_view baseUid);

    // --- The life of revisions ---

    // Opens the working revision behind the published one, for the viewer of the stamp. Copies the
    // attributes, no links: it costs the same whatever hangs on the entity. Returns its number.
    // Error, naming who, where and since when, if somebody has the entity checked out.
    int CheckOut(EntityId id, std::string_view comment, const Stamp& stamp);
    // Records a save of the working revision; an empty comment leaves the revision's own.
    void AddSavePoint(EntityId id, std::string_view comment, const Stamp& stamp);
    // Oldest first.
    [[nodiscard]] std::vector<SavePoint> SavePoints(EntityId id, int revision);
    // Publishes the working revision, 0 as 1, and returns its number. An empty comment leaves the
    // one that the revision has. `keep` opens the next working revision in the same transaction.
    // Survives a loss of power. Only the holder may; error, too, if a child would have two owners.
    int Publish(EntityId id, std::string_view comment, bool keep, const Stamp& stamp);
    // Drops the working revision with all that was done in it; returns the number that stands
    // again. Only the holder may, and only if the entity was published once.
    int Undo(EntityId id, const Stamp& stamp);
    // A new entity at revision 0 with attributes, files, places, references and shared children of
    // a published revision; what that owns by composition stays with it.
    EntityId Branch(EntityId origin,
                    int revision,
                    std::string_view uid,
                    std::string_view comment,
                    const Stamp& stamp);
    // Branches of any revision, in the order of creation; `out` is appended to.
    void Branches(std::string_view originUid, const Viewer& viewer, std::vector<BranchRow>& out);
    // In which places publishing or undoing the working revision makes a difference.
    void MovedPlaces(EntityId id, int working, std::vector<MovedPlace>& out);
    // Number of the revision that the viewer sees, or saw before the entity was deleted.
    [[nodiscard]] int SeenRevision(EntityId id, const Viewer& viewer);

    // --- Files ---

    // Each changes one revision, which must be an editable one (else an error), and stamps it. What
    // a row names must be stored durably before its transaction commits.

    // False, with nothing done, if the revision has a file of that name.
    [[nodiscard]] bool AddFile(EntityId id, int revision, const FileRow& file, const Stamp& stamp);
    // Takes the place of the file of that name; false if there was none, the file is then added.
    bool ReplaceFile(EntityId id, int revision, const FileRow& file, const Stamp& stamp);
    // Older revisions keep it. False, with nothing done, if there is none.
    [[nodiscard]] bool RemoveFile(EntityId id,
                                  int revision,
                                  std::string_view name,
                                  const Stamp& stamp);
    // In the byte order of their names; `out` is appended to.
    void Files(EntityId id, int revision, std::vector<FileRow>& out);
    bool FindFile(EntityId id, int revision, std::string_view name, FileRow& file);
    // Whether any revision of any entity, deleted ones too, has this external file. Looks at all.
    [[nodiscard]] bool IsExternalSomewhere(std::string_view path);
    // Vault directories that files or entities name beside the common one. Looks at all.
    [[nodiscard]] std::vector<std::string> Vaults();

    // --- What a changed content definition needs ---

    // UID of an entity of the definition, a deleted one too; empty if there is none.
    [[nodiscard]] std::string AnyOfDefinition(std::string_view definition);
    // UID of an entity of the definition, of which any revision bears a link of that name.
    [[nodiscard]] std::string AnyWithLink(std::string_view definition,
                                          LinkKind kind,
                                          std::string_view name);
    // Every revision of every entity of the definition, also deleted and working ones, in the order
    // of creation and number. `visit` may change the attributes of what it gets.
    void VisitRevisions(std::string_view definition,
                        const std::function<void(const StoredRevision&)>& visit);
    // Sets all attributes of a revision, a published one too, without a stamp. What queries see of
    // it is set by SetHeadValue.
    void RewriteAttributes(EntityId id, int revision, std::string_view packed);
    // What queries see of one attribute in the newest published or unversioned revision, or in the
    // working one, where an empty value hides the published one.
    void SetHeadValue(EntityId id, bool working, std::string_view name, const kxVariant& value);
    // The same of all attributes that have a value, and of the display name, for an entity of which
    // a revision was added in this transaction.
    void AddHeadValues(EntityId id,
                       bool working,
                       const AttributeList& attributes,
                       std::string_view displayName);
    void DropHeadValue(EntityId id, bool working, std::string_view name);

    // --- Links ---

    // Whether this very link is there. Relations to different exact revisions, or to the newest
    // one, are different links.
    [[nodiscard]] bool IsThere(const Link& link);
    // Last in the order of its parent, kind and name. A link that is there already is an error, as
    // is one of kind Owner, Folder or Category that would close a cycle.
    void AddLink(const Link& link, const Stamp& stamp);
    // Ends the links between two entities as of the bearing end's revision; an empty name means all
    // names. Returns how many there were.
    int RemoveLink(EntityId parent,
                   EntityId child,
                   LinkKind kind,
                   std::string_view name,
                   int revision,
                   const Stamp& stamp);
    [[nodiscard]] bool HasLink(
        EntityId parent, EntityId child, LinkKind kind, std::string_view name, int revision);

    // Children in the order of kind, name (byte order) and position; of Folder and Category in the
    // order of their creation. `parentRevision` counts for the kinds that the parent bears. An
    // empty name means all names. Invisible and deleted children are left out. `out` is appended
    // to.
    void Children(EntityId parent,
                  int parentRevision,
                  LinkKind kind,
                  std::string_view name,
                  const Viewer& viewer,
                  std::vector<LinkedRow>& out,
                  bool withAttributes = false,
                  const Condition& condition = {});
    // The same, with attributes, one by one: a row is good while `visit` runs, which must not
    // change anything and may move out of the row.
    void VisitChildren(EntityId parent,
                       int parentRevision,
                       LinkKind kind,
                       std::string_view name,
                       const Viewer& viewer,
                       const std::function<void(LinkedRow&)>& visit,
                       const Condition& condition = {});
    [[nodiscard]] std::int64_t CountChildren(EntityId parent,
                                             int parentRevision,
                                             LinkKind kind,
                                             std::string_view name,
                                             const Viewer& viewer,
                                             const Condition& condition = {});
    // How many children are in a group of the newest or working revision of a parent that bears its
    // links, whoever sees them. Counts no further than `limit`.
    [[nodiscard]] std::int64_t CountChildrenUpTo(std::int64_t limit,
                                                 EntityId parent,
                                                 LinkKind kind,
                                                 std::string_view name);
    // Whether the child has an owner that nobody else may join: one by composition or, with
    // `alsoSharing`, any. Looks at everybody's working revisions, since they get published; only
    // what the viewer has given up in working revisions of its own doesn't count.
    bool AnyOwner(EntityId child, bool alsoSharing, const Viewer& viewer, OwnerInfo& owner);
    // Parents whose newest revision holds the link; with `older` also those of which only an older
    // one does. Each parent once per link name, in the order of creation. `childRevision` counts
    // for the kinds that the child bears, and for exact relations (NO_REVISION: to any revision).
    void Parents(EntityId child,
                 int childRevision,
                 LinkKind kind,
                 std::string_view name,
                 const Viewer& viewer,
                 std::vector<LinkedRow>& out,
                 bool older = false);
    [[nodiscard]] bool HasParent(EntityId child,
                                 int childRevision,
                                 LinkKind kind,
                                 const Viewer& viewer);
    // Whether a link from parent to child would close a cycle; also true for parent == child.
    [[nodiscard]] bool WouldCycle(EntityId parent, EntityId child, LinkKind kind);

    // --- Folders and roots ---

    // What lies in a folder under a name (0: what lies in no folder at all), byte-exact or, with
    // `ignoreCase`, with case folded. An empty definition means any; at the top level with
    // `ignoreCase` name one, else every entity is looked at. Several entities may bear one name.
    void FindInFolder(EntityId folder,
                      std::string_view definition,
                      std::string_view name,
                      const Viewer& viewer,
                      bool ignoreCase,
                      std::vector<EntityRow>& out);
    // Entities of a definition that have no parent of that kind, in the order of creation.
    void RootsOfDefinition(std::string_view definition,
                           LinkKind kind,
                           const Viewer& viewer,
                           std::vector<EntityRow>& out,
                           const Condition& condition = {});

    // --- Queries ---

    // Newest revisions that meet the condition, with attributes, in the order of creation: hits
    // `first` up to but not including `last` (0, 0: all), one by one, as VisitChildren gives them.
    // Returns the number of hits before the cut. `rootsOnly`: without owner.
    std::int64_t VisitHits(const Condition& condition,
                           const Viewer& viewer,
                           bool rootsOnly,
                           std::int64_t first,
                           std::int64_t last,
                           const std::function<void(EntityRow&)>& visit);

    // --- Journal ---

    // Returns the sequence number given. Ascending in the order of the commits.
    std::int64_t Append(const JournalEntry& entry);
    [[nodiscard]] std::int64_t LastSequence();
    // Entries after `sequence` that the viewer is told, ascending; at most `limit`.
    void Journal(std::int64_t sequence,
                 const Viewer& viewer,
                 std::vector<JournalEntry>& out,
                 int limit = 1000);
    // True if another connection has committed since the last call: the cheap question before
    // reading the journal. The first call answers true.
    [[nodiscard]] bool ChangedByOthers();
    // After a read: whether it saw the library as it was when ChangedByOthers was asked last.
    // False says nothing: the commit that it came upon may have been this store's own.
    [[nodiscard]] bool ReadNothingNew() const;

  private:
    explicit LibraryStore(std::unique_ptr<sql::Connection> connection);

    template <typename Body>
    decltype(auto) Within(sql::Transaction::Mode mode,
                          sql::Transaction::Durability durability,
                          Body&& body) {
        sql::Transaction transaction(*connection_, mode, durability);
        if constexpr (std::is_void_v<decltype(body())>) {
            body();
            transaction.Commit();
        } else {
            decltype(auto) result = body();
            transaction.Commit();
            return result;
        }
    }

    std::unique_ptr<sql::Connection> connection_;
    std::int64_t seenDataVersion_ = -1;
    std::int64_t versionWhenAsked_ = -1;
};

}  // namespace kxudm::store

#endif
