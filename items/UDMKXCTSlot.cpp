#include "items/UDMKXCTSlot.h"

#include <kxct/ItemManager.h>

namespace kxct {

UDMKXCTSlot::UDMKXCTSlot(ItemManager* manager) : m_manager(manager) {}

void UDMKXCTSlot::update(kxudm::UDMProfileUpdate update) {
    m_manager->update(update);
}

}  // namespace kxct
