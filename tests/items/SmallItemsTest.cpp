// Groups, contents without revision, views.
#include <kxct/ContentGroupItem.h>
#include <kxct/NoRevItem.h>
#include <kxct/ViewItem.h>
#include <kxudm/UDMHistoryNode.h>

#include "tests/items/Fixture.h"

namespace kxct::test {
namespace {

using kxudm::UDMHistoryNode;
using mock::IsHandle;
using mock::NewHandle;
using ::testing::_;
using ::testing::ElementsAre;
using ::testing::InSequence;
using ::testing::Return;
using ::testing::Throw;

class ContentGroupItemTest : public ContentTest {
  protected:
    ContentGroupItem Group() { return {manager.get(), session.get(), content, "Files"}; }
};

TEST_F(ContentGroupItemTest, IsNamedByItsGroupAndKeyedByItsOwner) {
    ContentGroupItem group = Group();
    EXPECT_EQ(group.IsA(), "ContentGroupItem");
    EXPECT_EQ(group.GetName(), "Files");
    EXPECT_EQ(group.GetDisplayName(), "Files");
    EXPECT_EQ(group.GetUID(), "Files:A:1");
    EXPECT_EQ(group.GetType(), "");
    EXPECT_EQ(group.GetRenderState(), RENDER_NONE);
    content->SetItemHandle(NewHandle("A:2", "UDMPart"));
    EXPECT_EQ(group.GetAttributeValue("id"), kxVariant("Files:A:1"));
}

TEST_F(ContentGroupItemTest, ShowsItsOwnersAttributesButForFour) {
    const ContentGroupItem group = Group();
    state->attributes["mass"] = 12;
    EXPECT_EQ(group.GetAttributeValue("icon"), kxVariant(8));
    EXPECT_EQ(group.GetAttributeValue("label"), kxVariant("Files"));
    EXPECT_EQ(group.GetAttributeValue("id"), kxVariant("Files:A:1"));
    EXPECT_EQ(group.GetAttributeValue("smd_contentrevision"), kxVariant(""));
    EXPECT_EQ(group.GetAttributeValue("mass"), kxVariant(12));
    EXPECT_THROW(group.GetAttributeValue("nosuch"), std::exception);
}

TEST_F(ContentGroupItemTest, ListsTheChildrenOfItsGroup) {
    ContentGroupItem group = Group();
    EXPECT_CALL(*profile, GetChildren(_, IsHandle("A:1"), kxString("Files"), kxString()))
        .WillOnce(Give({NewHandle("B:1")}))
        .WillOnce(Throw(std::runtime_error("no")));
    Items children(1, nullptr);
    EXPECT_EQ(group.GetChildren(children), 2u);
    EXPECT_EQ(Uids(children), "null B:1");
    EXPECT_EQ(group.GetChildren(children), 0u);
    EXPECT_EQ(children.size(), 2u);
}

TEST_F(ContentGroupItemTest, CountsTheChildrenOfItsGroup) {
    ContentGroupItem group = Group();
    EXPECT_CALL(*profile, GetChildCount(IsHandle("A:1"), kxString("Files"), kxString()))
        .WillOnce(Return(3))
        .WillOnce(Throw(std::runtime_error("no")));
    EXPECT_EQ(group.GetNumChildren(), 3u);
    EXPECT_EQ(group.GetNumChildren(), 0u);
}

TEST_F(ContentGroupItemTest, HasNothingWithoutASession) {
    ContentGroupItem group(manager.get(), nullptr, content, "Files");
    Items children;
    kxudm::UDMItemHandle handle;
    EXPECT_EQ(group.GetChildren(children), 0u);
    EXPECT_EQ(group.GetNumChildren(), 0u);
    EXPECT_FALSE(group.AddItem(handle, "Model", ""));
}

TEST_F(ContentGroupItemTest, ListsNothingWithoutAManagerAndStillCounts) {
    ContentGroupItem group(nullptr, session.get(), content, "Files");
    EXPECT_CALL(*profile, GetChildren).Times(0);
    EXPECT_CALL(*profile, GetChildCount).WillOnce(Return(3));
    Items children;
    EXPECT_EQ(group.GetChildren(children), 0u);
    EXPECT_EQ(group.GetNumChildren(), 3u);
}

TEST_F(ContentGroupItemTest, CopiesAndMovesKeepNameOwnerAndKey) {
    state->attributes["mass"] = 12;
    ContentGroupItem group = Group();
    ContentGroupItem copy(group);
    ContentGroupItem moved(std::move(group));
    ContentGroupItem assigned(manager.get(), session.get(), content, "Other");
    assigned = copy;
    for (const ContentGroupItem* each : {&copy, &moved, &assigned}) {
        EXPECT_EQ(each->GetName(), "Files");
        EXPECT_EQ(each->GetUID(), "Files:A:1");
        EXPECT_EQ(each->GetAttributeValue("mass"), kxVariant(12));
    }
}

TEST_F(ContentGroupItemTest, AddItemTakesTheDefinitionFirstAndIsItsOwnGroup) {
    definitions->Add("Model");
    ContentGroupItem group = Group();
    const InSequence order;
    EXPECT_CALL(*profile, GetChildren(_, IsHandle("A:1"), kxString("Files"), kxString()))
        .WillOnce(Give({NewHandle("S:1", "Model", "Model")}));
    EXPECT_CALL(*profile,
                CreateAndAddChild(
                    kxString("Model"), kxString("Model1"), IsHandle("A:1"), kxString("Files")))
        .WillOnce(Return(NewHandle("N:0")));
    EXPECT_CALL(*profile,
                SetAttributeValue(IsHandle("N:0"), kxString("displayname"), kxVariant("Model1")));
    kxudm::UDMItemHandle handle;
    EXPECT_TRUE(group.AddItem(handle, "Model", "not read"));
    EXPECT_EQ(handle.GetUID(), "N:0");
}

TEST_F(ContentGroupItemTest, AddItemOfADefinitionWithoutADisplayNameMakesANewItem) {
    definitions->Add("Model").displayName = "";
    EXPECT_CALL(*profile, CreateAndAddChild(_, kxString("new_item"), _, _))
        .WillOnce(Return(NewHandle("N:0")));
    kxudm::UDMItemHandle handle;
    EXPECT_TRUE(Group().AddItem(handle, "Model", ""));
}

TEST_F(ContentGroupItemTest, AddItemAnswersFalseWhenTheRuntimeFails) {
    definitions->Add("Model");
    EXPECT_CALL(*profile, CreateAndAddChild).WillOnce(Throw(std::runtime_error("no")));
    kxudm::UDMItemHandle handle;
    EXPECT_FALSE(Group().AddItem(handle, "Model", ""));
}

TEST_F(ContentGroupItemTest, AddItemAnswersFalseForAnUnknownDefinition) {
    kxudm::UDMItemHandle handle;
    EXPECT_FALSE(Group().AddItem(handle, "Unknown", ""));
    EXPECT_TRUE(handle.IsEmpty());
}

TEST_F(ContentGroupItemTest, HasWordsForHosts) {
    EXPECT_EQ(ContentGroupItem::LABEL_ADD_REP_PREFIX, "Add");
    EXPECT_EQ(ContentGroupItem::OPERATION_ADD_REP_PREFIX, "GROUP_ADD_REP");
}

class NoRevItemTest : public ContentTest {
  protected:
    NoRevItemTest() {
        state->displayName = "Newest";
        state->attributes["mass"] = 12;
        part->attributes.push_back({.name = "mass", .displayName = "Mass"});
        ON_CALL(*profile, GetEntity(kxString("A"))).WillByDefault(Return(mock::HandleOf(state)));
        ON_CALL(*profile, GetEntity(kxString("A:0"))).WillByDefault(Return(NewHandle("A:0")));
        UDMHistoryNode::List versions;
        for (const int version : {0, 1, 2}) {
            versions.push_back(boost::make_shared<UDMHistoryNode>(
                "A", version, UDMHistoryNode::List(), UDMHistoryNode::List()));
        }
        ON_CALL(*profile, GetHistory(IsHandle("A:1")))
            .WillByDefault(Return(
                boost::make_shared<UDMHistoryNode>("A", 1, versions, UDMHistoryNode::List())));
    }

