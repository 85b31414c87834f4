#include "profile/ImportOptions.h"

#include <fnmatch.h>
#include <kxudm/UDMException.h>

#include <algorithm>
#include <array>

#include "profile/Words.h"

namespace kxudm::profile {

namespace {

using catalogue::ContentDefinition;
using catalogue::Printable;

bool Truth(const kxString& name, const kxString& value) {
    if (value != "true" && value != "false") {
        throw UDMException("The import option \"" + name + "\" is \"" + Printable(value) +
                           "\"; it must be \"true\" or \"false\"");
    }
    return value == "true";
}

const ContentDefinition& DefinitionOfFiles(const catalogue::Catalogue& catalogue,
                                           const kxString& name) {
    const ContentDefinition& definition = catalogue.Get(name);
    if (definition.IsAbstract() || definition.Type() == FOLDER_TYPE) {
        throw UDMException("The import option \"definition\" is \"" + name + "\", which is " +
                           (definition.IsAbstract() ? "abstract" : "one of folders") +
                           "; name one that contents can be of");
    }
    return definition;
}

const kxString& CheckedComment(const kxString& comment) {
    if (catalogue::FirstInvalidUtf8(comment) != std::string_view::npos ||
        comment.find('\0') != kxString::npos) {
        throw UDMException("The import option \"comment\" is \"" + Printable(comment) +
                           "\", which is not UTF-8 text without zero bytes; encode it first");
    }
    return comment;
}

struct Option {
    const char* name;
    void (*read)(const catalogue::Catalogue&, const kxString& value, ImportOptions& options);
};

// In the order of their names, as an error lists them.
constexpr std::array OPTIONS{
    Option{"comment",
           [](const auto& /*catalogue*/, const auto& value, auto& options) {
               options.comment = CheckedComment(value);
           }},
    Option{"definition",
           [](const auto& catalogue, const auto& value, auto& options) {
               options.definition = value.empty() ? nullptr : &DefinitionOfFiles(catalogue, value);
           }},
    Option{"exclude",
           [](const auto& /*catalogue*/, const auto& value, auto& options) {
               options.exclude = GlobList(value);
           }},
    Option{"external",
           [](const auto& /*catalogue*/, const auto& value, auto& options) {
               options.external = Truth("external", value);
           }},
    Option{"include",
           [](const auto& /*catalogue*/, const auto& value, auto& options) {
               options.include = GlobList(value);
           }},
    Option{"publish",
           [](const auto& /*catalogue*/, const auto& value, auto& options) {
               options.publish = Truth("publish", value);
           }},
    Option{"recursive",
           [](const auto& /*catalogue*/, const auto& value, auto& options) {
               options.recursive = Truth("recursive", value);
           }},
    Option{"strict", [](const auto& /*catalogue*/, const auto& value, auto& options) {
               options.strict = Truth("strict", value);
           }}};

// "\ " at the end stands for a blank.
std::string_view Trimmed(std::string_view glob) {
    const auto isBlank = [](char letter) { return letter == ' ' || letter == '\t'; };
    while (!glob.empty() && isBlank(glob.front())) {
        glob.remove_prefix(1);
    }
    while (!glob.empty() && isBlank(glob.back()) &&
           !(glob.size() > 1 && glob[glob.size() - 2] == '\\')) {
        glob.remove_suffix(1);
    }
    return glob;
}

[[noreturn]] void ThrowUnknown(const kxString& name) {
    std::string known;
    for (const Option& option : OPTIONS) {
        known += std::string(known.empty() ? "" : ", ") + option.name;
    }
    throw UDMException("The import option \"" + Printable(name) + "\" is unknown; there are " +
                       known);
}

}  // namespace

GlobList::GlobList(std::string_view text) {
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(';'), text.size());
        const std::string_view glob = Trimmed(text.substr(0, end));
        if (!glob.empty()) {
            _globs.emplace_back(glob);
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
}

bool GlobList::Matches(const std::string& path) const {
    const std::size_t slash = path.rfind('/');
    const char* const name = path.c_str() + (slash == std::string::npos ? 0 : slash + 1);
    return std::any_of(_globs.begin(), _globs.end(), [&](const std::string& glob) {
        return glob.find('/') == std::string::npos
                   ? fnmatch(glob.c_str(), name, 0) == 0
                   : fnmatch(glob.c_str(), path.c_str(), FNM_PATHNAME) == 0;
    });
}

ImportOptions ReadImportOptions(const catalogue::Catalogue& catalogue,
                                const kxStlMap<kxString, kxString>& options) {
    ImportOptions read;
    for (const auto& [name, value] : options) {
        const auto* const option =
            std::find_if(OPTIONS.begin(), OPTIONS.end(), [&wanted = name](const Option& each) {
                return wanted == each.name;
            });
        if (option == OPTIONS.end()) {
            ThrowUnknown(name);
        }
        option->read(catalogue, value, read);
    }
    return read;
}

}  // namespace kxudm::profile
