// Finds rows of a library that contradict each other, and removes those of deleted entities.
//
// Layer: store. Works on all rows, whoever may see them. Nothing here changes anything but
// PurgeDeleted.
#ifndef KXUDMRT_STORE_LIBRARYCHECK_H
#define KXUDMRT_STORE_LIBRARYCHECK_H

#include <kxudm/UDMMaintenance.h>

#include <functional>
#include <string>
#include <vector>

#include "store/LibraryStore.h"

namespace kxudm::store {

using Report = std::function<void(UDMFindingKind, std::string object, std::string text)>;

// Turns the attributes of a revision of an entity of that definition into those that queries see.
using Shown = std::function<void(const std::string& definition, AttributeList& attributes)>;

// All but what concerns contents and definitions, in the order of the kinds. To be called in a
// View, so that it sees one state of the library.
void CheckRows(LibraryStore& store, const Shown& shown, const Report& report);

// Owners, folders and classifications that stand above themselves: each cycle once.
void CheckCycles(LibraryStore& store, const Report& report);

// Content definitions that entities are of, with one of these and how many there are.
struct DefinitionUse {
    std::string definition;
    std::string uid;
    std::int64_t count = 0;
};
[[nodiscard]] std::vector<DefinitionUse> DefinitionsInUse(LibraryStore& store);

// A content that rows name.
struct ContentUse {
    std::string vault;  // as FileRow::vault
    std::string hash;
    std::string where;  // one of the files, as "<UID> <name>"
    std::uint64_t size = 0;
    std::int64_t text = 0;  // as FileRow::text; 0 also for what is not indexed yet
};
[[nodiscard]] std::vector<ContentUse> ContentsInUse(LibraryStore& store);
// In the library behind a connection, which may be of an older schema.
[[nodiscard]] bool IsContentUsed(sql::Connection& library,
                                 const std::string& vault,
                                 const std::string& hash);
// Vault directories that its files name beside the common one.
[[nodiscard]] std::vector<std::string> VaultsOfFiles(sql::Connection& library);

struct DeletedEntity {
    EntityId id = 0;
    std::string uid;
    std::string definition;
    std::string name;
    int published = NO_REVISION;
    int working = NO_REVISION;
    std::string lockUser;  // who has the working revision
    std::string lockWorkspace;
    std::int64_t deletion = 0;  // those that were deleted together have one number
    Microseconds time = 0;      // 0: unknown
};
// In the order of their creation.
[[nodiscard]] std::vector<DeletedEntity> DeletedEntities(LibraryStore& store);
// Removes all rows of entities that were deleted before `time`. The youngest of all entities stays:
// its number would be given again, and sessions still know it by that. Returns how many went.
std::size_t PurgeDeleted(LibraryStore& store, Microseconds time);
// Removes entries of the journal that are older than `time`, but the last one, and those from which
// DeletedEntities tells a time. Returns how many went.
std::size_t TrimJournal(LibraryStore& store, Microseconds time);
// Entries up to this one may be gone: who has not read as far can't learn from the journal what
// happened. 0 if all are there.
[[nodiscard]] std::int64_t JournalTrimmed(LibraryStore& store);
// Who has this entity checked out, or one that owns it, refers to it or is related to it.
[[nodiscard]] std::vector<Holder> HoldersNear(LibraryStore& store, EntityId id);
// Deleted folders or classifications that an entity lies in, and would lie in again.
[[nodiscard]] std::vector<EntityId> DeletedPlaces(LibraryStore& store, EntityId id, LinkKind kind);
// The UID of a child at this entity that has two owners, which it can't have; empty if there is
// none.
[[nodiscard]] std::string OwnedTwiceNear(LibraryStore& store, EntityId id);

}  // namespace kxudm::store

#endif
