// Words of the document that its writer and its reader share.
//
// Layer: exchange, inside.
#ifndef KXUDMRT_EXCHANGE_DOCUMENTWORDS_H
#define KXUDMRT_EXCHANGE_DOCUMENTWORDS_H

#include <kxutl/kxVariant.h>

#include <array>
#include <string_view>
#include <utility>

#include "store/Rows.h"

namespace kxudm::exchange {

constexpr std::array<std::pair<store::LinkKind, std::string_view>, 5> kLinkKinds{
    {{store::LinkKind::Owner, "owner"},
     {store::LinkKind::Reference, "reference"},
     {store::LinkKind::Folder, "folder"},
     {store::LinkKind::Category, "category"},
     {store::LinkKind::Relation, "relation"}}};

// Values by the kind they are stored as: what the type Color or Time takes is a String.
constexpr std::array<std::pair<kxVariant::Kind, std::string_view>, 6> kValueTypes{
    {{kxVariant::BOOLEAN, "Boolean"},
     {kxVariant::INTEGER, "Integer"},
     {kxVariant::STRING, "String"},
     {kxVariant::STRINGLIST, "StringList"},
     {kxVariant::FLOAT, "Float"},
     {kxVariant::DOUBLE, "Double"}}};

}  // namespace kxudm::exchange

#endif
