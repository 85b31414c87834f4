#include <kxudm/spi/IUDMProvider.h>

namespace kxudm::spi {

namespace {

[[noreturn]] void ThrowNotProvided(const char* operation) {
    throw UDMNotSupportedException(std::string("The data source doesn't offer ") + operation +
                                   "; use one that does, such as \"local\"");
}

}  // namespace

IUDMProvider::~IUDMProvider() = default;

bool IUDMProvider::CheckConnection(const kxString& /*dataSource*/,
                                   const kxString& /*a*/,
                                   const kxString& /*b*/,
                                   const kxString& /*host*/,
                                   const kxString& /*c*/,
                                   const kxString& /*username*/,
                                   const kxString& /*password*/,
                                   kxString& /*message*/) {
    ThrowNotProvided("CheckConnection");
}

void IUDMProvider::GetRepositoryIds(kxStlVector<kxString>& /*ids*/,
                                    const Parameters& /*params*/,
                                    unsigned int /*connType*/) {
    ThrowNotProvided("GetRepositoryIds");
}

void IUDMProvider::GetRepositoryInfo(kxStlMap<kxString, kxString>& /*info*/,
                                     const kxString& /*id*/,
                                     const kxStlVector<kxString>& /*keys*/,
                                     const Parameters& /*params*/,
                                     unsigned int /*connType*/) {
    ThrowNotProvided("GetRepositoryInfo");
}

void IUDMProvider::GetRepositoryClientSettings(kxStlMap<kxString, kxVariant>& /*out*/,
                                               const kxString& /*id*/,
                                               const Parameters& /*params*/) {
    ThrowNotProvided("GetRepositoryClientSettings");
}

void IUDMProvider::GetWorkspaces(kxStlVector<kxString>& /*ids*/, const Parameters& /*params*/) {
    ThrowNotProvided("GetWorkspaces");
}

void IUDMProvider::GetWorkspaceInfo(kxStlMap<kxString, kxString>& /*info*/,
                                    const kxString& /*id*/,
                                    const kxStlVector<kxString>& /*keys*/,
                                    const Parameters& /*params*/) {
    ThrowNotProvided("GetWorkspaceInfo");
}

void IUDMProvider::AddExistingRepository(const Parameters& /*params*/, const kxString& /*name*/) {
    ThrowNotProvided("AddExistingRepository");
}

void IUDMProvider::SetDefaultRepository(const Parameters& /*params*/) {
    ThrowNotProvided("SetDefaultRepository");
}

void IUDMProvider::DeleteRepository(const Parameters& /*params*/,
                                    bool /*deleteFiles*/,
                                    bool /*force*/) {
    ThrowNotProvided("DeleteRepository");
}

boost::shared_ptr<UDMKXMergeToCatalog> IUDMProvider::CreateMerge(
    const kxString& /*library*/,
    const kxString& /*folder*/,
    const boost::shared_ptr<IUDMProfile>& /*profile*/,
    const kxString& /*comment*/) {
    return {};
}

void IUDMProvider::DispatchUpdates() {}

}  // namespace kxudm::spi
