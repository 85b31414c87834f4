// Operations of the controller on sets of items, on a real library: life, places, links, files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxctinterfaces/Item.h>

#include <fstream>

#include "Host.h"

using kxct::Controller;
using kxct::Item;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using Items = kxStlVector<Item*>;
using Texts = kxStlVector<kxString>;
using Names = std::vector<std::string>;

kxString Revision(const Item* item) {
    return item->GetUID().substr(item->GetUID().find(':'));
}

Names NamesOf(const Items& items) {
    Names names;
    for (const Item* item : items) {
        names.push_back(item->GetDisplayName());
    }
    return names;
}

class ItemOperations : public testing::Test {
  protected:
    Item* Create(const kxString& name, const kxString& type = "UDMPart") {
        return anna->CreateContent(type, name);
    }
    Item* CreatePublished(const kxString& name, const kxString& type = "UDMPart") {
        Items items{Create(name, type)};
        EXPECT_TRUE(anna->Publish(items, "", false));
        return items.front();
    }
    // An item that stands for no content.
    Item* Group(Item* item) {
        Items groups;
        item->GetChildren(groups);
        EXPECT_FALSE(groups.empty());
        return groups.empty() ? nullptr : groups.front();
    }
    static Names Contents(Item* place, const kxString& group) {
        Items children;
        place->GetChildren(children, group);
        return NamesOf(children);
    }

    TemporaryFolder home;
    Host host{home.Path()};
    Controller* anna = host.Create("Demo");
};

}  // namespace

TEST_F(ItemOperations, StepsOfLifeTakeTheContentsThatTheyFitAndSkipTheRest) {
    Item* draft = Create("draft");
    Item* published = CreatePublished("published");
    Item* folder = anna->CreateFolder("/F");
    Items items{nullptr, draft, Group(draft), published, folder};
    ASSERT_TRUE(anna->CheckOut(items, "again"));
    EXPECT_EQ(Revision(draft), ":0");
    EXPECT_EQ(Revision(published), ":2");
    ASSERT_TRUE(anna->Save(items, "half"));
    EXPECT_EQ(draft->GetAttributeValue("smd_comment").GetString(), "half");
    EXPECT_EQ(published->GetAttributeValue("smd_comment").GetString(), "half");
    ASSERT_TRUE(anna->Publish(items, "done", false));
    EXPECT_EQ(Revision(draft), ":1");
    EXPECT_EQ(Revision(published), ":2");
    EXPECT_TRUE(folder->IsEditable());
    // Nothing is editable but the folder, to which all steps are nothing.
    ASSERT_TRUE(anna->Save(items, "more"));
    EXPECT_EQ(draft->GetAttributeValue("smd_comment").GetString(), "done");
    ASSERT_TRUE(anna->Revert(items));
    EXPECT_EQ(Revision(published), ":2");
    Items none;
    EXPECT_TRUE(anna->CheckOut(none, ""));
    EXPECT_TRUE(anna->Save(none, ""));
    EXPECT_TRUE(anna->Publish(none, "", false));
    EXPECT_TRUE(anna->Revert(none));
    EXPECT_FALSE(anna->Delete(none));
}

TEST_F(ItemOperations, TheFirstFailureEndsAStepAndWhatWasDoneStays) {
    Item* first = CreatePublished("first");
    Item* second = CreatePublished("second");
    Item* third = CreatePublished("third");
    Controller* ben = host.Create("Demo", "theirs", "ben");
    Items locked{ben->GetItem(second->GetUID(), true)};
    ASSERT_TRUE(ben->CheckOut(locked, ""));
    Items items{first, second, third};
    EXPECT_FALSE(anna->CheckOut(items, ""));
    EXPECT_EQ(Revision(first), ":2");
    EXPECT_EQ(Revision(second), ":1");
    EXPECT_EQ(Revision(third), ":1");
    Items drafts{first, Create("draft")};
    // The draft was never published and has nothing to go back to.
    EXPECT_FALSE(anna->Revert(drafts));
    EXPECT_TRUE(drafts[1]->IsEditable());
    EXPECT_EQ(Revision(anna->GetItem(second->GetUID(), true)), ":1");
}

