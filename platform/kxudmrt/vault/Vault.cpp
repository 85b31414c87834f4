#include "vault/Vault.h"

#include <algorithm>
#include <cerrno>
#include <utility>

#include "vault/Beginning.h"
#include "vault/DocumentName.h"

namespace kxudm::vault {
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
    Beginning beginning(text, limit);
    // Reads on to the end where the limit is met exactly, so that what is whole is proven.
    for (std::size_t count = 0; !beginning.IsCut() && (count = content->Read(block, kBlock)) > 0;) {
        beginning.Append(block, count);
    }
    beginning.End();
    return text;
}

Finding Vault::Verify(const std::string& hash, const VerifyOptions& options) {
    return fetcher_.Verify(*this, hash, options);
}

bool Vault::Remove(const std::string& hash) {
    CheckHash(hash);
    return layout_.Remove(hash);
}

std::size_t Vault::RemoveStaleTemporaries(core::Clock& clock) const {
    return layout_.RemoveStaleTemporaries(clock.NowMicroseconds());
}

}  // namespace kxudm::vault
