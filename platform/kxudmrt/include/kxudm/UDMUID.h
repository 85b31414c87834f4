// Identifier of an entity, with or without a revision.
//
// The text form is the base UID, or the base UID, ":" and the decimal revision. A base UID never
// holds ":", so the first one ends it.
#pragma once

#include <kxudmrt/kxudmrt_export.h>
#include <kxutl/kxString.h>

#include <compare>

namespace kxudm {

class KXUDMRT_EXPORT UDMUID {
  public:
    UDMUID() = default;
    // Any text; nothing is checked. "A:3" has the base "A".
    UDMUID(const kxString& text);  // NOLINT(google-explicit-constructor): texts are UIDs everywhere

    // The identifier without its revision; empty for an empty text or one that begins with ":".
    const kxString& GetDmUid() const { return _base; }

    // The whole text, as it was given.
    operator kxString() const { return _text; }  // NOLINT(google-explicit-constructor): see above

    // By the whole text, byte for byte.
    friend bool operator==(const UDMUID& a, const UDMUID& b) { return a._text == b._text; }
    friend bool operator<(const UDMUID& a, const UDMUID& b) { return a._text < b._text; }

  private:
    kxString _text;
    kxString _base;
};

}  // namespace kxudm
