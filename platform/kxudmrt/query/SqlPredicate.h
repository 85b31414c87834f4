// One comparison as SQL over an expression: which values meet it.
//
// Layer: query, inside. A column of attribute values holds numbers and texts, and SQL orders all
// numbers before all texts. So each comparison has two branches, one for each kind, which exclude
// each other; a value of the query that is no number has no branch for numbers. NULL gives NULL.
#pragma once

#include <optional>
#include <string>

#include "query/Evaluator.h"
#include "query/SqlFragment.h"

namespace kxudm::query {

// A comparison made ready for SQL: texts folded if letters are, "!=" turned into "==".
struct Condition {
    Operator op = Operator::Equal;
    std::vector<Literal> values = {};
    Letters letters = Letters::Exact;

    Condition(const Comparison& comparison, Letters letters);

    // An attribute without a value meets it.
    [[nodiscard]] bool TakesMissing() const;
};

// Whether a branch keeps values of the other kind out, or other conditions beside it do: an index
// takes the first of two bounds, and the one between the kinds is the wide one.
enum class Guard { Own, Others };

// `expression` is a constant SQL text without side effects.
[[nodiscard]] std::optional<SqlFragment> NumberBranch(const Condition& condition,
                                                      const std::string& expression,
                                                      Guard guard = Guard::Own);
[[nodiscard]] SqlFragment TextBranch(const Condition& condition,
                                     const std::string& expression,
                                     Guard guard = Guard::Own);

}  // namespace kxudm::query
