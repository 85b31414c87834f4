// Gives a file new content in one step: either all of it arrives or the file stays as it was, also
// when the disk is full or the process dies. For internal use of settings/; one thread.
//
// The content goes to a temporary file beside the target (same mode, and same owner if that can be
// set), which takes the target's place in Commit. A symbolic link stays: the file it leads to is
// replaced. What has no place to be replaced is written directly: devices, pipes, a link to
// nothing, and a file in a folder where no other file may be made.
//
//     FileReplacement file(path);
//     file.Stream() << text;
//     const bool arrived = file.Commit();
#pragma once

#include <sys/types.h>

#include <boost/filesystem/fstream.hpp>
#include <boost/filesystem/path.hpp>
#include <ostream>

namespace kxct {

class FileReplacement {
  public:
    explicit FileReplacement(const boost::filesystem::path& target);
    /// Without Commit the target stays as it was, unless it is written directly.
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// In a failed state if the file can't be opened.
    std::ostream& Stream() { return _stream; }

    /// Closes the file and puts it in place. False if any byte didn't arrive; the target is then as
    /// it was, unless it is written directly, and the temporary file is gone. To be called once.
    bool Commit();

  private:
    bool CreateTemporary(mode_t mode);
    void TakeOver();

    boost::filesystem::path _target;
    boost::filesystem::path _temporary;  // empty if the target is written directly
    boost::filesystem::ofstream _stream;
};

}  // namespace kxct
