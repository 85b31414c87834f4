#include <kxutl/kxString.h>

#include <iomanip>
#include <ostream>

void PrintTo(const kxString& text, std::ostream* stream) {
    *stream << std::quoted(static_cast<const std::string&>(text));
}
