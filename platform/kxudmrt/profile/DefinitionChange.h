// Changes of content definitions in a library that has entities of them.
//
// Layer: profile. A change is one transaction: the new catalogue is checked whole, what is stored
// is brought in line with it, and it becomes the library's own; or nothing happens. The rules, as
// docs/data-model.md tells them to users:
//
// - An added attribute answers its default in every revision that never had a value of it.
// - A removed one is hidden; its values stay and are back when it comes back.
// - A new data type converts the values of all revisions, whoever sees them; where one would be
//   lost the change is refused (catalogue/Conversion.h).
// - Valid values count for what is set from then on.
// - What a definition is (versioned, abstract, its type) and a group with links in it can't change
//   under entities.
#pragma once

#include <functional>

#include "profile/Session.h"

namespace kxudm::profile {

using CataloguePtr = std::shared_ptr<const catalogue::Catalogue>;

// Runs `make` on the library's catalogue and makes its result the library's. False, with nothing
// done, if that is equal. `rewrite` lets a value be converted that can't be told from the result
// any more. Tells code 3 for each state whose definition has changed, in every session. Throws
// UDMException within a bulk edit, for what `make` throws, and for what the rules above refuse; the
// library is then as it was.
bool ChangeCatalogue(Session& session,
                     const char* operation,
                     bool rewrite,
                     const std::function<CataloguePtr(const catalogue::Catalogue&)>& make);

// Brings what is stored in line with a new catalogue, inside of an operation; part of
// ChangeCatalogue, for operations that change more than that.
void BringInLine(store::LibraryStore& store,
                 const catalogue::Catalogue& before,
                 const catalogue::Catalogue& after,
                 bool rewrite);

// Turns the stored attributes of a revision into what its definition, which may have changed since,
// shows of them: without hidden ones, with the defaults of those that it never had a value of.
void ShowThrough(const catalogue::ContentDefinition& definition, store::AttributeList& attributes);

// Brings what queries see of a branch in line with its definition: its attributes come from a
// revision that may be older than that. `uid` is the branch's.
void AlignBranch(Session& session, store::LibraryStore& store, const kxString& uid);

}  // namespace kxudm::profile
