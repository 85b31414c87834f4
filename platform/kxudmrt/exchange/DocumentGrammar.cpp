#include "exchange/DocumentGrammar.h"

#include <algorithm>

namespace kxudm::exchange {
namespace {

struct Place {
    Element parent;
    std::string_view name;
    Element element;
};

constexpr std::array<Place, 13> kPlaces{{{Element::Document, "library", Element::Library},
                                         {Element::Library, "definitions", Element::Definitions},
                                         {Element::Library, "entities", Element::Entities},
                                         {Element::Library, "links", Element::Links},
                                         {Element::Library, "end", Element::End},
                                         {Element::Entities, "entity", Element::Entity},
                                         {Element::Entity, "revision", Element::Revision},
                                         {Element::Entity, "file", Element::File},
                                         {Element::Revision, "savepoint", Element::SavePoint},
                                         {Element::Revision, "attribute", Element::Attribute},
                                         {Element::Attribute, "item", Element::Item},
                                         {Element::Links, "of", Element::Of},
                                         {Element::Of, "link", Element::Link}}};

}  // namespace

std::optional<Element> ElementIn(Element parent, std::string_view name) {
    if (parent == Element::Definitions || parent == Element::Definition) {
        return Element::Definition;
    }
    const auto* const found = std::find_if(kPlaces.begin(), kPlaces.end(), [&](const Place& place) {
        return place.parent == parent && place.name == name;
    });
    return found == kPlaces.end() ? std::nullopt : std::optional(found->element);
}

std::string ExpectedIn(Element parent) {
    std::string names;
    for (const Place& place : kPlaces) {
        if (place.parent == parent) {
            names += (names.empty() ? "<" : " or <") + std::string(place.name) + ">";
        }
    }
    return names.empty() ? "no element" : names;
}

std::string_view NameOfPart(Element part) {
    return std::find_if(kPlaces.begin(),
                        kPlaces.end(),
                        [part](const Place& place) { return place.element == part; })
        ->name;
}

}  // namespace kxudm::exchange
