// Access for tests to what a session keeps to itself.
#pragma once

#include <kxct/UDMDBCtrl.h>
#include <kxudm/IUDMProfile.h>

namespace kxct {

class UDMDBCtrlPeer {
  public:
    // Takes the runtime's session away, which no public operation does, so that the null guards can
    // be seen. The caller has to hold on to the returned session for as long as it is needed: the
    // object's destructor doesn't end it any more.
    static boost::shared_ptr<kxudm::IUDMProfile> TakeProfile(UDMDBCtrl& session) {
        boost::shared_ptr<kxudm::IUDMProfile> profile;
        profile.swap(session._udmProfilePtr);
        return profile;
    }
};

}  // namespace kxct
