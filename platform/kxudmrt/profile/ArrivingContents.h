// The contents that the document of an archive names: noted while it is read, then met by the
// entries of the archive, each once and in the same order, that of their hashes.
//
// Layer: profile. They stand in a temporary table of the library's connection, so that memory
// doesn't grow with their number.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "exchange/LibraryExchange.h"

namespace kxudm::profile {

class ArrivingContents {
  public:
    // Of the archive at this path, which is told in messages. The store outlives this.
    ArrivingContents(store::LibraryStore& store, std::string path)
        : _store(store), _path(std::move(path)), _expected(store) {}

    // Every ArchiveException of these says which file or entry doesn't fit.
    void Note(const exchange::EntityRecord& entity, const exchange::FileRecord& file);
    // How many there are, once all are noted.
    [[nodiscard]] exchange::ContentTotal Total();
    // The archive's next entry.
    void Meet(const std::string& hash, const std::string& entry, std::optional<std::uint64_t> size);
    // The archive has no more entries.
    void MeetEnd();

  private:
    struct File {
        std::string name;
        std::string uid;  // of its entity
        exchange::NotedContent content;
    };

    void Write();
    [[noreturn]] void RefuseMissing(const std::string& hash) const;

    store::LibraryStore& _store;
    const std::string _path;
    std::vector<File> _unwritten;
    exchange::NotedContents _expected;
};

}  // namespace kxudm::profile
