#include "profile/ImportNotes.h"

#include "profile/RevisionsTold.h"

namespace kxudm::profile {

namespace {

// As everybody sees it.
Session::State StateOf(Session& session, store::EntityId id) {
    store::EntityRow row;
    return session.Store().FindById(id, session.Viewer(), row) ? session.StateOf(std::move(row))
                                                               : Session::State();
}

}  // namespace

void ImportNotes::Entity(UDMImportedEntity&& entity) {
    _areAllNew = _areAllNew && entity.outcome == UDMImportOutcome::New;
    if (_report != nullptr) {
        _report->entities.push_back(std::move(entity));
    }
}

void ImportNotes::LeftOut(const std::string& uid, const std::string& text) {
    if (_report != nullptr) {
        _report->leftOut.push_back({kxString(uid), kxString(text)});
    }
}

void ImportNotes::Note(SignalOption code, store::EntityId id) {
    if (id <= _youngest) {
        _structure.emplace(code, id);
    }
}

void ImportNotes::GotLink(store::EntityId parent, store::LinkKind kind) {
    Note(kind == store::LinkKind::Owner ? SIGNAL_CHILD_ADDED : SIGNAL_REFERENCE_ADDED, parent);
}

void ImportNotes::Record(Session& session, Operation& operation) {
    for (const Appended& appended : _appended) {
        RecordAppended(session, operation, appended);
    }
    for (const auto& [code, id] : _structure) {
        if (const Session::State state = StateOf(session, id)) {
            operation.Record(Change::Of(code, state));
        } else {
            RecordPrivate(session, operation, code, id);
        }
    }
    session.TouchLinks();
    session.RecordLinks(operation);
}

// A branch in work elsewhere may have inherited a link that waited, and lie where others see
// nothing.
void ImportNotes::RecordPrivate(Session& session,
                                Operation& operation,
                                SignalOption code,
                                store::EntityId id) {
    for (const store::Holder& holder : HoldersElsewhere(session, id)) {
        store::EntityRow row;
        if (session.Store().FindById(id, holder.AsViewer(), row)) {
            operation.Record(Change::Of(code, session.StateElsewhere(std::move(row))).Only(holder));
        }
    }
}

void ImportNotes::RecordAppended(Session& session, Operation& operation, const Appended& appended) {
    session.Outdate(appended.uid);
    const Session::State state = StateOf(session, appended.id);
    if (!state) {
        return;
    }
    for (const store::EntityId place :
         exchange::LeftPlaces(session.Store(), appended.id, appended.first)) {
        if (const Session::State left = StateOf(session, place)) {
            operation.Record(Change::OfChild(SIGNAL_CONTAINER_LEFT, left, state));
        }
    }
    // One by one: whoever shows the revision before goes on to the next. Until the commit they are
    // kept without their attributes, which may be large.
    for (const int number : session.Store().RevisionNumbers(appended.id, store::THE_PUBLIC)) {
        store::EntityRow row;
        if (number >= appended.first &&
            session.Store().FindRevision(appended.uid, number, session.Viewer(), row)) {
            row.packed.clear();
            operation.Record(
                Change::Of(SIGNAL_REVISION_ADVANCED, session.StateOf(std::move(row), false)));
        }
    }
}

void ImportNotes::Forget(Session& session) const {
    for (const Appended& appended : _appended) {
        session.Outdate(appended.uid);
    }
    session.TouchLinks();
}

}  // namespace kxudm::profile
