// Puts texts into the "%s" of a message. Layer: framework; hidden outside the library.
//
// Formats come from message catalogues of hosts and may be wrong or hostile: whatever one asks for,
// nothing but the given texts is read and nothing is written beyond the limit.
#pragma once

#include <kxutl/kxStlVector.h>
#include <kxutl/kxString.h>

#include <cstddef>

namespace kxct {

// Bytes of a formatted message with its final NUL; what does not fit is cut off.
inline constexpr std::size_t MESSAGE_BUFFER_SIZE = 500;
// Later texts are not used.
inline constexpr std::size_t MAX_MESSAGE_DETAILS = 5;

// `format` as printf writes it with the first MAX_MESSAGE_DETAILS of `details` as arguments: "%s"
// with flags, width and precision, "%2$s" for a certain one, "%%" for a percent sign. A text that
// is not there is empty. Any other conversion would read a text as something else and stands in the
// result as it is. Format and texts end at a NUL.
kxString FormatMessage(const kxString& format, const kxStlVector<kxString>& details);

}  // namespace kxct
