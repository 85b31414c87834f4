// One attribute of a content definition, as applications read and change it.
//
// A content definition is the schema of a kind of content; each of its attributes is described by
// one record: what it is called, what values it takes and in which category it is shown. The record
// is a plain value without behaviour; whoever holds it owns it.
//
//     kxStlVector<Metadata> attributes;
//     controller->GetContentDefinitionMetadata("UDMPart", attributes);
//     attributes.front().description = "Mass with coating";
//     controller->UpdateContentDefinition("UDMPart", attributes);
#pragma once

#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

namespace kxct {

struct Metadata {
    Metadata() = default;

    // The order of the arguments is that of the runtime's own record and differs from the order of
    // the fields: description and default value come before the type, and flagB before flagA. The
    // conversions in both directions rest on that exchange, so it must not be straightened.
    Metadata(const kxString& itsName,
             const kxString& itsDisplayName,
             const kxString& itsDescription,
             const kxString& itsDefaultValue,
             const kxString& itsType,
             const kxString& itsCategory,
             bool itsFlagB,
             bool itsFlagA,
             bool itsFlagC,
             const kxStlVector<kxString>& itsValidValues)
        : name(itsName),
          type(itsType),
          displayName(itsDisplayName),
          description(itsDescription),
          defaultValue(itsDefaultValue),
          category(itsCategory),
          flagA(itsFlagA),
          flagB(itsFlagB),
          flagC(itsFlagC),
          validValues(itsValidValues) {}

    kxString name;
    kxString type;
    kxString displayName;
    kxString description;
    kxString defaultValue;
    kxString category;
    // Three flags of the runtime, carried across as they stand.
    bool flagA = false;
    bool flagB = false;
    bool flagC = false;
    // Empty where the attribute takes any value of its type.
    kxStlVector<kxString> validValues;
};

}  // namespace kxct
