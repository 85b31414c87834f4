#include "query/SqlCompiler.h"

#include <kxudm/UDMException.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include "query/SqlCandidates.h"
#include "query/SqlDialect.h"
#include "query/SqlOperand.h"
#include "query/SqlPredicate.h"

namespace kxudm::query {

namespace {

constexpr const char* NEVER = "FALSE";
constexpr const char* ALWAYS = "TRUE";

// Which values meet the comparison; never NULL for a value that is there.
SqlFragment Predicate(const Condition& condition, const Operand& operand) {
    std::vector<SqlFragment> branches;
    const bool stored = operand.kind == Operand::Kind::Stored;
    if (stored || operand.numbers) {
        if (auto numbers = NumberBranch(condition, operand.expression)) {
            branches.push_back(std::move(*numbers));
        }
    }
    if (stored || !operand.numbers) {
        branches.push_back(TextBranch(condition, operand.expression));
    }
    if (branches.empty()) {
        // False, or NULL for NULL.
        branches.push_back(
            SqlFragment().Add(operand.expression).Add(" <> ").Add(operand.expression));
    }
    return Join(std::move(branches), " OR ");
}

// NULL, an attribute without a value, becomes yes or no here: so "!" is the plain opposite.
SqlFragment OfValue(const Comparison& comparison, const Operand& operand) {
    const Condition condition(comparison, operand.letters);
    SqlFragment sql = SqlFragment().Add("coalesce(");
    if (operand.kind == Operand::Kind::Stored) {
        sql.Add(dialect::STORED_SELECT).Add(Predicate(condition, operand));
        sql.Add(dialect::STORED_FROM).Bind(comparison.attribute).Add(dialect::STORED_SEEN);
    } else if (operand.computedOnce != nullptr) {
        sql.Add("(SELECT ").Add(Predicate(condition, operand)).Add(" FROM (SELECT ");
        sql.Add(operand.computedOnce).Add(" AS value LIMIT 1) x)");
    } else {
        sql.Add(Predicate(condition, operand));
    }
    return std::move(sql.Add(", ").Add(condition.TakesMissing() ? ALWAYS : NEVER).Add(")"));
}

SqlFragment OfDefinition(const std::vector<std::string>& definitions) {
    if (definitions.empty()) {
        return SqlFragment().Add(NEVER);
    }
    return std::move(SqlFragment().Add(dialect::DEFINITION).Add(" IN ").BindList(definitions));
}

// A UID with a revision is met only while that is the newest one.
SqlFragment OfUids(const Comparison& comparison, const Operand& operand) {
    std::vector<SqlFragment> each;
    for (const Literal& value : comparison.values) {
        std::string_view base;
        int revision = 0;
        SqlFragment sql = SqlFragment().Add("+").Add(operand.expression).Add(" = ");
        if (SplitRevision(value.text, base, revision)) {
            sql.Bind(std::string(base)).Add(" AND ").Add(dialect::REVISION).Add(" = ");
            sql.Bind(Number(std::int64_t{revision}));
        } else {
            sql.Bind(value.text);
        }
        each.push_back(std::move(sql));
    }
    return Join(std::move(each), " OR ");
}

bool IsUidEquality(const Comparison& comparison) {
    return comparison.field == Field::Id &&
           (comparison.op == Operator::Equal || comparison.op == Operator::NotEqual ||
            comparison.op == Operator::In);
}

SqlFragment OfComparison(const Comparison& comparison, const Operand& operand) {
    if (operand.kind == Operand::Kind::Definition) {
        return OfDefinition(operand.definitions);
    }
    SqlFragment sql =
        IsUidEquality(comparison)
            ? std::move(SqlFragment().Add("(").Add(OfUids(comparison, operand)).Add(")"))
            : OfValue(comparison, operand);
    return comparison.op == Operator::NotEqual
               ? std::move(SqlFragment().Add("NOT ").Add(std::move(sql)))
               : std::move(sql);
}

// The filter of a whole tree, one expression that is true or false.
class Filter {
  public:
    Filter(const Tree& tree, const std::vector<Operand>& operands)
        : _tree(tree), _operands(operands) {}

    SqlFragment Build() {
        for (const Node& node : _tree.Nodes()) {
            _parts.push_back(OfNode(node));
        }
        SqlFragment root = std::move(_parts.back().sql);
        if (_moved.empty()) {
            return root;
        }
        SqlFragment sql = SqlFragment().Add("(WITH ").Add(Join(std::move(_moved), ", "));
        return std::move(sql.Add(" SELECT ").Add(std::move(root)).Add(")"));
    }

  private:
    struct Part {
        SqlFragment sql;
        std::size_t nesting = 0;
    };

    Part OfNode(const Node& node) {
        switch (node.kind) {
            case Node::Kind::And:
                return Chain(node, " AND ");
            case Node::Kind::Or:
                return Chain(node, " OR ");
            case Node::Kind::Not: {
                Part operand = Nested(node.children.front());
                operand.sql = std::move(SqlFragment().Add("NOT ").Add(std::move(operand.sql)));
                return operand;
            }
            case Node::Kind::Compare:
                break;
        }
        return {OfComparison(_tree.Comparisons()[node.comparison], _operands[node.comparison])};
    }

