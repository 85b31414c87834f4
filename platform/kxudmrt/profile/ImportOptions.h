// The options of a bulk import, out of the texts that a host gives.
//
//     recursive   "true" (unless told) or "false": folders within folders, too
//     include     globs: only files that match one are taken; empty takes all
//     exclude     globs: files and folders that match one are left alone
//     definition  content definition of all files; empty: by the extension of each
//     publish     "true": each content is published
//     comment     of the publication, else of a first save
//     external    "true": files are recorded by path, size and time and stay where they are
//     strict      "true": the first failure ends the import, and nothing of it is kept
//
// Layer: profile.
#pragma once

#include <kxutl/kxStlMap.h>
#include <kxutl/kxString.h>

#include <string>
#include <string_view>
#include <vector>

#include "catalogue/Catalogue.h"

namespace kxudm::profile {

// Globs as fnmatch has them ("*", "?", "[...]", "\" before a character that stands for itself),
// separated by ";"; blanks around one don't count. One without "/" is compared with the name alone;
// one with "/" with the path below the imported folder, part by part: "*" and "?" don't match a
// "/".
class GlobList {
  public:
    GlobList() = default;
    explicit GlobList(std::string_view text);

    [[nodiscard]] bool Empty() const { return _globs.empty(); }
    // `path` is relative, without "/" at its begin or end.
    [[nodiscard]] bool Matches(const std::string& path) const;

  private:
    std::vector<std::string> _globs;
};

struct ImportOptions {
    bool recursive = true;
    bool publish = false;
    bool external = false;
    bool strict = false;
    GlobList include;
    GlobList exclude;
    const catalogue::ContentDefinition* definition = nullptr;  // null: by extension
    kxString comment;
};

// Throws UDMException for an unknown option, naming it and the known ones, and for a value that the
// option doesn't take; UDMNotFoundException for an unknown definition.
[[nodiscard]] ImportOptions ReadImportOptions(const catalogue::Catalogue& catalogue,
                                              const kxStlMap<kxString, kxString>& options);

}  // namespace kxudm::profile
