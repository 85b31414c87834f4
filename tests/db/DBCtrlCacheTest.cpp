#include <gtest/gtest.h>
#include <kxct/DBCtrlCache.h>

#include <map>

#include "tests/db/OpenSession.h"

namespace kxct {
namespace {

using namespace mock;
using ::testing::_;

// Opens sessions and knows which of them were ended.
class Sessions {
  public:
    Sessions() {
        ON_CALL(*_provider, OpenProfile).WillByDefault([this](const Parameters& params) {
            return NewProfile(params.at("id").GetString());
        });
        ON_CALL(*_provider, CloseProfile).WillByDefault([this](const auto& profile) {
            ++_ended[profile->GetSessionId()];
        });
    }

    UDMDBCtrl* New(const kxString& id) {
        Parameters params = SessionParameters();
        params["id"] = id;
        return new UDMDBCtrl(params);
    }

    int Ended(const kxString& id) { return _ended[id]; }

  private:
    ProviderRegistration _provider;
    std::map<std::string, int> _ended;
};

TEST(DBCtrlCache, AnAddedSessionIsSharedByItsKeyAndByItsUid) {
    Sessions sessions;
    DBCtrlCache cache;
    UDMDBCtrl* session = sessions.New("s");
    EXPECT_FALSE(cache.Exists("lib", "work", "user"));
    EXPECT_TRUE(cache.Add("lib", "work", "user", session, true));
    EXPECT_TRUE(cache.Exists("lib", "work", "user"));
    EXPECT_EQ(cache.Get("lib", "work", "user"), session);
    EXPECT_EQ(cache.Get(kxudm::UDMUID("s")), session);
}

TEST(DBCtrlCache, EachPartOfTheKeyCounts) {
    Sessions sessions;
    DBCtrlCache cache;
    cache.Add("lib", "work", "user", sessions.New("s"), true);
    EXPECT_FALSE(cache.Exists("lib2", "work", "user"));
    EXPECT_FALSE(cache.Exists("lib", "work2", "user"));
    EXPECT_FALSE(cache.Exists("lib", "work", "user2"));
    EXPECT_FALSE(cache.Exists("", "libwork", "user"));
    EXPECT_EQ(cache.Get("lib2", "work", "user"), nullptr);
}

TEST(DBCtrlCache, KeysAreOrderedByLibraryThenWorkspaceThenUser) {
    const std::vector<DBCtrlKey> ascending{{"", "z", "z"},
                                           {"A", "b", "a"},
                                           {"Lib", "a", "z"},
                                           {"Lib", "ab", "a"},
                                           {"Lib", "ab", "b"},
                                           {"Library", "a", "a"},
                                           {"lib", "", ""},
                                           {"\xC3\xA4", "", ""}};
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        for (std::size_t k = 0; k < ascending.size(); ++k) {
            EXPECT_EQ(ascending[i] < ascending[k], i < k) << i << " and " << k;
        }
    }
}

TEST(DBCtrlCache, AKeyThatIsTakenIsRefusedAndTheUseCountStays) {
    Sessions sessions;
    DBCtrlCache cache;
    UDMDBCtrl* first = sessions.New("first");
    const std::unique_ptr<UDMDBCtrl> second(sessions.New("second"));
    EXPECT_TRUE(cache.Add("lib", "work", "user", first, true));
    EXPECT_FALSE(cache.Add("lib", "work", "user", second.get(), true));
    EXPECT_EQ(cache.Get(kxudm::UDMUID("second")), nullptr);
    cache.Drop(first);
    EXPECT_EQ(sessions.Ended("first"), 1);
    EXPECT_FALSE(cache.Exists("lib", "work", "user"));
    EXPECT_EQ(sessions.Ended("second"), 0);
}

TEST(DBCtrlCache, TheLastDropEndsTheSession) {
    Sessions sessions;
    DBCtrlCache cache;
    UDMDBCtrl* session = sessions.New("s");
    cache.Add("lib", "work", "user", session, true);
    cache.Get("lib", "work", "user");
    cache.Get(kxudm::UDMUID("s"));
    cache.Drop(session);
    cache.Drop(session);
    EXPECT_EQ(sessions.Ended("s"), 0);
    EXPECT_TRUE(cache.Exists("lib", "work", "user"));
    cache.Drop(session);
    EXPECT_EQ(sessions.Ended("s"), 1);
    EXPECT_FALSE(cache.Exists("lib", "work", "user"));
    EXPECT_EQ(cache.Get("lib", "work", "user"), nullptr);
    EXPECT_EQ(cache.Get(kxudm::UDMUID("s")), nullptr);
}

TEST(DBCtrlCache, AskingWhetherASessionExistsIsNoUse) {
    Sessions sessions;
    DBCtrlCache cache;
    UDMDBCtrl* session = sessions.New("s");
    cache.Add("lib", "work", "user", session, true);
    cache.Exists("lib", "work", "user");
    cache.Drop(session);
    EXPECT_EQ(sessions.Ended("s"), 1);
}

TEST(DBCtrlCache, AnUnknownUidOrKeyGivesNull) {
    DBCtrlCache cache;
    EXPECT_EQ(cache.Get(kxudm::UDMUID("s")), nullptr);
    EXPECT_EQ(cache.Get("lib", "work", "user"), nullptr);
}

TEST(DBCtrlCache, DropOfASessionThatWasNeverAddedDoesNothing) {
    Sessions sessions;
    DBCtrlCache cache;
    const std::unique_ptr<UDMDBCtrl> stranger(sessions.New("stranger"));
    UDMDBCtrl* session = sessions.New("s");
    cache.Add("lib", "work", "user", session, true);
    cache.Drop(stranger.get());
    EXPECT_EQ(sessions.Ended("stranger"), 0);
    EXPECT_EQ(sessions.Ended("s"), 0);
    EXPECT_TRUE(cache.Exists("lib", "work", "user"));
}

TEST(DBCtrlCache, OfTwoKeysForOneSessionTheSecondStaysAndLeadsToNothing) {
    Sessions sessions;
    DBCtrlCache cache;
    UDMDBCtrl* session = sessions.New("s");
    cache.Add("b", "work", "user", session, true);
    cache.Add("a", "work", "user", session, true);
    cache.Drop(session);
    EXPECT_EQ(sessions.Ended("s"), 1);
    EXPECT_FALSE(cache.Exists("a", "work", "user"));
    EXPECT_TRUE(cache.Exists("b", "work", "user"));
    EXPECT_EQ(cache.Get("b", "work", "user"), nullptr);
}

TEST(DBCtrlCache, ASessionAddedWithoutAUseGoesWithTheDropAfterItsFirstGet) {
    Sessions sessions;
    DBCtrlCache cache;
    UDMDBCtrl* session = sessions.New("s");
    cache.Add("lib", "work", "user", session, false);
    cache.Get("lib", "work", "user");
    cache.Drop(session);
    EXPECT_EQ(sessions.Ended("s"), 1);
}

TEST(DBCtrlCache, ASessionAddedWithoutAUseSurvivesADropUntilTheCacheEnds) {
    Sessions sessions;
    {
        DBCtrlCache cache;
        UDMDBCtrl* session = sessions.New("s");
        cache.Add("lib", "work", "user", session, false);
        cache.Drop(session);
        EXPECT_EQ(sessions.Ended("s"), 0);
        EXPECT_TRUE(cache.Exists("lib", "work", "user"));
    }
    EXPECT_EQ(sessions.Ended("s"), 1);
}

TEST(DBCtrlCache, TheEndOfTheCacheEndsAllSessionsWhateverTheirUse) {
    Sessions sessions;
    {
        DBCtrlCache cache;
        cache.Add("a", "work", "user", sessions.New("s1"), true);
        cache.Add("b", "work", "user", sessions.New("s2"), true);
        cache.Get("b", "work", "user");
        cache.Get("b", "work", "user");
    }
    EXPECT_EQ(sessions.Ended("s1"), 1);
    EXPECT_EQ(sessions.Ended("s2"), 1);
}

TEST(DBCtrlCache, ACopySharesTheSessionsAndOneOfTheTwoEndsThem) {
    Sessions sessions;
    {
        DBCtrlCache cache;
        UDMDBCtrl* session = sessions.New("s");
        cache.Add("lib", "work", "user", session, true);
        DBCtrlCache copy(cache);
        EXPECT_EQ(copy.Get("lib", "work", "user"), session);
        // Empties the original, so that the copy alone is left to end the session.
        cache = DBCtrlCache();
        EXPECT_FALSE(cache.Exists("lib", "work", "user"));
        EXPECT_EQ(sessions.Ended("s"), 0);
    }
    EXPECT_EQ(sessions.Ended("s"), 1);
}

}  // namespace
}  // namespace kxct
