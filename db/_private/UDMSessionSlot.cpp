#include <kxct/UDMDBCtrl.h>
#include <kxct/UDMSessionSlot.h>

namespace kxct {

UDMSessionSlot::UDMSessionSlot(UDMDBCtrl* session) : _session(session) {}
UDMSessionSlot::~UDMSessionSlot() = default;

// By value: the runtime's form.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void UDMSessionSlot::update(kxudm::UDMProfileUpdate update) {
    _session->Update(update);
}

}  // namespace kxct
