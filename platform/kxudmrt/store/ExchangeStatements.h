// The SQL of export and import; see Statements.h for the rest and for the rules.
//
// Layer: store. What is exported, and what became of each entity of an import, stands in temporary
// tables of the connection, which go to a file once they are large: memory doesn't grow with the
// library.
#ifndef KXUDMRT_STORE_EXCHANGESTATEMENTS_H
#define KXUDMRT_STORE_EXCHANGESTATEMENTS_H

#include "store/Statements.h"

// The revision at which a link or file of `row` no longer holds.
#define KXUDM_HELD_TO(row) "min(" row ".to_rev, coalesce(" row ".ending, " row ".to_rev))"
// Of the entity `e`: it may leave the library.
#define KXUDM_EXPORTABLE(e) e ".deleted = 0 AND " e ".published IS NOT NULL"
// A link of `l` that the exported revisions of `e` hold: all published ones, or, where ?1 is 0, the
// newest of them.
#define KXUDM_HELD_IN_EXPORT \
    "l.from_rev <= e.published AND (?1 OR " KXUDM_HELD_TO("l") " > e.published)"

namespace kxudm::store::statements {

inline constexpr const char* EXCHANGE_TABLES = R"sql(
CREATE TEMP TABLE IF NOT EXISTS exchange_selected (id INTEGER PRIMARY KEY);
CREATE TEMP TABLE IF NOT EXISTS exchange_content (
  hash TEXT NOT NULL PRIMARY KEY,
  vault TEXT NOT NULL,
  size INTEGER NOT NULL
) WITHOUT ROWID;
CREATE TEMP TABLE IF NOT EXISTS exchange_arrived (
  uid TEXT NOT NULL PRIMARY KEY,
  origin INTEGER NOT NULL,
  id INTEGER NOT NULL,
  mode INTEGER NOT NULL,
  known INTEGER NOT NULL,
  first INTEGER NOT NULL,
  newest INTEGER NOT NULL,
  diverged INTEGER NOT NULL
) WITHOUT ROWID;
CREATE TEMP TABLE IF NOT EXISTS exchange_folder (
  number INTEGER PRIMARY KEY,
  uid TEXT NOT NULL UNIQUE,
  name TEXT NOT NULL,
  parent TEXT,
  progress INTEGER NOT NULL DEFAULT 0,
  id INTEGER NOT NULL DEFAULT 0,
  refused INTEGER NOT NULL DEFAULT 0,
  same TEXT
);
CREATE TEMP TABLE IF NOT EXISTS exchange_coming (
  place TEXT NOT NULL,
  name TEXT NOT NULL,
  uid TEXT NOT NULL,
  PRIMARY KEY (place, name)
) WITHOUT ROWID;
DELETE FROM exchange_selected;
DELETE FROM exchange_content;
DELETE FROM exchange_arrived;
DELETE FROM exchange_folder;
DELETE FROM exchange_coming;
)sql";

// --- What is exported ---

inline constexpr NamedStatement SELECT_ONE{
    "select one for export",
    "INSERT OR IGNORE INTO exchange_selected SELECT e.id FROM entity e WHERE e.id = ?1"
    " AND " KXUDM_EXPORTABLE("e")};
inline constexpr NamedStatement SELECT_ALL{
    "select all for export",
    "INSERT OR IGNORE INTO exchange_selected SELECT e.id FROM entity e WHERE " KXUDM_EXPORTABLE(
        "e")};
inline constexpr NamedStatement SELECT_OWNED{
    "select owned ones for export",
    "INSERT OR IGNORE INTO exchange_selected WITH RECURSIVE owned(id) AS ("
    "SELECT id FROM exchange_selected UNION SELECT s.id FROM owned o"
    " CROSS JOIN entity e ON e.id = o.id CROSS JOIN link l ON l.first = e.id AND l.kind = 1"
    " AND " KXUDM_HELD_IN_EXPORT
    " CROSS JOIN entity s ON s.id = l.second"
    " AND " KXUDM_EXPORTABLE("s") ") SELECT id FROM owned"};
inline constexpr NamedStatement SELECT_PLACES{
    "select places for export",
    "INSERT OR IGNORE INTO exchange_selected WITH RECURSIVE placed(id) AS ("
    "SELECT id FROM exchange_selected UNION SELECT s.id FROM placed o"
    " CROSS JOIN entity e ON e.id = o.id CROSS JOIN link l ON l.first = e.id AND l.kind IN (3, 4)"
    " AND " KXUDM_HELD_IN_EXPORT
    " CROSS JOIN entity s ON s.id = l.second"
    " AND " KXUDM_EXPORTABLE("s") ") SELECT id FROM placed"};
