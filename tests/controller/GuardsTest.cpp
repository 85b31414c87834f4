// What each operation answers without a connection, and which failures it contains.
#include <functional>

#include "tests/controller/ControllerFixture.h"

namespace kxct::test {
namespace {

using mock::IsHandle;
using testing::_;
using testing::IsEmpty;
using testing::Return;

// Every operation of a controller that has a failure value, and whether it answered with it.
struct Call {
    const char* name;
    std::function<bool(Controller&)> fails;
};

class ControllerImplGuards : public ControllerTest {
  protected:
    ControllerImplGuards() {
        for (const char* uid : {"A:1", "B:1"}) {
            Entity(uid).isEditable = true;
        }
        Entity("F:0", "Foldertype", "Decks");
        Entity("C:0", "Categories", "Safety");
        item = ItemOf("A:1");
        other = ItemOf("B:1");
        folder = ItemOf("F:0");
        category = ItemOf("C:0");
        items = {item};
    }

    // Operations that a lost connection ends; they make no call to the runtime then.
    std::vector<Call> Guarded();
    // Operations that only a missing session ends.
    std::vector<Call> SessionGuarded();

    Item* item = nullptr;
    Item* other = nullptr;
    Item* folder = nullptr;
    Item* category = nullptr;
    Items items;
    Items out;
    kxStlVector<kxString> uids{"A:1"};
    kxStlVector<Metadata> metadata;
};

std::vector<Call> ControllerImplGuards::Guarded() {
    return {
        {"GetWorkspaceName", [](Controller& c) { return c.GetWorkspaceName().empty(); }},
        {"GetLibraryName", [](Controller& c) { return c.GetLibraryName().empty(); }},
        {"AddFile", [this](Controller& c) { return !c.AddFile(item, "/a", false); }},
        {"AddFile long",
         [this](Controller& c) { return !c.AddFile(item, "UDMPart", "t", "/a", false, "files"); }},
        {"AddClassification",
         [this](Controller& c) { return !c.AddClassification(item, category); }},
        {"RemoveClassification",
         [this](Controller& c) { return !c.RemoveClassification(item, category); }},
        {"CreateContent below",
         [this](Controller& c) { return c.CreateContent("UDMPart", "x", item) == nullptr; }},
        {"CreateContent", [](Controller& c) { return c.CreateContent("UDMPart", "x") == nullptr; }},
        {"GetContentDefinitionNames",
         [](Controller& c) { return c.GetContentDefinitionNames().empty(); }},
        {"GetContentDefinitionMetadata",
         [this](Controller& c) {
             return c.GetContentDefinitionMetadata("UDMPart", metadata) == 0;
         }},
        {"GetHistory", [this](Controller& c) { return c.GetHistory(uids, out) == 0; }},
        {"GetItem", [](Controller& c) { return c.GetItem("A:1", false) == nullptr; }},
        {"GetItem of a type",
         [](Controller& c) { return c.GetItem("A:1", MANAGER_HISTORY, false) == nullptr; }},
        {"GetItemList",
         [this](Controller& c) { return !c.GetItemList(out, uids, MANAGER_DEFAULT); }},
        {"GetAllItems", [this](Controller& c) { return c.GetAllItems(out, MANAGER_DEFAULT) == 0; }},
        {"GetMasterClassifications",
         [this](Controller& c) { return c.GetMasterClassifications(out) == 0; }},
        {"GetOtherClassifications",
         [this](Controller& c) { return c.GetOtherClassifications(out) == 0; }},
        {"Organize", [this](Controller& c) { return !c.Organize(items, folder); }},
        {"DropAllowed", [this](Controller& c) { return !c.DropAllowed(folder, item); }},
        {"MoveContent", [this](Controller& c) { return !c.MoveContent(item, folder); }},
        {"GetOrCreateFolder",
         [](Controller& c) { return c.GetOrCreateFolder("/A", true) == nullptr; }},
        {"CreateFolder", [](Controller& c) { return c.CreateFolder("/A") == nullptr; }},
        {"GetFolder", [](Controller& c) { return c.GetFolder("/A", true) == nullptr; }},
        {"GetFolderFullPath",
         [this](Controller& c) { return c.GetFolderFullPath(folder).empty(); }},
        {"AddFoldersAndFiles",
         [](Controller& c) { return c.AddFoldersAndFiles({}, {}, "/", {}) == -1; }},
        {"AddRelation", [this](Controller& c) { return !c.AddRelation(item, other, "uses"); }},
        {"RemoveRelation", [this](Controller& c) { return !c.RemoveRelation(item, other); }},
        {"Export", [this](Controller& c) { return !c.Export("/x", uids); }},
        {"Import", [](Controller& c) { return !c.Import("/x"); }},
        {"GetStructure",
         [this](Controller& c) {
             Items deleted;
             Relations added;
             Relations removed;
             bool more = false;
             return c.GetStructure(
                        MANAGER_DEFAULT, items, out, deleted, added, removed, more, false) == 0;
         }},
        {"Query",
         [this](Controller& c) {
             return c.Query("", out, -1, QUERY_ATTRIBUTES, 0, 0, false, true) == 0;
         }},
        {"Query for UIDs",
         [](Controller& c) {
             kxStlVector<kxString> found;
             return c.Query("", found, -1, QUERY_FULLTEXT_ALL, 0, 0, false, true) == 0;
         }},
    };
}

std::vector<Call> ControllerImplGuards::SessionGuarded() {
    return {
        {"CheckOut", [this](Controller& c) { return !c.CheckOut(items, "x"); }},
        {"Delete", [this](Controller& c) { return !c.Delete(items); }},
        {"Publish", [this](Controller& c) { return !c.Publish(items, "x", false); }},
        {"Revert", [this](Controller& c) { return !c.Revert(items); }},
        {"Save", [this](Controller& c) { return !c.Save(items, "x"); }},
        {"Merge of a map",
         [this](Controller& c) {
             return !c.Merge(
                 "l", "/", "x", kxStlMap<kxString, kxStlVector<kxString>>(), out, false);
         }},
        {"Merge of a list", [this](Controller& c) { return !c.Merge("l", "/", "x", uids, out); }},
    };
}

TEST_F(ControllerImplGuards, WithoutASessionEveryGuardedOperationAnswersItsFailureValue) {
    ControllerImpl dead;
    for (const auto& calls : {Guarded(), SessionGuarded()}) {
        for (const Call& call : calls) {
            EXPECT_TRUE(call.fails(dead)) << call.name;
        }
    }
    EXPECT_THAT(out, IsEmpty());
    EXPECT_THAT(metadata, IsEmpty());
}

TEST_F(ControllerImplGuards, WithoutASessionWhatHasNoValueDoesNothing) {
    ControllerImpl dead;
    Handles handles{HandleOf("A:1")};
    EXPECT_NO_THROW(dead.ClearCache(MANAGER_DEFAULT));
    EXPECT_NO_THROW(dead.ToItems(MANAGER_DEFAULT, &handles, out));
    EXPECT_THAT(out, IsEmpty());
}

TEST_F(ControllerImplGuards, ALostConnectionEndsEveryGuardedOperationBeforeTheRuntime) {
    LoseConnection();
    EXPECT_CALL(*profile, CreateEntity).Times(0);
    EXPECT_CALL(*profile, GetEntity).Times(0);
    EXPECT_CALL(*profile, BeginAddFile).Times(0);
    EXPECT_CALL(*profile, AddClassification).Times(0);
    EXPECT_CALL(*profile, RemoveClassification).Times(0);
    EXPECT_CALL(*profile, GetClassifications).Times(0);
    EXPECT_CALL(*profile, MoveContent).Times(0);
    EXPECT_CALL(*profile, CreateFolder).Times(0);
    EXPECT_CALL(*profile, GetFolder).Times(0);
    EXPECT_CALL(*profile, GetOrCreateFolder).Times(0);
    EXPECT_CALL(*profile, GetFolderFullPath).Times(0);
    EXPECT_CALL(*profile, AddFoldersAndFiles).Times(0);
    EXPECT_CALL(*profile, CreateRelation).Times(0);
    EXPECT_CALL(*profile, RemoveRelation).Times(0);
    EXPECT_CALL(*profile, GetChildren).Times(0);
    EXPECT_CALL(*profile, RunQuery).Times(0);
    EXPECT_CALL(*profile, Export).Times(0);
    EXPECT_CALL(*profile, Import).Times(0);
    EXPECT_CALL(*profile, GetContentDefinitionMetadata).Times(0);
    for (const Call& call : Guarded()) {
        EXPECT_TRUE(call.fails(*controller)) << call.name;
    }
}

// The lifecycle operations and merges ask only whether there is a session at all.
TEST_F(ControllerImplGuards, SessionGuardedOperationsGoOnAfterALostConnection) {
    LoseConnection();
    entities["B:1"]->isEditable = false;
    Items both{item, other};
    EXPECT_CALL(*profile, Checkout(IsHandle("B:1"), _));
    EXPECT_CALL(*profile, SaveEntity);
    EXPECT_CALL(*profile, PersistEntity);
    EXPECT_CALL(*profile, UndoCheckout);
    EXPECT_CALL(*profile, DeleteEntity(IsHandle("A:1"), _, _));
    EXPECT_TRUE(controller->CheckOut(both, "x"));
    EXPECT_TRUE(controller->Save(items, "x"));
    EXPECT_TRUE(controller->Publish(items, "x", false));
    EXPECT_TRUE(controller->Revert(items));
    EXPECT_TRUE(controller->Delete(items));
}

// These two have no guard at all, unlike their neighbours; that has to stay.
TEST_F(ControllerImplGuards, UpdateContentDefinitionGoesOnAfterALostConnection) {
    LoseConnection();
    EXPECT_CALL(*profile, UpdateContentDefinition(kxString("UDMPart"), _, _))
        .WillOnce(Return(true));
    EXPECT_CALL(*profile, ReloadContentDefinition(kxString("UDMPart"))).WillOnce(Return(true));
    EXPECT_TRUE(controller->UpdateContentDefinition("UDMPart", metadata));
    EXPECT_TRUE(controller->UpdateContentDefinition("UDMPart"));
}

TEST_F(ControllerImplGuards, UnguardedItemOperationsGoOnAfterALostConnection) {
    LoseConnection();
    EXPECT_CALL(*profile, AddChild);
    EXPECT_CALL(*profile, GetSyncStatus).WillOnce(Return(true));
    EXPECT_CALL(*profile, Synchronize);
    EXPECT_CALL(*profile, AddReference);
    EXPECT_CALL(*profile, RemoveReference);
    EXPECT_CALL(*profile, GetReferences);
    EXPECT_CALL(*profile, GetReferredBy);
    Items others{other};
    kxStlVector<kxString> roles{""};
    EXPECT_TRUE(controller->AddChildren(item, others, {"parts"}));
    EXPECT_TRUE(controller->GetSyncStatus(item));
    controller->Synchronize(item);
    controller->AddReferences(item, others, roles);
    controller->RemoveReferences(others, item);
    controller->GetReferences(out, roles, item);
    controller->GetReferredBy(out, roles, item);
}

// The runtime fails in every operation that a test of containment needs.
void FailEverything(mock::MockProfile& profile) {
    ON_CALL(profile, CreateEntity).WillByDefault(Fail());
    ON_CALL(profile, BeginAddFile).WillByDefault(Fail());
    ON_CALL(profile, AddClassification).WillByDefault(Fail());
    ON_CALL(profile, RemoveClassification).WillByDefault(Fail());
    ON_CALL(profile, GetClassifications).WillByDefault(Fail());
    ON_CALL(profile, MoveContent).WillByDefault(Fail());
    ON_CALL(profile, CreateFolder).WillByDefault(Fail());
    ON_CALL(profile, GetFolder).WillByDefault(Fail());
    ON_CALL(profile, GetOrCreateFolder).WillByDefault(Fail());
    ON_CALL(profile, GetFolderFullPath).WillByDefault(Fail());
    ON_CALL(profile, AddFoldersAndFiles).WillByDefault(Fail());
    ON_CALL(profile, CreateRelation).WillByDefault(Fail());
    ON_CALL(profile, RemoveRelation).WillByDefault(Fail());
    ON_CALL(profile, GetChildren).WillByDefault(Fail());
    ON_CALL(profile, RunQuery).WillByDefault(Fail());
    ON_CALL(profile, Export).WillByDefault(Fail());
    ON_CALL(profile, Import).WillByDefault(Fail());
    ON_CALL(profile, GetContentDefinitionMetadata).WillByDefault(Fail());
    ON_CALL(profile, UpdateContentDefinition).WillByDefault(Fail());
    ON_CALL(profile, ReloadContentDefinition).WillByDefault(Fail());
    ON_CALL(profile, Checkout).WillByDefault(Fail());
    ON_CALL(profile, SaveEntity).WillByDefault(Fail());
    ON_CALL(profile, PersistEntity).WillByDefault(Fail());
    ON_CALL(profile, UndoCheckout).WillByDefault(Fail());
    ON_CALL(profile, DeleteEntity).WillByDefault(Fail());
    ON_CALL(profile, AddChild).WillByDefault(Fail());
    ON_CALL(profile, GetSyncStatus).WillByDefault(Fail());
    ON_CALL(profile, Synchronize).WillByDefault(Fail());
    ON_CALL(profile, AddReference).WillByDefault(Fail());
    ON_CALL(profile, RemoveReference).WillByDefault(Fail());
    ON_CALL(profile, GetReferences).WillByDefault(Fail());
    ON_CALL(profile, GetReferredBy).WillByDefault(Fail());
    ON_CALL(profile, GetHistory).WillByDefault(Fail());
}

TEST_F(ControllerImplGuards, AFailureOfTheRuntimeEndsAsTheFailureValue) {
    Entity("C:1", "Categories", "Load");
    Item* revisioned = ItemOf("C:1");
    FailEverything(*profile);
    ON_CALL(*local, CreateMerge).WillByDefault(testing::Throw(std::runtime_error("no library")));
    const std::vector<Call> contained = {
        {"AddFile", [this](Controller& c) { return !c.AddFile(item, "/a", false); }},
        {"AddFile long",
         [this](Controller& c) { return !c.AddFile(item, "UDMPart", "t", "/a", false, "files"); }},
        {"AddClassification",
         [this](Controller& c) { return !c.AddClassification(item, category); }},
        {"RemoveClassification",
         [this](Controller& c) { return !c.RemoveClassification(item, category); }},
        {"CreateContent below",
         [this](Controller& c) { return c.CreateContent("UDMPart", "x", item) == nullptr; }},
        {"CreateContent", [](Controller& c) { return c.CreateContent("UDMPart", "x") == nullptr; }},
        {"UpdateContentDefinition",
         [this](Controller& c) { return !c.UpdateContentDefinition("UDMPart", metadata); }},
        {"UpdateContentDefinition afresh",
         [](Controller& c) { return !c.UpdateContentDefinition("UDMPart"); }},
        {"GetContentDefinitionMetadata",
         [this](Controller& c) {
             return c.GetContentDefinitionMetadata("UDMPart", metadata) == 0;
         }},
        {"GetHistory", [this](Controller& c) { return c.GetHistory(uids, out) == 0; }},
        {"GetMasterClassifications",
         [this](Controller& c) { return c.GetMasterClassifications(out) == 0; }},
        {"GetOtherClassifications",
         [this](Controller& c) { return c.GetOtherClassifications(out) == 0; }},
        {"DropAllowed", [&](Controller& c) { return !c.DropAllowed(revisioned, item); }},
        {"Merge of a list", [this](Controller& c) { return !c.Merge("l", "/", "x", uids, out); }},
        {"MoveContent", [this](Controller& c) { return !c.MoveContent(item, folder); }},
        {"GetOrCreateFolder",
         [](Controller& c) { return c.GetOrCreateFolder("/A", true) == nullptr; }},
        {"CreateFolder", [](Controller& c) { return c.CreateFolder("/A") == nullptr; }},
        {"GetFolder", [](Controller& c) { return c.GetFolder("/A", true) == nullptr; }},
        {"GetFolderFullPath",
         [this](Controller& c) { return c.GetFolderFullPath(folder).empty(); }},
        {"AddRelation", [this](Controller& c) { return !c.AddRelation(item, other, "uses"); }},
        {"RemoveRelation", [this](Controller& c) { return !c.RemoveRelation(item, other); }},
        {"Export", [this](Controller& c) { return !c.Export("/x", uids); }},
        {"Import", [](Controller& c) { return !c.Import("/x"); }},
        {"GetSyncStatus", [this](Controller& c) { return !c.GetSyncStatus(item); }},
        {"AddChildren",
         [this](Controller& c) {
             Items others{other};
             return !c.AddChildren(item, others, {"parts"});
         }},
        {"Query",
         [this](Controller& c) {
             return c.Query("", out, -1, QUERY_ATTRIBUTES, 0, 0, false, true) == 0;
         }},
        {"Query full text",
         [this](Controller& c) {
             return c.Query("", out, -1, QUERY_FULLTEXT_ANY, 0, 0, false, true) == 0;
         }},
        {"Delete", [this](Controller& c) { return !c.Delete(items); }},
        {"Publish", [this](Controller& c) { return !c.Publish(items, "x", false); }},
        {"Revert", [this](Controller& c) { return !c.Revert(items); }},
        {"Save", [this](Controller& c) { return !c.Save(items, "x"); }},
        {"CheckOut",
         [this](Controller& c) {
             entities["A:1"]->isEditable = false;
             return !c.CheckOut(items, "x");
         }},
    };
    for (const Call& call : contained) {
        EXPECT_NO_THROW(EXPECT_TRUE(call.fails(*controller)) << call.name) << call.name;
    }
}

TEST_F(ControllerImplGuards, AFailureOfTheRuntimeEndsQuietlyWhereThereIsNoValue) {
    FailEverything(*profile);
    Items others{other};
    kxStlVector<kxString> roles{""};
    EXPECT_NO_THROW(controller->Synchronize(item));
    EXPECT_NO_THROW(controller->AddReferences(item, others, roles));
    EXPECT_NO_THROW(controller->RemoveReferences(others, item));
    EXPECT_NO_THROW(controller->GetReferences(out, roles, item));
    EXPECT_NO_THROW(controller->GetReferredBy(out, roles, item));
    EXPECT_THAT(out, IsEmpty());
}

TEST_F(ControllerImplGuards, DefinitionNamesOfAFailingRuntimeAreEmpty) {
    ON_CALL(*profile, GetProfileUtils).WillByDefault(Fail());
    EXPECT_THAT(controller->GetContentDefinitionNames(), IsEmpty());
}

TEST_F(ControllerImplGuards, AFailureOutsideTheContainedOperationsPasses) {
    FailEverything(*profile);
    EXPECT_THROW(controller->AddFoldersAndFiles({}, {}, "/", {}), KXCTException);
    ON_CALL(*profile, SetAttributeValue).WillByDefault(Fail());
    entities["A:1"]->attributes.clear();
    EXPECT_THROW(controller->GetAttributeValue(item, "mass"), std::exception);
    EXPECT_THROW(controller->GetAttributeDescription(item, "mass", "displayname"), std::exception);
}

// What isn't derived from std::exception is not contained anywhere.
TEST_F(ControllerImplGuards, AForeignExceptionLeavesTheLibrary) {
    ON_CALL(*profile, CreateEntity).WillByDefault(testing::Throw(7));
    EXPECT_THROW(controller->CreateContent("UDMPart", "x"), int);
}

}  // namespace
}  // namespace kxct::test
