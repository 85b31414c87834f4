#pragma once

// What the process runs on. One object for the life of the process, immutable and usable from any
// thread. Layer: bottom.
//
//     char separator = kxRuntime::GetInstance().GetPathSeparator();

#include <kxutl/kxutl_export.h>

class KXUTL_EXPORT kxRuntime {
  public:
    static const kxRuntime& GetInstance() noexcept;

    kxRuntime(const kxRuntime&) = delete;
    kxRuntime& operator=(const kxRuntime&) = delete;
    ~kxRuntime() = default;

    // The character between the parts of a path of this platform: '/'.
    char GetPathSeparator() const noexcept;

  private:
    kxRuntime() = default;
};
