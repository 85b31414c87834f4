// A GoogleMock of a provider, and its place in the runtime's registry for the time of a test.
//
//     ProviderRegistration provider;          // a NiceMock in place of "local"
//     auto profile = NewProfile();
//     ON_CALL(*provider, OpenProfile).WillByDefault(Return(profile));
//     UDMDBCtrl session(SessionParameters());
#pragma once

#include <gmock/gmock.h>
#include <kxudm/spi/IUDMProvider.h>

#include <boost/smart_ptr/make_shared.hpp>

#include "tests/mock/MockSignatures.h"

namespace kxct::mock {

class MockProvider : public kxudm::spi::IUDMProvider {
  public:
    MockProvider();
    ~MockProvider() override;

    MOCK_METHOD(boost::shared_ptr<kxudm::IUDMProfile>,
                OpenProfile,
                (const Parameters&),
                (override));
    MOCK_METHOD(void, CloseProfile, (const boost::shared_ptr<kxudm::IUDMProfile>&), (override));
    MOCK_METHOD(bool,
                CheckConnection,
                (const kxString&,
                 const kxString&,
                 const kxString&,
                 const kxString&,
                 const kxString&,
                 const kxString&,
                 const kxString&,
                 kxString&),
                (override));
    MOCK_METHOD(void,
                GetRepositoryIds,
                (kxStlVector<kxString>&, const Parameters&, unsigned int),
                (override));
    MOCK_METHOD(void,
                GetRepositoryInfo,
                ((kxStlMap<kxString, kxString>&),
                 const kxString&,
                 const kxStlVector<kxString>&,
                 const Parameters&,
                 unsigned int),
                (override));
    MOCK_METHOD(void,
                GetRepositoryClientSettings,
                ((kxStlMap<kxString, kxVariant>&), const kxString&, const Parameters&),
                (override));
    MOCK_METHOD(void, GetWorkspaces, (kxStlVector<kxString>&, const Parameters&), (override));
    MOCK_METHOD(void,
                GetWorkspaceInfo,
                ((kxStlMap<kxString, kxString>&),
                 const kxString&,
                 const kxStlVector<kxString>&,
                 const Parameters&),
                (override));
    MOCK_METHOD(void, AddExistingRepository, (const Parameters&, const kxString&), (override));
    MOCK_METHOD(void, SetDefaultRepository, (const Parameters&), (override));
    MOCK_METHOD(void, DeleteRepository, (const Parameters&, bool, bool), (override));
    MOCK_METHOD(boost::shared_ptr<kxudm::UDMKXMergeToCatalog>,
                CreateMerge,
                (const kxString&,
                 const kxString&,
                 const boost::shared_ptr<kxudm::IUDMProfile>&,
                 const kxString&),
                (override));
    MOCK_METHOD(void, DispatchUpdates, (), (override));
};

// Puts a mock provider in charge of a data source; what was there before returns with its end.
// Sessions that it opened must be closed before.
class ProviderRegistration {
  public:
    explicit ProviderRegistration(const kxString& dataSource = "local");
    ~ProviderRegistration();
    ProviderRegistration(const ProviderRegistration&) = delete;
    ProviderRegistration& operator=(const ProviderRegistration&) = delete;

    ::testing::NiceMock<MockProvider>& operator*() const { return *_provider; }
    ::testing::NiceMock<MockProvider>* operator->() const { return _provider.get(); }

  private:
    kxString _dataSource;
    boost::shared_ptr<::testing::NiceMock<MockProvider>> _provider;
    boost::shared_ptr<kxudm::spi::IUDMProvider> _previous;
};

// Parameters of a session as a host opens one: data source "local", library "Demo" below "/base",
// workspace "Work", user "anna".
kxStlMap<kxString, kxVariant> SessionParameters();

}  // namespace kxct::mock
