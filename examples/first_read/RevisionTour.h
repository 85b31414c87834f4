// One content through the life of revisions, and how many revisions there are of all.
#pragma once

#include <cstddef>
#include <vector>

#include "FolderImport.h"

namespace demo {

// Checks the content out, describes it, saves and publishes it, branches from its first revision
// unless that was done before, and prints its history. What is refused is told on the standard
// error; false then.
bool LiveThrough(Library& library, const Entry& content);

// Of all contents among the entries, branches of theirs included.
std::size_t CountRevisions(Library& library, const std::vector<Entry>& entries);

}  // namespace demo
