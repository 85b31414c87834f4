// What one session is made of: store, catalogue, the states of its handles, its slots, and its
// place in the journal.
//
// Layer: profile; Profile implements IUDMProfile on top of it, in operations that read like this:
//
//     Operation operation(session, "SetMaster");     // one transaction, up to date
//     EntityState& state = session.Editable(handle); // checks
//     operation.Store().UpdateAttributes(...);
//     operation.Record(Change::Of(SIGNAL_CONTENT_CHANGED, state));
//     operation.Commit();                            // journal and commit
//     state.TakePacked(...);                         // then the states ...
//     operation.Tell();                              // ... then the slots of all sessions
//
// Other sessions learn of a change from the journal: those of this process at once, by CatchUp
// through Peers, those of other processes at their next call. A session belongs to one thread.
#pragma once

#include <kxudm/UDMItemHandle.h>
#include <kxudm/UDMProgress.h>

#include <boost/smart_ptr/enable_shared_from_this.hpp>
#include <boost/smart_ptr/make_shared.hpp>
#include <exception>
#include <functional>
#include <memory>
#include <vector>

#include "core/Clock.h"
#include "profile/Change.h"
#include "profile/LibraryVaults.h"
#include "profile/Listings.h"
#include "profile/SlotList.h"
#include "profile/StateCache.h"
#include "store/LibraryStore.h"

namespace kxudm::profile {

class Operation;

struct SessionOptions {
    kxString libraryName;
    kxString libraryFile;
    kxString masterFile;  // the master database that knows the library
    kxString profileName;
    kxString user;
    kxString workspace;
    kxString workspaceDirectory;
    kxString baseDirectory;  // the vaults lie there; the library file's where empty
    // Where content definitions are taken from afresh; empty if the session was opened without.
    kxString catalogueFile;
    kxString customDefinitions;         // a folder read after the file; may be empty or missing
    core::Clock* clock = nullptr;       // the machine's where null
    vault::FileLayer* files = nullptr;  // of vaults and documents, the machine's where null
};

class Session : public boost::enable_shared_from_this<Session> {
  public:
    using State = boost::shared_ptr<EntityState>;

    // Reads the catalogue out of the library.
    Session(std::unique_ptr<store::LibraryStore> store, SessionOptions options);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session();

    // --- Constant facts ---

    [[nodiscard]] const kxString& Id() const { return _id; }
    [[nodiscard]] const SessionOptions& Options() const { return _options; }
    [[nodiscard]] store::Viewer Viewer() const { return {_options.user, _options.workspace}; }
    [[nodiscard]] store::Stamp Now() const;

    // --- Its life ---

    [[nodiscard]] bool IsOpen() const { return _store != nullptr; }
    // Throws UDMException, naming the operation, on a closed session.
    void RequireOpen(const char* operation) const;
    // Tells code 34, lets the slots go and closes the library. Never fails.
    void Close() noexcept;
    // Writes what is in it to the standard output.
    void Dump() const;

    // --- Its parts; only while it is open ---

    [[nodiscard]] store::LibraryStore& Store() { return *_store; }
    [[nodiscard]] const std::shared_ptr<const catalogue::Catalogue>& Catalogue() const {
        return _link->catalogue;
    }
    [[nodiscard]] StateCache& States() { return _states; }
    [[nodiscard]] Listings& Listed() { return _listings; }
    [[nodiscard]] SlotList& Slots() { return _slots; }
    [[nodiscard]] LibraryVaults& Vaults() { return _vaults; }
    [[nodiscard]] const boost::shared_ptr<SessionLink>& Link() const { return _link; }

    // --- Entities ---

    // The state that a row stands for: the one that lives, brought up to date, else a new one.
    // `complete`: the row has its attributes.
    State StateOf(store::EntityRow&& row, bool complete = true);
    // The same for a row as somebody else sees it: this session knows nothing of it afterwards.
    [[nodiscard]] State StateElsewhere(store::EntityRow&& row) const;
    // The newest or the exact revision of a UID text, from the cache or the store. Null if it is
    // not there for this session.
    State Find(const kxString& uid);
    // The same, but throws UDMNotFoundException.
    State Get(const kxString& uid);
    // Poll and Find in one read, for an entity that has no state yet: the read itself tells that
    // nobody has changed anything. Null, with nothing done, wherever that is not so.
    State FindUnseen(const kxString& uid);
    // The state behind a handle, also one of another session. Throws for an empty handle and for
    // what is gone.
    State Resolve(const UDMItemHandle& handle);
    // Throws UDMException, saying what holds it, if the revision can't be edited here.
    void RequireEditable(const EntityState& state);

    // --- Asked by states ---

    void Reload(EntityState& state);
    bool HasOwner(const EntityState& state);
    // Empty for what lies in no folder.
    kxString FolderPathOf(const EntityState& state);
    store::EntityDetails DetailsOf(const EntityState& state);
    // Goes up whenever somebody becomes an owner or ceases to be one.
    [[nodiscard]] std::uint32_t LinkEpoch() const { return _linkEpoch; }
    void TouchLinks() { ++_linkEpoch; }
    // The states of deleted entities stand for nothing any more.
    void NoteGone(const std::vector<store::DeletedRow>& gone);
    // All states of the entity are read again on the next question, also which is the newest.
    void Outdate(std::string_view baseUid);

    // Tells the other sessions, in the journal, that links may show which nobody is told of.
    void RecordLinks(Operation& operation);

    // --- Definitions ---

    // The same of a new catalogue.
    void RecordCatalogue(Operation& operation);
    // The library's catalogue is this one now: the states follow it, and code 3 is queued for those
    // whose definition is not what it was.
    void TakeCatalogue(std::shared_ptr<const catalogue::Catalogue> catalogue);

