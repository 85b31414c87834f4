#include "profile/Profile.h"

namespace kxudm::profile {

namespace {

// An unversioned entity has one revision, which is always editable and seen by everybody: there is
// nothing to check out, save, publish or undo, and asking for it succeeds.
void RequireUnversioned(Session& session, const UDMItemHandle& handle, const char* operation) {
    session.Poll(operation);
    if (session.Resolve(handle)->State() != store::RevisionState::Unversioned) {
        ThrowNotOffered(operation);
    }
}

}  // namespace

void Profile::PersistEntity(const UDMItemHandle& handle,
                            const kxString& /*comment*/,
                            bool /*keep*/,
                            bool /*withFiles*/,
                            bool /*withLinks*/) {
    RequireUnversioned(*_session, handle, "PersistEntity");
}

void Profile::SaveEntity(const UDMItemHandle& handle,
                         const kxString& /*comment*/,
                         bool /*withFiles*/) {
    RequireUnversioned(*_session, handle, "SaveEntity");
}

void Profile::UndoCheckout(const UDMItemHandle& handle) {
    RequireUnversioned(*_session, handle, "UndoCheckout");
}

void Profile::Checkout(const UDMItemHandle& handle, const kxString& /*comment*/) {
    RequireUnversioned(*_session, handle, "Checkout");
}

UDMItemHandle Profile::GetWorkingHandle(const UDMItemHandle& handle) {
    _session->Poll("GetWorkingHandle");
    const Session::State state = _session->Resolve(handle);
    const Session::State newest = _session->Get(kxString(state->BaseUid()));
    if (!newest->IsEditable()) {
        throw UDMNotFoundException(state->Cdef() + " " + kxString(state->BaseUid()) +
                                   " has no working revision in workspace \"" +
                                   _session->Options().workspace + "\"; check it out first");
    }
    return UDMItemHandle(newest);
}

}  // namespace kxudm::profile
