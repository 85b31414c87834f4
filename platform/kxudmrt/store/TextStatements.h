// The SQL of full text search; see Statements.h for the rest and for the rules.
//
// Layer: store. Row 2 * entity of text_attribute holds the words of the published (or unversioned)
// revision, the row behind it those of the working one; see schema/LibrarySchema.cpp for the rest.
#ifndef KXUDMRT_STORE_TEXTSTATEMENTS_H
#define KXUDMRT_STORE_TEXTSTATEMENTS_H

#include "store/Statements.h"

#define KXUDM_HELD "(e.lock_user IS ?1 AND e.lock_workspace IS ?2)"
// A file `f` of the newest revision of `e` that the viewer sees.
#define KXUDM_SEEN_FILE                                        \
    " f.from_rev <= " KXUDM_SEEN " AND f.to_rev > " KXUDM_SEEN \
    " AND (f.ending IS NULL OR f.ending > " KXUDM_SEEN ")"
// Documents of attributes that ?3, an expression for the index, finds, with their entities.
#define KXUDM_ATTRIBUTES_FOUND                                              \
    " FROM text_attribute(?3) t CROSS JOIN entity e ON e.id = t.rowid >> 1" \
    " AND e.deleted = 0 AND (t.rowid & 1) = " KXUDM_HELD                    \
    " AND NOT EXISTS (SELECT 1 FROM text_pending p WHERE p.entity = e.id)"
// Entities with a file whose content it finds.
#define KXUDM_CONTENTS_FOUND                                                                   \
    "SELECT e.id FROM text_content(?3) t CROSS JOIN file f ON f.text = t.rowid AND f.text > 0" \
    " CROSS JOIN entity e ON e.id = f.entity AND e.deleted = 0 WHERE" KXUDM_SEEN_FILE

