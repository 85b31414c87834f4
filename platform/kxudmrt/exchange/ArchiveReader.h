// Reads the portable archive of a library as a stream, trusting nothing in it
// (docs/exchange-format.md).
//
// Layer: exchange, over the vault's file layer. Reads from the front to the back in a fixed amount
// of memory, whatever the archive says about itself. Every failure is ArchiveException with one
// line: the archive, the entry, what is wrong and what would be right. After one, only the
// destructor is of use. One thread at a time; the layer is used, not owned.
//
//     ArchiveReader archive(vault::MachineFiles(), path);  // the seal holds
//     archive.Next();                                      // the document
//     while (const auto count = archive.Read(buffer, size)) parse(buffer, count);
//     while (archive.Next()) store(archive.Hash(), archive.Size(), archive);
//     // only now the archive is known to be whole and free of contradictions
#ifndef KXUDMRT_EXCHANGE_ARCHIVEREADER_H
#define KXUDMRT_EXCHANGE_ARCHIVEREADER_H

#include <kxudm/UDMException.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "vault/FileLayer.h"

namespace kxudm::exchange {

// An archive that is none, is damaged, or was made to do damage.
class ArchiveException : public UDMStoreException {
  public:
    using UDMStoreException::UDMStoreException;
};

// What an archive may ask of its reader.
struct ArchiveLimits {
    std::uint64_t entries = 10'000'000;
    // Bytes after decompression: of the document, of one file, of all entries together.
    std::uint64_t document = std::uint64_t{8} << 30;
    std::uint64_t file = std::uint64_t{1} << 40;
    std::uint64_t total = std::uint64_t{16} << 40;
    // How many times its compressed size an entry may have, beyond the first MiB. What the writer
    // makes never reaches 300.
    std::uint64_t ratio = 500;
};

class ArchiveReader {
  public:
    // Opens the archive and checks its seal, for which it reads all of it once. No file of the name
    // is vault::FileError with ENOENT.
    ArchiveReader(vault::FileLayer& files, const std::string& path, ArchiveLimits limits = {});
    ~ArchiveReader();
    ArchiveReader(const ArchiveReader&) = delete;
    ArchiveReader& operator=(const ArchiveReader&) = delete;

    // Goes to the next entry: the document first, then the files in ascending order of their
    // hashes. What was not read of the entry before is read and checked. False at the end, where
    // the directory of the archive has been compared with what was read.
    bool Next();

    // --- Of the entry ---

    [[nodiscard]] const std::string& Name() const;
    [[nodiscard]] bool IsDocument() const;
    // Of a file: what its content's hash should be. The archive's author chose it; the reader of
    // the content checks it. Empty for the document.
    [[nodiscard]] std::string Hash() const;
    // What was announced, which exactly comes or Read throws. Always known for a file.
    [[nodiscard]] std::optional<std::uint64_t> Size() const;
    // The next bytes, at least one; 0 at the end, where the entry has been checked.
    std::size_t Read(char* bytes, std::size_t size);

  private:
    class Stream;
    std::unique_ptr<Stream> stream_;
};

}  // namespace kxudm::exchange

#endif
