// Queries of the library, with what they find and the time that they take.
#pragma once

#include "Library.h"

namespace demo {

// Three queries of attributes and a search in the full text, each printed as one line.
void PrintSearches(Library& library);

}  // namespace demo
