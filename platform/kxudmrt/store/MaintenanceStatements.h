// The SQL of verify and purge. Each looks at the whole library, and each is run seldom.
//
// Layer: store.
#ifndef KXUDMRT_STORE_MAINTENANCESTATEMENTS_H
#define KXUDMRT_STORE_MAINTENANCESTATEMENTS_H

#include "store/Statements.h"

// UID and revision of a row `r` of revisions, of which the entity may be missing.
#define KXUDM_REVISION_NAME "coalesce(e.uid, '#' || (r.id >> 24)) || ':' || (r.id & 16777215)"
// The newest revision that anybody sees of `e`.
#define KXUDM_LAST "coalesce(e.working, e.published)"
#define KXUDM_LINK_NAME                                                                 \
    "coalesce(e.uid, '#' || l.first) || ' -> ' || coalesce(s.uid, '#' || l.second) || " \
    "CASE WHEN l.name = '' THEN '' ELSE ' (' || l.name || ')' END"
#define KXUDM_LINKS                                   \
    " FROM link l LEFT JOIN entity e ON e.id=l.first" \
    " LEFT JOIN entity s ON s.id = l.second WHERE "
#define KXUDM_FILE_NAME "coalesce(e.uid, '#' || f.entity) || ' ' || f.name"
// An interval that ends before it begins fails already in the database.
#define KXUDM_END(row) "min(" row ".to_rev, coalesce(" row ".ending, " row ".to_rev))"

