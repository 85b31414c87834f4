// The value of an attribute as queries see it: numbers as numbers, a Boolean as 0 or 1, texts as
// texts, a list as its text. Empty: none.
//
// Layer: store, inside.
#ifndef KXUDMRT_STORE_HEADVALUE_H
#define KXUDMRT_STORE_HEADVALUE_H

#include <kxutl/kxVariant.h>

#include "sql/Connection.h"

namespace kxudm::store {

[[nodiscard]] inline sql::Value HeadValue(const kxVariant& value) {
    switch (value.GetKind()) {
        case kxVariant::EMPTY:
            return {};
        case kxVariant::BOOLEAN:
            return static_cast<std::int64_t>(value.GetBoolean());
        case kxVariant::INTEGER:
            return static_cast<std::int64_t>(value.GetInteger64());
        case kxVariant::FLOAT:
        case kxVariant::DOUBLE:
            return value.GetDouble();
        default:
            return std::string(value.GetString());
    }
}

}  // namespace kxudm::store

#endif
