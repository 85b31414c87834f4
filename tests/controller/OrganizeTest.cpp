// Dropping, organising, moving, classifying, folder paths.
#include "tests/controller/ControllerFixture.h"

namespace kxct::test {
namespace {

using mock::IsHandle;
using testing::_;
using testing::InSequence;
using testing::Return;

class ControllerImplOrganize : public ControllerTest {
  protected:
    ControllerImplOrganize() {
        Entity("A:1", "UDMPart", "Bracket").isEditable = true;
        Entity("B:1", "UDMPart", "Bolt").isEditable = true;
        Entity("F:0", "Foldertype", "Decks");
        Entity("OF:0", "OwnFolder", "Own decks");
        Entity("C:0", "Categories", "Load");
        Entity("C:3", "Categories", "Load");
        Entity("OC:3", "OwnCategory", "Own load");
        part = ItemOf("A:1");
        bolt = ItemOf("B:1");
        items = {part, bolt};
    }

    // The children of a classification have these display names.
    void Children(const kxString& uid, std::initializer_list<const char*> names) {
        Handles children;
        for (const char* name : names) {
            children.push_back(
                mock::NewHandle("K" + std::to_string(children.size()) + ":1", "UDMPart", name));
        }
        ON_CALL(*profile, GetChildren(_, IsHandle(uid), _, _)).WillByDefault(Give(children));
    }