TEST_F(ItemOperations, OnlyRootsAreDeleted) {
    Item* car = Create("car", "UDMAssemblyDM");
    Item* wheel = Create("wheel");
    ASSERT_TRUE(car->Add(wheel, "parts"));
    Items owned{wheel, nullptr, Group(car)};
    EXPECT_FALSE(anna->Delete(owned));
    EXPECT_NE(anna->GetItem(wheel->GetUID(), true), nullptr);
    const kxString uid = car->GetUID();
    Items both{wheel, car};
    EXPECT_TRUE(anna->Delete(both));
    EXPECT_EQ(anna->GetItem(uid, true), nullptr);
    // It was no root when its turn came. Parts stay, and now it is one.
    Items left{anna->GetItem(wheel->GetUID(), true)};
    ASSERT_NE(left.front(), nullptr);
    EXPECT_TRUE(anna->Delete(left));
}

TEST_F(ItemOperations, ADropIsRefusedBesideANamesakeUnderAPublishedClassificationOnly) {
    Item* metals = Create("Metals", "Categories");
    Item* steel = Create("steel");
    Item* namesake = Create("steel");
    ASSERT_TRUE(anna->AddClassification(steel, metals));
    EXPECT_TRUE(anna->DropAllowed(metals, namesake));
    Items classes{metals};
    ASSERT_TRUE(anna->Publish(classes, "", false));
    EXPECT_FALSE(anna->DropAllowed(metals, namesake));
    EXPECT_FALSE(anna->DropAllowed(metals, steel));
    EXPECT_TRUE(anna->DropAllowed(metals, Create("iron")));
    // The display name counts.
    ASSERT_TRUE(namesake->SetAttributeValue("displayname", kxString("stainless")));
    EXPECT_TRUE(anna->DropAllowed(metals, namesake));
    Item* folder = anna->CreateFolder("/F");
    ASSERT_TRUE(anna->MoveContent(steel, folder));
    EXPECT_TRUE(anna->DropAllowed(folder, steel));
    EXPECT_TRUE(anna->DropAllowed(steel, namesake));
    EXPECT_FALSE(anna->DropAllowed(nullptr, steel));
    EXPECT_FALSE(anna->DropAllowed(metals, nullptr));
}

TEST_F(ItemOperations, OrganizePutsContentsIntoAFolderAndPublishesThem) {
    Item* folder = anna->CreateFolder("/F");
    Items items{Create("draft"), CreatePublished("published"), anna->CreateFolder("/G")};
    ASSERT_TRUE(anna->Organize(items, folder));
    EXPECT_THAT(Contents(folder, "folder"), ElementsAre("draft", "published", "G"));
    EXPECT_EQ(Revision(items[0]), ":1");
    EXPECT_EQ(Revision(items[1]), ":2");
    EXPECT_FALSE(items[1]->IsEditable());
    EXPECT_EQ(anna->GetFolderFullPath(items[2]), "/F/G");
    Items none;
    EXPECT_TRUE(anna->Organize(none, folder));
}

TEST_F(ItemOperations, OrganizePutsContentsUnderAClassification) {
    Item* metals = CreatePublished("Metals", "Categories");
    Items items{Create("steel"), CreatePublished("iron")};
    ASSERT_TRUE(anna->Organize(items, metals));
    EXPECT_THAT(Contents(metals, "category"), ElementsAre("steel", "iron"));
    EXPECT_EQ(Revision(metals), ":1");
    // A namesake among the items: nothing at all is touched.
    Items more{Create("copper"), Create("steel")};
    EXPECT_FALSE(anna->Organize(more, metals));
    EXPECT_EQ(Revision(more[0]), ":0");
    EXPECT_THAT(Contents(metals, "category"), ElementsAre("steel", "iron"));
}

TEST_F(ItemOperations, OrganizeNeedsAFolderOrAClassification) {
    Items none;
    Items one{Create("a")};
    EXPECT_FALSE(anna->Organize(none, Create("part")));
    EXPECT_FALSE(anna->Organize(one, Create("part")));
    EXPECT_FALSE(anna->Organize(none, nullptr));
    EXPECT_FALSE(anna->Organize(one, nullptr));
    EXPECT_FALSE(anna->Organize(none, Group(one.front())));
    EXPECT_EQ(Revision(one.front()), ":0");
}

