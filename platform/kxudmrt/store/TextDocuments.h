// The documents of an entity's attributes, as they should be.
//
// Layer: store, inside.
#ifndef KXUDMRT_STORE_TEXTDOCUMENTS_H
#define KXUDMRT_STORE_TEXTDOCUMENTS_H

#include <string>

#include "store/LibraryStore.h"

namespace kxudm::store {

// Prepared texts; empty where there is no such revision.
struct TextDocuments {
    std::string published;
    std::string working;
};

// Both are empty for an entity that isn't there.
[[nodiscard]] TextDocuments DocumentsOf(sql::Connection& connection, EntityId id);

// Row of text_attribute.
[[nodiscard]] constexpr std::int64_t TextRow(EntityId id, bool working) {
    return 2 * id + (working ? 1 : 0);
}

}  // namespace kxudm::store

#endif
