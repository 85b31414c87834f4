// Observer of a session: derive, implement update, and hand it to IUDMProfile::Connect inside a
// boost::shared_ptr.
//
// A slot is called on the thread whose call made or fetched the change, after the change is
// committed, with no lock held and no transaction open: it may call straight back into the session.
// An exception from a slot ends the round for that slot only and reaches the caller of the
// operation after the other slots were told; the change stands.
#pragma once

#include <kxudm/UDMProfileUpdate.h>

namespace kxudm {

class KXUDMRT_EXPORT IUDMProfileSlot {
  public:
    IUDMProfileSlot() = default;
    IUDMProfileSlot(const IUDMProfileSlot&) = default;
    IUDMProfileSlot(IUDMProfileSlot&&) noexcept = default;
    IUDMProfileSlot& operator=(const IUDMProfileSlot&) = default;
    IUDMProfileSlot& operator=(IUDMProfileSlot&&) noexcept = default;
    virtual ~IUDMProfileSlot();

    // Told when the slot was connected to the session of this id, and when it was disconnected.
    // They do nothing unless overridden.
    virtual void connected(const kxString& sessionId);
    virtual void disconnected(const kxString& sessionId);
    // Bracket the updates of one operation. They do nothing unless overridden.
    virtual void beginUpdates();
    virtual void endUpdates();

    // One change. MUST be provided.
    virtual void update(UDMProfileUpdate update) = 0;
};

}  // namespace kxudm
