// What can be wrong with one record of a document, whatever library it is for.
//
// Layer: exchange.
#ifndef KXUDMRT_EXCHANGE_ENTITYCHECK_H
#define KXUDMRT_EXCHANGE_ENTITYCHECK_H

#include <string>

#include "exchange/Document.h"

namespace kxudm::exchange {

// What is wrong and what was expected, in one line; empty if nothing is.
[[nodiscard]] std::string ProblemOf(const EntityRecord& entity, Scope scope);
[[nodiscard]] std::string ProblemOf(const LinkRecord& link);

}  // namespace kxudm::exchange

#endif
