// What a view shows after each answer of a manager, drawn as an indented tree.
#include "tests/items/StructureFixture.h"
#include "tests/items/TreeView.h"

namespace kxct::test {
namespace {

using mock::IsHandle;
using mock::NewHandle;
using ::testing::_;
using ::testing::Return;

// A machine with two groups, "parts" and "files". Its frame has two parts of its own.
class StructureTrees : public Structure {
  protected:
    StructureTrees() {
        definitions->Add("UDMPart").groups = {{"parts", "owner", {}}, {"files", "owner", {}}};
        definitions->Add("File");
        Have("machine:1", "parts", {Part("frame:1"), Part("drive:1")});
        Have("machine:1", "files", {NewHandle("plan:1", "File", "plan")});
        Have("frame:1", "parts", {Part("beam:1"), Part("bolt:1")});
    }

    static kxudm::UDMItemHandle Part(const kxString& uid) {
        return NewHandle(uid, "UDMPart", uid.substr(0, uid.find(':')));
    }
    void Have(const kxString& uid, const kxString& group, const Handles& children) {
        ON_CALL(*profile, GetChildren(_, IsHandle(uid), group, _)).WillByDefault(Give(children));
        ON_CALL(*profile, GetChildCount(IsHandle(uid), group, _))
            .WillByDefault(Return(children.size()));
    }
    Item* ItemOf(const kxString& uid) { return manager->CreateItem(Part(uid)); }

    // Asks as the form for revisions, with the maps and filters of the fixture.
    std::string Next(const Items& items, bool group, bool onDemand) {
        newItems.clear();
        deletedItems.clear();
        newRelations.clear();
        deletedRelations.clear();
        manager->GetStructure(items,
                              filters,
                              newItems,
                              deletedItems,
                              newRelations,
                              deletedRelations,
                              hideMap,
                              filterMap,
                              more,
                              group,
                              onDemand);
        view.Apply(newItems, deletedItems, newRelations, deletedRelations);
        return view.Draw();
    }
    std::string Whole(const kxString& uid) {
        Item* const top = ItemOf(uid);
        view.Show({top});
        return Next({top}, false, false);
    }

    ChildFilterMap hideMap;
    ChildFilterMap filterMap;
    ItemFilterList filters;
    TreeView view;
};

TEST_F(StructureTrees, ContentsHaveGroupsAndGroupsHaveContents) {
    EXPECT_EQ(Whole("machine:1"), R"(
machine
  parts
    frame
      parts
        beam
          parts
          files
        bolt
          parts
          files
      files
    drive
      parts
      files
  files
    plan
)");
}

TEST_F(StructureTrees, HiddenGroupsGiveWayToTheirChildrenAndTheOthersGo) {
    hideMap = ChildFilterMap({{"UDMPart", {"parts"}}});
    EXPECT_EQ(Whole("machine:1"), R"(
machine
  frame
    beam
    bolt
  drive
)");
}

TEST_F(StructureTrees, AFilterMapLeavesTheNamedGroups) {
    filterMap = ChildFilterMap({{"UDMPart", {"files"}}});
    EXPECT_EQ(Whole("machine:1"), R"(
machine
  files
    plan
)");
}

TEST_F(StructureTrees, FiltersThinOutTheChildrenOfHiddenGroups) {
    hideMap = ChildFilterMap({{"UDMPart", {"parts"}}});
    filters.Add("UDMPart", "parts", "UDMPart", "name == \"frame\"");
    ON_CALL(*profile,
            GetChildren(_, _, kxString("parts"), kxString("type == UDMPart && name == \"frame\"")))
        .WillByDefault(::testing::Return());
    ON_CALL(*profile,
            GetChildren(_,
                        IsHandle("machine:1"),
                        kxString("parts"),
                        kxString("type == UDMPart && name == \"frame\"")))
        .WillByDefault(Give({Part("frame:1")}));
    EXPECT_EQ(Whole("machine:1"), R"(
machine
  frame
)");
}

TEST_F(StructureTrees, OnDemandATreeOpensStepByStep) {
    Item* machine = ItemOf("machine:1");
    view.Show({machine});
    EXPECT_EQ(Next({machine}, false, true), R"(
machine
  ...
)");
    EXPECT_EQ(Next({machine}, false, true), R"(
machine
  parts
    ...
  files
    ...
)");
    Items groups;
    machine->GetChildren(groups);
    EXPECT_EQ(Next({groups[1]}, false, true), R"(
machine
  parts
    ...
  files
    plan
)");
    EXPECT_EQ(Next({groups[0]}, false, true), R"(
machine
  parts
    frame
      ...
    drive
      ...
  files
    plan
)");
}

TEST_F(StructureTrees, OnDemandMapsAndFiltersDecideWhoHasChildren) {
    hideMap = ChildFilterMap({{"UDMPart", {"parts"}}});
    Item* machine = ItemOf("machine:1");
    view.Show({machine});
    Next({machine}, false, true);
    EXPECT_EQ(Next({machine}, false, true), R"(
machine
  frame
    ...
  drive
)");
    EXPECT_EQ(Next({ItemOf("frame:1")}, false, true), R"(
machine
  frame
    beam
    bolt
  drive
)");
    EXPECT_THAT(Text(deletedItems), ::testing::ElementsAre("GhostItem"));
}

TEST_F(StructureTrees, RevisionsComeTogetherUnderTheirContentAndAreWalkedFurther) {
    hideMap = ChildFilterMap({{"UDMPart", {"parts"}}});
    Have("frame:2", "parts", {Part("beam:1")});
    const Items items({ItemOf("frame:2"), ItemOf("drive:1"), ItemOf("frame:1")});
    view.Show(items);
    EXPECT_EQ(Next(items, true, false), R"(
drive
all of frame
  frame
    beam
  frame
    beam
    bolt
)");
}

TEST_F(StructureTrees, TenThousandLevelsOfContentsAreWalkedToTheirEnd) {
    constexpr int depth = 10000;
    hideMap = ChildFilterMap({{"UDMPart", {"parts"}}});
    ON_CALL(*profile, GetChildren)
        .WillByDefault([](Handles& out, const kxudm::UDMItemHandle& parent, auto&&...) {
            const int level = std::stoi(parent.GetUID());
            if (level + 1 < depth) {
                out.push_back(Part(std::to_string(level + 1) + ":1"));
            }
        });
    Item* const top = ItemOf("0:1");
    manager->GetStructure({top},
                          filters,
                          newItems,
                          deletedItems,
                          newRelations,
                          deletedRelations,
                          hideMap,
                          filterMap,
                          more,
                          true,
                          false);
    ASSERT_EQ(newItems.size(), depth - 1U);
    EXPECT_EQ(newItems.back()->GetUID(), std::to_string(depth - 1) + ":1");
    EXPECT_EQ(newRelations.front(), std::pair(top, newItems.front()));
    Items cached;
    EXPECT_EQ(manager->GetAllItemsInCache(cached), depth + 0U);
    manager->ClearCache();
}

TEST_F(StructureTrees, ComputingAStructureRaisesNoSignal) {
    const SignalSpy spy(signals);
    const Items items({ItemOf("machine:1"), ItemOf("frame:1"), ItemOf("frame:2")});
    const Names attributes({"label"});
    Ask(items, false, true);
    Ask(items, false, true);
    Ask(items, true, false);
    Ask(items, true, false, &attributes);
    EXPECT_FALSE(newItems.empty());
    EXPECT_THAT(spy.log, ::testing::IsEmpty());
}

// Castings by material, plant, finish and batch, as far as a test asks.
class GroupedTrees : public Structure {
  protected:
    Item* Make(const kxString& uid, const Names& values) {
        Node& node = *nodes.emplace_back(std::make_unique<Node>(uid));
        for (size_t i = 0; i < values.size(); ++i) {
            node.attributes[all[i]] = values[i];
        }
        return &node;
    }
    std::string Grouped(const Items& items, std::ptrdiff_t count) {
        const Names attributes(all.begin(), all.begin() + count);
        Ask(items, true, false, &attributes);
        TreeView view;
        view.Show(items);
        view.Apply(newItems, deletedItems, newRelations, deletedRelations);
        return view.Draw();
    }

