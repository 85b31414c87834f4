#pragma once

// Text between our form (any bytes, UTF-8 by convention) and Tcl's. Tcl writes NUL as C0 80, since
// it ends texts with NUL, and a character beyond the basic plane as two surrogates of three bytes
// each, since its characters have 16 bits. All other bytes are the same in both, valid or not.
//
// Not told apart on the way back: C0 80 and surrogate pairs that stood in our text from the start,
// where they are not valid UTF-8.

#include <kxutl/kxString.h>

namespace kxTclText {

kxString ToTcl(const kxString& text);
kxString FromTcl(const char* bytes, std::size_t count);

}  // namespace kxTclText
