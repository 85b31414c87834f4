#include "exchange/ArchiveSeal.h"

#include <algorithm>
#include <charconv>
#include <memory>
#include <string_view>

#include "exchange/ArchiveFormat.h"
#include "exchange/ArchiveReader.h"
#include "vault/DocumentName.h"
#include "vault/Sha256.h"

namespace kxudm::exchange {
namespace {

constexpr std::size_t kInput = std::size_t{1} << 20;
// End record and seal.
constexpr std::size_t kLastSize = kEndSize + kSealSize;
constexpr std::size_t kTailSize = kEnd64Size + kLocatorSize + kLastSize;

struct Contents {
    std::string tail = {};  // the last bytes, at most kTailSize
    std::string hash = {};  // of all but the digits of the seal
};

Contents ReadThrough(vault::FileLayer& files, vault::OpenFile& file, std::uint64_t size) {
    const auto buffer = std::make_unique_for_overwrite<char[]>(kInput);
    const std::uint64_t hashed = size - std::min<std::uint64_t>(size, kSealDigits);
    const std::uint64_t tailAt = size - std::min<std::uint64_t>(size, kTailSize);
    Contents contents;
    vault::Sha256 hash;
    std::uint64_t position = 0;
    while (const std::size_t count = files.Read(file, buffer.get(), kInput)) {
        const std::uint64_t next = position + count;
        if (next > size) {
            RefuseArchive(file.path, "it grows while it is read; try again once nobody writes it");
        }
        if (position < hashed) {
            hash.Update(buffer.get(), static_cast<std::size_t>(std::min(next, hashed) - position));
        }
        if (next > tailAt) {
            const auto skip = static_cast<std::size_t>(std::max(position, tailAt) - position);
            contents.tail.append(buffer.get() + skip, count - skip);
        }
        position = next;
    }
    if (position != size) {
        RefuseArchive(file.path, "it shrank while it was read; try again once nobody writes it");
    }
    contents.hash = hash.Finish();
    return contents;
}

// A later version may have another end, but keeps the mark and the number behind it.
void CheckVersion(const std::string& path, std::string_view tail) {
    const std::size_t mark = tail.rfind(kSealMark);
    if (mark == std::string_view::npos) {
        RefuseArchive(path,
                      "it has no seal at its end, so it is no archive of a library or was "
                      "cut short; take one that was exported whole");
    }
    const std::string_view number = tail.substr(mark + kSealMark.size());
    unsigned version = 0;
    const auto [end, error] =
        std::from_chars(number.data(), number.data() + number.size(), version);
    if (error == std::errc() && version > kArchiveVersion) {
        RefuseArchive(path,
                      "it is of version " + std::to_string(version) +
                          " of the format and this program reads up to version " +
                          std::to_string(kArchiveVersion) +
                          "; use a newer program or export for this one");
    }
}

// The fields that don't fit into the end record stand in a larger one before it.
ArchiveEnd EndOf(const std::string& path, std::string_view tail, std::uint64_t size) {
    const std::string_view last = tail.substr(tail.size() - kLastSize);
    ArchiveEnd end{NumberAt(last, 16, 4), NumberAt(last, 12, 4), NumberAt(last, 10, 2)};
    std::uint64_t endAt = size - kLastSize;
    const std::string_view larger = tail.substr(0, tail.size() - kLastSize);
    const bool isLarge = larger.size() == kEnd64Size + kLocatorSize &&
                         larger.starts_with(kEnd64Signature) &&
                         larger.substr(kEnd64Size).starts_with(kLocatorSignature);
    if (isLarge) {
        endAt -= kEnd64Size + kLocatorSize;
        const ArchiveEnd large{
            NumberAt(larger, 48, 8), NumberAt(larger, 40, 8), NumberAt(larger, 32, 8)};
        const bool agree =
            NumberAt(larger, kEnd64Size + 8, 8) == endAt &&
            end.directoryAt == std::min<std::uint64_t>(large.directoryAt, 0xFFFFFFFF) &&
            end.directorySize == std::min<std::uint64_t>(large.directorySize, 0xFFFFFFFF) &&
            end.entries == std::min<std::uint64_t>(large.entries, 0xFFFF);
        if (!agree) {
            RefuseArchive(path, "the records at its end contradict each other; export it again");
        }
        end = large;
    }
    if (end.directoryAt > endAt || end.directorySize != endAt - end.directoryAt) {
        RefuseArchive(path, "its directory is not where its end says; export it again");
    }
    return end;
}

}  // namespace

void RefuseArchive(const std::string& path, const std::string& what) {
    throw ArchiveException("The archive '" + vault::Printable(path) + "' can't be read: " + what);
}

ArchiveEnd CheckSeal(vault::FileLayer& files, vault::OpenFile& file, std::uint64_t size) {
    const Contents contents = ReadThrough(files, file, size);
    const std::string_view tail = contents.tail;
    CheckVersion(file.path, tail);
    if (tail.size() < kLastSize || !tail.substr(tail.size() - kSealSize).starts_with(kSealStart) ||
        tail.substr(tail.size() - kSealDigits) != contents.hash) {
        RefuseArchive(file.path,
                      "its bytes are not those that were sealed, so it was changed or "
                      "damaged; copy or export it again");
    }
    const std::string_view last = tail.substr(tail.size() - kLastSize);
    if (!last.starts_with(kEndSignature) || NumberAt(last, kCommentLengthAt, 2) != kSealSize) {
        RefuseArchive(file.path, "its seal is not the comment of a ZIP file; export it again");
    }
    return EndOf(file.path, tail, size);
}

}  // namespace kxudm::exchange
