// A notification of one change, as a session's slots get it.
#pragma once

#include <kxudm/UDMItemHandle.h>
#include <kxudm/UDMUID.h>

namespace kxudm {

// What happened. The numbers are fixed; which records of UDMProfileUpdate go with which code stands
// behind each.
enum SignalOption : int {
    // Attribute, display name, file or save point changed: handle.
    SIGNAL_CONTENT_CHANGED = 3,
    // The entity now stands at a new revision: the new handle.
    SIGNAL_REVISION_ADVANCED = 5,
    // Published where the revision number stays, or the lock changed: handle.
    SIGNAL_STATE_CHANGED = 10,
    // An owned child was deleted together with its place: parent handle and child.
    SIGNAL_OWNED_CHILD_DELETED = 12,
    // A session ended: session id.
    SIGNAL_SESSION_CLOSED = 34,
    // A child came below a parent: parent handle.
    SIGNAL_CHILD_ADDED = 35,
    // A child left a parent: parent handle and child.
    SIGNAL_CHILD_REMOVED = 36,
    // A working revision was undone: handle is the revision that stands again, UID the one gone.
    SIGNAL_REVISION_UNDONE = 39,
    // A reference was added: the referring handle.
    SIGNAL_REFERENCE_ADDED = 40,
    // A reference was removed: the referring handle and the one referred to.
    SIGNAL_REFERENCE_REMOVED = 41,
    // A content was classified or moved into a folder: handle of the classification or folder.
    SIGNAL_CONTAINER_ENTERED = 42,
    // A content left a classification or folder: its handle and the content's.
    SIGNAL_CONTAINER_LEFT = 43,
    // An entity was deleted: UID of one revision.
    SIGNAL_ENTITY_DELETED = 44,
};

class KXUDMRT_EXPORT UDMProfileUpdate {
  public:
    static UDMProfileUpdate OfHandle(SignalOption code, const UDMItemHandle& handle);
    static UDMProfileUpdate OfChild(SignalOption code,
                                    const UDMItemHandle& parent,
                                    const UDMItemHandle& child);
    // SIGNAL_REVISION_UNDONE with the handle that stands again and the UID that is gone.
    static UDMProfileUpdate OfUndo(const UDMItemHandle& handle, const UDMUID& gone);
    // SIGNAL_ENTITY_DELETED.
    static UDMProfileUpdate OfDeletion(const UDMUID& uid);
    // SIGNAL_SESSION_CLOSED.
    static UDMProfileUpdate OfSession(const kxString& sessionId);

    SignalOption GetOpCode() const { return _code; }
    // Each is empty where the code doesn't carry it.
    kxString GetSessionId() const { return _sessionId; }
    UDMUID GetUID() const { return _uid; }
    UDMItemHandle GetUDMHandle() const { return _handle; }
    UDMItemHandle GetChild() const { return _child; }

  private:
    explicit UDMProfileUpdate(SignalOption code) : _code(code) {}

    SignalOption _code;
    kxString _sessionId;
    UDMUID _uid;
    UDMItemHandle _handle;
    UDMItemHandle _child;
};

}  // namespace kxudm
