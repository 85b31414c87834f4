// Lists as one text, in the form in which a kxVariant gives a list: entries between blanks, in
// braces or with backslashes where an entry needs them.
//
// Layer: catalogue.
#pragma once

#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

#include <string_view>

namespace kxudm::catalogue {

// The entries of `text`; an empty text has none. Throws UDMException, naming the text, where a
// brace is left open, closes none, or is followed by anything but a blank.
kxStlVector<kxString> ListOfText(std::string_view text);

}  // namespace kxudm::catalogue
