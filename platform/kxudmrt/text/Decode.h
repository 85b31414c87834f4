// What a file says as a text.
//
// Layer: text.
#pragma once

#include <string>
#include <string_view>

namespace kxudm::text {

// How much of a file is looked at.
inline constexpr std::size_t kLongestText = std::size_t{1} << 20;

// A quick look at the first bytes; true for what Decode may still refuse.
[[nodiscard]] bool MayBeText(std::string_view bytes);

// The beginning of a file as UTF-8; empty for what is no text. A byte order mark tells UTF-8 or
// UTF-16. Without one a file with control characters is no text; any other one is UTF-8 or, with
// bytes that are none, Latin-1. A character that is cut at the end is left out.
[[nodiscard]] std::string Decode(std::string_view bytes);

}  // namespace kxudm::text
