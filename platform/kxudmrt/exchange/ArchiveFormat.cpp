#include "exchange/ArchiveFormat.h"

#include "exchange/ArchiveWriter.h"
#include "vault/Sha256.h"

namespace kxudm::exchange {

std::string FileEntry(const std::string& hash) {
    return std::string(kFileFolder) + hash;
}

std::uint64_t NumberAt(std::string_view bytes, std::size_t at, std::size_t size) {
    std::uint64_t number = 0;
    for (std::size_t i = size; i > 0; --i) {
        number = number << 8 | static_cast<unsigned char>(bytes.at(at + i - 1));
    }
    return number;
}

bool IsFileEntry(std::string_view name) {
    return name.starts_with(kFileFolder) && vault::IsHash(name.substr(kFileFolder.size()));
}

}  // namespace kxudm::exchange
