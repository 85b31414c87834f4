// The rows of a library as plain structs.
//
// Layer: store. Values without behaviour. Times are microseconds since 1970-01-01 UTC. Texts are
// UTF-8, may hold any byte, and are compared byte by byte.
#ifndef KXUDMRT_STORE_ROWS_H
#define KXUDMRT_STORE_ROWS_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sql/Connection.h"
#include "store/Attributes.h"

namespace kxudm::store {

// Key of an entity inside of one library, never 0. Not stable across libraries: the UID is.
using EntityId = std::int64_t;
using Microseconds = std::int64_t;

// Revision numbers run from 0 to this.
constexpr int MAX_REVISION = (1 << 24) - 1;
constexpr int NO_REVISION = -1;

// Who looks, or who changes: decides which revision of an entity is the newest. The texts must live
// as long as the call.
struct Viewer {
    std::string_view user = {};
    std::string_view workspace = {};
};

// The same, kept: who has a working revision.
struct Holder {
    std::string user = {};
    std::string workspace = {};
    [[nodiscard]] Viewer AsViewer() const { return {user, workspace}; }
};

// Sees what is published, and what has no revisions, and nothing else.
constexpr Viewer THE_PUBLIC{};

// Who and when, for the stamps of a change.
struct Stamp {
    Viewer by;
    Microseconds time = 0;
};

enum class RevisionState : int {
    Working = 0,     // checked out or never published, for one user and workspace
    Published = 1,   // for everybody, not editable
    Unversioned = 2  // the only revision of an unversioned entity: for everybody, editable
};

// Kinds of link. Owner, Reference and Relation belong to the revisions of the parent, Folder and
// Category to those of the child (the content that lies there).
enum class LinkKind : int { Owner = 1, Reference = 2, Folder = 3, Category = 4, Relation = 5 };

// Whether links of the kind may not lead back to where they began.
[[nodiscard]] constexpr bool MayNotCycle(LinkKind kind) {
    return kind == LinkKind::Owner || kind == LinkKind::Folder || kind == LinkKind::Category;
}

// One revision of an entity with what belongs to the whole entity.
struct EntityRow {
    EntityId id = 0;
    std::string uid = {};  // base UID
    std::string definition = {};
    std::string name = {};
    int revision = 0;
    RevisionState state = RevisionState::Unversioned;
    std::string displayName = {};
    Microseconds createdTime = 0;  // of the entity
    std::string createdUser = {};
    Microseconds modifiedTime = 0;  // of this revision
    std::string modifiedUser = {};
    int published = NO_REVISION;  // newest published revision
    int working = NO_REVISION;    // the working revision, if somebody has one
    std::string lockUser = {};    // who has it, where, since when
    std::string lockWorkspace = {};
    Microseconds lockTime = 0;
    std::string packed = {};  // the attributes, if asked for; see Attributes.h
};

// What belongs to an entity or revision and is rarely wanted.
struct EntityDetails {
    std::string createdWorkspace = {};
    std::string branchUid = {};  // origin of a branch, else empty
    int branchRevision = NO_REVISION;
    std::string vault = {};  // vault directory below the base directory, empty: the common one
    Microseconds revisionCreatedTime = 0;
    std::string revisionCreatedUser = {};
    Microseconds publishedTime = 0;  // 0: never
    std::string publishedUser = {};
    std::string revisionWorkspace = {};
    std::string comment = {};
};

// A file of a revision: a content of a vault or, with a path of its own, an external one.
struct FileRow {
    std::string name = {};
    std::string hash = {};  // empty: external
    std::int64_t size = 0;
    Microseconds modified = 0;  // of the file when it was added
    Microseconds added = 0;     // given by the store
    bool isText = false;
    std::string externalPath = {};
    std::string vault = {};  // as EntityDetails::vault, when it was added
    // Of a row that is added: the document with its words (FullText.h), if that is known already.
    std::optional<std::int64_t> text = std::nullopt;

    [[nodiscard]] bool IsExternal() const { return hash.empty(); }
};

struct NewEntity {
    std::string_view uid = {};
    std::string_view definition = {};
    std::string_view name = {};
    std::string_view displayName = {};
    // Unversioned: at once for everybody. Working: never published, for the creator alone.
    RevisionState state = RevisionState::Unversioned;
    std::string_view branchUid = {};
    int branchRevision = NO_REVISION;
};

// A child or parent together with the link by which it was found.
struct LinkedRow {
    EntityRow entity;
    LinkKind kind = LinkKind::Owner;
    std::string name = {};  // group or relation type
    std::int64_t position = 0;
};

struct Link {
    EntityId parent = 0;
    EntityId child = 0;
    LinkKind kind = LinkKind::Owner;
    std::string_view name = {};
    // Revision of the end that bears the link: the parent, or the child of Folder and Category.
    int revision = 0;
    // Owner: the child has this one owner and is deleted with it.
    bool composition = false;
    // The child has no link of any kind yet: there can be neither a double nor a cycle.
    bool childIsNew = false;
    // Not NO_REVISION: the link stays on this revision of the child (Owner, Reference, Relation). A
    // relation then stays on this revision of its parent, too.
    int exactChildRevision = NO_REVISION;
};

// A condition in SQL with its values in the order of the `?` in it, from the query compiler. It may
// name the entity as `e` and its revision as `r`. Empty: no condition.
struct Condition {
    std::string sql = {};
    std::vector<sql::Value> values = {};
    // If not empty, what a head attribute `h` of every entity that meets the condition meets:
    // listings ask it first, before they look at the entity. Its values come before the others.
    std::string heads = {};

    [[nodiscard]] bool Empty() const noexcept { return sql.empty(); }
};

// One revision of an entity as it is stored, whoever sees it.
struct StoredRevision {
    EntityId id = 0;
    std::string uid = {};  // base UID
    int revision = 0;
    int published = NO_REVISION;  // newest published revision of the entity
    int working = NO_REVISION;    // its working revision, if somebody has one
    std::string packed = {};
};

// What became of a deletion: all that was hidden by it, the entity itself first.
struct DeletedRow {
    EntityId id = 0;
    std::string uid = {};
    std::string definition = {};
    int newestRevision = 0;
};

// One change, for the other sessions. The store does not interpret `op`, which is positive.
struct JournalEntry {
    std::int64_t sequence = 0;  // given by the store
    Microseconds time = 0;
    int op = 0;
    EntityId entity = 0;  // 0 where an entry has none
    int revision = 0;
    EntityId parent = 0;
    EntityId child = 0;
    std::string session = {};
    std::int64_t process = 0;
    std::string user = {};  // with `workspace`: the only ones told; both empty: everybody
    std::string workspace = {};
    bool others = false;         // everybody but `user` in `workspace` is told
    std::string entityUid = {};  // filled when read
    std::string parentUid = {};
    std::string childUid = {};
};

}  // namespace kxudm::store

#endif