    // --- Sessions on other libraries ---

    // Handles of another library were given out through this session: that one stays open as long
    // as this one.
    void Attach(const boost::shared_ptr<Session>& other) { _attached.push_back(other); }
    // The attached one on a library file; null if there is none that is open.
    [[nodiscard]] boost::shared_ptr<Session> AttachedOn(const kxString& libraryFile) const;

    // --- Changes ---

    // Begin of a reading operation: takes in what others did and tells the slots of it.
    void Poll(const char* operation);
    // Takes in what others did, without telling. For inside of a transaction, too.
    void CatchUp();
    // Hands queued updates to the slots and rethrows what one of them threw.
    void Tell();
    // Tells all sessions of changes of this one that were committed with Operation::TellLater.
    void TellOnce(const ChangeList& changes);
    // Both, unless the session is closed or in a bulk edit. Returns what failed, null if nothing.
    [[nodiscard]] std::exception_ptr Dispatch() noexcept;

    void BeginBulk();
    void CommitBulk();
    void RollbackBulk() noexcept;
    [[nodiscard]] bool InBulk() const { return _bulk != nullptr; }

    // --- Progress of long operations ---

    // Null if nobody listens.
    [[nodiscard]] IUDMProgressListener* ProgressListener() const { return _progress; }
    void SetProgressListener(IUDMProgressListener* listener) { _progress = listener; }

  private:
    friend class Operation;

    void ApplyAll(const std::vector<store::JournalEntry>& entries);
    void TakeIn(const store::JournalEntry& entry);
    void QueueAll(const std::vector<store::JournalEntry>& entries);
    void Queue(const store::JournalEntry& entry);
    store::DeletedRow DeletedRowOf(const store::JournalEntry& entry) const;
    void QueueChange(SignalOption code, std::string_view base, int revision);
    void QueueChildLost(SignalOption code, std::string_view parent, const UDMItemHandle& child);
    UDMItemHandle ChildHandle(const store::JournalEntry& entry);
    std::int64_t WriteJournal(const ChangeList& changes, const store::Stamp& stamp);
    void RecordUntold(Operation& operation, int op) const;
    void QueueOwn(const ChangeList& changes);
    void QueueOwn(const Change& change);
    void TellEverybody();
    void CatchUpWithCatalogue(const std::vector<store::JournalEntry>& entries);
    bool ReadRow(std::string_view base, std::string_view revision, store::EntityRow& row);
    State Known(std::string_view base, std::string_view revision) const;

    struct Bulk;

    SessionOptions _options;
    kxString _id;
    boost::shared_ptr<SessionLink> _link;
    std::unique_ptr<store::LibraryStore> _store;
    StateCache _states;
    Listings _listings;
    SlotList _slots;
    LibraryVaults _vaults;
    std::unique_ptr<Bulk> _bulk;
    std::vector<boost::shared_ptr<Session>> _attached;
    IUDMProgressListener* _progress = nullptr;
    std::int64_t _seen = 0;  // last journal entry taken in
    std::uint32_t _linkEpoch = 1;
};

// "<user> has it checked out in workspace ... since ...". Of a row with a working revision.
[[nodiscard]] kxString HolderText(const store::EntityRow& row);

// A change in one transaction. Without Commit it is rolled back.
class Operation {
  public:
    // Throws on a closed session. Begins the transaction and takes in what others did before.
    Operation(Session& session,
              const char* name,
              sql::Transaction::Durability durability = sql::Transaction::Durability::Normal);
    Operation(const Operation&) = delete;
    Operation& operator=(const Operation&) = delete;
    ~Operation();

    [[nodiscard]] store::LibraryStore& Store() { return _session->Store(); }
    [[nodiscard]] const store::Stamp& Stamp() const { return _stamp; }
    void Record(Change change) { _changes.Add(std::move(change)); }
    // A link that this revision bears was added or removed: Commit stamps the revision.
    void Touch(const Session::State& bearer) { _touched.push_back(bearer); }
    // The operation changes which revisions there are of this entity, and its states on the way:
    // without Commit they are read again.
    void Renew(const Session::State& state) { _renewed = state; }
    // Files of this revision were changed, which stamped it.
    void NoteStamped(const Session::State& state) { _stamped.push_back(state); }
    // Done once the change is committed, with a bulk edit at its end: what can't be taken back.
    // What it throws comes out of Tell, after the slots were told.
    void AfterCommit(std::function<void()> deed) { _deeds.push_back(std::move(deed)); }
    // The entity that this operation made last has no links until it gets its place.
    void NoteMade(const EntityState& state) { _made = &state; }
    [[nodiscard]] bool HasJustMade(const EntityState& state) const { return _made == &state; }
    // Writes the journal and commits; inside of a bulk edit, hands the changes over to it.
    void Commit();
    // For an operation that finds nothing to change: ends it and tells what others did.
    void Leave();
    // Tells the slots of this session, then those of its peers. Does nothing in a bulk edit.
    void Tell();
    // Instead: gives the changes to one who tells them together with others.
    void TellLater(ChangeList& later) { later.Append(std::move(_changes)); }

  private:
    boost::shared_ptr<Session> _session;  // a slot may discard the session
    store::Stamp _stamp;
    std::unique_ptr<sql::Transaction> _transaction;
    ChangeList _changes;
    std::vector<Session::State> _touched;
    std::vector<Session::State> _stamped;
    std::vector<std::function<void()>> _deeds;
    std::exception_ptr _failure;  // of a deed
    const EntityState* _made = nullptr;
    Session::State _renewed;
};

}  // namespace kxudm::profile
