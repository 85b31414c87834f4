// The way in: what other sessions changed comes out of the journal, marks the states that it
// concerns, and is queued for this session's slots with handles of this session.
#include <utility>

#include "profile/Session.h"

namespace kxudm::profile {

namespace {

constexpr int PORTION = 1000;

kxString WithRevision(const std::string& base, int revision) {
    return kxString(base + ":" + std::to_string(revision));
}

}  // namespace

void Session::Poll(const char* operation) {
    RequireOpen(operation);
    if (!InBulk()) {
        CatchUp();
        Tell();
        // A slot may have closed the session.
        RequireOpen(operation);
    }
}

void Session::Tell() {
    const auto self = shared_from_this();
    if (const std::exception_ptr failure = _slots.Tell()) {
        std::rethrow_exception(failure);
    }
}

void Session::CatchUp() {
    // In a bulk edit nobody else can commit.
    if (InBulk() || !_store->ChangedByOthers()) {
        return;
    }
    std::vector<store::JournalEntry> entries;
    std::int64_t last = 0;
    _store->View([&] {
        last = _store->LastSequence();
        for (std::int64_t from = _seen; from < last;) {
            const std::size_t before = entries.size();
            _store->Journal(from, Viewer(), entries, PORTION);
            from = entries.size() - before < PORTION ? last : entries.back().sequence;
        }
    });
    for (const store::JournalEntry& entry : entries) {
        if (entry.session != _id) {
            Apply(entry);
        }
    }
    _seen = last;
}

UDMItemHandle Session::ChildHandle(const store::JournalEntry& entry) {
    State child = _states.Revision(entry.childUid, entry.revision);
    if (!child) {
        child = Find(entry.childUid);
    }
    if (!child) {
        // Deleted: as this session saw it.
        const int seen = _store->SeenRevision(entry.child, Viewer());
        const int number = seen == store::NO_REVISION ? entry.revision : seen;
        child = _states.Revision(entry.childUid, number);
        if (!child) {
            child = boost::make_shared<EntityState>(_link, entry.childUid, number);
        }
    }
    return UDMItemHandle(child);
}

void Session::ApplyDeletion(const store::JournalEntry& entry) {
    store::DeletedRow gone;
    gone.id = entry.entity;
    gone.uid = entry.entityUid;
    QueueDeletion(gone);
}

// One record for each revision that the session has seen, the newest one for it in any case.
void Session::QueueDeletion(const store::DeletedRow& gone) {
    const int newest = _store->SeenRevision(gone.id, Viewer());
    bool newestTold = newest == store::NO_REVISION;
    for (EntityState* state = _states.Chain(gone.uid); state != nullptr; state = state->next) {
        state->SetGone();
        newestTold = newestTold || state->Revision() == newest;
        if (!_slots.Empty()) {
            _slots.Queue(UDMProfileUpdate::OfDeletion(UDMUID(state->Uid())));
        }
    }
    if (!newestTold && !_slots.Empty()) {
        _slots.Queue(UDMProfileUpdate::OfDeletion(UDMUID(WithRevision(gone.uid, newest))));
    }
    TouchLinks();
}

// The working revision was the one behind the published one that stands again.
void Session::QueueUndo(const State& standing) {
    const UDMUID gone(WithRevision(kxString(standing->BaseUid()), standing->Revision() + 1));
    _slots.Queue(UDMProfileUpdate::OfUndo(UDMItemHandle(standing), gone));
}

void Session::Apply(const store::JournalEntry& entry) {
    const auto code = static_cast<SignalOption>(entry.op);
    switch (code) {
        case SIGNAL_ENTITY_DELETED:
            ApplyDeletion(entry);
            return;
        case SIGNAL_CONTENT_CHANGED:
            for (EntityState* state = _states.Chain(entry.entityUid); state != nullptr;
                 state = state->next) {
                state->SetStale();
            }
            break;
        case SIGNAL_STATE_CHANGED:
        case SIGNAL_REVISION_ADVANCED:
        case SIGNAL_REVISION_UNDONE:
            // Who sees which revision has changed, so that links may show or hide.
            Outdate(entry.entityUid);
            break;
        default:
            TouchLinks();
            break;
    }
    if (_slots.Empty()) {
        return;
    }
    if (entry.parent != 0) {
        if (const State parent = Find(entry.parentUid)) {
            _slots.Queue(
                UDMProfileUpdate::OfChild(code, UDMItemHandle(parent), ChildHandle(entry)));
        }
    } else if (entry.entity != 0) {
        const State subject = Find(WithRevision(entry.entityUid, entry.revision));
        if (subject && code == SIGNAL_REVISION_UNDONE) {
            QueueUndo(subject);
        } else if (subject) {
            _slots.Queue(UDMProfileUpdate::OfHandle(code, UDMItemHandle(subject)));
        }
    }
}

}  // namespace kxudm::profile
