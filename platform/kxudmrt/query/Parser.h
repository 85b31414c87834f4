// From the text of a query to its tree. docs/query-language.md describes the language for users.
//
// Layer: query. Knows neither catalogue nor database: whether an attribute exists is asked later.
#pragma once

#include <kxudm/UDMException.h>

#include <string>
#include <string_view>

#include "query/Tree.h"

namespace kxudm::query {

// Limits of one query. Terms are comparisons and the values of lists.
inline constexpr std::size_t MAX_QUERY_BYTES = std::size_t{64} * 1024;
inline constexpr std::size_t MAX_QUERY_TERMS = 1000;
inline constexpr std::size_t MAX_QUERY_DEPTH = 100;     // of parentheses and "!"
inline constexpr std::size_t MAX_PATTERN_BYTES = 4096;  // of a text after "like"

// Text: "The query has an error at character 9 at "UDMPart": expected ...".
class SyntaxError : public UDMException {
  public:
    SyntaxError(std::size_t position, std::string_view fragment, const std::string& problem);

    // In characters from 1; behind the last one where the end came too early.
    [[nodiscard]] std::size_t Position() const { return _position; }
    // What stands there, cut to 40 bytes; empty at the end of the text.
    [[nodiscard]] const std::string& Fragment() const { return _fragment; }

  private:
    std::size_t _position;
    std::string _fragment;
};

// Text of nothing but blanks is the empty query. Throws SyntaxError, and UDMException for a text
// beyond MAX_QUERY_BYTES.
[[nodiscard]] Tree Parse(std::string_view text);

}  // namespace kxudm::query
