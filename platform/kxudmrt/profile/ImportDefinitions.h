// The content definitions of an archive beside those of the library that it comes to.
//
// Layer: profile. The rules, as docs/exchange-format.md tells them to users:
//
// - A library without any entity takes the archive's definitions as they are.
// - Another one keeps its own. It gets definitions that it lacks, and in those that both have the
//   attributes, groups and allowed children that it lacks.
// - Definitions of one name must be of one nature: type, base, versioned, abstract, data types of
//   attributes, category and composition of groups.
// - A file extension that the library has given to a definition stays with that.
#pragma once

#include <memory>

#include "catalogue/Catalogue.h"

namespace kxudm::profile {

// The library's catalogue with those of the archive in it; `library` itself if nothing is new.
// `isEmpty`: the library has no entity. Throws UDMException that names definition and attribute or
// group.
[[nodiscard]] std::shared_ptr<const catalogue::Catalogue> MergedCatalogue(
    const std::shared_ptr<const catalogue::Catalogue>& library,
    const catalogue::Catalogue& archive,
    bool isEmpty);

}  // namespace kxudm::profile
