#include <kxct/NorvikLibraryInfo.h>

// The facade: everything goes on to the document behind it.
namespace kxct {

NorvikLibraryInfo::NorvikLibraryInfo() : _impl(new NorvikLibraryInfoImpl) {}

NorvikLibraryInfo::NorvikLibraryInfo(const kxString& xml) : _impl(new NorvikLibraryInfoImpl(xml)) {}

NorvikLibraryInfo::~NorvikLibraryInfo() {
    delete _impl;
}

bool NorvikLibraryInfo::AddEntity(const kxString& type, std::uint64_t id) {
    return _impl->AddEntity(type, id);
}

bool NorvikLibraryInfo::AddEntity(const kxString& type,
                                  std::uint64_t id,
                                  const kxStlMap<kxString, kxString>& attributes) {
    return _impl->AddEntity(type, id, attributes);
}

bool NorvikLibraryInfo::AddEntity(const kxString& type,
                                  std::uint64_t id,
                                  const kxStlMap<kxString, kxString>& attributes,
                                  const kxStlMap<kxString, kxString>& metadata) {
    return _impl->AddEntity(type, id, attributes, metadata);
}

bool NorvikLibraryInfo::AddEntity(const kxString& type,
                                  std::uint64_t id,
                                  const kxStlMap<kxString, kxString>& attributes,
                                  const kxStlMap<kxString, kxString>& metadata,
                                  const kxStlVector<kxString>& categories) {
    return _impl->AddEntity(type, id, attributes, metadata, categories);
}

bool NorvikLibraryInfo::AddEntity(const kxString& type,
                                  std::uint64_t id,
                                  const kxStlMap<kxString, kxString>& attributes,
                                  const kxStlMap<kxString, kxString>& metadata,
                                  const kxStlVector<kxString>& categories,
                                  const kxString& folder) {
    return _impl->AddEntity(type, id, attributes, metadata, categories, folder);
}

kxStlVector<unsigned int> NorvikLibraryInfo::GetEntities(const kxString& type) const {
    return _impl->GetEntities(type);
}

kxStlVector<kxString> NorvikLibraryInfo::GetEntityTypes() const {
    return _impl->GetEntityTypes();
}

kxStlVector<kxString> NorvikLibraryInfo::GetEntityAttributes(const kxString& type,
                                                             std::uint64_t id) const {
    return _impl->GetEntityAttributes(type, id);
}

kxStlVector<kxString> NorvikLibraryInfo::GetEntityMetadata(const kxString& type,
                                                           std::uint64_t id) const {
    return _impl->GetEntityMetadata(type, id);
}

kxStlVector<kxString> NorvikLibraryInfo::GetEntityCategories(const kxString& type,
                                                             std::uint64_t id) const {
    return _impl->GetEntityCategories(type, id);
}

kxString NorvikLibraryInfo::GetEntityFolder(const kxString& type, std::uint64_t id) const {
    return _impl->GetEntityFolder(type, id);
}

kxString NorvikLibraryInfo::Serialize() const {
    return _impl->Serialize();
}

bool NorvikLibraryInfo::IsValid() {
    return true;
}

}  // namespace kxct
