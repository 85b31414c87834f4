// What an item answers about the entity that its handle stands for.
//
// Layer: items.
#pragma once

#include <kxctinterfaces/Attributes.h>
#include <kxudm/UDMItemHandle.h>
#include <kxutl/kxVariant.h>

namespace kxct {

// `icon()` and `definitionName()` are asked only where the attribute is theirs.
template <typename Icon, typename DefinitionName>
kxVariant ValueOf(const kxudm::UDMItemHandle& handle,
                  const kxString& attribute,
                  const Icon& icon,
                  const DefinitionName& definitionName) {
    using namespace ATTRIBUTE_NAME;
    if (attribute == ICON) {
        return icon();
    }
    if (attribute == LABEL) {
        return kxVariant(handle.GetDisplayName());
    }
    if (attribute == ID) {
        return kxVariant(handle.Uid());
    }
    if (attribute == SMD_CONTENTREVISION) {
        return kxVariant(handle.GetRevision());
    }
    if (attribute == SMD_CREATEDUSER) {
        return handle.GetCreatedBy();
    }
    if (attribute == SMD_CREATIME) {
        return handle.GetCreationTime();
    }
    if (attribute == SMD_CTIME) {
        return handle.GetModifiedTime();
    }
    if (attribute == SMD_USER) {
        return handle.GetModifiedBy();
    }
    if (attribute == CONTENTDEFINITION) {
        return kxVariant(definitionName());
    }
    return handle.GetAttributeValue(attribute);
}

}  // namespace kxct
