// The attributes of one start tag, taken one by one; what nobody took is refused.
//
// Layer: exchange, inside. Lives as long as the parser's event. Throws BadTag, to which the reader
// adds the place.
#ifndef KXUDMRT_EXCHANGE_TAG_H
#define KXUDMRT_EXCHANGE_TAG_H

#include <kxudm/UDMException.h>

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "store/Rows.h"

namespace kxudm::exchange {

class BadTag : public UDMException {
  public:
    using UDMException::UDMException;
};

class Tag {
  public:
    // As expat gives them: name, value, name, value, ..., null.
    Tag(const char* element, const char** attributes);

    // Each takes one attribute; where it is missing, an error, or, with Optional, nothing.
    [[nodiscard]] std::string Text(std::string_view name);
    [[nodiscard]] std::optional<std::string> OptionalText(std::string_view name);
    // Not empty.
    [[nodiscard]] std::string Name(std::string_view name);
    [[nodiscard]] std::string Uid(std::string_view name);
    [[nodiscard]] store::Microseconds Time(std::string_view name);
    [[nodiscard]] std::int64_t Number(std::string_view name, std::int64_t least, std::int64_t most);
    [[nodiscard]] int RevisionNumber(std::string_view name);
    // Absent: `absent`.
    [[nodiscard]] int RevisionNumber(std::string_view name, int absent);
    // Only the value that isn't the usual one may stand there.
    [[nodiscard]] bool Flag(std::string_view name, bool usual);
    [[nodiscard]] bool Has(std::string_view name) const;
    // Refuses what was not taken.
    void Finish() const;

  private:
    struct Attribute {
        std::string_view name;
        std::string_view value;
        bool taken = false;
    };

    Attribute* Find(std::string_view name);
    [[noreturn]] void Refuse(std::string_view name,
                             std::string_view value,
                             const std::string& expected) const;

    std::string_view element_;
    std::vector<Attribute> attributes_;
};

}  // namespace kxudm::exchange

#endif
