// Which element of a document stands in which, and in what order its parts come.
//
// Layer: exchange, inside.
#ifndef KXUDMRT_EXCHANGE_DOCUMENTGRAMMAR_H
#define KXUDMRT_EXCHANGE_DOCUMENTGRAMMAR_H

#include <array>
#include <optional>
#include <string>
#include <string_view>

namespace kxudm::exchange {

enum class Element {
    Document,  // what is around the root
    Library,
    Definitions,
    Definition,  // and all below it
    Entities,
    Entity,
    Revision,
    SavePoint,
    Attribute,
    Item,
    File,
    Links,
    Of,
    Link,
    End
};

// Parts of the document in their order.
inline constexpr std::array<Element, 4> kParts{
    Element::Definitions, Element::Entities, Element::Links, Element::End};

// The element of that name in this one; none if it can't stand there.
[[nodiscard]] std::optional<Element> ElementIn(Element parent, std::string_view name);
// "<a> or <b>"
[[nodiscard]] std::string ExpectedIn(Element parent);
[[nodiscard]] std::string_view NameOfPart(Element part);

}  // namespace kxudm::exchange

#endif
