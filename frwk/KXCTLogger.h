// Where the messages of a library manager go: into a log file of their own, or, the serious ones
// only, to the file manager of the host.
//
// Layer: framework. Hosts get one from KXCT_CreateLogger (<kxct/EntryPoints.h>) and see the
// interface; the class is hidden outside the library.
//
// Mode 0 is the log file. It is appended to, so that several loggers and processes may share it; a
// line of the message's type, from `_logLevel` on, reads
//
//     <local time> :: ERROR: the text
//
// A file that can't be opened makes a logger that writes nothing. Any other mode hands messages of
// type 3 (error) and above to kxLMUtls::GetFileMgr() and drops the rest; the level plays no part.
// Nothing here fails aloud.
//
// Threads: nothing is locked. A line is written in three pieces and flushed, so concurrent callers
// may mix theirs.
#pragma once

#include <kxlmcore/iMessageLogger.h>

#include <cstdio>

namespace kxct {

class KXCTLogger : public kxlm::iMessageLogger {
  public:
    KXCTLogger(int mode, kxString path);
    KXCTLogger(const KXCTLogger&) = delete;
    KXCTLogger& operator=(const KXCTLogger&) = delete;
    ~KXCTLogger() override;

    // The least type that is written to the log file; 0 at first.
    void SetLogLevel(int level) { _logLevel = level; }

    // The order of the virtual operations is that of the interface.

    // The only form that tells the position in the log file, and the only one that takes `extra`
    // there; a file manager gets the position and not `extra`.
    void LogMessage(const kxlm::Message& message,
                    const char* file,
                    int line,
                    const kxString& extra) override;
    // A file manager gets "file(line): text", the log file the text alone.
    void LogMessage(const kxlm::Message& message, const char* file, int line) override;
    void LogMessage(unsigned int type, const kxString& text, const char* file, int line) override;
    // The form that all others for the log file end in.
    void LogMessage(unsigned int type, const kxString& text) override;
    void LogMessage(const kxlm::Message& message) override;
    bool SupportsNewInterface() override;
    // Without a prefix and whatever the level. With `details`, `text` is a format for them, of
    // which at most 499 bytes are written (frwk/_private/MessageFormat.h); without, it is written
    // as it stands. A file manager gets `text` as an error, and no details.
    void LogMessageExtended(const kxString& text, kxStlVector<kxString> details) override;

  private:
    void _WriteLine(const kxString& line);

    kxString _logFilePath;
    int _mode;
    int _logLevel = 0;
    std::FILE* _logFile = nullptr;
};

}  // namespace kxct