    // A child in parentheses; what is nested too deep is named in the WITH clause instead.
    Part Nested(std::size_t child) {
        Part part = std::move(_parts[child]);
        if (part.nesting >= dialect::MAX_NESTING) {
            const std::string name = "q" + std::to_string(_moved.size());
            _moved.push_back(std::move(SqlFragment()
                                           .Add(name)
                                           .Add("(met) AS (SELECT ")
                                           .Add(std::move(part.sql))
                                           .Add(")")));
            return {SqlFragment().Add("(SELECT met FROM ").Add(name).Add(")"), 1};
        }
        part.sql = std::move(SqlFragment().Add("(").Add(std::move(part.sql)).Add(")"));
        ++part.nesting;
        return part;
    }

    Part Chain(const Node& node, const char* between) {
        std::size_t nesting = 0;
        std::vector<SqlFragment> operands;
        for (const std::size_t child : node.children) {
            Part part = Nested(child);
            nesting = std::max(nesting, part.nesting);
            operands.push_back(std::move(part.sql));
        }
        while (operands.size() > dialect::MAX_CHAIN) {
            operands = Grouped(std::move(operands), between);
            ++nesting;
        }
        return {Join(std::move(operands), between), nesting};
    }

    static std::vector<SqlFragment> Grouped(std::vector<SqlFragment>&& operands,
                                            const char* between) {
        std::vector<SqlFragment> groups;
        for (std::size_t i = 0; i < operands.size(); i += dialect::MAX_CHAIN) {
            const std::size_t end = std::min(operands.size(), i + dialect::MAX_CHAIN);
            std::vector<SqlFragment> group(
                std::make_move_iterator(operands.begin() + static_cast<std::ptrdiff_t>(i)),
                std::make_move_iterator(operands.begin() + static_cast<std::ptrdiff_t>(end)));
            groups.push_back(
                std::move(SqlFragment().Add("(").Add(Join(std::move(group), between)).Add(")")));
        }
        return groups;
    }

    const Tree& _tree;
    const std::vector<Operand>& _operands;
    std::vector<Part> _parts;
    std::vector<SqlFragment> _moved;
};

// Whether an attribute that meets the comparison stands in head_attribute, with that value.
bool IsOfHead(const Comparison& comparison, const Operand& operand) {
    return operand.kind == Operand::Kind::Stored && comparison.op != Operator::NotEqual &&
           !Condition(comparison, operand.letters).TakesMissing();
}

// A comparison that every hit must meet, if there is one of a head attribute; else null.
const Comparison* HeadOf(const Tree& tree, const std::vector<Operand>& operands) {
    if (tree.IsEmpty()) {
        return nullptr;
    }
    const auto comparisonOf = [&](const Node& node) -> const Comparison* {
        const bool fits = node.kind == Node::Kind::Compare &&
                          IsOfHead(tree.Comparisons()[node.comparison], operands[node.comparison]);
        return fits ? &tree.Comparisons()[node.comparison] : nullptr;
    };
    const Node& root = tree.Nodes().back();
    if (root.kind != Node::Kind::And) {
        return comparisonOf(root);
    }
    const Comparison* best = nullptr;
    for (const std::size_t child : root.children) {
        const Comparison* each = comparisonOf(tree.Nodes()[child]);
        // Equality lets the fewest pass.
        if (each != nullptr &&
            (best == nullptr || (each->op == Operator::Equal && best->op != Operator::Equal))) {
            best = each;
        }
    }
    return best;
}

SqlFragment OfHeads(const Tree& tree, const std::vector<Operand>& operands) {
    const Comparison* const head = HeadOf(tree, operands);
    if (head == nullptr) {
        return {};
    }
    Operand operand = operands[static_cast<std::size_t>(head - tree.Comparisons().data())];
    // The entity's few values are looked through, not the many values of the attribute.
    operand.expression = "+h.value";
    SqlFragment sql = SqlFragment().Add("h.name = ").Bind(head->attribute).Add(" AND (");
    return std::move(sql.Add(Predicate(Condition(*head, operand.letters), operand)).Add(")"));
}

}  // namespace

store::Condition Compile(const Tree& tree,
                         const catalogue::Catalogue& catalogue,
                         const CompileOptions& options) {
    Operands maker(catalogue, options.letters);
    std::vector<Operand> operands;
    for (const Comparison& comparison : tree.Comparisons()) {
        operands.push_back(maker.Of(comparison));
    }
    SqlFragment heads;
    std::vector<SqlFragment> parts;
    if (options.use == CompileOptions::Use::Search) {
        if (auto candidates = CandidatesOf(tree, operands, options.letters)) {
            parts.push_back(std::move(SqlFragment()
                                          .Add("e.id IN (")
                                          .Add(Join(std::move(candidates->selects), " UNION ALL "))
                                          .Add(")")));
        }
    } else {
        heads = OfHeads(tree, operands);
    }
    const auto excluded = maker.ExcludedDefinitions();
    if (!options.withExcluded && !excluded.empty()) {
        parts.push_back(SqlFragment().Add("NOT ").Add(OfDefinition(excluded)));
    }
    if (!tree.IsEmpty()) {
        parts.push_back(
            std::move(SqlFragment().Add("(").Add(Filter(tree, operands).Build()).Add(")")));
    }
    SqlFragment sql = Join(std::move(parts), " AND ");
    std::vector<sql::Value> values = std::move(heads.values);
    std::move(sql.values.begin(), sql.values.end(), std::back_inserter(values));
    if (values.size() > dialect::MAX_VALUES) {
        throw UDMException("The query needs " + std::to_string(values.size()) +
                           " values in the database, where " + std::to_string(dialect::MAX_VALUES) +
                           " are the most; name fewer definitions or use fewer comparisons");
    }
    return {std::move(sql.text), std::move(values), std::move(heads.text)};
}

}  // namespace kxudm::query
