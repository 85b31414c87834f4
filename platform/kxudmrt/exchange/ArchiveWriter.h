// Writes the portable archive of a library: a ZIP file with the document first and the file
// contents under their hashes, sealed at its end (docs/exchange-format.md).
//
// Layer: exchange, over the vault's file layer. What is written goes straight to the file; memory
// is a fixed few MiB and about 250 bytes for each entry. The same entries give the same
// bytes, whenever and wherever they are written. One thread at a time; the layer is used, not
// owned.
//
//     ArchiveWriter archive(vault::MachineFiles(), "/home/u/plates.kxa");
//     archive.Begin(kDocumentEntry);
//     archive.Write(xml);
//     archive.End();
//     archive.Begin(FileEntry(hash), size);  // hashes in ascending order
//     while (read) archive.Write(piece);
//     archive.End();
//     archive.Finish();  // only now the file has its name
#ifndef KXUDMRT_EXCHANGE_ARCHIVEWRITER_H
#define KXUDMRT_EXCHANGE_ARCHIVEWRITER_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "vault/FileLayer.h"

namespace kxudm::exchange {

// The name of the first entry.
inline constexpr std::string_view kDocumentEntry = "library.xml";
// The name of the entry with the content of this hash.
std::string FileEntry(const std::string& hash);

class ArchiveWriter {
  public:
    // Makes a file with a temporary name in the folder of `target`, which must be there
    // (vault::FileError). What has the name of the target stays as it is until Finish.
    ArchiveWriter(vault::FileLayer& files, const std::string& target);
    // Removes the temporary file unless Finish succeeded.
    ~ArchiveWriter();
    ArchiveWriter(const ArchiveWriter&) = delete;
    ArchiveWriter& operator=(const ArchiveWriter&) = delete;

    // Begins an entry: the document, whose size need not be known, then files in ascending order
    // of their names. UDMException where the name or the order is another; nothing is written then.
    // After any other failure, of these calls too, only the destructor is of use.
    void Begin(std::string_view name);
    // The same, for an entry of exactly `size` bytes.
    void Begin(std::string_view name, std::uint64_t size);
    void Write(std::string_view bytes);
    // UDMException if fewer or more bytes came than were announced.
    void End();

    // Seals the archive, flushes it to the disk and gives it its name; replaces what has the name.
    // UDMException without a document.
    void Finish();

  private:
    class Stream;
    std::unique_ptr<Stream> stream_;
};

}  // namespace kxudm::exchange

#endif
