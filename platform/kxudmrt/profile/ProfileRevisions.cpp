// The life of revisions. An unversioned entity has one revision, which is always editable and seen
// by everybody: there is nothing to check out, save, publish or undo, and asking for it succeeds.
#include "core/UidGenerator.h"
#include "profile/DefinitionChange.h"
#include "profile/Profile.h"
#include "profile/RevisionsCheck.h"
#include "profile/RevisionsTold.h"

namespace kxudm::profile {

namespace {

using Durability = sql::Transaction::Durability;

bool IsUnversioned(const EntityState& state) {
    return state.State() == store::RevisionState::Unversioned;
}

// What a session takes for the newest revision, before it learns what others did.
bool IsTakenForNewest(const UDMItemHandle& handle) {
    const auto state = boost::dynamic_pointer_cast<EntityState>(handle.State());
    return state && state->IsNewest();
}

// For steps that concern the entity, whichever revision the handle was of: it may be one that is
// gone, such as 0 after the first publish.
Session::State NewestOf(Session& session, const UDMItemHandle& handle) {
    return handle.IsEmpty() ? session.Resolve(handle)
                            : session.Get(handle.GetUID().substr(0, handle.GetUID().find(':')));
}

store::EntityRow NewestRow(Session& session, const EntityState& state) {
    store::EntityRow row;
    if (!session.Store().FindByUid(state.BaseUid(), session.Viewer(), row)) {
        throw UDMNotFoundException(state.Cdef() + " " + state.Uid() +
                                   " is deleted or not visible any more; use one that is there");
    }
    return row;
}

void RequireBranchable(const EntityState& origin, int newest, bool takenForNewest) {
    const std::string what = origin.Cdef() + " " + origin.Uid();
    if (takenForNewest) {
        throw UDMException(what + " can't be checked out: revision " + std::to_string(newest) +
                           " was published meanwhile; look at that and check it out");
    }
    if (!origin.Definition()->IsBranchable()) {
        throw UDMException(what +
                           " can't be checked out: it is not the newest revision, which is " +
                           std::to_string(newest) + ", and \"" + origin.Cdef() +
                           "\" can't be branched; check out the newest one");
    }
}

void Branch(Session& session,
            Operation& operation,
            const EntityState& origin,
            const kxString& comment) {
    const kxString uid = core::ProcessUidGenerator().Next();
    operation.Store().Branch(origin.Id(), origin.Revision(), uid, comment, operation.Stamp());
    AlignBranch(session, operation.Store(), uid);
    RecordPlacesOfBranch(session, operation, session.Get(uid));
    session.TouchLinks();
}

// The revision that a check-out has opened behind a published one. Nothing needs to be read: its
// row is a copy, and nobody else could change that one meanwhile.
Session::State Opened(Session& session, const EntityState& published, const store::Stamp& stamp) {
    store::EntityRow row = published.Row();
    row.published = row.revision;
    row.working = ++row.revision;
    row.state = store::RevisionState::Working;
    row.modifiedTime = row.lockTime = stamp.time;
    row.modifiedUser = row.lockUser = stamp.by.user;
    row.lockWorkspace = stamp.by.workspace;
    session.Outdate(row.uid);
    return session.StateOf(std::move(row), published.IsComplete());
}

// The same of the revision that a working one is published as.
Session::State Published(Session& session, const EntityState& working, int number) {
    store::EntityRow row = working.Row();
    row.published = row.revision = number;
    row.state = store::RevisionState::Published;
    session.Outdate(row.uid);
    return session.StateOf(std::move(row), working.IsComplete());
}

void CheckOutNewest(Session& session,
                    Operation& operation,
                    const Session::State& state,
                    const kxString& comment) {
    operation.Renew(state);
    const int working = operation.Store().CheckOut(state->Id(), comment, operation.Stamp());
    const Session::State opened = Opened(session, *state, operation.Stamp());
    operation.Record(Change::Of(SIGNAL_REVISION_ADVANCED, opened).For(Audience::Here));
    operation.Record(
        Change::Of(SIGNAL_STATE_CHANGED, opened).At(working - 1).For(Audience::Elsewhere));
}

// Own sessions have had the revision before, others have not.
void RecordPublish(Operation& operation, const Session::State& published, bool first) {
    if (first) {
        operation.Record(Change::Of(SIGNAL_REVISION_ADVANCED, published));
        return;
    }
    operation.Record(Change::Of(SIGNAL_STATE_CHANGED, published).For(Audience::Here));
    operation.Record(Change::Of(SIGNAL_REVISION_ADVANCED, published).For(Audience::Elsewhere));
}

}  // namespace

void Profile::PersistEntity(const UDMItemHandle& handle,
                            const kxString& comment,
                            bool keep,
                            bool /*withFiles*/,
                            bool /*withLinks*/) {
    RequireComment(comment);
    Operation operation(*_session, "PersistEntity", Durability::Full);
    const Session::State working = _session->Resolve(handle);
    if (IsUnversioned(*working)) {
        operation.Leave();
        return;
    }
    _session->RequireEditable(*working);
    RequirePublishable(*_session, *working);
    const bool first = working->IsNeverPublished();
    const std::vector<store::MovedPlace> moved = MovedPlaces(*_session, *working);
    operation.Renew(working);
    const int number = operation.Store().Publish(working->Id(), comment, keep, operation.Stamp());
    const Session::State published = Published(*_session, *working, number);
    RecordPublish(operation, published, first);
    if (keep) {
        const Session::State next = Opened(*_session, *published, operation.Stamp());
        operation.Record(Change::Of(SIGNAL_REVISION_ADVANCED, next).For(Audience::Here));
    }
    RecordPublishedPlaces(*_session, operation, published, moved);
    if (first) {
        RecordPublishedParents(*_session, operation, published);
    }
    operation.Commit();
    operation.Tell();
}

void Profile::SaveEntity(const UDMItemHandle& handle, const kxString& comment, bool /*withFiles*/) {
    RequireComment(comment);
    Operation operation(*_session, "SaveEntity");
    const Session::State working = _session->Resolve(handle);
    if (IsUnversioned(*working)) {
        operation.Leave();
        return;
    }
    _session->RequireEditable(*working);
    operation.Store().AddSavePoint(working->Id(), comment, operation.Stamp());
    operation.Record(Change::Of(SIGNAL_CONTENT_CHANGED, working).For(Audience::Here));
    operation.Commit();
    operation.Tell();
}

void Profile::UndoCheckout(const UDMItemHandle& handle) {
    Operation operation(*_session, "UndoCheckout");
    const Session::State working = NewestOf(*_session, handle);
    if (IsUnversioned(*working)) {
        operation.Leave();
        return;
    }
    const std::vector<store::MovedPlace> moved = MovedPlaces(*_session, *working);
    operation.Renew(working);
    const int number = operation.Store().Undo(working->Id(), operation.Stamp());
    RecordUndonePlaces(*_session, operation, working, moved, false);
    _session->Outdate(working->BaseUid());
    const Session::State standing = _session->Get(RevisionedUid(working->BaseUid(), number));
    operation.Record(Change::Of(SIGNAL_REVISION_UNDONE, standing).For(Audience::Here));
    operation.Record(Change::Of(SIGNAL_STATE_CHANGED, standing).For(Audience::Elsewhere));
    RecordUndonePlaces(*_session, operation, standing, moved, true);
    operation.Commit();
    operation.Tell();
}

void Profile::Checkout(const UDMItemHandle& handle, const kxString& comment) {
    RequireComment(comment);
    const bool takenForNewest = IsTakenForNewest(handle);
    Operation operation(*_session, "Checkout");
    const Session::State state = _session->Resolve(handle);
    if (IsUnversioned(*state)) {
        operation.Leave();
        return;
    }
    // A working revision has a higher number than all that are published.
    const int newest =
        state->IsNewest() ? state->Revision() : NewestRow(*_session, *state).published;
    if (state->Revision() < newest) {
        RequireBranchable(*state, newest, takenForNewest);
        Branch(*_session, operation, *state, comment);
    } else {
        CheckOutNewest(*_session, operation, state, comment);
    }
    operation.Commit();
    operation.Tell();
}

UDMItemHandle Profile::GetWorkingHandle(const UDMItemHandle& handle) {
    _session->Poll("GetWorkingHandle");
    const Session::State newest = NewestOf(*_session, handle);
    if (newest->IsEditable()) {
        return UDMItemHandle(newest);
    }
    const store::EntityRow row = NewestRow(*_session, *newest);
    throw UDMNotFoundException(
        newest->Cdef() + " " + row.uid + " has no working revision in workspace \"" +
        _session->Options().workspace + "\": " +
        (row.working == store::NO_REVISION ? "it is published; check it out first"
                                           : HolderText(row) + "; it must be published or undone"));
}

}  // namespace kxudm::profile
