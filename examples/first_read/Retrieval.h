// Gets the files out of the library again.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "FolderImport.h"

namespace demo {

// Retrieves the newest revision of everything into a folder that is made for it, in the shape of
// the source, and removes it again. Returns how many files equal their source, byte for byte; each
// other one is told on the standard error.
std::size_t CountIdentical(Library& library,
                           const std::vector<Entry>& entries,
                           const std::filesystem::path& place);

// What the vault keeps for the contents.
struct VaultUse {
    std::size_t files = 0;
    std::size_t distinct = 0;
    std::uintmax_t bytes = 0;  // as stored
};
VaultUse MeasureVault(Library& library, const std::vector<Entry>& entries);

}  // namespace demo
