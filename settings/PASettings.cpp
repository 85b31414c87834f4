#include <kxct/PASettings.h>
#include <kxctH.h>

#include <algorithm>
#include <array>
#include <fstream>

#include "settings/_private/XmlDocument.h"

namespace kxct {

namespace {

// In the order of MetadataAttribute.
constexpr std::array<const char*, METADATA_NONE> attributeWords = {
    "name", "displayname", "description", "category", "common", "iseditable", "ishidden"};

// Null pointers stand in a list where the document says xsi:nil.
template <class Record>
const Record* FirstNamed(const std::vector<Record*>& records, const kxString& name) {
    const auto found = std::find_if(records.begin(), records.end(), [&](const Record* record) {
        return record != nullptr && record->name == name;
    });
    return found == records.end() ? nullptr : *found;
}

template <class Record>
kxStlVector<kxString> NamesOf(const std::vector<Record*>& records) {
    kxStlVector<kxString> names;
    for (const Record* record : records) {
        if (record != nullptr) {
            names.emplace_back(record->name);
        }
    }
    return names;
}

template <class Value>
kxVariant Optional(const Value* value) {
    return value != nullptr ? kxVariant(*value) : kxVariant();
}

}  // namespace

PASettingsImpl::PASettingsImpl(const kxString& path) : _soap(NewDocumentContext()), _root(nullptr) {
    if (_soap == nullptr) {
        return;
    }
    _root = soap_new__kxct__PASettings(_soap, -1);
    std::ifstream file(path, std::ios::binary);
    _ReadFromStream(file, _root, nullptr, nullptr);
}

PASettingsImpl::~PASettingsImpl() {
    FreeDocumentContext(_soap);
    _root = nullptr;
}

void PASettingsImpl::_ReadFromStream(std::istream& stream,
                                     _kxct__PASettings* root,
                                     const char* tag,
                                     const char* type) {
    ReadDocument(_soap, stream, root, tag, type);
}

kxStlVector<kxString> PASettingsImpl::GetContentDefinitions() const {
    return _root != nullptr ? NamesOf(_root->ContentDefinition) : kxStlVector<kxString>();
}

kxStlVector<kxString> PASettingsImpl::GetMetadataNames(const kxString& name) const {
    const kxct__ContentDefinition* definition = _GetContentDefinition(name);
    return definition != nullptr ? NamesOf(definition->Metadata) : kxStlVector<kxString>();
}

kxVariant PASettingsImpl::GetMetadataAttribute(const kxString& contentDefinitionName,
                                               const kxString& metadataName,
                                               MetadataAttribute attribute) const {
    const kxct__Metadata* metadata = _GetMetadata(contentDefinitionName, metadataName);
    if (metadata == nullptr) {
        return {};
    }
    switch (attribute) {
        case METADATA_NAME:
            return kxVariant(metadata->name);
        case METADATA_DISPLAYNAME:
            return kxVariant(metadata->displayname);
        case METADATA_DESCRIPTION:
            return Optional(metadata->description);
        case METADATA_CATEGORY:
            return Optional(metadata->category);
        case METADATA_COMMON:
            return Optional(metadata->common);
        case METADATA_ISEDITABLE:
            return Optional(metadata->iseditable);
        case METADATA_ISHIDDEN:
            return Optional(metadata->ishidden);
        case METADATA_NONE:
            break;
    }
    return {};
}

const kxct__ContentDefinition* PASettingsImpl::_GetContentDefinition(const kxString& name) const {
    return _root != nullptr ? FirstNamed(_root->ContentDefinition, name) : nullptr;
}

const kxct__Metadata* PASettingsImpl::_GetMetadata(const kxString& contentDefinitionName,
                                                   const kxString& metadataName) const {
    const kxct__ContentDefinition* definition = _GetContentDefinition(contentDefinitionName);
    return definition != nullptr ? FirstNamed(definition->Metadata, metadataName) : nullptr;
}

PASettings::PASettings() = default;

PASettings::PASettings(const kxString& path) : _file(path), _impl(new PASettingsImpl(path)) {}

PASettings::~PASettings() {
    delete _impl;
}

kxString PASettings::GetSettingsFile() const {
    return _impl != nullptr ? _file : kxString();
}

kxStlVector<kxString> PASettings::GetContentDefinitions() const {
    return _impl != nullptr ? _impl->GetContentDefinitions() : kxStlVector<kxString>();
}

kxStlVector<kxString> PASettings::GetMetadataNames(const kxString& contentDefinitionName) const {
    return _impl != nullptr ? _impl->GetMetadataNames(contentDefinitionName)
                            : kxStlVector<kxString>();
}

kxVariant PASettings::GetMetadataAttribute(const kxString& contentDefinitionName,
                                           const kxString& metadataName,
                                           const kxString& attributeName) const {
    if (_impl == nullptr) {
        return {};
    }
    const auto word = std::find(attributeWords.begin(), attributeWords.end(), attributeName);
    return _impl->GetMetadataAttribute(
        contentDefinitionName,
        metadataName,
        static_cast<MetadataAttribute>(std::distance(attributeWords.begin(), word)));
}

}  // namespace kxct
