// Stands between a source of XML text and the XML runtime and lets through only what the runtime
// may be given. For internal use of the settings documents; one thread.
//
// The runtime takes text that begins with "HTTP/" or "--" for a network message, and can be kept
// busy for minutes by text with many names (MarkupMeter). So a text has to begin with "<", after a
// byte order mark of UTF-8 and blanks, and it ends where a limit is passed, as if cut there.
//
//     DocumentGuard guard(file);
//     if (guard.BeginsWithMarkup()) { std::istream checked(&guard); ... }
#pragma once

#include <istream>
#include <streambuf>
#include <vector>

#include "settings/_private/MarkupMeter.h"

namespace kxct {

class DocumentGuard : public std::streambuf {
  public:
    /// Reads from `source`, which stays the caller's and has to outlive the guard.
    explicit DocumentGuard(std::istream& source) : _source(source) {}

    /// Passes over byte order mark and blanks, and answers whether "<" comes next. False too for an
    /// empty, unreadable or failed source. To be asked once, before anything is read.
    bool BeginsWithMarkup();

  protected:
    int_type underflow() override;

  private:
    std::istream& _source;
    MarkupMeter _meter;
    // On the heap: a document may be read on a thread with a small stack.
    std::vector<char> _buffer = std::vector<char>(65536);
};

}  // namespace kxct
