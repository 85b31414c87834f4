// Children and parents of items on a real library: groups, hide map, filter map, filters.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/ContentItem.h>
#include <kxctinterfaces/ItemFilterList.h>

#include "Host.h"

using kxct::ChildFilterMap;
using kxct::Controller;
using kxct::Item;
using kxct::ItemFilterList;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Items = kxStlVector<Item*>;
using Texts = kxStlVector<kxString>;
using Names = std::vector<std::string>;

Names NamesOf(const Items& items) {
    Names names;
    for (Item* item : items) {
        const bool group = item->IsA() == "ContentGroupItem";
        names.push_back((group ? "[" : "") + std::string(item->GetDisplayName()) +
                        (group ? "]" : ""));
    }
    return names;
}

class ItemChildren : public testing::Test {
  protected:
    ItemChildren() {
        car = anna->CreateContent("UDMAssemblyDM", "Car");
        for (const char* name : {"wheel", "axle", "door"}) {
            Add("UDMPart", name, "parts");
        }
        mesh = Add("UDMRepPartMesh", "mesh", "representations");
        cad = Add("UDMRepPartCad", "cad", "representations");
        manual = Add("Document", "manual", "files");
    }
    Item* Add(const kxString& type, const kxString& name, const kxString& group) {
        Item* child = anna->CreateContent(type, name);
        EXPECT_TRUE(car->Add(child, group)) << name;
        return child;
    }
    // The children by maps and filters, followed by what the call answers.
    Names ByMaps(const ChildFilterMap& hide,
                 const ChildFilterMap& filter,
                 const ItemFilterList& filters) {
        Items children;
        const size_t count = car->GetChildren(children, hide, filter, filters);
        EXPECT_EQ(car->GetNumChildren(hide, filter, filters), count);
        EXPECT_EQ(car->HasChildren(hide, filter, filters), count != 0);
        Names names = NamesOf(children);
        names.push_back(std::to_string(count));
        return names;
    }
    Names ByMaps(const ChildFilterMap& hide, const ChildFilterMap& filter) {
        Items children;
        const size_t count = car->GetChildren(children, hide, filter);
        EXPECT_EQ(car->GetNumChildren(hide, filter), count);
        Names names = NamesOf(children);
        names.push_back(std::to_string(count));
        EXPECT_EQ(ByMaps(hide, filter, ItemFilterList()), names);
        return names;
    }
    static Names Parents(Item* item, const kxString& relation, bool flag = false) {
        Items parents;
        const size_t count = item->GetParents(parents, relation, flag);
        EXPECT_EQ(count, parents.size());
        return NamesOf(parents);
    }

    TemporaryFolder home;
    Host host{home.Path()};
    Controller* anna = host.Create("Demo");
    Item* car = nullptr;
    Item* mesh = nullptr;
    Item* cad = nullptr;
    Item* manual = nullptr;
};

const Names ALL_GROUPS{"[representations]", "[files]", "[references]", "[parts]", "[connections]"};

}  // namespace

TEST_F(ItemChildren, WithoutAGroupAreTheGroupsInTheDefinitionsOrder) {
    Items groups;
    EXPECT_EQ(car->GetChildren(groups), 5u);
    EXPECT_EQ(NamesOf(groups), ALL_GROUPS);
    // Two of them are empty.
    EXPECT_EQ(car->GetNumChildren(), 5u);
    EXPECT_EQ(groups[0]->GetNumChildren(), 2u);
    EXPECT_EQ(groups[4]->GetNumChildren(), 0u);
    Items again;
    car->GetChildren(again);
    EXPECT_EQ(again, groups);
}

TEST_F(ItemChildren, OfAGroupComeInTheOrderInWhichTheyWereAdded) {
    Items children;
    EXPECT_EQ(car->GetChildren(children, "parts"), 3u);
    EXPECT_THAT(NamesOf(children), ElementsAre("wheel", "axle", "door"));
    EXPECT_EQ(car->GetNumChildren("parts"), 3u);
    EXPECT_TRUE(car->HasChildren("parts"));
    EXPECT_FALSE(car->HasChildren("connections"));
    // Appended, and the answer is the size of all.
    EXPECT_EQ(car->GetChildren(children, "representations"), 5u);
    EXPECT_THAT(NamesOf(children), ElementsAre("wheel", "axle", "door", "mesh", "cad"));
    EXPECT_EQ(children[3], mesh);
}

TEST_F(ItemChildren, OfAGroupAreThinnedOutByAQueryExpression) {
    Items children;
    EXPECT_EQ(car->GetChildren(children, "parts", "name like a || name == door"), 2u);
    EXPECT_THAT(NamesOf(children), ElementsAre("axle", "door"));
    EXPECT_EQ(car->GetChildren(children, "parts", "name =="), 0u);
    EXPECT_EQ(children.size(), 2u);
}

