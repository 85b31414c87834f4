// The observer by which a session hears from the runtime.
//
// UDMDBCtrl::Connect makes it and shares it with the runtime's session. It points back to the
// session that made it without owning it, so that session must outlive the attachment.
#pragma once

#include <kxct/kxct_export.h>
#include <kxudm/IUDMProfileSlot.h>

namespace kxct {

class UDMDBCtrl;

class KXCT_EXPORT UDMSessionSlot : public kxudm::IUDMProfileSlot {
  public:
    explicit UDMSessionSlot(UDMDBCtrl* session);
    UDMSessionSlot(const UDMSessionSlot&) = default;
    UDMSessionSlot(UDMSessionSlot&&) noexcept = default;
    UDMSessionSlot& operator=(const UDMSessionSlot&) = default;
    UDMSessionSlot& operator=(UDMSessionSlot&&) noexcept = default;
    ~UDMSessionSlot() override;

    // Hands the notification to the session.
    void update(kxudm::UDMProfileUpdate update) override;

  private:
    UDMDBCtrl* _session;
};

}  // namespace kxct
