#include <kxct/NoRevItem.h>
#include <kxct/ViewItem.h>

#include "tests/items/StructureFixture.h"

namespace kxct::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

TEST_F(Structure, OnDemandFirstHangsTheItemOnTheGhost) {
    EXPECT_EQ(Ask({&root}, false, true), 1u);
    EXPECT_THAT(Text(newItems), ElementsAre("GhostItem"));
    EXPECT_THAT(Text(newRelations), ElementsAre("root>GhostItem"));
    EXPECT_THAT(deletedItems, IsEmpty());
    EXPECT_THAT(deletedRelations, IsEmpty());
    EXPECT_EQ(root.GetRenderState(), RENDER_GHOSTED);
    EXPECT_FALSE(more);
}

TEST_F(Structure, OnDemandThenReplacesTheGhostByTheChildren) {
    Ask({&other}, false, true);
    EXPECT_EQ(Ask({&other}, false, true), 1u);
    EXPECT_THAT(Text(newItems), ElementsAre("leaf"));
    EXPECT_THAT(Text(newRelations), ElementsAre("other>leaf"));
    EXPECT_THAT(Text(deletedRelations), ElementsAre("other>GhostItem"));
    EXPECT_THAT(Text(deletedItems), ElementsAre("GhostItem"));
    EXPECT_EQ(other.GetRenderState(), RENDER_EXPANDED);
}

TEST_F(Structure, OnDemandChildrenWithChildrenHangOnTheGhostInTurn) {
    Ask({&root}, false, true);
    Ask({&root}, false, true);
    // The ghost had a user before and has one after, so it is neither new nor gone.
    EXPECT_THAT(Text(newItems), ElementsAre("inner"));
    EXPECT_THAT(Text(newRelations), ElementsAre("root>inner", "inner>GhostItem"));
    EXPECT_THAT(deletedItems, IsEmpty());
    EXPECT_EQ(inner.GetRenderState(), RENDER_GHOSTED);
    EXPECT_FALSE(more);
}

TEST_F(Structure, OnDemandAnExpandedItemIsWalkedAgain) {
    Ask({&root}, false, true);
    Ask({&root}, false, true);
    Ask({&root}, false, true);
    EXPECT_THAT(Text(newRelations), ElementsAre("root>inner"));
    EXPECT_THAT(deletedRelations, IsEmpty());
    EXPECT_EQ(root.GetRenderState(), RENDER_EXPANDED);
    EXPECT_FALSE(more);
}

TEST_F(Structure, OnDemandAChildThatWasSeenBeforeAsksForAnotherPass) {
    Ask({&root}, false, true);
    inner.SetRenderState(RENDER_EXPANDED);
    Ask({&root}, false, true);
    EXPECT_TRUE(more);
    EXPECT_THAT(Text(newRelations), ElementsAre("root>inner"));
}

TEST_F(Structure, OnDemandLaterItemsWalkTheEarlierOnesChildrenAgain) {
    Node second{"second", {&inner}};
    Node first{"first", {&leaf}};
    Ask({&first, &second}, false, true);
    Ask({&first, &second}, false, true);
    EXPECT_THAT(Text(newRelations),
                ElementsAre("first>leaf", "second>leaf", "second>inner", "inner>GhostItem"));
}

TEST_F(Structure, OnDemandALeafGivesNothing) {
    EXPECT_EQ(Ask({&leaf}, false, true), 0u);
    EXPECT_THAT(newRelations, IsEmpty());
    EXPECT_EQ(leaf.GetRenderState(), RENDER_NONE);
    // The ghost was made for the question, and nobody hangs on it.
    EXPECT_THAT(Text(deletedItems), ElementsAre("GhostItem"));
}

TEST_F(Structure, OnDemandTheGhostStaysWhileAnotherItemHangsOnIt) {
    Ask({&root, &other}, false, true);
    EXPECT_THAT(Text(newItems), ElementsAre("GhostItem"));
    EXPECT_THAT(Text(newRelations), ElementsAre("root>GhostItem", "other>GhostItem"));
    Ask({&other}, false, true);
    EXPECT_THAT(Text(newItems), ElementsAre("leaf"));
    EXPECT_THAT(deletedItems, IsEmpty());
}

