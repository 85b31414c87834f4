// The patterns of "like": "*" stands for any text, also none, and "?" for one character; all else
// for itself. A pattern that does not end with a wildcard gets a "*".
//
// Layer: query.
#pragma once

#include <string>
#include <string_view>

namespace kxudm::query {

class Pattern {
  public:
    explicit Pattern(std::string_view text);

    // `text` is UTF-8. Takes at most the product of both lengths.
    [[nodiscard]] bool Matches(std::string_view text) const;

    // What stands before the first wildcard: every match begins with it.
    [[nodiscard]] std::string_view Prefix() const;
    // Every text that begins with the prefix matches.
    [[nodiscard]] bool IsPrefixOnly() const;
    // With the wildcard at its end.
    [[nodiscard]] const std::string& Text() const { return _text; }

  private:
    std::string _text;
    std::size_t _prefix;
};

// The least text that is greater than all that begin with `prefix`, in the order of bytes; empty if
// there is none. UTF-8 if `prefix` is.
[[nodiscard]] std::string AfterPrefix(std::string_view prefix);

}  // namespace kxudm::query
