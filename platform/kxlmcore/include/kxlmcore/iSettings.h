#pragma once

// The settings of a library manager, as a logger or responder reads them. Layer: above kxutl. Owned
// by the library manager.

#include <kxlmcore/kxlmcore_export.h>
#include <kxutl/kxString.h>

namespace kxlm {

class KXLMCORE_EXPORT iSettings {
  public:
    iSettings() = default;
    iSettings(const iSettings&) = default;
    iSettings& operator=(const iSettings&) = default;
    virtual ~iSettings();

    // The text of `key`, empty if there is none. The library manager gives the two numbers their
    // meaning; kxct passes 1 and 0.
    virtual kxString GetString(const kxString& key, int first, int second) = 0;
};

}  // namespace kxlm
