#include "query/SqlOperand.h"

#include <kxudm/UDMException.h>

#include <algorithm>

#include "query/SqlDialect.h"

namespace kxudm::query {

namespace {

using catalogue::ContentDefinition;
using catalogue::DataType;

constexpr std::string_view DISPLAY_NAME = "displayname";
constexpr std::string_view NAME = "name";
constexpr std::string_view UID = "smd_id";
constexpr std::string_view DEFINITION_NAME = "smd_ctype";
constexpr std::string_view DEFINITION_DISPLAY_NAME = "smd_ctypedn";

// An entity of which nothing is known but its definition.
class DefinitionView final : public EntityView {
  public:
    DefinitionView(const ContentDefinition& definition, const std::vector<std::string>& line)
        : _definition(definition), _line(line) {}

    const std::vector<std::string>& Definitions() const override { return _line; }
    std::string BaseUid() const override { return {}; }
    int Revision() const override { return 0; }
    std::string Name() const override { return {}; }
    kxVariant Attribute(const std::string& name) const override {
        return name == DEFINITION_NAME ? _definition.Name() : _definition.DisplayName();
    }

  private:
    const ContentDefinition& _definition;
    const std::vector<std::string>& _line;
};

bool HoldsNumbers(const catalogue::AttributeDefinition& attribute) {
    const std::optional<DataType> type = catalogue::DataTypeOf(attribute.dataType);
    return type == DataType::Boolean || type == DataType::Double || type == DataType::Integer;
}

bool IsOfDefinition(const Comparison& comparison) {
    return comparison.field == Field::Type || comparison.field == Field::Class ||
           (comparison.field == Field::Attribute &&
            (comparison.attribute == DEFINITION_NAME ||
             comparison.attribute == DEFINITION_DISPLAY_NAME));
}

Operand Column(const char* expression, const char* indexed, Letters letters) {
    return {.kind = Operand::Kind::Expression,
            .expression = expression,
            .numbers = false,
            .letters = letters,
            .indexed = letters == Letters::Exact ? indexed : nullptr};
}

}  // namespace

Operands::Operands(const catalogue::Catalogue& catalogue, Letters letters)
    : _catalogue(catalogue), _letters(letters) {}

Operand Operands::Of(const Comparison& comparison) {
    RequireKnown(comparison);
    if (IsOfDefinition(comparison)) {
        return {.kind = Operand::Kind::Definition, .definitions = DefinitionsThatMeet(comparison)};
    }
    if (comparison.field == Field::Id) {
        return Column("e.uid", "c.uid", Letters::Exact);
    }
    if (comparison.field == Field::Name || comparison.attribute == NAME) {
        return Column("e.name", "c.name", _letters);
    }
    if (comparison.attribute == UID) {
        return Column("e.uid", "c.uid", _letters);
    }
    if (const dialect::Computed* computed = dialect::FindComputed(comparison.attribute)) {
        Operand operand = Column(computed->expression, nullptr, _letters);
        operand.numbers = computed->number;
        operand.texts = !computed->number;
        if (computed->costly) {
            operand.computedOnce = computed->expression;
            operand.expression = "x.value";
        }
        return operand;
    }
    return Stored(comparison.attribute);
}

// Both kinds of value are looked for in any case; the definitions tell which are to be expected.
Operand Operands::Stored(const std::string& attribute) const {
    Operand operand{.expression = "h.value", .letters = _letters};
    operand.numbers = false;
    operand.texts = attribute == DISPLAY_NAME;
    for (const auto& definition : _catalogue.Definitions()) {
        if (const auto* found = definition->FindAttribute(attribute)) {
            (HoldsNumbers(*found) ? operand.numbers : operand.texts) = true;
        }
    }
    return operand;
}

void Operands::RequireKnown(const Comparison& comparison) const {
    const std::string& name = comparison.attribute;
    if (comparison.field != Field::Attribute || name == NAME || name == DISPLAY_NAME) {
        return;
    }
    const auto& definitions = _catalogue.Definitions();
    if (std::none_of(definitions.begin(), definitions.end(), [&](const auto& definition) {
            return definition->FindAttribute(name) != nullptr;
        })) {
        throw UDMException("The query asks at character " + std::to_string(comparison.position) +
                           " for the attribute \"" + catalogue::Printable(name) +
                           "\", which no content definition has; use one that is there");
    }
}

std::vector<std::string> Operands::DefinitionsThatMeet(const Comparison& comparison) {
    const auto& definitions = _catalogue.Definitions();
    if (_lines.empty()) {
        for (const auto& definition : definitions) {
            auto& line = _lines.emplace_back();
            for (const auto* each = definition.get(); each != nullptr; each = each->Base()) {
                line.push_back(each->Name());
            }
        }
    }
    const Evaluator evaluator(Tree({Node{}}, {comparison}), _letters);
    std::vector<std::string> names;
    for (std::size_t i = 0; i < definitions.size(); ++i) {
        if (evaluator.Matches(DefinitionView(*definitions[i], _lines[i]))) {
            names.push_back(definitions[i]->Name());
        }
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
