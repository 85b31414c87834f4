#include "tests/mock/MockProvider.h"

namespace kxct::mock {

MockProvider::MockProvider() = default;
MockProvider::~MockProvider() = default;

ProviderRegistration::ProviderRegistration(const kxString& dataSource)
    : _dataSource(dataSource),
      _provider(boost::make_shared<::testing::NiceMock<MockProvider>>()),
      _previous(kxudm::UDMProfileMgr::RegisterProvider(_dataSource, _provider)) {}

ProviderRegistration::~ProviderRegistration() {
    kxudm::UDMProfileMgr::RegisterProvider(_dataSource, _previous);
    // The runtime keeps the provider of a session that was thrown away without being closed, to the
    // end of the process: it goes without what the test told it.
    if (_provider.use_count() > 1) {
        ::testing::Mock::VerifyAndClear(_provider.get());
        ::testing::Mock::AllowLeak(_provider.get());
    }
}

kxStlMap<kxString, kxVariant> SessionParameters() {
    kxStlMap<kxString, kxVariant> params;
    params["DataSource"] = "local";
    params["RepositoryName"] = "Demo";
    params["RepositoryBaseDir"] = "/base";
    params["WorkspaceName"] = "Work";
    params["username"] = "anna";
    return params;
}

}  // namespace kxct::mock
