// A vault keeps the contents of files, each distinct content once, under its SHA-256.
//
// A file is taken in by one pass over it: it is hashed while it is copied to a temporary name
// inside the vault (compressed where a sample says that it shrinks by a tenth or more), flushed,
// and renamed to its final name. So what has a final name is whole, at every moment and after every
// crash; a crash leaves at most temporaries, which RemoveStaleTemporaries takes away, and contents
// that no row of the library names yet. Rows are committed after Add or Batch::Commit has returned:
// then there is never a row without its content. Nothing in a vault is ever changed, only added
// and, by a purge, removed.
//
// A content that is added again is freshened (Entry::modified is now): a purge that leaves
// young contents alone can't take one away from a session that is about to commit its row.
//
//     Vault vault("/libraries/crash/vault");
//     const Stored deck = vault.Add("/home/u/front.inp");
//     ...commit the row...
//     vault.Retrieve(deck.hash, "/home/u/back.inp", {.modified = deck.modified});
//
// Many files at once are flushed together:
//
//     Batch batch(vault);
//     for (const auto& file : files) rows.push_back(batch.Add(file));
//     batch.Commit();
//     ...commit the rows...
//
// Layer: vault. A vault is used by one thread at a time, apart from what Fetcher.h, Batch::Prepare
// and Delivery::Prepare allow; any number of vaults, processes and machines may use one directory.
// Memory is a few MiB for each thread, whatever the files' sizes. Failures are UDMStoreException
// (FileError where the machine refused something, DamagedException where stored bytes are wrong,
// MissingException where there are none) and leave nothing half done.
#ifndef KXUDMRT_VAULT_VAULT_H
#define KXUDMRT_VAULT_VAULT_H

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "core/Clock.h"
#include "vault/ContentReader.h"
#include "vault/Fetcher.h"
#include "vault/FileLayer.h"
#include "vault/GroupIntake.h"
#include "vault/Intake.h"
#include "vault/Layout.h"
#include "vault/Stored.h"

namespace kxudm::vault {

// A content that a vault does not have.
class MissingException : public UDMStoreException {
  public:
    using UDMStoreException::UDMStoreException;
};

struct RetrieveOptions {
    // Whether a file that differs may be replaced. An equal one is left alone if not.
    bool overwrite = false;
    // Whether the file survives a loss of power once the operation returns.
    bool flush = false;
    // Time of modification that the file gets, microseconds since 1970; else it is new.
    std::optional<std::int64_t> modified = std::nullopt;
    Progress progress = {};
};

struct VerifyOptions {
    // Becomes the beginning of the content, as ReadText gives it; of use only if that is sound.
    std::string* text = nullptr;
    std::size_t limit = 0;
    Progress progress = {};
};

struct Finding {
    enum class State {
        Sound,
        Missing,
        Damaged,    // its bytes are not that content
        Unreadable  // the machine refused to read it
    };
    State state = State::Sound;
    std::string problem = {};  // empty if sound
};

class Vault {
  public:
    // The directory is made with the first file. The layer is used, not owned.
    explicit Vault(std::string directory, FileLayer& files = MachineFiles());
    Vault(const Vault&) = delete;
    Vault& operator=(const Vault&) = delete;
    ~Vault() = default;

    // Durable when it returns. The file is one that nobody changes meanwhile (else an error, as for
    // one that can't be read). Symbolic links are followed.
    Stored Add(const std::string& path, const AddOptions& options = {});

