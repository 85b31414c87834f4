#include "exchange/ArchiveDirectory.h"

#include <optional>
#include <string_view>
#include <utility>

#include "exchange/ArchiveFormat.h"
#include "vault/DocumentName.h"

namespace kxudm::exchange {
namespace {

constexpr std::uint64_t kInExtra = 0xFFFFFFFF;
constexpr std::uint64_t kLargeField = 1;  // the extra field with numbers of 8 bytes
constexpr std::uint64_t kStored = 0;
constexpr std::uint64_t kDeflated = 8;
// Whose contents can't be read as they stand: encrypted in one way or the other.
constexpr std::uint64_t kEncryptedFlags = 0x2041;
constexpr std::uint64_t kTypeBits = 0170000;
constexpr std::uint64_t kRegular = 0100000;
// What stands around the name and the content of an entry beside its header: further fields and the
// record behind the content.
constexpr std::uint64_t kMostAround = 128;

void AddLine(vault::Sha256& hash,
             std::string_view name,
             std::uint64_t at,
             std::uint64_t size,
             bool compressed) {
    const std::string line = std::to_string(at) + " " + std::to_string(size) +
                             (compressed ? " c " : " p ") + std::string(name) + "\n";
    hash.Update(line.data(), line.size());
}

// The content of the extra field with this tag; empty if there is none.
std::string_view ExtraField(std::string_view extra, std::uint64_t tag) {
    while (extra.size() >= 4) {
        const std::uint64_t found = NumberAt(extra, 0, 2);
        const auto size = static_cast<std::size_t>(NumberAt(extra, 2, 2));
        extra.remove_prefix(4);
        if (size > extra.size()) {
            return {};
        }
        if (found == tag) {
            return extra.substr(0, size);
        }
        extra.remove_prefix(size);
    }
    return {};
}

// Takes the number from the extra field if it did not fit.
bool Enlarge(std::uint64_t& number, std::string_view& large) {
    if (number != kInExtra) {
        return true;
    }
    if (large.size() < 8) {
        return false;
    }
    number = NumberAt(large, 0, 8);
    large.remove_prefix(8);
    return true;
}

}  // namespace

struct ArchiveDirectory::Record {
    std::string name = {};
    std::uint64_t flags = 0;
    std::uint64_t method = 0;
    std::uint64_t type = 0;
    std::uint64_t stored = 0;
    std::uint64_t size = 0;
    std::uint64_t at = 0;
    bool sound = true;
};

struct ArchiveDirectory::Place {
    std::string name = {};
    std::uint64_t at = 0;
    std::uint64_t stored = 0;
};

ArchiveDirectory::ArchiveDirectory(std::string path, ArchiveEnd end)
    : path_(std::move(path)), end_(end) {}

void ArchiveDirectory::Add(const std::string& name,
                           std::uint64_t at,
                           std::uint64_t size,
                           bool compressed) {
    ++entries_;
    AddLine(read_, name, at, size, compressed);
}

void ArchiveDirectory::Compare(const Source& source) {
    vault::Sha256 told;
    std::optional<Place> before;
    std::uint64_t left = end_.directorySize;
    std::uint64_t entries = 0;
    while (left > 0) {
        const Record record = Read(source, left);
        Check(record);
        if (before) {
            CheckPlace(*before, record.at);
        } else if (record.at != 0) {
            Refuse(record.name, "does not begin the file");
        }
        AddLine(told, record.name, record.at, record.size, record.method == kDeflated);
        before = Place{record.name, record.at, record.stored};
        ++entries;
    }
    if (before) {
        CheckPlace(*before, end_.directoryAt);
    }
    if (entries != entries_ || entries != end_.entries || told.Finish() != read_.Finish()) {
        RefuseArchive(path_, "its directory tells of other entries than it holds; export it again");
    }
}

ArchiveDirectory::Record ArchiveDirectory::Read(const Source& source, std::uint64_t& left) const {
    const auto take = [&](std::size_t count) {
        if (count > left) {
            RefuseArchive(path_, "its directory is cut short; export it again");
        }
        left -= count;
        std::string bytes;
        source(bytes, count);
        return bytes;
    };
    const std::string head = take(kDirectoryRecordSize);
    if (!head.starts_with(kDirectorySignature)) {
        RefuseArchive(path_, "its directory holds something else than entries; export it again");
    }
    Record record;
    record.flags = NumberAt(head, 8, 2);
    record.method = NumberAt(head, 10, 2);
    record.stored = NumberAt(head, 20, 4);
    record.size = NumberAt(head, 24, 4);
    record.type = NumberAt(head, 40, 2) & kTypeBits;
    record.at = NumberAt(head, 42, 4);
    record.name = take(static_cast<std::size_t>(NumberAt(head, 28, 2)));
    const std::string extra = take(static_cast<std::size_t>(NumberAt(head, 30, 2)));
    std::string_view large = ExtraField(extra, kLargeField);
    record.sound = Enlarge(record.size, large) && Enlarge(record.stored, large) &&
                   Enlarge(record.at, large) && NumberAt(head, 32, 2) == 0 &&
                   NumberAt(head, 34, 2) == 0;
    return record;
}

void ArchiveDirectory::Check(const Record& record) const {
    if (!record.sound) {
        Refuse(record.name, "has a record that is incomplete, a comment, or another disk");
    }
    if ((record.flags & kEncryptedFlags) != 0) {
        Refuse(record.name, "is encrypted");
    }
    if (record.method != kStored && record.method != kDeflated) {
        Refuse(record.name, "is compressed in a foreign way");
    }
    if (record.type != 0 && record.type != kRegular) {
        Refuse(record.name, "is a link, folder or device");
    }
}

// Bytes between the entries belong to none, and entries don't share bytes.
void ArchiveDirectory::CheckPlace(const Place& place, std::uint64_t next) const {
    const std::uint64_t head = kLocalSize + place.name.size();
    if (next < place.at || next - place.at < head || next - place.at - head < place.stored ||
        next - place.at - head - place.stored > kMostAround) {
        Refuse(place.name, "does not take the room up to the next one");
    }
}

void ArchiveDirectory::Refuse(const std::string& name, const std::string& what) const {
    RefuseArchive(path_,
                  "the entry '" + vault::Printable(name) + "' " + what +
                      " according to the directory; export it again");
}

}  // namespace kxudm::exchange
