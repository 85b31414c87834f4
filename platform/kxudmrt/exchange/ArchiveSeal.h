// The end of an archive: its seal, and where its directory stands.
//
// Layer: exchange, inside the reader.
#ifndef KXUDMRT_EXCHANGE_ARCHIVESEAL_H
#define KXUDMRT_EXCHANGE_ARCHIVESEAL_H

#include <cstdint>
#include <string>

#include "vault/FileLayer.h"

namespace kxudm::exchange {

struct ArchiveEnd {
    std::uint64_t directoryAt = 0;
    std::uint64_t directorySize = 0;
    std::uint64_t entries = 0;
};

// Throws ArchiveException with one line on `path`.
[[noreturn]] void RefuseArchive(const std::string& path, const std::string& what);

// Reads the whole open file and throws ArchiveException unless it is an archive of a version that
// is known here and every byte is what its writer wrote.
ArchiveEnd CheckSeal(vault::FileLayer& files, vault::OpenFile& file, std::uint64_t size);

}  // namespace kxudm::exchange

#endif
