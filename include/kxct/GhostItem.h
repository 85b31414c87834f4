// The placeholder child that makes a tree view draw an expander before the real children are known.
//
// Ownership: each manager holds one, apart from its cache. It answers as ItemImpl does: label
// "###", picture 6, identifier "GhostItem".
#pragma once

#include <kxct/ItemImpl.h>

namespace kxct {

class KXCT_EXPORT GhostItem : public ItemImpl {
  public:
    explicit GhostItem(ItemManager* manager);
    ~GhostItem() override = default;

    const kxString& IsA() override;
};

}  // namespace kxct
