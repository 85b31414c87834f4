#include "items/Retired.h"

#include <deque>

namespace kxct {

void RetireItem(Item* item) {
    // Never destroyed: static destruction must not make the items unreachable before a leak check.
    static auto* const retired = new std::deque<Item*>;
    if (item) {
        retired->push_back(item);
    }
}

}  // namespace kxct
