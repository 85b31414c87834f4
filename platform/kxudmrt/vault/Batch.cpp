#include <utility>

#include "vault/DocumentName.h"
#include "vault/Vault.h"

namespace kxudm::vault {

Batch::Batch(Vault& vault) : vault_(vault), directory_(vault.layout_.Files()) {}

Batch::~Batch() = default;

void Batch::CheckUsable() const {
    if (failed_) {
        throw UDMStoreException("A group of files for the vault '" + vault_.layout_.Directory() +
                                "' could not be stored before; add them to a new group");
    }
}

// Before the first byte is written: a flush reports only what failed since then.
void Batch::OpenDirectory() {
    if (directory_.File().descriptor < 0) {
        vault_.layout_.OpenDirectory(directory_.File());
    }
}

Stored Batch::Keep(Incoming&& incoming) {
    const Stored stored = incoming.stored;
    if (incoming.file != nullptr) {
        incoming.file->Close();
        pending_.push_back(std::move(incoming));
    }
    expected_.emplace(stored.hash, stored);
    return stored;
}

Stored Batch::Add(const std::string& path, const AddOptions& options) {
    CheckUsable();
    try {
        OpenDirectory();
        return Keep(vault_.intake_.TakeIn(path, options, &expected_));
    } catch (const FileError& error) {
        throw FileError("'" + Printable(path) + "' was not stored", error);
    }
}

Stored Batch::Add(Source& source, const std::string& name, const AddOptions& options) {
    CheckUsable();
    try {
        OpenDirectory();
        return Keep(vault_.intake_.TakeIn(source, name, options, &expected_));
    } catch (const FileError& error) {
        throw FileError("'" + Printable(name) + "' was not stored", error);
    }
}

void Batch::Flush() {
    CheckUsable();
    if (pending_.empty()) {
        return;
    }
    failed_ = true;
    vault_.layout_.Files().FlushFileSystem(directory_.File());
    failed_ = false;
}

void Batch::Commit() {
    CheckUsable();
    if (expected_.empty()) {
        return;
    }
    // Where a flush failed, the machine may have dropped the data and report success the next time.
    failed_ = true;
    FileLayer& files = vault_.layout_.Files();
    if (!pending_.empty()) {
        files.FlushFileSystem(directory_.File());
    }
    for (Incoming& incoming : pending_) {
        const Stored& stored = incoming.stored;
        vault_.layout_.MoveIn(*incoming.file, stored.hash, stored.compressed, incoming.impostor);
    }
    // The names. Also where every content was there already: another process may have just given
    // it its name.
    files.FlushFileSystem(directory_.File());
    pending_.clear();
    expected_.clear();
    failed_ = false;
}

}  // namespace kxudm::vault
