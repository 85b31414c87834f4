// Content definitions.
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Metadata.h>

#include "db/_private/UDMDBCtrlGuard.h"

namespace kxct {

using kxudm::IUDMProfile;
using kxudm::UDMAttributeDefinitionHandle;
using kxudm::UDMCdefMetaData;
using kxudm::UDMContentDefinition;
using kxudm::UDMContentDefinitionHandle;

namespace {

// The flags go over in the order in which the records hold them, which is not the order of their
// constructors: displayable and system change places between the two.
Metadata ToMetadata(const UDMCdefMetaData& record) {
    const bool flagA = record.isDisplayable;
    const bool flagB = record.isSystem;
    const bool flagC = record.isEditable;
    return {record.Name(),
            record.DisplayName(),
            record.Description(),
            record.DefaultValue(),
            record.Type(),
            record.Category(),
            flagB,
            flagA,
            flagC,
            record.ValidVal()};
}

UDMCdefMetaData ToRecord(const Metadata& metadata) {
    return {metadata.name,
            metadata.displayName,
            metadata.description,
            metadata.defaultValue,
            metadata.type,
            metadata.category,
            metadata.flagB,
            metadata.flagA,
            metadata.flagC,
            metadata.validValues};
}

}  // namespace

UDMContentDefinitionHandle UDMDBCtrl::GetContentDefinitionHandle(const kxString& definition) const {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        return profile.GetProfileUtils().GetContentDefinitionHandle(definition);
    });
}

UDMAttributeDefinitionHandle UDMDBCtrl::GetAttributeDefinitionHandle(
    const kxString& definition, const kxString& attribute) const {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        return profile.GetProfileUtils().GetAttributeDefinitionHandle(definition, attribute);
    });
}

const kxStlVector<kxString> UDMDBCtrl::GetContentDefinitionNames() {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [](IUDMProfile& profile) {
        return profile.GetProfileUtils().GetRegisteredContentDefinitionNames();
    });
}

kxStlVector<boost::shared_ptr<UDMContentDefinition>> UDMDBCtrl::GetRegisteredContentDefinitions()
    const {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [](IUDMProfile& profile) {
        return profile.GetProfileUtils().GetRegisteredContentDefinition();
    });
}

void UDMDBCtrl::GetClassNames(kxStlSet<kxString>& out) {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        // Before the question, so that a failure leaves no names of an earlier answer.
        out.clear();
        out = profile.GetProfileUtils().GetRegisteredContentDefinitionClassNames();
    });
}

void UDMDBCtrl::GetAllowedChildCdefNames(const kxString& definition,
                                         kxStlVector<kxString>& out,
                                         const kxString& group) const {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.GetProfileUtils().GetAllowedChildCdefNames(definition, out, group);
    });
}

void UDMDBCtrl::GetGroupNames(const kxString& definition, kxStlVector<kxString>& out) const {
    WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        profile.GetProfileUtils().GetGroupNames(definition, out, "");
    });
}

// Must stay translated although GetContentDefinitionHandle is too: the text of a failure names
// both operations.
kxString UDMDBCtrl::GetCdefDisplayName(const kxString& definition) const {
    return KXCT_TRANSLATED([&] {
        kxString name;
        GetContentDefinitionHandle(definition).DisplayName(name);
        return name;
    });
}

std::size_t UDMDBCtrl::GetContentDefinitionMetadata(const kxString& definition,
                                                    kxStlVector<Metadata>& out) {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        kxStlVector<UDMCdefMetaData> list;
        profile.GetContentDefinitionMetadata(definition, list);
        for (const UDMCdefMetaData& record : list) {
            out.push_back(ToMetadata(record));
        }
        return out.size();
    });
}

kxStlVector<kxString> UDMDBCtrl::GetContentDefinitionMetadata(const kxString& definition,
                                                              bool omitSystem,
                                                              bool displayableOnly) const {
    const UDMContentDefinitionHandle handle = GetContentDefinitionHandle(definition);
    kxStlVector<UDMAttributeDefinitionHandle> attributes;
    handle.GetAttributeDefinitions(attributes);
    kxStlVector<kxString> names;
    for (const UDMAttributeDefinitionHandle& attribute : attributes) {
        if ((omitSystem && attribute.IsSystem()) ||
            (displayableOnly && !attribute.IsDisplayable())) {
            continue;
        }
        names.push_back(attribute.GetName());
        names.push_back(attribute.GetDisplayName());
    }
    return names;
}

bool UDMDBCtrl::UpdateContentDefinition(const kxString& definition) {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        return profile.ReloadContentDefinition(definition);
    });
}

bool UDMDBCtrl::UpdateContentDefinition(const kxString& definition,
                                        kxStlVector<Metadata>& metadata) {
    return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](IUDMProfile& profile) {
        kxStlVector<UDMCdefMetaData> list;
        for (const Metadata& attribute : metadata) {
            list.push_back(ToRecord(attribute));
        }
        return profile.UpdateContentDefinition(definition, list, false);
    });
}

}  // namespace kxct
