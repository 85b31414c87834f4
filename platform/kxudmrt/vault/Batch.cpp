#include <utility>

#include "vault/Vault.h"

namespace kxudm::vault {

Batch::Batch(Vault& vault) : vault_(vault), intake_(vault.layout_) {}

Batch::~Batch() = default;

void Batch::CheckUsable() const {
    if (failed_) {
        throw UDMStoreException("A group of files for the vault '" + vault_.layout_.Directory() +
                                "' could not be stored before; add them to a new group");
    }
}

Stored Batch::Add(const std::string& path, const AddOptions& options) {
    CheckUsable();
    return Add(Prepare(path, options));
}

Incoming Batch::Prepare(const std::string& path, const AddOptions& options) {
    return intake_.TakeIn(path, options, &expected_);
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
    pending_.push_back(std::move(incoming));
    return pending_.back().stored;
}

void Batch::Flush() {
    CheckUsable();
    if (pending_.empty()) {
        return;
    }
    failed_ = true;
    intake_.Flush();
    failed_ = false;
}

void Batch::Commit() {
    CheckUsable();
    if (expected_.IsEmpty()) {
        return;
    }
    // Where a flush failed, the machine may have dropped the data and report success the next time.
    failed_ = true;
    if (!pending_.empty()) {
        intake_.Flush();
    }
    for (Incoming& incoming : pending_) {
        const Stored& stored = incoming.stored;
        vault_.layout_.MoveIn(*incoming.file, stored.hash, stored.compressed, incoming.impostor);
    }
    // The names. Also where every content was there already: another process may have just given
    // it its name.
    intake_.Flush();
    pending_.clear();
    expected_.Clear();
    failed_ = false;
}

}  // namespace kxudm::vault
