// Content definitions, the settings of structure requests, and structure.
#include <kxudm/UDMCdefMetaData.h>

#include "tests/controller/ControllerFixture.h"

namespace kxct::test {
namespace {

using mock::IsHandle;
using testing::_;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Return;

class ControllerImplViews : public ControllerTest {
  protected:
    ControllerImplViews() {
        Entity("A:1", "UDMPart", "Bracket");
        Entity("A:2", "UDMPart", "Bracket");
        Entity("B:1", "UDMPart", "Bolt");
    }

    size_t Structure(const Items& roots,
                     bool group = false,
                     const ManagerType& type = MANAGER_DEFAULT) {
        return controller->GetStructure(
            type, roots, created, deleted, linked, unlinked, moreExpected, group);
    }

    Items created;
    Items deleted;
    Relations linked;
    Relations unlinked;
    bool moreExpected = false;
};

TEST_F(ControllerImplViews, DefinitionNamesAreTheRuntimes) {
    EXPECT_THAT(controller->GetContentDefinitionNames(),
                ElementsAre("UDMPart", "Foldertype", "Categories", "OwnFolder", "OwnCategory"));
}

TEST_F(ControllerImplViews, DefinitionMetadataIsAppendedAndCounted) {
    ON_CALL(*profile, GetContentDefinitionMetadata(kxString("UDMPart"), _))
        .WillByDefault([](const kxString&, kxStlVector<kxudm::UDMCdefMetaData>& out) {
            out.emplace_back("mass",
                             "Mass",
                             "",
                             "1",
                             "Double",
                             "Physics",
                             false,
                             true,
                             true,
                             kxStlVector<kxString>());
        });
    kxStlVector<Metadata> metadata(1);
    EXPECT_EQ(controller->GetContentDefinitionMetadata("UDMPart", metadata), 2U);
    EXPECT_EQ(metadata[1].name, "mass");
}

TEST_F(ControllerImplViews, UpdatingADefinitionAnswersWhatTheRuntimeAnswers) {
    kxStlVector<Metadata> metadata(1);
    metadata[0].name = "mass";
    EXPECT_CALL(*profile, UpdateContentDefinition(kxString("UDMPart"), _, _))
        .WillOnce(Return(true))
        .WillOnce(Return(false));
    EXPECT_TRUE(controller->UpdateContentDefinition("UDMPart", metadata));
    EXPECT_FALSE(controller->UpdateContentDefinition("UDMPart", metadata));
    EXPECT_CALL(*profile, ReloadContentDefinition(kxString("UDMPart")))
        .WillOnce(Return(true))
        .WillOnce(Return(false));
    EXPECT_TRUE(controller->UpdateContentDefinition("UDMPart"));
    EXPECT_FALSE(controller->UpdateContentDefinition("UDMPart"));
}

TEST_F(ControllerImplViews, SettersReplaceAndGettersCopy) {
    const ChildFilterMap first{{"UDMPart", {"parts"}}};
    const ChildFilterMap second{{"UDMProject", {"files", "parts"}}};
    controller->SetFilterMap(first);
    controller->SetHideMap(first);
    controller->SetFilterMap(second);
    EXPECT_EQ(controller->GetFilterMap(), second);
    EXPECT_EQ(controller->GetHideMap(), first);
    controller->SetGroupByAttributes({"a", "b"});
    controller->SetGroupByAttributes({"c"});
    EXPECT_THAT(controller->GetGroupByAttributes(), ElementsAre("c"));
    ItemFilterList filters;
    filters.Add("UDMPart", "parts", "UDMPart", "");
    controller->SetFilterMapForChildren(filters);
    EXPECT_EQ(controller->GetFilterMapForChildren().size(), 1U);
    controller->SetFilterMapForChildren(ItemFilterList());
    EXPECT_EQ(controller->GetFilterMapForChildren().size(), 0U);
}

TEST_F(ControllerImplViews, AMapGivenBackToItsControllerStaysAsItIs) {
    const ChildFilterMap map{{"UDMPart", {"parts"}}};
    controller->SetFilterMap(map);
    controller->SetHideMap(map);
    controller->SetGroupByAttributes({"a"});
    controller->SetFilterMap(controller->GetFilterMap());
    controller->SetHideMap(controller->GetHideMap());
    controller->SetGroupByAttributes(controller->GetGroupByAttributes());
    EXPECT_EQ(controller->GetFilterMap(), map);
    EXPECT_EQ(controller->GetHideMap(), map);
    EXPECT_THAT(controller->GetGroupByAttributes(), ElementsAre("a"));
}

TEST_F(ControllerImplViews, SettersNeedNoSession) {
    ControllerImpl dead;
    dead.SetGroupByAttributes({"a"});
    EXPECT_THAT(dead.GetGroupByAttributes(), ElementsAre("a"));
}

TEST_F(ControllerImplViews, StructureOfAnUnknownTypeIsEmpty) {
    EXPECT_EQ(Structure({ItemOf("A:1")}, false, static_cast<ManagerType>(7)), 0U);
    EXPECT_THAT(created, IsEmpty());
}

TEST_F(ControllerImplViews, StructureIsTheWholeTreeWithoutAGhost) {
    definitions->Add("UDMRoot").groups.push_back({"parts", "owner", {"UDMPart"}});
    Entity("R:1", "UDMRoot", "Root");
    ON_CALL(*profile, GetChildren(_, IsHandle("R:1"), kxString("parts"), kxString("")))
        .WillByDefault(Give({HandleOf("A:1"), HandleOf("B:1")}));
    Structure({ItemOf("R:1")});
    EXPECT_THAT(UidsOf(created), testing::IsSupersetOf({"A:1", "B:1"}));
    EXPECT_THAT(UidsOf(created), testing::Not(Contains("GhostItem")));
}

TEST_F(ControllerImplViews, StructureFollowsTheHideMap) {
    definitions->Add("UDMRoot").groups.push_back({"parts", "owner", {"UDMPart"}});
    Entity("R:1", "UDMRoot", "Root");
    ON_CALL(*profile, GetChildren(_, IsHandle("R:1"), kxString("parts"), _))
        .WillByDefault(Give({HandleOf("A:1")}));
    controller->SetHideMap({{"UDMRoot", {"parts"}}});
    Structure({ItemOf("R:1")});
    EXPECT_THAT(UidsOf(created), testing::Not(Contains("parts:R:1")));
    EXPECT_THAT(linked, Contains(std::make_pair(ItemOf("R:1"), ItemOf("A:1"))));
}

TEST_F(ControllerImplViews, StructureFollowsTheFilterMap) {
    auto& root = definitions->Add("UDMRoot");
    root.groups.push_back({"parts", "owner", {"UDMPart"}});
    root.groups.push_back({"files", "owner", {"UDMPart"}});
    Entity("R:1", "UDMRoot", "Root");
    controller->SetFilterMap({{"UDMRoot", {"files"}}});
    Structure({ItemOf("R:1")});
    EXPECT_THAT(UidsOf(created), Contains("files:R:1"));
    EXPECT_THAT(UidsOf(created), testing::Not(Contains("parts:R:1")));
}

TEST_F(ControllerImplViews, StructureHandsTheChildFiltersOn) {
    definitions->Add("UDMRoot").groups.push_back({"parts", "owner", {"UDMPart"}});
    Entity("R:1", "UDMRoot", "Root");
    ItemFilterList filters;
    filters.Add("UDMRoot", "parts", "UDMPart", "attrib.state == \"done\"");
    controller->SetHideMap({{"UDMRoot", {"parts"}}});
    controller->SetFilterMapForChildren(filters);
    EXPECT_CALL(*profile,
                GetChildren(_,
                            IsHandle("R:1"),
                            kxString("parts"),
                            kxString("type == UDMPart && attrib.state == \"done\"")))
        .Times(testing::AtLeast(1));
    Structure({ItemOf("R:1")});
}

TEST_F(ControllerImplViews, GroupingWithoutAttributesPutsRevisionsUnderOneContent) {
    Structure({ItemOf("A:1"), ItemOf("A:2"), ItemOf("B:1")}, true);
    std::vector<std::string> kinds;
    for (Item* item : created) {
        kinds.push_back(item->IsA());
    }
    EXPECT_THAT(kinds, Contains("NoRevItem"));
    EXPECT_THAT(kinds, testing::Not(Contains("ViewItem")));
}

TEST_F(ControllerImplViews, GroupingByAttributesMakesViewItems) {
    for (const char* uid : {"A:1", "A:2", "B:1"}) {
        entities[uid]->attributes["state"] = kxVariant(uid);
    }
    controller->SetGroupByAttributes({"state"});
    Structure({ItemOf("A:1"), ItemOf("A:2"), ItemOf("B:1")}, true);
    std::vector<std::string> kinds;
    for (Item* item : created) {
        kinds.push_back(item->IsA());
    }
    EXPECT_THAT(kinds, Contains("ViewItem"));
    EXPECT_THAT(kinds, testing::Not(Contains("NoRevItem")));
}

TEST_F(ControllerImplViews, AttributesWithoutTheGroupFlagGroupNothing) {
    controller->SetGroupByAttributes({"state"});
    Structure({ItemOf("A:1")});
    for (Item* item : created) {
        EXPECT_EQ(item->IsA(), "ContentItem");
    }
}

TEST_F(ControllerImplViews, AFailureWhileGroupingIsContained) {
    controller->SetGroupByAttributes({"no such attribute"});
    EXPECT_EQ(Structure({ItemOf("A:1"), ItemOf("B:1")}, true), 0U);
}

TEST_F(ControllerImplViews, TheResultIsTheNumberOfNewItems) {
    EXPECT_EQ(Structure({ItemOf("A:1"), ItemOf("B:1")}, true), created.size());
}

}  // namespace
}  // namespace kxct::test
