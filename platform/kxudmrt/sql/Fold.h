// Texts without their case and accents, for queries that ignore both.
//
// Layer: sql. Each backend offers the same as the SQL function named here, so that a query finds in
// the database what Fold finds in memory.
#ifndef KXUDMRT_SQL_FOLD_H
#define KXUDMRT_SQL_FOLD_H

#include <string>
#include <string_view>

namespace kxudm::sql {

// In SQL: texts folded, other values as they are. Deterministic.
constexpr const char* FOLD_FUNCTION = "kxudm_fold";

// Unicode's full case folding ("Straße" is "strasse"), without the accents that combine with Latin,
// Greek and Cyrillic letters (U+0300 to U+036F), in composed form. Marks of other scripts, which
// change the letter, stay. Folding a second time changes nothing. Bytes that are no UTF-8 are left
// as they are, the whole text with them.
[[nodiscard]] std::string Fold(std::string_view text);

}  // namespace kxudm::sql

#endif
