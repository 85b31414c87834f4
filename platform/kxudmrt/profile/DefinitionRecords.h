// Attributes of a content definition as the plain records of the interface, both ways.
//
// Layer: profile.
#pragma once

#include <kxudm/UDMCdefMetaData.h>

#include "catalogue/Definition.h"

namespace kxudm::profile {

// Appends a record for each attribute of the definition, inherited ones first.
void AppendMetadata(const catalogue::ContentDefinition& definition,
                    kxStlVector<UDMCdefMetaData>& metadata);

// The declaration of the definition with the attributes that the records name, and no others, in
// their order. A record that says what is there already leaves it as it is, inherited ones
// inherited; one that differs from an inherited attribute overrides it here. Whether an attribute
// is mandatory is in no record: it stays as it is, and a new one is not. Throws UDMException for a
// name that comes twice, and for an inherited or a system attribute that is left out.
[[nodiscard]] catalogue::DefinitionDeclaration WithMetadata(
    const catalogue::ContentDefinition& definition, const kxStlVector<UDMCdefMetaData>& metadata);

}  // namespace kxudm::profile
