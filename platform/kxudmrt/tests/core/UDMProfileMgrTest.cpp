#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxudm/UDMProfileMgr.h>
#include <kxudm/spi/IUDMProvider.h>

#include <boost/smart_ptr/make_shared.hpp>

using namespace kxudm;
using testing::_;
using testing::Return;
using testing::StrEq;
using testing::ThrowsMessage;

namespace {

class Provider : public spi::IUDMProvider {
  public:
    MOCK_METHOD(boost::shared_ptr<IUDMProfile>, OpenProfile, (const Parameters&), (override));
    MOCK_METHOD(void, CloseProfile, (const boost::shared_ptr<IUDMProfile>&), (override));
    MOCK_METHOD(void, DispatchUpdates, (), (override));
    MOCK_METHOD(void, GetWorkspaces, (kxStlVector<kxString>&, const Parameters&), (override));
};

// A provider that has only what it must.
class SmallProvider : public spi::IUDMProvider {
  public:
    boost::shared_ptr<IUDMProfile> OpenProfile(const Parameters& /*params*/) override { return {}; }
    void CloseProfile(const boost::shared_ptr<IUDMProfile>& /*profile*/) override {}
};

class Registered {
  public:
    Registered(const kxString& name, boost::shared_ptr<spi::IUDMProvider> provider)
        : _name(name), _previous(UDMProfileMgr::RegisterProvider(name, std::move(provider))) {}
    Registered(const Registered&) = delete;
    Registered& operator=(const Registered&) = delete;
    ~Registered() { UDMProfileMgr::RegisterProvider(_name, _previous); }

  private:
    kxString _name;
    boost::shared_ptr<spi::IUDMProvider> _previous;
};

// Never called: only its address counts.
boost::shared_ptr<IUDMProfile> SomeProfile() {
    static char storage;
    return {reinterpret_cast<IUDMProfile*>(&storage), [](IUDMProfile*) {}};
}

UDMProfileMgr::Parameters For(const char* dataSource) {
    UDMProfileMgr::Parameters params;
    params["DataSource"] = kxVariant(dataSource);
    return params;
}

}  // namespace

TEST(UDMProfileMgr, LocalIsRegisteredFromTheStart) {
    const kxStlVector<kxString> sources = UDMProfileMgr::GetDataSources();
    EXPECT_THAT(sources, testing::Contains("local"));
}

TEST(UDMProfileMgr, AnUnknownDataSourceIsAnErrorThatListsTheKnownOnes) {
    EXPECT_THAT([] { UDMProfileMgr::GetProfile(For("Nowhere")); },
                ThrowsMessage<UDMNotFoundException>(
                    StrEq("The data source \"Nowhere\" is unknown; known are \"local\"")));
}

TEST(UDMProfileMgr, ASessionIsClosedByTheProviderThatOpenedIt) {
    const auto opener = boost::make_shared<Provider>();
    const auto other = boost::make_shared<Provider>();
    boost::shared_ptr<IUDMProfile> profile;
    {
        const Registered registered("double", opener);
        EXPECT_CALL(*opener, OpenProfile(For("double"))).WillOnce(Return(SomeProfile()));
        profile = UDMProfileMgr::GetProfile(For("double"));
    }
    const Registered registered("double", other);
    EXPECT_CALL(*opener, CloseProfile(_)).Times(1);
    EXPECT_CALL(*other, CloseProfile(_)).Times(0);
    UDMProfileMgr::DiscardProfile(profile);
    EXPECT_FALSE(profile);
}

TEST(UDMProfileMgr, DiscardingNothingOrAForeignSessionClosesNothing) {
    boost::shared_ptr<IUDMProfile> nothing;
    UDMProfileMgr::DiscardProfile(nothing);
    boost::shared_ptr<IUDMProfile> foreign = SomeProfile();
    UDMProfileMgr::DiscardProfile(foreign);
    EXPECT_FALSE(foreign);
}

TEST(UDMProfileMgr, AMapWithoutADataSourceConcernsTheMasterDatabase) {
    const auto local = boost::make_shared<Provider>();
    const Registered registered("local", local);
    UDMProfileMgr::Parameters params;
    params["username"] = kxVariant("anna");
    EXPECT_CALL(*local, GetWorkspaces(_, params)).Times(1);
    kxStlVector<kxString> ids;
    UDMProfileMgr::GetWorkspaces(ids, params);
}

TEST(UDMProfileMgr, DispatchUpdatesReachesEveryProvider) {
    const auto one = boost::make_shared<Provider>();
    const auto two = boost::make_shared<Provider>();
    const Registered first("one", one);
    const Registered second("two", two);
    EXPECT_CALL(*one, DispatchUpdates()).Times(1);
    EXPECT_CALL(*two, DispatchUpdates()).Times(1);
    UDMProfileMgr::DispatchUpdates();
}

TEST(IUDMProvider, WhatAProviderLeavesOutIsAnErrorThatNamesTheOperation) {
    SmallProvider provider;
    kxStlVector<kxString> ids;
    kxStlMap<kxString, kxString> info;
    kxStlMap<kxString, kxVariant> settings;
    kxString message;
    const auto refuses = [](const char* operation) {
        return ThrowsMessage<UDMNotSupportedException>(testing::HasSubstr(operation));
    };
    EXPECT_THAT([&] { provider.CheckConnection("", "", "", "", "", "", "", message); },
                refuses("CheckConnection"));
    EXPECT_THAT([&] { provider.GetRepositoryIds(ids, {}, 1); }, refuses("GetRepositoryIds"));
    EXPECT_THAT([&] { provider.GetRepositoryInfo(info, "", {}, {}, 1); },
                refuses("GetRepositoryInfo"));
    EXPECT_THAT([&] { provider.GetRepositoryClientSettings(settings, "", {}); },
                refuses("GetRepositoryClientSettings"));
    EXPECT_THAT([&] { provider.GetWorkspaces(ids, {}); }, refuses("GetWorkspaces"));
    EXPECT_THAT([&] { provider.GetWorkspaceInfo(info, "", {}, {}); }, refuses("GetWorkspaceInfo"));
    EXPECT_THAT([&] { provider.AddExistingRepository({}, ""); }, refuses("AddExistingRepository"));
    EXPECT_THAT([&] { provider.SetDefaultRepository({}); }, refuses("SetDefaultRepository"));
    EXPECT_THAT([&] { provider.DeleteRepository({}, false, true); }, refuses("DeleteRepository"));
    EXPECT_FALSE(provider.CreateMerge("", "", {}, ""));
    provider.DispatchUpdates();
}

TEST(UDMKXMergeToCatalog, ASessionOfNobodyGivesNoEngine) {
    boost::shared_ptr<UDMKXMergeToCatalog> engine;
    EXPECT_EQ(UDMKXMergeToCatalog::CreateInstance(engine, "L", "/F", SomeProfile(), ""),
              UDMResult::Failed);
    EXPECT_FALSE(engine);
}
