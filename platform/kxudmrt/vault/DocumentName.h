// Names of documents: plain file names that are safe on every system that a file may be retrieved
// to. They are checked when a file enters a library and again when it leaves, because a library or
// an archive may come from elsewhere.
#ifndef KXUDMRT_VAULT_DOCUMENTNAME_H
#define KXUDMRT_VAULT_DOCUMENTNAME_H

#include <string>
#include <string_view>

namespace kxudm::vault {

// Throws UDMException that shows the name and says what is wrong with it. Refused are: the empty
// name, "." and "..", '/' and '\', control characters, bytes that aren't UTF-8, more than 255
// bytes, a dot or blank at the end, and the names of devices (CON, nul.txt, COM1, ...) in any case.
void CheckDocumentName(std::string_view name);

// The text with control characters and bytes that aren't UTF-8 as \xNN, for messages; long ones
// are cut.
std::string Printable(std::string_view text);

}  // namespace kxudm::vault

#endif
