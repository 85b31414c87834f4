#pragma once

// The pointers that were handed to scripts. A script gets a text, "kxptr:<type>:<hexadecimal
// number>", and what comes back counts as a pointer only if the very text is known here. The number
// is a serial number and no address, so that a text whose object is gone never leads to a later
// object at the same place. Layer: above kxutl. Usable from any thread.
//
// Whoever destroys an object that may have been handed out calls Forget first.
//
//     kxString text = kxPointerRegistry::ToText(item, "kxct::Item");   // "kxptr:kxct::Item:1"
//     kxPointerRegistry::Forget(item);
//     kxPointerRegistry::FromText(text, pointer, type);                // false

#include <kxinterp/kxinterp_export.h>

class kxString;

class KXINTERP_EXPORT kxPointerRegistry {
  public:
    // The text for a pointer; the same for the same pointer and type until it is forgotten. A null
    // pointer has the number 0 and is not remembered.
    static kxString ToText(void* pointer, const kxString& typeName);
    // True if the text is known; then `pointer` and `typeName` are set. Number 0 is a null pointer
    // of any type.
    static bool FromText(const kxString& text, void*& pointer, kxString& typeName);
    // Makes every text of the pointer unknown. Costs next to nothing while nothing is handed out.
    static void Forget(const void* pointer) noexcept;
};
