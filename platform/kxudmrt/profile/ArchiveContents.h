// Takes the contents of an archive into the vault.
//
//     ArchiveContents contents(archive, path, delivery, progress, count);
//     while (archive.Next()) {
//         contents.Take();
//     }
//     contents.Finish();
//
// The calling thread reads the archive from front to back, tells the listener, and notes what came,
// in the archive's order. A crew hashes, compresses and writes small contents meanwhile, a group at
// a time; a large one is streamed by the calling thread once all before it have come. Each is
// announced to the listener before it is read.
//
// Layer: profile. Memory is bounded, whatever number and sizes of contents come.
#pragma once

#include <deque>
#include <future>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/Crew.h"
#include "exchange/ArchiveReader.h"
#include "profile/ExchangeProgress.h"
#include "vault/Delivery.h"

namespace kxudm::profile {

class ArchiveContents {
  public:
    // All of them outlive this; `path` is told in messages, `count` is about how many come.
    ArchiveContents(exchange::ArchiveReader& archive,
                    const std::string& path,
                    vault::Delivery& delivery,
                    ExchangeProgress& progress,
                    std::size_t count);

    // The archive's present entry. A failure may be that of one before it. After one, only the
    // destructor and Finish, which then does nothing more, are of use.
    void Take();
    // Waits for all that were taken.
    void Finish();

  private:
    struct Piece {
        std::string hash;
        std::string name;
        std::size_t size = 0;
    };
    // What a thread of the crew does in one go.
    struct Group {
        std::vector<Piece> pieces;
        std::string bytes;  // of all of them
        std::future<std::vector<vault::Incoming>> taken;
    };

    void Read(Group& group, Piece&& piece);
    void Stream(const Piece& piece);
    void MakeRoom(std::size_t size);
    void BeginGroup();
    void EndGroup();
    std::vector<vault::Incoming> TakeIn(const Group& group);
    void Drop();

    exchange::ArchiveReader& _archive;
    const std::string& _path;
    vault::Delivery& _delivery;
    ExchangeProgress& _progress;

    std::optional<Group> _next;  // is being read
    std::deque<Group> _coming;   // the crew has them
    std::size_t _count = 0;      // of pieces in both
    std::size_t _bytes = 0;
    std::unique_ptr<core::Crew> _crew;  // ends first: it uses what stands above
};

}  // namespace kxudm::profile
