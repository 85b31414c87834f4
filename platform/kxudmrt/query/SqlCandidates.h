// Which index finds the entities among which all hits of a query are.
//
// Layer: query, inside.
#pragma once

#include <optional>
#include <vector>

#include "query/SqlFragment.h"
#include "query/SqlOperand.h"

namespace kxudm::query {

// SELECTs that together yield, as ids, every entity that may be a hit.
struct Candidates {
    // Cheap ones first. To go through all values of an attribute, in the index alone, costs less
    // than to look at each entity of a definition, of which there may be as many.
    enum class Rank { Uid, Equal, Narrow, HalfOpen, WholeAttribute, Definition };

    Rank rank = Rank::Definition;
    std::vector<SqlFragment> selects = {};
};

// Of the whole tree; nothing where every entity must be looked at. `operands` belong to the
// tree's comparisons.
[[nodiscard]] std::optional<Candidates> CandidatesOf(const Tree& tree,
                                                     const std::vector<Operand>& operands,
                                                     Letters letters);

}  // namespace kxudm::query
