#include "query/SqlPredicate.h"

#include <algorithm>

#include "query/Pattern.h"
#include "query/SqlDialect.h"
#include "sql/Fold.h"

namespace kxudm::query {

namespace {

std::string Folded(const std::string& expression) {
    return std::string(sql::FOLD_FUNCTION) + "(" + expression + ")";
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

// Where letters count as they are, the literal begin becomes a range, which an index serves.
SqlFragment Like(const Condition& condition, const std::string& expression) {
    const Pattern pattern(condition.values.front().text);
    const std::string after = AfterPrefix(pattern.Prefix());
    const bool range = condition.letters == Letters::Exact && !pattern.Prefix().empty();
    SqlFragment sql;
    if (!range) {
        sql.Add(expression).Add(" >= ''");
    } else {
        sql.Add(expression).Add(" >= ").Bind(std::string(pattern.Prefix()));
        if (!after.empty()) {
            sql.Add(" AND ").Add(expression).Add(" < ").Bind(after);
        }
    }
    const bool done =
        pattern.IsPrefixOnly() && (pattern.Prefix().empty() || (range && !after.empty()));
    if (!done) {
        const bool folded = condition.letters == Letters::Folded;
        sql.Add(" AND ").Add(folded ? Folded(expression) : expression).Add(dialect::GLOB);
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