inline constexpr NamedStatement COUNT_SELECTED{"count what is exported",
                                               "SELECT count(*) FROM exchange_selected"};
inline constexpr NamedStatement SELECTED_BEHIND{
    "what is exported behind an id",
    "SELECT id FROM exchange_selected WHERE id > ?1 ORDER BY id LIMIT ?2"};
inline constexpr NamedStatement SELECTED_DEFINITIONS{
    "definitions of what is exported",
    "SELECT DISTINCT e.definition FROM exchange_selected x CROSS JOIN entity e ON e.id = x.id"};
inline constexpr NamedStatement NOTE_CONTENT{
    "note content for export",
    "INSERT OR IGNORE INTO exchange_content(hash, vault, size) VALUES (?1, ?2, ?3)"};
inline constexpr NamedStatement SIZE_OF_CONTENT{
    "size of content for export", "SELECT size FROM exchange_content WHERE hash = ?1"};
inline constexpr NamedStatement COUNT_CONTENT{
    "count contents for export", "SELECT count(*), coalesce(sum(size), 0) FROM exchange_content"};
inline constexpr NamedStatement CONTENT_BEHIND{
    "contents for export behind a hash",
    "SELECT hash, vault, size FROM exchange_content WHERE hash > ?1 ORDER BY hash LIMIT ?2"};

// --- An entity as it stands in a document ---

inline constexpr NamedStatement EXCHANGE_ENTITY{
    "entity for exchange",
    "SELECT uid, definition, name, created_time, created_user, created_workspace, branch_uid,"
    " branch_revision, published FROM entity WHERE id = ?1"};
// ?1 and ?2 are ids of revisions.
inline constexpr NamedStatement EXCHANGE_REVISIONS{
    "revisions for exchange",
    "SELECT id & 16777215, display_name, created_time, created_user, modified_time, modified_user,"
    " published_time, published_user, workspace, comment, attributes, state FROM revision"
    " WHERE id BETWEEN ?1 AND ?2 AND state <> 0 ORDER BY id"};
inline constexpr NamedStatement EXCHANGE_REVISION_NUMBERS{
    "revision numbers for exchange",
    "SELECT id & 16777215 FROM revision WHERE id BETWEEN ?1 AND ?2 AND state <> 0 ORDER BY id"};
inline constexpr NamedStatement EXCHANGE_FILES{
    "files for exchange",
    "SELECT f.name, f.hash, f.size, f.modified_time, f.added_time, f.is_text, f.external_path,"
    " f.vault, f.from_rev, " KXUDM_HELD_TO("f") " FROM file f WHERE f.entity = ?1"
    " ORDER BY f.name, f.from_rev"};
inline constexpr NamedStatement EXCHANGE_LINKS{
    "links for exchange",
    "SELECT l.kind, l.name, s.uid, l.from_rev, " KXUDM_HELD_TO("l") ", l.exact, l.composition"
    " FROM link l CROSS JOIN entity s ON s.id = l.second"
    " AND (" KXUDM_EXPORTABLE("s") " OR s.deleted = " KXUDM_AWAITED
    ") WHERE l.first = ?1 AND (l.exact IS NULL OR l.exact <= s.published"
    " OR s.deleted = " KXUDM_AWAITED ")"
    " ORDER BY l.kind, l.name, l.position, l.from_rev, s.uid"};

// --- Import: entities ---

inline constexpr NamedStatement ANY_ENTITY{"any entity", "SELECT 1 FROM entity LIMIT 1"};
inline constexpr NamedStatement KNOWN_ENTITY{
    "known entity",
    "SELECT id, definition, name, published, working, lock_user, lock_workspace, lock_time, deleted"
    " FROM entity WHERE uid = ?1 AND deleted <> " KXUDM_AWAITED};
inline constexpr NamedStatement IMPORT_ENTITY{
    "import entity",
    "INSERT INTO entity(uid, definition, name, published, created_time, created_user,"
    " created_workspace, branch_uid, branch_revision, name_folded)"
    " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, nullif(kxudm_fold(?3), ?3))"};
inline constexpr NamedStatement IMPORT_REVISION{
    "import revision",
    "INSERT INTO revision(id, state, display_name, created_time, created_user, modified_time,"
    " modified_user, published_time, published_user, workspace, comment, attributes)"
    " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12)"};
inline constexpr NamedStatement DROP_HEADS{"drop head attributes",
                                           "DELETE FROM head_attribute WHERE entity = ?1"};
inline constexpr NamedStatement SET_NEWEST{"set newest published",
                                           "UPDATE entity SET published = ?2 WHERE id = ?1"};
