// History items, their categories and their manager.
#include <kxct/HistoryCategoryItem.h>
#include <kxct/HistoryItem.h>
#include <kxct/HistoryItemManager.h>
#include <kxudm/UDMHistoryNode.h>

#include "tests/items/Fixture.h"

namespace kxct::test {
namespace {

using kxudm::UDMHistoryNode;
using mock::IsHandle;
using mock::NewHandle;
using ::testing::_;
using ::testing::Return;
using ::testing::Throw;

boost::shared_ptr<UDMHistoryNode> Node(const kxString& base,
                                       int version,
                                       UDMHistoryNode::List versions = {},
                                       UDMHistoryNode::List branches = {}) {
    return boost::make_shared<UDMHistoryNode>(base, version, versions, branches);
}

// Content A stands at revision 2 of 3, with two branches.
class History : public SessionTest {
  protected:
    History() {
        state->displayName = "Bracket";
        definitions->Add("UDMPart").type = "Part type";
        root =
            Node("A", 2, {Node("A", 1), Node("A", 2), Node("A", 3)}, {Node("X", 0), Node("Y", 4)});
        ON_CALL(*profile, GetHistory).WillByDefault([this](auto&&) { return root; });
        ON_CALL(*profile, GetEntity).WillByDefault([](const kxString& uid) {
            return NewHandle(uid.find(':') == std::string::npos ? kxString(uid + ":9") : uid);
        });
        item = static_cast<HistoryItem*>(history.CreateItem(mock::HandleOf(state)));
    }

    Item* Category(HistoryCategory category) { return history.CreateItem(item, category); }

    boost::shared_ptr<mock::FakeItemState> state =
        boost::make_shared<mock::FakeItemState>("A:2", "UDMPart");
    boost::shared_ptr<UDMHistoryNode> root;
    HistoryItemManager history{session.get(), &signals};
    HistoryItem* item = nullptr;
    Items children;
};

TEST_F(History, AnItemStandsForARevision) {
    Item* base = item;
    EXPECT_EQ(base->IsA(), "HistoryItem");
    EXPECT_EQ(base->GetUID(), "A:2");
    EXPECT_EQ(base->GetType(), "UDMPart");
}

TEST_F(History, AnItemAnswersTheAttributesOfItsRevision) {
    state->isEditable = true;
    state->createdBy = "anna";
    state->creationTime = "t1";
    state->modifiedTime = "t2";
    state->modifiedBy = "ben";
    state->attributes["mass"] = 12;
    EXPECT_EQ(item->GetAttributeValue("icon"), kxVariant(6));
    EXPECT_EQ(item->GetAttributeValue("label"), kxVariant("Bracket"));
    EXPECT_EQ(item->GetAttributeValue("id"), kxVariant("A:2"));
    EXPECT_EQ(item->GetAttributeValue("smd_contentrevision"), kxVariant(2));
    EXPECT_EQ(item->GetAttributeValue("smd_createduser"), kxVariant("anna"));
    EXPECT_EQ(item->GetAttributeValue("smd_creatime"), kxVariant("t1"));
    EXPECT_EQ(item->GetAttributeValue("smd_ctime"), kxVariant("t2"));
    EXPECT_EQ(item->GetAttributeValue("smd_user"), kxVariant("ben"));
    EXPECT_EQ(item->GetAttributeValue("contentdefinition"), kxVariant("Part type"));
    EXPECT_EQ(item->GetAttributeValue("mass"), kxVariant(12));
    EXPECT_THROW(item->GetAttributeValue("nosuch"), std::exception);
}

TEST_F(History, ANewHandleLeavesTheKeyAlone) {
    item->SetItemHandle(NewHandle("A:3", "UDMPart", "Third"));
    EXPECT_EQ(item->GetUID(), "A:2");
    EXPECT_EQ(item->GetAttributeValue("id"), kxVariant("A:3"));
}

TEST_F(History, AnItemWithBranchesHasTheOneChildOfThatName) {
    children.push_back(nullptr);
    EXPECT_EQ(item->GetChildren(children), 1u);
    EXPECT_EQ(children.front()->IsA(), "HistoryCategoryItem");
    EXPECT_EQ(children.front()->GetAttributeValue("label"), kxVariant("Branches"));
}

TEST_F(History, AnItemWithoutBranchesHasNoChildren) {
    root = Node("A", 2, {Node("A", 1)}, {});
    children.push_back(nullptr);
    EXPECT_EQ(item->GetChildren(children), 0u);
    EXPECT_TRUE(children.empty());
}

TEST_F(History, AnItemCountsNoChildrenEvenWithBranches) {
    EXPECT_CALL(*profile, GetHistory(IsHandle("A:2"))).WillRepeatedly(Return(root));
    EXPECT_EQ(item->GetNumChildren(), 0u);
    EXPECT_FALSE(item->HasChildren());
}

TEST_F(History, AnItemAnswersZeroOnFailureAndWithoutSession) {
    EXPECT_CALL(*profile, GetHistory).WillRepeatedly(Throw(std::runtime_error("lost")));
    EXPECT_EQ(item->GetChildren(children), 0u);
    EXPECT_EQ(item->GetNumChildren(), 0u);
    HistoryItem alone(&history, nullptr, mock::HandleOf(state));
    HistoryItem unmanaged(nullptr, session.get(), mock::HandleOf(state));
    children.push_back(nullptr);
    EXPECT_EQ(alone.GetChildren(children), 0u);
    EXPECT_EQ(alone.GetNumChildren(), 0u);
    EXPECT_EQ(unmanaged.GetChildren(children), 0u);
    EXPECT_EQ(children.size(), 1u);
}

TEST_F(History, ACategoryHasAKeyWithARunningNumber) {
    const kxString first = Category(HISTORY_BRANCHES)->GetUID();
    const kxString second = Category(HISTORY_VERSIONS)->GetUID();
    const kxString third = Category(HISTORY_VERSIONS)->GetUID();
    const int number = std::stoi(first.substr(first.rfind('_') + 1));
    EXPECT_EQ(first, "HistoryCategory_0_" + std::to_string(number));
    EXPECT_EQ(second, "HistoryCategory_1_" + std::to_string(number + 1));
    EXPECT_EQ(third, "HistoryCategory_1_" + std::to_string(number + 2));
}

// The counter runs through the process: a new process, in which this is the only test, shows where
// it begins.
TEST_F(History, TheCategoriesOfAProcessAreNumberedFromZero) {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            std::cerr << Category(HISTORY_BRANCHES)->GetUID() << ' '
                      << Category(HISTORY_VERSIONS)->GetUID();
            std::_Exit(0);
        },
        ::testing::ExitedWithCode(0),
        "^HistoryCategory_0_0 HistoryCategory_1_1$");
}

