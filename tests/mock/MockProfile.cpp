#include "tests/mock/MockProfile.h"

#include "tests/mock/FakeDefinitions.h"

namespace kxct::mock {

MockProfile::MockProfile() = default;
MockProfile::~MockProfile() = default;
MockMerge::MockMerge() = default;
MockMerge::~MockMerge() = default;

boost::shared_ptr<::testing::NiceMock<MockProfile>> NewProfile(const kxString& sessionId) {
    auto profile = boost::make_shared<::testing::NiceMock<MockProfile>>();
    const auto definitions = boost::make_shared<FakeDefinitions>();
    ON_CALL(*profile, GetSessionId).WillByDefault(::testing::Return(sessionId));
    // By factory: a UDMProfileUtils has no default value to return.
    ON_CALL(*profile, GetProfileUtils).WillByDefault([definitions] {
        return kxudm::UDMProfileUtils(definitions);
    });
    ON_CALL(*profile, BeginAddFile).WillByDefault([](const kxudm::UDMItemHandle&) {
        return kxudm::AddFileBuilder([](const kxString&, bool) {});
    });
    return profile;
}

}  // namespace kxct::mock
