// The SQL of the life of revisions; see Statements.h for the rest and for the rules.
//
// Layer: store. ?1 is the entity's id unless a statement says otherwise.
#ifndef KXUDMRT_STORE_REVISIONSTATEMENTS_H
#define KXUDMRT_STORE_REVISIONSTATEMENTS_H

#include "store/Statements.h"

// Who has an entity checked out.
#define KXUDM_LOCK "SELECT uid, published, working, lock_user, lock_workspace, lock_time"
#define KXUDM_LOCKED " FROM entity WHERE id = ?1 AND deleted = 0"
// ?1 is the revision's id; time ?2, user ?3, comment ?4.
#define KXUDM_PUBLISH                                                          \
    "UPDATE revision SET state = 1, published_time = ?2, published_user = ?3," \
    " comment = CASE WHEN ?4 = '' THEN comment ELSE ?4 END"
// Links to places of kind that the working revision ?2 has come to (1) or left (0).
#define KXUDM_MOVED(kind)                                                            \
    "SELECT kind, second, from_rev = ?2 FROM link WHERE first = ?1 AND kind = " kind \
    " AND to_rev = " KXUDM_OPEN " AND (from_rev = ?2 OR ending = ?2)"

namespace kxudm::store::statements {

// --- Check-out ---

inline constexpr NamedStatement LOCK_OF{"lock of an entity", KXUDM_LOCK KXUDM_LOCKED};
// The revision behind ?1, a revision's id. Time ?2, user ?3, workspace ?4, comment ?5. Value by
// value: rows of a table that is read meanwhile would go through a table of their own.
inline constexpr NamedStatement COPY_REVISION{
    "copy revision",
    "INSERT INTO revision(id, state, display_name, created_time, created_user, modified_time,"
    " modified_user, workspace, comment, attributes) VALUES (?1 + 1, 0,"
    " (SELECT display_name FROM revision WHERE id = ?1), ?2, ?3, ?2, ?3, ?4, ?5,"
    " (SELECT attributes FROM revision WHERE id = ?1))"};
inline constexpr NamedStatement SET_LOCK{
    "set lock",
    "UPDATE entity SET working = ?2, lock_user = ?3, lock_workspace = ?4, lock_time = ?5"
    " WHERE id = ?1"};

// --- Save points; ?1 is the revision's id ---

inline constexpr NamedStatement ADD_SAVE_POINT{
    "add save point",
    "INSERT INTO savepoint(revision, sequence, time, user, comment) VALUES (?1,"
    " (SELECT coalesce(max(sequence), 0) + 1 FROM savepoint WHERE revision = ?1), ?2, ?3, ?4)"};
inline constexpr NamedStatement SET_COMMENT{"set comment",
                                            "UPDATE revision SET comment = ?2 WHERE id = ?1"};
inline constexpr NamedStatement SAVE_POINTS{
    "save points",
    "SELECT time, user, comment FROM savepoint WHERE revision = ?1 ORDER BY sequence"};

// --- Publish ---

inline constexpr NamedStatement PUBLISH_REVISION{"publish revision",
                                                 KXUDM_PUBLISH " WHERE id = ?1"};
// Revision 0 becomes 1.
inline constexpr NamedStatement PUBLISH_FIRST_REVISION{"publish first revision",
                                                       KXUDM_PUBLISH ", id = id + 1 WHERE id = ?1"};
inline constexpr NamedStatement SET_PUBLISHED{
    "set published",
    "UPDATE entity SET published = ?2, working = NULL, lock_user = NULL, lock_workspace = NULL,"
    " lock_time = NULL WHERE id = ?1"};
// With what the working revision has beside its row: head attributes, files and links that end.
// Most have nothing, which one look tells.
inline constexpr NamedStatement LOCK_WITH_WORK{
    "lock with work",
    KXUDM_LOCK
    ", EXISTS (SELECT 1 FROM head_attribute WHERE entity = ?1 AND working = 1),"
    " EXISTS (SELECT 1 FROM file WHERE entity = ?1 AND to_rev = " KXUDM_OPEN
    " AND ending IS NOT NULL),"
    " EXISTS (SELECT 1 FROM link INDEXED BY link_ending WHERE first = ?1"
    " AND ending IS NOT NULL)" KXUDM_LOCKED};
// The attributes that queries see: the working ones take the places of the published ones.
inline constexpr NamedStatement DROP_COVERED_HEADS{
    "drop covered head attributes",
    "DELETE FROM head_attribute WHERE entity = ?1 AND working = 0 AND name IN"
    " (SELECT name FROM head_attribute WHERE entity = ?1 AND working = 1)"};
inline constexpr NamedStatement DROP_MASKS{
    "drop masks", "DELETE FROM head_attribute WHERE entity = ?1 AND working = 1 AND value IS NULL"};
inline constexpr NamedStatement PUBLISH_HEADS{
    "publish head attributes",
    "UPDATE head_attribute SET working = 0 WHERE entity = ?1 AND working = 1"};
// Up to revision ?2, which is published: an exact relation ends behind it. The index is named: by
// the primary key all links of the entity would be walked through.
inline constexpr NamedStatement CLOSE_LINKS{
    "close links",
    "UPDATE link INDEXED BY link_ending SET to_rev = ending, ending = NULL"
    " WHERE first = ?1 AND ending IS NOT NULL AND ending <= ?2"};
inline constexpr NamedStatement CLOSE_FILES{
    "close files",
    "UPDATE file SET to_rev = ending, ending = NULL WHERE entity = ?1 AND to_rev = " KXUDM_OPEN
    " AND ending IS NOT NULL"};
// Revision 0 became ?2 for those who hold on to it.
inline constexpr NamedStatement MOVE_EXACT{
    "move exact links", "UPDATE link SET exact = ?2 WHERE second = ?1 AND exact = 0"};
// A child that two would own after this publish: an owner that the viewer ?2, ?3 has checked out
// has given it up in its working revision only. Begins at what was given up and not published yet,
// which is little, however much is checked out and however many children there are.
inline constexpr NamedStatement OWNED_TWICE{
    "owned twice",
    "SELECT c.uid, p.uid FROM link e INDEXED BY link_ending"
    " CROSS JOIN entity p ON p.id = e.first AND p.deleted = 0 AND p.working IS NOT NULL"
    " CROSS JOIN link n ON n.second = e.second AND n.kind = 1 AND n.to_rev = " KXUDM_OPEN
    " AND n.first = ?1 AND n.ending IS NULL"
    " CROSS JOIN entity c ON c.id = e.second AND c.deleted = 0"
    " WHERE e.ending IS NOT NULL AND e.kind = 1 AND e.first <> ?1"
    " AND p.lock_user = ?2 AND p.lock_workspace = ?3"
    " AND (e.composition = 1 OR n.composition = 1) LIMIT 1"};

// --- Undo; ?2 is the working revision's number ---

// A child that was given up in the working revision and has found another owner.
inline constexpr NamedStatement OWNED_ANEW{
    "owned anew",
    "SELECT c.uid, p.uid FROM link e CROSS JOIN entity c ON c.id = e.second AND c.deleted = 0"
    " CROSS JOIN link n ON n.second = e.second AND n.kind = 1 AND n.to_rev = " KXUDM_OPEN
    " AND n.first <> ?1 CROSS JOIN entity p ON p.id = n.first AND p.deleted = 0"
    " WHERE e.first = ?1 AND e.ending IS NOT NULL AND e.kind = 1"
    " AND (e.composition = 1 OR n.composition = 1) LIMIT 1"};
inline constexpr NamedStatement DROP_REVISION{"drop revision",
                                              "DELETE FROM revision WHERE id = ?1"};
inline constexpr NamedStatement DROP_WORKING_HEADS{
    "drop working head attributes", "DELETE FROM head_attribute WHERE entity = ?1 AND working = 1"};
inline constexpr NamedStatement DROP_NEW_LINKS{
    "drop new links",
    "DELETE FROM link WHERE first = ?1 AND from_rev = ?2 AND from_rev NOT IN (0, 1)"
    " AND to_rev = " KXUDM_OPEN};
inline constexpr NamedStatement REOPEN_LINKS{
    "reopen links",
    "UPDATE link INDEXED BY link_ending SET ending = NULL WHERE first = ?1"
    " AND ending IS NOT NULL AND (kind <> 5 OR exact IS NULL)"};
inline constexpr NamedStatement DROP_NEW_FILES{
    "drop new files",
    "DELETE FROM file WHERE entity = ?1 AND to_rev = " KXUDM_OPEN " AND from_rev = ?2"};
inline constexpr NamedStatement REOPEN_FILES{
    "reopen files",
    "UPDATE file SET ending = NULL WHERE entity = ?1 AND to_rev = " KXUDM_OPEN
    " AND ending IS NOT NULL"};
inline constexpr NamedStatement DROP_EXACT{"drop exact links",
                                           "DELETE FROM link WHERE second = ?1 AND exact = ?2"};
inline constexpr NamedStatement CLEAR_LOCK{
    "clear lock",
    "UPDATE entity SET working = NULL, lock_user = NULL, lock_workspace = NULL, lock_time = NULL"
    " WHERE id = ?1"};

// --- Branches: ?1 the branch, ?2 its origin, ?3 the origin's revision ---

// What is owned by composition stays with its one owner.
inline constexpr NamedStatement BRANCH_LINKS{
    "branch links",
    "INSERT INTO link(first, kind, name, position, second, from_rev, exact, composition, entry)"
    " SELECT ?1, l.kind, l.name, l.position, l.second, 0, l.exact, 0, l.entry FROM link l"
    " CROSS JOIN entity e ON e.id = l.second AND e.deleted IN (0, " KXUDM_AWAITED
    ") WHERE l.first = ?2 AND l.kind IN (1, 2, 3, 4) AND l.to_rev > ?3 AND l.from_rev <= ?3"
    " AND l.composition = 0 AND (l.kind <> 1 OR NOT EXISTS (SELECT 1 FROM link o"
    " CROSS JOIN entity p ON p.id = o.first AND p.deleted = 0 WHERE o.second = l.second"
    " AND o.kind = 1 AND o.to_rev = " KXUDM_OPEN " AND o.composition = 1))"};
inline constexpr NamedStatement BRANCH_FILES{
    "branch files",
    "INSERT INTO file(entity, name, from_rev, hash, size, modified_time, added_time, is_text,"
    " external_path, vault, text) SELECT ?1, name, 0, hash, size, modified_time, added_time,"
    " is_text, external_path, vault, text FROM file WHERE entity = ?2 AND to_rev > ?3 AND from_rev "
    "<= ?3"};
inline constexpr NamedStatement BRANCH_VAULT{
    "branch vault",
    "UPDATE entity SET vault = (SELECT vault FROM entity WHERE id = ?2) WHERE id = ?1"};
inline constexpr NamedStatement BRANCHES{"branches",
                                         "SELECT " KXUDM_ROW
                                         "NULL, e.branch_revision FROM entity e" KXUDM_JOIN_SEEN
                                         " WHERE e.branch_uid = ?3 AND e.deleted = 0"
                                         " ORDER BY e.created_time, e.id"};

// --- Questions ---

// Kind by kind: a list of them would be kept in a table of its own.
inline constexpr NamedStatement MOVED_PLACES{"moved places",
                                             KXUDM_MOVED("3") " UNION ALL " KXUDM_MOVED("4")};
// What the viewer would see of an entity, deleted or not; NULL: nothing.
inline constexpr NamedStatement SEEN_REVISION{
    "seen revision", "SELECT " KXUDM_SEEN " FROM entity e WHERE e.id = ?3"};
// Children in a group of the newest revision, whoever sees them. Counts no further than ?4.
inline constexpr NamedStatement COUNT_UP_TO{
    "count children up to a number",
    "SELECT count(*) FROM (SELECT 1 FROM link l CROSS JOIN entity e ON e.id = l.second"
    " AND e.deleted = 0 WHERE l.first = ?1 AND l.kind = ?2 AND l.to_rev = " KXUDM_OPEN
    " AND l.name = ?3 AND l.ending IS NULL LIMIT ?4)"};
// Owners of ?3 in anybody's newest or working revision, by composition alone unless ?4. Left out
// is who gave it up in a working revision of the viewer's own.
inline constexpr NamedStatement ANY_OWNER{
    "any owner",
    "SELECT p.uid, l.from_rev > coalesce(p.published, -1), l.ending IS NOT NULL, p.lock_user,"
    " p.lock_workspace, p.lock_time FROM link l CROSS JOIN entity p"
    " ON p.id = l.first AND p.deleted = 0 WHERE l.second = ?3 AND l.kind = 1 AND l.to_rev"
    " = " KXUDM_OPEN
    " AND (?4 OR l.composition = 1)"
    " AND (l.ending IS NULL OR NOT (p.lock_user = ?1 AND p.lock_workspace = ?2)) LIMIT 1"};

}  // namespace kxudm::store::statements

#endif
