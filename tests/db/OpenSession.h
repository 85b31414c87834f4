// A session on the mock runtime, for the tests of UDMDBCtrl.
//
//     OpenSession open;
//     EXPECT_CALL(*open.profile, DumpSession());
//     open->DumpSession();
#pragma once

#include <gmock/gmock.h>
#include <kxct/KXCTException.h>
#include <kxct/UDMDBCtrl.h>

#include <functional>
#include <optional>
#include <string>

#include "tests/mock/FakeItemState.h"
#include "tests/mock/MockProfile.h"
#include "tests/mock/MockProvider.h"
#include "tests/mock/UDMDBCtrlPeer.h"

namespace kxct::mock {

using Handles = kxStlVector<kxudm::UDMItemHandle>;
using Texts = kxStlVector<kxString>;
using Parameters = kxStlMap<kxString, kxVariant>;

struct OpenSession {
    explicit OpenSession(const Parameters& params = SessionParameters()) : profile(NewProfile()) {
        ON_CALL(*provider, OpenProfile).WillByDefault(::testing::Return(profile));
        session.emplace(params);
    }

    UDMDBCtrl* operator->() { return &*session; }
    UDMDBCtrl& operator*() { return *session; }

    ProviderRegistration provider;
    boost::shared_ptr<::testing::NiceMock<MockProfile>> profile;
    std::optional<UDMDBCtrl> session;
};

// The text of the KXCTException that `call` throws; fails the test if it throws none.
inline std::string FailureOf(const std::function<void()>& call) {
    try {
        call();
    } catch (const KXCTException& failure) {
        return failure.what();
    }
    ADD_FAILURE() << "no KXCTException";
    return {};
}

inline std::vector<std::string> UidsOf(const Handles& handles) {
    std::vector<std::string> uids;
    for (const auto& handle : handles) {
        uids.push_back(handle.Uid());
    }
    return uids;
}

}  // namespace kxct::mock