TEST_F(ItemChildren, OfAnUnknownGroupAreNone) {
    Items children;
    EXPECT_EQ(car->GetChildren(children, "wings"), 0u);
    EXPECT_EQ(car->GetNumChildren("wings"), 0u);
    EXPECT_THAT(children, IsEmpty());
}

TEST_F(ItemChildren, OfAGroupItemAreThoseOfTheGroup) {
    Items groups;
    car->GetChildren(groups);
    Items children;
    EXPECT_EQ(groups[3]->GetChildren(children), 3u);
    EXPECT_THAT(NamesOf(children), ElementsAre("wheel", "axle", "door"));
}

TEST_F(ItemChildren, OfHiddenGroupsComeInTheMapsOrderInsteadOfAllGroups) {
    EXPECT_THAT(ByMaps({{"UDMAssemblyDM", {"parts", "files"}}}, {}),
                ElementsAre("wheel", "axle", "door", "manual", "4"));
    EXPECT_THAT(ByMaps({{"UDMAssemblyDM", {"files", "parts"}}}, {}),
                ElementsAre("manual", "wheel", "axle", "door", "4"));
    // The definition's name counts, not that of its base.
    Names groups = ALL_GROUPS;
    groups.emplace_back("5");
    EXPECT_EQ(ByMaps({{"UDMPart", {"files"}}}, {}), groups);
}

TEST_F(ItemChildren, OfAHideMapWithoutGroupsAreNone) {
    EXPECT_THAT(ByMaps({{"UDMAssemblyDM", {}}}, {}), ElementsAre("0"));
}

TEST_F(ItemChildren, OfAHideMapWithAnUnknownGroupAnswerNoneBehindThoseBeforeIt) {
    const ChildFilterMap hide{{"UDMAssemblyDM", {"files", "wings", "parts"}}};
    EXPECT_THAT(ByMaps(hide, {}), ElementsAre("manual", "0"));
}

TEST_F(ItemChildren, OfAFilterMapAreItsGroupsInTheDefinitionsOrder) {
    EXPECT_THAT(ByMaps({}, {{"UDMAssemblyDM", {"connections", "parts", "files"}}}),
                ElementsAre("[files]", "[parts]", "[connections]", "3"));
    EXPECT_THAT(ByMaps({}, {{"UDMAssemblyDM", {"wings", "parts"}}}), ElementsAre("[parts]", "1"));
    EXPECT_THAT(ByMaps({}, {{"UDMAssemblyDM", {}}}), ElementsAre("0"));
}

TEST_F(ItemChildren, TheHideMapGoesBeforeTheFilterMap) {
    EXPECT_THAT(ByMaps({{"UDMAssemblyDM", {"files"}}}, {{"UDMAssemblyDM", {"parts"}}}),
                ElementsAre("manual", "1"));
}

TEST_F(ItemChildren, FiltersAskForATypeAnExpressionOrBoth) {
    const ChildFilterMap hide{{"UDMAssemblyDM", {"representations", "parts"}}};
    ItemFilterList filters;
    filters.Add("UDMAssemblyDM", "representations", "UDMRepPartCad", "");
    EXPECT_THAT(ByMaps(hide, {}, filters), ElementsAre("cad", "wheel", "axle", "door", "4"));
    filters.Add("UDMAssemblyDM", "parts", "", "name != axle");
    EXPECT_THAT(ByMaps(hide, {}, filters), ElementsAre("cad", "wheel", "door", "3"));
    filters.Add("UDMAssemblyDM", "parts", "UDMPart", "name like d");
    EXPECT_THAT(ByMaps(hide, {}, filters), ElementsAre("cad", "door", "2"));
    filters.Add("UDMAssemblyDM", "parts", "UDMAssemblyDM", "name like d");
    EXPECT_THAT(ByMaps(hide, {}, filters), ElementsAre("cad", "1"));
    // Of every group that has no filter of its own.
    filters.Clear();
    filters.Add("UDMAssemblyDM", "", "UDMRepPartMesh", "");
    EXPECT_THAT(ByMaps(hide, {}, filters), ElementsAre("mesh", "1"));
    // Of another parent.
    filters.Clear();
    filters.Add("UDMPart", "parts", "UDMProject", "");
    EXPECT_THAT(ByMaps(hide, {}, filters),
                ElementsAre("mesh", "cad", "wheel", "axle", "door", "5"));
}