namespace kxudm::store::statements {

// --- What is not in the index yet ---

inline constexpr NamedStatement TEXT_PENDING{"entities with new words",
                                             "SELECT entity FROM text_pending LIMIT ?1"};
inline constexpr NamedStatement MARK_TEXT{"mark new words",
                                          "INSERT OR IGNORE INTO text_pending(entity) VALUES (?1)"};
inline constexpr NamedStatement UNMARK_TEXT{"unmark new words",
                                            "DELETE FROM text_pending WHERE entity = ?1"};
inline constexpr NamedStatement CONTENTS_PENDING{
    "contents with new words",
    "SELECT DISTINCT hash, coalesce(vault, '') FROM file INDEXED BY file_text_pending"
    " WHERE text IS NULL AND hash IS NOT NULL LIMIT ?1"};

inline constexpr NamedStatement ANY_TEXT_PENDING{
    "any new words",
    "SELECT 1 FROM text_pending UNION ALL SELECT 1 FROM file INDEXED BY file_text_pending"
    " WHERE text IS NULL AND hash IS NOT NULL LIMIT 1"};

// --- Documents ---

inline constexpr NamedStatement TEXT_ENTITY{
    "entity of words",
    "SELECT name, published IS NOT NULL, working IS NOT NULL FROM entity WHERE id = ?1"};
inline constexpr NamedStatement TEXT_HEADS{
    "words of attributes",
    "SELECT name, working, CASE WHEN typeof(value) = 'text' THEN value END FROM head_attribute"
    " WHERE entity = ?1 ORDER BY name, working"};
inline constexpr NamedStatement TEXT_OF{"words of a document",
                                        "SELECT words FROM text_attribute WHERE rowid = ?1"};
inline constexpr NamedStatement SET_TEXT{
    "set words", "INSERT OR REPLACE INTO text_attribute(rowid, words) VALUES (?1, ?2)"};
inline constexpr NamedStatement DROP_TEXT{"drop words",
                                          "DELETE FROM text_attribute WHERE rowid = ?1"};
inline constexpr NamedStatement MERGE_TEXTS{
    "merge words", "INSERT INTO text_attribute(text_attribute, rank) VALUES ('merge', ?1)"};
inline constexpr NamedStatement CONTENT_TEXT_OF{
    "document of a content", "SELECT text FROM file WHERE hash = ?1 AND text >= 0 LIMIT 1"};
inline constexpr NamedStatement ADD_CONTENT_TEXT{
    "add words of a content", "INSERT INTO text_content(rowid, words) VALUES (?1, ?2)"};
inline constexpr NamedStatement SET_CONTENT_TEXT{
    "set document of a content", "UPDATE file SET text = ?2 WHERE hash = ?1 AND text IS NULL"};

// --- Search; ?1 and ?2 are the viewer's user and workspace ---

// Hits by their attributes, which is all that most questions have: what the index finds leads to
// each of them once, and in their order.
inline constexpr const char* ATTRIBUTE_HITS_FROM =
    "SELECT " KXUDM_ROW "r.attributes" KXUDM_ATTRIBUTES_FOUND " CROSS" KXUDM_JOIN_SEEN;
inline constexpr const char* ATTRIBUTE_HITS_ORDER = " ORDER BY t.rowid";
// Of the others, for QUERY_FROM; ?4 are further entities.
inline constexpr const char* OTHER_HITS =
    " AND e.id IN (" KXUDM_CONTENTS_FOUND " UNION ALL SELECT value FROM json_each(?4))";
inline constexpr NamedStatement TEXT_FOUND{
    "entities with words",
    "SELECT DISTINCT * FROM (SELECT e.id" KXUDM_ATTRIBUTES_FOUND " UNION ALL " KXUDM_CONTENTS_FOUND
    ") WHERE ?1 IS NOT NULL AND ?2 IS NOT NULL ORDER BY 1"};
inline constexpr NamedStatement SEEN_TEXT_PENDING{
    "seen entities with new words",
    "SELECT e.id FROM text_pending p CROSS JOIN entity e ON e.id = p.entity AND e.deleted = 0"
    " WHERE " KXUDM_SEEN
    " IS NOT NULL UNION"
    " SELECT e.id FROM file f INDEXED BY file_text_pending CROSS JOIN entity e"
    " ON e.id = f.entity AND e.deleted = 0 WHERE f.text IS NULL AND f.hash IS NOT NULL"
    " AND" KXUDM_SEEN_FILE};
inline constexpr NamedStatement IS_TEXT_PENDING{"has new words",
                                                "SELECT 1 FROM text_pending WHERE entity = ?1"};
inline constexpr NamedStatement TEXT_HELD{"whose words count",
                                          "SELECT " KXUDM_HELD " FROM entity e WHERE e.id = ?3"};
inline constexpr NamedStatement SEEN_CONTENTS{
    "seen contents of an entity",
    "SELECT f.text, f.hash, coalesce(f.vault, '') FROM entity e CROSS JOIN file f"
    " ON f.entity = e.id WHERE e.id = ?3 AND f.hash IS NOT NULL AND coalesce(f.text, 1) > 0"
    " AND" KXUDM_SEEN_FILE};
inline constexpr NamedStatement CONTENT_HAS{"content has words",
                                            "SELECT 1 FROM text_content(?1) WHERE rowid = ?2"};
inline constexpr NamedStatement ANY_CONTENT_HAS{"any content has words",
                                                "SELECT 1 FROM text_content(?1) LIMIT 1"};
// As many documents as ?2 says at most.
inline constexpr NamedStatement TEXTS_WITH{"documents with words",
                                           "SELECT rowid FROM text_attribute(?1) LIMIT ?2"};
inline constexpr NamedStatement CONTENT_TEXTS_WITH{"contents with words",
                                                   "SELECT rowid FROM text_content(?1) LIMIT ?2"};
inline constexpr NamedStatement ENTITIES_OF_TEXT{
    "entities of a content", "SELECT DISTINCT entity FROM file WHERE text = ?1 AND text > 0"};

// --- Care: looks at everything ---

inline constexpr const char* CLEAR_TEXTS =
    "DELETE FROM text_attribute;"
    "INSERT INTO text_content(text_content) VALUES ('delete-all');"
    "UPDATE file SET text = NULL WHERE text IS NOT NULL;"
    "INSERT OR IGNORE INTO text_pending(entity) SELECT id FROM entity;";
inline constexpr NamedStatement COUNT_TEXT_PENDING{
    "count new words",
    "SELECT (SELECT count(*) FROM text_pending) + (SELECT count(DISTINCT hash) FROM file"
    " INDEXED BY file_text_pending WHERE text IS NULL AND hash IS NOT NULL)"};
inline constexpr NamedStatement TEXT_ENTITIES{"entities with words",
                                              "SELECT id, uid FROM entity ORDER BY id"};
inline constexpr NamedStatement TEXT_ROWS{"documents of attributes",
                                          "SELECT rowid FROM text_attribute ORDER BY rowid"};
}  // namespace kxudm::store::statements

#endif
