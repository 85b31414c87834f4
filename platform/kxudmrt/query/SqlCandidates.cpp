#include "query/SqlCandidates.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "query/Pattern.h"
#include "query/SqlDialect.h"
#include "query/SqlPredicate.h"

namespace kxudm::query {

namespace {

using Rank = Candidates::Rank;
using MaybeCandidates = std::optional<Candidates>;

bool IsBound(Operator op) {
    return op >= Operator::Less && op <= Operator::GreaterOrEqual;
}

bool IsLowerBound(Operator op) {
    return op == Operator::Greater || op == Operator::GreaterOrEqual;
}

bool HasPrefix(const Comparison& comparison) {
    return comparison.op == Operator::Like &&
           !Pattern(comparison.values.front().text).Prefix().empty();
}

Rank RankOf(const Comparison& comparison) {
    if (comparison.op == Operator::Equal || comparison.op == Operator::In) {
        return Rank::Equal;
    }
    if (comparison.op == Operator::Like) {
        return HasPrefix(comparison) ? Rank::Narrow : Rank::WholeAttribute;
    }
    return Rank::HalfOpen;
}

// A text that is its own folded form is kept once, any other one twice: the condition is looked for
// in both columns, letters as they are there.
std::vector<std::string> ColumnsFor(Letters letters, const char* exact, const char* folded) {
    return letters == Letters::Exact ? std::vector<std::string>{exact}
                                     : std::vector<std::string>{exact, folded};
}

Condition Ready(Condition condition) {
    condition.letters = Letters::Exact;
    return condition;
}

// Conditions on one stored attribute, all of which the value must meet. Several are bounds at both
// ends, of which each keeps out what the other would have to.
Candidates StoredCandidates(const std::string& attribute,
                            const std::vector<Condition>& conditions,
                            Rank rank) {
    const Guard guard = conditions.size() == 1 ? Guard::Own : Guard::Others;
    Candidates candidates{.rank = rank};
    SqlFragment numbers = SqlFragment().Add(dialect::STORED_CANDIDATES).Bind(attribute);
    bool hasNumbers = true;
    for (const Condition& condition : conditions) {
        if (auto branch = NumberBranch(condition, "h.value", guard); branch && hasNumbers) {
            numbers.Add(" AND ").Add(std::move(*branch));
        } else {
            hasNumbers = false;
        }
    }
    if (hasNumbers) {
        candidates.selects.push_back(std::move(numbers));
    }
    for (const std::string& column :
         ColumnsFor(conditions.front().letters, "h.value", "h.folded")) {
        SqlFragment texts = SqlFragment().Add(dialect::STORED_CANDIDATES).Bind(attribute);
        for (const Condition& condition : conditions) {
            texts.Add(" AND ").Add(TextBranch(Ready(condition), column, guard));
        }
        candidates.selects.push_back(std::move(texts));
    }
    return candidates;
}

MaybeCandidates OfDefinition(const Operand& operand) {
    if (operand.definitions.empty()) {
        return std::nullopt;
    }
    SqlFragment select = SqlFragment().Add(dialect::ENTITY_CANDIDATES).Add("c.definition IN ");
    select.BindList(operand.definitions);
    return Candidates{.rank = Rank::Definition, .selects = {std::move(select)}};
}

// UIDs may be given with a revision, of which the candidates know nothing.
Comparison WithoutRevisions(Comparison comparison) {
    for (Literal& value : comparison.values) {
        std::string_view base;
        int revision = 0;
        if (SplitRevision(value.text, base, revision)) {
            value.text = std::string(base);
        }
    }
    return comparison;
}

MaybeCandidates OfColumn(const Comparison& comparison, const Operand& operand) {
    if (operand.indexed == nullptr || RankOf(comparison) == Rank::WholeAttribute) {
        return std::nullopt;
    }
    const bool uid = comparison.field == Field::Id && RankOf(comparison) == Rank::Equal;
    const Condition condition(uid ? WithoutRevisions(comparison) : comparison, operand.letters);
    Candidates candidates{.rank = uid ? Rank::Uid : RankOf(comparison)};
    for (const std::string& column :
         ColumnsFor(operand.letters, operand.indexed, operand.indexedFolded)) {
        SqlFragment select = SqlFragment().Add(dialect::ENTITY_CANDIDATES);
        candidates.selects.push_back(std::move(select.Add(TextBranch(Ready(condition), column))));
    }
    return candidates;
}

MaybeCandidates OfComparison(const Comparison& comparison, const Operand& operand) {
    if (operand.kind == Operand::Kind::Definition) {
        return OfDefinition(operand);
    }
    if (comparison.op == Operator::NotEqual) {
        return std::nullopt;
    }
    if (operand.kind == Operand::Kind::Expression) {
        return OfColumn(comparison, operand);
    }
    const Condition condition(comparison, operand.letters);
    if (condition.TakesMissing()) {
        return std::nullopt;
    }
    return StoredCandidates(comparison.attribute, {condition}, RankOf(comparison));
}

class Builder {
  public:
    Builder(const Tree& tree, const std::vector<Operand>& operands, Letters letters)
        : _tree(tree), _operands(operands), _letters(letters) {}

