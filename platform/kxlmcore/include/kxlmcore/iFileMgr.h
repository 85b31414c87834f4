#pragma once

// The part of a host's file manager that takes serious messages. Layer: above kxutl.

#include <kxlmcore/kxlmcore_export.h>

class kxString;

namespace kxlm {

class KXLMCORE_EXPORT iFileMgr {
  public:
    iFileMgr() = default;
    iFileMgr(const iFileMgr&) = default;
    iFileMgr& operator=(const iFileMgr&) = default;
    virtual ~iFileMgr();

    virtual void LogMessage(unsigned int type, const kxString& text) = 0;
};

}  // namespace kxlm
