#pragma once

#include <kxudmrt/kxudmrt_export.h>
#include <kxutl/kxString.h>

namespace kxudm {

// Fills `value` from the environment variable `name` and returns true where the variable is
// defined, also as an empty text. Otherwise false, and `value` stays as it was.
KXUDMRT_EXPORT bool GetEnvironmentVar(kxString& value, const kxString& name);

}  // namespace kxudm