TEST_F(ItemChildren, AnExpressionOfAlternativesIsBoundToTheTypeByItsFirstOne) {
    // Type and expression are joined without parentheses.
    ItemFilterList filters;
    filters.Add(
        "UDMAssemblyDM", "representations", "UDMRepPartCad", "name == none || name == mesh");
    EXPECT_THAT(ByMaps({{"UDMAssemblyDM", {"representations"}}}, {}, filters),
                ElementsAre("mesh", "1"));
}

TEST_F(ItemChildren, FiltersDoNotTouchGroupItems) {
    ItemFilterList filters;
    filters.Add("UDMAssemblyDM", "", "UDMProject", "");
    EXPECT_THAT(ByMaps({}, {{"UDMAssemblyDM", {"parts"}}}, filters), ElementsAre("[parts]", "1"));
}

TEST_F(ItemChildren, AFilterWithAFaultyExpressionFindsNothing) {
    ItemFilterList filters;
    filters.Add("UDMAssemblyDM", "parts", "", "name ==");
    EXPECT_THAT(ByMaps({{"UDMAssemblyDM", {"parts"}}}, {}, filters), ElementsAre("0"));
}

TEST_F(ItemChildren, TheControllersFiltersAreWhatItWasGiven) {
    ItemFilterList filters;
    filters.Add("UDMAssemblyDM", "parts", "UDMPart", "");
    anna->SetFilterMapForChildren(filters);
    EXPECT_EQ(filters.size(), 1u);
    Items hits;
    anna->Query("name == Car", hits, -1, kxct::QUERY_ATTRIBUTES, 0, 0, false, false);
    EXPECT_THAT(NamesOf(hits), ElementsAre("Car"));
}

TEST_F(ItemChildren, AParentIsAskedForByGroupCategoryAndRelation) {
    Item* folder = anna->CreateFolder("/Cars");
    Item* metals = anna->CreateContent("Categories", "Metals");
    Item* other = anna->CreateContent("UDMPart", "other");
    Items references{cad};
    ASSERT_TRUE(anna->MoveContent(cad, folder));
    ASSERT_TRUE(anna->AddClassification(cad, metals));
    anna->AddReferences(other, references, {"references"});
    ASSERT_TRUE(anna->AddRelation(other, cad, "made from"));
    EXPECT_THAT(Parents(cad, "owner"), ElementsAre("Car"));
    EXPECT_THAT(Parents(cad, "representations"), ElementsAre("Car"));
    EXPECT_THAT(Parents(cad, "parts"), IsEmpty());
    EXPECT_THAT(Parents(cad, "folder"), ElementsAre("Cars"));
    EXPECT_THAT(Parents(cad, "category"), ElementsAre("Metals"));
    EXPECT_THAT(Parents(cad, "reference"), ElementsAre("other"));
    EXPECT_THAT(Parents(cad, "references"), ElementsAre("other"));
    EXPECT_THAT(Parents(cad, "made from"), ElementsAre("other"));
    Items parents{car};
    EXPECT_EQ(cad->GetParents(parents, "folder", false), 2u);
    EXPECT_EQ(parents.front(), car);
    EXPECT_EQ(cad->GetParent(false), car);
}

TEST_F(ItemChildren, OnlyTheContentItselfKnowsOfItsParent) {
    EXPECT_TRUE(static_cast<kxct::ContentItem*>(cad)->HasParent());
    EXPECT_FALSE(static_cast<kxct::ContentItem*>(car)->HasParent());
    EXPECT_FALSE(cad->HasParent());
    EXPECT_EQ(car->GetParent(false), nullptr);
    EXPECT_EQ(car->GetParent(true), nullptr);
}

TEST_F(ItemChildren, AParentOfAnOlderRevisionIsFoundWithTheFlag) {
    Items cars{car};
    Item* wheel = nullptr;
    {
        Items parts;
        car->GetChildren(parts, "parts");
        wheel = parts.front();
    }
    ASSERT_TRUE(anna->Publish(cars, "", true));
    ASSERT_TRUE(car->Remove(wheel));
    EXPECT_THAT(Parents(wheel, "parts"), IsEmpty());
    EXPECT_THAT(Parents(wheel, "parts", true), ElementsAre("Car"));
    EXPECT_EQ(car->GetNumChildren("parts"), 2u);
    ASSERT_TRUE(anna->Revert(cars));
    EXPECT_THAT(Parents(wheel, "parts"), ElementsAre("Car"));
}

TEST_F(ItemChildren, AReferenceShowsUnderItsGroup) {
    Items targets{mesh};
    anna->AddReferences(car, targets, {"references"});
    Items children;
    EXPECT_EQ(car->GetChildren(children, "references"), 1u);
    EXPECT_EQ(children.front(), mesh);
    EXPECT_THAT(ByMaps({{"UDMAssemblyDM", {"references"}}}, {}), ElementsAre("mesh", "1"));
}