TEST_F(ItemOperations, OrganizeStopsAtAMoveThatFailsAndKeepsWhatWasDone) {
    Item* outer = anna->CreateFolder("/Outer");
    Item* inner = anna->CreateFolder("/Outer/Inner");
    Items items{CreatePublished("part"), outer, CreatePublished("late")};
    // A folder can't go into one that lies in it.
    EXPECT_FALSE(anna->Organize(items, inner));
    EXPECT_THAT(Contents(inner, "folder"), ElementsAre("part"));
    EXPECT_EQ(Revision(items[2]), ":1");
    EXPECT_EQ(anna->GetFolderFullPath(inner), "/Outer/Inner");
}

TEST_F(ItemOperations, OrganizeOfWhatSomebodyElseHoldsIsFalse) {
    Item* part = CreatePublished("part");
    Controller* ben = host.Create("Demo", "theirs", "ben");
    Items bens{ben->GetItem(part->GetUID(), true)};
    ASSERT_TRUE(ben->CheckOut(bens, ""));
    Items items{part};
    EXPECT_FALSE(anna->Organize(items, anna->CreateFolder("/F")));
    EXPECT_THAT(Contents(anna->GetFolder("/F", false), "folder"), IsEmpty());
}

TEST_F(ItemOperations, AContentLiesInOneFolderAndMustBeEditableToMove) {
    Item* a = anna->CreateFolder("/A");
    Item* b = anna->CreateFolder("/B");
    Item* part = Create("part");
    ASSERT_TRUE(anna->MoveContent(part, a));
    ASSERT_TRUE(anna->MoveContent(part, b));
    EXPECT_THAT(Contents(a, "folder"), IsEmpty());
    EXPECT_THAT(Contents(b, "folder"), ElementsAre("part"));
    Items items{part};
    ASSERT_TRUE(anna->Publish(items, "", false));
    EXPECT_FALSE(anna->MoveContent(part, a));
    EXPECT_THAT(Contents(b, "folder"), ElementsAre("part"));
    EXPECT_FALSE(anna->MoveContent(nullptr, a));
    EXPECT_FALSE(anna->MoveContent(part, nullptr));
    EXPECT_FALSE(anna->MoveContent(Group(part), a));
    EXPECT_FALSE(anna->MoveContent(part, Create("no folder")));
}

TEST_F(ItemOperations, AFolderMovesAsAWholeAndNeverIntoItself) {
    Item* a = anna->CreateFolder("/A");
    Item* b = anna->CreateFolder("/A/B");
    Item* c = anna->CreateFolder("/C");
    EXPECT_FALSE(anna->MoveContent(a, b));
    EXPECT_FALSE(anna->MoveContent(a, a));
    ASSERT_TRUE(anna->MoveContent(a, c));
    EXPECT_EQ(anna->GetFolderFullPath(b), "/C/A/B");
    EXPECT_EQ(anna->GetFolder("/C/A/B", false), b);
    EXPECT_EQ(anna->GetFolder("/A", false), nullptr);
    EXPECT_EQ(anna->GetFolderFullPath(Create("part")), "");
    EXPECT_EQ(anna->GetFolderFullPath(nullptr), "");
}

TEST_F(ItemOperations, AContentIsUnderAnyNumberOfClassifications) {
    Item* metals = CreatePublished("Metals", "Categories");
    Item* sheets = CreatePublished("Sheets", "Categories");
    Item* part = Create("part");
    ASSERT_TRUE(anna->AddClassification(part, metals));
    ASSERT_TRUE(anna->AddClassification(part, sheets));
    EXPECT_FALSE(anna->AddClassification(part, sheets));
    EXPECT_THAT(Contents(metals, "category"), ElementsAre("part"));
    Items places;
    EXPECT_EQ(part->GetParents(places, "category", false), 2u);
    ASSERT_TRUE(anna->RemoveClassification(part, metals));
    EXPECT_FALSE(anna->RemoveClassification(part, metals));
    EXPECT_THAT(Contents(metals, "category"), IsEmpty());
    EXPECT_THAT(Contents(sheets, "category"), ElementsAre("part"));
    EXPECT_FALSE(anna->AddClassification(part, anna->CreateFolder("/F")));
    EXPECT_FALSE(anna->AddClassification(Group(part), metals));
    EXPECT_FALSE(anna->AddClassification(part, nullptr));
    EXPECT_FALSE(anna->AddClassification(nullptr, metals));
}

