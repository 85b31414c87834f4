#include "providers/local/Parameters.h"

#include <kxudm/UDMException.h>

#include <filesystem>

#include "catalogue/Value.h"

namespace kxudm::providers {

kxString NormalPath(const kxString& path) {
    if (path.find('\0') != kxString::npos) {
        throw UDMException("The path \"" + catalogue::Printable(path) +
                           "\" has a zero byte in it; use one without");
    }
    std::error_code error;
    std::filesystem::path normal =
        std::filesystem::weakly_canonical(std::filesystem::absolute(path.c_str(), error), error);
    if (error) {
        normal = std::filesystem::path(path.c_str()).lexically_normal();
    }
    // "/a/b/" is "/a/b".
    if (!normal.has_filename() && normal.has_relative_path()) {
        normal = normal.parent_path();
    }
    return normal.string();
}

void RequireLibraryName(const kxString& name) {
    const bool readable = catalogue::FirstInvalidUtf8(name) == std::string_view::npos;
    bool plain = readable && !name.empty() && name.front() != '.' && name.size() <= 200;
    for (const char character : name) {
        plain = plain && static_cast<unsigned char>(character) >= 0x20 && character != '/' &&
                character != '\\';
    }
    if (!plain) {
        throw UDMException("RepositoryName \"" + catalogue::Printable(name) +
                           "\" can't name a library; use a plain file name that doesn't begin "
                           "with a dot");
    }
}

kxString Parameters::Text(const kxString& key) const {
    const auto found = _map.find(key);
    if (found == _map.end()) {
        return {};
    }
    kxString text = found->second.GetString();
    const bool pointer = found->second.GetKind() == kxVariant::POINTER;
    if (pointer || text.find('\0') != kxString::npos ||
        catalogue::FirstInvalidUtf8(text) != std::string_view::npos) {
        throw UDMException(
            "The session parameter \"" + key + "\" is " +
            (pointer ? kxString("a pointer") : "\"" + catalogue::Printable(text) + "\"") +
            "; it must be UTF-8 text without zero bytes");
    }
    return text;
}

kxString Parameters::Required(const kxString& key) const {
    kxString text = Text(key);
    if (text.empty()) {
        throw UDMException("The session parameter \"" + key + "\" is " +
                           (_map.count(key) == 0 ? "missing" : "empty") + "; it must be given");
    }
    return text;
}

kxString Parameters::Path(const kxString& key) const {
    const kxString text = Text(key);
    return text.empty() ? text : NormalPath(text);
}

kxString Parameters::RequiredPath(const kxString& key) const {
    return NormalPath(Required(key));
}

kxString Parameters::RepositoryName() const {
    kxString name = Required("RepositoryName");
    RequireLibraryName(name);
    return name;
}

}  // namespace kxudm::providers
