#pragma once

// The parts of a path, found in its text alone: nothing is asked of the file system. Layer: above
// kxutl. A value; any thread.
//
//     osaFileInfo info("/data/steel.v2.ldb");
//     info.GetPath();            // "/data"
//     info.GetBaseName();        // "steel.v2"
//     info.GetFileExtension();   // "ldb"

#include <kxlmosa/kxlmosa_export.h>
#include <kxutl/kxString.h>

class KXLMOSA_EXPORT osaFileInfo {
  public:
    explicit osaFileInfo(const kxString& path);

    // What stands before the last separator: "/data/x" and "/data/" give "/data", "/x" gives "/". A
    // path without separator lies in the current directory: ".".
    kxString GetPath() const;
    // What stands after the last separator, without the extension. Empty for "/data/".
    kxString GetBaseName() const;
    // What follows the last dot of the name, without the dot; empty if there is none. A dot at the
    // start of the name marks a hidden file and no extension.
    kxString GetFileExtension() const;

  private:
    kxString _path;
    // Where the name starts, and where its extension's dot stands or, without one, where it ends.
    std::size_t _name;
    std::size_t _dot;
};
