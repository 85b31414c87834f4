#include <gtest/gtest.h>

#include "tests/db/OpenSession.h"

namespace kxct {
namespace {

using kxudm::UDMItemHandle;
using namespace mock;
using ::testing::_;
using ::testing::ElementsAre;
using ::testing::InSequence;
using ::testing::Ref;
using ::testing::Return;
using ::testing::SetArgReferee;
using ::testing::StartsWith;
using ::testing::Throw;

std::runtime_error Boom() {
    return std::runtime_error("boom");
}

TEST(UDMDBCtrl, CreateEntityGivesTheNewHandle) {
    OpenSession open;
    EXPECT_CALL(*open.profile, CreateEntity(kxString("UDMPart"), kxString("Bracket")))
        .WillOnce(Return(NewHandle("A:0")));
    EXPECT_EQ(open->CreateEntity("UDMPart", "Bracket").Uid(), "A:0");
}

TEST(UDMDBCtrl, CreateAndAddHandsDefinitionNameParentAndGroupOn) {
    OpenSession open;
    EXPECT_CALL(*open.profile,
                CreateAndAddChild(
                    kxString("UDMPart"), kxString("Bolt"), IsHandle("P:1"), kxString("parts")))
        .WillOnce(Return(NewHandle("B:0")));
    EXPECT_EQ(open->CreateAndAdd("UDMPart", "Bolt", NewHandle("P:1"), "parts").Uid(), "B:0");
}

TEST(UDMDBCtrl, AddChildGivesParentThenChild) {
    OpenSession open;
    EXPECT_CALL(*open.profile, AddChild(IsHandle("P:1"), IsHandle("C:1"), kxString("parts")));
    open->AddChild(NewHandle("P:1"), NewHandle("C:1"), "parts");
}

TEST(UDMDBCtrl, RemoveChildFromParentGivesParentThenChild) {
    OpenSession open;
    EXPECT_CALL(*open.profile, RemoveChild(IsHandle("P:1"), IsHandle("C:1")));
    auto parent = NewHandle("P:1");
    auto child = NewHandle("C:1");
    open->RemoveChildFromParent(parent, child);
}

TEST(UDMDBCtrl, DeleteRootEntityAlwaysTakesTheChildrenAndNeverForces) {
    OpenSession open;
    EXPECT_CALL(*open.profile, DeleteEntity(IsHandle("A:1"), true, false));
    auto handle = NewHandle("A:1");
    open->DeleteRootEntity(handle);
}

TEST(UDMDBCtrl, MoveContentGivesContentThenTarget) {
    OpenSession open;
    EXPECT_CALL(*open.profile, MoveContent(IsHandle("A:1"), IsHandle("F:0")));
    open->MoveContent(NewHandle("A:1"), NewHandle("F:0"));
}

TEST(UDMDBCtrl, GetChildrenAppendsWhatTheRuntimeAppends) {
    OpenSession open;
    Handles out{NewHandle("earlier")};
    EXPECT_CALL(*open.profile,
                GetChildren(Ref(out), IsHandle("P:1"), kxString("parts"), kxString("mass > 1")))
        .WillOnce([](Handles& children, const auto&, const auto&, const auto&) {
            children.push_back(NewHandle("C:1"));
        });
    open->GetChildren(out, NewHandle("P:1"), "parts", "mass > 1");
    EXPECT_THAT(UidsOf(out), ElementsAre("earlier", "C:1"));
}

TEST(UDMDBCtrl, GetNChildrenGivesTheCount) {
    OpenSession open;
    EXPECT_CALL(*open.profile,
                GetChildCount(IsHandle("P:1"), kxString("parts"), kxString("mass > 1")))
        .WillOnce(Return(3000000000U));
    const UDMDBCtrl& session = *open;
    EXPECT_EQ(session.GetNChildren(NewHandle("P:1"), "parts", "mass > 1"), 3000000000U);
}

TEST(UDMDBCtrl, GetParentsHandsRelationAndFlagOn) {
    OpenSession open;
    Handles out;
    InSequence order;
    EXPECT_CALL(*open.profile, GetParents(Ref(out), IsHandle("C:1"), kxString("reference"), true));
    EXPECT_CALL(*open.profile, GetParents(Ref(out), IsHandle("C:1"), kxString("reference"), false));
    open->GetParents(out, NewHandle("C:1"), "reference", true);
    open->GetParents(out, NewHandle("C:1"), "reference", false);
}

TEST(UDMDBCtrl, GetParentsWithoutARelationAsksForOwners) {
    OpenSession open;
    Handles out;
    EXPECT_CALL(*open.profile, GetParents(Ref(out), IsHandle("C:1"), kxString("owner"), true));
    open->GetParents(out, NewHandle("C:1"), true);
}

TEST(UDMDBCtrl, GetUDMItemHandleLooksTheUidUpAsItStands) {
    OpenSession open;
    EXPECT_CALL(*open.profile, GetEntity(kxString("A:3"))).WillOnce(Return(NewHandle("A:3")));
    EXPECT_EQ(open->GetUDMItemHandle("A:3").Uid(), "A:3");
}

TEST(UDMDBCtrl, FindEntityByIdLooksTheIdUpAsItStands) {
    OpenSession open;
    EXPECT_CALL(*open.profile, GetEntity(kxString("A:3"))).WillOnce(Return(NewHandle("A:3")));
    UDMItemHandle out;
    EXPECT_TRUE(open->FindEntityById(out, "A:3", false));
    EXPECT_EQ(out.Uid(), "A:3");
}

TEST(UDMDBCtrl, FindEntityByIdOfTheLatestLeavesTheRevisionOut) {
    OpenSession open;
    EXPECT_CALL(*open.profile, GetEntity(kxString("A"))).WillOnce(Return(NewHandle("A:7")));
    UDMItemHandle out;
    EXPECT_TRUE(open->FindEntityById(out, "A:3", true));
    EXPECT_EQ(out.Uid(), "A:7");
}

TEST(UDMDBCtrl, FindEntityByIdWithNothingToLookUpAsksNothing) {
    OpenSession open;
    EXPECT_CALL(*open.profile, GetEntity(_)).Times(0);
    auto out = NewHandle("kept");
    EXPECT_FALSE(open->FindEntityById(out, "", false));
    EXPECT_FALSE(open->FindEntityById(out, "", true));
    EXPECT_FALSE(open->FindEntityById(out, ":3", true));
    EXPECT_EQ(out.Uid(), "kept");
}

TEST(UDMDBCtrl, FindEntityByIdOfARejectedTextAnswersFalseAndKeepsTheHandle) {
    OpenSession open;
    EXPECT_CALL(*open.profile, GetEntity(kxString("A:3"))).WillOnce(Throw(Boom()));
    auto out = NewHandle("kept");
    EXPECT_FALSE(open->FindEntityById(out, "A:3", false));
    EXPECT_EQ(out.Uid(), "kept");
}

TEST(UDMDBCtrl, FindEntityByIdWithoutASessionAnswersFalse) {
    OpenSession open;
    const auto profile = UDMDBCtrlPeer::TakeProfile(*open);
    UDMItemHandle out;
    EXPECT_FALSE(open->FindEntityById(out, "A:3", false));
}

TEST(UDMDBCtrl, FindEntityByIdLetsWhatIsNoStandardExceptionPass) {
    OpenSession open;
    EXPECT_CALL(*open.profile, GetEntity(_)).WillOnce(Throw(42));
    UDMItemHandle out;
    EXPECT_THROW(open->FindEntityById(out, "A:3", false), int);
}

TEST(UDMDBCtrl, GetUDMItemHandleListAppendsInOrder) {
    OpenSession open;
    InSequence order;
    EXPECT_CALL(*open.profile, GetEntity(kxString("B"))).WillOnce(Return(NewHandle("B:1")));
    EXPECT_CALL(*open.profile, GetEntity(kxString("A"))).WillOnce(Return(NewHandle("A:1")));
    Handles out{NewHandle("earlier")};
    EXPECT_TRUE(open->GetUDMItemHandleList(out, {"B", "A"}));
    EXPECT_THAT(UidsOf(out), ElementsAre("earlier", "B:1", "A:1"));
}

TEST(UDMDBCtrl, GetUDMItemHandleListStopsAtTheFirstFailure) {
    OpenSession open;
    EXPECT_CALL(*open.profile, GetEntity(kxString("A"))).WillOnce(Return(NewHandle("A:1")));
    EXPECT_CALL(*open.profile, GetEntity(kxString("B"))).WillOnce(Throw(Boom()));
    EXPECT_CALL(*open.profile, GetEntity(kxString("C"))).Times(0);
    Handles out;
    EXPECT_FALSE(open->GetUDMItemHandleList(out, {"A", "B", "C"}));
    EXPECT_THAT(UidsOf(out), ElementsAre("A:1"));
}

TEST(UDMDBCtrl, AnEmptyListOfUidsIsASuccess) {
    OpenSession open;
    Handles out;
    EXPECT_TRUE(open->GetUDMItemHandleList(out, {}));
    EXPECT_TRUE(out.empty());
}

TEST(UDMDBCtrl, SetDisplayNameGivesNameThenHandle) {
    OpenSession open;
    EXPECT_CALL(*open.profile, SetDisplayName(kxString("Bracket"), IsHandle("A:1")));
    const UDMDBCtrl& session = *open;
    session.SetDisplayName("Bracket", NewHandle("A:1"));
}

TEST(UDMDBCtrl, SetMetaDataSetsTheAttribute) {
    OpenSession open;
    EXPECT_CALL(*open.profile,
                SetAttributeValue(IsHandle("A:1"), kxString("mass"), kxVariant(12.5)));
    open->SetMetaData(NewHandle("A:1"), "mass", kxVariant(12.5));
}

TEST(UDMDBCtrl, FolderOperationsHandPathAndFlagOnAndGiveTheFolder) {
    OpenSession open;
    UDMItemHandle out;
    InSequence order;
    EXPECT_CALL(*open.profile, CreateFolder(Ref(out), kxString("/A")))
        .WillOnce(SetArgReferee<0>(NewHandle("F1:0")));
    EXPECT_CALL(*open.profile, GetFolder(Ref(out), kxString("/B"), true))
        .WillOnce(SetArgReferee<0>(NewHandle("F2:0")));
    EXPECT_CALL(*open.profile, GetFolder(Ref(out), kxString("/B"), false));
    EXPECT_CALL(*open.profile, GetOrCreateFolder(Ref(out), kxString("/C"), true))
        .WillOnce(SetArgReferee<0>(NewHandle("F3:0")));
    EXPECT_CALL(*open.profile, GetOrCreateFolder(Ref(out), kxString("/C"), false));
    open->CreateFolder(out, "/A");
    EXPECT_EQ(out.Uid(), "F1:0");
    open->GetFolder(out, "/B", true);
    EXPECT_EQ(out.Uid(), "F2:0");
    open->GetFolder(out, "/B", false);
    open->GetOrCreateFolder(out, "/C", true);
    EXPECT_EQ(out.Uid(), "F3:0");
    open->GetOrCreateFolder(out, "/C", false);
}

TEST(UDMDBCtrl, FindFolderFullPathFillsTheText) {
    OpenSession open;
    kxString out;
    EXPECT_CALL(*open.profile, GetFolderFullPath(Ref(out), IsHandle("F:0")))
        .WillOnce(SetArgReferee<0>("/A/B"));
    open->FindFolderFullPath(out, NewHandle("F:0"));
    EXPECT_EQ(out, "/A/B");
}

TEST(UDMDBCtrl, ThePlaceholdersForFoldersAnswerNothingAndTouchNothing) {
    ProviderRegistration provider;
    const auto profile = boost::make_shared<::testing::StrictMock<MockProfile>>();
    EXPECT_CALL(*profile, Connect(_));
    EXPECT_CALL(*profile, GetSessionId()).WillOnce(Return("s"));
    EXPECT_CALL(*provider, OpenProfile(_)).WillOnce(Return(profile));
    UDMDBCtrl session(SessionParameters());
    int object = 0;
    std::vector<void*> list{&object};
    EXPECT_EQ(session.GetFolders("/", list), 0);
    EXPECT_THAT(list, ElementsAre(&object));
    void* parent = &object;
    EXPECT_FALSE(session.GetParentFolder("/", nullptr, parent));
    EXPECT_EQ(parent, &object);
}

TEST(UDMDBCtrl, ThePlaceholdersForFoldersNeedNoSession) {
    OpenSession open;
    const auto profile = UDMDBCtrlPeer::TakeProfile(*open);
    std::vector<void*> list;
    void* parent = nullptr;
    EXPECT_EQ(open->GetFolders("/", list), 0);
    EXPECT_FALSE(open->GetParentFolder("/", nullptr, parent));
}

TEST(UDMDBCtrl, ClassificationsAreAddedAndRemovedInTheOrderGiven) {
    OpenSession open;
    auto content = NewHandle("A:1");
    auto classification = NewHandle("K:0");
    EXPECT_CALL(*open.profile, AddClassification(IsHandle("A:1"), IsHandle("K:0")));
    EXPECT_CALL(*open.profile, RemoveClassification(IsHandle("A:1"), IsHandle("K:0")));
    open->AddClassification(content, classification);
    open->RemoveClassification(content, classification);
}

TEST(UDMDBCtrl, SetIsMasterHandsTheFlagOn) {
    OpenSession open;
    InSequence order;
    EXPECT_CALL(*open.profile, SetMaster(IsHandle("K:0"), true));
    EXPECT_CALL(*open.profile, SetMaster(IsHandle("K:0"), false));
    open->SetIsMaster(NewHandle("K:0"), true);
    open->SetIsMaster(NewHandle("K:0"), false);
}

UDMItemHandle Classification(const kxString& uid, std::optional<bool> isMaster) {
    const auto state = boost::make_shared<FakeItemState>(uid, "UDMClassification");
    state->isMaster = isMaster;
    return HandleOf(state);
}

TEST(UDMDBCtrl, RootAndOtherClassificationsTogetherGiveEachExactlyOnce) {
    OpenSession open;
    ON_CALL(*open.profile, GetClassifications)
        .WillByDefault([](Handles& list, const kxString& name) {
            EXPECT_TRUE(list.empty());
            EXPECT_EQ(name, "metal");
            list.push_back(Classification("K1:0", true));
            list.push_back(Classification("K2:0", false));
            list.push_back(Classification("K3:0", false));
            list.push_back(Classification("K4:0", true));
        });
    Handles masters{NewHandle("earlier")};
    Handles others{NewHandle("before")};
    open->GetRootClassifications(masters, "metal");
    open->GetOtherClassifications(others, "metal");
    EXPECT_THAT(UidsOf(masters), ElementsAre("earlier", "K1:0", "K4:0"));
    EXPECT_THAT(UidsOf(others), ElementsAre("before", "K2:0", "K3:0"));
}

TEST(UDMDBCtrl, AHandleThatIsNoClassificationEndsTheListing) {
    OpenSession open;
    ON_CALL(*open.profile, GetClassifications).WillByDefault([](Handles& list, const kxString&) {
        list.push_back(Classification("K1:0", true));
        list.push_back(Classification("A:1", std::nullopt));
        list.push_back(Classification("K2:0", true));
    });
    Handles out;
    EXPECT_EQ(FailureOf([&] { open->GetRootClassifications(out, ""); }),
              "void __cdecl kxct::UDMDBCtrl::GetRootClassifications(class kxStlVector<class "
              "kxudm::UDMItemHandle,class std::allocator<class kxudm::UDMItemHandle> > &,const "
              "class kxString &) UnSupported reader ClassificationReader for given handle "
              "UDMClassification A:1");
    EXPECT_THAT(UidsOf(out), ElementsAre("K1:0"));
    EXPECT_THAT(FailureOf([&] { open->GetOtherClassifications(out, ""); }),
                StartsWith("void __cdecl kxct::UDMDBCtrl::GetOtherClassifications("));
}

}  // namespace
}  // namespace kxct
