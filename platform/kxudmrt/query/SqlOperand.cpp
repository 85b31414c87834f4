#include "query/SqlOperand.h"

#include <kxudm/UDMException.h>

#include <algorithm>

#include "query/SqlDialect.h"

namespace kxudm::query {

namespace {

using catalogue::ContentDefinition;

constexpr std::string_view DISPLAY_NAME = "displayname";
constexpr std::string_view NAME = "name";
constexpr std::string_view UID = "smd_id";
constexpr std::string_view DEFINITION_NAME = "smd_ctype";
constexpr std::string_view DEFINITION_DISPLAY_NAME = "smd_ctypedn";

// An entity of which nothing is known but its definition.
class DefinitionView final : public EntityView {
  public:
    explicit DefinitionView(const ContentDefinition& definition) : _definition(definition) {}

    // Only asked for attributes.
    const std::vector<std::string>& Definitions() const override {
        static const std::vector<std::string> none(1);
        return none;
    }
    std::string BaseUid() const override { return {}; }
    int Revision() const override { return 0; }
    std::string Name() const override { return {}; }
    kxVariant Attribute(const std::string& name) const override {
        return name == DEFINITION_NAME ? _definition.Name() : _definition.DisplayName();
    }

  private:
    const ContentDefinition& _definition;
};

// Type and class, as Evaluator takes them, without the definitions' names in a row.
class LineFilter {
  public:
    explicit LineFilter(const Comparison& comparison)
        : _positive(comparison), _negative(comparison.op == Operator::NotEqual) {
        _positive.op = _negative ? Operator::Equal : comparison.op;
    }

    [[nodiscard]] bool Matches(const ContentDefinition& definition) const {
        const ContentDefinition* each = &definition;
        bool met = TextHolds(_positive, each->Name());
        while (!met && _positive.field == Field::Class && each->Base() != nullptr) {
            each = each->Base();
            met = TextHolds(_positive, each->Name());
        }
        return met != _negative;
    }

  private:
    Comparison _positive;
    bool _negative;
};

bool Declares(const ContentDefinition& definition, std::string_view attribute) {
    const auto& own = definition.Declaration().attributes;
    return std::any_of(
        own.begin(), own.end(), [&](const auto& each) { return each.name == attribute; });
}

bool IsOfDefinition(const Comparison& comparison) {
    return comparison.field == Field::Type || comparison.field == Field::Class ||
           (comparison.field == Field::Attribute &&
            (comparison.attribute == DEFINITION_NAME ||
             comparison.attribute == DEFINITION_DISPLAY_NAME));
}

Operand Column(const char* expression,
               Letters letters,
               const char* indexed = nullptr,
               const char* indexedFolded = nullptr) {
    const bool served = letters == Letters::Exact || indexedFolded != nullptr;
    return {.kind = Operand::Kind::Expression,
            .expression = expression,
            .letters = letters,
            .indexed = served ? indexed : nullptr,
            .indexedFolded = indexedFolded};
}

}  // namespace

Operands::Operands(const catalogue::Catalogue& catalogue, Letters letters)
    : _catalogue(catalogue), _letters(letters) {}

Operand Operands::Of(const Comparison& comparison) const {
    RequireKnown(comparison);
    if (IsOfDefinition(comparison)) {
        return {.kind = Operand::Kind::Definition, .definitions = DefinitionsThatMeet(comparison)};
    }
    if (comparison.field == Field::Id) {
        return Column("e.uid", Letters::Exact, "c.uid");
    }
    if (comparison.field == Field::Name || comparison.attribute == NAME) {
        return Column("e.name", _letters, "c.name", "c.name_folded");
    }
    if (comparison.attribute == UID) {
        return Column("e.uid", _letters, "c.uid");
    }
    if (const dialect::Computed* computed = dialect::FindComputed(comparison.attribute)) {
        Operand operand = Column(computed->expression, _letters);
        operand.numbers = computed->number;
        if (computed->costly) {
            operand.computedOnce = computed->expression;
            operand.expression = "x.value";
        }
        return operand;
    }
    return {.kind = Operand::Kind::Stored, .expression = "h.value", .letters = _letters};
}

void Operands::RequireKnown(const Comparison& comparison) const {
    const std::string& name = comparison.attribute;
    if (comparison.field != Field::Attribute || name == NAME || name == DISPLAY_NAME) {
        return;
    }
    const auto& definitions = _catalogue.Definitions();
    if (std::none_of(definitions.begin(), definitions.end(), [&](const auto& definition) {
            return Declares(*definition, name);
        })) {
        throw UDMException("The query asks at character " + std::to_string(comparison.position) +
                           " for the attribute \"" + catalogue::Printable(name) +
                           "\", which no content definition has; use one that is there");
    }
}

std::vector<std::string> Operands::DefinitionsThatMeet(const Comparison& comparison) const {
    std::vector<std::string> names;
    const auto collect = [&](const auto& matches) {
        for (const auto& definition : _catalogue.Definitions()) {
            if (matches(*definition)) {
                names.push_back(definition->Name());
            }
        }
    };
    if (comparison.field == Field::Attribute) {
        const Evaluator evaluator(Tree({Node{}}, {comparison}), _letters);
        collect(
            [&](const auto& definition) { return evaluator.Matches(DefinitionView(definition)); });
    } else {
        const LineFilter filter(comparison);
        collect([&](const auto& definition) { return filter.Matches(definition); });
    }
    return names;
}

std::vector<std::string> Operands::ExcludedDefinitions() const {
    std::vector<std::string> names;
    for (const auto& definition : _catalogue.Definitions()) {
        if (definition->IsExcludedFromSearch()) {
            names.push_back(definition->Name());
        }
    }
    return names;
}

}  // namespace kxudm::query
