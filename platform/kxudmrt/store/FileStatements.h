// The SQL of the files of entities; see Statements.h for the rest and for the rules.
//
// Layer: store. ?1 is the entity's id, ?2 a revision's number unless a statement says otherwise. A
// revision's files are those with from_rev <= it < to_rev and no `ending` up to it.
#ifndef KXUDMRT_STORE_FILESTATEMENTS_H
#define KXUDMRT_STORE_FILESTATEMENTS_H

#include "store/Statements.h"

#define KXUDM_FILE                                                                \
    "SELECT name, hash, size, modified_time, added_time, is_text, external_path," \
    " vault FROM file"
#define KXUDM_OF_REVISION                                 \
    " WHERE entity = ?1 AND to_rev > ?2 AND from_rev <= " \
    "?2 AND (ending IS NULL OR ending > ?2)"

namespace kxudm::store::statements {

// Not in order: those that ended later come before those that still hold.
inline constexpr NamedStatement FILES{"files", KXUDM_FILE KXUDM_OF_REVISION};
inline constexpr NamedStatement FIND_FILE{"find file",
                                          KXUDM_FILE KXUDM_OF_REVISION " AND name = ?3"};
inline constexpr NamedStatement INSERT_FILE{
    "insert file",
    "INSERT INTO file(entity, name, from_rev, hash, size, modified_time, added_time, is_text,"
    " external_path, vault, text) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11)"};
// A file of one revision only, which nobody saw in another: gone without a trace.
inline constexpr NamedStatement DROP_FILE{
    "drop file",
    "DELETE FROM file WHERE entity = ?1 AND to_rev = " KXUDM_OPEN
    " AND name = ?3 AND from_rev = ?2"};
inline constexpr NamedStatement END_FILE{
    "end file",
    "UPDATE file SET ending = ?2 WHERE entity = ?1 AND to_rev = " KXUDM_OPEN
    " AND name = ?3 AND from_rev < ?2 AND ending IS NULL"};
// Stamps a revision that may be edited. ?1 its id, time ?2, user ?3.
inline constexpr NamedStatement TOUCH_EDITABLE{
    "touch editable revision",
    "UPDATE revision SET modified_time = ?2, modified_user = ?3 WHERE id = ?1 AND state <> 1"};

// --- Scans: asked before a source is taken away and by the care of a library, no oftener ---

inline constexpr NamedStatement IS_EXTERNAL{"is external",
                                            "SELECT 1 FROM file WHERE external_path = ?1 LIMIT 1"};
inline constexpr NamedStatement VAULTS{
    "vaults",
    "SELECT vault FROM file WHERE vault IS NOT NULL UNION SELECT vault FROM entity"
    " WHERE vault IS NOT NULL AND vault <> '' ORDER BY 1"};

}  // namespace kxudm::store::statements

#endif
