#include "query/Evaluator.h"

#include <algorithm>
#include <charconv>
#include <compare>
#include <utility>

#include "sql/Fold.h"

namespace kxudm::query {

namespace {

bool InOrder(Operator op, std::weak_ordering order) {
    switch (op) {
        case Operator::Less:
            return std::is_lt(order);
        case Operator::LessOrEqual:
            return std::is_lteq(order);
        case Operator::Greater:
            return std::is_gt(order);
        case Operator::GreaterOrEqual:
            return std::is_gteq(order);
        default:
            return std::is_eq(order);
    }
}

bool TextHoldsFor(Operator op, std::string_view text, std::string_view value) {
    switch (op) {
        case Operator::NotEqual:
            return text != value;
        case Operator::Like:
            return Pattern(value).Matches(text);
        default:
            return InOrder(op, text <=> value);
    }
}

// Numbers of variants compare exactly, whole ones with floating ones too.
bool NumberHolds(Operator op, const kxVariant& number, const Literal& value) {
    if (!value.number) {
        return false;
    }
    const kxVariant other = std::visit([](auto each) { return kxVariant(each); }, *value.number);
    return InOrder(op, number <=> other);
}

bool UidHolds(const Comparison& comparison, const EntityView& entity) {
    const std::string uid = entity.BaseUid();
    const bool met =
        std::any_of(comparison.values.begin(), comparison.values.end(), [&](const Literal& value) {
            std::string_view base;
            int revision = 0;
            const bool exact = comparison.op == Operator::Equal ||
                               comparison.op == Operator::NotEqual || comparison.op == Operator::In;
            if (exact && SplitRevision(value.text, base, revision)) {
                return uid == base && entity.Revision() == revision;
            }
            const Operator op =
                comparison.op == Operator::NotEqual ? Operator::Equal : comparison.op;
            return TextHoldsFor(op, uid, value.text);
        });
    return met != (comparison.op == Operator::NotEqual);
}

// "!=" is the opposite of "==": no definition of the class bears the name.
bool ClassHolds(const Comparison& comparison, const std::vector<std::string>& definitions) {
    const bool negative = comparison.op == Operator::NotEqual;
    const Operator op = negative ? Operator::Equal : comparison.op;
    const bool met = std::any_of(definitions.begin(), definitions.end(), [&](const auto& name) {
        return std::any_of(
            comparison.values.begin(), comparison.values.end(), [&](const Literal& value) {
                return TextHoldsFor(op, name, value.text);
            });
    });
    return met != negative;
}

}  // namespace

bool TextHolds(const Comparison& comparison, std::string_view text) {
    return std::any_of(comparison.values.begin(), comparison.values.end(), [&](const auto& value) {
        return TextHoldsFor(comparison.op, text, value.text);
    });
}

bool SplitRevision(std::string_view uid, std::string_view& base, int& revision) {
    const std::size_t colon = uid.rfind(':');
    if (colon == std::string_view::npos) {
        return false;
    }
    base = uid.substr(0, colon);
    const std::string_view number = uid.substr(colon + 1);
    const char* const end = number.data() + number.size();
    const auto [stop, error] = std::from_chars(number.data(), end, revision);
    return error == std::errc() && stop == end && number.front() != '-';
}

Evaluator::Evaluator(Tree tree, Letters letters) : _tree(std::move(tree)), _letters(letters) {
    for (const Comparison& comparison : _tree.Comparisons()) {
        Prepared& prepared = _prepared.emplace_back();
        for (Literal value : comparison.values) {
            value.text = letters == Letters::Folded ? sql::Fold(value.text) : value.text;
            if (comparison.op == Operator::Like) {
                prepared.patterns.emplace_back(value.text);
            }
            prepared.values.push_back(std::move(value));
        }
    }
}

bool Evaluator::Matches(const EntityView& entity) const {
    std::vector<bool> met;
    met.reserve(_tree.Nodes().size());
    for (const Node& node : _tree.Nodes()) {
        const auto isMet = [&](std::size_t child) { return static_cast<bool>(met[child]); };
        switch (node.kind) {
            case Node::Kind::And:
                met.push_back(std::all_of(node.children.begin(), node.children.end(), isMet));
                break;
            case Node::Kind::Or:
                met.push_back(std::any_of(node.children.begin(), node.children.end(), isMet));
                break;
            case Node::Kind::Not:
                met.push_back(!isMet(node.children.front()));
                break;
            case Node::Kind::Compare:
                met.push_back(Holds(node.comparison, entity));
                break;
        }
    }
    return met.empty() || met.back();
}

bool Evaluator::Holds(std::size_t place, const EntityView& entity) const {
    const Comparison& comparison = _tree.Comparisons()[place];
    const Prepared& prepared = _prepared[place];
    switch (comparison.field) {
        case Field::Type:
            return TextHolds(comparison, entity.Definitions().front());
        case Field::Class:
            return ClassHolds(comparison, entity.Definitions());
        case Field::Id:
            return UidHolds(comparison, entity);
        case Field::Name:
            return AttributeHolds(comparison, prepared, kxVariant(entity.Name()));
        case Field::Attribute:
            break;
    }
    return AttributeHolds(comparison, prepared, entity.Attribute(comparison.attribute));
}

// No value equals the empty text, and is neither less nor greater nor like anything.
bool Evaluator::AttributeHolds(const Comparison& comparison,
                               const Prepared& prepared,
                               const kxVariant& value) const {
    const bool negative = comparison.op == Operator::NotEqual;
    const Operator op = negative || comparison.op == Operator::In ? Operator::Equal : comparison.op;
    const kxVariant::Kind kind = value.GetKind();
    if (kind == kxVariant::BOOLEAN) {
        return AttributeHolds(comparison, prepared, kxVariant(value.GetBoolean() ? 1 : 0));
    }
    const bool number =
        kind == kxVariant::INTEGER || kind == kxVariant::FLOAT || kind == kxVariant::DOUBLE;
    kxString text = number ? kxString() : value.GetString();
    if (_letters == Letters::Folded) {
        text = sql::Fold(text);
    }
    const auto holds = [&](const Literal& literal) {
        if (number) {
            return op != Operator::Like && NumberHolds(op, value, literal);
        }
        if (value.IsEmpty()) {
            return op == Operator::Equal && literal.text.empty();
        }
        return op == Operator::Like ? prepared.patterns.front().Matches(text)
                                    : TextHoldsFor(op, text, literal.text);
    };
    return std::any_of(prepared.values.begin(), prepared.values.end(), holds) != negative;
}

}  // namespace kxudm::query
