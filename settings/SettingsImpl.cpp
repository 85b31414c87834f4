#include <kxct/SettingsImpl.h>
#include <kxctH.h>

#include <algorithm>
#include <boost/algorithm/string/split.hpp>
#include <boost/filesystem/path.hpp>
#include <fstream>

#include "settings/_private/FileReplacement.h"
#include "settings/_private/XmlDocument.h"

namespace kxct {

namespace {

constexpr const char* rootTag = "kxct:Settings";

// The names of a path; a separator at an end or beside another leaves no empty name.
std::vector<std::string> Names(const kxString& path) {
    std::vector<std::string> names;
    boost::algorithm::split(names, path, [](char sign) { return sign == '/'; });
    std::erase_if(names, [](const std::string& name) { return name.empty(); });
    return names;
}

}  // namespace

SettingsImpl::SettingsImpl(const kxString& path) : _soap(NewDocumentContext()), _root(nullptr) {
    if (!_soap) {
        return;
    }
    _root = soap_new__kxct__Settings(_soap, -1);
    std::ifstream file(path, std::ios::binary);
    _ReadFromStream(file, _root, nullptr, nullptr);
}

SettingsImpl::~SettingsImpl() {
    FreeDocumentContext(_soap);
    _root = nullptr;
}

bool SettingsImpl::Get(const kxString& key, kxVariant& value) {
    value = kxVariant(kxString());
    const kxct__Key* found = _Walk(key);
    if (!found || !found->value) {
        return false;
    }
    value = kxVariant(*found->value);
    return true;
}

bool SettingsImpl::GetKeys(const kxString& key, kxStlVector<kxString>& keys) {
    keys.clear();
    if (!_root) {
        return false;
    }
    const Keys* level = &_root->Key;
    if (!key.empty()) {
        const kxct__Key* found = _Walk(key);
        if (!found) {
            return false;
        }
        level = &found->Key;
    }
    for (const kxct__Key* child : *level) {
        if (child) {
            keys.emplace_back(child->name);
        }
    }
    return true;
}

bool SettingsImpl::GetLookups(const kxString& key, kxStlVector<kxString>& lookups) {
    lookups.clear();
    const kxct__Key* found = _Walk(key);
    if (!found) {
        return false;
    }
    for (const kxct__Lookup* lookup : found->Lookup) {
        if (lookup) {
            lookups.emplace_back(lookup->value);
        }
    }
    return true;
}

// Both by value: the interface's form, which hosts link against.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
bool SettingsImpl::Set(kxString key, kxVariant value) {
    if (!_root) {
        return false;
    }
    const Keys* current = &_root->Key;
    kxct__Key* parent = nullptr;
    kxct__Key* last = nullptr;
    for (const std::string& name : Names(key)) {
        kxct__Key* found = _GetKey(name, current);
        if (found) {
            parent = found;
            last = found;
        } else if (parent) {
            // The parent stays as it is, by requirement: every missing level becomes a child of the
            // deepest key that existed, and the value goes to the last one.
            last = _Add(parent, _NewKey(name));
        } else {
            last = nullptr;
        }
        if (!last) {
            return false;
        }
        current = &last->Key;
    }
    if (!last) {
        return false;
    }
    if (!last->value) {
        last->value = soap_new_std__string(_soap, -1);
    }
    if (!last->value) {
        return false;
    }
    *last->value = value.GetString();
    return true;
}

bool SettingsImpl::Write(const kxString& path) {
    if (!_soap || !_root) {
        return false;
    }
    FileReplacement file{boost::filesystem::path(path)};
    if (!_WriteToStream(file.Stream(), _root, rootTag, nullptr)) {
        return false;
    }
    if (!file.Commit()) {
        _soap->error = SOAP_EOF;  // what the runtime says of a stream that takes no more
        return false;
    }
    return true;
}

void SettingsImpl::_ReadFromStream(std::istream& stream,
                                   _kxct__Settings* root,
                                   const char* tag,
                                   const char* type) {
    ReadDocument(_soap, stream, root, tag, type);
}

bool SettingsImpl::_WriteToStream(std::ostream& stream,
                                  _kxct__Settings* root,
                                  const char* tag,
                                  const char* type) {
    return WriteDocument(_soap, stream, root, tag, type);
}

kxct__Key* SettingsImpl::_NewKey(const kxString& name) {
    kxct__Key* key = soap_new_kxct__Key(_soap, -1);
    if (key) {
        key->name = name;
    }
    return key;
}

kxct__Key* SettingsImpl::_Add(kxct__Key* parent, kxct__Key* key) {
    if (parent && key) {
        parent->Key.push_back(key);
    }
    return key;
}

// Null pointers stand in a list where the document says xsi:nil.
kxct__Key* SettingsImpl::_GetKey(const std::string& name, const Keys* keys) const {
    if (!keys) {
        return nullptr;
    }
    const auto found = std::find_if(
        keys->begin(), keys->end(), [&](const kxct__Key* key) { return key && key->name == name; });
    return found == keys->end() ? nullptr : *found;
}

// Null if a name of the path is not there, or if the path has no name.
kxct__Key* SettingsImpl::_Walk(const kxString& path) const {
    const Keys* level = _root ? &_root->Key : nullptr;
    kxct__Key* key = nullptr;
    for (const std::string& name : Names(path)) {
        key = _GetKey(name, level);
        if (!key) {
            return nullptr;
        }
        level = &key->Key;
    }
    return key;
}

}  // namespace kxct
