#include <gtest/gtest.h>
#include <kxctinterfaces/Item.h>

#include "tests/db/OpenSession.h"

namespace kxct {
namespace {

using kxudm::UDMHistoryNode;
using namespace mock;
using ::testing::_;
using ::testing::ElementsAre;
using ::testing::InSequence;
using ::testing::Return;
using ::testing::StartsWith;
using ::testing::Throw;

using Node = boost::shared_ptr<UDMHistoryNode>;

Node NewNode(const kxString& uid,
             int version,
             const UDMHistoryNode::List& versions = {},
             const UDMHistoryNode::List& branches = {}) {
    return boost::make_shared<UDMHistoryNode>(uid, version, versions, branches);
}

std::runtime_error Boom() {
    return std::runtime_error("boom");
}

TEST(UDMDBCtrl, CheckoutAndUndoCheckoutActOnTheGivenHandle) {
    OpenSession open;
    InSequence order;
    EXPECT_CALL(*open.profile, Checkout(IsHandle("A:1"), kxString("why")));
    EXPECT_CALL(*open.profile, UndoCheckout(IsHandle("A:2")));
    open->Checkout(NewHandle("A:1"), "why");
    open->UndoCheckout(NewHandle("A:2"));
}

TEST(UDMDBCtrl, SaveActsOnTheWorkingRevision) {
    OpenSession open;
    InSequence order;
    EXPECT_CALL(*open.profile, GetWorkingHandle(IsHandle("A:1")))
        .WillOnce(Return(NewHandle("A:2")));
    EXPECT_CALL(*open.profile, SaveEntity(IsHandle("A:2"), kxString("note"), true));
    auto handle = NewHandle("A:1");
    open->Save(handle, "note");
    EXPECT_EQ(handle.Uid(), "A:1");
}

TEST(UDMDBCtrl, PersistActsOnTheWorkingRevisionWithFilesAndLinks) {
    OpenSession open;
    InSequence order;
    for (const bool flag : {true, false}) {
        EXPECT_CALL(*open.profile, GetWorkingHandle(IsHandle("A:1")))
            .WillOnce(Return(NewHandle("A:2")));
        EXPECT_CALL(*open.profile,
                    PersistEntity(IsHandle("A:2"), kxString("note"), flag, true, true));
    }
    auto handle = NewHandle("A:1");
    open->Persist(handle, "note", true);
    open->Persist(handle, "note", false);
    EXPECT_EQ(handle.Uid(), "A:1");
}

TEST(UDMDBCtrl, WithoutAWorkingRevisionNothingIsSavedOrPublished) {
    OpenSession open;
    EXPECT_CALL(*open.profile, GetWorkingHandle(_)).Times(2).WillRepeatedly(Throw(Boom()));
    EXPECT_CALL(*open.profile, SaveEntity(_, _, _)).Times(0);
    EXPECT_CALL(*open.profile, PersistEntity(_, _, _, _, _)).Times(0);
    auto handle = NewHandle("A:1");
    EXPECT_EQ(FailureOf([&] { open->Save(handle, "note"); }),
              "void __cdecl kxct::UDMDBCtrl::Save(class kxudm::UDMItemHandle &,const class "
              "kxString &) boom");
    EXPECT_EQ(FailureOf([&] { open->Persist(handle, "note", true); }),
              "void __cdecl kxct::UDMDBCtrl::Persist(class kxudm::UDMItemHandle &,const class "
              "kxString &,const bool) boom");
}

TEST(UDMDBCtrl, SynchronisationGoesToTheRuntime) {
    OpenSession open;
    auto handle = NewHandle("A:1");
    EXPECT_CALL(*open.profile, Synchronize(IsHandle("A:1")));
    EXPECT_CALL(*open.profile, GetSyncStatus(IsHandle("A:1")))
        .WillOnce(Return(true))
        .WillOnce(Return(false));
    open->Synchronize(handle);
    EXPECT_TRUE(open->GetSyncStatus(handle));
    EXPECT_FALSE(open->GetSyncStatus(handle));
}

TEST(UDMDBCtrl, GetHistoryGivesTheRootNode) {
    OpenSession open;
    const auto root = NewNode("A", 2);
    EXPECT_CALL(*open.profile, GetHistory(IsHandle("A:2"))).WillOnce(Return(root));
    const UDMDBCtrl& session = *open;
    EXPECT_EQ(session.GetHistory(NewHandle("A:2")), root);
}

TEST(UDMDBCtrl, BranchEntityReturnsAtOnceAndAsksNothing) {
    ProviderRegistration provider;
    const auto profile = boost::make_shared<::testing::StrictMock<MockProfile>>();
    EXPECT_CALL(*profile, Connect(_));
    EXPECT_CALL(*profile, GetSessionId()).WillOnce(Return("s"));
    EXPECT_CALL(*provider, OpenProfile(_)).WillOnce(Return(profile));
    UDMDBCtrl session(SessionParameters());
    auto source = NewHandle("A:1");
    auto target = NewHandle("B:1");
    session.BranchEntity(source, target, "name", "comment", {NewHandle("C:1")});
    EXPECT_EQ(source.Uid(), "A:1");
    EXPECT_EQ(target.Uid(), "B:1");
}

TEST(UDMDBCtrl, BranchEntityWithoutASessionRaisesTheNullGuard) {
    OpenSession open;
    const auto profile = UDMDBCtrlPeer::TakeProfile(*open);
    auto source = NewHandle("A:1");
    auto target = NewHandle("B:1");
    EXPECT_EQ(FailureOf([&] { open->BranchEntity(source, target, "name", "comment", {}); }),
              "void __cdecl kxct::UDMDBCtrl::BranchEntity(class kxudm::UDMItemHandle &,class "
              "kxudm::UDMItemHandle &,const class kxString &,const class kxString &,const class "
              "kxStlVector<class kxudm::UDMItemHandle,class std::allocator<class "
              "kxudm::UDMItemHandle> > &):: db/_private/UDMDBCtrl.cpp. The pointer "
              "_udmProfilePtr is null!");
}

TEST(UDMDBCtrl, TheLineageOfVersionsHoldsOnlyOlderOnes) {
    OpenSession open;
    const auto root = NewNode("A", 2, {NewNode("A", 1), NewNode("A", 2), NewNode("A", 3)});
    EXPECT_CALL(*open.profile, GetHistory(IsHandle("A:2"))).WillOnce(Return(root));
    EXPECT_CALL(*open.profile, GetEntity(_)).Times(0);
    EXPECT_CALL(*open.profile, GetEntity(kxString("A:1"))).WillOnce(Return(NewHandle("A:1")));
    Handles out;
    EXPECT_EQ(open->GetLineage(NewHandle("A:2"), HISTORY_VERSIONS, out), 1U);
    EXPECT_THAT(UidsOf(out), ElementsAre("A:1"));
}

TEST(UDMDBCtrl, TheLineageOfTheOldestVersionAddsNothing) {
    OpenSession open;
    const auto root = NewNode("A", 1, {NewNode("A", 1), NewNode("A", 2)});
    EXPECT_CALL(*open.profile, GetHistory(_)).WillOnce(Return(root));
    EXPECT_CALL(*open.profile, GetEntity(_)).Times(0);
    Handles out{NewHandle("x"), NewHandle("y")};
    EXPECT_EQ(open->GetLineage(NewHandle("A:1"), HISTORY_VERSIONS, out), 2U);
}

TEST(UDMDBCtrl, TheLineageKeepsTheOrderOfTheHistoryAndSkipsWhatIsMissing) {
    OpenSession open;
    const auto root =
        NewNode("A", 9, {NewNode("A", 3), NewNode("A", 2), NewNode("A", 7), NewNode("A", -1)});
    EXPECT_CALL(*open.profile, GetHistory(_)).WillOnce(Return(root));
    InSequence order;
    EXPECT_CALL(*open.profile, GetEntity(kxString("A:3"))).WillOnce(Return(NewHandle("A:3")));
    EXPECT_CALL(*open.profile, GetEntity(kxString("A:2"))).WillOnce(Throw(Boom()));
    EXPECT_CALL(*open.profile, GetEntity(kxString("A:7"))).WillOnce(Return(NewHandle("A:7")));
    EXPECT_CALL(*open.profile, GetEntity(kxString("A:-1"))).WillOnce(Return(NewHandle("A:-1")));
    Handles out{NewHandle("earlier")};
    EXPECT_EQ(open->GetLineage(NewHandle("A:9"), HISTORY_VERSIONS, out), 4U);
    EXPECT_THAT(UidsOf(out), ElementsAre("earlier", "A:3", "A:7", "A:-1"));
}

TEST(UDMDBCtrl, TheLineageOfBranchesLooksUpTheirBaseIdentifiers) {
    OpenSession open;
    const auto root =
        NewNode("A", 2, {NewNode("A", 1)}, {NewNode("B", 5), NewNode("C", 1), NewNode("D", 2)});
    EXPECT_CALL(*open.profile, GetHistory(IsHandle("A:2"))).WillOnce(Return(root));
    InSequence order;
    EXPECT_CALL(*open.profile, GetEntity(kxString("B"))).WillOnce(Return(NewHandle("B:6")));
    EXPECT_CALL(*open.profile, GetEntity(kxString("C"))).WillOnce(Throw(Boom()));
    EXPECT_CALL(*open.profile, GetEntity(kxString("D"))).WillOnce(Return(NewHandle("D:2")));
    Handles out;
    EXPECT_EQ(open->GetLineage(NewHandle("A:2"), HISTORY_BRANCHES, out), 2U);
    EXPECT_THAT(UidsOf(out), ElementsAre("B:6", "D:2"));
}

TEST(UDMDBCtrl, AnUnknownCategoryOfLineageFetchesTheHistoryAndAddsNothing) {
    OpenSession open;
    EXPECT_CALL(*open.profile, GetHistory(_))
        .WillOnce(Return(NewNode("A", 2, {NewNode("A", 1)}, {NewNode("B", 1)})));
    EXPECT_CALL(*open.profile, GetEntity(_)).Times(0);
    Handles out{NewHandle("x")};
    EXPECT_EQ(open->GetLineage(NewHandle("A:2"), static_cast<HistoryCategory>(2), out), 1U);
}

TEST(UDMDBCtrl, ALineageWithoutAHistoryFails) {
    OpenSession open;
    EXPECT_CALL(*open.profile, GetHistory(_)).WillOnce(Throw(Boom())).WillOnce(Return(nullptr));
    Handles out;
    const auto text = FailureOf([&] { open->GetLineage(NewHandle("A:2"), HISTORY_VERSIONS, out); });
    EXPECT_THAT(text, StartsWith("unsigned __int64 __cdecl kxct::UDMDBCtrl::GetLineage("));
    EXPECT_EQ(text,
              "unsigned __int64 __cdecl kxct::UDMDBCtrl::GetLineage(const class "
              "kxudm::UDMItemHandle &,enum kxct::HistoryCategory,class kxStlVector<class "
              "kxudm::UDMItemHandle,class std::allocator<class kxudm::UDMItemHandle> > &) boom");
    EXPECT_THAT(FailureOf([&] { open->GetLineage(NewHandle("A:2"), HISTORY_BRANCHES, out); }),
                StartsWith("unsigned __int64 __cdecl kxct::UDMDBCtrl::GetLineage("));
}

TEST(UDMDBCtrl, AVersionThatCannotBeComparedFailsTheLineageAndABranchDoesNot) {
    OpenSession open;
    ON_CALL(*open.profile, GetHistory).WillByDefault(Return(NewNode("A", 2, {Node()}, {Node()})));
    Handles out;
    EXPECT_THAT(FailureOf([&] { open->GetLineage(NewHandle("A:2"), HISTORY_VERSIONS, out); }),
                StartsWith("unsigned __int64 __cdecl kxct::UDMDBCtrl::GetLineage("));
    EXPECT_EQ(open->GetLineage(NewHandle("A:2"), HISTORY_BRANCHES, out), 0U);
}

}  // namespace
}  // namespace kxct
