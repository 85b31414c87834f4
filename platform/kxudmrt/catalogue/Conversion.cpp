#include "catalogue/Conversion.h"

#include <kxudm/UDMException.h>

#include <optional>

namespace kxudm::catalogue {

namespace {

using Outcome = Conversion::Outcome;

bool IsNumber(DataType type) {
    return type == DataType::Integer || type == DataType::Double;
}

// The value in a kind from which the type takes it.
kxVariant Bridged(const kxVariant& value, DataType type) {
    const kxVariant::Kind kind = value.GetKind();
    if (const auto* list = value.PeekStringList();
        list != nullptr && type != DataType::StringList) {
        return list->empty() ? kxVariant() : list->size() == 1 ? kxVariant(list->front()) : value;
    }
    if (kind == kxVariant::BOOLEAN && IsNumber(type)) {
        return kxVariant(value.GetBoolean() ? 1 : 0);
    }
    if (type == DataType::StringList && kind != kxVariant::STRINGLIST && !value.IsEmpty()) {
        return kxVariant(value.GetString());
    }
    return value;
}

// Nothing where the type has no such value.
std::optional<kxVariant> Taken(const kxVariant& value, const kxString& dataType) {
    AttributeDefinition attribute;
    attribute.dataType = dataType;
    try {
        return CheckedValue(attribute,
                            Bridged(value, DataTypeOf(dataType).value_or(DataType::String)));
    } catch (const UDMException&) {
        return std::nullopt;
    }
}

const char* PlainType(kxVariant::Kind kind) {
    switch (kind) {
        case kxVariant::BOOLEAN:
            return "Boolean";
        case kxVariant::INTEGER:
            return "Integer";
        case kxVariant::FLOAT:
        case kxVariant::DOUBLE:
            return "Double";
        case kxVariant::STRINGLIST:
            return "StringList";
        default:
            return "String";
    }
}

bool IsSame(const kxVariant& a, const kxVariant& b) {
    return a.GetKind() == b.GetKind() && a == b;
}

bool SaysNothing(const kxVariant& value) {
    const auto* text = value.PeekString();
    const auto* list = value.PeekStringList();
    return value.IsEmpty() || (text != nullptr && text->empty()) ||
           (list != nullptr && list->empty());
}

}  // namespace

Conversion Convert(const kxVariant& value, const kxString& dataType) {
    const std::optional<kxVariant> taken = Taken(value, dataType);
    if (!taken) {
        return {Outcome::Refused, {}};
    }
    if (IsSame(*taken, value)) {
        return {Outcome::Unchanged, value};
    }
    const std::optional<kxVariant> back = Taken(*taken, PlainType(value.GetKind()));
    const bool whole = SaysNothing(value) || (back && IsSame(*back, value));
    return {whole ? Outcome::Whole : Outcome::Rewritten, *taken};
}

}  // namespace kxudm::catalogue
