#include "exchange/Records.h"

#include <utility>

#include "exchange/ArchiveFormat.h"
#include "exchange/DocumentReader.h"

namespace kxudm::exchange {
namespace {

enum class Kind : char { Entity = 'e', Link = 'l', End = 'c' };
// The kind and the length.
constexpr std::size_t kHead = 1 + sizeof(std::uint64_t);

// --- Writing ---

std::size_t BeginRecord(std::string& bytes, Kind kind) {
    const std::size_t begin = bytes.size();
    bytes.push_back(static_cast<char>(kind));
    bytes.append(sizeof(std::uint64_t), '\0');
    return begin;
}

void Put(std::string& bytes, std::uint64_t number) {
    while (number >= 0x80) {
        bytes.push_back(static_cast<char>(number | 0x80));
        number >>= 7;
    }
    bytes.push_back(static_cast<char>(number));
}

// Also negative ones: times, and revisions that are none.
void PutSigned(std::string& bytes, std::int64_t number) {
    Put(bytes,
        (static_cast<std::uint64_t>(number) << 1) ^ static_cast<std::uint64_t>(number >> 63));
}

void Put(std::string& bytes, std::string_view text) {
    Put(bytes, std::uint64_t{text.size()});
    bytes.append(text);
}

void Put(std::string& bytes, const SavePointRecord& point) {
    PutSigned(bytes, point.time);
    Put(bytes, point.user);
    Put(bytes, point.comment);
}

void Put(std::string& bytes, const RevisionRecord& revision) {
    PutSigned(bytes, revision.number);
    Put(bytes, revision.displayName);
    PutSigned(bytes, revision.created);
    Put(bytes, revision.creator);
    PutSigned(bytes, revision.modified);
    Put(bytes, revision.modifier);
    PutSigned(bytes, revision.published);
    Put(bytes, revision.publisher);
    Put(bytes, revision.workspace);
    Put(bytes, revision.comment);
    Put(bytes, std::uint64_t{revision.savePoints.size()});
    for (const SavePointRecord& point : revision.savePoints) {
        Put(bytes, point);
    }
    Put(bytes, store::PackAttributes(revision.attributes));
}

void Put(std::string& bytes, const FileRecord& file) {
    Put(bytes, file.name);
    Put(bytes, file.hash);
    Put(bytes, file.externalPath);
    Put(bytes, file.size);
    PutSigned(bytes, file.modified);
    PutSigned(bytes, file.added);
    Put(bytes, std::uint64_t{file.isText});
    PutSigned(bytes, file.from);
    PutSigned(bytes, file.to);
}

// --- Reading ---

// What doesn't read as it was written. Who knows of which document it was throws it again.
struct Altered {};

class Fields {
  public:
    explicit Fields(std::string_view bytes) : bytes_(bytes) {}

    std::uint64_t Number() {
        std::uint64_t number = 0;
        for (unsigned shift = 0; shift < 64; shift += 7) {
            const unsigned char byte = Byte();
            number |= std::uint64_t{byte & 0x7FU} << shift;
            if (byte < 0x80) {
                return number;
            }
        }
        throw Altered();
    }
    std::int64_t Signed() {
        const std::uint64_t bits = Number();
        return static_cast<std::int64_t>(bits >> 1) ^ -static_cast<std::int64_t>(bits & 1);
    }
    int Revision() { return static_cast<int>(Signed()); }
    bool Flag() { return Number() != 0; }
    std::string_view Text() {
        const std::uint64_t size = Number();
        if (size > bytes_.size()) {
            throw Altered();
        }
        const std::string_view text = bytes_.substr(0, static_cast<std::size_t>(size));
        bytes_.remove_prefix(text.size());
        return text;
    }
    // How many parts follow, each of which takes a byte at least.
    std::size_t Count() {
        const std::uint64_t count = Number();
        if (count > bytes_.size()) {
            throw Altered();
        }
        return static_cast<std::size_t>(count);
    }
    void RequireEnd() const {
        if (!bytes_.empty()) {
            throw Altered();
        }
    }

  private:
    unsigned char Byte() {
        if (bytes_.empty()) {
            throw Altered();
        }
        const auto byte = static_cast<unsigned char>(bytes_.front());
        bytes_.remove_prefix(1);
        return byte;
    }