    const Names all{"material", "plant", "finish", "batch"};
    std::vector<std::unique_ptr<Node>> nodes;
};

TEST_F(GroupedTrees, OneAttributePutsEachItemUnderItsOwnValue) {
    const Items items({Make("a", {"steel"}), Make("b", {"brass"}), Make("c", {"iron"})});
    EXPECT_EQ(Grouped(items, 1), R"(
[brass]
  b
[iron]
  c
[steel]
  a
)");
}

// Equal in all attributes: only the first of them gets into the tree, which is required.
TEST_F(GroupedTrees, OfItemsThatAreEqualInAllAttributesOnlyTheFirstIsGrouped) {
    const Items items({Make("a", {"steel", "north"}),
                       Make("b", {"steel", "north"}),
                       Make("c", {"steel", "south"})});
    EXPECT_EQ(Grouped(items, 2), R"(
b
[steel]
  a
  c
)");
}

TEST_F(GroupedTrees, WithOneAttributeOfOneValueOneItemIsLeft) {
    EXPECT_EQ(Grouped({Make("a", {"steel"}), Make("b", {"steel"})}, 1), R"(
b
[steel]
  a
)");
}

// The levels are off by one or two and required so; ItemManager says how.
TEST_F(GroupedTrees, FourAttributesHangEntriesAboveWhatTellsThemApart) {
    const Items items({Make("alone in its material", {"brass", "north", "raw", "1"}),
                       Make("alone in its plant", {"steel", "south", "raw", "1"}),
                       Make("alone in its finish", {"steel", "north", "raw", "1"}),
                       Make("one of a batch", {"steel", "north", "sanded", "1"}),
                       Make("next of a batch", {"steel", "north", "sanded", "2"})});
    EXPECT_EQ(Grouped(items, 4), R"(
[brass]
  alone in its material
[steel]
  [north]
    alone in its finish
    [sanded]
      one of a batch
      next of a batch
  alone in its plant
)");
}

TEST_F(GroupedTrees, ASingleItemHangsUnderItsFirstValue) {
    EXPECT_EQ(Grouped({Make("a", {"steel", "north", "raw", "1"})}, 4), R"(
[steel]
  a
)");
}

TEST_F(GroupedTrees, ChildrenOfGroupedItemsStandBelowThem) {
    auto* node = static_cast<Node*>(Make("a", {"steel"}));
    node->children.push_back(&inner);
    EXPECT_EQ(Grouped({node}, 1), R"(
[steel]
  a
    inner
      leaf
)");
}

TEST_F(GroupedTrees, GroupsStayInTheCacheUntilItIsCleared) {
    Grouped({Make("a", {"steel"}), Make("b", {"brass"})}, 1);
    Items cached;
    EXPECT_EQ(manager->GetAllItemsInCache(cached), 2U);
    Grouped({Make("a", {"steel"})}, 1);
    EXPECT_EQ(manager->GetAllItemsInCache(cached), 3U);
    manager->ClearCache();
    EXPECT_EQ(manager->GetAllItemsInCache(cached), 0U);
}

}  // namespace
}  // namespace kxct::test
