#include "profile/Profile.h"

namespace kxudm::profile {

void ThrowNotOffered(const char* operation) {
    throw UDMNotSupportedException(std::string("The operation ") + operation +
                                   " is not offered by this version of the library yet; do "
                                   "without it or use a newer version");
}

bool Profile::ReloadContentDefinition(const kxString& /*definition*/) {
    ThrowNotOffered("ReloadContentDefinition");
}

bool Profile::UpdateContentDefinition(const kxString& /*definition*/,
                                      const kxStlVector<UDMCdefMetaData>& /*metadata*/,
                                      bool /*force*/) {
    ThrowNotOffered("UpdateContentDefinition");
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
