#include "profile/DefinitionRecords.h"

#include <kxudm/UDMException.h>

#include <algorithm>
#include <set>
#include <utility>

#include "catalogue/ListText.h"
#include "catalogue/Value.h"

namespace kxudm::profile {

namespace {

using catalogue::AttributeDefinition;
using catalogue::ContentDefinition;
using catalogue::DefinitionDeclaration;

UDMCdefMetaData RecordOf(const AttributeDefinition& attribute) {
    return {attribute.name,
            attribute.displayName,
            attribute.description,
            attribute.defaultValue.GetString(),
            attribute.dataType,
            attribute.category,
            attribute.system,
            attribute.displayable,
            attribute.editable,
            attribute.validValues};
}

// Of records of one name.
bool SaysTheSame(const UDMCdefMetaData& a, const UDMCdefMetaData& b) {
    return a.DisplayName() == b.DisplayName() && a.Description() == b.Description() &&
           a.DefaultValue() == b.DefaultValue() && a.Type() == b.Type() &&
           a.Category() == b.Category() && a.ValidVal() == b.ValidVal() &&
           a.isSystem == b.isSystem && a.isDisplayable == b.isDisplayable &&
           a.isEditable == b.isEditable;
}

const AttributeDefinition* FindOwn(const DefinitionDeclaration& declaration, const kxString& name) {
    const auto& own = declaration.attributes;
    const auto found =
        std::find_if(own.begin(), own.end(), [&](const auto& each) { return each.name == name; });
    return found == own.end() ? nullptr : &*found;
}

// An empty text can't be told from no default: it stands for what there is, else for none.
kxVariant DefaultOf(const UDMCdefMetaData& record, const AttributeDefinition* present) {
    const kxString text = record.DefaultValue();
    if (present != nullptr && present->dataType == record.Type() &&
        present->defaultValue.GetString() == text) {
        return present->defaultValue;
    }
    if (text.empty()) {
        return {};
    }
    return record.Type() == "StringList" ? kxVariant(catalogue::ListOfText(text)) : kxVariant(text);
}

AttributeDefinition AttributeOf(const UDMCdefMetaData& record, const AttributeDefinition* present) {
    AttributeDefinition attribute;
    attribute.name = record.Name();
    attribute.displayName = record.DisplayName();
    attribute.description = record.Description();
    attribute.category = record.Category();
    attribute.dataType = record.Type();
    attribute.defaultValue = DefaultOf(record, present);
    attribute.validValues = record.ValidVal();
    attribute.system = record.isSystem;
    attribute.displayable = record.isDisplayable;
    attribute.editable = record.isEditable;
    attribute.mandatory = present != nullptr && present->mandatory;
    return attribute;
}

kxString Said(const ContentDefinition& definition, const kxString& attribute) {
    return "The attribute \"" + catalogue::Printable(attribute) +
           "\" of the content definition \"" + definition.Name() + "\"";
}

void RequireNothingFixedLeftOut(const ContentDefinition& definition,
                                const std::set<kxString>& listed) {
    for (const AttributeDefinition* attribute : definition.Attributes()) {
        if (listed.contains(attribute->name)) {
            continue;
        }
        const ContentDefinition* base = definition.Base();
        if (base != nullptr && base->FindAttribute(attribute->name) != nullptr) {
            throw UDMException(Said(definition, attribute->name) + " is inherited from \"" +
                               base->Name() +
                               "\" and can't be left out here; list it, or remove it there");
        }
        if (attribute->system) {
            throw UDMException(Said(definition, attribute->name) +
                               " is kept by the library itself and can't be left out; list it");
        }
    }
}

}  // namespace

void AppendMetadata(const ContentDefinition& definition, kxStlVector<UDMCdefMetaData>& metadata) {
    for (const AttributeDefinition* attribute : definition.Attributes()) {
        metadata.push_back(RecordOf(*attribute));
    }
}

DefinitionDeclaration WithMetadata(const ContentDefinition& definition,
                                   const kxStlVector<UDMCdefMetaData>& metadata) {
    DefinitionDeclaration changed = definition.Declaration();
    changed.attributes.clear();
    std::set<kxString> listed;
    for (const UDMCdefMetaData& record : metadata) {
        if (!listed.insert(record.Name()).second) {
            throw UDMException(Said(definition, record.Name()) + " is listed twice; list it once");
        }
        const AttributeDefinition* present = definition.FindAttribute(record.Name());
        if (present == nullptr || !SaysTheSame(record, RecordOf(*present))) {
            changed.attributes.push_back(AttributeOf(record, present));
        } else if (const auto* own = FindOwn(definition.Declaration(), record.Name())) {
            changed.attributes.push_back(*own);
        }
    }
    RequireNothingFixedLeftOut(definition, listed);
    return changed;
}

}  // namespace kxudm::profile