TEST_F(Structure, OnDemandAGhostThatWentComesAgain) {
    Ask({&other}, false, true);
    Ask({&other}, false, true);
    ASSERT_THAT(Text(deletedItems), ElementsAre("GhostItem"));
    Item* const before = deletedItems.front();
    Ask({&root}, false, true);
    // The object itself stayed.
    EXPECT_THAT(newItems, ElementsAre(before));
}

TEST_F(Structure, OnDemandAChildOfAnExpandedItemThatWasSeenBeforeAsksForNothing) {
    root.SetRenderState(RENDER_EXPANDED);
    inner.SetRenderState(RENDER_EXPANDED);
    Ask({&root}, false, true);
    EXPECT_FALSE(more);
    EXPECT_THAT(Text(newRelations), ElementsAre("root>inner"));
    EXPECT_THAT(deletedRelations, IsEmpty());
}

// A manager whose ghost a test can see.
struct Window : DefaultItemManager {
    using DefaultItemManager::DefaultItemManager;
    const Item* Ghost() const { return m_ghost; }
};

TEST_F(Structure, AnEmptyInputOnDemandStillMakesTheGhost) {
    auto window = std::make_unique<Window>(session.get(), &signals);
    const Window& seen = *window;
    manager = std::move(window);
    Ask({}, false, false);
    EXPECT_EQ(seen.Ghost(), nullptr);
    Ask({}, false, true);
    EXPECT_NE(seen.Ghost(), nullptr);
}

TEST_F(Structure, AnEmptyInputGivesNoOutput) {
    for (const bool onDemand : {true, false}) {
        EXPECT_EQ(Ask({}, true, onDemand), 0u);
        EXPECT_THAT(newRelations, IsEmpty());
        EXPECT_THAT(deletedItems, IsEmpty());
        EXPECT_FALSE(more);
    }
}

TEST_F(Structure, AfterClearingTheCacheANewGhostIsMade) {
    Ask({&root}, false, true);
    manager->ClearCache();
    Ask({&other}, false, true);
    EXPECT_THAT(Text(newItems), ElementsAre("GhostItem"));
    EXPECT_THAT(Text(newRelations), ElementsAre("other>GhostItem"));
}

TEST_F(Structure, OnDemandNeverGroups) {
    leaf.attributes["a"] = 1;
    const Names attributes({"a"});
    Ask({&leaf, &leaf}, true, true, &attributes);
    EXPECT_THAT(newRelations, IsEmpty());
}

TEST_F(Structure, TheWholeTreeIsWalkedLevelByLevel) {
    Node wide{"wide", {&root, &other}};
    EXPECT_EQ(Ask({&wide}, false, false), 5u);
    EXPECT_THAT(Text(newItems), ElementsAre("root", "other", "inner", "leaf", "leaf"));
    EXPECT_THAT(Text(newRelations),
                ElementsAre("wide>root", "wide>other", "root>inner", "other>leaf", "inner>leaf"));
    EXPECT_TRUE(more);
    EXPECT_EQ(wide.GetRenderState(), RENDER_EXPANDED);
    EXPECT_EQ(leaf.GetRenderState(), RENDER_NONE);
}

TEST_F(Structure, OutputsAreAppendedTo) {
    newItems.push_back(&leaf);
    bool flag = false;
    EXPECT_EQ(manager->GetStructure({&other},
                                    ItemFilterList(),
                                    newItems,
                                    deletedItems,
                                    newRelations,
                                    deletedRelations,
                                    {},
                                    {},
                                    flag,
                                    false,
                                    false),
              2u);
}

TEST_F(Structure, RevisionsOfOneContentComeUnderOneNode) {
    Node a1("A:1");
    Node a2("A:2");
    Node b("B:7");
    EXPECT_EQ(Ask({&a2, &b, &a1}, true, false), 1u);
    ASSERT_EQ(newItems.size(), 1u);
    EXPECT_EQ(newItems.front()->IsA(), "NoRevItem");
    EXPECT_THAT(Text(newRelations), ElementsAre("A>A:2", "A>A:1"));
}

TEST_F(Structure, WithoutGroupingRevisionsStayAsTheyAre) {
    Node a1("A:1");
    Node a2("A:2");
    EXPECT_EQ(Ask({&a2, &a1}, false, false), 0u);
}

