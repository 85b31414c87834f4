// Hands the changes of a session to an item manager.
//
// The manager owns its slot through a shared pointer and disconnects it before it goes.
#pragma once

#include <kxudm/IUDMProfileSlot.h>

namespace kxct {

class ItemManager;

class UDMKXCTSlot : public kxudm::IUDMProfileSlot {
  public:
    explicit UDMKXCTSlot(ItemManager* manager);

    void update(kxudm::UDMProfileUpdate update) override;

  private:
    // Not owned.
    ItemManager* m_manager;
};

}  // namespace kxct
