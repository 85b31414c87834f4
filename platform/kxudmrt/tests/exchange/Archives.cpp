#include "Archives.h"

#include <archive.h>
#include <archive_entry.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>

#include "exchange/ArchiveFormat.h"
#include "exchange/ArchiveWriter.h"
#include "vault/Sha256.h"

namespace kxudm::exchange {
namespace {

la_ssize_t Collect(archive*, void* text, const void* bytes, std::size_t size) {
    static_cast<std::string*>(text)->append(static_cast<const char*>(bytes), size);
    return static_cast<la_ssize_t>(size);
}

void Demand(archive* archive, bool condition) {
    if (!condition) {
        const char* text = archive_error_string(archive);
        throw std::runtime_error(text != nullptr ? text : "no ZIP file made");
    }
}

void Add(archive* archive, const Entry& entry) {
    archive_entry* head = archive_entry_new();
    archive_entry_set_pathname(head, entry.name.c_str());
    archive_entry_set_filetype(head, entry.isFolder ? AE_IFDIR : AE_IFREG);
    archive_entry_set_perm(head, 0644);
    archive_entry_set_size(head, static_cast<la_int64_t>(entry.content.size()));
    if (!entry.link.empty()) {
        archive_entry_set_filetype(head, AE_IFLNK);
        archive_entry_set_symlink(head, entry.link.c_str());
    }
    if (entry.store) {
        archive_write_zip_set_compression_store(archive);
    } else {
        archive_write_zip_set_compression_deflate(archive);
    }
    Demand(archive, archive_write_header(archive, head) == ARCHIVE_OK);
    const auto count = archive_write_data(archive, entry.content.data(), entry.content.size());
    Demand(archive, !entry.link.empty() || count == static_cast<la_ssize_t>(entry.content.size()));
    archive_entry_free(head);
}

}  // namespace

std::string HashOf(const std::string& content) {
    vault::Sha256 hash;
    hash.Update(content.data(), content.size());
    return hash.Finish();
}

Entries EntriesOf(const std::string& document, const std::vector<std::string>& contents) {
    Entries entries;
    for (const std::string& content : contents) {
        entries.push_back({FileEntry(HashOf(content)), content});
    }
    std::sort(entries.begin(), entries.end(), [](const Entry& one, const Entry& other) {
        return one.name < other.name;
    });
    entries.insert(entries.begin(), {std::string(kDocumentEntry), document});
    return entries;
}

Entries SampleEntries() {
    constexpr std::size_t kMiB = std::size_t{1} << 20;
    return EntriesOf("<library/>",
                     {"",
                      "a",
                      vault::Deck(3000),
                      vault::Noise(3000),
                      vault::Deck(kMiB),
                      vault::Noise(kMiB),
                      vault::Deck(kMiB + 1),
                      vault::Noise(kMiB + 1),
                      std::string(2 * kMiB, '\0')});
}

void WriteArchive(vault::FileLayer& files,
                  const std::string& path,
                  const Entries& entries,
                  std::size_t piece) {
    ArchiveWriter archive(files, path);
    for (const Entry& entry : entries) {
        if (entry.name == kDocumentEntry) {
            archive.Begin(entry.name);
        } else {
            archive.Begin(entry.name, entry.content.size());
        }
        for (std::size_t at = 0; at < entry.content.size(); at += piece) {
            archive.Write(std::string_view(entry.content).substr(at, piece));
        }
        archive.End();
    }
    archive.Finish();
}

Entries ReadArchive(vault::FileLayer& files,
                    const std::string& path,
                    ArchiveLimits limits,
                    std::size_t piece) {
    ArchiveReader archive(files, path, limits);
    std::vector<char> buffer(piece);
    Entries entries;
    while (archive.Next()) {
        std::string content;
        while (const std::size_t count = archive.Read(buffer.data(), buffer.size())) {
            content.append(buffer.data(), count);
        }
        entries.push_back({archive.Name(), content});
    }
    return entries;
}

std::string RefusalOf(const std::string& path, ArchiveLimits limits) {
    try {
        ArchiveReader archive(vault::MachineFiles(), path, limits);
        while (archive.Next()) {
        }
    } catch (const ArchiveException& error) {
        return error.what();
    }
    return {};
}

std::string RefusalOfBytes(const std::string& bytes, ArchiveLimits limits) {
    const vault::Folder folder;
    return RefusalOf(folder.Write("a", bytes), limits);
}

std::string ZipOf(const Entries& entries, const std::string& options) {
    std::string zip;
    archive* archive = archive_write_new();
    archive_write_set_format_zip(archive);
    Demand(archive, archive_write_set_options(archive, options.c_str()) == ARCHIVE_OK);
    archive_write_set_passphrase(archive, "secret");
    archive_write_set_bytes_per_block(archive, 0);
    archive_write_set_bytes_in_last_block(archive, 1);
    Demand(archive, archive_write_open(archive, &zip, nullptr, Collect, nullptr) == ARCHIVE_OK);
    for (const Entry& entry : entries) {
        Add(archive, entry);
    }
    Demand(archive, archive_write_close(archive) == ARCHIVE_OK);
    archive_write_free(archive);
    return zip;
}

std::string Sealed(std::string zip) {
    zip[zip.size() - kEndSize + kCommentLengthAt] = static_cast<char>(kSealSize);
    zip += kSealStart;
    return zip + HashOf(zip);
}

std::string Resealed(std::string archive) {
    archive.resize(archive.size() - kSealDigits);
    return archive + HashOf(archive);
}

std::string Little(std::uint64_t number, std::size_t size) {
    std::string bytes;
    for (; size > 0; --size, number >>= 8) {
        bytes += static_cast<char>(number & 0xFF);
    }
    return bytes;
}

std::string Patched(std::string bytes, std::size_t at, const std::string& patch) {
    return bytes.replace(at, patch.size(), patch);
}

std::size_t RecordAt(const std::string& bytes, const std::string& signature, int number) {
    std::size_t at = bytes.find(signature);
    while (--number > 0 && at != std::string::npos) {
        at = bytes.find(signature, at + 1);
    }
    if (at == std::string::npos) {
        throw std::runtime_error("no such record");
    }
    return at;
}

}  // namespace kxudm::exchange
