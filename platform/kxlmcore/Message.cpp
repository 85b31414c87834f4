#include <kxlmcore/Message.h>

namespace kxlm {

Message::Message(unsigned int type, const kxString& text) : _text(text), _type(type) {}

const kxString& Message::GetMessage() const noexcept {
    return _text;
}

unsigned int Message::GetType() const noexcept {
    return _type;
}

}  // namespace kxlm
