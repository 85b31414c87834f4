// Queries, their versions and filter walk, and history.
#include <kxct/ItemImpl.h>
#include <kxudm/UDMHistoryNode.h>
#include <kxudm/UDMQuerySettings.h>

#include "tests/controller/ControllerFixture.h"

namespace kxct::test {
namespace {

using mock::IsHandle;
using testing::_;
using testing::ElementsAre;
using testing::InSequence;
using testing::IsEmpty;
using testing::Return;

using Texts = kxStlVector<kxString>;

constexpr int HITS_ONLY = -1;
constexpr int ALL_VERSIONS = 0;

// The settings of a query as the runtime gets them.
MATCHER_P2(Searches, inExcluded, ignoringCase, "") {
    return arg.GetSettings().SearchesInExcluded() == inExcluded &&
           arg.GetSettings().IgnoresCase() == ignoringCase;
}

class ControllerImplQuery : public ControllerTest {
  protected:
    ControllerImplQuery() {
        for (const char* uid : {"A:1", "A:2", "A:3", "B:1", "B:2", "C:1"}) {
            Entity(uid);
        }
        History("A:3", 3);
        History("B:2", 2);
        History("C:1", 1);
        Find({"A:3", "B:2"});
    }

    // The history of an entity: versions 1 to `newest`, asked for at `newest`.
    void History(const kxString& uid, int newest) {
        const kxString base = uid.substr(0, uid.find(':'));
        kxudm::UDMHistoryNode::List versions;
        for (int version = 1; version <= newest; ++version) {
            versions.push_back(boost::make_shared<kxudm::UDMHistoryNode>(
                base, version, kxudm::UDMHistoryNode::List(), kxudm::UDMHistoryNode::List()));
        }
        ON_CALL(*profile, GetHistory(IsHandle(uid)))
            .WillByDefault(Return(boost::make_shared<kxudm::UDMHistoryNode>(
                base, newest, versions, kxudm::UDMHistoryNode::List())));
    }

    // What every query finds.
    void Find(std::initializer_list<const char*> uids) {
        Handles hits;
        for (const char* uid : uids) {
            hits.push_back(HandleOf(uid));
        }
        ON_CALL(*profile, RunQuery).WillByDefault([hits](Handles& out, auto&&...) {
            out.insert(out.end(), hits.begin(), hits.end());
            return hits.size();
        });
    }

    size_t Query(int versions, int mode = QUERY_ATTRIBUTES) {
        return controller->Query(
            "q", items, versions, static_cast<QueryMode>(mode), 0, 0, false, true);
    }

