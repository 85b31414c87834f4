// The SQL of changes to content definitions; see Statements.h for the rest and for the rules.
//
// Layer: store. ?1 is the name of the definition unless a statement says otherwise.
#ifndef KXUDMRT_STORE_DEFINITIONSTATEMENTS_H
#define KXUDMRT_STORE_DEFINITIONSTATEMENTS_H

#include "store/Statements.h"

namespace kxudm::store::statements {

inline constexpr NamedStatement ANY_OF_DEFINITION{
    "any of a definition", "SELECT uid FROM entity WHERE definition = ?1 LIMIT 1"};
// Looks at all entities of the definition.
inline constexpr NamedStatement ANY_WITH_LINK{
    "any of a definition with a link",
    "SELECT e.uid FROM entity e CROSS JOIN link l ON l.first = e.id AND l.kind = ?2"
    " WHERE e.definition = ?1 AND l.name = ?3 LIMIT 1"};
// A portion of at most ?4 behind revision ?3, which belongs to entity ?2.
inline constexpr NamedStatement REVISIONS_OF_DEFINITION{
    "revisions of a definition",
    "SELECT e.id, e.uid, e.published, e.working, r.id & 16777215, r.attributes"
    " FROM entity e CROSS JOIN revision r"
    " ON r.id BETWEEN max(e.id << 24, ?3 + 1) AND (e.id << 24) + 16777215"
    " WHERE e.definition = ?1 AND e.id >= ?2 ORDER BY e.id, r.id LIMIT ?4"};
// ?1 is the revision's id.
inline constexpr NamedStatement REWRITE_ATTRIBUTES{
    "rewrite attributes", "UPDATE revision SET attributes = ?2 WHERE id = ?1"};

}  // namespace kxudm::store::statements

#endif
