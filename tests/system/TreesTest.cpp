// The trees that a view shows of a real library: structure, groups, revisions and history.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxctinterfaces/ItemFilterList.h>

#include "Host.h"
#include "tests/items/TreeView.h"

using kxct::ChildFilterMap;
using kxct::Controller;
using kxct::Item;
using testing::ElementsAre;

namespace {

using Items = kxStlVector<Item*>;
using Relations = kxct::test::TreeView::Relations;

class Trees : public testing::Test {
  protected:
    Trees() {
        Put(car, Create("UDMPart", "wheel", "rubber"), "parts");
        Put(car, Create("UDMPart", "axle", "steel"), "parts");
        Put(car, Create("Document", "manual", ""), "files");
    }

    Item* Create(const kxString& definition, const kxString& name, const kxString& material) {
        Item* item = anna->CreateContent(definition, name);
        if (!material.empty()) {
            EXPECT_TRUE(item->SetAttributeValue("material", material)) << name;
        }
        return item;
    }
    static void Put(Item* parent, Item* child, const kxString& group) {
        EXPECT_TRUE(parent->Add(child, group)) << child->GetDisplayName();
    }
    Items Find(const kxString& query, int versions = -1) {
        Items hits;
        anna->Query(query, hits, versions, kxct::QUERY_ATTRIBUTES, 0, 0, false, false);
        return hits;
    }
    std::string Draw(const Items& items,
                     bool group = false,
                     kxct::ManagerType type = kxct::MANAGER_DEFAULT) {
        Items newItems;
        Items deletedItems;
        Relations newRelations;
        Relations deletedRelations;
        bool more = false;
        const size_t count = anna->GetStructure(
            type, items, newItems, deletedItems, newRelations, deletedRelations, more, group);
        EXPECT_EQ(count, newItems.size());
        kxct::test::TreeView view;
        view.Show(items);
        view.Apply(newItems, deletedItems, newRelations, deletedRelations);
        return view.Draw();
    }
    // Leaves the revisions 1 to 3, and answers the base UID.
    kxString PublishThrice(Item* item) {
        const kxString base = item->GetUID().substr(0, item->GetUID().find(':'));
        Items items{item};
        for (int round = 0; round < 3; ++round) {
            EXPECT_TRUE(anna->Publish(items, "", round < 2));
        }
        return base;
    }

    TemporaryFolder home;
    Host host{home.Path()};
    Controller* anna = host.Create("Demo");
    Item* car = anna->CreateContent("UDMAssemblyDM", "car");
};

}  // namespace

TEST_F(Trees, AnAssemblyShowsItsGroupsAndTheirChildren) {
    anna->SetFilterMap({{"UDMAssemblyDM", {"files", "parts"}}, {"UDMPart", {}}, {"Document", {}}});
    EXPECT_EQ(Draw({car}), R"(
car
  files
    manual
  parts
    wheel
    axle
)");
}

TEST_F(Trees, HitsOfAQueryAreGroupedByTheValuesOfAttributes) {
    anna->SetFilterMap({{"UDMPart", {}}});
    Create("UDMPart", "door", "steel");
    anna->SetGroupByAttributes({"material", "displayname"});
    EXPECT_EQ(Draw(Find("type == UDMPart"), true), R"(
[rubber]
  wheel
[steel]
  axle
  door
)");
}

TEST_F(Trees, RevisionsThatAQueryListsComeUnderTheirContent) {
    anna->SetFilterMap({{"Document", {}}});
    const kxString base = PublishThrice(anna->CreateContent("Document", "report"));
    anna->CreateContent("Document", "note");
    const Items hits = Find("name == report || name == note", 0);
    EXPECT_EQ(hits.size(), 4U);
    EXPECT_EQ(Draw(hits, true), "\nnote\nall of " + base + "\n  report\n  report\n  report\n");
}

TEST_F(Trees, BranchesStandInTheHistoryBelowTheirOrigin) {
    const kxString base = PublishThrice(anna->CreateContent("Document", "report"));
    Items second{anna->GetItem(base + ":2", false)};
    ASSERT_TRUE(anna->CheckOut(second, ""));
    Items history;
    ASSERT_EQ(anna->GetHistory({base}, history), 4u);
    EXPECT_EQ(Draw({history[0]}, false, kxct::MANAGER_HISTORY), R"(
report
  Branches
    report
)");
}

TEST_F(Trees, HitsWithoutChildrenUnderTheFiltersAreLeftOut) {
    Item* van = anna->CreateContent("UDMAssemblyDM", "van");
    Put(van, Create("UDMPart", "hook", "steel"), "parts");
    anna->CreateContent("UDMAssemblyDM", "empty");
    anna->SetHideMap({{"UDMAssemblyDM", {"parts"}}});
    kxct::ItemFilterList filters;
    filters.Add("UDMAssemblyDM", "parts", "UDMPart", "attrib.material == rubber");
    anna->SetFilterMapForChildren(filters);
    EXPECT_THAT(Find("type == UDMAssemblyDM || name == manual"), ElementsAre(car, testing::_));
    EXPECT_THAT(Find("type == UDMAssemblyDM", 0), ElementsAre(car));
}
