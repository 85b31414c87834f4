// The check of attribute values against their definitions.
//
// A value is brought to one form per data type, so that equal values are equal bytes in a store:
//
//   Boolean     BOOLEAN     from true/false/1/0 as text in any case, 1 and 0 as numbers
//   Integer     INTEGER     64 bits; from decimal text, and from a number without a fraction
//   Double      DOUBLE      finite only; from decimal text, and from an integer that it holds
//                           exactly
//   String      STRING      from booleans and numbers by their text
//   StringList  STRINGLIST  from one text as a list of one
//   Color       STRING      "#rrggbb" in lower case; from upper case, and from 0 to 0xffffff
//   Time        STRING      "2026-01-31T12:00:00Z": UTC, whole seconds, years 0001 to 9999, so
//                           that the order of the texts is the order of the times
//
// Texts are UTF-8 without NUL: a caller whose names hold other bytes encodes them first. EMPTY, an
// empty text where the type is not String, and an empty list where it is StringList take the value
// away: the result is EMPTY. A mandatory attribute takes neither EMPTY nor an empty text or list.
// NaN and the infinities are no values: they have no place in an order and no form in exchange.
#pragma once

#include <cstddef>

#include "catalogue/Definition.h"

namespace kxudm::catalogue {

// `value` in the form above. Throws UDMException, naming `definition` (unless empty), the
// attribute, the value (cut to 80 bytes, in printable form) and what was expected.
kxVariant CheckedValue(const AttributeDefinition& attribute,
                       const kxVariant& value,
                       std::string_view definition = {});

// Offset of the first byte that is not part of well-formed UTF-8, or npos.
std::size_t FirstInvalidUtf8(std::string_view text);

// `text` fit for a one-line message: cut to 80 bytes (followed by "..."), control characters and
// bytes that are not UTF-8 written as \xNN.
kxString Printable(std::string_view text);

}  // namespace kxudm::catalogue