TEST_F(ItemOperations, ClassificationsFormATreeWithoutCircles) {
    Item* metals = Create("Metals", "Categories");
    Item* steels = Create("Steels", "Categories");
    ASSERT_TRUE(anna->AddClassification(steels, metals));
    EXPECT_FALSE(anna->AddClassification(metals, steels));
    EXPECT_FALSE(anna->AddClassification(metals, metals));
    Items top;
    anna->GetOtherClassifications(top);
    EXPECT_THAT(NamesOf(top), ElementsAre("Metals"));
}

TEST_F(ItemOperations, ChildrenAreAddedEachToItsGroup) {
    Item* car = Create("car", "UDMAssemblyDM");
    Items children{Create("wheel"), Group(car), Create("cad", "UDMRepPartCad")};
    EXPECT_FALSE(anna->AddChildren(car, children, {"parts", "parts"}));
    EXPECT_THAT(Contents(car, "parts"), IsEmpty());
    EXPECT_TRUE(anna->AddChildren(car, children, {"parts", "parts", "representations"}));
    EXPECT_THAT(Contents(car, "parts"), ElementsAre("wheel"));
    EXPECT_THAT(Contents(car, "representations"), ElementsAre("cad"));
    Items more{Create("door"), Create("deck", "UDMDSFileDeck"), Create("roof")};
    EXPECT_FALSE(anna->AddChildren(car, more, {"parts", "parts", "parts"}));
    // What came before the failure stays.
    EXPECT_THAT(Contents(car, "parts"), ElementsAre("wheel", "door"));
    EXPECT_FALSE(anna->AddChildren(Group(car), more, {"parts", "parts", "parts"}));
    EXPECT_FALSE(anna->AddChildren(nullptr, more, {"parts", "parts", "parts"}));
}

TEST_F(ItemOperations, AChildAboveItsParentIsRefused) {
    Item* car = Create("car", "UDMAssemblyDM");
    Item* chassis = Create("chassis", "UDMAssemblyDM");
    Items inner{chassis};
    Items outer{car};
    ASSERT_TRUE(anna->AddChildren(car, inner, {"parts"}));
    EXPECT_FALSE(anna->AddChildren(chassis, outer, {"parts"}));
    EXPECT_FALSE(anna->AddChildren(car, outer, {"parts"}));
    EXPECT_THAT(Contents(chassis, "parts"), IsEmpty());
}

TEST_F(ItemOperations, ReferencesAreAddedListedAndRemovedInLists) {
    Item* wheel = Create("wheel");
    Item* tyre = Create("tyre");
    Item* rim = Create("rim");
    Items targets{tyre, nullptr, Group(wheel), rim};
    anna->AddReferences(wheel, targets, {"references"});
    EXPECT_THAT(Contents(wheel, "references"), IsEmpty());
    anna->AddReferences(wheel, targets, {"references", "references", "references", "references"});
    Texts roles{"references", "nothing"};
    Items found;
    anna->GetReferences(found, roles, wheel);
    EXPECT_THAT(NamesOf(found), ElementsAre("tyre", "rim"));
    EXPECT_EQ(found.front(), tyre);
    Texts none;
    anna->GetReferences(found, none, wheel);
    EXPECT_THAT(found, IsEmpty());
    Texts all{""};
    anna->GetReferences(found, all, wheel);
    EXPECT_THAT(NamesOf(found), ElementsAre("tyre", "rim"));
    Items gone{nullptr, tyre};
    anna->RemoveReferences(gone, wheel);
    EXPECT_THAT(Contents(wheel, "references"), ElementsAre("rim"));
}

TEST_F(ItemOperations, WhoRefersIsListedWithItsTypes) {
    Item* wheel = Create("wheel");
    Item* study = Create("study", "UDMSimulation");
    Item* cad = Create("cad", "UDMRepPartCad");
    Items targets{cad};
    anna->AddReferences(wheel, targets, {"references"});
    anna->AddReferences(study, targets, {"representations"});
    Items found;
    Texts types;
    anna->GetReferredBy(found, types, cad);
    EXPECT_THAT(NamesOf(found), ElementsAre("wheel", "study"));
    EXPECT_THAT(types, ElementsAre("references", "representations"));
    types = {"representations"};
    anna->GetReferredBy(found, types, cad);
    EXPECT_THAT(NamesOf(found), ElementsAre("study"));
    Items kept{wheel};
    anna->GetReferredBy(kept, types, Group(cad));
    anna->GetReferredBy(kept, types, nullptr);
    EXPECT_THAT(NamesOf(kept), ElementsAre("wheel"));
}