namespace kxudm::store::statements {

// --- Each gives the object and what is wrong with it ---

inline constexpr NamedStatement NEWEST_MISSING{
    "newest revisions that are missing",
    "SELECT e.uid || ':' || e.published, 'the newest published revision is not stored'"
    " FROM entity e WHERE e.published IS NOT NULL AND e.deleted <> " KXUDM_AWAITED
    " AND NOT EXISTS"
    " (SELECT 1 FROM revision r WHERE r.id = (e.id << 24) + e.published) UNION ALL"
    " SELECT e.uid || ':' || e.working, 'the working revision is not stored' FROM entity e"
    " WHERE e.working IS NOT NULL AND NOT EXISTS"
    " (SELECT 1 FROM revision r WHERE r.id = (e.id << 24) + e.working)"};
inline constexpr NamedStatement STRAY_REVISIONS{
    "stray revisions",
    "SELECT " KXUDM_REVISION_NAME
    ", CASE WHEN e.id IS NULL THEN 'it is of no entity'"
    " WHEN r.state = 0 THEN 'it is stored as a working revision, which it is not'"
    " WHEN r.state = 1 THEN 'it is stored as published, which it is not'"
    " ELSE 'it is stored as unversioned, which its entity is not' END"
    " FROM revision r LEFT JOIN entity e ON e.id = r.id >> 24 WHERE e.id IS NULL"
    " OR (r.state = 0 AND e.working IS NOT r.id & 16777215)"
    " OR (r.state = 1 AND NOT coalesce(r.id & 16777215 BETWEEN 1 AND e.published, 0))"
    " OR (r.state = 2 AND (r.id & 16777215 <> 0 OR e.published IS NOT 0"
    " OR e.working IS NOT NULL))"};
inline constexpr NamedStatement STRAY_LOCKS{
    "stray locks",
    "SELECT e.uid || ':' || e.working, 'it is not the revision behind the published one'"
    " FROM entity e WHERE e.working <> coalesce(e.published + 1, 0)"};
inline constexpr NamedStatement WRONG_FOLDING{
    "wrong folded texts",
    "SELECT e.uid, 'its name is not found by queries that ignore case' FROM entity e"
    " WHERE e.name_folded IS NOT nullif(kxudm_fold(e.name), e.name) UNION ALL"
    " SELECT e.uid, 'attribute ' || h.name || ' is not found by queries that ignore case'"
    " FROM head_attribute h JOIN entity e ON e.id = h.entity"
    " WHERE h.folded IS NOT nullif(kxudm_fold(h.value), h.value)"};
// Exact relations end behind their one revision from the start.
inline constexpr NamedStatement LINK_INTERVALS{
    "broken link intervals",
    "SELECT " KXUDM_LINK_NAME ", CASE WHEN l.from_rev > " KXUDM_LAST
    " THEN 'it begins at revision ' || l.from_rev || ', which is not there'"
    " WHEN l.to_rev < " KXUDM_OPEN
    " THEN 'it ended at revision ' || l.to_rev || ', which is not published'"
    " ELSE 'it is to end at revision ' || l.ending || ', which is no working one' END" KXUDM_LINKS
    "e.id IS NOT NULL AND (l.from_rev > " KXUDM_LAST " OR (l.to_rev < " KXUDM_OPEN
    " AND l.to_rev > coalesce(e.published, -1)) OR (l.ending IS NOT e.working AND l.ending IS NOT"
    " NULL AND NOT (l.kind = 5 AND l.exact IS NOT NULL"
    " AND l.ending = max(" KXUDM_LAST ", 1) + 1)))"};
inline constexpr NamedStatement LINKS_TWICE{
    "links that hold twice",
    "SELECT " KXUDM_LINK_NAME
    ", 'it holds twice at revision ' || l.from_rev FROM (SELECT *, max(" KXUDM_END("k")
    ") OVER (PARTITION BY first, kind, name, second, coalesce(exact, -1) ORDER BY from_rev, to_rev"
    " ROWS BETWEEN UNBOUNDED PRECEDING AND 1 PRECEDING) AS before FROM link k) l"
    " LEFT JOIN entity e ON e.id = l.first LEFT JOIN entity s ON s.id = l.second"
    " WHERE l.before > l.from_rev"};
// A relation may stay on a revision that is older than all that came of its end.
inline constexpr NamedStatement DANGLING_LINKS{
    "dangling links",
    "SELECT " KXUDM_LINK_NAME
    ", CASE WHEN e.id IS NULL OR s.id IS NULL THEN 'one end of it is not there'"
    " ELSE 'it stays on revision ' || l.exact || ', which is not there' END" KXUDM_LINKS
    "e.id IS NULL OR s.id IS NULL OR (l.exact IS NOT NULL AND s.deleted <> " KXUDM_AWAITED
    " AND NOT EXISTS (SELECT 1 FROM revision r WHERE r.id = (l.second << 24) + l.exact)"
    " AND (SELECT min(r.id) FROM revision r WHERE r.id >> 24 = l.second"
    " AND r.id >= l.second << 24) > (l.second << 24) + l.exact IS NOT TRUE)"};
inline constexpr NamedStatement TWO_OWNERS{
    "children with two owners",
    "SELECT c.uid, 'it is owned by composition and has ' || count(DISTINCT l.first) || ' owners'"
    " FROM link l JOIN entity c ON c.id = l.second AND c.deleted = 0"
    " JOIN entity p ON p.id = l.first AND p.deleted = 0"
    " WHERE l.kind = 1 AND l.to_rev = " KXUDM_OPEN
    " AND l.ending IS NULL GROUP BY l.second"
    " HAVING count(DISTINCT l.first) > 1 AND max(l.composition) = 1"};
inline constexpr NamedStatement TWO_FOLDERS{
    "contents in two folders",
    "SELECT c.uid, 'it lies in ' || count(*) || ' folders' FROM link l JOIN entity c"
    " ON c.id = l.first WHERE l.kind = 3 AND l.to_rev = " KXUDM_OPEN
    " AND l.ending IS NULL GROUP BY l.first HAVING count(*) > 1"};
inline constexpr NamedStatement WRONG_ENTRIES{
    "wrong folder entries",
    "SELECT e.uid, 'its folder knows it as ' || coalesce('\"' || l.entry || '\"', 'nothing')"
    " FROM link l JOIN entity e ON e.id = l.first WHERE l.kind = 3 AND l.entry IS NOT e.name"};
inline constexpr NamedStatement FILE_INTERVALS{
    "broken file intervals",
    "SELECT " KXUDM_FILE_NAME ", CASE WHEN f.from_rev > " KXUDM_LAST
    " THEN 'it begins at revision ' || f.from_rev || ', which is not there'"
    " WHEN f.to_rev < " KXUDM_OPEN
    " THEN 'it ended at revision ' || f.to_rev || ', which is not published'"
    " ELSE 'it is to end at revision ' || f.ending || ', which is no working one' END"
    " FROM file f JOIN entity e ON e.id = f.entity WHERE f.from_rev > " KXUDM_LAST
    " OR (f.to_rev < " KXUDM_OPEN
    " AND f.to_rev > coalesce(e.published, -1))"
    " OR (f.ending IS NOT NULL AND f.ending IS NOT e.working)"};
inline constexpr NamedStatement FILES_TWICE{
    "files that are there twice",
    "SELECT " KXUDM_FILE_NAME
    ", 'it is there twice at revision ' || f.from_rev FROM (SELECT *, max(" KXUDM_END("k")
    ") OVER (PARTITION BY entity, name ORDER BY from_rev, to_rev ROWS BETWEEN UNBOUNDED PRECEDING"
    " AND 1 PRECEDING) AS before FROM file k) f LEFT JOIN entity e ON e.id = f.entity"
    " WHERE f.before > f.from_rev"};
inline constexpr NamedStatement DANGLING_FILES{
    "dangling files",
    "SELECT " KXUDM_FILE_NAME
    ", 'its entity is not there' FROM file f LEFT JOIN entity e ON e.id = f.entity"
    " WHERE e.id IS NULL"};
inline constexpr NamedStatement STRAY_ROWS{
    "stray rows",
    "SELECT '#' || h.entity || ' ' || h.name, 'a search attribute of no entity'"
    " FROM head_attribute h LEFT JOIN entity e ON e.id = h.entity WHERE e.id IS NULL UNION ALL"
    " SELECT '#' || (p.revision >> 24) || ':' || (p.revision & 16777215),"
    " 'a save point of no revision' FROM savepoint p LEFT JOIN revision r ON r.id = p.revision"
    " WHERE r.id IS NULL"};

// --- What is compared outside of the database ---

inline constexpr NamedStatement ALL_ATTRIBUTES{
    "all attributes",
    "SELECT " KXUDM_REVISION_NAME
    ", r.attributes FROM revision r LEFT JOIN entity e ON e.id = r.id >> 24 ORDER BY r.id"};
inline constexpr NamedStatement ALL_NEWEST{
    "all newest revisions",
    "SELECT e.id, e.uid, p.display_name, p.attributes, w.display_name, w.attributes, e.definition"
    " FROM entity e"
    " LEFT JOIN revision p ON p.id = (e.id << 24) + e.published"
    " LEFT JOIN revision w ON w.id = (e.id << 24) + e.working"
    " WHERE e.deleted <> " KXUDM_AWAITED " ORDER BY e.id"};
inline constexpr NamedStatement HEADS_OF{
    "search attributes of an entity",
    "SELECT name, working, value FROM head_attribute WHERE entity = ?1"};
inline constexpr NamedStatement DEFINITIONS_USED{
    "definitions in use",
    "SELECT definition, min(uid), count(*) FROM entity WHERE deleted <> " KXUDM_AWAITED
    " GROUP BY definition ORDER BY definition"};
// Of kind ?1. Ending links count: an undo brings them back.
inline constexpr NamedStatement ALL_LINKS_OF_KIND{
    "all links of a kind",
    "SELECT first, second FROM link WHERE kind = ?1 AND to_rev = " KXUDM_OPEN};

// --- Contents ---

inline constexpr NamedStatement CONTENTS_USED{
    "contents in use",
    "SELECT coalesce(f.vault, ''), f.hash, min(e.uid || ' ' || f.name), max(f.size),"
    " coalesce(max(f.text), 0) FROM file f JOIN entity e ON e.id = f.entity WHERE f.hash IS NOT "
    "NULL GROUP BY 1, 2"};
inline constexpr NamedStatement VAULTS_OF_FILES{
    "vaults of files", "SELECT DISTINCT vault FROM file WHERE vault IS NOT NULL"};
inline constexpr NamedStatement IS_CONTENT_USED{
    "is content in use", "SELECT 1 FROM file WHERE hash = ?1 AND coalesce(vault, '') = ?2 LIMIT 1"};

// --- Deleted entities ---

inline constexpr NamedStatement DELETED_ENTITIES{
    "deleted entities",
    "SELECT e.id, e.uid, e.definition, e.name, e.published, e.working, e.deleted, d.time,"
    " e.lock_user, e.lock_workspace"
    " FROM entity e LEFT JOIN (SELECT entity, max(time) AS time FROM journal WHERE op IN (44, -44)"
    " GROUP BY entity) d ON d.entity = e.id WHERE e.deleted <> 0"
    " AND e.deleted > 0 ORDER BY e.id"};
inline constexpr NamedStatement YOUNGEST_ENTITY{"youngest entity", "SELECT max(id) FROM entity"};
inline constexpr NamedStatement PURGE_REVISIONS{
    "purge revisions",
    "DELETE FROM revision WHERE id BETWEEN (?1 << 24) AND (?1 << 24) + 16777215"};
inline constexpr NamedStatement PURGE_HEADS{"purge search attributes",
                                            "DELETE FROM head_attribute WHERE entity = ?1"};
inline constexpr NamedStatement PURGE_LINKS{"purge links",
                                            "DELETE FROM link WHERE first = ?1 OR second = ?1"};
inline constexpr NamedStatement PURGE_FILES{"purge files", "DELETE FROM file WHERE entity = ?1"};
// What stands for entities to which no link leads any more. Ids are not used again.
inline constexpr NamedStatement PURGE_AWAITED{
    "purge what is awaited no more",
    "DELETE FROM entity WHERE deleted = " KXUDM_AWAITED
    " AND deleted <> 0 AND id < (SELECT max(id) FROM entity)"
    " AND NOT EXISTS (SELECT 1 FROM link WHERE second = entity.id)"};
inline constexpr NamedStatement PURGE_ENTITY{"purge entity", "DELETE FROM entity WHERE id = ?1"};
// The first entry that is not older than ?1, else the last of all.
inline constexpr NamedStatement JOURNAL_BEGIN{
    "begin of the journal to be kept",
    "SELECT coalesce((SELECT sequence FROM journal WHERE time >= ?1 ORDER BY sequence LIMIT 1),"
    " (SELECT max(sequence) FROM journal))"};
inline constexpr NamedStatement TRIM_JOURNAL{
    "trim the journal",
    "DELETE FROM journal WHERE sequence < ?1 AND NOT (op IN (44, -44) AND EXISTS"
    " (SELECT 1 FROM entity e WHERE e.id = journal.entity AND e.deleted <> 0))"};
inline constexpr NamedStatement HOLDERS_NEAR{
    "holders near an entity",
    "SELECT p.lock_user, p.lock_workspace FROM link l"
    " CROSS JOIN entity p ON p.id = l.first AND p.deleted = 0 AND p.working IS NOT NULL"
    " WHERE l.second = ?1 AND l.kind IN (1, 2, 5) AND l.to_rev = " KXUDM_OPEN
    " UNION SELECT lock_user, lock_workspace FROM entity WHERE id = ?1 AND working IS NOT NULL"};
// Kind ?2 of those that the child ?1 bears.
inline constexpr NamedStatement DELETED_PLACES{
    "deleted places",
    "SELECT l.second FROM link l CROSS JOIN entity p ON p.id = l.second AND p.deleted <> 0"
    " WHERE l.first = ?1 AND l.kind = ?2 AND l.to_rev = " KXUDM_OPEN " AND l.ending IS NULL"};
// A child of ?1, or ?1 itself, that is owned by composition and has two owners.
inline constexpr NamedStatement OWNED_TWICE_NEAR{
    "owned twice near an entity",
    "SELECT c.uid FROM link l JOIN entity c ON c.id = l.second AND c.deleted = 0"
    " JOIN entity p ON p.id = l.first AND p.deleted = 0"
    " WHERE l.kind = 1 AND l.to_rev = " KXUDM_OPEN
    " AND l.ending IS NULL AND l.second IN (SELECT ?1 UNION SELECT second FROM link"
    " WHERE first = ?1 AND kind = 1 AND to_rev = " KXUDM_OPEN
    ") GROUP BY l.second HAVING count(DISTINCT l.first) > 1 AND max(l.composition) = 1"};

}  // namespace kxudm::store::statements

#endif
