#pragma once

// Where a library manager sends its messages. The host implements it or asks kxct for a logger of
// its own. Layer: above kxutl. The order of the virtual operations is part of the binary interface,
// so new ones may only take a reserved place.

#include <kxlmcore/kxlmcore_export.h>
#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

namespace kxlm {

class Message;

class KXLMCORE_EXPORT iMessageLogger {
  public:
    iMessageLogger() = default;
    iMessageLogger(const iMessageLogger&) = default;
    iMessageLogger& operator=(const iMessageLogger&) = default;
    virtual ~iMessageLogger();

    // Keeps its place in the order; does nothing.
    virtual void Reserved1();

    // `file` and `line` tell where in the source the message arose; `file` is never null.
    virtual void LogMessage(const Message& message,
                            const char* file,
                            int line,
                            const kxString& extra) = 0;
    virtual void LogMessage(const Message& message, const char* file, int line) = 0;
    virtual void LogMessage(unsigned int type,
                            const kxString& text,
                            const char* file,
                            int line) = 0;
    virtual void LogMessage(unsigned int type, const kxString& text) = 0;
    virtual void LogMessage(const Message& message) = 0;

    // False unless LogMessageExtended may be called.
    virtual bool SupportsNewInterface();
    // Keeps its place in the order; does nothing.
    virtual void Reserved2();
    // `text` may hold "%s" for entries of `details`, in their order.
    virtual void LogMessageExtended(const kxString& text, kxStlVector<kxString> details) = 0;
    // Keeps its place in the order; does nothing.
    virtual void Reserved3();
};

}  // namespace kxlm
