// Names and small steps that the files of MasterDBManagerImpl share. Layer: framework, private.
#pragma once

#include <kxutl/kxStlMap.h>
#include <kxutl/kxString.h>
#include <kxutl/kxVariant.h>

#include <boost/filesystem/path.hpp>

namespace kxct::masterdb {

inline constexpr const char* LOCAL = "local";
inline constexpr const char* POSTGRES = "PostGres";

// Connections without a workspace or a user of their own stand under these names in the cache.
inline constexpr const char* NO_WORKSPACE = "nows";
inline constexpr const char* NO_USER = "nouser";

// Adds what `params` does not have yet.
inline void AddMissing(kxStlMap<kxString, kxVariant>& params,
                       const kxStlMap<kxString, kxVariant>& more) {
    params.insert(more.begin(), more.end());
}

// `host` without the slashes and backslashes at its start; those at its end stay.
inline kxString WithoutLeadingSlashes(const kxString& host) {
    const auto start = host.find_first_not_of("/\\");
    return start == kxString::npos ? kxString() : kxString(host.substr(start));
}

// The directory of a file, with forward slashes.
inline kxString DirectoryOf(const kxString& file) {
    return boost::filesystem::path(file.begin(), file.end()).parent_path().generic_string();
}

}  // namespace kxct::masterdb