TEST_F(History, TheCacheGrowsWithEachLookAtTheBranches) {
    Items cached;
    item->GetChildren(children);
    const size_t once = history.GetAllItemsInCache(cached);
    item->GetChildren(children);
    EXPECT_EQ(history.GetAllItemsInCache(cached), once + 1);
}

TEST_F(History, ACategoryAnswersIconLabelAndId) {
    Item* versions = Category(HISTORY_VERSIONS);
    EXPECT_EQ(versions->GetAttributeValue("icon"), kxVariant(8));
    EXPECT_EQ(versions->GetAttributeValue("label"), kxVariant("Versions"));
    EXPECT_EQ(versions->GetAttributeValue("id"), kxVariant(versions->GetUID()));
    EXPECT_TRUE(versions->GetAttributeValue("name").IsEmpty());
    EXPECT_EQ(versions->GetDisplayName(), "");
}

TEST_F(History, TheBranchesAreLookedUpByTheirBaseUids) {
    EXPECT_CALL(*profile, GetEntity(kxString("X"))).WillOnce(Return(NewHandle("X:0")));
    EXPECT_CALL(*profile, GetEntity(kxString("Y"))).WillOnce(Return(NewHandle("Y:4")));
    Item* branches = Category(HISTORY_BRANCHES);
    children.push_back(nullptr);
    EXPECT_EQ(branches->GetChildren(children), 2u);
    EXPECT_EQ(Uids(children), "X:0 Y:4");
    EXPECT_EQ(children.front()->IsA(), "HistoryItem");
    EXPECT_EQ(branches->GetNumChildren(), 2u);
}