    [[nodiscard]] bool Holds(const std::string& hash) const;
    // Writes the content to `target`, whose folder must be there: to a temporary name beside it,
    // verified on the way, then renamed. False if an equal file was left alone. A file that differs
    // is an error unless it may be overwritten; a failure leaves it as it was.
    bool Retrieve(const std::string& hash,
                  const std::string& target,
                  const RetrieveOptions& options = {});
    // The first half of Retrieve: the verified content under a temporary name in the folder of
    // `target`, closed, for a caller that gives several files their names together.
    [[nodiscard]] std::unique_ptr<TemporaryFile> Fetch(const std::string& hash,
                                                       const std::string& target,
                                                       const RetrieveOptions& options = {});
    // Whether a file, wherever it lies, is this content. Links are followed; what is no regular
    // file, or not there, is not.
    [[nodiscard]] bool IsContent(const std::string& hash, const std::string& path);
    // The file in which the content is stored, or would be as it is.
    [[nodiscard]] std::string PathOf(const std::string& hash) const;
    // The content as a stream, independent of this vault's other operations.
    [[nodiscard]] std::unique_ptr<ContentReader> Open(const std::string& hash) const;
    // The first `limit` bytes, fewer only where a character of UTF-8 would be cut or the content
    // ends; one that is read to its end is verified.
    [[nodiscard]] std::string ReadText(const std::string& hash, std::size_t limit);

    [[nodiscard]] const std::string& Directory() const { return layout_.Directory(); }
    [[nodiscard]] FileLayer& Files() const { return layout_.Files(); }

    // A file of the vault's folder for half-written things, for what an operation needs to put
    // aside. The vault's directory is made.
    [[nodiscard]] std::unique_ptr<TemporaryFile> NewTemporary() { return layout_.NewTemporary(); }

    // --- Care ---

    // Every file below the 256 folders, in no order; Entry::hash is empty for strangers.
    void List(const std::function<void(const Entry&)>& visit) const { layout_.ForEach(visit); }
    // Reads the content and compares its hash. Throws StoppedException if it was stopped.
    Finding Verify(const std::string& hash, const VerifyOptions& options = {});
    // False if it was not there.
    bool Remove(const std::string& hash);
    // The same for an entry of List, unless it was added again at `before` (microseconds since
    // 1970) or later: a session may be about to commit its row. The bytes that it took; none if it
    // stays.
    std::optional<std::uint64_t> RemoveOlder(const Entry& entry, std::int64_t before) const {
        return layout_.RemoveOlder(entry, before);
    }
    // Removes what dead processes left half written, never what a living one is writing. What
    // writers on other machines left counts as dead after a day. The number of removed files.
    std::size_t RemoveStaleTemporaries(core::Clock& clock = core::SystemClock()) const;

  private:
    friend class Batch;
    friend class Delivery;
    friend class Fetcher;

    void CheckTarget(const std::string& target) const;
    void CopyOut(const std::string& hash, const std::string& target, const RetrieveOptions&);
    [[nodiscard]] std::unique_ptr<ContentReader> OpenWith(std::shared_ptr<ReaderMemory>,
                                                          const std::string& hash) const;

    Layout layout_;
    Intake intake_;
    Fetcher fetcher_;
};

// Files that become durable together, by one flush of the vault's file system before and one after
// they get their final names: flushing each by itself takes three times as long as copying it.
class Batch {
  public:
    // The vault outlives the batch and may be used for other things meanwhile.
    explicit Batch(Vault& vault);
    // Removes what was added and not committed.
    ~Batch();
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;

    // As Vault::Add, but durable and in its final place only after Commit. A failure concerns this
    // file only.
    Stored Add(const std::string& path, const AddOptions& options = {});
    // The same in two steps: all the work, by any thread, while others do the same and the batch
    // is used; then the part of the batch. A file that is dropped in between is removed.
    [[nodiscard]] Incoming Prepare(const std::string& path, const AddOptions& options = {});
    Stored Add(Incoming&& prepared);
    // Makes the bytes of what was added survive a loss of power, without giving it its names: what
    // Commit then has to do takes no time.
    void Flush();
    // After it the batch is empty and takes further files. After a failure nothing was promised:
    // the batch refuses everything, and a new one takes the files afresh.
    void Commit();
    // Files that await Commit.
    [[nodiscard]] std::size_t Count() const { return pending_.size(); }

  private:
    void CheckUsable() const;

    Vault& vault_;
    std::vector<Incoming> pending_;
    Expected expected_;
    GroupIntake intake_;
    bool failed_ = false;
};

}  // namespace kxudm::vault

#endif
