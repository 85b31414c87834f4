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
