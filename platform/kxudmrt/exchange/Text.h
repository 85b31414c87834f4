// How texts, numbers and times stand in the document of an archive: each value in one way only, so
// that equal libraries give equal bytes.
//
// Layer: exchange, inside. A text may hold any byte, XML can't: a backslash is written twice, and a
// byte that XML has no place for as \xHH.
#ifndef KXUDMRT_EXCHANGE_TEXT_H
#define KXUDMRT_EXCHANGE_TEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kxudm::exchange {

// Appends the text as it stands in the document, in an attribute or an element.
void AppendEscaped(std::string& out, std::string_view text);
// The same for text that is XML's own already, as it comes from a parser.
void AppendXmlEscaped(std::string& out, std::string_view text);
// What AppendEscaped took, of what a parser gives. Nothing where a backslash begins no escape, or
// one that was not needed.
[[nodiscard]] std::optional<std::string> Unescaped(std::string_view text);

[[nodiscard]] std::string NumberText(double value);
[[nodiscard]] std::string NumberText(std::int64_t value);
// Nothing for a text that NumberText doesn't make.
[[nodiscard]] std::optional<double> DoubleOf(std::string_view text);
[[nodiscard]] std::optional<std::int64_t> IntegerOf(std::string_view text);

// "2026-01-31T12:00:00.000123Z", the fraction only where it isn't zero. Years 0001 to 9999.
[[nodiscard]] std::optional<std::int64_t> TimeOf(std::string_view text);

// Whether a text has the form of a base UID.
[[nodiscard]] bool IsBaseUid(std::string_view text);

}  // namespace kxudm::exchange

#endif
