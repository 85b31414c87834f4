#include "frwk/_private/Guards.h"

#include <kxct/KXCTException.h>

namespace kxct {

void ThrowNullPointer(const char* function, const char* file, const char* name) {
    ThrowKXCTException(SignatureText(function),
                       std::string(file) + ". The pointer " + name + " is null!");
}

void ThrowTranslated(const char* function, const std::exception& cause) {
    throw KXCTException(kxString(SignatureText(function) + " " + cause.what()));
}

}  // namespace kxct
