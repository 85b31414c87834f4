// What export and import need of a library: a selection of entities, entities and links as records
// of a document, and rows that came from elsewhere with their own times, users and numbers.
//
// Layer: exchange, over the store. Functions over a LibraryStore, in a transaction of the caller's.
// Only published revisions, and those of unversioned entities, are looked at; a working one is
// nobody else's business. The temporary tables belong to the connection: one export or import at a
// time.
#ifndef KXUDMRT_EXCHANGE_LIBRARYEXCHANGE_H
#define KXUDMRT_EXCHANGE_LIBRARYEXCHANGE_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "exchange/Document.h"
#include "store/LibraryStore.h"

namespace kxudm::exchange {

// Makes the temporary tables and empties them. Begin each export and import with it, outside of a
// transaction.
void BeginExchange(store::LibraryStore& store);

// --- Export ---

class ExportSelection {
  public:
    ExportSelection(store::LibraryStore& store, Scope scope) : store_(store), scope_(scope) {}

    // False if the entity was never published, or is deleted.
    [[nodiscard]] bool Add(store::EntityId id);
    void AddAll();
    // What they own at any depth.
    void AddOwned();
    // Folders and classifications that they lie in, and those above.
    void AddPlaces();

    [[nodiscard]] std::int64_t Count();
    [[nodiscard]] std::vector<std::string> Definitions();
    // Each of them in the order of creation. Nothing is read while `visit` runs, so that it may.
    void Visit(const std::function<void(store::EntityId)>& visit);
    // The entity as the scope has it; notes the contents of its files.
    [[nodiscard]] EntityRecord Read(store::EntityId id);
    // The links that they bear: of one entity after the other, in the order of creation.
    void VisitLinks(const std::function<void(const std::string& first, LinkRecord&&)>& visit);

  private:
    void VisitLinksOf(store::EntityId id,
                      const std::function<void(const std::string& first, LinkRecord&&)>& visit);

    // Those of its revisions that are exported; its UID.
    std::string ReadNumbers(store::EntityId id, std::vector<RevisionRecord>& revisions);

    store::LibraryStore& store_;
    const Scope scope_;
};

// --- Contents of files: those that are exported, or that an archive should bring ---

struct NotedContent {
    std::string hash = {};
    std::string vault = {};
    std::uint64_t size = 0;
};
// Notes it unless it is. The size that it was noted with, now or before.
std::uint64_t NoteContent(store::LibraryStore& store, const NotedContent& content);
struct ContentTotal {
    std::uint64_t count = 0;
    std::uint64_t bytes = 0;
};
[[nodiscard]] ContentTotal CountContents(store::LibraryStore& store);

// In the order of their hashes. Nothing is read between two calls of Next.
class NotedContents {
  public:
    explicit NotedContents(store::LibraryStore& store) : store_(store) {}

    // Null behind the last one; otherwise valid until the next call.
    [[nodiscard]] const NotedContent* Next();

  private:
    store::LibraryStore& store_;
    std::vector<NotedContent> portion_;
    std::size_t next_ = 0;
};

// --- Import: entities ---

[[nodiscard]] bool HasAnyEntity(store::LibraryStore& store);

// An entity that the library has under a UID, whoever sees it.
struct KnownEntity {
    store::EntityId id = 0;
    std::string definition = {};
    std::string name = {};
    int published = store::NO_REVISION;
    int working = store::NO_REVISION;
    std::string lockUser = {};
    std::string lockWorkspace = {};
    store::Microseconds lockTime = 0;
    bool deleted = false;
};
[[nodiscard]] bool FindKnown(store::LibraryStore& store, std::string_view uid, KnownEntity& known);
// All published revisions of an entity, with its files.
[[nodiscard]] EntityRecord ReadKnown(store::LibraryStore& store, store::EntityId id);

// Adds an entity with its revisions and files. `shown` are the attributes of the newest revision as
// queries see them. The UID must be a new one.
store::EntityId ImportEntity(store::LibraryStore& store,
                             const EntityRecord& entity,
                             const store::AttributeList& shown);
// Adds the entity's revisions from `first` on behind the newest one. Links that hold there end at
// `first` unless ImportLink says that they go on; FinishAppended settles it.
void AppendRevisions(store::LibraryStore& store,
                     store::EntityId id,
                     const EntityRecord& entity,
                     int first,
                     const store::AttributeList& shown);
void FinishAppended(store::LibraryStore& store, store::EntityId id, int newest);
// Gives an entity that has no file at all those of its revisions up to `newest`.
void ImportFiles(store::LibraryStore& store,
                 store::EntityId id,
                 const EntityRecord& entity,
                 int newest);
[[nodiscard]] bool HasFiles(store::LibraryStore& store, store::EntityId id);

// --- Import: what became of each entity of the document ---

enum class ArrivalMode : int {
    New,       // all of its links are new
    Appended,  // links of the revisions behind `known` are new
    Equal,     // links are there, but for those whose other end was missing before
    Left       // its links are left alone
};

struct Arrival {
    store::EntityId origin = 0;  // the entity of that UID here, or what stands for it; 0: none
    store::EntityId id = 0;      // what has the revisions that came: `origin`, or a branch of it
    ArrivalMode mode = ArrivalMode::Left;
    // Of `id`: newest revision before. Appended: none where the document doesn't have it, so that
    // what it held is not told.
    int known = store::NO_REVISION;
    int first = store::NO_REVISION;   // of `id`: first revision that came
    int newest = store::NO_REVISION;  // of `id`: newest revision of the document
    int diverged = 0;  // of the document: first revision that is in the branch, as 1; 0: no branch

