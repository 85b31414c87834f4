// What the writer and the reader of archives agree on: names of entries, the records at the end of
// a ZIP file, and the seal (docs/exchange-format.md).
//
// Layer: exchange, inside.
#ifndef KXUDMRT_EXCHANGE_ARCHIVEFORMAT_H
#define KXUDMRT_EXCHANGE_ARCHIVEFORMAT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kxudm::exchange {

// Version of the container. A reader knows its own and all before.
inline constexpr unsigned kArchiveVersion = 1;

// How much of an archive, an entry or a document is in memory at a time.
inline constexpr std::size_t kPiece = std::size_t{256} << 10;

inline constexpr std::string_view kFileFolder = "files/";

// The seal is the comment of the ZIP file: kSealMark, the version, " sha256 ", and the digits of
// the SHA-256 over every byte of the file before these digits.
inline constexpr std::string_view kSealMark = "kxudm-archive ";
inline constexpr std::string_view kSealStart = "kxudm-archive 1 sha256 ";
inline constexpr std::size_t kSealDigits = 64;
inline constexpr std::size_t kSealSize = kSealStart.size() + kSealDigits;

inline constexpr std::string_view kLocalSignature = "PK\3\4";
inline constexpr std::string_view kDirectorySignature = "PK\1\2";
inline constexpr std::string_view kDescriptorSignature = "PK\7\10";
inline constexpr std::string_view kEndSignature = "PK\5\6";
inline constexpr std::string_view kEnd64Signature = "PK\6\6";
inline constexpr std::string_view kLocatorSignature = "PK\6\7";

// Sizes of the records, of those with variable parts without these.
inline constexpr std::size_t kLocalSize = 30;
inline constexpr std::size_t kDirectoryRecordSize = 46;
inline constexpr std::size_t kEndSize = 22;
inline constexpr std::size_t kEnd64Size = 56;
inline constexpr std::size_t kLocatorSize = 20;
inline constexpr std::size_t kCommentLengthAt = 20;  // in the end record

// A number of 1 to 8 bytes, the lowest first.
std::uint64_t NumberAt(std::string_view bytes, std::size_t at, std::size_t size);

// Whether an entry of this name is the content of a file.
bool IsFileEntry(std::string_view name);

}  // namespace kxudm::exchange

#endif