    NoRevItem item{manager.get(), session.get(), kxudm::UDMUID("A")};
};

TEST_F(NoRevItemTest, AnswersAsItsLatestRevisionDoes) {
    EXPECT_EQ(item.IsA(), "NoRevItem");
    EXPECT_EQ(item.GetDisplayName(), "Newest");
    EXPECT_EQ(item.GetAttributeValue("mass"), kxVariant(12));
    EXPECT_EQ(item.GetAttributeDescription("mass", "displayname"), kxVariant("Mass"));
    EXPECT_THAT(item.GetAttributeNameList(false, false), ElementsAre("mass", "contentdefinition"));
    part->type = "UDMPart";
    EXPECT_THAT(item.GetAttributeNameDiplaynameMap(false, false), ElementsAre("mass", "Mass"));
}

TEST_F(NoRevItemTest, TheFirstQuestionTurnsItsKeyIntoThatOfTheLatestRevision) {
    EXPECT_EQ(item.GetUID(), "A");
    item.GetDisplayName();
    EXPECT_EQ(item.GetUID(), "A:1");
    EXPECT_CALL(*profile, GetEntity(kxString("A"))).WillOnce(Return(NewHandle("A:4")));
    item.GetDisplayName();
    EXPECT_EQ(item.GetUID(), "A:4");
}

TEST_F(NoRevItemTest, ItsKeyHasNoRevisionWhateverUidItIsMadeFor) {
    EXPECT_EQ(NoRevItem(manager.get(), session.get(), kxudm::UDMUID("A:3")).GetUID(), "A");
}

TEST_F(NoRevItemTest, TheManagersKeyStaysTheOneWithoutRevision) {
    Item* cached = manager->CreateItem(kxudm::UDMUID("A"));
    cached->GetDisplayName();
    EXPECT_EQ(cached->GetUID(), "A:1");
    EXPECT_EQ(manager->CreateItem(kxudm::UDMUID("A")), cached);
    // The revision itself is another item.
    EXPECT_EQ(manager->CreateItem(mock::HandleOf(state)), content);
}

TEST_F(NoRevItemTest, ItsChildrenAreTheOlderRevisionsAndItAnswersZero) {
    Items children(3, nullptr);
    EXPECT_EQ(item.GetChildren(children), 0u);
    EXPECT_EQ(Uids(children), "A:0");
    EXPECT_EQ(item.GetNumChildren(), 1u);
    EXPECT_TRUE(item.HasChildren());
}

TEST_F(NoRevItemTest, AnswersEmptilyWhereNothingIsFound) {
    EXPECT_CALL(*profile, GetEntity).WillRepeatedly(Throw(std::runtime_error("gone")));
    Items children(1, nullptr);
    EXPECT_EQ(item.GetDisplayName(), "");
    EXPECT_TRUE(item.GetAttributeValue("mass").IsEmpty());
    EXPECT_TRUE(item.GetAttributeDescription("mass", "displayname").IsEmpty());
    EXPECT_TRUE(item.GetAttributeNameList(false, false).empty());
    EXPECT_TRUE(item.GetAttributeNameDiplaynameMap(false, false).empty());
    EXPECT_EQ(item.GetChildren(children), 0u);
    EXPECT_EQ(item.GetNumChildren(), 0u);
    EXPECT_EQ(children.size(), 1u);
    EXPECT_EQ(item.GetUID(), "A");
}

TEST_F(NoRevItemTest, AnswersEmptilyWithoutASession) {
    NoRevItem alone(manager.get(), nullptr, kxudm::UDMUID("A"));
    Items children;
    EXPECT_EQ(alone.GetDisplayName(), "");
    EXPECT_EQ(alone.GetChildren(children), 0u);
    EXPECT_EQ(alone.GetNumChildren(), 0u);
}

TEST_F(NoRevItemTest, CatchesNothing) {
    EXPECT_CALL(*profile, GetHistory).WillRepeatedly(Throw(std::runtime_error("lost")));
    Items children;
    EXPECT_THROW(item.GetChildren(children), std::exception);
    EXPECT_THROW(item.GetNumChildren(), std::exception);
}

class ViewItemTest : public ContentTest {
  protected:
    ViewItemTest() {
        state->attributes["mass"] = 12;
        part->attributes.push_back({.name = "mass", .displayName = "Mass"});
    }

