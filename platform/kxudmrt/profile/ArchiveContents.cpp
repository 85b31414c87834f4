#include "profile/ArchiveContents.h"

#include <string_view>
#include <utility>

#include "core/Team.h"
#include "vault/BytesSource.h"
#include "vault/Compression.h"
#include "vault/DocumentName.h"

namespace kxudm::profile {

namespace {

using exchange::ArchiveException;
using exchange::ArchiveReader;

// What is read and not in the vault yet.
constexpr std::size_t kMostPieces = 64;
constexpr std::size_t kMostBytes = std::size_t{16} << 20;
// A thread is woken for each group, which costs as much as a small content.
constexpr std::size_t kPiecesInGroup = 16;
constexpr std::size_t kBytesInGroup = std::size_t{256} << 10;

// Beside the calling one, which helps where it would wait.
std::size_t FurtherThreads(std::size_t contents) {
    const std::size_t threads = core::Team::UsefulThreads(contents);
    return threads > 1 ? threads - 1 : 0;
}

std::size_t ReadFully(ArchiveReader& archive, char* bytes, std::size_t size) {
    std::size_t filled = 0;
    while (filled < size) {
        const std::size_t count = archive.Read(bytes + filled, size - filled);
        if (count == 0) {
            break;
        }
        filled += count;
    }
    return filled;
}

// The content of an entry, on its way into the vault.
class Entry final : public vault::Source {
  public:
    explicit Entry(ArchiveReader& archive) : _archive(archive) {}

    std::size_t Fill(char* bytes, std::size_t size) override {
        return ReadFully(_archive, bytes, size);
    }
    // Read has seen to that.
    void CheckUnchanged() override {}
    [[nodiscard]] std::uint64_t Size() const override { return _archive.Size().value_or(0); }
    [[nodiscard]] std::int64_t Modified() const override { return 0; }

  private:
    ArchiveReader& _archive;
};

void RequireHash(const vault::Incoming& incoming,
                 const std::string& hash,
                 const std::string& name) {
    if (incoming.stored.hash != hash) {
        throw ArchiveException("'" + vault::Printable(name) + "' has the content " +
                               incoming.stored.hash + "; expected the one that it is named by");
    }
}

}  // namespace

ArchiveContents::ArchiveContents(ArchiveReader& archive,
                                 const std::string& path,
                                 vault::Delivery& delivery,
                                 ExchangeProgress& progress,
                                 std::size_t count)
    : _archive(archive),
      _path(path),
      _delivery(delivery),
      _progress(progress),
      _crew(std::make_unique<core::Crew>(FurtherThreads(count))) {}

void ArchiveContents::Take() {
    const std::uint64_t size = _archive.Size().value_or(0);
    Piece piece{_archive.Hash(), _path + ", " + _archive.Name(), static_cast<std::size_t>(size)};
    if (size >= vault::kLarge) {
        Finish();
        _progress.Begin(piece.hash);
        Stream(piece);
        return;
    }
    MakeRoom(piece.size);
    _progress.Begin(piece.hash);
    if (!_next) {
        _next.emplace();
    }
    Read(*_next, std::move(piece));
    if (_next->pieces.size() >= kPiecesInGroup || _next->bytes.size() >= kBytesInGroup) {
        BeginGroup();
    }
}

void ArchiveContents::Finish() {
    if (_next) {
        BeginGroup();
    }
    while (!_coming.empty()) {
        EndGroup();
    }
}

void ArchiveContents::Read(Group& group, Piece&& piece) {
    const std::size_t begin = group.bytes.size();
    ++_count;
    _bytes += piece.size;
    group.bytes.resize(begin + piece.size);
    // As much as was announced, or the reader throws.
    ReadFully(_archive, group.bytes.data() + begin, piece.size);
    group.pieces.push_back(std::move(piece));
}

void ArchiveContents::Stream(const Piece& piece) {
    Entry source(_archive);
    vault::Incoming incoming =
        _delivery.Prepare(source, piece.name, {.progress = [this](std::uint64_t bytes) {
                              _progress.Advance(bytes);
                              return true;
                          }});
    RequireHash(incoming, piece.hash, piece.name);
    _delivery.Add(std::move(incoming));
    _progress.End();
}

void ArchiveContents::MakeRoom(std::size_t size) {
    while (_count + 1 > kMostPieces || _bytes + size > kMostBytes) {
        if (_coming.empty()) {
            BeginGroup();
        }
        EndGroup();
    }
}

void ArchiveContents::BeginGroup() {
    Group& group = _coming.emplace_back(std::move(*_next));
    _next.reset();
    group.taken = _crew->Do([this, &group] { return TakeIn(group); });
}

// The one that was given to the crew first.
void ArchiveContents::EndGroup() {
    Group& group = _coming.front();
    try {
        std::vector<vault::Incoming> taken = _crew->Await(group.taken);
        for (std::size_t i = 0; i < taken.size(); ++i) {
            _delivery.Add(std::move(taken[i]));
            _progress.Advance(group.pieces[i].size);
            _progress.End();
        }
    } catch (...) {
        Drop();
        throw;
    }
    _count -= group.pieces.size();
    _bytes -= group.bytes.size();
    _coming.pop_front();
}

// By a thread of the crew.
std::vector<vault::Incoming> ArchiveContents::TakeIn(const Group& group) {
    std::vector<vault::Incoming> taken;
    taken.reserve(group.pieces.size());
    std::string_view bytes = group.bytes;
    for (const Piece& piece : group.pieces) {
        vault::BytesSource source(bytes.substr(0, piece.size));
        bytes.remove_prefix(piece.size);
        taken.push_back(_delivery.Prepare(source, piece.name));
        RequireHash(taken.back(), piece.hash, piece.name);
    }
    return taken;
}

// What comes after a failure.
void ArchiveContents::Drop() {
    _crew.reset();
    _coming.clear();
    _next.reset();
}

}  // namespace kxudm::profile
