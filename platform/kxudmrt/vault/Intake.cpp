#include "vault/Intake.h"

#include <utility>

#include "vault/DocumentName.h"

namespace kxudm::vault {
namespace {

// Enough to tell text from anything else.
constexpr std::size_t kTextSample = std::size_t{64} << 10;

// Without a branch, so that the compiler takes many bytes at a time. Beside the blanks (8 to 13):
// the end mark of old systems (26), and the escape sequences of listings (27).
bool AreTextBytes(std::string_view bytes) {
    unsigned char bad = 0;
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        const auto afterBackspace = static_cast<unsigned char>(byte - 8);
        const auto asEven = static_cast<unsigned char>(byte & 0xFEU);
        bad |= static_cast<unsigned char>((byte < 0x20) & (afterBackspace > 5) & (asEven != 0x1A));
    }
    return bad == 0;
}

// A damaged file of the vault must not stand for a content that can be stored afresh.
bool MayBe(const Entry& entry, std::uint64_t size) {
    return entry.compressed ? entry.storedSize > 0 && entry.storedSize < size
                            : entry.storedSize == size;
}

}  // namespace

bool LooksLikeText(std::string_view beginning) {
    constexpr std::size_t atOnce = 512;
    beginning = beginning.substr(0, kTextSample);
    while (beginning.size() > atOnce) {
        if (!AreTextBytes(beginning.substr(0, atOnce))) {
            return false;
        }
        beginning.remove_prefix(atOnce);
    }
    return AreTextBytes(beginning);
}

struct Intake::Pass {
    Source& source;
    const std::string& path;
    const AddOptions& options;
    const Expected* expected;
    Incoming result;

    void Advance(std::uint64_t bytes) const {
        if (options.progress && !options.progress(bytes)) {
            throw StoppedException("Storing '" + Printable(path) +
                                   "' was stopped; nothing of it was stored");
        }
    }
};

Incoming Intake::TakeIn(const std::string& path,
                        const AddOptions& options,
                        const Expected* expected) {
    SourceFile source(layout_.Files(), path);
    return TakeIn(source, path, options, expected);
}

Incoming Intake::TakeIn(Source& source,
                        const std::string& name,
                        const AddOptions& options,
                        const Expected* expected) {
    Pass pass{source, name, options, expected, {}};
    hash_.Begin();
    const std::string_view beginning(Block(), source.Fill(Block(), kBlock));
    Stored& stored = pass.result.stored;
    stored.size = source.Size();
    stored.modified = source.Modified();
    stored.isText = LooksLikeText(beginning);
    if (options.beginning) {
        options.beginning(beginning);
    }
    if (beginning.size() < kBlock) {
        TakeSmall(pass, beginning);
    } else {
        try {
            TakeLarge(pass, beginning);
        } catch (...) {
            hash_.Stop();
            compressor_->Stop();
            throw;
        }
    }
    return std::move(pass.result);
}

char* Intake::Block() {
    if (blocks_ == nullptr) {
        blocks_ = std::make_unique_for_overwrite<char[]>(2 * kBlock);
        compressor_ = std::make_unique<Compressor>();
    }
    return blocks_.get();
}

// The content is in memory, so its hash is known before anything is written.
void Intake::TakeSmall(Pass& pass, std::string_view content) {
    Incoming& result = pass.result;
    pass.source.CheckUnchanged();
    hash_.Update(content.data(), content.size());
    result.stored.hash = hash_.Finish();
    pass.Advance(content.size());
    if (IsThere(result, pass.expected)) {
        return;
    }
    std::string_view bytes = content;
    if (pass.options.mayCompress) {
        const std::string_view smaller = compressor_->CompressWhole(content);
        result.stored.compressed = !smaller.empty();
        bytes = smaller.empty() ? content : smaller;
    }
    result.file = layout_.NewTemporary();
    result.file->Write(bytes.data(), bytes.size());
    result.stored.storedSize = bytes.size();
}

void Intake::TakeLarge(Pass& pass, std::string_view beginning) {
    Incoming& result = pass.result;
    Stored& stored = result.stored;
    stored.compressed = pass.options.mayCompress && compressor_->LooksWorthwhile(beginning);
    result.file = layout_.NewTemporary();
    const auto write = [&result](const char* bytes, std::size_t size) {
        result.file->Write(bytes, size);
        result.stored.storedSize += size;
    };
    if (stored.compressed) {
        compressor_->Begin(stored.size);
    }
    if (stored.size >= kLarge) {
        hash_.GoBeside();
    }
    char* block = Block();
    char* other = block + kBlock;
    for (std::string_view bytes = beginning; !bytes.empty();
         bytes = {block, pass.source.Fill(block, kBlock)}) {
        hash_.Update(bytes.data(), bytes.size());
        if (stored.compressed) {
            compressor_->Put(bytes, write);
        } else {
            write(bytes.data(), bytes.size());
        }
        pass.Advance(bytes.size());
        std::swap(block, other);
    }
    pass.source.CheckUnchanged();
    if (stored.compressed) {
        compressor_->End(write);
    }
    stored.hash = hash_.Finish();
    if (IsThere(result, pass.expected)) {
        result.file->Discard();
        result.file.reset();
    }
}

bool Intake::IsThere(Incoming& incoming, const Expected* expected) const {
    Stored& stored = incoming.stored;
    if (Stored same; expected != nullptr && expected->Find(stored.hash, same)) {
        stored.storedSize = same.storedSize;
        stored.compressed = same.compressed;
        stored.wasThere = true;
        return true;
    }
    Entry entry;
    if (!layout_.Find(stored.hash, entry)) {
        return false;
    }
    if (!MayBe(entry, stored.size)) {
        incoming.impostor = entry.path;
        return false;
    }
    if (!layout_.Freshen(entry)) {
        return false;
    }
    stored.storedSize = entry.storedSize;
    stored.compressed = entry.compressed;
    stored.wasThere = true;
    return true;
}

}  // namespace kxudm::vault
