// From the tree of a query to a condition in SQL, as LibraryStore takes it.
//
// Layer: query, its top. Nothing of a query but bound values reaches the SQL; its text depends on
// the tree's shape and the forms of its patterns alone. A condition has two parts. The filter is
// the whole query, each comparison looked up for the entity at hand; it alone decides. Before it,
// for a search, stand candidates: a set that an index yields and that holds every hit. They come
// from the most selective part that a hit must meet: UID, equality, prefix, range, a walk through
// one attribute, definition, in this order. A query without such a part ("!=", "!", an attribute
// without value) looks at every entity.
//
//     const Tree tree = Parse("class == UDMPart && attrib.mass >= 10");
//     store.Find(Compile(tree, *catalogue, {}), viewer, tree.IsEmpty(), 0, 0, rows);
#pragma once

#include "catalogue/Catalogue.h"
#include "query/Evaluator.h"
#include "store/Rows.h"

namespace kxudm::query {

struct CompileOptions {
    Letters letters = Letters::Exact;
    // Search: looks through the library. Listing: thins out what the listing's own index finds.
    enum class Use { Search, Listing } use = Use::Search;
    // Finds entities of definitions that are excluded from search, too.
    bool withExcluded = true;
};

// The empty query gives no condition, save for what is excluded; that roots are meant is up to the
// caller. Throws UDMException for an attribute that no definition of the catalogue has, naming it
// with its position, and where a database could not take the query for its size.
[[nodiscard]] store::Condition Compile(const Tree& tree,
                                       const catalogue::Catalogue& catalogue,
                                       const CompileOptions& options);

}  // namespace kxudm::query
