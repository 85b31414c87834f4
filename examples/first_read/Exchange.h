// From one library to another through a portable archive.
#pragma once

#include <filesystem>
#include <vector>

#include "FolderImport.h"

namespace demo {

// Exports all `entries` with every published revision to an archive below `place`, takes it into
// the library `copy`, and compares. Returns how many contents are there with the same revisions,
// each with the same attributes and files. The archive is removed afterwards.
std::size_t CountExchanged(Library& library,
                           Library& copy,
                           const std::vector<Entry>& entries,
                           const std::filesystem::path& place);

}  // namespace demo