    Items items;
};

TEST_F(ControllerImplQuery, AnAttributeQueryHandsItsArgumentsOn) {
    EXPECT_CALL(*profile,
                RunQuery(_, kxString("type == X"), -1, 3, 9, Searches(true, false), true, false));
    EXPECT_EQ(controller->Query("type == X", items, HITS_ONLY, QUERY_ATTRIBUTES, 3, 9, true, false),
              2U);
    EXPECT_THAT(UidsOf(items), ElementsAre("A:3", "B:2"));
}

TEST_F(ControllerImplQuery, AFullTextQueryHandsItsModeOn) {
    for (int mode = 0; mode <= 2; ++mode) {
        EXPECT_CALL(*profile,
                    RunQuery(_, kxString("bridge"), mode, 0, 5, Searches(true, true), false, true));
        EXPECT_EQ(controller->Query(
                      "bridge", items, HITS_ONLY, static_cast<QueryMode>(mode), 0, 5, false, true),
                  2U * (static_cast<size_t>(mode) + 1));
    }
}

TEST_F(ControllerImplQuery, AnUnknownModeIsZeroWithoutACall) {
    EXPECT_CALL(*profile, RunQuery).Times(0);
    items = {ItemOf("C:1")};
    for (int mode : {3, -2, 100}) {
        EXPECT_EQ(Query(HITS_ONLY, mode), 0U) << mode;
    }
    EXPECT_EQ(items.size(), 1U);
}

TEST_F(ControllerImplQuery, AnEmptyQueryReachesTheRuntime) {
    EXPECT_CALL(*profile, RunQuery(_, kxString(""), -1, _, _, _, _, _));
    controller->Query("", items, HITS_ONLY, QUERY_ATTRIBUTES, 0, 0, false, true);
}

TEST_F(ControllerImplQuery, EntriesFromBeforeStayAndCount) {
    items = {ItemOf("C:1"), nullptr};
    EXPECT_EQ(Query(HITS_ONLY), 4U);
    EXPECT_THAT(UidsOf(items), ElementsAre("C:1", "null", "A:3", "B:2"));
}

TEST_F(ControllerImplQuery, NegativeVersionsGiveTheHitsAlone) {
    EXPECT_CALL(*profile, GetHistory).Times(0);
    EXPECT_EQ(Query(-1), 2U);
    EXPECT_EQ(Query(-7), 4U);
}

TEST_F(ControllerImplQuery, ZeroVersionsGiveHitsAndThenAllTheirOlderOnesByHit) {
    EXPECT_EQ(Query(ALL_VERSIONS), 5U);
    EXPECT_THAT(UidsOf(items), ElementsAre("A:3", "B:2", "A:1", "A:2", "B:1"));
}

TEST_F(ControllerImplQuery, PositiveVersionsGiveAtMostThatManyForEachHit) {
    EXPECT_EQ(Query(1), 4U);
    EXPECT_THAT(UidsOf(items), ElementsAre("A:3", "B:2", "A:1", "B:1"));
    items.clear();
    EXPECT_EQ(Query(9), 5U);
}

TEST_F(ControllerImplQuery, AHitWithoutOlderVersionsAddsNone) {
    Find({"C:1"});
    EXPECT_EQ(Query(ALL_VERSIONS), 1U);
}

TEST_F(ControllerImplQuery, VersionsHaveNoEffectOnFullText) {
    EXPECT_CALL(*profile, GetHistory).Times(0);
    EXPECT_EQ(Query(ALL_VERSIONS, QUERY_FULLTEXT_ALL), 2U);
}

TEST_F(ControllerImplQuery, AFailingHistoryFailsTheQuery) {
    ON_CALL(*profile, GetHistory(IsHandle("B:2"))).WillByDefault(Fail());
    EXPECT_EQ(Query(ALL_VERSIONS), 0U);
    EXPECT_THAT(items, IsEmpty());
}

TEST_F(ControllerImplQuery, ResultsComeFromTheManagerOfTheType) {
    EXPECT_EQ(controller->Query(
                  "q", items, MANAGER_DEFAULT, HITS_ONLY, QUERY_ATTRIBUTES, 0, 0, false, true),
              2U);
    EXPECT_EQ(items[0], ItemOf("A:3"));
    items.clear();
    EXPECT_GT(controller->Query(
                  "q", items, MANAGER_HISTORY, HITS_ONLY, QUERY_ATTRIBUTES, 0, 0, false, true),
              0U);
    EXPECT_EQ(items[0]->IsA(), "HistoryItem");
}

TEST_F(ControllerImplQuery, AnUnknownTypeFindsNothingWithoutACall) {
    EXPECT_CALL(*profile, RunQuery).Times(0);
    const auto type = static_cast<ManagerType>(5);
    EXPECT_EQ(controller->Query("q", items, type, HITS_ONLY, QUERY_ATTRIBUTES, 0, 0, false, true),
              0U);
    EXPECT_EQ(controller->Query("q", items, type, HITS_ONLY, QUERY_FULLTEXT_ALL, 0, 0, false, true),
              0U);
}

TEST_F(ControllerImplQuery, UidsAreAppended) {
    Texts uids{"before"};
    EXPECT_EQ(controller->Query("q", uids, ALL_VERSIONS, QUERY_ATTRIBUTES, 0, 0, false, true), 5U);
    EXPECT_THAT(uids, ElementsAre("before", "A:3", "B:2", "A:1", "A:2", "B:1"));
}

TEST_F(ControllerImplQuery, AFailingQueryForUidsFindsNothing) {
    ON_CALL(*profile, RunQuery).WillByDefault(Fail());
    Texts uids;
    EXPECT_EQ(controller->Query("q", uids, HITS_ONLY, QUERY_ATTRIBUTES, 0, 0, false, true), 0U);
    EXPECT_THAT(uids, IsEmpty());
}

TEST_F(ControllerImplQuery, TheInnerFormsTellFailureFromNothingFound) {
    EXPECT_TRUE(controller->_ExecQuery("q", &items, MANAGER_DEFAULT, HITS_ONLY, 0, 0, false, true));
    EXPECT_TRUE(controller->_ExecQueryFullText("q", 0, &items, MANAGER_DEFAULT, 0, 0, false, true));
    ON_CALL(*profile, RunQuery).WillByDefault(Fail());
    EXPECT_FALSE(
        controller->_ExecQuery("q", &items, MANAGER_DEFAULT, HITS_ONLY, 0, 0, false, true));
    EXPECT_FALSE(
        controller->_ExecQueryFullText("q", 0, &items, MANAGER_DEFAULT, 0, 0, false, true));
    EXPECT_EQ(items.size(), 4U);
}

// Hits of definition "UDMRoot" with a group "parts" whose children the tests choose.
class ControllerImplQueryFilter : public ControllerImplQuery {
  protected:
    ControllerImplQueryFilter() {
        definitions->Add("UDMRoot").groups.push_back({"parts", "owner", {"UDMPart"}});
        for (const char* uid : {"R:1", "S:1", "T:1"}) {
            Entity(uid, "UDMRoot");
        }
        Find({"R:1", "A:3", "S:1", "T:1"});
        controller->SetHideMap({{"UDMRoot", {"parts"}}});
        ItemFilterList filters;
        filters.Add("UDMRoot", "parts", "UDMPart", "attrib.state == \"done\"");
        controller->SetFilterMapForChildren(filters);
    }

