#include "profile/Profile.h"

namespace kxudm::profile {

void ThrowNotOffered(const char* operation) {
    throw UDMNotSupportedException(std::string("The operation ") + operation +
                                   " is not offered by this version of the library yet; do "
                                   "without it or use a newer version");
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
