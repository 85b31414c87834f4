// Items that stay allocated for good.
//
// An item that an update drops from a cache may still be in the hands of a listener, and a
// duplicate that found its UID taken is never deleted either. Both are handed over here: the
// process-wide list keeps them reachable, so that a leak checker sees a decision and not a leak.
#pragma once

namespace kxct {

class Item;

// Keeps `item`, never to be deleted. Null is ignored.
void RetireItem(Item* item);

}  // namespace kxct
