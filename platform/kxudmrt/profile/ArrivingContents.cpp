#include "profile/ArrivingContents.h"

#include <utility>

#include "exchange/ArchiveReader.h"
#include "exchange/ArchiveWriter.h"
#include "vault/DocumentName.h"

namespace kxudm::profile {

namespace {

using exchange::ArchiveException;

// Rows that are written together: each by itself takes several times as long.
constexpr std::size_t kGroup = 1000;

}  // namespace

void ArrivingContents::Note(const exchange::EntityRecord& entity,
                            const exchange::FileRecord& file) {
    if (file.IsExternal()) {
        return;
    }
    _unwritten.push_back({file.name, entity.uid, {file.hash, {}, file.size}});
    if (_unwritten.size() == kGroup) {
        Write();
    }
}

void ArrivingContents::Write() {
    const std::vector<File> files = std::exchange(_unwritten, {});
    _store.View([&] {
        for (const File& file : files) {
            const std::uint64_t size = exchange::NoteContent(_store, file.content);
            if (size != file.content.size) {
                throw ArchiveException(
                    "'" + vault::Printable(_path) + "': the file '" + vault::Printable(file.name) +
                    "' of " + file.uid + " has " + std::to_string(file.content.size) +
                    " bytes, and another one with its SHA-256 has " + std::to_string(size) +
                    "; expected one size for one content");
            }
        }
    });
}

exchange::ContentTotal ArrivingContents::Total() {
    Write();
    return exchange::CountContents(_store);
}

void ArrivingContents::Meet(const std::string& hash,
                            const std::string& entry,
                            std::optional<std::uint64_t> size) {
    const exchange::NotedContent* const expected = _expected.Next();
    const std::string name = "'" + vault::Printable(_path + ", " + entry) + "'";
    if (expected == nullptr || hash < expected->hash) {
        throw ArchiveException(name +
                               ": no file of the document has this content; expected contents of "
                               "its files only");
    }
    if (expected->hash < hash) {
        RefuseMissing(expected->hash);
    }
    if (size != expected->size) {
        throw ArchiveException(name + " has " + std::to_string(size.value_or(0)) +
                               " bytes; expected " + std::to_string(expected->size) +
                               ", as the document says");
    }
}

void ArrivingContents::MeetEnd() {
    if (const exchange::NotedContent* const missing = _expected.Next()) {
        RefuseMissing(missing->hash);
    }
}

void ArrivingContents::RefuseMissing(const std::string& hash) const {
    throw ArchiveException("'" + vault::Printable(_path) + "' has no entry \"" +
                           exchange::FileEntry(hash) +
                           "\", which its document names; expected one");
}

}  // namespace kxudm::profile
