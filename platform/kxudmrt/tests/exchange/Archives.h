// What the tests of archives share: writing and reading whole ones, and making bad ones whose seal
// is right.
#ifndef KXUDMRT_TESTS_EXCHANGE_ARCHIVES_H
#define KXUDMRT_TESTS_EXCHANGE_ARCHIVES_H

#include <cstdint>
#include <string>
#include <vector>

#include "../vault/Support.h"
#include "exchange/ArchiveReader.h"

namespace kxudm::exchange {

struct Entry {
    std::string name = {};
    std::string content = {};
    // For the archives that a ZIP library makes without our rules.
    bool store = false;
    std::string link = {};
    bool isFolder = false;

    bool operator==(const Entry& other) const {
        return name == other.name && content == other.content;
    }
};
using Entries = std::vector<Entry>;

std::string HashOf(const std::string& content);
// The document and the contents as the entries of an archive, in order.
Entries EntriesOf(const std::string& document, const std::vector<std::string>& contents);
// Contents that take each way through the writer.
Entries SampleEntries();

// With the writer, in pieces of that many bytes.
void WriteArchive(vault::FileLayer& files,
                  const std::string& path,
                  const Entries& entries,
                  std::size_t piece = 100'000);
// To the end.
Entries ReadArchive(vault::FileLayer& files,
                    const std::string& path,
                    ArchiveLimits limits = {},
                    std::size_t piece = 100'000);
// The text of the refusal; empty if the archive was read to its end.
std::string RefusalOf(const std::string& path, ArchiveLimits limits = {});
// The same of an archive of these bytes.
std::string RefusalOfBytes(const std::string& bytes, ArchiveLimits limits = {});

// A ZIP file as any author may make it.
std::string ZipOf(const Entries& entries, const std::string& options = "");
// The ZIP file with a right seal as its comment.
std::string Sealed(std::string zip);
// The archive with its seal made right again after a change.
std::string Resealed(std::string archive);

std::string Little(std::uint64_t number, std::size_t size);
// Puts the bytes in place of others.
std::string Patched(std::string bytes, std::size_t at, const std::string& patch);
// Where the n-th record with this signature begins.
std::size_t RecordAt(const std::string& bytes, const std::string& signature, int number = 1);

}  // namespace kxudm::exchange

#endif
