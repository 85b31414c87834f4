#include "vault/Delivery.h"

#include <chrono>
#include <thread>
#include <utility>

#include "vault/DocumentName.h"

namespace kxudm::vault {
namespace {

constexpr std::size_t kListBlock = std::size_t{64} << 10;
constexpr std::size_t kHashSize = 64;
// Of the clock that stamps files, in milliseconds; behind it contents that nobody needs stay.
constexpr int kLongestStep = 3000;
constexpr char kCompressed = 1;
constexpr char kImpostor = 2;

}  // namespace

Delivery::Delivery(Vault& vault) : vault_(vault), intake_(vault.layout_) {}

Delivery::~Delivery() {
    if (committed_) {
        return;
    }
    try {
        FileLayer& files = vault_.layout_.Files();
        Visit([&](const Waiting& waiting) {
            try {
                files.Remove(PathOf(waiting));
            } catch (const std::exception&) {
                // What stays is removed with the stale temporaries.
            }
        });
    } catch (const std::exception&) {
        // As above.
    }
}

void Delivery::CheckUsable() const {
    if (failed_ || committed_) {
        throw UDMStoreException("The files for the vault '" + vault_.layout_.Directory() +
                                "' were " + (committed_ ? "stored" : "not stored") +
                                " before; add others to a new delivery");
    }
}

std::string Delivery::PathOf(const Waiting& waiting) const {
    return FolderOf(list_->Path()) + "/" + waiting.file;
}

Stored Delivery::Add(Source& source, const std::string& name, const AddOptions& options) {
    CheckUsable();
    return Add(Prepare(source, name, options));
}

Incoming Delivery::Prepare(Source& source, const std::string& name, const AddOptions& options) {
    return intake_.TakeIn(source, name, options);
}

Stored Delivery::Add(Incoming&& prepared) {
    CheckUsable();
    Incoming incoming = std::move(prepared);
    Stored stored = incoming.stored;
    if (incoming.file != nullptr) {
        Note(std::move(incoming));
    }
    return stored;
}

void Delivery::Note(Incoming&& incoming) {
    if (!list_) {
        list_ = vault_.layout_.NewTemporary();
    }
    const std::string path = incoming.file->Path();
    const auto flags = static_cast<char>((incoming.stored.compressed ? kCompressed : 0) |
                                         (incoming.impostor.empty() ? 0 : kImpostor));
    unwritten_ += incoming.stored.hash + static_cast<char>('0' + flags) +
                  path.substr(path.rfind('/') + 1) + '\n';
    incoming.file->LetGo();
    if (unwritten_.size() >= kListBlock) {
        WriteList();
    }
}

// Where it fails the lines stay in memory, so that each file is removed.
void Delivery::WriteList() {
    failed_ = true;
    list_->Write(unwritten_.data(), unwritten_.size());
    failed_ = false;
    written_ += unwritten_.size();
    unwritten_.clear();
}

void Delivery::Visit(const std::function<void(const Waiting&)>& visit) {
    std::string lines;
    const auto take = [&](std::string_view bytes) {
        lines += bytes;
        std::size_t begin = 0;
        for (std::size_t end = 0; (end = lines.find('\n', begin)) != std::string::npos;
             begin = end + 1) {
            const auto flags = static_cast<char>(lines[begin + kHashSize] - '0');
            visit({lines.substr(begin, kHashSize),
                   (flags & kCompressed) != 0,
                   (flags & kImpostor) != 0,
                   lines.substr(begin + kHashSize + 1, end - begin - kHashSize - 1)});
        }
        lines.erase(0, begin);
    };
    if (written_ > 0) {
        FileLayer& files = vault_.layout_.Files();
        FileHandle list(files);
        if (!files.OpenToRead(list_->Path(), list.File())) {
            throw UDMStoreException("'" + Printable(list_->Path()) +
                                    "', the list of files for the vault, is gone; try again");
        }
        std::string block(kListBlock, '\0');
        for (std::uint64_t left = written_; left > 0;) {
            const std::size_t wanted =
                left < kListBlock ? static_cast<std::size_t>(left) : kListBlock;
            const std::size_t count = files.Read(list.File(), block.data(), wanted);
            if (count == 0) {
                throw UDMStoreException("'" + Printable(list_->Path()) +
                                        "', the list of files for the vault, was cut; try again");
            }
            take({block.data(), count});
            left -= count;
        }
    }
    take(unwritten_);
}

void Delivery::Flush() {
    CheckUsable();
    if (!intake_.HasBegun()) {
        return;
    }
    failed_ = true;
    intake_.Flush();
    failed_ = false;
}

void Delivery::Commit() {
    CheckUsable();
    if (!intake_.HasBegun()) {
        committed_ = true;
        return;
    }
    Flush();
    // Where a flush failed, the machine may have dropped the data and report success the next time.
    failed_ = true;
    if (list_) {
        RememberNow();
    }
    Layout& layout = vault_.layout_;
    Visit([&](const Waiting& waiting) {
        TemporaryFile file(layout.Files(), PathOf(waiting));
        layout.MoveIn(
            file,
            waiting.hash,
            waiting.compressed,
            waiting.hasImpostor ? layout.NameOf(waiting.hash, !waiting.compressed) : std::string());
    });
    // The names. Also where every content was there already: another process may have just given
    // it its name.
    intake_.Flush();
    failed_ = false;
    committed_ = true;
}

// By the clock that stamps files, which moves in steps: later than what was written, and no later
// than what anybody adds once it has its name.
void Delivery::RememberNow() {
    FileLayer& files = vault_.layout_.Files();
    FileStatus status;
    const auto now = [&] {
        files.Touch(list_->Path());
        files.Status(list_->Path(), status);
        return status.modified / 1000;
    };
    const std::int64_t before = now();
    named_ = before;
    for (int i = 0; named_ == before && i < kLongestStep; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        named_ = now();
    }
}

void Delivery::TakeBack(const std::function<bool(const std::string& hash)>& used) {
    if (named_ == 0) {
        return;
    }
    Visit([&](const Waiting& waiting) {
        Entry entry;
        if (vault_.layout_.Find(waiting.hash, entry) && !used(waiting.hash)) {
            vault_.layout_.RemoveOlder(entry, named_);
        }
    });
}

}  // namespace kxudm::vault
