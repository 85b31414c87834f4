// The sessions of this process, by the library file they are on.
//
// Layer: profile. Holds no session alive. Belongs to one thread at a time, like UDMProfileMgr.
#pragma once

#include <boost/smart_ptr/shared_ptr.hpp>
#include <vector>

#include "profile/Session.h"

namespace kxudm::profile::peers {

// Both by the session's library file. A session leaves when it is closed.
void Join(const boost::shared_ptr<Session>& session);
void Leave(const Session& session) noexcept;

// The open sessions on a library file, in the order in which they were opened.
[[nodiscard]] std::vector<boost::shared_ptr<Session>> On(const kxString& libraryFile);
// All of the process.
[[nodiscard]] std::vector<boost::shared_ptr<Session>> All();

}  // namespace kxudm::profile::peers
