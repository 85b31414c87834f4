// Full text search of a session: the store's index, and the vaults that its contents come from.
//
// Layer: profile. Whoever brings files into the library by other means than AddFile or an import of
// folders has to do nothing for search: the first search reads the new contents. Where they are at
// hand in memory, as in an import, PreparedText and store::ContentTexts spare that search the
// time.
#pragma once

#include <string>
#include <string_view>

#include "profile/Session.h"
#include "store/FullText.h"

namespace kxudm::profile {

// The words of contents in the vaults of a session, which outlives the reader.
[[nodiscard]] store::TextReader TextsOf(Session& session);

// Indexes what is new, as far as nobody else is writing just then. What is left is no less found.
// Not inside of a transaction, except that of a bulk edit.
void BringTextsForward(Session& session);

// The words of the file that begins with these bytes, as they stand in the index; empty for what is
// no text. Any thread.
[[nodiscard]] std::string PreparedText(std::string_view beginning);

}  // namespace kxudm::profile
