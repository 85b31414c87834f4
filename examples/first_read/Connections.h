// Classifications and relations of some contents.
#pragma once

#include <vector>

#include "FolderImport.h"

namespace demo {

// Puts the first contents under the classification "Reviewed" and relates the first one to each of
// the others, in one revision of each that is then published. What is classified already is left as
// it is. False, and told on the standard error, where something failed.
bool Connect(Library& library, const std::vector<Entry>& entries);

// Prints the classification with what is under it, and the relations of the first of these.
void PrintConnections(Library& library);

}  // namespace demo
