#include "query/SqlPredicate.h"

#include <algorithm>

#include "query/Pattern.h"
#include "query/SqlDialect.h"
#include "sql/Fold.h"

namespace kxudm::query {

namespace {

// Texts whose folded form stands beside them where it is another one.
const char* KeptFolded(const std::string& expression) {
    if (expression == "h.value") {
        return "coalesce(h.folded, h.value)";
    }
    return expression == "e.name" ? "coalesce(e.name_folded, e.name)" : nullptr;
}

std::string Folded(const std::string& expression) {
    const char* const kept = KeptFolded(expression);
    return kept != nullptr ? kept : std::string(sql::FOLD_FUNCTION) + "(" + expression + ")";
}

const char* SqlSymbol(Operator op) {
    switch (op) {
        case Operator::Less:
            return " < ";
        case Operator::LessOrEqual:
            return " <= ";
        case Operator::Greater:
            return " > ";
        default:
            return " >= ";
    }
}

bool IsUpperBound(Operator op) {
    return op == Operator::Less || op == Operator::LessOrEqual;
}

template <typename Values>
SqlFragment EqualToAny(const std::string& expression, const Values& values) {
    SqlFragment sql;
    sql.Add(expression);
    return values.size() == 1 ? std::move(sql.Add(" = ").Bind(values.front()))
                              : std::move(sql.Add(" IN ").BindList(values));
}

// The literal begin becomes a range, which an index serves, or which is compared faster than a
// pattern; not where each text has to be folded first.
SqlFragment Like(const Condition& condition, const std::string& expression) {
    const Pattern pattern(condition.values.front().text);
    const std::string after = AfterPrefix(pattern.Prefix());
    const bool isFolded = condition.letters == Letters::Folded;
    const bool range =
        !pattern.Prefix().empty() && (!isFolded || KeptFolded(expression) != nullptr);
    const std::string compared = isFolded ? Folded(expression) : expression;
    SqlFragment sql;
    if (!range) {
        sql.Add(expression).Add(" >= ''");
    } else {
        sql.Add(compared).Add(" >= ").Bind(std::string(pattern.Prefix()));
        if (!after.empty()) {
            sql.Add(" AND ").Add(compared).Add(" < ").Bind(after);
        }
    }
    const bool done =
        pattern.IsPrefixOnly() && (pattern.Prefix().empty() || (range && !after.empty()));
    if (!done) {
        sql.Add(" AND ").Add(compared).Add(dialect::GLOB);
        sql.Bind(dialect::GlobOf(pattern.Text()));
    }
    return sql;
}

}  // namespace

Condition::Condition(const Comparison& comparison, Letters rule)
    : op(comparison.op == Operator::NotEqual ? Operator::Equal : comparison.op),
      values(comparison.values),
      letters(rule) {
    if (letters == Letters::Folded) {
        for (Literal& value : values) {
            value.text = sql::Fold(value.text);
        }
    }
}

bool Condition::TakesMissing() const {
    return (op == Operator::Equal || op == Operator::In) &&
           std::any_of(values.begin(), values.end(), [](const Literal& value) {
               return value.text.empty();
           });
}

std::optional<SqlFragment> NumberBranch(const Condition& condition,
                                        const std::string& expression,
                                        Guard guard) {
    std::vector<Number> numbers;
    for (const Literal& value : condition.values) {
        if (value.number) {
            numbers.push_back(*value.number);
        }
    }
    if (numbers.empty() || condition.op == Operator::Like) {
        return std::nullopt;
    }
    if (condition.op == Operator::Equal || condition.op == Operator::In) {
        return EqualToAny(expression, numbers);
    }
    SqlFragment sql;
    sql.Add(expression).Add(SqlSymbol(condition.op)).Bind(numbers.front());
    if (!IsUpperBound(condition.op) && guard == Guard::Own) {
        sql.Add(" AND ").Add(expression).Add(" < ''");
    }
    return sql;
}

SqlFragment TextBranch(const Condition& condition, const std::string& expression, Guard guard) {
    if (condition.op == Operator::Like) {
        return Like(condition, expression);
    }
    const std::string compared =
        condition.letters == Letters::Folded ? Folded(expression) : expression;
    if (condition.op == Operator::Equal || condition.op == Operator::In) {
        std::vector<std::string> texts;
        for (const Literal& value : condition.values) {
            texts.push_back(value.text);
        }
        return EqualToAny(compared, texts);
    }
    SqlFragment sql;
    if (IsUpperBound(condition.op) && guard == Guard::Own) {
        sql.Add(expression).Add(" >= '' AND ");
    }
    sql.Add(compared).Add(SqlSymbol(condition.op)).Bind(condition.values.front().text);
    return sql;
}

SqlFragment Join(std::vector<SqlFragment>&& fragments, std::string_view between) {
    SqlFragment sql;
    for (SqlFragment& fragment : fragments) {
        sql.Add(sql.text.empty() ? "" : between).Add(std::move(fragment));
    }
    return sql;
}

}  // namespace kxudm::query
