// What the parts of a library's care have in common.
//
// Layer: profile.
#pragma once

#include "profile/Session.h"

namespace kxudm::profile {

// Takes in what others did. Throws UDMException, naming the operation, on a closed session and in a
// bulk edit: care looks at what is committed, and holds locks of its own.
void BeginCare(Session& session, const char* operation);

}  // namespace kxudm::profile
