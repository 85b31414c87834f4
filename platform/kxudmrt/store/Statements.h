// All SQL of a library, by name.
//
// Layer: store. Every statement that a session runs often has its plan tested (no full scan); those
// that may scan stand at the end, with the reason. ?1 and ?2 are the viewer's user and workspace
// wherever a statement asks for visible revisions. A statement that is a prefix (…_FROM) is
// completed by LibraryStore with a condition of the query compiler.
#ifndef KXUDMRT_STORE_STATEMENTS_H
#define KXUDMRT_STORE_STATEMENTS_H

#include "sql/Connection.h"

// Revision of `e` that the viewer sees as the newest; NULL: none.
#define KXUDM_SEEN                                                                   \
    "CASE WHEN e.working IS NOT NULL AND e.lock_user = ?1 AND e.lock_workspace = ?2" \
    " THEN e.working ELSE e.published END"
#define KXUDM_JOIN_SEEN " JOIN revision r ON r.id = (e.id << 24) + " KXUDM_SEEN
// Columns in the order of ReadEntityRow; the last one is "r.attributes" or "NULL".
#define KXUDM_ROW                                                                  \
    "e.id, e.uid, e.definition, e.name, r.id & 16777215, r.state, r.display_name," \
    " e.created_time, e.created_user, r.modified_time, r.modified_user,"           \
    " e.published, e.working, e.lock_user, e.lock_workspace, e.lock_time, "
// A revision that this viewer may look at by its number.
#define KXUDM_MAY_SEE "(r.state <> 0 OR (e.lock_user = ?1 AND e.lock_workspace = ?2))"
#define KXUDM_OPEN "2147483647"
// What `deleted` is of an entity of which nothing is here yet but links to it.
#define KXUDM_AWAITED "-1"

// Children by links that the parent bears. ?3 parent, ?4 kind, ?5 parent's revision.
#define KXUDM_BORNE_FROM                                                            \
    " FROM link l CROSS JOIN entity e ON e.id = l.second AND e.deleted = 0"         \
    " CROSS JOIN revision r ON r.id = (e.id << 24) + coalesce(l.exact, " KXUDM_SEEN \
    ")"                                                                             \
    " WHERE l.first = ?3 AND l.kind = ?4 AND l.from_rev <= ?5 AND " KXUDM_MAY_SEE
#define KXUDM_BORNE_OPEN \
    KXUDM_BORNE_FROM " AND l.to_rev = " KXUDM_OPEN " AND (l.ending IS NULL OR l.ending > ?5)"
#define KXUDM_BORNE_CLOSED KXUDM_BORNE_FROM " AND l.to_rev > ?5 AND l.to_rev < " KXUDM_OPEN
// The other end of links that this end does not bear: contents of a folder, or parents. ?3, ?4
// kind.
#define KXUDM_LAID_FROM " FROM link l" KXUDM_LAID_JOINED
#define KXUDM_LAID_JOINED                                             \
    " CROSS JOIN entity e ON e.id = l.first AND e.deleted = 0"        \
    " CROSS JOIN revision r ON r.id = (e.id << 24) + " KXUDM_SEEN     \
    " WHERE l.second = ?3 AND l.kind = ?4 AND l.to_rev = " KXUDM_OPEN \
    " AND l.from_rev <= (r.id & 16777215)"                            \
    " AND (l.ending IS NULL OR l.ending > (r.id & 16777215))"
// What the viewer sees of `p`.
#define KXUDM_SEEN_PARENT                                                             \
    "(CASE WHEN p.working IS NOT NULL AND p.lock_user = ?1 AND p.lock_workspace = ?2" \
    " THEN p.working ELSE p.published END)"
// Without a parent of this kind that the viewer sees: of links that the parent bears, and of those
// that the child bears.
#define KXUDM_NO_PARENT(kind)                                                       \
    " AND NOT EXISTS (SELECT 1 FROM link l CROSS JOIN entity p"                     \
    " ON p.id = l.first AND p.deleted = 0 WHERE l.second = e.id AND l.kind = " kind \
    " AND l.to_rev = " KXUDM_OPEN " AND l.from_rev <= " KXUDM_SEEN_PARENT           \
    " AND (l.ending IS NULL OR l.ending > " KXUDM_SEEN_PARENT "))"