    Item* part = nullptr;
    Item* bolt = nullptr;
    Items items;
};

TEST_F(ControllerImplOrganize, DropNeedsTargetAndDragged) {
    EXPECT_FALSE(controller->DropAllowed(nullptr, part));
    EXPECT_FALSE(controller->DropAllowed(ItemOf("F:0"), nullptr));
}

TEST_F(ControllerImplOrganize, EveryTargetButAClassificationTakesEverything) {
    EXPECT_CALL(*profile, GetChildren).Times(0);
    for (const char* uid : {"F:0", "OF:0", "A:1", "OC:3"}) {
        EXPECT_TRUE(controller->DropAllowed(ItemOf(uid), part)) << uid;
    }
    EXPECT_TRUE(controller->DropAllowed(GroupNodeOf("A:1"), part));
}

TEST_F(ControllerImplOrganize, AClassificationOfRevisionZeroTakesASecondChildOfOneName) {
    Children("C:0", {"Bracket"});
    EXPECT_CALL(*profile, GetChildren).Times(0);
    EXPECT_TRUE(controller->DropAllowed(ItemOf("C:0"), part));
}

TEST_F(ControllerImplOrganize, ARevisionedClassificationRefusesASecondChildOfOneName) {
    Children("C:3", {"Bolt", "Bracket"});
    EXPECT_CALL(*profile, GetChildren(_, IsHandle("C:3"), kxString("category"), kxString("")));
    EXPECT_FALSE(controller->DropAllowed(ItemOf("C:3"), part));
}

TEST_F(ControllerImplOrganize, ARevisionedClassificationTakesAnotherName) {
    Children("C:3", {"bracket", "Bracket_1"});
    EXPECT_TRUE(controller->DropAllowed(ItemOf("C:3"), part));
    Children("C:3", {});
    EXPECT_TRUE(controller->DropAllowed(ItemOf("C:3"), part));
}

TEST_F(ControllerImplOrganize, OrganizeMovesIntoAFolderAndPublishes) {
    entities["B:1"]->isEditable = false;
    InSequence order;
    EXPECT_CALL(*profile, MoveContent(IsHandle("A:1"), IsHandle("F:0")));
    EXPECT_CALL(*profile, PersistEntity(IsHandle("A:1"), kxString(""), false, true, true));
    EXPECT_CALL(*profile, Checkout(IsHandle("B:1"), kxString("")));
    EXPECT_CALL(*profile, MoveContent(IsHandle("B:1"), IsHandle("F:0")));
    EXPECT_CALL(*profile, PersistEntity(IsHandle("B:1"), kxString(""), false, true, true));
    EXPECT_TRUE(controller->Organize(items, ItemOf("F:0")));
}

TEST_F(ControllerImplOrganize, OrganizePutsUnderAClassificationAndPublishes) {
    Items one{part};
    InSequence order;
    EXPECT_CALL(*profile, AddClassification(IsHandle("A:1"), IsHandle("C:0")));
    EXPECT_CALL(*profile, PersistEntity(IsHandle("A:1"), _, false, true, true));
    EXPECT_TRUE(controller->Organize(one, ItemOf("C:0")));
}

TEST_F(ControllerImplOrganize, OrganizeGoesByTheTypeOfTheDefinition) {
    EXPECT_CALL(*profile, MoveContent(_, IsHandle("OF:0"))).Times(2);
    EXPECT_TRUE(controller->Organize(items, ItemOf("OF:0")));
    EXPECT_CALL(*profile, AddClassification(_, IsHandle("OC:3"))).Times(2);
    EXPECT_TRUE(controller->Organize(items, ItemOf("OC:3")));
}

TEST_F(ControllerImplOrganize, OrganizeOfNothingDependsOnTheTargetAlone) {
    Items none;
    EXPECT_TRUE(controller->Organize(none, ItemOf("F:0")));
    EXPECT_TRUE(controller->Organize(none, ItemOf("C:3")));
    EXPECT_FALSE(controller->Organize(none, part));
    EXPECT_FALSE(controller->Organize(none, GroupNodeOf("A:1")));
    EXPECT_FALSE(controller->Organize(none, nullptr));
}

TEST_F(ControllerImplOrganize, OrganizeOntoNothingIsFalseWithItemsToo) {
    EXPECT_CALL(*profile, MoveContent).Times(0);
    EXPECT_FALSE(controller->Organize(items, nullptr));
}

TEST_F(ControllerImplOrganize, OneRefusedDropStopsOrganizeBeforeAnythingChanged) {
    Children("C:3", {"Bolt"});
    EXPECT_CALL(*profile, AddClassification).Times(0);
    EXPECT_CALL(*profile, Checkout).Times(0);
    EXPECT_CALL(*profile, PersistEntity).Times(0);
    EXPECT_FALSE(controller->Organize(items, ItemOf("C:3")));
}

TEST_F(ControllerImplOrganize, ANullAmongTheItemsStopsOrganizeBeforeAnythingChanged) {
    items.push_back(nullptr);
    EXPECT_CALL(*profile, MoveContent).Times(0);
    EXPECT_FALSE(controller->Organize(items, ItemOf("F:0")));
}

TEST_F(ControllerImplOrganize, AFailingMoveLeavesEarlierItemsMovedAndThisOneCheckedOut) {
    entities["B:1"]->isEditable = false;
    InSequence order;
    EXPECT_CALL(*profile, MoveContent(IsHandle("A:1"), _));
    EXPECT_CALL(*profile, PersistEntity(IsHandle("A:1"), _, _, _, _));
    EXPECT_CALL(*profile, Checkout(IsHandle("B:1"), _));
    EXPECT_CALL(*profile, MoveContent(IsHandle("B:1"), _)).WillOnce(Fail());
    EXPECT_CALL(*profile, PersistEntity(IsHandle("B:1"), _, _, _, _)).Times(0);
    EXPECT_CALL(*profile, UndoCheckout).Times(0);
    EXPECT_FALSE(controller->Organize(items, ItemOf("F:0")));
}

// Answers of check-out and publish are not looked at.
TEST_F(ControllerImplOrganize, OrganizeGoesOnWhereCheckOutOrPublishFails) {
    entities["A:1"]->isEditable = false;
    ON_CALL(*profile, Checkout).WillByDefault(Fail());
    ON_CALL(*profile, PersistEntity).WillByDefault(Fail());
    EXPECT_CALL(*profile, MoveContent).Times(2);
    EXPECT_TRUE(controller->Organize(items, ItemOf("F:0")));
}

// Organize contains nothing itself.
TEST_F(ControllerImplOrganize, AFailureToReadTheTargetsDefinitionPasses) {
    Item* target = ItemOf("F:0");
    ON_CALL(*profile, GetProfileUtils).WillByDefault(Fail());
    EXPECT_THROW(controller->Organize(items, target), KXCTException);
}

TEST_F(ControllerImplOrganize, MoveContentMovesAContentIntoAFolder) {
    EXPECT_CALL(*profile, MoveContent(IsHandle("A:1"), IsHandle("F:0")));
    EXPECT_TRUE(controller->MoveContent(part, ItemOf("F:0")));
}

TEST_F(ControllerImplOrganize, MoveContentRefusesWhatIsNoContentOrNoFolder) {
    EXPECT_CALL(*profile, MoveContent).Times(0);
    EXPECT_FALSE(controller->MoveContent(nullptr, ItemOf("F:0")));
    EXPECT_FALSE(controller->MoveContent(part, nullptr));
    EXPECT_FALSE(controller->MoveContent(GroupNodeOf("A:1"), ItemOf("F:0")));
    EXPECT_FALSE(controller->MoveContent(part, GroupNodeOf("A:1")));
    EXPECT_FALSE(controller->MoveContent(part, bolt));
    EXPECT_FALSE(controller->MoveContent(part, ItemOf("C:0")));
    EXPECT_FALSE(controller->MoveContent(part, ItemOf("F:0", MANAGER_HISTORY)));
}

TEST_F(ControllerImplOrganize, ClassifyingHandsTheContentFirst) {
    EXPECT_CALL(*profile, AddClassification(IsHandle("A:1"), IsHandle("C:3")));
    EXPECT_TRUE(controller->AddClassification(part, ItemOf("C:3")));
    EXPECT_CALL(*profile, RemoveClassification(IsHandle("A:1"), IsHandle("C:3")));
    EXPECT_TRUE(controller->RemoveClassification(part, ItemOf("C:3")));
}

TEST_F(ControllerImplOrganize, ClassifyingRefusesWhatIsNoContentOrNoClassification) {
    EXPECT_CALL(*profile, AddClassification).Times(0);
    EXPECT_CALL(*profile, RemoveClassification).Times(0);
    const std::vector<std::pair<Item*, Item*>> pairs = {{nullptr, ItemOf("C:3")},
                                                        {part, nullptr},
                                                        {GroupNodeOf("A:1"), ItemOf("C:3")},
                                                        {part, GroupNodeOf("A:1")},
                                                        {part, ItemOf("F:0")},
                                                        {part, bolt}};
    for (const auto& [item, classification] : pairs) {
        EXPECT_FALSE(controller->AddClassification(item, classification));
        EXPECT_FALSE(controller->RemoveClassification(item, classification));
    }
}

TEST_F(ControllerImplOrganize, AFoldersPathIsTheRuntimes) {
    EXPECT_CALL(*profile, GetFolderFullPath(_, IsHandle("F:0")))
        .WillOnce([](kxString& out, const auto&) { out = "/Top/Decks"; });
    EXPECT_EQ(controller->GetFolderFullPath(ItemOf("F:0")), "/Top/Decks");
}

TEST_F(ControllerImplOrganize, WhatIsNoFolderHasNoPath) {
    EXPECT_CALL(*profile, GetFolderFullPath).Times(0);
    for (Item* item : {static_cast<Item*>(nullptr), part, ItemOf("C:0"), GroupNodeOf("A:1")}) {
        EXPECT_EQ(controller->GetFolderFullPath(item), "");
    }
}

// A subclass with a drop rule of its own.
class StrictController : public ControllerProbe {
  public:
    using ControllerProbe::ControllerProbe;
    bool DropAllowed(Item* target, Item* dragged) override {
        asked.emplace_back(target, dragged);
        return false;
    }
    Relations asked;
};

TEST_F(ControllerImplOrganize, TheDropRuleIsAskedThroughTheVirtualOperation) {
    StrictController strict(&Manager(), "Demo", "Work", "anna", "secret");
    EXPECT_CALL(*profile, MoveContent).Times(0);
    EXPECT_FALSE(strict.Organize(items, ItemOf("F:0")));
    EXPECT_THAT(strict.asked, testing::ElementsAre(std::make_pair(ItemOf("F:0"), part)));
}

}  // namespace
}  // namespace kxct::test
