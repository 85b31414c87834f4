// Compares the directory at the end of an archive with the entries that were read before it, in a
// fixed amount of memory. Programs that unpack ZIP files go by the directory; an archive that shows
// them something else than us is refused.
//
// Layer: exchange, inside the reader.
#ifndef KXUDMRT_EXCHANGE_ARCHIVEDIRECTORY_H
#define KXUDMRT_EXCHANGE_ARCHIVEDIRECTORY_H

#include <cstdint>
#include <functional>
#include <string>

#include "exchange/ArchiveSeal.h"
#include "vault/Sha256.h"

namespace kxudm::exchange {

class ArchiveDirectory {
  public:
    ArchiveDirectory(std::string path, ArchiveEnd end);

    // An entry as it was read: where its header stands, bytes of content, and whether they were
    // compressed.
    void Add(const std::string& name, std::uint64_t at, std::uint64_t size, bool compressed);

    // Appends that many of the next bytes of the directory to the text.
    using Source = std::function<void(std::string& bytes, std::size_t count)>;
    // Throws ArchiveException where the directory is not that of the added entries.
    void Compare(const Source& source);

  private:
    struct Record;
    struct Place;

    [[nodiscard]] Record Read(const Source& source, std::uint64_t& left) const;
    void Check(const Record& record) const;
    void CheckPlace(const Place& place, std::uint64_t next) const;
    [[noreturn]] void Refuse(const std::string& name, const std::string& what) const;

    std::string path_;
    ArchiveEnd end_;
    std::uint64_t entries_ = 0;
    vault::Sha256 read_;
};

}  // namespace kxudm::exchange

#endif
