#include <gtest/gtest.h>
#include <kxct/UDMSessionSlot.h>

#include "tests/db/OpenSession.h"

namespace kxct {
namespace {

using kxudm::UDMProfileUpdate;
using namespace mock;
using ::testing::_;
using ::testing::InSequence;
using ::testing::Return;
using ::testing::Throw;

using Slot = boost::shared_ptr<kxudm::IUDMProfileSlot>;

constexpr char CONSTRUCTOR[] =
    "__cdecl kxct::UDMDBCtrl::UDMDBCtrl(const class kxStlMap<class kxString,class "
    "kxVariant,struct std::less<class kxString>,class std::allocator<struct std::pair<class "
    "kxString const ,class kxVariant> > > &)";

TEST(UDMDBCtrl, ConstructionOpensConnectsAndTakesTheSessionId) {
    ProviderRegistration provider;
    const auto profile = NewProfile("the-id");
    {
        InSequence order;
        EXPECT_CALL(*provider, OpenProfile(SessionParameters())).WillOnce(Return(profile));
        EXPECT_CALL(*profile, Connect(_));
        EXPECT_CALL(*profile, GetSessionId());
    }
    UDMDBCtrl session(SessionParameters());
    EXPECT_TRUE(session.IsConnected());
    EXPECT_EQ(kxString(session.GetSessionUID()), "the-id");
    EXPECT_EQ(session.GetProfile(), profile);
}

TEST(UDMDBCtrl, AFailureToOpenPassesThroughTheConstructorUntranslated) {
    ProviderRegistration provider;
    EXPECT_CALL(*provider, OpenProfile(_)).WillOnce(Throw(std::runtime_error("no such library")));
    try {
        UDMDBCtrl session(SessionParameters());
        FAIL() << "no exception";
    } catch (const KXCTException&) {
        FAIL() << "translated";
    } catch (const std::runtime_error& failure) {
        EXPECT_STREQ(failure.what(), "no such library");
    }
}

TEST(UDMDBCtrl, NoSessionFromTheRuntimeIsTheConstructorsNullGuard) {
    ProviderRegistration provider;
    EXPECT_EQ(FailureOf([] { UDMDBCtrl session(SessionParameters()); }),
              std::string(CONSTRUCTOR) +
                  ":: db/_private/UDMDBCtrl.cpp. The pointer _udmProfilePtr is null!");
}

TEST(UDMDBCtrl, ASessionWhoseConnectionFailsIsAValidUnconnectedObject) {
    ProviderRegistration provider;
    const auto profile = NewProfile();
    ON_CALL(*provider, OpenProfile).WillByDefault(Return(profile));
    EXPECT_CALL(*profile, Connect(_)).WillOnce(Throw(std::runtime_error("busy")));
    UDMDBCtrl session(SessionParameters());
    EXPECT_FALSE(session.IsConnected());
    EXPECT_EQ(kxString(session.GetSessionUID()), "session-1");
    EXPECT_CALL(*profile, DumpSession());
    session.DumpSession();
}

TEST(UDMDBCtrl, AFailureAfterOpeningEndsTheSessionThatWasOpened) {
    ProviderRegistration provider;
    const auto profile = NewProfile();
    ON_CALL(*provider, OpenProfile).WillByDefault(Return(profile));
    EXPECT_CALL(*profile, GetSessionId()).WillOnce(Throw(std::runtime_error("gone")));
    EXPECT_CALL(*provider, CloseProfile(_));
    EXPECT_THROW(UDMDBCtrl session(SessionParameters()), std::runtime_error);
}

TEST(UDMDBCtrl, AConnectedSessionDoesNotConnectAgain) {
    OpenSession open;
    EXPECT_CALL(*open.profile, Connect(_)).Times(0);
    EXPECT_FALSE(open->Connect());
    EXPECT_TRUE(open->IsConnected());
}

TEST(UDMDBCtrl, ReconnectionAttachesTheSameSlot) {
    ProviderRegistration provider;
    const auto profile = NewProfile();
    ON_CALL(*provider, OpenProfile).WillByDefault(Return(profile));
    std::vector<Slot> slots;
    ON_CALL(*profile, Connect).WillByDefault([&](Slot& slot) { slots.push_back(slot); });
    UDMDBCtrl session(SessionParameters());
    session.Update(UDMProfileUpdate::OfSession("session-1"));
    ASSERT_FALSE(session.IsConnected());
    EXPECT_TRUE(session.Connect());
    EXPECT_TRUE(session.IsConnected());
    ASSERT_EQ(slots.size(), 2U);
    EXPECT_TRUE(slots[0]);
    EXPECT_EQ(slots[0], slots[1]);
}

TEST(UDMDBCtrl, AFailingReconnectionAnswersFalse) {
    OpenSession open;
    open->Update(UDMProfileUpdate::OfSession("session-1"));
    EXPECT_CALL(*open.profile, Connect(_)).WillOnce(Throw(std::runtime_error("refused")));
    EXPECT_FALSE(open->Connect());
    EXPECT_FALSE(open->IsConnected());
}

TEST(UDMDBCtrl, ConnectWithoutASessionAnswersFalse) {
    OpenSession open;
    open->Update(UDMProfileUpdate::OfSession("session-1"));
    const auto profile = UDMDBCtrlPeer::TakeProfile(*open);
    EXPECT_FALSE(open->Connect());
}

TEST(UDMDBCtrl, DisconnectOfALivingSessionAnswersFalse) {
    OpenSession open;
    EXPECT_CALL(*open.profile, Disconnect(_)).Times(0);
    EXPECT_FALSE(open->Disconnect());
    EXPECT_TRUE(open->IsConnected());
}

TEST(UDMDBCtrl, DisconnectOfAnUnconnectedSessionAnswersFalse) {
    OpenSession open;
    open->Update(UDMProfileUpdate::OfSession("session-1"));
    EXPECT_CALL(*open.profile, Disconnect(_)).Times(0);
    EXPECT_FALSE(open->Disconnect());
}

TEST(UDMDBCtrl, OnlyWithoutASessionDoesDisconnectEndTheConnection) {
    OpenSession open;
    const auto profile = UDMDBCtrlPeer::TakeProfile(*open);
    EXPECT_TRUE(open->Disconnect());
    EXPECT_FALSE(open->IsConnected());
    EXPECT_FALSE(open->Disconnect());
}

TEST(UDMDBCtrl, TheDestructorDiscardsTheSessionAndDoesNotDisconnect) {
    OpenSession open;
    const boost::shared_ptr<kxudm::IUDMProfile> profile = open.profile;
    EXPECT_CALL(*open.profile, Disconnect(_)).Times(0);
    EXPECT_CALL(*open.provider, CloseProfile(profile));
    open.session.reset();
}

TEST(UDMDBCtrl, ASessionThatCannotBeClosedEndsAllTheSame) {
    OpenSession open;
    EXPECT_CALL(*open.provider, CloseProfile(_)).WillOnce(Throw(std::runtime_error("stuck")));
    EXPECT_NO_THROW(open.session.reset());
}

TEST(UDMDBCtrl, TheEndOfACopyDiscardsTheSharedSession) {
    OpenSession open;
    EXPECT_CALL(*open.provider, CloseProfile(_)).Times(1);
    {
        UDMDBCtrl copy(*open);
        EXPECT_EQ(copy.GetProfile(), open->GetProfile());
        EXPECT_TRUE(copy.GetSessionUID() == open->GetSessionUID());
        EXPECT_TRUE(copy.IsConnected());
        EXPECT_EQ(copy.GetUser(), "anna");
    }
    ::testing::Mock::VerifyAndClearExpectations(&*open.provider);
    EXPECT_EQ(open->GetProfile(), open.profile);
}

TEST(UDMDBCtrl, TheSlotOfACopyGoesOnTellingTheOriginal) {
    ProviderRegistration provider;
    const auto profile = NewProfile();
    ON_CALL(*provider, OpenProfile).WillByDefault(Return(profile));
    Slot slot;
    ON_CALL(*profile, Connect).WillByDefault([&](Slot& given) { slot = given; });
    UDMDBCtrl session(SessionParameters());
    UDMDBCtrl copy(session);
    slot->update(UDMProfileUpdate::OfSession("session-1"));
    EXPECT_FALSE(session.IsConnected());
    EXPECT_TRUE(copy.IsConnected());
}

TEST(UDMDBCtrl, AssignmentTakesOverTheOtherSession) {
    OpenSession open;
    const auto second = NewProfile("session-2");
    ON_CALL(*open.provider, OpenProfile).WillByDefault(Return(second));
    auto params = SessionParameters();
    params["username"] = "bert";
    UDMDBCtrl other(params);
    other = *open;
    EXPECT_EQ(other.GetProfile(), open.profile);
    EXPECT_EQ(kxString(other.GetSessionUID()), "session-1");
    EXPECT_EQ(other.GetUser(), "anna");
}

TEST(UDMDBCtrl, TheEndOfThisSessionMakesItUnconnected) {
    OpenSession open;
    open->Update(UDMProfileUpdate::OfSession("session-1"));
    EXPECT_FALSE(open->IsConnected());
}

TEST(UDMDBCtrl, TheEndOfAnotherSessionChangesNothing) {
    OpenSession open;
    open->Update(UDMProfileUpdate::OfSession("session-2"));
    EXPECT_TRUE(open->IsConnected());
}

TEST(UDMDBCtrl, OtherNotificationsChangeNothing) {
    OpenSession open;
    open->Update(UDMProfileUpdate::OfHandle(kxudm::SIGNAL_CONTENT_CHANGED, NewHandle("A:1")));
    open->Update(UDMProfileUpdate::OfDeletion(kxudm::UDMUID("session-1")));
    EXPECT_TRUE(open->IsConnected());
}

TEST(UDMSessionSlot, ANotificationReachesTheSession) {
    OpenSession open;
    UDMSessionSlot slot(&*open);
    slot.update(UDMProfileUpdate::OfSession("session-2"));
    EXPECT_TRUE(open->IsConnected());
    slot.update(UDMProfileUpdate::OfSession("session-1"));
    EXPECT_FALSE(open->IsConnected());
}

TEST(UDMSessionSlot, CopiesAndMovesPointToTheSameSession) {
    OpenSession open;
    UDMSessionSlot slot(&*open);
    UDMSessionSlot copy(slot);
    UDMSessionSlot moved(std::move(copy));
    UDMSessionSlot assigned(nullptr);
    assigned = moved;
    assigned.update(UDMProfileUpdate::OfSession("session-1"));
    EXPECT_FALSE(open->IsConnected());
}

TEST(UDMDBCtrl, TheNamesComeFromTheParameters) {
    OpenSession open;
    EXPECT_EQ(open->GetUser(), "anna");
    EXPECT_EQ(open->GetLibraryName(), "Demo");
    EXPECT_EQ(open->GetWorkspaceName(), "Work");
}

TEST(UDMDBCtrl, ADirectFileSessionHasNoNamesAndSaysSo) {
    Parameters params;
    params["DataSource"] = "local";
    params["FileDataSource"] = "/some/folder";
    OpenSession open(params);
    const auto missing = [](const std::function<void()>& ask) {
        try {
            ask();
        } catch (const std::out_of_range& failure) {
            return std::string(failure.what());
        }
        return std::string("no std::out_of_range");
    };
    EXPECT_EQ(missing([&] { open->GetUser(); }), "invalid map<K, T> key");
    EXPECT_EQ(missing([&] { open->GetLibraryName(); }), "invalid map<K, T> key");
    EXPECT_EQ(missing([&] { open->GetWorkspaceName(); }), "invalid map<K, T> key");
}

TEST(UDMDBCtrl, DumpSessionAsksTheRuntime) {
    OpenSession open;
    EXPECT_CALL(*open.profile, DumpSession()).Times(1);
    open->DumpSession();
}

TEST(UDMDBCtrl, OperationsRunOnASessionThatTheRuntimeReportsClosed) {
    OpenSession open;
    open->Update(UDMProfileUpdate::OfSession("session-1"));
    EXPECT_CALL(*open.profile, GetEntity(kxString("A"))).WillOnce(Return(NewHandle("A:1")));
    EXPECT_EQ(open->GetUDMItemHandle("A").Uid(), "A:1");
}

}  // namespace
}  // namespace kxct
