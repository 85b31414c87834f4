// How the controller's operations look at the items that they are given.
#pragma once

#include <kxct/ContentItem.h>

namespace kxct {

// The content behind an item; null for a null item and for an item of any other kind.
ContentItem* AsContent(Item* item);

// The same, and null where its handle is empty.
ContentItem* AsFilledContent(Item* item);

}  // namespace kxct
