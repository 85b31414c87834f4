#include <gtest/gtest.h>

#include <boost/smart_ptr/weak_ptr.hpp>

#include "tests/db/OpenSession.h"

namespace kxct {
namespace {

using kxudm::UDMUID;
using namespace mock;
using ::testing::_;
using ::testing::ElementsAre;
using ::testing::Eq;
using ::testing::InSequence;
using ::testing::Matcher;
using ::testing::Return;
using ::testing::StartsWith;
using ::testing::Throw;

using Uids = kxStlVector<UDMUID>;
using Groups = kxStlMap<UDMUID, kxStlVector<kxString>>;

constexpr char MERGE_OF_A_MAP[] =
    "void __cdecl kxct::UDMDBCtrl::Merge(const class kxString &,const class kxString &,const class "
    "kxString &,const class kxStlMap<class kxudm::UDMUID,class kxStlVector<class kxString,class "
    "std::allocator<class kxString> >,struct std::less<class kxudm::UDMUID>,class "
    "std::allocator<struct std::pair<class kxudm::UDMUID const ,class kxStlVector<class "
    "kxString,class std::allocator<class kxString> > > > > &,class kxStlVector<class "
    "kxudm::UDMItemHandle,class std::allocator<class kxudm::UDMItemHandle> > &,bool)";
constexpr char MERGE_OF_A_VECTOR[] =
    "void __cdecl kxct::UDMDBCtrl::Merge(const class kxString &,const class kxString &,const class "
    "kxString &,const class kxStlVector<class kxudm::UDMUID,class std::allocator<class "
    "kxudm::UDMUID> > &,class kxStlVector<class kxudm::UDMItemHandle,class std::allocator<class "
    "kxudm::UDMItemHandle> > &)";

Matcher<const Groups&> AreGroups(const Groups& groups) {
    return Eq(groups);
}

Matcher<Uids> AreUids(const Uids& uids) {
    return Eq(uids);
}

// A session whose provider merges with `engine`.
struct MergingSession : OpenSession {
    MergingSession() { ON_CALL(*provider, CreateMerge).WillByDefault(Return(engine)); }
    boost::shared_ptr<MockMerge> engine = boost::make_shared<MockMerge>();
};

Groups SomeGroups() {
    Groups groups;
    groups[UDMUID("A:1")] = Texts{"parts", "files"};
    groups[UDMUID("B:2")] = Texts{};
    return groups;
}

TEST(UDMDBCtrl, ImportHandsThePathOn) {
    OpenSession open;
    EXPECT_CALL(*open.profile, Import(kxString("/in.zip")));
    open->Import("/in.zip");
}

TEST(UDMDBCtrl, ExportAlwaysAsksForScopeTwo) {
    OpenSession open;
    EXPECT_CALL(*open.profile, Export(kxString("/out.zip"), Texts{"A:1", "B"}, 2));
    open->Export("/out.zip", {"A:1", "B"});
}

TEST(UDMDBCtrl, AMergeGivesTheEngineTheSessionBetweenTheTexts) {
    MergingSession open;
    const boost::shared_ptr<kxudm::IUDMProfile> profile = open.profile;
    EXPECT_CALL(*open.provider,
                CreateMerge(kxString("lib"), kxString("/folder"), profile, kxString("comment")))
        .Times(2)
        .WillRepeatedly(Return(open.engine));
    EXPECT_CALL(*open.engine, merge(AreUids({UDMUID("A:1")}), _));
    EXPECT_CALL(*open.engine, merge(AreGroups(SomeGroups()), _));
    Handles out;
    open->Merge("lib", "/folder", "comment", Uids{UDMUID("A:1")}, out);
    open->Merge("lib", "/folder", "comment", SomeGroups(), out, true);
}

TEST(UDMDBCtrl, AMergeOfAMapHandsItsFlagOn) {
    MergingSession open;
    Handles out;
    InSequence order;
    EXPECT_CALL(*open.engine, merge(AreGroups(SomeGroups()), true));
    EXPECT_CALL(*open.engine, merge(AreGroups(SomeGroups()), false));
    open->Merge("lib", "/", "", SomeGroups(), out, true);
    open->Merge("lib", "/", "", SomeGroups(), out, false);
}

TEST(UDMDBCtrl, AMergeOfAVectorNeverPublishes) {
    MergingSession open;
    const Uids uids{UDMUID("A:1"), UDMUID("B:2")};
    EXPECT_CALL(*open.engine, merge(AreUids(uids), false));
    Handles out;
    open->Merge("lib", "/", "", uids, out);
}

TEST(UDMDBCtrl, TheResultOfAMergeReplacesWhatWasThere) {
    MergingSession open;
    EXPECT_CALL(*open.engine, merge(Matcher<Uids>(_), _))
        .WillOnce(Return(Handles{NewHandle("N:1")}));
    EXPECT_CALL(*open.engine, merge(Matcher<const Groups&>(_), _))
        .WillOnce(Return(Handles{NewHandle("M:1"), NewHandle("M:2")}));
    Handles out{NewHandle("earlier")};
    open->Merge("lib", "/", "", Uids{UDMUID("A:1")}, out);
    EXPECT_THAT(UidsOf(out), ElementsAre("N:1"));
    open->Merge("lib", "/", "", SomeGroups(), out, false);
    EXPECT_THAT(UidsOf(out), ElementsAre("M:1", "M:2"));
}

TEST(UDMDBCtrl, AMergeOfNothingStillAsksTheEngine) {
    MergingSession open;
    EXPECT_CALL(*open.engine, merge(AreUids({}), false));
    EXPECT_CALL(*open.engine, merge(AreGroups({}), true));
    Handles out{NewHandle("earlier")};
    open->Merge("lib", "/", "", Uids{}, out);
    EXPECT_TRUE(out.empty());
    open->Merge("lib", "/", "", Groups{}, out, true);
}

TEST(UDMDBCtrl, TheEngineIsFreedAfterTheMerge) {
    MergingSession open;
    boost::weak_ptr<kxudm::UDMKXMergeToCatalog> engine;
    ON_CALL(*open.provider, CreateMerge).WillByDefault([&](auto&&...) {
        const auto made = boost::make_shared<::testing::NiceMock<MockMerge>>();
        engine = made;
        return made;
    });
    Handles out;
    open->Merge("lib", "/", "", Uids{}, out);
    EXPECT_TRUE(engine.expired());
}

TEST(UDMDBCtrl, AMergeWithoutAnEngineIsANullGuardOfItsOwn) {
    OpenSession open;  // its provider can't merge
    Handles out{NewHandle("kept")};
    EXPECT_EQ(FailureOf([&] { open->Merge("lib", "/", "", SomeGroups(), out, true); }),
              std::string(MERGE_OF_A_MAP) +
                  ":: db/_private/UDMDBCtrl.cpp. The pointer mergeToCatalogPtr is null!");
    EXPECT_EQ(FailureOf([&] { open->Merge("lib", "/", "", Uids{}, out); }),
              std::string(MERGE_OF_A_VECTOR) +
                  ":: db/_private/UDMDBCtrl.cpp. The pointer mergeToCatalogPtr is null!");
    EXPECT_THAT(UidsOf(out), ElementsAre("kept"));
}

TEST(UDMDBCtrl, AFailureToMakeTheEnginePassesUntranslated) {
    OpenSession open;
    ON_CALL(*open.provider, CreateMerge).WillByDefault(Throw(std::runtime_error("no library")));
    Handles out;
    const auto passed = [](const std::function<void()>& call) {
        try {
            call();
        } catch (const KXCTException&) {
            return std::string("translated");
        } catch (const std::runtime_error& failure) {
            return std::string(failure.what());
        }
        return std::string("nothing");
    };
    EXPECT_EQ(passed([&] { open->Merge("lib", "/", "", Uids{}, out); }), "no library");
    EXPECT_EQ(passed([&] { open->Merge("lib", "/", "", Groups{}, out, true); }), "no library");
}

TEST(UDMDBCtrl, AFailingMergeIsTranslatedAndLeavesTheResult) {
    MergingSession open;
    const std::runtime_error boom("boom");
    EXPECT_CALL(*open.engine, merge(Matcher<Uids>(_), _)).WillOnce(Throw(boom));
    EXPECT_CALL(*open.engine, merge(Matcher<const Groups&>(_), _)).WillOnce(Throw(boom));
    Handles out{NewHandle("kept")};
    EXPECT_EQ(FailureOf([&] { open->Merge("lib", "/", "", Uids{}, out); }),
              std::string(MERGE_OF_A_VECTOR) + " boom");
    EXPECT_EQ(FailureOf([&] { open->Merge("lib", "/", "", Groups{}, out, true); }),
              std::string(MERGE_OF_A_MAP) + " boom");
    EXPECT_THAT(UidsOf(out), ElementsAre("kept"));
}

TEST(UDMDBCtrl, MergeWithoutASessionRaisesTheNullGuardOfItsForm) {
    MergingSession open;
    EXPECT_CALL(*open.provider, CreateMerge).Times(0);
    const auto profile = UDMDBCtrlPeer::TakeProfile(*open);
    Handles out;
    const std::string tail = ":: db/_private/UDMDBCtrl.cpp. The pointer _udmProfilePtr is null!";
    EXPECT_EQ(FailureOf([&] { open->Merge("lib", "/", "", Groups{}, out, true); }),
              MERGE_OF_A_MAP + tail);
    EXPECT_EQ(FailureOf([&] { open->Merge("lib", "/", "", Uids{}, out); }),
              MERGE_OF_A_VECTOR + tail);
}

}  // namespace
}  // namespace kxct
