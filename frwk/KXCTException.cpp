#include <kxct/KXCTException.h>

namespace kxct {

KXCTException::KXCTException(const kxString& text) : std::logic_error(text) {}

KXCTException::KXCTException(const char* text) : std::logic_error(text ? text : "") {}

KXCTException::KXCTException(const KXCTException& other) = default;

KXCTException& KXCTException::operator=(const KXCTException& other) = default;

KXCTException::~KXCTException() = default;

const char* KXCTException::what() const noexcept {
    const char* text = std::logic_error::what();
    return *text ? text : "Unknown exception";
}

void ThrowKXCTException(const kxString& where, const kxString& message) {
    throw KXCTException(kxString(where + ":: " + message));
}

}  // namespace kxct