    std::string_view bytes_;
};

RevisionRecord ReadRevision(Fields& fields) {
    RevisionRecord revision;
    revision.number = fields.Revision();
    revision.displayName = fields.Text();
    revision.created = fields.Signed();
    revision.creator = fields.Text();
    revision.modified = fields.Signed();
    revision.modifier = fields.Text();
    revision.published = fields.Signed();
    revision.publisher = fields.Text();
    revision.workspace = fields.Text();
    revision.comment = fields.Text();
    revision.savePoints.resize(fields.Count());
    for (SavePointRecord& point : revision.savePoints) {
        point.time = fields.Signed();
        point.user = fields.Text();
        point.comment = fields.Text();
    }
    try {
        revision.attributes = store::UnpackAttributes(fields.Text());
    } catch (const store::DamagedAttributes&) {
        throw Altered();
    }
    return revision;
}

FileRecord ReadFile(Fields& fields) {
    FileRecord file;
    file.name = fields.Text();
    file.hash = fields.Text();
    file.externalPath = fields.Text();
    file.size = fields.Number();
    file.modified = fields.Signed();
    file.added = fields.Signed();
    file.isText = fields.Flag();
    file.from = fields.Revision();
    file.to = fields.Revision();
    return file;
}

EntityRecord ReadEntity(Fields& fields) {
    EntityRecord entity;
    entity.uid = fields.Text();
    entity.definition = fields.Text();
    entity.name = fields.Text();
    entity.versioned = fields.Flag();
    entity.created = fields.Signed();
    entity.creator = fields.Text();
    entity.workspace = fields.Text();
    entity.branchUid = fields.Text();
    entity.branchRevision = fields.Revision();
    const std::size_t revisions = fields.Count();
    entity.revisions.reserve(revisions);
    for (std::size_t i = 0; i < revisions; ++i) {
        entity.revisions.push_back(ReadRevision(fields));
    }
    const std::size_t files = fields.Count();
    entity.files.reserve(files);
    for (std::size_t i = 0; i < files; ++i) {
        entity.files.push_back(ReadFile(fields));
    }
    return entity;
}

LinkRecord ReadLink(Fields& fields) {
    LinkRecord link;
    link.kind = static_cast<store::LinkKind>(fields.Number());
    link.name = fields.Text();
    link.other = fields.Text();
    link.from = fields.Revision();
    link.to = fields.Revision();
    link.exact = fields.Revision();
    link.composition = fields.Flag();
    return link;
}

DocumentCounts ReadCounts(Fields& fields) {
    DocumentCounts counts;
    counts.entities = fields.Number();
    counts.revisions = fields.Number();
    counts.files = fields.Number();
    counts.links = fields.Number();
    return counts;
}

// The records as bytes, one at a time.
class Input {
  public:
    explicit Input(const RecordSource& source) : source_(source) {}

    // False at the end. The fields are valid until the next call.
    bool Next(Kind& kind, std::string_view& fields) {
        if (!Hold(kHead)) {
            if (left_.empty()) {
                return false;
            }
            throw Altered();
        }
        kind = static_cast<Kind>(left_.front());
        std::uint64_t size = 0;
        for (std::size_t i = kHead - 1; i > 0; --i) {
            size = size << 8 | static_cast<unsigned char>(left_[i]);
        }
        left_.remove_prefix(kHead);
        if (!Hold(static_cast<std::size_t>(size))) {
            throw Altered();
        }
        fields = left_.substr(0, static_cast<std::size_t>(size));
        left_.remove_prefix(fields.size());
        return true;
    }

    [[nodiscard]] std::string Hash() { return hash_.Finish(); }

  private:
    // Sees to it that so many bytes are left in memory. False if there are fewer.
    bool Hold(std::size_t size) {
        if (left_.size() >= size) {
            return true;
        }
        bytes_.erase(0, bytes_.size() - left_.size());
        std::size_t filled = bytes_.size();
        // Grows with what is there, not with what a length says.
        while (filled < size) {
            bytes_.resize(filled + kPiece);
            const std::size_t count = source_(bytes_.data() + filled, kPiece);
            hash_.Update(bytes_.data() + filled, count);
            filled += count;
            if (count == 0) {
                break;
            }
        }
        bytes_.resize(filled);
        left_ = bytes_;
        return filled >= size;
    }

