// Reading external files: documents of which a library knows path, size and time only.
//
// Layer: profile. What is read must be the file that was recorded.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "store/Rows.h"
#include "vault/FileLayer.h"
#include "vault/TemporaryFile.h"

namespace kxudm::profile {

// Throws UDMStoreException if the file is missing or differs in size or time from its row.
// `document` begins the text: "Part 01..:1 has the external document 'a.inp'".
void RequireUnchanged(vault::FileLayer& files,
                      const store::FileRow& file,
                      const std::string& document);

// Whether another file is the same one or has the same bytes.
[[nodiscard]] bool IsEqualFile(vault::FileLayer& files,
                               const std::string& path,
                               const std::string& other);

// Copies an external file under a temporary name into the folder of `target`. `advance` hears of
// bytes done; false stops it (vault::StoppedException).
[[nodiscard]] std::unique_ptr<vault::TemporaryFile> CopyExternal(
    vault::FileLayer& files,
    const store::FileRow& file,
    const std::string& target,
    const std::function<bool(std::uint64_t)>& advance);

}  // namespace kxudm::profile
