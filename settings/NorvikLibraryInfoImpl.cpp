#include <kxct/NorvikLibraryInfo.h>
#include <kxctH.h>

#include <algorithm>
#include <array>
#include <boost/lexical_cast.hpp>
#include <functional>
#include <new>
#include <sstream>
#include <string_view>
#include <unordered_set>

#include "settings/_private/XmlDocument.h"

namespace kxct {

namespace {

constexpr std::size_t textLimit = 2147483648;

// In the order in which they are told.
struct LibraryAttribute {
    const char* name;
    std::string* kxct__Entity::*value;
};
constexpr std::array<LibraryAttribute, 3> libraryAttributes = {
    {{"libraryentityid", &kxct__Entity::libraryentityid},
     {"libraryname", &kxct__Entity::libraryname},
     {"librarycomment", &kxct__Entity::librarycomment}}};

struct Key {
    std::string_view type;
    std::string_view id;

    friend bool operator==(const Key&, const Key&) = default;
};

Key KeyOf(const Key& key) {
    return key;
}
Key KeyOf(const kxct__Entity* entity) {
    return {entity->type, entity->id};
}

struct KeyHash {
    using is_transparent = void;
    std::size_t operator()(const auto& value) const {
        const Key key = KeyOf(value);
        const std::hash<std::string_view> hash;
        return hash(key.type) * 31 + hash(key.id);
    }
};
struct KeyEqual {
    using is_transparent = void;
    bool operator()(const auto& a, const auto& b) const { return KeyOf(a) == KeyOf(b); }
};

}  // namespace

// Type and id of an entity never change, and the document keeps entities in place.
struct NorvikLibraryInfoImpl::Index {
    std::unordered_set<kxct__Entity*, KeyHash, KeyEqual> entities;
};

NorvikLibraryInfoImpl::NorvikLibraryInfoImpl()
    : _soap(NewDocumentContext()), _root(nullptr), _index(std::make_unique<Index>()) {
    if (_soap != nullptr) {
        _root = soap_new__kxct__NorvikLibraryInfo(_soap, -1);
    }
}

NorvikLibraryInfoImpl::NorvikLibraryInfoImpl(const kxString& xml) : NorvikLibraryInfoImpl() {
    if (xml.size() >= textLimit) {
        throw std::bad_alloc();
    }
    if (_root == nullptr) {
        return;
    }
    std::istringstream stream(xml);
    _ReadFromStream(stream, _root, nullptr, nullptr);
    // Null pointers stand in the list where the document says xsi:nil. Of equal entities the first
    // one goes in.
    for (kxct__Entity* entity : _root->Entity) {
        if (entity != nullptr) {
            _index->entities.insert(entity);
        }
    }
}

NorvikLibraryInfoImpl::~NorvikLibraryInfoImpl() {
    FreeDocumentContext(_soap);
}

void NorvikLibraryInfoImpl::_ReadFromStream(std::istream& stream,
                                            _kxct__NorvikLibraryInfo* root,
                                            const char* tag,
                                            const char* type) {
    ReadDocument(_soap, stream, root, tag, type);
}

void NorvikLibraryInfoImpl::_WriteToStream(std::ostream& stream,
                                           const char* tag,
                                           const char* type) const {
    WriteDocument(_soap, stream, _root, tag, type);
}

kxct__Entity* NorvikLibraryInfoImpl::_GetEntity(const kxString& type, std::uint64_t id) const {
    const std::string text = std::to_string(id);
    const auto found = _index->entities.find(Key{type, text});
    return found != _index->entities.end() ? *found : nullptr;
}

kxct__Entity* NorvikLibraryInfoImpl::_AddEntity(const kxString& type, std::uint64_t id) {
    if (_root == nullptr) {
        return nullptr;
    }
    if (kxct__Entity* known = _GetEntity(type, id)) {
        return known;
    }
    kxct__Entity* entity = soap_new_kxct__Entity(_soap, -1);
    entity->type = type;
    entity->id = std::to_string(id);
    _root->Entity.push_back(entity);
    _index->entities.insert(entity);
    return entity;
}

kxct__Entity* NorvikLibraryInfoImpl::_AddEntity(const kxString& type,
                                                std::uint64_t id,
                                                const kxStlMap<kxString, kxString>& attributes) {
    kxct__Entity* entity = _AddEntity(type, id);
    if (entity == nullptr) {
        return nullptr;
    }
    for (const auto& [name, value] : attributes) {
        for (const LibraryAttribute& known : libraryAttributes) {
            if (name == known.name) {
                entity->*known.value = soap_new_std__string(_soap, -1);
                *(entity->*known.value) = value;
            }
        }
    }
    return entity;
}

kxct__Entity* NorvikLibraryInfoImpl::_AddEntity(const kxString& type,
                                                std::uint64_t id,
                                                const kxStlMap<kxString, kxString>& attributes,
                                                const kxStlMap<kxString, kxString>& metadata) {
    kxct__Entity* entity = _AddEntity(type, id, attributes);
    if (entity == nullptr) {
        return nullptr;
    }
    for (const auto& [name, value] : metadata) {
        kxct__metadata* record = soap_new_kxct__metadata(_soap, -1);
        record->name = name;
        record->value = value;
        entity->metadata.push_back(record);
    }
    return entity;
}

kxct__Entity* NorvikLibraryInfoImpl::_AddEntity(const kxString& type,
                                                std::uint64_t id,
                                                const kxStlMap<kxString, kxString>& attributes,
                                                const kxStlMap<kxString, kxString>& metadata,
                                                const kxStlVector<kxString>& categories) {
    kxct__Entity* entity = _AddEntity(type, id, attributes, metadata);
    if (entity == nullptr) {
        return nullptr;
    }
    for (const kxString& path : categories) {
        kxct__category* category = soap_new_kxct__category(_soap, -1);
        category->path = path;
        entity->category.push_back(category);
    }
    return entity;
}

kxct__Entity* NorvikLibraryInfoImpl::_AddEntity(const kxString& type,
                                                std::uint64_t id,
                                                const kxStlMap<kxString, kxString>& attributes,
                                                const kxStlMap<kxString, kxString>& metadata,
                                                const kxStlVector<kxString>& categories,
                                                const kxString& folder) {
    kxct__Entity* entity = _AddEntity(type, id, attributes, metadata, categories);
    if (entity == nullptr) {
        return nullptr;
    }
    if (entity->folder == nullptr) {
        entity->folder = soap_new_kxct__folder(_soap, -1);
    }
    entity->folder->path = folder;
    return entity;
}

bool NorvikLibraryInfoImpl::AddEntity(const kxString& type, std::uint64_t id) {
    return _AddEntity(type, id) != nullptr;
}

bool NorvikLibraryInfoImpl::AddEntity(const kxString& type,
                                      std::uint64_t id,
                                      const kxStlMap<kxString, kxString>& attributes) {
    return _AddEntity(type, id, attributes) != nullptr;
}

bool NorvikLibraryInfoImpl::AddEntity(const kxString& type,
                                      std::uint64_t id,
                                      const kxStlMap<kxString, kxString>& attributes,
                                      const kxStlMap<kxString, kxString>& metadata) {
    return _AddEntity(type, id, attributes, metadata) != nullptr;
}

bool NorvikLibraryInfoImpl::AddEntity(const kxString& type,
                                      std::uint64_t id,
                                      const kxStlMap<kxString, kxString>& attributes,
                                      const kxStlMap<kxString, kxString>& metadata,
                                      const kxStlVector<kxString>& categories) {
    return _AddEntity(type, id, attributes, metadata, categories) != nullptr;
}

bool NorvikLibraryInfoImpl::AddEntity(const kxString& type,
                                      std::uint64_t id,
                                      const kxStlMap<kxString, kxString>& attributes,
                                      const kxStlMap<kxString, kxString>& metadata,
                                      const kxStlVector<kxString>& categories,
                                      const kxString& folder) {
    return _AddEntity(type, id, attributes, metadata, categories, folder) != nullptr;
}

kxStlVector<unsigned int> NorvikLibraryInfoImpl::GetEntities(const kxString& type) const {
    kxStlVector<unsigned int> ids;
    if (_root == nullptr) {
        return ids;
    }
    std::unordered_set<unsigned int> seen;
    for (const kxct__Entity* entity : _root->Entity) {
        if (entity == nullptr || entity->type != type) {
            continue;
        }
        // 32 bits, unlike everywhere else: a larger id raises, and hosts rely on hearing of it.
        const auto id = boost::lexical_cast<unsigned int>(entity->id);
        if (seen.insert(id).second) {
            ids.push_back(id);
        }
    }
    return ids;
}

kxStlVector<kxString> NorvikLibraryInfoImpl::GetEntityTypes() const {
    kxStlVector<kxString> types;
    if (_root == nullptr) {
        return types;
    }
    std::unordered_set<std::string_view> seen;
    for (const kxct__Entity* entity : _root->Entity) {
        if (entity != nullptr && seen.insert(entity->type).second) {
            types.push_back(entity->type);
        }
    }
    return types;
}

kxStlVector<kxString> NorvikLibraryInfoImpl::GetEntityAttributes(const kxString& type,
                                                                 std::uint64_t id) const {
    kxStlVector<kxString> pairs;
    if (const kxct__Entity* entity = _GetEntity(type, id)) {
        for (const LibraryAttribute& known : libraryAttributes) {
            if (const std::string* value = entity->*known.value) {
                pairs.push_back(known.name);
                pairs.push_back(*value);
            }
        }
    }
    return pairs;
}

kxStlVector<kxString> NorvikLibraryInfoImpl::GetEntityMetadata(const kxString& type,
                                                               std::uint64_t id) const {
    kxStlVector<kxString> pairs;
    if (const kxct__Entity* entity = _GetEntity(type, id)) {
        for (const kxct__metadata* record : entity->metadata) {
            if (record != nullptr) {
                pairs.push_back(record->name);
                pairs.push_back(record->value);
            }
        }
    }
    return pairs;
}

kxStlVector<kxString> NorvikLibraryInfoImpl::GetEntityCategories(const kxString& type,
                                                                 std::uint64_t id) const {
    kxStlVector<kxString> paths;
    if (const kxct__Entity* entity = _GetEntity(type, id)) {
        for (const kxct__category* category : entity->category) {
            if (category != nullptr) {
                paths.push_back(category->path);
            }
        }
    }
    return paths;
}

kxString NorvikLibraryInfoImpl::GetEntityFolder(const kxString& type, std::uint64_t id) const {
    const kxct__Entity* entity = _GetEntity(type, id);
    return entity != nullptr && entity->folder != nullptr ? kxString(entity->folder->path)
                                                          : kxString();
}

kxString NorvikLibraryInfoImpl::Serialize() const {
    if (_root == nullptr) {
        return {};
    }
    std::ostringstream stream;
    _WriteToStream(stream, "kxct:NorvikLibraryInfo", nullptr);
    return stream.str();
}

}  // namespace kxct
