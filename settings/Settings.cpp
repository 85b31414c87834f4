#include <kxct/Settings.h>
#include <kxct/SettingsImpl.h>
#include <kxlmcore/kxLMUtls.h>
#include <kxlmosa/osaDirectory.h>
#include <kxlmosa/osaFile.h>
#include <kxlmosa/osaFileInfo.h>
#include <kxutl/kxVariant.h>

#include <boost/algorithm/string/replace.hpp>
#include <boost/filesystem/operations.hpp>
#include <boost/filesystem/path.hpp>
#include <boost/regex.hpp>
#include <cstdlib>
#include <exception>
#include <string>

namespace kxct {

namespace {

constexpr int allPermissions = 4095;

// Far above what a path can use. Variables that refer to each other in a circle end here.
constexpr int maxReplacements = 1000;
constexpr std::size_t maxExpandedSize = 65536;

}  // namespace

Settings::Settings(const kxString& defaultFile, const kxString& userFile)
    : _defaultFile(defaultFile), _userFile(userFile) {
    if (osaFile::Exists(userFile)) {
        _impl = new SettingsImpl(userFile);
        return;
    }
    _impl = new SettingsImpl(defaultFile);
    Write();
}

Settings::Settings(const kxString& file) : _defaultFile(file), _impl(new SettingsImpl(file)) {}

Settings::~Settings() {
    delete _impl;
}

kxString Settings::GetValue(const kxString& key) const {
    kxVariant value;
    if (!_impl || !_impl->Get(key, value)) {
        return {};
    }
    return value.GetString();
}

kxString Settings::GetPath(const kxString& key) const {
    kxVariant value;
    if (!_impl || !_impl->Get(key, value)) {
        return {};
    }
    kxString text = value.GetString();
    if (!_ReplaceEnvVariables(text)) {
        return {};
    }
    boost::algorithm::replace_first(text, "~", kxLMUtls::GetUserDirectory());
    boost::filesystem::path path(text);
    // An absolute path has a root name on some platforms only; without one it is resolved as well,
    // and its target has to exist.
    if (!path.has_root_name() || !path.has_root_directory()) {
        path = canonical(path, boost::filesystem::path(_defaultFile).parent_path());
    }
    return path.generic_path().string();
}

kxStlVector<kxString> Settings::GetKeys(const kxString& key) const {
    kxStlVector<kxString> keys;
    if (_impl) {
        _impl->GetKeys(key, keys);
    }
    return keys;
}

kxStlVector<kxString> Settings::GetLookups(const kxString& key) const {
    kxStlVector<kxString> lookups;
    if (_impl) {
        _impl->GetLookups(key, lookups);
    }
    return lookups;
}

void Settings::Set(const kxString& key, const kxString& value) {
    if (_impl) {
        _impl->Set(key, kxVariant(value));
    }
}

void Settings::Write() {
    if (_userFile.empty() || !_impl) {
        return;
    }
    const kxString folder = osaFileInfo(_userFile).GetPath();
    if (!osaFile::Exists(folder) && osaDirectory::Create(folder, allPermissions, true) != 0) {
        return;
    }
    _impl->Write(_userFile);
}

kxString Settings::GetSettingsFile(bool useDefaultFile) const {
    if (!_impl) {
        return {};
    }
    return useDefaultFile ? _defaultFile : _userFile;
}

bool Settings::IsValid() {
    return _impl != nullptr;
}

bool Settings::_ReplaceEnvVariables(kxString& text) const {
    const boost::regex token(R"([\[]{1}([[:word:]\.]*)[\]]{1})");
    try {
        for (int replacements = 0; replacements < maxReplacements; ++replacements) {
            boost::sregex_token_iterator tokens(text.begin(), text.end(), token, {0, 1});
            if (tokens == boost::sregex_token_iterator()) {
                return true;
            }
            const std::string match = *tokens;
            const std::string name = *++tokens;
            const char* value = std::getenv(name.c_str());
            if (!value) {
                return false;
            }
            boost::algorithm::replace_first(text, match, value);
            if (text.size() > maxExpandedSize) {
                return false;
            }
        }
    } catch (const std::exception&) {
        return false;
    }
    return false;
}

}  // namespace kxct
