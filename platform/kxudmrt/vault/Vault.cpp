#include "vault/Vault.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "vault/DocumentName.h"

namespace kxudm::vault {
namespace {

// Where a text that was cut ends, so that its last character is whole. Texts in other encodings
// lose at most three bytes.
std::size_t WholeCharacters(const std::string& text) {
    std::size_t start = text.size();
    for (std::size_t i = 1; i <= 4 && i <= text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[text.size() - i]);
        if ((byte & 0xC0U) == 0x80U) {
            continue;
        }
        const std::size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        if (length > i) {
            start = text.size() - i;
        }
        break;
    }
    return start;
}

}  // namespace

Vault::Vault(std::string directory, FileLayer& files)
    : layout_(std::move(directory), files), intake_(layout_) {
    if (layout_.Directory().empty()) {
        throw UDMException("A vault needs a directory; its path is empty");
    }
}

Stored Vault::Add(const std::string& path, const AddOptions& options) {
    try {
        Incoming incoming = intake_.TakeIn(path, options);
        if (incoming.file != nullptr) {
            incoming.file->Flush();
            incoming.file->Close();
            layout_.MoveIn(*incoming.file,
                           incoming.stored.hash,
                           incoming.stored.compressed,
                           incoming.impostor);
        }
        // Also where the content was there: another process may have just given it its name.
        layout_.FlushName(incoming.stored.hash);
        return incoming.stored;
    } catch (const FileError& error) {
        throw FileError("'" + Printable(path) + "' was not stored", error);
    }
}

bool Vault::Holds(const std::string& hash) const {
    CheckHash(hash);
    Entry entry;
    return layout_.Find(hash, entry);
}

std::string Vault::PathOf(const std::string& hash) const {
    CheckHash(hash);
    return layout_.PathOf(hash);
}

std::unique_ptr<ContentReader> Vault::Open(const std::string& hash) const {
    return OpenWith(std::make_shared<ReaderMemory>(), hash);
}

std::unique_ptr<ContentReader> Vault::OpenWith(std::shared_ptr<ReaderMemory> memory,
                                               const std::string& hash) const {
    CheckHash(hash);
    Entry entry;
    if (!layout_.Find(hash, entry)) {
        throw MissingException("The vault '" + layout_.Directory() + "' doesn't hold content " +
                               hash + "; restore its file from a backup, or add the file again");
    }
    return std::make_unique<ContentReader>(
        layout_.Files(), entry.path, hash, entry.compressed, std::move(memory));
}

bool Vault::Retrieve(const std::string& hash,
                     const std::string& target,
                     const RetrieveOptions& options) {
    CheckHash(hash);
    try {
        FileStatus status;
        if (layout_.Files().Status(target, status)) {
            CheckTarget(target);
            if (!options.overwrite) {
                if (IsContent(hash, target)) {
                    return false;
                }
                throw UDMStoreException("'" + Printable(target) +
                                        "' is there already and differs; allow to overwrite it or "
                                        "choose another place");
            }
        }
        CopyOut(hash, target, options);
        return true;
    } catch (const FileError& error) {
        throw FileError("'" + Printable(target) + "' was not retrieved", error);
    }
}

// What can't be a file that somebody retrieved is never replaced.
void Vault::CheckTarget(const std::string& target) const {
    FileStatus status;
    if (layout_.Files().Status(target, status) && status.kind != FileKind::Regular &&
        status.kind != FileKind::Link) {
        throw UDMStoreException("'" + Printable(target) + "' is " +
                                (status.kind == FileKind::Folder ? "a folder" : "no regular file") +
                                "; choose another place");
    }
}

bool Vault::IsContent(const std::string& hash, const std::string& path) {
    FileHandle handle(layout_.Files());
    if (!layout_.Files().OpenToRead(path, handle.File()) ||
        layout_.Files().Status(handle.File()).kind != FileKind::Regular) {
        return false;
    }
    Sha256 found;
    while (const std::size_t count =
               layout_.Files().Read(handle.File(), fetcher_.Block(), kBlock)) {
        found.Update(fetcher_.Block(), count);
    }
    return found.Finish() == hash;
}

std::unique_ptr<TemporaryFile> Vault::Fetch(const std::string& hash,
                                            const std::string& target,
                                            const RetrieveOptions& options) {
    return fetcher_.Fetch(*this, hash, target, options);
}

void Vault::CopyOut(const std::string& hash,
                    const std::string& target,
                    const RetrieveOptions& options) {
    const std::unique_ptr<TemporaryFile> file = Fetch(hash, target, options);
    if (options.overwrite) {
        file->MoveTo(target);
    } else if (!file->MoveToNew(target)) {
        throw FileError(EEXIST, "made", target);
    }
    if (options.flush) {
        layout_.Files().FlushFolder(FolderOf(target));
    }
}

std::string Vault::ReadText(const std::string& hash, std::size_t limit) {
    char* const block = fetcher_.Block();
    const auto content = OpenWith(fetcher_.Memory(), hash);
    std::string text;
    // Reads on to the end where the limit is met exactly, so that what is whole is proven.
    bool more = true;
    while (more) {
        const std::size_t count = content->Read(block, kBlock);
        if (count == 0) {
            return text;
        }
        more = count <= limit - text.size();
        text.append(block, std::min(count, limit - text.size()));
    }
    text.resize(WholeCharacters(text));
    return text;
}

Finding Vault::Verify(const std::string& hash) {
    char* const block = fetcher_.Block();
    CheckHash(hash);
    try {
        const auto content = OpenWith(fetcher_.Memory(), hash);
        while (content->Read(block, kBlock) > 0) {
        }
        return {};
    } catch (const DamagedException& damage) {
        return {Finding::State::Damaged, damage.what()};
    } catch (const MissingException& missing) {
        return {Finding::State::Missing, missing.what()};
    } catch (const FileError& error) {
        return {Finding::State::Unreadable, error.what()};
    }
}

bool Vault::Remove(const std::string& hash) {
    CheckHash(hash);
    return layout_.Remove(hash);
}

std::size_t Vault::RemoveStaleTemporaries(core::Clock& clock) const {
    return layout_.RemoveStaleTemporaries(clock.NowMicroseconds());
}

}  // namespace kxudm::vault
