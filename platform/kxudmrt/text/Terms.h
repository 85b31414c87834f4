// The form in which words stand in the full text index.
//
// Layer: text. Prepared text is a line of terms with blanks between them, one for each place: a
// term is a word as it is written or, where folding makes another one of it, both with '~' between
// them ("Bolt~bolt"). "." holds a place at which no word can be found, so that no phrase reaches
// across it. Of a script without word breaks each two neighbouring characters are a term, and the
// last one of a run by itself. The index (sql/sqlite/Tokenizer.h) takes prepared text as it is.
//
//     Prepare("Bolt M6", Source::Attribute)  ->  "Bolt~bolt M6~m6"
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "text/Scanner.h"

namespace kxudm::text {

// Between the written and the folded form of a word; before the folded form in the index.
inline constexpr char kFolded = '~';
inline constexpr char kGap = '.';

// In files, what is worth finding stands between the data: numbers are left out where three or more
// follow each other or where they have a fraction, and so is a line that differs from 32 others
// before it in nothing but numbers.
enum class Source { Attribute, File };

// Appends the prepared form, after a blank if something is there already.
void AppendPrepared(std::string& prepared, std::string_view utf8, Source source);
[[nodiscard]] std::string Prepare(std::string_view utf8, Source source);
// So that no phrase goes from one text into the next.
void AppendGap(std::string& prepared);

// A word in composed form, cut to the longest that is kept.
[[nodiscard]] std::string Written(std::string_view word);
// The same without case and accents: Unicode's case folding, without the marks that combine with
// Latin, Greek and Cyrillic letters, the vowel signs of Arabic and Hebrew, and the Arabic tatweel.
// Folding a second time changes nothing. Empty for a word of such marks alone.
[[nodiscard]] std::string Folded(std::string_view word);
// The characters of a run without word breaks, each in composed form.
[[nodiscard]] std::vector<std::string> Characters(std::string_view run);

}  // namespace kxudm::text
