#pragma once

// Things of the process that library managers share. Layer: above kxutl.

#include <kxlmcore/kxlmcore_export.h>
#include <kxutl/kxString.h>

namespace kxlm {
class iFileMgr;
}

class KXLMCORE_EXPORT kxLMUtls {
  public:
    // The host's file manager; null until the host has set one.
    static kxlm::iFileMgr* GetFileMgr() noexcept;
    // Not owned: the host keeps it alive until it sets another one or null.
    static void SetFileMgr(kxlm::iFileMgr* manager) noexcept;

    // The home directory of the current user: HOME if it is set and not empty, otherwise what the
    // user database says, otherwise empty. Without a trailing separator being added or removed.
    static kxString GetUserDirectory();
};