    // A revision of the document as the branch numbers it.
    [[nodiscard]] int Local(int revision) const {
        return diverged == 0 || revision == kOpen ? revision : revision - diverged + 1;
    }
};
// Throws UDMException if the document has the UID twice.
void NoteArrival(store::LibraryStore& store, const std::string& uid, const Arrival& arrival);
[[nodiscard]] bool FindArrival(store::LibraryStore& store,
                               const std::string& uid,
                               Arrival& arrival);

// --- Import: links ---

// A link between entities of this library, for revisions of `first`.
struct ImportedLink {
    store::EntityId first = 0;
    store::EntityId second = 0;
    store::LinkKind kind = store::LinkKind::Owner;
    std::string_view name = {};
    int from = 0;
    int to = kOpen;
    int exact = store::NO_REVISION;
    bool composition = false;
};
// Whether the link holds in any of its revisions already.
[[nodiscard]] bool IsLinkThere(store::LibraryStore& store, const ImportedLink& link);
// An open link that AppendRevisions marked to end at `first` goes on, until `to`. False if there is
// none.
bool LetLinkGoOn(store::LibraryStore& store, const ImportedLink& link, int first);
[[nodiscard]] std::int64_t LastPosition(store::LibraryStore& store,
                                        store::EntityId first,
                                        store::LinkKind kind,
                                        std::string_view name);
// `ending`: see the schema; store::NO_REVISION for none.
void ImportLink(store::LibraryStore& store,
                const ImportedLink& link,
                std::int64_t position,
                int ending);
// --- Import: links whose other end has not come ---

// What stands for the entity, which the library doesn't know, so that links can lead to it.
[[nodiscard]] store::EntityId Await(store::LibraryStore& store, const std::string& uid);
// What stood for the entity until now; 0: nothing did. The UID is free for what has come.
[[nodiscard]] store::EntityId MakeRoom(store::LibraryStore& store, const std::string& uid);

struct AwaitingLink {
    store::EntityId first = 0;
    std::string firstUid = {};
    bool isFirstDeleted = false;
    store::LinkKind kind = store::LinkKind::Owner;
    std::string name = {};
    int to = kOpen;
    std::int64_t position = 0;
    int from = 0;
    int exact = store::NO_REVISION;
    bool composition = false;
};
// Links that led to `awaited` lead to `id`, or are dropped where `take` says false. Then nothing
// stands for it any more.
void LetLinksArrive(store::LibraryStore& store,
                    store::EntityId awaited,
                    store::EntityId id,
                    const std::function<bool(const AwaitingLink&)>& take);
// Whether the entity has a revision of that number that is not in work, or came without those from
// it back.
[[nodiscard]] bool MayStayOn(store::LibraryStore& store, store::EntityId id, int revision);

[[nodiscard]] bool HasOtherPlace(store::LibraryStore& store, const ImportedLink& link);
// UID of another owner beside which `first` can't own `second`; empty if there is none.
[[nodiscard]] std::string OtherOwner(store::LibraryStore& store, const ImportedLink& link);
// Folders and classifications that revisions of an entity from `first` on have left.
[[nodiscard]] std::vector<store::EntityId> LeftPlaces(store::LibraryStore& store,
                                                      store::EntityId id,
                                                      int first);

}  // namespace kxudm::exchange

#endif
