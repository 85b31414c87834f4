// The way in: what other sessions changed comes out of the journal, marks the states that it
// concerns, and is queued for this session's slots with handles of this session.
#include <map>
#include <set>
#include <utility>

#include "profile/DeletionsTold.h"
#include "store/LibraryCheck.h"

namespace kxudm::profile {

namespace {

constexpr int PORTION = 1000;

// What the session has missed is not in the journal any more: whatever it holds may be another.
void CatchUpWithEverything(Session& session) {
    session.TakeCatalogue(catalogue::Catalogue::ReadText(session.Store().CatalogueXml(),
                                                         session.Options().libraryFile));
    struct Held {
        std::string uid;
        int newest = store::NO_REVISION;  // unless only older ones are held
    };
    std::map<store::EntityId, Held> held;
    session.States().ForEach([&](const EntityState& state) {
        if (!state.IsGone()) {
            Held& each = held[state.Id()];
            each.uid = state.BaseUid();
            each.newest = state.IsNewest() ? state.Revision() : each.newest;
        }
    });
    std::vector<Session::State> advanced;
    std::vector<store::DeletedRow> gone;
    for (const auto& [id, each] : held) {
        session.Outdate(each.uid);
        const Session::State newest = session.Find(kxString(each.uid));
        if (!newest) {
            gone.push_back({.id = id, .uid = each.uid});
            continue;
        }
        // One by one: whoever shows the revision before goes on to the next.
        if (each.newest != store::NO_REVISION) {
            for (const int number : session.Store().RevisionNumbers(id, session.Viewer())) {
                if (number > each.newest && number < newest->Revision()) {
                    advanced.push_back(session.Get(RevisionedUid(each.uid, number)));
                }
            }
        }
        advanced.push_back(newest);
    }
    session.NoteGone(gone);
    QueueDeletions(session, gone);
    for (const Session::State& state : advanced) {
        session.Slots().Queue(
            UDMProfileUpdate::OfHandle(SIGNAL_REVISION_ADVANCED, UDMItemHandle(state)));
    }
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
    bool isLost = false;
    _store->View([&] {
        last = _store->LastSequence();
        isLost = store::JournalTrimmed(*_store) > _seen;
        if (isLost) {
            return;
        }
        for (std::int64_t from = _seen; from < last;) {
            const std::size_t before = entries.size();
            _store->Journal(from, Viewer(), entries, PORTION);
            from = entries.size() - before < PORTION ? last : entries.back().sequence;
        }
    });
    if (isLost) {
        CatchUpWithEverything(*this);
    } else {
        CatchUpWithCatalogue(entries);
        ApplyAll(entries);
    }
    _seen = last;
}

UDMItemHandle Session::ChildHandle(const store::JournalEntry& entry) {
    State child = _states.Revision(entry.childUid, entry.revision);
    if (!child) {
        child = Find(entry.childUid);
    }
    if (!child) {
        child = SeenOfDeleted(*this, entry.child);
    }
    if (!child) {
        child = boost::make_shared<EntityState>(_link, entry.childUid, entry.revision);
    }
    return UDMItemHandle(child);
}

// What was purged before this session heard of its deletion has no UID any more.
store::DeletedRow Session::DeletedRowOf(const store::JournalEntry& entry) const {
    store::DeletedRow row;
    row.id = entry.entity;
    row.uid = entry.entityUid;
    if (row.uid.empty()) {
        _states.ForEach([&](const EntityState& state) {
            if (state.Id() == row.id) {
                row.uid = state.BaseUid();
            }
        });
    }
    return row;
}

// First all of it, then what is told: an update must not come with a revision, or of an entity,
// that a later one has taken the place of.
void Session::ApplyAll(const std::vector<store::JournalEntry>& entries) {
    for (const store::JournalEntry& entry : entries) {
        if (entry.session != _id) {
            TakeIn(entry);
        }
    }
    if (!_slots.Empty()) {
        QueueAll(entries);
    }
}

void Session::TakeIn(const store::JournalEntry& entry) {
    switch (static_cast<SignalOption>(entry.op)) {
        case SIGNAL_ENTITY_DELETED:
            NoteGone({DeletedRowOf(entry)});
            break;
        case SIGNAL_CONTENT_CHANGED:
            _states.ForRevisions(entry.entityUid, [](EntityState& state) { state.SetStale(); });
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
}

void Session::QueueAll(const std::vector<store::JournalEntry>& entries) {
    // Deletions that follow each other are told as one.
    std::vector<store::DeletedRow> gone;
    const auto flush = [&] {
        if (!gone.empty()) {
            QueueDeletions(*this, std::exchange(gone, {}));
        }
    };
    // So is what came into one place with nothing else between: the operations of a long import.
    std::set<std::pair<int, store::EntityId>> entered;
    for (const store::JournalEntry& entry : entries) {
        if (entry.session == _id) {
            continue;
        }
        if (entry.op == SIGNAL_ENTITY_DELETED) {
            gone.push_back(DeletedRowOf(entry));
            entered.clear();
            continue;
        }
        flush();
        if (!IsOfStructure(static_cast<SignalOption>(entry.op))) {
            entered.clear();
        } else if (!entered.emplace(entry.op, entry.entity).second) {
            continue;
        }
        Queue(entry);
    }
    flush();
}

// A revision that is there no more isn't told of. What lies below an entity, or in it, is a matter
// of the newest revision, and this session may have a working one that whoever made the change
// doesn't see.
void Session::QueueChange(SignalOption code, std::string_view base, int revision) {
    State subject = Find(RevisionedUid(base, revision));
    if (subject && IsOfStructure(code)) {
        subject = Find(kxString(base));
    }
    if (!subject) {
        return;
    }
    if (code == SIGNAL_REVISION_UNDONE) {
        // The working revision was the one behind the published one that stands again.
        const UDMUID gone(RevisionedUid(base, revision + 1));
        _slots.Queue(UDMProfileUpdate::OfUndo(UDMItemHandle(subject), gone));
    } else {
        _slots.Queue(UDMProfileUpdate::OfHandle(code, UDMItemHandle(subject)));
    }
}

void Session::QueueChildLost(SignalOption code,
                             std::string_view parent,
                             const UDMItemHandle& child) {
    if (const State seen = Find(kxString(parent))) {
        _slots.Queue(UDMProfileUpdate::OfChild(code, UDMItemHandle(seen), child));
    }
}

void Session::Queue(const store::JournalEntry& entry) {
    const auto code = static_cast<SignalOption>(entry.op);
    if (entry.parent != 0) {
        QueueChildLost(code, entry.parentUid, ChildHandle(entry));
    } else if (entry.entity != 0) {
        QueueChange(code, entry.entityUid, entry.revision);
    }
}

}  // namespace kxudm::profile