// What the newest revision holds is to end at ?2, unless the import says that it goes on.
inline constexpr NamedStatement MARK_FILES{
    "mark files to end",
    "UPDATE file SET ending = ?2 WHERE entity = ?1 AND to_rev = " KXUDM_OPEN " AND ending IS NULL"};
inline constexpr NamedStatement MARK_LINKS{
    "mark links to end",
    "UPDATE link SET ending = ?2 WHERE first = ?1 AND kind IN (1, 2, 3, 4, 5)"
    " AND to_rev = " KXUDM_OPEN " AND ending IS NULL"};
inline constexpr NamedStatement UNMARK_FILE{
    "let file go on",
    "UPDATE file SET ending = ?3 WHERE entity = ?1 AND to_rev = " KXUDM_OPEN
    " AND name = ?2 AND ending = ?4"};
inline constexpr NamedStatement HAS_FILES{"has files",
                                          "SELECT 1 FROM file WHERE entity = ?1 LIMIT 1"};
inline constexpr NamedStatement IMPORT_FILE{
    "import file",
    "INSERT INTO file(entity, to_rev, name, from_rev, hash, size, modified_time, added_time,"
    " is_text, external_path) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10)"};
inline constexpr NamedStatement NOTE_ARRIVED{
    "note arrival",
    "INSERT INTO exchange_arrived(uid, origin, id, mode, known, first, newest, diverged)"
    " VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)"};
inline constexpr NamedStatement ARRIVED{
    "arrival",
    "SELECT origin, id, mode, known, first, newest, diverged FROM exchange_arrived"
    " WHERE uid = ?1"};

// --- Import: folders of the archive, and where they come to lie ---

inline constexpr NamedStatement NOTE_FOLDER{
    "note folder", "INSERT OR IGNORE INTO exchange_folder(uid, name) VALUES (?1, ?2)"};
inline constexpr NamedStatement NOTE_FOLDER_ABOVE{
    "note folder above", "UPDATE exchange_folder SET parent = ?2 WHERE uid = ?1"};
inline constexpr NamedStatement FOLDER_BEHIND{
    "folder behind",
    "SELECT number, uid, name, parent, progress, id, refused FROM exchange_folder"
    " WHERE number > ?1 ORDER BY number LIMIT 1"};
inline constexpr NamedStatement FOLDER_OF_UID{
    "folder of a UID",
    "SELECT number, uid, name, parent, progress, id, refused FROM exchange_folder WHERE uid = ?1"};
inline constexpr NamedStatement FOLDER_BEGUN{
    "folder begun", "UPDATE exchange_folder SET progress = 1 WHERE number = ?1"};
inline constexpr NamedStatement FOLDER_RESOLVED{
    "folder resolved",
    "UPDATE exchange_folder SET progress = 2, id = ?2, refused = ?3, same = ?4 WHERE number = ?1"};
inline constexpr NamedStatement NOTE_COMING{
    "note coming folder",
    "INSERT OR IGNORE INTO exchange_coming(place, name, uid) VALUES (?1, ?2, ?3)"};
inline constexpr NamedStatement COMING{
    "coming folder", "SELECT uid FROM exchange_coming WHERE place = ?1 AND name = ?2"};
inline constexpr NamedStatement SAME_FOLDER{
    "same folder", "SELECT id, same FROM exchange_folder WHERE uid = ?1 AND same IS NOT NULL"};

// --- Import: links; ?1 first, ?2 kind, ?3 name, ?4 second, ?5 exact ---

// In any revision from ?6 on up to, not including, ?7.
inline constexpr NamedStatement OPEN_LINK_THERE{
    "open link for import is there",
    "SELECT 1 FROM link l INDEXED BY link_second WHERE second = ?4 AND kind = ?2"
    " AND to_rev = " KXUDM_OPEN
    " AND first = ?1 AND name = ?3 AND exact IS ?5"
    " AND from_rev < ?7 AND (ending IS NULL OR ending > ?6)"};
// Found from the end that has few of them.
inline constexpr NamedStatement CLOSED_LINK_THERE{
    "closed link for import is there",
    "SELECT 1 FROM link INDEXED BY link_second WHERE second = ?4 AND kind = ?2 AND to_rev > ?6"
    " AND to_rev < " KXUDM_OPEN " AND first = ?1 AND name = ?3 AND exact IS ?5 AND from_rev < ?7"};
inline constexpr NamedStatement CLOSED_PLACE_THERE{
    "closed place for import is there",
    "SELECT 1 FROM link WHERE first = ?1 AND kind = ?2 AND to_rev > ?6 AND to_rev < " KXUDM_OPEN
    " AND +second = ?4 AND name = ?3 AND exact IS ?5 AND from_rev < ?7"};
