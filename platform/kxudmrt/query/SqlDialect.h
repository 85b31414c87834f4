// SQL texts of queries that differ between databases; these are SQLite's.
//
// Layer: query, inside. `e` is the entity, `r` its revision and ?1, ?2 the user and workspace of
// the one who asks, as in store/Statements.h.
#pragma once

#include <string>
#include <string_view>

namespace kxudm::query::dialect {

// Patterns with "*" and "?", letters as they are.
inline constexpr const char* GLOB = " GLOB ";
// SQLite's patterns know "[", too, which is no wildcard in a query.
[[nodiscard]] std::string GlobOf(std::string_view pattern);

// The most values that one statement may have, with room for those of the listing around it.
inline constexpr std::size_t MAX_VALUES = 32000;
// The most SELECTs in one UNION, with room to spare.
inline constexpr std::size_t MAX_UNION = 200;
// Parentheses inside of each other before a part is moved out into a WITH clause: the database's
// parser keeps a stack of 100 symbols. A chain of ANDs is a tree as deep as it is long, and trees
// may be 1000 deep: longer chains go into groups.
inline constexpr std::size_t MAX_NESTING = 12;
inline constexpr std::size_t MAX_CHAIN = 32;

// The value of one stored attribute as the one who asks sees it: that of his working revision goes
// before the published one, and NULL hides it. Between the parts stand a predicate over h.value
// and the attribute's name.
inline constexpr const char* STORED_SELECT = "(SELECT ";
inline constexpr const char* STORED_FROM =
    " FROM head_attribute h WHERE h.entity = e.id AND h.name = ";
inline constexpr const char* STORED_SEEN =
    " AND h.working <= (e.lock_user IS ?1 AND e.lock_workspace IS ?2)"
    " ORDER BY h.working DESC LIMIT 1)";

// The definition of an entity, tested without its index: other conditions find the entity.
inline constexpr const char* DEFINITION = "+e.definition";
inline constexpr const char* REVISION = "(r.id & 16777215)";

// Candidates: entities among which all hits are, working revisions of everybody included. To be
// completed with a condition on h.value, c.name, c.uid and so on.
inline constexpr const char* STORED_CANDIDATES =
    "SELECT h.entity FROM head_attribute h WHERE h.name = ";
inline constexpr const char* ENTITY_CANDIDATES = "SELECT c.id FROM entity c WHERE ";

// An expression for a system attribute that is not stored with the others, from the same facts as
// the session computes it from; null if the attribute is stored.
struct Computed {
    std::string_view attribute;
    const char* expression;
    bool number = false;  // yields numbers, else texts
    bool costly = false;
};
[[nodiscard]] const Computed* FindComputed(std::string_view attribute);

}  // namespace kxudm::query::dialect
