#pragma once

// Questions about files of the operating system. Layer: above kxutl. Without state; any thread.
//
// Paths are bytes as the file system has them. A path that is empty or holds a NUL names nothing.

#include <kxlmosa/kxlmosa_export.h>

class kxString;

class KXLMOSA_EXPORT osaFile {
  public:
    // True for an existing file, directory or anything else that a path can name. A link counts as
    // what it points to, so one that points nowhere is false, as is what may not be looked at.
    static bool Exists(const kxString& path);
};
