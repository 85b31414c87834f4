// Reads entries back from the library and prints them.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "FolderImport.h"

namespace demo {

// How many of the entries are no folders.
std::size_t CountContents(const std::vector<Entry>& entries);

// Reads every entry by its UID and compares all of its values. Tells each difference on the
// standard error. Returns how many contents were equal.
std::size_t CountEqual(Library& library, const std::vector<Entry>& entries);

// Prints the tree, indented, with names, definitions and sizes, cut after `lines` lines.
void PrintTree(Library& library, const std::vector<Entry>& entries, std::size_t lines);

// `name` as one line of printable UTF-8: control characters and the backslash as escapes, and
// bytes that are no UTF-8 as "\xHH".
std::string Printable(const std::string& name);

}  // namespace demo