    MaybeCandidates Build() {
        for (const Node& node : _tree.Nodes()) {
            _found.push_back(OfNode(node));
        }
        return _found.empty() ? std::nullopt : std::move(_found.back());
    }

  private:
    MaybeCandidates OfNode(const Node& node) {
        switch (node.kind) {
            case Node::Kind::And:
                return OfAll(node);
            case Node::Kind::Or:
                return OfAny(node);
            case Node::Kind::Not:
                return std::nullopt;
            case Node::Kind::Compare:
                break;
        }
        return OfComparison(_tree.Comparisons()[node.comparison], _operands[node.comparison]);
    }

    // The best of what each hit must meet.
    MaybeCandidates OfAll(const Node& node) {
        MaybeCandidates best;
        const auto consider = [&](MaybeCandidates&& other) {
            if (other && (!best || other->rank < best->rank)) {
                best = std::move(other);
            }
        };
        for (const std::size_t child : node.children) {
            consider(OfRange(node, child));
            consider(std::move(_found[child]));
        }
        return best;
    }

    MaybeCandidates OfAny(const Node& node) {
        Candidates all{.rank = Rank::Uid};
        for (const std::size_t child : node.children) {
            MaybeCandidates& found = _found[child];
            if (!found || all.selects.size() + found->selects.size() > dialect::MAX_UNION) {
                return std::nullopt;
            }
            all.rank = std::max(all.rank, found->rank);
            std::move(
                found->selects.begin(), found->selects.end(), std::back_inserter(all.selects));
        }
        return all;
    }

    // A stored attribute with bounds at both ends, told by the first comparison that bounds it.
    MaybeCandidates OfRange(const Node& all, std::size_t first) const {
        const Comparison* begin = Bound(first);
        if (begin == nullptr) {
            return std::nullopt;
        }
        std::vector<Condition> conditions;
        bool lower = false;
        bool upper = false;
        for (const std::size_t child : all.children) {
            const Comparison* bound = Bound(child);
            if (bound == nullptr || bound->attribute != begin->attribute) {
                continue;
            }
            if (conditions.empty() && child != first) {
                return std::nullopt;
            }
            conditions.emplace_back(*bound, _letters);
            (IsLowerBound(bound->op) ? lower : upper) = true;
        }
        if (!lower || !upper) {
            return std::nullopt;
        }
        return StoredCandidates(begin->attribute, conditions, Rank::Narrow);
    }

    // The comparison of a node, if it gives a stored attribute a bound; else null.
    [[nodiscard]] const Comparison* Bound(std::size_t place) const {
        const Node& node = _tree.Nodes()[place];
        if (node.kind != Node::Kind::Compare) {
            return nullptr;
        }
        const Comparison& comparison = _tree.Comparisons()[node.comparison];
        const bool stored = _operands[node.comparison].kind == Operand::Kind::Stored;
        return stored && IsBound(comparison.op) ? &comparison : nullptr;
    }

    const Tree& _tree;
    const std::vector<Operand>& _operands;
    Letters _letters;
    std::vector<MaybeCandidates> _found;
};

}  // namespace

std::optional<Candidates> CandidatesOf(const Tree& tree,
                                       const std::vector<Operand>& operands,
                                       Letters letters) {
    return Builder(tree, operands, letters).Build();
}

}  // namespace kxudm::query
