// What the document of a portable archive says, record by record: entities with their revisions and
// files, and the links between them. The same records serve an archive and whatever else keeps a
// library as one document. docs/exchange-format.md tells the text they stand in.
//
// Layer: exchange, over store/ and catalogue/, of which it takes value types only. Values without
// behaviour. Texts may hold any byte. Only published revisions, and the one of an entity without
// revisions, are in a document.
#ifndef KXUDMRT_EXCHANGE_DOCUMENT_H
#define KXUDMRT_EXCHANGE_DOCUMENT_H

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "store/Rows.h"

namespace kxudm::exchange {

constexpr int kDocumentVersion = 1;

// What a document holds of each entity; the numbers are those of IUDMProfile::Export.
enum class Scope : int { Newest = 0, NewestWithFiles = 1, AllWithFiles = 2 };

// The end of an interval of revisions that is open.
constexpr int kOpen = std::numeric_limits<int>::max();

struct SavePointRecord {
    store::Microseconds time = 0;
    std::string user = {};
    std::string comment = {};

    bool operator==(const SavePointRecord&) const = default;
};

struct RevisionRecord {
    int number = 0;
    std::string displayName = {};
    store::Microseconds created = 0;
    std::string creator = {};
    store::Microseconds modified = 0;
    std::string modifier = {};
    store::Microseconds published = 0;  // 0 and empty for an entity without revisions
    std::string publisher = {};
    std::string workspace = {};
    std::string comment = {};
    std::vector<SavePointRecord> savePoints = {};
    store::AttributeList attributes = {};  // each name once, in byte order
};

// A file of the revisions from <= r < to. Either a content of the archive or, with a path,
// external.
struct FileRecord {
    std::string name = {};
    std::string hash = {};
    std::string externalPath = {};
    std::uint64_t size = 0;
    store::Microseconds modified = 0;
    store::Microseconds added = 0;
    bool isText = false;
    int from = 0;
    int to = kOpen;

    [[nodiscard]] bool IsExternal() const { return hash.empty(); }
};

struct EntityRecord {
    std::string uid = {};
    std::string definition = {};
    std::string name = {};
    bool versioned = true;
    store::Microseconds created = 0;
    std::string creator = {};
    std::string workspace = {};
    std::string branchUid = {};  // origin of a branch, else empty
    int branchRevision = store::NO_REVISION;
    std::vector<RevisionRecord> revisions = {};  // ascending, at least one
    std::vector<FileRecord> files = {};          // by name, then by interval
};

// A link that an entity bears in its revisions from <= r < to: children, references and relations
// of a parent, folder and classifications of a content.
struct LinkRecord {
    store::LinkKind kind = store::LinkKind::Owner;
    std::string name = {};
    std::string other = {};  // base UID of the other end, which need not be in the document
    int from = 0;
    int to = kOpen;
    int exact = store::NO_REVISION;  // revision of the other end that it stays on
    bool composition = false;
};

struct DocumentCounts {
    std::uint64_t entities = 0;
    std::uint64_t revisions = 0;
    std::uint64_t files = 0;
    std::uint64_t links = 0;

    bool operator==(const DocumentCounts&) const = default;
};

}  // namespace kxudm::exchange

#endif
