#include <algorithm>
#include <exception>
#include <iterator>
#include <utility>

#include "profile/Bulk.h"
#include "profile/DeletionsTold.h"
#include "profile/Peers.h"

namespace kxudm::profile {

std::exception_ptr RunDeeds(std::vector<std::function<void()>>&& deeds) noexcept {
    std::exception_ptr failure;
    for (const std::function<void()>& deed : deeds) {
        try {
            deed();
        } catch (...) {
            failure = failure ? failure : std::current_exception();
        }
    }
    deeds.clear();
    return failure;
}

Operation::Operation(Session& session, const char* name, sql::Transaction::Durability durability)
    : _session((session.RequireOpen(name), session.shared_from_this())), _stamp(session.Now()) {
    _transaction = std::make_unique<sql::Transaction>(
        _session->Store().Connection(), sql::Transaction::Mode::Write, durability);
    _session->CatchUp();
}

Operation::~Operation() {
    if (_transaction && _renewed) {
        _session->Outdate(_renewed->BaseUid());
    }
}

void Operation::Commit() {
    if (_session->InBulk()) {
        _transaction->Commit();
        _session->_bulk->changes.Append(std::move(_changes));
        std::move(_deeds.begin(), _deeds.end(), std::back_inserter(_session->_bulk->deeds));
        _deeds.clear();
    } else {
        const std::int64_t last = _session->WriteJournal(_changes, _stamp);
        _transaction->Commit();
        _session->_seen = last;
    }
    _transaction.reset();
    for (const Session::State& bearer : _touched) {
        bearer->SetModified(_stamp);
        _session->TouchLinks();
    }
    for (const Session::State& changed : _stamped) {
        changed->SetModified(_stamp);
    }
    _failure = RunDeeds(std::move(_deeds));
}

void Operation::Leave() {
    Commit();
    Tell();
}

void Operation::Tell() {
    if (!_session->InBulk()) {
        _session->QueueOwn(_changes);
        _session->TellEverybody();
    }
    if (_failure) {
        std::rethrow_exception(std::exchange(_failure, {}));
    }
}

std::int64_t Session::WriteJournal(const ChangeList& changes, const store::Stamp& stamp) {
    std::int64_t last = _seen;
    for (const Change& change : changes.All()) {
        store::JournalEntry entry;
        entry.time = stamp.time;
        entry.op = change.code;
        entry.session = _id;
        if (change.only) {
            entry.user = change.only->user;
            entry.workspace = change.only->workspace;
        } else if (change.audience != Audience::Everybody) {
            entry.user = _options.user;
            entry.workspace = _options.workspace;
            entry.others = change.audience == Audience::Elsewhere;
        }
        if (change.code == SIGNAL_ENTITY_DELETED) {
            entry.entity = change.deleted.id;
            entry.revision = change.deleted.newestRevision;
        } else if (change.child) {
            entry.parent = change.subject->Id();
            entry.child = change.child->Id();
            entry.revision = change.child->Revision();
        } else {
            entry.entity = change.subject->Id();
            entry.revision = change.Revision();
        }
        last = _store->Append(entry);
    }
    return last;
}

void Session::QueueOwn(const ChangeList& changes) {
    std::vector<store::DeletedRow> gone;
    const auto flush = [&] {
        if (!gone.empty()) {
            QueueDeletions(*this, std::exchange(gone, {}));
        }
    };
    for (const Change& change : changes.All()) {
        if (change.code == SIGNAL_ENTITY_DELETED) {
            gone.push_back(change.deleted);
        } else {
            flush();
            QueueOwn(change);
        }
    }
    flush();
}

void Session::QueueOwn(const Change& change) {
    if (_slots.Empty() || change.audience == Audience::Elsewhere) {
        return;
    }
    // Behind a bulk edit revisions may have got other numbers, or be gone.
    if (change.child) {
        QueueChildLost(change.code, change.subject->BaseUid(), UDMItemHandle(change.child));
    } else {
        QueueChange(change.code, change.subject->BaseUid(), change.subject->Revision());
    }
}

void Session::TellOnce(const ChangeList& changes) {
    if (!InBulk()) {
        QueueOwn(changes);
        TellEverybody();
    }
}

std::exception_ptr Session::Dispatch() noexcept {
    if (!IsOpen() || InBulk()) {
        return {};
    }
    const auto self = shared_from_this();
    try {
        CatchUp();
        return _slots.Tell();
    } catch (...) {
        return std::current_exception();
    }
}

void Session::TellEverybody() {
    std::exception_ptr failure = _slots.Tell();
    for (const boost::shared_ptr<Session>& peer : peers::On(_options.libraryFile)) {
        const std::exception_ptr peerFailure = peer.get() == this ? nullptr : peer->Dispatch();
        failure = failure ? failure : peerFailure;
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

void Session::BeginBulk() {
    RequireOpen("BeginBulk");
    if (_bulk) {
        throw UDMException("A bulk edit is open in session " + _id +
                           " already; end it before the next one");
    }
    auto bulk = std::make_unique<Bulk>(_store->Connection());
    CatchUp();
    _bulk = std::move(bulk);
}

void Session::CommitBulk() {
    RequireOpen("CommitBulk");
    if (!_bulk) {
        throw UDMException("No bulk edit is open in session " + _id + "; begin one first");
    }
    const auto self = shared_from_this();
    ChangeList changes;
    std::exception_ptr failure;
    try {
        changes = std::move(_bulk->changes);
        _vaults.Settle();
        const std::int64_t last = WriteJournal(changes, Now());
        _bulk->transaction.Commit();
        std::vector<std::function<void()>> deeds = std::move(_bulk->deeds);
        _bulk.reset();
        _vaults.Forget();
        failure = RunDeeds(std::move(deeds));
        _seen = last;
    } catch (...) {
        RollbackBulk();
        throw;
    }
    QueueOwn(changes);
    TellEverybody();
    if (failure) {
        std::rethrow_exception(failure);
    }
}

void Session::RollbackBulk() noexcept {
    if (!_bulk) {
        return;
    }
    _bulk.reset();
    _vaults.Forget();
    // Whatever the states took over meanwhile did not happen.
    _states.ForEach([](EntityState& state) {
        state.SetNewest(false);
        state.SetStale();
    });
    TouchLinks();
}

}  // namespace kxudm::profile
