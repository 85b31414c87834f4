#include "vault/Fetcher.h"

#include <utility>

#include "vault/Beginning.h"
#include "vault/DocumentName.h"
#include "vault/Vault.h"

namespace kxudm::vault {
namespace {

// What umask leaves of it is how a new file of the user's looks.
constexpr unsigned kUserFile = 0666;

// A thread costs as much as hashing about a tenth of this.
constexpr std::size_t kBlocksOfLarge = 4;

}  // namespace

void Fetcher::MakeMemory() {
    if (blocks_ == nullptr) {
        blocks_ = std::make_unique_for_overwrite<char[]>(2 * kBlock);
        memory_ = std::make_shared<ReaderMemory>();
    }
}

char* Fetcher::Block() {
    MakeMemory();
    return blocks_.get();
}

const std::shared_ptr<ReaderMemory>& Fetcher::Memory() {
    MakeMemory();
    return memory_;
}

std::unique_ptr<TemporaryFile> Fetcher::Fetch(const Vault& vault,
                                              const std::string& hash,
                                              const std::string& target,
                                              const RetrieveOptions& options) {
    char* block = Block();
    char* other = block + kBlock;
    const auto content = vault.OpenWith(memory_, hash);
    std::size_t count = content->Read(block, kBlock);
    auto file = std::make_unique<TemporaryFile>(vault.Files(), FolderOf(target), kUserFile);
    for (std::size_t blocks = 1; count > 0; ++blocks) {
        if (blocks == kBlocksOfLarge) {
            content->HashBeside();
        }
        file->Write(block, count);
        if (options.progress && !options.progress(count)) {
            throw StoppedException("Retrieving '" + Printable(target) +
                                   "' was stopped; it is as it was");
        }
        std::swap(block, other);
        count = content->Read(block, kBlock);
    }
    if (options.modified) {
        file->SetModified(*options.modified);
    }
    if (options.flush) {
        file->Flush();
    }
    file->Close();
    return file;
}

Finding Fetcher::Verify(const Vault& vault, const std::string& hash, const VerifyOptions& options) {
    CheckHash(hash);
    std::string unused;
    Beginning beginning(options.text != nullptr ? *options.text : unused, options.limit);
    char* const block = Block();
    try {
        const auto content = vault.OpenWith(memory_, hash);
        for (std::size_t count = 0; (count = content->Read(block, kBlock)) > 0;) {
            beginning.Append(block, count);
            if (options.progress && !options.progress(count)) {
                throw StoppedException("Verifying the content " + hash + " was stopped");
            }
        }
        beginning.End();
        return {};
    } catch (const DamagedException& damage) {
        return {Finding::State::Damaged, damage.what()};
    } catch (const MissingException& missing) {
        return {Finding::State::Missing, missing.what()};
    } catch (const FileError& error) {
        return {Finding::State::Unreadable, error.what()};
    }
}

}  // namespace kxudm::vault
