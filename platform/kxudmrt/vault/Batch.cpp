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
    const std::lock_guard lock(mutex_);
    if (directory_.File().descriptor < 0) {
        vault_.layout_.OpenDirectory(directory_.File());
    }
}

Stored Batch::Add(const std::string& path, const AddOptions& options) {
    CheckUsable();
    try {
        OpenDirectory();
        return Add(vault_.intake_.TakeIn(path, options, &expected_));
    } catch (const FileError& error) {
        throw FileError("'" + Printable(path) + "' was not stored", error);
    }
}

Stored Batch::Add(Source& source, const std::string& name, const AddOptions& options) {
    CheckUsable();
    try {
        OpenDirectory();
        return Add(vault_.intake_.TakeIn(source, name, options, &expected_));
    } catch (const FileError& error) {
        throw FileError("'" + Printable(name) + "' was not stored", error);
    }
}

Stored Batch::Add(Incoming&& prepared) {
    CheckUsable();
    Incoming incoming = std::move(prepared);
    Stored& stored = incoming.stored;
    // An equal file may have been prepared at the same time.
    if (Stored same; incoming.file != nullptr && expected_.Find(stored.hash, same)) {
        incoming.file->Discard();
        incoming.file.reset();
        stored.storedSize = same.storedSize;
        stored.compressed = same.compressed;
        stored.wasThere = true;
    }
    expected_.Add(stored);
    if (incoming.file == nullptr) {
        return stored;
    }
    incoming.file->Close();
    pending_.push_back(std::move(incoming));
    return pending_.back().stored;
}

Incoming Batch::Prepare(const std::string& path, const AddOptions& options) {
    try {
        OpenDirectory();
        std::unique_ptr<Intake> intake = BorrowIntake();
        Incoming incoming = intake->TakeIn(path, options, &expected_);
        GiveBack(std::move(intake));
        if (incoming.file != nullptr) {
            // Thousands may wait for their turn.
            incoming.file->Close();
        }
        return incoming;
    } catch (const FileError& error) {
        throw FileError("'" + Printable(path) + "' was not stored", error);
    }
}

std::unique_ptr<Intake> Batch::BorrowIntake() {
    const std::lock_guard lock(mutex_);
    if (intakes_.empty()) {
        return std::make_unique<Intake>(vault_.layout_);
    }
    std::unique_ptr<Intake> intake = std::move(intakes_.back());
    intakes_.pop_back();
    return intake;
}

void Batch::GiveBack(std::unique_ptr<Intake> intake) {
    const std::lock_guard lock(mutex_);
    intakes_.push_back(std::move(intake));
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
    if (expected_.IsEmpty()) {
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
    expected_.Clear();
    failed_ = false;
}

}  // namespace kxudm::vault
