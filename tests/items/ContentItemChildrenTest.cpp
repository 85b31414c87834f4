#include "tests/items/Fixture.h"

namespace kxct::test {
namespace {

using mock::IsHandle;
using ::testing::_;
using ::testing::ElementsAre;
using ::testing::InSequence;
using ::testing::Return;
using ::testing::Throw;

class ContentItemChildren : public ContentTest {
  protected:
    ContentItemChildren() {
        part->groups.push_back({"reps", "owner", {}});
        part->groups.push_back({"files", "owner", {"UDMDSFileMesh", "Other", "UDMDSFileCAD"}});
        part->groups.push_back({"refs", "reference", {"Other"}});
    }

    ChildFilterMap Map(const Names& groups) { return ChildFilterMap({{"UDMPart", groups}}); }

    Items children;
};

TEST_F(ContentItemChildren, AreItsGroups) {
    EXPECT_EQ(content->GetChildren(children), 3u);
    EXPECT_EQ(Uids(children), "reps:A:1 files:A:1 refs:A:1");
    EXPECT_EQ(children.front()->IsA(), "ContentGroupItem");
}

TEST_F(ContentItemChildren, AreAppendedAndCountedWithWhatWasThere) {
    children.push_back(nullptr);
    EXPECT_EQ(content->GetChildren(children), 4u);
    EXPECT_EQ(children.front(), nullptr);
}

TEST_F(ContentItemChildren, AreTheSameGroupItemsAgain) {
    Items again;
    content->GetChildren(children);
    content->GetChildren(again, ChildFilterMap(), ChildFilterMap());
    EXPECT_EQ(children, again);
}

TEST_F(ContentItemChildren, AreNoneWithoutManagerOrGroups) {
    ContentItem alone(nullptr, session.get(), mock::HandleOf(state));
    EXPECT_EQ(alone.GetChildren(children), 0u);
    EXPECT_EQ(alone.GetChildren(children, "reps"), 0u);
    EXPECT_EQ(alone.GetChildren(children, ChildFilterMap(), ChildFilterMap()), 0u);
    EXPECT_EQ(alone.GetParents(children, "owner", false), 0u);
    EXPECT_EQ(alone.GetParent(false), nullptr);
    ContentItem offline(manager.get(), nullptr, mock::HandleOf(state));
    EXPECT_EQ(offline.GetChildren(children), 0u);
    EXPECT_EQ(offline.GetChildren(children, "reps"), 0u);
    EXPECT_EQ(offline.GetNumChildren("reps"), 0u);
    EXPECT_EQ(offline.GetParents(children, "owner", false), 0u);
    ContentItem empty(manager.get(), session.get(), kxudm::UDMItemHandle());
    EXPECT_EQ(empty.GetChildren(children), 0u);
    EXPECT_EQ(empty.GetChildren(children, ChildFilterMap(), ChildFilterMap()), 0u);
    EXPECT_EQ(empty.GetNumChildren(), 0u);
    EXPECT_TRUE(children.empty());
}

TEST_F(ContentItemChildren, AnUnknownDefinitionHasNoGroups) {
    state->definition = "Unknown";
    EXPECT_EQ(content->GetChildren(children), 0u);
    EXPECT_EQ(content->GetNumChildren(), 0u);
}

TEST_F(ContentItemChildren, OfAGroupAreContentsInTheOrderOfTheRuntime) {
    EXPECT_CALL(*profile, GetChildren(_, IsHandle("A:1"), kxString("reps"), kxString()))
        .WillOnce(Give({mock::NewHandle("C:1"), mock::NewHandle("B:1")}));
    children.push_back(nullptr);
    EXPECT_EQ(content->GetChildren(children, "reps"), 3u);
    EXPECT_EQ(Uids(children), "null C:1 B:1");
    EXPECT_EQ(children.back()->IsA(), "ContentItem");
}

TEST_F(ContentItemChildren, OfAGroupAreThinnedOutByTheRuntime) {
    EXPECT_CALL(*profile, GetChildren(_, IsHandle("A:1"), kxString("reps"), kxString("x == 1")))
        .WillOnce(Give({mock::NewHandle("B:1")}));
    EXPECT_EQ(content->GetChildren(children, "reps", "x == 1"), 1u);
}

TEST_F(ContentItemChildren, OfAGroupAreNoneWhenTheRuntimeFails) {
    children.push_back(nullptr);
    EXPECT_CALL(*profile, GetChildren).WillRepeatedly(Throw(std::runtime_error("no")));
    EXPECT_EQ(content->GetChildren(children, "reps"), 0u);
    EXPECT_EQ(content->GetChildren(children, Map({"reps"}), {}), 0u);
    EXPECT_EQ(children.size(), 1u);
}

TEST_F(ContentItemChildren, RevisionsOfOneContentAreNotCollapsed) {
    EXPECT_CALL(*profile, GetChildren)
        .WillOnce(Give({mock::NewHandle("B:1"), mock::NewHandle("B:2")}));
    EXPECT_EQ(content->GetChildren(children, "reps"), 2u);
    EXPECT_NE(children[0], children[1]);
}

TEST_F(ContentItemChildren, AFilterMapLimitsTheGroupsAndKeepsTheDefinitionsOrder) {
    EXPECT_EQ(content->GetChildren(children, {}, Map({"refs", "nosuch", "reps"})), 2u);
    EXPECT_EQ(Uids(children), "reps:A:1 refs:A:1");
}

TEST_F(ContentItemChildren, MapsOfOtherDefinitionsChangeNothing) {
    const ChildFilterMap other({{"UDMProject", Names({"reps"})}});
    EXPECT_EQ(content->GetChildren(children, other, other, ItemFilterList()), 3u);
}

TEST_F(ContentItemChildren, TheFormWithMapsCountsWhatItAppended) {
    children.push_back(nullptr);
    EXPECT_EQ(content->GetChildren(children, {}, {}, ItemFilterList()), 3u);
    EXPECT_EQ(content->GetChildren(children, ChildFilterMap(), ChildFilterMap()), 3u);
    EXPECT_EQ(children.size(), 7u);
}

TEST_F(ContentItemChildren, AHideMapShowsTheChildrenInPlaceOfTheirGroups) {
    const InSequence order;
    EXPECT_CALL(*profile, GetChildren(_, IsHandle("A:1"), kxString("refs"), kxString()))
        .WillOnce(Give({mock::NewHandle("R:1")}));
    EXPECT_CALL(*profile, GetChildren(_, IsHandle("A:1"), kxString("reps"), kxString()))
        .WillOnce(Give({mock::NewHandle("B:1"), mock::NewHandle("C:1")}));
    // It goes before the filter map.
    EXPECT_EQ(content->GetChildren(children, Map({"refs", "reps"}), Map({"files"})), 3u);
    EXPECT_EQ(Uids(children), "R:1 B:1 C:1");
}

TEST_F(ContentItemChildren, AHideMapWithAnEmptyListShowsNothingAtAll) {
    EXPECT_EQ(content->GetChildren(children, Map({}), {}), 0u);
    EXPECT_EQ(content->GetChildren(children, Map({}), Map({"reps"}), ItemFilterList()), 0u);
    EXPECT_TRUE(children.empty());
}

TEST_F(ContentItemChildren, AHiddenGroupThatTheDefinitionLacksMakesTheCallAnswerZero) {
    EXPECT_CALL(*profile, GetChildren(_, _, kxString("reps"), _))
        .Times(2)
        .WillRepeatedly(Give({mock::NewHandle("B:1")}));
    EXPECT_CALL(*profile, GetChildren(_, _, kxString("files"), _)).Times(0);
    const ChildFilterMap map = Map({"reps", "nosuch", "files"});
    EXPECT_EQ(content->GetChildren(children, map, {}), 0u);
    EXPECT_EQ(Uids(children), "B:1");
    EXPECT_EQ(content->GetChildren(children, map, {}, ItemFilterList()), 0u);
    EXPECT_EQ(Uids(children), "B:1 B:1");
}

struct FilterCase {
    const char* childType;
    const char* expression;
    const char* asked;
};

void PrintTo(const FilterCase& filter, std::ostream* out) {
    *out << filter.childType << " and " << filter.expression;
}

class ContentItemFilter : public ContentTest, public ::testing::WithParamInterface<FilterCase> {};

TEST_P(ContentItemFilter, CombinesTypeAndExpression) {
    part->groups.push_back({"reps", "owner", {}});
    ItemFilterList filters;
    filters.Add("UDMPart", "reps", GetParam().childType, GetParam().expression);
    EXPECT_CALL(*profile, GetChildren(_, _, kxString("reps"), kxString(GetParam().asked)))
        .WillOnce(Give({mock::NewHandle("B:1")}));
    Items children;
    const ChildFilterMap map({{"UDMPart", Names({"reps"})}});
    EXPECT_EQ(content->GetChildren(children, map, {}, filters), 1u);
}

INSTANTIATE_TEST_SUITE_P(IntoOneExpression,
                         ContentItemFilter,
                         ::testing::Values(FilterCase{"T", "E", "type == T && E"},
                                           FilterCase{"T", "", "type == T"},
                                           FilterCase{"", "E", "E"},
                                           FilterCase{"", "", ""}));

TEST_F(ContentItemChildren, AreCountedByGroupsWhateverTheyHold) {
    EXPECT_CALL(*profile, GetChildren).Times(0);
    EXPECT_CALL(*profile, GetChildCount).Times(0);
    EXPECT_EQ(content->GetNumChildren(), 3u);
    EXPECT_TRUE(content->HasChildren());
}

TEST_F(ContentItemChildren, OfAGroupAreCountedByTheRuntime) {
    EXPECT_CALL(*profile, GetChildCount(IsHandle("A:1"), kxString("reps"), kxString()))
        .WillOnce(Return(5))
        .WillOnce(Return(0))
        .WillOnce(Throw(std::runtime_error("no")));
    EXPECT_EQ(content->GetNumChildren("reps"), 5u);
    EXPECT_FALSE(content->HasChildren("reps"));
    EXPECT_EQ(content->GetNumChildren("reps"), 0u);
}

TEST_F(ContentItemChildren, AreCountedWithMapsByFetchingThem) {
    EXPECT_CALL(*profile, GetChildren)
        .Times(2)
        .WillRepeatedly(Give({mock::NewHandle("B:1"), mock::NewHandle("C:1")}));
    EXPECT_EQ(content->GetNumChildren(Map({"reps"}), {}), 2u);
    EXPECT_EQ(content->GetNumChildren(Map({"reps"}), {}, ItemFilterList()), 2u);
    EXPECT_EQ(content->GetNumChildren({}, Map({"files"})), 1u);
}

TEST_F(ContentItemChildren, TheParentIsTheFirstOwner) {
    state->hasParent = true;
    EXPECT_CALL(*profile, GetParents(_, IsHandle("A:1"), kxString("owner"), true))
        .WillOnce(Give({mock::NewHandle("P:1"), mock::NewHandle("Q:1")}));
    Item* parent = content->GetParent(true);
    ASSERT_NE(parent, nullptr);
    EXPECT_EQ(parent->GetUID(), "P:1");
}

TEST_F(ContentItemChildren, AContentWithoutParentAsksNothing) {
    EXPECT_CALL(*profile, GetParents).Times(0);
    EXPECT_EQ(content->GetParent(false), nullptr);
    ContentItem empty(manager.get(), session.get(), kxudm::UDMItemHandle());
    EXPECT_EQ(empty.GetParent(false), nullptr);
    EXPECT_FALSE(empty.HasParent());
}

TEST_F(ContentItemChildren, AnEmptyListOfOwnersGivesNoParent) {
    state->hasParent = true;
    EXPECT_CALL(*profile, GetParents);
    EXPECT_EQ(content->GetParent(false), nullptr);
}

TEST_F(ContentItemChildren, AFailureToFindTheParentTravelsOn) {
    state->hasParent = true;
    EXPECT_CALL(*profile, GetParents).WillOnce(Throw(std::runtime_error("no")));
    EXPECT_THROW(content->GetParent(false), std::exception);
}

TEST_F(ContentItemChildren, ParentsByARelationAreAppended) {
    EXPECT_CALL(*profile, GetParents(_, IsHandle("A:1"), kxString("folder"), true))
        .WillOnce(Give({mock::NewHandle("P:1"), mock::NewHandle("Q:1")}))
        .WillOnce(Throw(std::runtime_error("no")));
    children.push_back(nullptr);
    EXPECT_EQ(content->GetParents(children, "folder", true), 3u);
    EXPECT_EQ(Uids(children), "null P:1 Q:1");
    EXPECT_EQ(content->GetParents(children, "folder", true), 0u);
    EXPECT_EQ(children.size(), 3u);
}

TEST_F(ContentItemChildren, HasParentIsTrueThroughAContentAndFalseThroughAnItem) {
    state->hasParent = true;
    const Item* item = content;
    EXPECT_TRUE(content->HasParent());
    EXPECT_FALSE(item->HasParent());
}

class OpenContent : public ContentItem {
  public:
    using ContentItem::_GetAllowedChildCdefNames;
    using ContentItem::_GetGroupNames;
    using ContentItem::ContentItem;
};

TEST_F(ContentItemChildren, TheFileDefinitionOfAGroupIsTheLastOneThatItAllows) {
    const OpenContent open(manager.get(), session.get(), mock::HandleOf(state));
    EXPECT_EQ(open._GetAllowedChildCdefNames(),
              (kxStlMap<kxString, kxString>({{"files", "UDMDSFileCAD"}})));
}

TEST_F(ContentItemChildren, TheArgumentOfTheGroupNamesIsNotRead) {
    const OpenContent open(manager.get(), session.get(), mock::HandleOf(state));
    EXPECT_EQ(open._GetGroupNames(true), open._GetGroupNames(false));
}

}  // namespace
}  // namespace kxct::test
