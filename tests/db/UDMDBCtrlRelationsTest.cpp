#include <gtest/gtest.h>

#include "tests/db/OpenSession.h"
#include "tests/mock/FakeDefinitions.h"

namespace kxct {
namespace {

using kxudm::UDMProfileUtils;
using kxudm::UDMQuerySettingHandle;
using kxudm::UDMRelationHandle;
using namespace mock;
using ::testing::_;
using ::testing::ElementsAre;
using ::testing::InSequence;
using ::testing::Ref;
using ::testing::Return;
using ::testing::SetArgReferee;
using ::testing::Throw;

// Definitions in which UDMPart has the owner group "parts" and the reference group "uses".
void DefinePart(MockProfile& profile) {
    const auto definitions = boost::make_shared<FakeDefinitions>();
    auto& part = definitions->Add("UDMPart");
    part.groups.push_back({"parts", "owner", {"UDMPart"}});
    part.groups.push_back({"uses", "reference", {"UDMPart"}});
    ON_CALL(profile, GetProfileUtils).WillByDefault([definitions] {
        return UDMProfileUtils(definitions);
    });
}

TEST(UDMDBCtrl, CreateRelationMovesTheTypeBehindTheHandles) {
    OpenSession open;
    auto first = NewHandle("A:1");
    auto second = NewHandle("B:1");
    InSequence order;
    EXPECT_CALL(*open.profile,
                CreateRelation(IsHandle("A:1"), IsHandle("B:1"), kxString("simulates"), true))
        .WillOnce(Return(UDMRelationHandle(first, second, "simulates")));
    EXPECT_CALL(*open.profile,
                CreateRelation(IsHandle("A:1"), IsHandle("B:1"), kxString("simulates"), false))
        .WillOnce(Return(UDMRelationHandle()));
    EXPECT_EQ(open->CreateRelation("simulates", first, second, true).GetType(), "simulates");
    open->CreateRelation("simulates", first, second, false);
}

TEST(UDMDBCtrl, ARelationFollowsToNewerRevisionsUnlessToldOtherwise) {
    OpenSession open;
    auto first = NewHandle("A:1");
    auto second = NewHandle("B:1");
    EXPECT_CALL(*open.profile, CreateRelation(_, _, kxString("simulates"), false))
        .WillOnce(Return(UDMRelationHandle()));
    open->CreateRelation("simulates", first, second);
}

TEST(UDMDBCtrl, RemoveRelationGivesTheRuntimesAnswer) {
    OpenSession open;
    auto first = NewHandle("A:1");
    auto second = NewHandle("B:1");
    EXPECT_CALL(*open.profile, RemoveRelation(IsHandle("A:1"), IsHandle("B:1")))
        .WillOnce(Return(true))
        .WillOnce(Return(false));
    EXPECT_TRUE(open->RemoveRelation(first, second));
    EXPECT_FALSE(open->RemoveRelation(first, second));
}

TEST(UDMDBCtrl, AddReferenceKeepsTheOrderAndRemoveReferenceTurnsItRound) {
    OpenSession open;
    auto handle = NewHandle("A:1");
    auto target = NewHandle("T:1");
    InSequence order;
    EXPECT_CALL(*open.profile, AddReference(IsHandle("A:1"), IsHandle("T:1"), kxString("uses")));
    EXPECT_CALL(*open.profile, RemoveReference(IsHandle("A:1"), IsHandle("T:1")));
    open->AddReference(handle, target, "uses");
    open->RemoveReference(target, handle);
}

TEST(UDMDBCtrl, ReferencesOfAListedTypeAreAskedFor) {
    OpenSession open;
    DefinePart(*open.profile);
    Handles out;
    EXPECT_CALL(*open.profile, GetReferences(Ref(out), IsHandle("A:1"), kxString("uses")));
    open->GetReferences(out, "uses", NewHandle("A:1", "UDMPart"));
}

TEST(UDMDBCtrl, ReferencesOfATypeThatTheDefinitionLacksAreNotAskedFor) {
    OpenSession open;
    DefinePart(*open.profile);
    EXPECT_CALL(*open.profile, GetReferences(_, _, _)).Times(0);
    Handles out{NewHandle("earlier")};
    // "parts" is a group of another category, "Uses" differs in case.
    for (const kxString type : {"mentions", "parts", "Uses"}) {
        open->GetReferences(out, type, NewHandle("A:1", "UDMPart"));
    }
    EXPECT_THAT(UidsOf(out), ElementsAre("earlier"));
}

TEST(UDMDBCtrl, TheReferenceGroupsOfTheHandlesDefinitionAreAskedFor) {
    OpenSession open;
    const auto definitions = boost::make_shared<MockDefinitions>();
    ON_CALL(*open.profile, GetProfileUtils).WillByDefault([&] {
        return UDMProfileUtils(definitions);
    });
    EXPECT_CALL(*definitions, GroupNames(kxString("UDMPart"), _, kxString("reference")))
        .WillOnce(SetArgReferee<1>(Texts{"other", "uses"}));
    EXPECT_CALL(*open.profile, GetReferences(_, _, kxString("uses")));
    Handles out;
    open->GetReferences(out, "uses", NewHandle("A:1", "UDMPart"));
}

TEST(UDMDBCtrl, ReferencesOfAnEmptyTypeAreAskedForWithoutALookAtTheDefinition) {
    OpenSession open;
    Handles out;
    EXPECT_CALL(*open.profile, GetProfileUtils()).Times(0);
    EXPECT_CALL(*open.profile, GetReferences(Ref(out), IsHandle("A:1"), kxString("")));
    open->GetReferences(out, "", NewHandle("A:1", "NoSuchDefinition"));
}

TEST(UDMDBCtrl, AFailingLookAtTheDefinitionPassesUntranslated) {
    OpenSession open;
    EXPECT_CALL(*open.profile, GetReferences(_, _, _)).Times(0);
    Handles out;
    try {
        open->GetReferences(out, "uses", NewHandle("A:1", "NoSuchDefinition"));
        FAIL() << "no exception";
    } catch (const kxudm::UDMNotFoundException& failure) {
        EXPECT_STREQ(failure.what(), "no definition NoSuchDefinition");
    }
}

TEST(UDMDBCtrl, GetReferredByFillsBothLists) {
    OpenSession open;
    Handles out;
    Texts types{"uses"};
    EXPECT_CALL(*open.profile, GetReferredBy(Ref(out), Ref(types), IsHandle("T:1")))
        .WillOnce([](Handles& handles, Texts& texts, const auto&) {
            EXPECT_THAT(texts, ElementsAre("uses"));
            handles.push_back(NewHandle("A:1"));
            handles.push_back(NewHandle("B:1"));
            texts = {"uses", "uses"};
        });
    open->GetReferredBy(out, types, NewHandle("T:1"));
    EXPECT_THAT(UidsOf(out), ElementsAre("A:1", "B:1"));
    EXPECT_THAT(types, ElementsAre("uses", "uses"));
}

TEST(UDMDBCtrl, AnAttributeQueryRunsInModeMinusOneWithoutFullText) {
    OpenSession open;
    UDMQuerySettingHandle settings;
    Handles out{NewHandle("earlier")};
    EXPECT_CALL(*open.profile,
                RunQuery(Ref(out), kxString("mass > 1"), -1, 10L, 20L, Ref(settings), true, false))
        .WillOnce([](Handles& hits, const auto&, auto...) {
            hits.push_back(NewHandle("A:1"));
            return std::size_t{5000000000};
        });
    EXPECT_EQ(open->ExecQuery("mass > 1", settings, out, 10, 20, true), 5000000000U);
    EXPECT_THAT(UidsOf(out), ElementsAre("earlier", "A:1"));
}

TEST(UDMDBCtrl, AFullTextQueryRunsInTheGivenModeWithFullText) {
    OpenSession open;
    UDMQuerySettingHandle settings;
    Handles out;
    EXPECT_CALL(*open.profile,
                RunQuery(Ref(out), kxString("bolt"), 2, 0L, 50L, Ref(settings), false, true))
        .WillOnce(Return(7U));
    EXPECT_EQ(open->ExecQueryFullText("bolt", 2, settings, out, 0, 50, false), 7U);
}

TEST(UDMDBCtrl, AnEmptyQueryGoesToTheRuntime) {
    OpenSession open;
    UDMQuerySettingHandle settings;
    Handles out;
    EXPECT_CALL(*open.profile, RunQuery(_, kxString(""), -1, 0L, 0L, _, false, false));
    EXPECT_CALL(*open.profile, RunQuery(_, kxString(""), 99, 0L, 0L, _, false, true));
    open->ExecQuery("", settings, out, 0, 0, false);
    open->ExecQueryFullText("", 99, settings, out, 0, 0, false);
}

}  // namespace
}  // namespace kxct