class Grouping : public Structure {
  protected:
    Item* Make(const kxString& uid, const kxString& material, int mass) {
        nodes.push_back(std::make_unique<Node>(uid));
        nodes.back()->attributes["material"] = material;
        nodes.back()->attributes["mass"] = mass;
        return nodes.back().get();
    }

    std::vector<std::unique_ptr<Node>> nodes;
};

TEST_F(Grouping, ByOneAttributeGivesOneGroupPerValue) {
    const Names attributes({"material"});
    const Items items({Make("1", "steel", 1), Make("2", "brass", 1)});
    EXPECT_EQ(Ask(items, true, false, &attributes), 2u);
    EXPECT_THAT(Text(newItems), ElementsAre("[brass]", "[steel]"));
    EXPECT_THAT(Text(newRelations), ElementsAre("[brass]>2", "[steel]>1"));
    Items held;
    EXPECT_EQ(newItems.front()->GetChildren(held), 1u);
    EXPECT_THAT(newItems.front()->GetAttributeNameList(false, false), ElementsAre("material"));
}

TEST_F(Grouping, ByTwoAttributesHangsEntriesOneLevelAboveTheirOwn) {
    const Names attributes({"material", "mass"});
    const Items items({Make("1", "steel", 1), Make("2", "steel", 2), Make("3", "brass", 5)});
    Ask(items, true, false, &attributes);
    // The last attribute never gets a group of its own.
    EXPECT_THAT(Text(newItems), ElementsAre("[brass]", "[steel]"));
    EXPECT_THAT(Text(newRelations), ElementsAre("[brass]>3", "[steel]>1", "[steel]>2"));
}

TEST_F(Grouping, ByThreeAttributesHangsASingleEntryTwoLevelsHigher) {
    const Names attributes({"material", "mass", "finish"});
    const Items items({Make("1", "steel", 1),
                       Make("2", "steel", 1),
                       Make("3", "steel", 2),
                       Make("4", "brass", 5)});
    static_cast<Node*>(items[0])->attributes["finish"] = "raw";
    static_cast<Node*>(items[1])->attributes["finish"] = "polished";
    Ask(items, true, false, &attributes);
    EXPECT_THAT(Text(newRelations),
                ElementsAre("[brass]>4", "[steel]>[1]", "[1]>2", "[1]>1", "[steel]>3"));
    EXPECT_THAT(Text(newItems), ElementsAre("[brass]", "[steel]", "[1]"));
}

TEST_F(Grouping, AnItemEqualInAllAttributesToAnEarlierOneIsLeftOut) {
    const Names attributes({"material", "mass"});
    const Items items({Make("1", "steel", 1), Make("2", "steel", 1), Make("3", "steel", 2)});
    Ask(items, true, false, &attributes);
    EXPECT_THAT(Text(newRelations), ElementsAre("[steel]>1", "[steel]>3"));
}

TEST_F(Grouping, AMissingValueIsAGroupToo) {
    const Names attributes({"nosuch"});
    Ask({Make("1", "steel", 1)}, true, false, &attributes);
    EXPECT_THAT(Text(newRelations), ElementsAre("[]>1"));
}

TEST_F(Grouping, NeedsAttributesAndTheFlag) {
    const Names none;
    const Names attributes({"material"});
    const Items items({Make("1", "steel", 1)});
    EXPECT_EQ(Ask(items, true, false, &none), 0u);
    EXPECT_EQ(Ask(items, false, false, &attributes), 0u);
}

TEST_F(Grouping, MakesNewGroupsEachTime) {
    const Names attributes({"material"});
    const Items items({Make("1", "steel", 1)});
    Ask(items, true, false, &attributes);
    Item* first = newItems.front();
    Ask(items, true, false, &attributes);
    EXPECT_NE(newItems.front(), first);
}

TEST_F(Grouping, TheItemsThemselvesAreWalkedAsWell) {
    const Names attributes({"material"});
    auto* node = static_cast<Node*>(Make("1", "steel", 1));
    node->children.push_back(&leaf);
    Ask({node}, true, false, &attributes);
    EXPECT_THAT(Text(newRelations), ElementsAre("[steel]>1", "1>leaf"));
    EXPECT_TRUE(more);
}

}  // namespace
}  // namespace kxct::test