    const RecordSource& source_;
    std::string bytes_;
    std::string_view left_;
    vault::Sha256 hash_;
};

void Replay(Input& input, const std::string& hash, DocumentHandler& handler) {
    Kind kind{};
    std::string_view bytes;
    DocumentCounts counts;
    bool ended = false;
    while (!ended) {
        if (!input.Next(kind, bytes)) {
            throw Altered();
        }
        Fields fields(bytes);
        if (kind == Kind::Entity) {
            EntityRecord entity = ReadEntity(fields);
            fields.RequireEnd();
            handler.Entity(std::move(entity));
        } else if (kind == Kind::Link) {
            const std::string first(fields.Text());
            LinkRecord link = ReadLink(fields);
            fields.RequireEnd();
            handler.Link(first, std::move(link));
        } else if (kind == Kind::End) {
            counts = ReadCounts(fields);
            fields.RequireEnd();
            ended = true;
        } else {
            throw Altered();
        }
    }
    if (input.Next(kind, bytes) || input.Hash() != hash) {
        throw Altered();
    }
    handler.End(counts);
}

}  // namespace

void RecordWriter::Entity(const EntityRecord& entity) {
    const std::size_t begin = BeginRecord(bytes_, Kind::Entity);
    Put(bytes_, entity.uid);
    Put(bytes_, entity.definition);
    Put(bytes_, entity.name);
    Put(bytes_, std::uint64_t{entity.versioned});
    PutSigned(bytes_, entity.created);
    Put(bytes_, entity.creator);
    Put(bytes_, entity.workspace);
    Put(bytes_, entity.branchUid);
    PutSigned(bytes_, entity.branchRevision);
    Put(bytes_, std::uint64_t{entity.revisions.size()});
    for (const RevisionRecord& revision : entity.revisions) {
        Put(bytes_, revision);
    }
    Put(bytes_, std::uint64_t{entity.files.size()});
    for (const FileRecord& file : entity.files) {
        Put(bytes_, file);
    }
    EndRecord(begin);
}

void RecordWriter::Link(const std::string& first, const LinkRecord& link) {
    const std::size_t begin = BeginRecord(bytes_, Kind::Link);
    Put(bytes_, first);
    Put(bytes_, static_cast<std::uint64_t>(link.kind));
    Put(bytes_, link.name);
    Put(bytes_, link.other);
    PutSigned(bytes_, link.from);
    PutSigned(bytes_, link.to);
    PutSigned(bytes_, link.exact);
    Put(bytes_, std::uint64_t{link.composition});
    EndRecord(begin);
}

std::string RecordWriter::Finish(const DocumentCounts& counts) {
    const std::size_t begin = BeginRecord(bytes_, Kind::End);
    Put(bytes_, counts.entities);
    Put(bytes_, counts.revisions);
    Put(bytes_, counts.files);
    Put(bytes_, counts.links);
    EndRecord(begin);
    Flush();
    return hash_.Finish();
}

void RecordWriter::EndRecord(std::size_t begin) {
    std::uint64_t size = bytes_.size() - begin - kHead;
    for (std::size_t i = 1; i < kHead; ++i, size >>= 8) {
        bytes_[begin + i] = static_cast<char>(size & 0xFF);
    }
    if (bytes_.size() >= kPiece) {
        Flush();
    }
}

void RecordWriter::Flush() {
    hash_.Update(bytes_.data(), bytes_.size());
    sink_(bytes_);
    bytes_.clear();
}

void ReadRecords(const RecordSource& source,
                 const std::string& hash,
                 const std::string& name,
                 DocumentHandler& handler) {
    Input input(source);
    try {
        Replay(input, hash, handler);
    } catch (const Altered&) {
        throw UDMStoreException("What was put aside of " + name +
                                " is not what was written; see that nobody writes to the vault's "
                                "folder \"tmp\", then try again");
    }
}

}  // namespace kxudm::exchange