// What was marked to end at ?7.
inline constexpr NamedStatement UNMARK_LINK{
    "let link go on",
    "UPDATE link SET ending = ?6 WHERE second = ?4 AND kind = ?2 AND to_rev = " KXUDM_OPEN
    " AND first = ?1 AND name = ?3 AND exact IS ?5 AND ending = ?7"};
inline constexpr NamedStatement LAST_POSITION{
    "last position of links",
    "SELECT coalesce(max(position), 0) FROM link WHERE first = ?1 AND kind = ?2 AND name = ?3"};
inline constexpr NamedStatement IMPORT_LINK{
    "import link",
    "INSERT INTO link(first, kind, name, second, exact, to_rev, position, from_rev, ending,"
    " composition, entry) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10,"
    " CASE WHEN ?2 = 3 THEN (SELECT name FROM entity WHERE id = ?1) END)"};
// --- Import: links whose other end has not come; ?1 what stands for it ---

inline constexpr NamedStatement AWAIT{
    "await an entity",
    "INSERT INTO entity(uid, definition, name, published, created_time, created_user,"
    " created_workspace, deleted) VALUES (?1, '', '', 0, 0, '', '', " KXUDM_AWAITED ")"};
inline constexpr NamedStatement AWAITED{
    "awaited entity", "SELECT id FROM entity WHERE uid = ?1 AND deleted = " KXUDM_AWAITED};
// The UID is for what has come. No UID ends so.
inline constexpr NamedStatement GIVE_UID_BACK{
    "give a UID back", "UPDATE entity SET uid = uid || '?' || id WHERE id = ?1"};
// Stays until a purge where its id would be given again.
inline constexpr NamedStatement DROP_AWAITED{
    "drop what is awaited no more",
    "DELETE FROM entity WHERE id = ?1 AND id < (SELECT max(id) FROM entity)"};
inline constexpr NamedStatement AWAITING_LINK{
    "link that awaits its end",
    "SELECT l.first, p.uid, p.deleted, l.kind, l.name, l.to_rev, l.position, l.from_rev, l.exact,"
    " l.composition FROM link l INDEXED BY link_second CROSS JOIN entity p ON p.id = l.first"
    " WHERE l.second = ?1 ORDER BY l.kind, l.to_rev, l.first, l.name LIMIT 1"};
inline constexpr NamedStatement LET_LINK_ARRIVE{
    "let a link arrive",
    "UPDATE link SET second = ?8 WHERE first = ?2 AND kind = ?3 AND to_rev = ?4 AND name = ?5"
    " AND position = ?6 AND second = ?1 AND from_rev = ?7"};
inline constexpr NamedStatement DROP_AWAITING_LINK{
    "drop a link that awaits its end",
    "DELETE FROM link WHERE first = ?2 AND kind = ?3 AND to_rev = ?4 AND name = ?5"
    " AND position = ?6 AND second = ?1 AND from_rev = ?7"};
inline constexpr NamedStatement FIRST_REVISION{
    "first revision that came",
    "SELECT id & 16777215 FROM revision WHERE id BETWEEN (?1 << 24) AND (?1 << 24) + 16777215"
    " AND state <> 0 ORDER BY id LIMIT 1"};

// A place of that kind that goes on.
inline constexpr NamedStatement OTHER_PLACE{
    "other place",
    "SELECT 1 FROM link WHERE first = ?1 AND kind = ?2 AND to_rev = " KXUDM_OPEN
    " AND second <> ?3 AND ending IS NULL LIMIT 1"};
// Another owner than ?1 of ?2 that excludes a second one; with ?3 any other.
inline constexpr NamedStatement OTHER_OWNER{
    "other owner",
    "SELECT p.uid FROM link l CROSS JOIN entity p ON p.id = l.first AND p.deleted = 0"
    " WHERE l.second = ?2 AND l.kind = 1 AND l.to_rev = " KXUDM_OPEN
    " AND l.ending IS NULL AND l.first <> ?1 AND (?3 OR l.composition = 1) LIMIT 1"};
// Places that revisions ?2 and later have left.
inline constexpr NamedStatement LEFT_PLACES{
    "places that were left",
    "SELECT DISTINCT l.second FROM link l WHERE l.first = ?1 AND l.kind IN (3, 4)"
    " AND l.to_rev >= ?2 AND l.to_rev < " KXUDM_OPEN
    " AND NOT EXISTS (SELECT 1 FROM link o WHERE o.first = ?1 AND o.kind = l.kind"
    " AND o.to_rev = " KXUDM_OPEN " AND o.second = l.second)"};

}  // namespace kxudm::store::statements

#endif
