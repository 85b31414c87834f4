// The form that nearly all operations of UDMDBCtrl have: refuse without a session, else ask it and
// translate its failures.
//
//     bool UDMDBCtrl::GetSyncStatus(UDMItemHandle& handle) {
//         return WithProfile(_udmProfilePtr, __PRETTY_FUNCTION__, [&](auto& profile) {
//             return profile.GetSyncStatus(handle);
//         });
//     }
#pragma once

#include <kxudm/IUDMProfile.h>

#include <boost/smart_ptr/shared_ptr.hpp>

#include "frwk/_private/Guards.h"

namespace kxct {

// Throws the null guard's failure, naming the one source that the session is known by, whichever
// of its files `function` stands in.
[[noreturn]] void ThrowMissingInSession(const char* function, const char* pointerName);

inline void RequireProfile(const boost::shared_ptr<kxudm::IUDMProfile>& profile,
                           const char* function) {
    if (!profile) [[unlikely]] {
        ThrowMissingInSession(function, "_udmProfilePtr");
    }
}

// Null guard, then `call` with the session under translation.
template <class Call>
decltype(auto) WithProfile(const boost::shared_ptr<kxudm::IUDMProfile>& profile,
                           const char* function,
                           Call&& call) {
    RequireProfile(profile, function);
    return Translated(function, [&]() -> decltype(auto) { return call(*profile); });
}

}  // namespace kxct
