// Constructors, clone, destructor, names and the connected flag.
#include "tests/controller/ControllerFixture.h"
#include "tests/frwk/ForeignController.h"

namespace kxct::test {
namespace {

using mock::IsHandle;
using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::NiceMock;
using testing::Return;
using testing::Throw;

class ControllerImplTest : public ControllerTest {};

TEST_F(ControllerImplTest, ADefaultControllerIsDeadAndEmpty) {
    ControllerImpl dead;
    EXPECT_FALSE(dead.IsDBValid());
    EXPECT_THAT(dead.GetFilterMap(), IsEmpty());
    EXPECT_THAT(dead.GetHideMap(), IsEmpty());
    EXPECT_EQ(dead.GetFilterMapForChildren().size(), 0U);
    EXPECT_THAT(dead.GetGroupByAttributes(), IsEmpty());
    EXPECT_THAT(dead.GetScriptedAttributes(), IsEmpty());
}

TEST_F(ControllerImplTest, TheOpeningFormConnectsToAKnownLibraryAndWorkspace) {
    EXPECT_TRUE(controller->IsDBValid());
    ASSERT_EQ(opened.size(), 1U);
    EXPECT_EQ(opened[0].at("RepositoryName"), kxVariant("Demo"));
    EXPECT_EQ(opened[0].at("RepositoryBaseDir"), kxVariant("/stored/base"));
    EXPECT_EQ(opened[0].at("WorkspaceName"), kxVariant("Work"));
    EXPECT_EQ(opened[0].at("WorkspaceBaseDir"), kxVariant("/stored/work"));
    EXPECT_EQ(opened[0].at("username"), kxVariant("anna"));
    EXPECT_EQ(opened[0].at("password"), kxVariant("secret"));
}

TEST_F(ControllerImplTest, TheOpeningFormLooksForLibrariesAndNotForExternalRepositories) {
    libraries["9"] = {{"id", "9"}, {"name", "Pdm"}, {"profile_name", "TC"}, {"type", "2"}};
    ControllerImpl unknown(&Manager(), "Pdm", "Work", "anna", "secret");
    EXPECT_FALSE(unknown.IsDBValid());
}

TEST_F(ControllerImplTest, AnUnknownLibraryGivesADeadController) {
    ControllerImpl unknown(&Manager(), "Nowhere", "Work", "anna", "secret");
    EXPECT_FALSE(unknown.IsDBValid());
}

TEST_F(ControllerImplTest, AnUnknownWorkspaceGivesADeadController) {
    ControllerImpl unknown(&Manager(), "Demo", "Nowhere", "anna", "secret");
    EXPECT_FALSE(unknown.IsDBValid());
}

TEST_F(ControllerImplTest, ARuntimeThatRefusesGivesADeadController) {
    ON_CALL(*local, OpenProfile).WillByDefault(Throw(std::runtime_error("locked")));
    ControllerImpl opening(&Manager(), "Demo", "Work", "bert", "secret");
    EXPECT_FALSE(opening.IsDBValid());
    ControllerImpl creating(
        &Manager(), "Files", "New", Path("base/new"), "Work", "/w", "bert", "secret", "", "");
    EXPECT_FALSE(creating.IsDBValid());
}

TEST_F(ControllerImplTest, TheCreatingFormHandsItsNineTextsOnInOrder) {
    ControllerImpl creating(
        &Manager(), "Files", "New", Path("base/new"), "Desk", "/given", "bert", "pw", "h", "1");
    EXPECT_TRUE(creating.IsDBValid());
    ASSERT_EQ(opened.size(), 2U);
    EXPECT_EQ(opened[1].at("ProfileName"), kxVariant("Files"));
    EXPECT_EQ(opened[1].at("RepositoryName"), kxVariant("New"));
    EXPECT_EQ(opened[1].at("RepositoryBaseDir"), kxVariant(Path("base/new")));
    EXPECT_EQ(opened[1].at("WorkspaceName"), kxVariant("Desk"));
    EXPECT_EQ(opened[1].at("WorkspaceBaseDir"), kxVariant("/given"));
    EXPECT_EQ(opened[1].at("username"), kxVariant("bert"));
    EXPECT_EQ(opened[1].at("password"), kxVariant("pw"));
}

TEST_F(ControllerImplTest, TheCreatingFormHandsHostAndPortOn) {
    const auto server = mock::NewProfile("session-pg");
    Parameters params;
    ON_CALL(*postgres, OpenProfile).WillByDefault([&](const Parameters& given) {
        params = given;
        return server;
    });
    ControllerImpl creating(
        &Manager(), "Team", "New", Path("base/new"), "Desk", "/w", "bert", "pw", "other", "99");
    EXPECT_TRUE(creating.IsDBValid());
    EXPECT_EQ(params.at("dbhost"), kxVariant("other"));
    EXPECT_EQ(params.at("dbport"), kxVariant("99"));
}

TEST_F(ControllerImplTest, ADirectoryThatCannotBeMadeGivesADeadController) {
    WriteFile("plain");
    ControllerImpl creating(
        &Manager(), "Files", "New", Path("plain/below/new"), "Work", "/w", "bert", "", "", "");
    EXPECT_FALSE(creating.IsDBValid());
}

TEST_F(ControllerImplTest, WithoutAManagerOfThisLibraryTheControllerIsDead) {
    ControllerImpl opening(nullptr, "Demo", "Work", "anna", "secret");
    EXPECT_FALSE(opening.IsDBValid());
    ControllerImpl creating(nullptr, "Files", "Demo", "/b", "Work", "/w", "anna", "", "", "");
    EXPECT_FALSE(creating.IsDBValid());
}

TEST_F(ControllerImplTest, ASessionThatIsNotConnectedIsNotValid) {
    const auto deaf = mock::NewProfile("session-2");
    ON_CALL(*deaf, Connect).WillByDefault(Fail());
    ON_CALL(*local, OpenProfile).WillByDefault(Return(deaf));
    workspaces["Other"] = workspaces["Work"];
    ControllerImpl other(&Manager(), "Demo", "Other", "anna", "secret");
    EXPECT_FALSE(other.IsDBValid());
}

TEST_F(ControllerImplTest, TheEndOfTheSessionMakesItsControllersInvalid) {
    LoseConnection();
    EXPECT_FALSE(controller->IsDBValid());
}

TEST_F(ControllerImplTest, DestroyingGivesTheSessionBackToTheManager) {
    EXPECT_CALL(*local, CloseProfile(testing::Eq(profile)));
    controller.reset();
    testing::Mock::VerifyAndClearExpectations(&*local);
}

TEST_F(ControllerImplTest, TwoControllersOfOneWorkspaceShareASession) {
    auto second = std::make_unique<ControllerImpl>(&Manager(), "Demo", "Work", "anna", "secret");
    EXPECT_EQ(opened.size(), 1U);
    EXPECT_CALL(*local, CloseProfile).Times(0);
    second.reset();
    testing::Mock::VerifyAndClearExpectations(&*local);
    EXPECT_TRUE(controller->IsDBValid());
    EXPECT_CALL(*local, CloseProfile);
    controller.reset();
    testing::Mock::VerifyAndClearExpectations(&*local);
}

TEST_F(ControllerImplTest, DestroyingDetachesTheManagersFromTheSession) {
    ItemOf("A:1");
    EXPECT_CALL(*profile, Disconnect).Times(testing::AtLeast(1));
    controller.reset();
    testing::Mock::VerifyAndClearExpectations(&*profile);
}

TEST_F(ControllerImplTest, ItemsGoWithTheirController) {
    Entity("A:1");
    const auto held = entities["A:1"];
    const auto before = held.use_count();
    ItemOf("A:1");
    EXPECT_GT(held.use_count(), before);
    controller.reset();
    EXPECT_EQ(held.use_count(), before);
}

TEST_F(ControllerImplTest, ACloneSharesTheSessionAndLeavesItOpen) {
    {
        ControllerImpl clone(static_cast<Controller*>(controller.get()));
        EXPECT_TRUE(clone.IsDBValid());
        EXPECT_EQ(clone.GetLibraryName(), "Demo");
        EXPECT_CALL(*local, CloseProfile).Times(0);
    }
    testing::Mock::VerifyAndClearExpectations(&*local);
    EXPECT_TRUE(controller->IsDBValid());
}

TEST_F(ControllerImplTest, ACloneTakesMapsGroupingAndScriptedAttributesButNoChildFilters) {
    const ChildFilterMap hide{{"UDMPart", {"parts"}}};
    const ChildFilterMap filter{{"UDMPart", {"files"}}};
    ItemFilterList children;
    children.Add("UDMPart", "", "UDMPart", "");
    controller->SetHideMap(hide);
    controller->SetFilterMap(filter);
    controller->SetGroupByAttributes({"state"});
    controller->SetFilterMapForChildren(children);
    controller->RegisterScriptedAttribute("cost", "costOf");

    ControllerImpl clone(static_cast<Controller*>(controller.get()));
    EXPECT_EQ(clone.GetHideMap(), hide);
    EXPECT_EQ(clone.GetFilterMap(), filter);
    EXPECT_THAT(clone.GetGroupByAttributes(), ElementsAre("state"));
    EXPECT_THAT(clone.GetScriptedAttributes(), ElementsAre("cost"));
    EXPECT_EQ(clone.GetFilterMapForChildren().size(), 0U);
}

TEST_F(ControllerImplTest, ACloneChangesNothingInItsSource) {
    controller->RegisterScriptedAttribute("cost", "costOf");
    ControllerImpl clone(static_cast<Controller*>(controller.get()));
    clone.UnRegisterScriptedAttribute("cost");
    clone.SetGroupByAttributes({"x"});
    EXPECT_THAT(controller->GetScriptedAttributes(), ElementsAre("cost"));
    EXPECT_THAT(controller->GetGroupByAttributes(), IsEmpty());
}

TEST_F(ControllerImplTest, ACloneHasManagersHandlersAndItemsOfItsOwn) {
    Entity("A:1");
    Item* item = ItemOf("A:1");
    ControllerProbe clone(static_cast<Controller*>(controller.get()));
    EXPECT_NE(clone._GetItemManager(MANAGER_DEFAULT), controller->_GetItemManager(MANAGER_DEFAULT));
    EXPECT_NE(clone.GetSignalHandler(MANAGER_DEFAULT),
              controller->GetSignalHandler(MANAGER_DEFAULT));
    Items items;
    EXPECT_EQ(clone.GetAllItems(items, MANAGER_DEFAULT), 0U);
    EXPECT_NE(clone.GetItem("A:1", false), item);
}

TEST_F(ControllerImplTest, ACloneReadsTheAttributeSettingsOfItsSource) {
    WriteFile(
        "pa.xml",
        R"(<kxct:PASettings><ContentDefinition name="Normal">)"
        R"(<Metadata name="mass" displayname="Mass"/></ContentDefinition></kxct:PASettings>)");
    definitions->Add("Normal").type = "Normal";
    Entity("A:1", "Normal");
    controller->SetAttributeSettingsFile(Path("pa.xml"));
    ControllerImpl clone(static_cast<Controller*>(controller.get()));
    EXPECT_THAT(clone.GetAttributeNameList(clone.GetItem("A:1", false), true, true, true),
                ElementsAre("mass"));
}

TEST_F(ControllerImplTest, ACloneReadsTheSettingsFileAfresh) {
    const auto text = [](const char* name) {
        return kxString(R"(<kxct:PASettings><ContentDefinition name="Normal"><Metadata name=")") +
               name + R"(" displayname="x"/></ContentDefinition></kxct:PASettings>)";
    };
    definitions->Add("Normal").type = "Normal";
    Entity("A:1", "Normal");
    WriteFile("pa.xml", text("mass"));
    controller->SetAttributeSettingsFile(Path("pa.xml"));
    WriteFile("pa.xml", text("density"));
    ControllerImpl clone(static_cast<Controller*>(controller.get()));
    EXPECT_THAT(clone.GetAttributeNameList(clone.GetItem("A:1", false), true, true, true),
                ElementsAre("density"));
    EXPECT_THAT(controller->GetAttributeNameList(ItemOf("A:1"), true, true, true),
                ElementsAre("mass"));
}

TEST_F(ControllerImplTest, ACloneOfAForeignControllerIsDeadAndEmpty) {
    bool destroyed = false;
    ForeignController foreign(destroyed);
    ControllerImpl clone(&foreign);
    EXPECT_FALSE(clone.IsDBValid());
    EXPECT_THAT(clone.GetFilterMap(), IsEmpty());
    EXPECT_THAT(clone.GetHideMap(), IsEmpty());
    EXPECT_THAT(clone.GetGroupByAttributes(), IsEmpty());
    EXPECT_THAT(clone.GetScriptedAttributes(), IsEmpty());
}

TEST_F(ControllerImplTest, ACloneOfNothingIsDead) {
    ControllerImpl clone(static_cast<Controller*>(nullptr));
    EXPECT_FALSE(clone.IsDBValid());
}

// Only one of a copy and its source may be destroyed, so the copy is left to the process.
TEST_F(ControllerImplTest, ACopySharesSessionManagersAndSettings) {
    Entity("A:1");
    Item* item = ItemOf("A:1");
    // Destroying the copy would end the managers of the original. In a place that outlives the
    // test, it is nobody's leak.
    alignas(ControllerImpl) static unsigned char place[sizeof(ControllerImpl)];
    auto* copy = new (place) ControllerImpl(*controller);
    EXPECT_TRUE(copy->IsDBValid());
    EXPECT_EQ(copy->GetItem("A:1", false), item);
    EXPECT_EQ(copy->GetSignalHandler(MANAGER_DEFAULT),
              controller->GetSignalHandler(MANAGER_DEFAULT));
}

TEST_F(ControllerImplTest, LibraryAndWorkspaceNamesAreTheSessions) {
    EXPECT_EQ(controller->GetLibraryName(), "Demo");
    EXPECT_EQ(controller->GetWorkspaceName(), "Work");
}

TEST_F(ControllerImplTest, WithoutAConnectionTheNamesAreEmpty) {
    LoseConnection();
    EXPECT_EQ(controller->GetLibraryName(), "");
    EXPECT_EQ(controller->GetWorkspaceName(), "");
}

TEST_F(ControllerImplTest, NamesThatTheSessionLacksPassAsExceptions) {
    ON_CALL(*xml, OpenProfile).WillByDefault(Return(mock::NewProfile("file")));
    ControllerImpl direct(&Manager(), "Single", "Doc", Path("base"), "", "", "anna", "", "", "");
    ASSERT_TRUE(direct.IsDBValid());
    EXPECT_THROW(direct.GetLibraryName(), std::out_of_range);
    EXPECT_THROW(direct.GetWorkspaceName(), std::out_of_range);
}

TEST_F(ControllerImplTest, DumpSessionReachesTheSessionAlsoWithoutAConnection) {
    EXPECT_CALL(*profile, DumpSession()).Times(2);
    controller->DumpSession();
    LoseConnection();
    controller->DumpSession();
}

TEST_F(ControllerImplTest, AFailingDumpPasses) {
    ON_CALL(*profile, DumpSession()).WillByDefault(Fail());
    EXPECT_THROW(controller->DumpSession(), KXCTException);
}

TEST_F(ControllerImplTest, DumpSessionWithoutASessionDoesNothing) {
    ControllerImpl dead;
    EXPECT_NO_THROW(dead.DumpSession());
}

TEST_F(ControllerImplTest, AttributeChangesNeverWait) {
    EXPECT_FALSE(controller->HasPendingAttributeChanges());
    EXPECT_FALSE(ControllerImpl().HasPendingAttributeChanges());
}

}  // namespace
}  // namespace kxct::test