    Items none;
};

TEST_F(ViewItemTest, WithoutItemsKnowsItsNameAndKindOnly) {
    ViewItem view(none, Names({"mass"}), "12");
    EXPECT_EQ(view.IsA(), "ViewItem");
    EXPECT_EQ(view.GetDisplayName(), "12");
    EXPECT_EQ(view.GetAttributeValue("label"), kxVariant("12"));
    EXPECT_EQ(view.GetAttributeValue(ATTRIBUTE_NAME::CONTENTDEFINITION), kxVariant("ViewItem"));
    EXPECT_TRUE(view.GetAttributeValue("mass").IsEmpty());
    EXPECT_TRUE(view.GetAttributeValue("icon").IsEmpty());
    EXPECT_TRUE(view.GetAttributeDescription("mass", "displayname").IsEmpty());
    EXPECT_THAT(view.GetAttributeNameList(true, true), ElementsAre("mass"));
    EXPECT_THAT(view.GetAttributeNameDiplaynameMap(true, true), ElementsAre("mass", ""));
    EXPECT_EQ(view.GetNumChildren(), 0u);
}

TEST_F(ViewItemTest, ItsFirstItemAnswersForTheAttributesThatItShows) {
    Items items({content});
    const ViewItem view(items, Names({"mass"}), "12");
    state->attributes["other"] = 1;
    EXPECT_EQ(view.GetAttributeValue("mass"), kxVariant(12));
    EXPECT_TRUE(view.GetAttributeValue("other").IsEmpty());
    EXPECT_EQ(view.GetAttributeDescription("mass", "displayname"), kxVariant("Mass"));
    EXPECT_TRUE(view.GetAttributeDescription("other", "displayname").IsEmpty());
    EXPECT_THAT(view.GetAttributeNameDiplaynameMap(false, false), ElementsAre("mass", "Mass"));
}

TEST_F(ViewItemTest, ANullFirstItemAnswersNothing) {
    Items items({nullptr, content});
    const ViewItem view(items, Names({"mass"}), "12");
    EXPECT_TRUE(view.GetAttributeValue("mass").IsEmpty());
    EXPECT_TRUE(view.GetAttributeDescription("mass", "displayname").IsEmpty());
}

TEST_F(ViewItemTest, TakesMoreItemsAndReplacesTheCallersList) {
    ViewItem view(none, Names(), "x");
    EXPECT_TRUE(view.Add(content, "not read"));
    Items children(4, nullptr);
    EXPECT_EQ(view.GetChildren(children), 1u);
    EXPECT_EQ(Uids(children), "A:1");
    EXPECT_EQ(view.GetNumChildren(), 1u);
    EXPECT_TRUE(view.HasChildren());
}

TEST_F(ViewItemTest, EveryViewHasAUidOfItsOwnOf32LettersAndDigits) {
    const ViewItem first(none, Names(), "x");
    const ViewItem second(none, Names(), "x");
    EXPECT_NE(first.GetUID(), second.GetUID());
    EXPECT_EQ(first.GetUID().size(), 32u);
    EXPECT_EQ(first.GetUID().find_first_not_of(
                  "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"),
              std::string::npos);
}

TEST_F(ViewItemTest, TheUidIsDrawnFromTheCLibrarysGenerator) {
    const kxString letters = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
    std::srand(1);
    kxString drawn;
    while (drawn.size() < 32) {
        drawn += letters[static_cast<size_t>(std::rand() % 62)];
    }
    std::srand(1);
    EXPECT_EQ(ViewItem(none, Names(), "x").GetUID(), drawn);
}

TEST_F(ViewItemTest, CopiesAndMovesKeepUidNameItemsAndAttributes) {
    Items items({content});
    ViewItem view(items, Names({"mass"}), "12");
    const kxString uid = view.GetUID();
    ViewItem copy(view);
    ViewItem moved(std::move(view));
    ViewItem assigned(none, Names(), "y");
    assigned = copy;
    for (ViewItem* each : {&copy, &moved, &assigned}) {
        EXPECT_EQ(each->GetUID(), uid);
        EXPECT_EQ(each->GetDisplayName(), "12");
        EXPECT_EQ(each->GetNumChildren(), 1u);
        EXPECT_EQ(each->GetAttributeValue("mass"), kxVariant(12));
    }
}

TEST_F(ViewItemTest, TheCallersListIsCopied) {
    Items items({content});
    ViewItem view(items, Names(), "x");
    items.clear();
    EXPECT_EQ(view.GetNumChildren(), 1u);
}

TEST_F(ViewItemTest, HasNeitherSessionNorHandle) {
    ViewItem view(none, Names(), "x");
    EXPECT_TRUE(view.GetItemHandle().IsEmpty());
    EXPECT_EQ(view.GetType(), "");
}

}  // namespace
}  // namespace kxct::test