#define KXUDM_NO_PLACE(kind)                                                 \
    " AND NOT EXISTS (SELECT 1 FROM link l CROSS JOIN entity p"              \
    " ON p.id = l.second AND p.deleted = 0 AND " KXUDM_SEEN_PARENT           \
    " IS NOT NULL"                                                           \
    " WHERE l.first = e.id AND l.kind = " kind " AND l.to_rev = " KXUDM_OPEN \
    " AND l.from_rev <= (r.id & 16777215)"                                   \
    " AND (l.ending IS NULL OR l.ending > (r.id & 16777215)))"

namespace kxudm::store::statements {

using sql::NamedStatement;

// --- Information ---

inline constexpr NamedStatement INFO{"info", "SELECT value FROM info WHERE key = ?1"};
inline constexpr NamedStatement SET_INFO{"set info",
                                         "INSERT INTO info(key, value) VALUES (?1, ?2)"
                                         " ON CONFLICT(key) DO UPDATE SET value = excluded.value"};

// --- Entities and revisions ---

inline constexpr NamedStatement INSERT_ENTITY{
    "insert entity",
    "INSERT INTO entity(uid, definition, name, published, working, lock_user, lock_workspace,"
    " lock_time, created_time, created_user, created_workspace, branch_uid, branch_revision,"
    " name_folded) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, ?13,"
    " nullif(kxudm_fold(?3), ?3))"};
inline constexpr NamedStatement INSERT_REVISION{
    "insert revision",
    "INSERT INTO revision(id, state, display_name, created_time, created_user, modified_time,"
    " modified_user, workspace, attributes) VALUES (?1, ?2, ?3, ?4, ?5, ?4, ?5, ?6, ?7)"};
inline constexpr NamedStatement FIND_BY_UID{"find by UID",
                                            "SELECT " KXUDM_ROW
                                            "r.attributes FROM entity e" KXUDM_JOIN_SEEN
                                            " WHERE e.uid = ?3 AND e.deleted = 0"};
inline constexpr NamedStatement FIND_BY_ID{"find by id",
                                           "SELECT " KXUDM_ROW
                                           "r.attributes FROM entity e" KXUDM_JOIN_SEEN
                                           " WHERE e.id = ?3 AND e.deleted = 0"};
inline constexpr NamedStatement FIND_EVEN_DELETED{
    "find by id, even if deleted",
    "SELECT " KXUDM_ROW "NULL FROM entity e" KXUDM_JOIN_SEEN " WHERE e.id = ?3"};
inline constexpr NamedStatement FIND_REVISION{
    "find revision",
    "SELECT " KXUDM_ROW
    "r.attributes FROM entity e JOIN revision r ON r.id = (e.id << 24) + ?4"
    " WHERE e.uid = ?3 AND e.deleted = 0 AND " KXUDM_MAY_SEE};
inline constexpr NamedStatement DETAILS{
    "details",
    "SELECT e.created_workspace, e.branch_uid, e.branch_revision, e.vault, r.created_time,"
    " r.created_user, r.published_time, r.published_user, r.workspace, r.comment"
    " FROM entity e JOIN revision r ON r.id = (e.id << 24) + ?2 WHERE e.id = ?1"};
inline constexpr NamedStatement REVISION_NUMBERS{
    "revision numbers",
    "SELECT r.id & 16777215 FROM entity e JOIN revision r"
    " ON r.id BETWEEN (e.id << 24) AND (e.id << 24) + 16777215"
    " WHERE e.id = ?3 AND e.deleted = 0 AND " KXUDM_MAY_SEE " ORDER BY r.id"};
inline constexpr NamedStatement ATTRIBUTES{"attributes",
                                           "SELECT state, attributes FROM revision WHERE id = ?1"};
inline constexpr NamedStatement SET_ATTRIBUTES{
    "set attributes",
    "UPDATE revision SET attributes = ?2, modified_time = ?3, modified_user = ?4 WHERE id = ?1"};
inline constexpr NamedStatement SET_DISPLAY_NAME{
    "set display name",
    "UPDATE revision SET display_name = ?2, modified_time = ?3, modified_user = ?4 WHERE id = ?1"};
inline constexpr NamedStatement TOUCH_REVISION{
    "touch revision", "UPDATE revision SET modified_time = ?2, modified_user = ?3 WHERE id = ?1"};
inline constexpr NamedStatement SET_HEAD_ATTRIBUTE{
    "set head attribute",
    "INSERT INTO head_attribute(entity, name, working, value, folded)"
    " VALUES (?1, ?2, ?3, ?4, nullif(kxudm_fold(?4), ?4)) ON CONFLICT(entity, name, working)"
    " DO UPDATE SET value = excluded.value, folded = excluded.folded"};
inline constexpr NamedStatement DROP_HEAD_ATTRIBUTE{
    "drop head attribute",
    "DELETE FROM head_attribute WHERE entity = ?1 AND name = ?2 AND working = ?3"};
inline constexpr NamedStatement SET_NAME{
    "set name",
    "UPDATE entity SET name = ?2, name_folded = nullif(kxudm_fold(?2), ?2) WHERE id = ?1"};
inline constexpr NamedStatement SET_ENTRY{
    "set entry", "UPDATE link SET entry = ?2 WHERE first = ?1 AND kind = 3"};
inline constexpr NamedStatement SET_VAULT{"set vault",
                                          "UPDATE entity SET vault = ?2 WHERE id = ?1"};
inline constexpr NamedStatement UID_OF{"UID of id", "SELECT uid FROM entity WHERE id = ?1"};

// --- Deletion ---

inline constexpr NamedStatement OWNED{
    "owned",
    "WITH RECURSIVE owned(id) AS (VALUES (?1) UNION SELECT l.second FROM owned o CROSS JOIN link l"
    " ON l.first = o.id AND l.kind = 1 AND l.to_rev = " KXUDM_OPEN
    " WHERE l.composition = 1 AND l.ending IS NULL)"
    " SELECT e.id, e.uid, e.definition, e.published, e.working, e.lock_user, e.lock_workspace,"
    " e.lock_time FROM owned o CROSS JOIN entity e ON e.id = o.id WHERE e.deleted = 0"};
// "deleted <> 0" is said for the index, here and below: it has that condition.
inline constexpr NamedStatement LAST_DELETION{
    "last deletion",
    "SELECT coalesce(max(deleted), 0) FROM entity WHERE deleted <> 0 AND deleted > 0"};
inline constexpr NamedStatement HIDE{"hide", "UPDATE entity SET deleted = ?2 WHERE id = ?1"};
inline constexpr NamedStatement DELETION_OF{"deletion of",
                                            "SELECT deleted FROM entity WHERE uid = ?1"
                                            " AND deleted > 0"};
inline constexpr NamedStatement UNHIDE{
    "unhide", "UPDATE entity SET deleted = 0 WHERE deleted = ?1 AND deleted <> 0"};

// --- Links ---

inline constexpr NamedStatement INSERT_LINK{
    "insert link",
    "INSERT INTO link(first, kind, name, position, second, from_rev, exact, composition, entry,"
    " ending) VALUES (?1, ?2, ?3, (SELECT coalesce(max(position), 0) + 1 FROM link WHERE first = ?1"
    " AND kind = ?2 AND to_rev = " KXUDM_OPEN
    " AND name = ?3), ?4, ?5, ?6, ?7,"
    " CASE WHEN ?2 = 3 THEN (SELECT name FROM entity WHERE id = ?1) END,"
    // An exact relation ends behind its revision; 0 becomes 1 at the first publish.
    " CASE WHEN ?2 = 5 AND ?6 IS NOT NULL THEN (SELECT max(?5, 1) + 1 FROM revision"
    " WHERE id = (?1 << 24) + ?5 AND state = 0) END)"};
// Two ends of a link are looked up at once while it is open: one end alone may have a million.
// Closed ones are found from the bearing end, where none is closed later than the newest revision.
inline constexpr NamedStatement HAS_LINK{
    "has link",
    "SELECT 1 FROM link WHERE second = ?2 AND kind = ?3 AND to_rev = " KXUDM_OPEN
    " AND first = ?1 AND (?4 = '' OR name = ?4) AND from_rev <= ?5"
    " AND (ending IS NULL OR ending > ?5) UNION ALL"
    " SELECT 1 FROM link WHERE first = ?1 AND kind = ?3 AND to_rev > ?5 AND to_rev < " KXUDM_OPEN
    " AND +second = ?2 AND (?4 = '' OR name = ?4) AND from_rev <= ?5"};
// A relation of the newest revision, ?5 NULL: one that follows the newest of the second end.
inline constexpr NamedStatement HAS_RELATION{
    "has relation",
    "SELECT 1 FROM link INDEXED BY link_second WHERE second = ?2 AND kind = 5"
    " AND to_rev = " KXUDM_OPEN
    " AND first = ?1 AND name = ?3 AND from_rev <= ?4 AND (ending IS NULL OR ending > ?4)"
    " AND exact IS ?5"};
// Links of one revision only, which nobody saw in another: gone without a trace.
inline constexpr NamedStatement DROP_LINK{
    "drop link",
    "DELETE FROM link WHERE second = ?2 AND kind = ?3 AND to_rev = " KXUDM_OPEN
    " AND first = ?1 AND (?4 = '' OR name = ?4) AND from_rev = ?5"};
inline constexpr NamedStatement END_LINK{
    "end link",
    "UPDATE link SET ending = ?5 WHERE second = ?2 AND kind = ?3 AND to_rev = " KXUDM_OPEN
    " AND first = ?1 AND (?4 = '' OR name = ?4) AND from_rev < ?5 AND ending IS NULL"};
inline constexpr NamedStatement CHILDREN_NAMED{"children of a group",
                                               "SELECT " KXUDM_ROW
                                               "NULL, l.name, l.position" KXUDM_BORNE_OPEN
                                               " AND l.name = ?6 ORDER BY l.position"};
inline constexpr NamedStatement CHILDREN_ALL{
    "children of all groups",
    "SELECT " KXUDM_ROW "NULL, l.name, l.position" KXUDM_BORNE_OPEN " ORDER BY l.name, l.position"};
inline constexpr NamedStatement CHILDREN_NAMED_WITH_ATTRIBUTES{
    "children of a group with attributes",
    "SELECT " KXUDM_ROW "r.attributes, l.name, l.position" KXUDM_BORNE_OPEN
    " AND l.name = ?6 ORDER BY l.position"};
inline constexpr NamedStatement CHILDREN_ALL_WITH_ATTRIBUTES{
    "children of all groups with attributes",
    "SELECT " KXUDM_ROW "r.attributes, l.name, l.position" KXUDM_BORNE_OPEN
    " ORDER BY l.name, l.position"};
inline constexpr NamedStatement HAS_CLOSED{
    "has closed links",
    "SELECT 1 FROM link WHERE first = ?1 AND kind = ?2 AND to_rev > ?3 AND to_rev < " KXUDM_OPEN
    " LIMIT 1"};
inline constexpr NamedStatement COUNT_CHILDREN_NAMED{
    "count children of a group", "SELECT count(*)" KXUDM_BORNE_OPEN " AND l.name = ?6"};
inline constexpr NamedStatement COUNT_CHILDREN_ALL{"count children of all groups",
                                                   "SELECT count(*)" KXUDM_BORNE_OPEN};
inline constexpr NamedStatement CONTENTS{"contents",
                                         "SELECT " KXUDM_ROW
                                         "NULL, l.name, l.position" KXUDM_LAID_FROM
                                         " AND (?5 = '' OR l.name = ?5) ORDER BY l.first, l.name"};
inline constexpr NamedStatement CONTENTS_WITH_ATTRIBUTES{
    "contents with attributes",
    "SELECT " KXUDM_ROW "r.attributes, l.name, l.position" KXUDM_LAID_FROM
    " AND (?5 = '' OR l.name = ?5) ORDER BY l.first, l.name"};
inline constexpr NamedStatement COUNT_CONTENTS{
    "count contents", "SELECT count(*)" KXUDM_LAID_FROM " AND (?5 = '' OR l.name = ?5)"};
// Parents of which any revision holds a link to the child, each once per name.
inline constexpr NamedStatement PARENTS_OLDER{
    "parents with older ones",
    "SELECT DISTINCT " KXUDM_ROW
    "NULL, l.name, 0 FROM link l CROSS JOIN entity e ON e.id = l.first AND e.deleted = 0"
    " CROSS JOIN revision r ON r.id = (e.id << 24) + " KXUDM_SEEN
    " WHERE l.second = ?3 AND l.kind = ?4 AND l.from_rev <= (r.id & 16777215)"
    " AND (?5 = '' OR l.name = ?5) ORDER BY l.first, l.name"};
// The same of relations to revision ?6 of the child; negative: to any of its revisions.
inline constexpr NamedStatement RELATED{
    "related",
    "SELECT DISTINCT " KXUDM_ROW "NULL, l.name, 0" KXUDM_LAID_FROM
    " AND (?5 = '' OR l.name = ?5) AND (?6 < 0 OR coalesce(l.exact, ?6) = ?6)"
    " ORDER BY l.first, l.name"};
inline constexpr NamedStatement RELATED_OLDER{
    "related with older ones",
    "SELECT DISTINCT " KXUDM_ROW
    "NULL, l.name, 0 FROM link l CROSS JOIN entity e ON e.id = l.first AND e.deleted = 0"
    " CROSS JOIN revision r ON r.id = (e.id << 24) + " KXUDM_SEEN
    " WHERE l.second = ?3 AND l.kind = ?4 AND l.from_rev <= (r.id & 16777215)"
    " AND (?5 = '' OR l.name = ?5) AND (?6 < 0 OR coalesce(l.exact, ?6) = ?6)"
    " ORDER BY l.first, l.name"};
// Folders or classifications that any revision up to ?5 of the child lies in.
inline constexpr NamedStatement PLACES_OLDER{
    "places with older ones",
    "SELECT DISTINCT " KXUDM_ROW
    "NULL, l.name, 0 FROM link l CROSS JOIN entity e ON e.id = l.second AND e.deleted = 0"
    " CROSS JOIN revision r ON r.id = (e.id << 24) + " KXUDM_SEEN
    " WHERE l.first = ?3 AND l.kind = ?4 AND l.from_rev <= ?5 AND (?6 = '' OR l.name = ?6)"
    " ORDER BY l.second, l.name"};
inline constexpr NamedStatement HAS_PARENT{"has parent", "SELECT 1" KXUDM_LAID_FROM " LIMIT 1"};
inline constexpr NamedStatement HAS_PLACE{"has place", "SELECT 1" KXUDM_BORNE_OPEN " LIMIT 1"};
inline constexpr NamedStatement HAS_CLOSED_PLACE{"has closed place",
                                                 "SELECT 1" KXUDM_BORNE_CLOSED " LIMIT 1"};
// Whether ?2 stands above ?1, upwards because there are few above and many below. Ending links
// count, since an undo brings them back.
inline constexpr NamedStatement IS_BELOW{
    "is below",
    "WITH RECURSIVE above(id) AS (VALUES (?1) UNION SELECT l.first FROM above a CROSS JOIN link l"
    " ON l.second = a.id AND l.kind = ?3 AND l.to_rev = " KXUDM_OPEN
    ") SELECT 1 FROM above WHERE id = ?2 LIMIT 1"};
inline constexpr NamedStatement LIES_BELOW{
    "lies below",
    "WITH RECURSIVE above(id) AS (VALUES (?1) UNION SELECT l.second FROM above a CROSS JOIN link l"
    " ON l.first = a.id AND l.kind = ?3 AND l.to_rev = " KXUDM_OPEN
    ") SELECT 1 FROM above WHERE id = ?2 LIMIT 1"};

// --- Folders and roots ---

// By name: the index of listings would give the order, too, but walk the whole folder.
inline constexpr NamedStatement IN_FOLDER{
    "in folder",
    "SELECT " KXUDM_ROW "NULL FROM link l INDEXED BY link_entry" KXUDM_LAID_JOINED
    " AND l.entry = ?5 AND (?6 = '' OR e.definition = ?6) ORDER BY l.first"};
inline constexpr NamedStatement AT_TOP{
    "at the top",
    "SELECT " KXUDM_ROW "NULL FROM entity e" KXUDM_JOIN_SEEN
    " WHERE e.name = ?3 AND e.deleted = 0 AND (?4 = '' OR +e.definition = ?4)"  //
    KXUDM_NO_PLACE("3") " ORDER BY e.id"};
// Looks at every entity: names are compared with case folded outside of the database.
inline constexpr NamedStatement ALL_AT_TOP{
    "all at the top",
    "SELECT " KXUDM_ROW "NULL FROM entity e" KXUDM_JOIN_SEEN
    " WHERE e.deleted = 0" KXUDM_NO_PLACE("3") " ORDER BY e.id"};
// As far as to the condition, for each way in which kinds are borne.
inline constexpr const char* ROOTS_BY_PARENT_FROM =
    "SELECT " KXUDM_ROW "NULL FROM entity e" KXUDM_JOIN_SEEN
    " WHERE e.definition = ?3 AND e.deleted = 0" KXUDM_NO_PARENT("?4");
inline constexpr const char* ROOTS_BY_CHILD_FROM =
    "SELECT " KXUDM_ROW "NULL FROM entity e" KXUDM_JOIN_SEEN
    " WHERE e.definition = ?3 AND e.deleted = 0" KXUDM_NO_PLACE("?4");

// --- Queries ---

inline constexpr const char* QUERY_FROM =
    "SELECT " KXUDM_ROW "r.attributes FROM entity e" KXUDM_JOIN_SEEN " WHERE e.deleted = 0";
inline constexpr const char* QUERY_ROOTS_ONLY = KXUDM_NO_PARENT("1");

// --- Listings with a condition, or of an older revision, completed by LibraryStore ---

inline constexpr const char* ROW_COLUMNS = "SELECT " KXUDM_ROW "NULL, l.name, l.position";
inline constexpr const char* ROW_COLUMNS_WITH_ATTRIBUTES =
    "SELECT " KXUDM_ROW "r.attributes, l.name, l.position";
inline constexpr const char* BORNE_OPEN_FROM = KXUDM_BORNE_OPEN;
inline constexpr const char* BORNE_CLOSED_FROM = KXUDM_BORNE_CLOSED;
inline constexpr const char* LAID_FROM = KXUDM_LAID_FROM;

// --- Journal ---

// A negative op stands for its positive one told to everybody but that user in that workspace.
inline constexpr NamedStatement APPEND{
    "append to the journal",
    "INSERT INTO journal(time, op, entity, revision, parent, child, session, process, user,"
    " workspace) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10)"};
inline constexpr NamedStatement LAST_SEQUENCE{"last sequence",
                                              "SELECT coalesce(max(sequence), 0) FROM journal"};
inline constexpr NamedStatement JOURNAL{
    "journal",
    "SELECT j.sequence, j.time, j.op, j.entity, j.revision, j.parent, j.child, j.session,"
    " j.process, j.user, j.workspace, e.uid, p.uid, c.uid FROM journal j"
    " LEFT JOIN entity e ON e.id = j.entity LEFT JOIN entity p ON p.id = j.parent"
    " LEFT JOIN entity c ON c.id = j.child WHERE j.sequence > ?3"
    " AND ((j.user = '' AND j.workspace = '') OR (j.user = ?1 AND j.workspace = ?2) = (j.op > 0))"
    " ORDER BY j.sequence LIMIT ?4"};

}  // namespace kxudm::store::statements

#endif
