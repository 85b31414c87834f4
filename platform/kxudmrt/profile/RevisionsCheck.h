// What a working revision must fulfil before it is published. Single steps don't ask for it: a
// parent may be short of children, or an attribute without its value, while it is being worked on.
#pragma once

#include "profile/Session.h"

namespace kxudm::profile {

// Throws UDMException, naming what is missing, unless each mandatory attribute has a value and each
// group of owned children or references has its minimum. What lies in folders and under
// classifications is no part of their revision and doesn't count.
void RequirePublishable(Session& session, const EntityState& working);

// Throws UDMException unless it is a text: whoever lists revisions shows it.
void RequireComment(const kxString& comment);

}  // namespace kxudm::profile