    void GiveChild(const kxString& uid) {
        ON_CALL(*profile,
                GetChildren(_,
                            IsHandle(uid),
                            kxString("parts"),
                            kxString("type == UDMPart && attrib.state == \"done\"")))
            .WillByDefault(Give({HandleOf("C:1")}));
    }
};

TEST_F(ControllerImplQueryFilter, HitsThatCouldHaveChildrenAndHaveNoneAreDropped) {
    GiveChild("S:1");
    EXPECT_EQ(Query(HITS_ONLY), 2U);
    EXPECT_THAT(UidsOf(items), ElementsAre("A:3", "S:1"));
}

TEST_F(ControllerImplQueryFilter, NeighboursAreDroppedAndTheOrderKept) {
    GiveChild("R:1");
    EXPECT_EQ(Query(HITS_ONLY), 2U);
    EXPECT_THAT(UidsOf(items), ElementsAre("R:1", "A:3"));
}

TEST_F(ControllerImplQueryFilter, AHitOfAnotherTypeStaysWhateverItsChildren) {
    EXPECT_CALL(*profile, GetChildren).Times(3);
    EXPECT_CALL(*profile, GetChildren(_, IsHandle("A:3"), _, _)).Times(0);
    EXPECT_EQ(Query(HITS_ONLY), 1U);
    EXPECT_THAT(UidsOf(items), ElementsAre("A:3"));
}

TEST_F(ControllerImplQueryFilter, EntriesFromBeforeAreWalkedTooAndNullsStay) {
    GiveChild("R:1");
    items = {nullptr, ItemOf("S:1"), ItemOf("B:2")};
    EXPECT_EQ(Query(HITS_ONLY), 4U);
    EXPECT_THAT(UidsOf(items), ElementsAre("null", "B:2", "R:1", "A:3"));
}

TEST_F(ControllerImplQueryFilter, FullTextIsThinnedOutToo) {
    EXPECT_EQ(Query(HITS_ONLY, QUERY_FULLTEXT_ANY), 1U);
}

TEST_F(ControllerImplQueryFilter, UidsAreThoseOfTheThinnedOutList) {
    GiveChild("T:1");
    Texts uids;
    EXPECT_EQ(controller->Query("q", uids, HITS_ONLY, QUERY_ATTRIBUTES, 0, 0, false, true), 2U);
    EXPECT_THAT(uids, ElementsAre("A:3", "T:1"));
}

TEST_F(ControllerImplQueryFilter, WithoutChildFiltersNothingIsAskedOrDropped) {
    controller->SetFilterMapForChildren(ItemFilterList());
    EXPECT_CALL(*profile, GetChildren).Times(0);
    EXPECT_EQ(Query(HITS_ONLY), 4U);
}

// A hit of a parent type that fails when it is asked for its children.
class FailingItem : public ItemImpl {
  public:
    FailingItem() : ItemImpl(nullptr, nullptr, "F:1") {}
    const kxString& IsA() override { return m_uid; }
    kxString GetType() const override { return "UDMRoot"; }
    using ItemImpl::GetNumChildren;
    size_t GetNumChildren() override { throw std::runtime_error("the item says no"); }
};

TEST_F(ControllerImplQueryFilter, AnItemThatFailsEndsTheWalkWithZeroAndTheRestStays) {
    FailingItem failing;
    items = {ItemOf("R:1"), nullptr, ItemOf("S:1"), &failing};
    EXPECT_EQ(Query(HITS_ONLY), 0U);
    EXPECT_THAT(UidsOf(items), ElementsAre("null", "F:1", "R:1", "A:3", "S:1", "T:1"));
}

class ControllerImplHistory : public ControllerImplQuery {};

// Unlike a query, which adds to the list.
TEST_F(ControllerImplHistory, TheListIsReplaced) {
    items = {nullptr, ItemOf("B:1")};
    EXPECT_EQ(controller->GetHistory({"C:1"}, items), 2U);
    EXPECT_THAT(UidsOf(items), ElementsAre("C:1", "C:1"));
}

TEST_F(ControllerImplHistory, EachIdGivesItsItemAndItsVersions) {
    EXPECT_EQ(controller->GetHistory({"A:3", "C:1"}, items), 6U);
    EXPECT_THAT(UidsOf(items), ElementsAre("A:3", "A:1", "A:2", "A:3", "C:1", "C:1"));
    for (Item* item : items) {
        EXPECT_EQ(item->IsA(), "HistoryItem");
    }
}

TEST_F(ControllerImplHistory, UnknownIdsAreZero) {
    EXPECT_EQ(controller->GetHistory({"Z:1"}, items), 0U);
    EXPECT_EQ(controller->GetHistory({"A:3", "Z:1"}, items), 0U);
    EXPECT_THAT(items, IsEmpty());
}

TEST_F(ControllerImplHistory, NoIdsAreZeroAndLeaveTheListAlone) {
    items = {ItemOf("C:1")};
    EXPECT_EQ(controller->GetHistory({}, items), 0U);
    EXPECT_EQ(items.size(), 1U);
}

TEST_F(ControllerImplHistory, AFailingHistoryIsZero) {
    ON_CALL(*profile, GetHistory).WillByDefault(Fail());
    EXPECT_EQ(controller->GetHistory({"A:3"}, items), 0U);
}

}  // namespace
}  // namespace kxct::test