TEST_F(ItemOperations, RelationsAreMadeAndRemovedByTheirEnds) {
    Item* wheel = Create("wheel");
    Item* tyre = Create("tyre");
    EXPECT_TRUE(anna->AddRelation(wheel, tyre, "fits"));
    EXPECT_FALSE(anna->AddRelation(wheel, tyre, "fits"));
    EXPECT_FALSE(anna->AddRelation(wheel, tyre, ""));
    EXPECT_FALSE(anna->AddRelation(wheel, Group(tyre), "fits"));
    EXPECT_FALSE(anna->AddRelation(nullptr, tyre, "fits"));
    EXPECT_FALSE(anna->AddRelation(wheel, nullptr, "fits"));
    // It follows to the newest revisions.
    Items both{wheel, tyre};
    ASSERT_TRUE(anna->Publish(both, "", true));
    Items parents;
    EXPECT_EQ(tyre->GetParents(parents, "fits", false), 1u);
    EXPECT_EQ(parents.front(), wheel);
    EXPECT_FALSE(anna->RemoveRelation(tyre, wheel));
    EXPECT_TRUE(anna->RemoveRelation(wheel, tyre));
    EXPECT_FALSE(anna->RemoveRelation(wheel, tyre));
}

TEST_F(ItemOperations, ALocalLibraryIsAlwaysInSync) {
    Item* part = CreatePublished("part");
    anna->Synchronize(part);
    EXPECT_TRUE(anna->GetSyncStatus(part));
    EXPECT_FALSE(anna->GetSyncStatus(Group(part)));
    EXPECT_EQ(Revision(part), ":1");
}

TEST_F(ItemOperations, AFileIsAttachedToAContentOrToANewChildOfIt) {
    const std::string path = (home.Path() / "plan.stp").string();
    std::ofstream(path) << "solid";
    Item* cad = Create("cad", "UDMRepPartCad");
    EXPECT_TRUE(anna->AddFile(cad, path, false));
    Texts names;
    EXPECT_TRUE(cad->GetDocumentNames(names));
    EXPECT_THAT(names, ElementsAre("plan.stp"));
    EXPECT_TRUE(anna->AddFile(cad, "UDMDSFileCAD", "step", path, false, "files"));
    Items files;
    ASSERT_EQ(cad->GetChildren(files, "files"), 1u);
    EXPECT_EQ(files.front()->GetDisplayName(), "plan.stp");
    EXPECT_EQ(files.front()->GetAttributeValue("filetype").GetString(), "step");
    EXPECT_FALSE(anna->AddFile(cad, "NoSuchThing", "step", path, false, "files"));
    EXPECT_EQ(cad->GetNumChildren("files"), 1u);
    EXPECT_FALSE(anna->AddFile(Group(cad), path, false));
    EXPECT_FALSE(anna->AddFile(cad, path + " nowhere", false));
}

TEST_F(ItemOperations, WithoutASessionNothingIsDone) {
    Controller* dead = host.Open("Nothing");
    Item* part = Create("part");
    Items items{part};
    Texts texts{"references"};
    EXPECT_FALSE(dead->CheckOut(items, ""));
    EXPECT_FALSE(dead->Publish(items, "", false));
    EXPECT_FALSE(dead->Delete(items));
    EXPECT_FALSE(dead->Organize(items, part));
    EXPECT_FALSE(dead->DropAllowed(part, part));
    EXPECT_FALSE(dead->MoveContent(part, part));
    EXPECT_FALSE(dead->AddRelation(part, part, "fits"));
    EXPECT_FALSE(dead->RemoveRelation(part, part));
    EXPECT_FALSE(dead->AddClassification(part, part));
    EXPECT_EQ(dead->GetFolderFullPath(part), "");
    EXPECT_EQ(Revision(part), ":0");
}
