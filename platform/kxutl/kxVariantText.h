#pragma once

// Numbers, lists and pointers as text and back, for kxVariant. Independent of the locale.

#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

#include <cstdint>

namespace kxVariantText {

bool ReadBoolean(const kxString& text);
// False if the text is not a whole decimal number that fits; `value` is then untouched.
bool ReadInteger(const kxString& text, std::int64_t& value);
// 0 for what is no number. A number out of range becomes infinity or 0, as its sign and size say.
double ReadDouble(const kxString& text);

kxString Write(std::int64_t value);
kxString Write(float value);
kxString Write(double value);
kxString WritePointer(const void* address, const kxString& typeName);
// As Tcl would write the list: split by Tcl it gives the same entries.
kxString WriteList(const kxStlVector<kxString>& list);

}  // namespace kxVariantText
