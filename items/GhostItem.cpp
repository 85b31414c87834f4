#include <kxct/GhostItem.h>

namespace kxct {

GhostItem::GhostItem(ItemManager* manager) : ItemImpl(manager, nullptr, "GhostItem") {}

const kxString& GhostItem::IsA() {
    static const kxString name("GhostItem");
    return name;
}

}  // namespace kxct