TEST_F(History, TheVersionsAreThoseBelowTheOwners) {
    EXPECT_CALL(*profile, GetEntity(kxString("A:1"))).WillOnce(Return(NewHandle("A:1")));
    Item* versions = Category(HISTORY_VERSIONS);
    EXPECT_EQ(versions->GetChildren(children), 1u);
    EXPECT_EQ(Uids(children), "A:1");
    EXPECT_EQ(versions->GetNumChildren(), 1u);
}

TEST_F(History, TheFirstRevisionHasNoVersionsBelowIt) {
    root = Node("A", 1, {Node("A", 1), Node("A", 2)}, {});
    Item* versions = Category(HISTORY_VERSIONS);
    EXPECT_EQ(versions->GetChildren(children), 0u);
    EXPECT_EQ(versions->GetNumChildren(), 0u);
}

TEST_F(History, AnyOtherCategoryHasNoNameAndNoChildren) {
    Item* odd = Category(static_cast<HistoryCategory>(2));
    EXPECT_EQ(odd->GetAttributeValue("label"), kxVariant(""));
    EXPECT_EQ(odd->GetChildren(children), 0u);
    EXPECT_EQ(odd->GetNumChildren(), 0u);
}

TEST_F(History, ACategoryAnswersZeroOnFailureAndWithoutSessionOrOwner) {
    Item* versions = Category(HISTORY_VERSIONS);
    EXPECT_CALL(*profile, GetHistory).WillRepeatedly(Throw(std::runtime_error("lost")));
    EXPECT_EQ(versions->GetChildren(children), 0u);
    EXPECT_EQ(versions->GetNumChildren(), 0u);
    HistoryCategoryItem alone(&history, nullptr, item, HISTORY_BRANCHES);
    HistoryCategoryItem orphan(&history, session.get(), nullptr, HISTORY_BRANCHES);
    for (HistoryCategoryItem* lost : {&alone, &orphan}) {
        EXPECT_EQ(lost->GetChildren(children), 0u);
        EXPECT_EQ(lost->GetNumChildren(), 0u);
    }
}

TEST_F(History, ABranchThatCannotBeReadMakesTheWholeListFail) {
    EXPECT_CALL(*profile, GetEntity(kxString("X"))).WillOnce(Throw(std::runtime_error("gone")));
    EXPECT_EQ(Category(HISTORY_BRANCHES)->GetChildren(children), 0u);
}

TEST_F(History, TheManagerGivesOneItemPerHandleAndANewCategoryEachTime) {
    EXPECT_EQ(history.CreateItem(NewHandle("A:2")), item);
    EXPECT_NE(Category(HISTORY_BRANCHES), Category(HISTORY_BRANCHES));
    EXPECT_EQ(history.CreateItem(kxudm::UDMItemHandle()), nullptr);
    EXPECT_EQ(history.CreateItem(kxudm::UDMUID("A")), nullptr);
    EXPECT_EQ(history.CreateItem(static_cast<Item*>(item), kxString("g")), nullptr);
}

TEST_F(History, TheManagerListsEachItemFollowedByAllItsVersions) {
    Handles handles({NewHandle("A:2")});
    children.push_back(nullptr);
    history.ToItems(&handles, children);
    EXPECT_EQ(Uids(children), "A:2 A:1 A:2 A:3");
    EXPECT_EQ(children[0], item);
    EXPECT_EQ(children[2], item);
}

TEST_F(History, ANegativeVersionIsWrittenWithItsSign) {
    root = Node("A", 0, {Node("A", -1)}, {});
    EXPECT_CALL(*profile, GetEntity(kxString("A:-1"))).WillOnce(Return(NewHandle("A:-1")));
    Handles handles({NewHandle("A:0")});
    history.ToItems(&handles, children);
    EXPECT_EQ(Uids(children), "A:0 A:-1");
}

TEST_F(History, TheManagerLetsAFailingHistoryPass) {
    EXPECT_CALL(*profile, GetHistory).WillOnce(Throw(std::runtime_error("lost")));
    Handles handles({NewHandle("A:2")});
    EXPECT_THROW(history.ToItems(&handles, children), std::exception);
}

}  // namespace
}  // namespace kxct::test
