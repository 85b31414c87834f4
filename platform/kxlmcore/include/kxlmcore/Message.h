#pragma once

// What a library manager tells its loggers: a type, which is also the weight, and a text. Layer:
// above kxutl. A value.

#include <kxlmcore/kxlmcore_export.h>
#include <kxutl/kxString.h>

namespace kxlm {

// The weights 0 to 4 ascend. Performance figures stand apart from them, above all.
enum MessageType : unsigned int {
    LM_MSG_DEBUG = 0,
    LM_MSG_INFO = 1,
    LM_MSG_WARNING = 2,
    LM_MSG_ERROR = 3,
    LM_MSG_FATAL = 4,
    LM_MSG_PERFORMANCE = 5
};

class KXLMCORE_EXPORT Message {
  public:
    // `type` may be any number, not only a MessageType.
    Message(unsigned int type, const kxString& text);

    const kxString& GetMessage() const noexcept;
    unsigned int GetType() const noexcept;

  private:
    kxString _text;
    unsigned int _type;
};

}  // namespace kxlm
