#include "profile/Profile.h"

namespace kxudm::profile {

void ThrowNotOffered(const char* operation) {
    throw UDMNotSupportedException(std::string("The operation ") + operation +
                                   " is not offered by this version of the library yet; do "
                                   "without it or use a newer version");
}

UDMRelationHandle Profile::CreateRelation(const UDMItemHandle& /*first*/,
                                          const UDMItemHandle& /*second*/,
                                          const kxString& /*type*/,
                                          bool /*exact*/) {
    ThrowNotOffered("CreateRelation");
}

bool Profile::RemoveRelation(const UDMItemHandle& /*first*/, const UDMItemHandle& /*second*/) {
    ThrowNotOffered("RemoveRelation");
}

bool Profile::ReloadContentDefinition(const kxString& /*definition*/) {
    ThrowNotOffered("ReloadContentDefinition");
}

bool Profile::UpdateContentDefinition(const kxString& /*definition*/,
                                      const kxStlVector<UDMCdefMetaData>& /*metadata*/,
                                      bool /*force*/) {
    ThrowNotOffered("UpdateContentDefinition");
}

void Profile::AddReference(const UDMItemHandle& /*handle*/,
                           const UDMItemHandle& /*target*/,
                           const kxString& /*type*/) {
    ThrowNotOffered("AddReference");
}

void Profile::GetReferences(kxStlVector<UDMItemHandle>& /*targets*/,
                            const UDMItemHandle& /*handle*/,
                            const kxString& /*type*/) {
    ThrowNotOffered("GetReferences");
}

void Profile::RemoveReference(const UDMItemHandle& /*handle*/, const UDMItemHandle& /*target*/) {
    ThrowNotOffered("RemoveReference");
}

void Profile::GetReferredBy(kxStlVector<UDMItemHandle>& /*referring*/,
                            kxStlVector<kxString>& /*types*/,
                            const UDMItemHandle& /*handle*/) {
    ThrowNotOffered("GetReferredBy");
}

void Profile::Export(const kxString& /*path*/,
                     const kxStlVector<kxString>& /*uids*/,
                     int /*scope*/) {
    ThrowNotOffered("Export");
}

void Profile::Import(const kxString& /*path*/) {
    ThrowNotOffered("Import");
}

}  // namespace kxudm::profile
