// Query expressions of a session.
//
// Layer: profile.
#pragma once

#include "profile/Session.h"

namespace kxudm::profile {

// What thins out a listing; no condition for an empty expression. Texts count as they are. Throws
// UDMException for an expression that is none, see query/Parser.h and query/SqlCompiler.h.
[[nodiscard]] store::Condition ListingCondition(const Session& session, const kxString& expression);

}  // namespace kxudm::profile
