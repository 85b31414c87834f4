#pragma once

// Listing and making directories. Layer: above kxutl. Without state; any thread.
//
// Paths and names are bytes as the file system has them.

#include <kxlmosa/kxlmosa_export.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

class KXLMOSA_EXPORT osaDirectory {
  public:
    // The names, without path, of everything in the directory that is no directory itself, in byte
    // order so that the first match of a search is the same on each machine. Links count as what
    // they point to. Empty if the directory is missing or may not be read.
    static kxStlVector<kxString> GetFileNames(const kxString& path);

    // Makes a directory; with `recursive` its missing parents too. Of `mode` the nine permission
    // bits count, less the process's umask; parents can always be written by their owner. Returns 0
    // if the directory is there in the end, also when it was there before, and otherwise the errno
    // value of what failed; parents that were made by then stay.
    static int Create(const kxString& path, int mode, bool recursive);
};
