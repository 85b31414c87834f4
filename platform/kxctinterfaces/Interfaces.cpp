// Anchors the virtual tables of the abstract classes in this library.
#include <kxctinterfaces/Attributes.h>
#include <kxctinterfaces/Controller.h>
#include <kxctinterfaces/Factory.h>
#include <kxctinterfaces/Item.h>
#include <kxctinterfaces/MasterDBManager.h>

namespace kxct {

Item::~Item() = default;
Controller::~Controller() = default;
Factory::~Factory() = default;
MasterDBManager::~MasterDBManager() = default;

}  // namespace kxct
