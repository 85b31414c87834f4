#include <kxct/ControllerImpl.h>
#include <kxct/EntryPoints.h>
#include <kxct/FactoryImpl.h>
#include <kxct/KXCTFramework.h>

#include <stdexcept>
#include <type_traits>

#include "tests/frwk/ForeignController.h"
#include "tests/masterdb/ManagerFixture.h"

using kxct::Controller;
using kxct::KXCTFramework;
using kxct::MasterDBManager;

namespace {

class FactoryImplTest : public ManagerTest {
  protected:
    FactoryImplTest() { WriteDefaults(); }
    ~FactoryImplTest() override {
        for (Controller* controller : controllers) {
            factory->DeleteController(controller);
        }
        factory->DeleteMasterDBManager(KXCTFramework::GetMasterDBManager(Path("user.xml")));
    }
    MasterDBManager* NewManager() {
        return factory->CreateMasterDBManager(Path("default.xml"), Path("user.xml"));
    }
    Controller* Kept(Controller* controller) {
        controllers.push_back(controller);
        return controller;
    }

    kxct::Factory* factory = CreateFactory();
    std::vector<Controller*> controllers;
};

}  // namespace

TEST_F(FactoryImplTest, IsOneForTheProcess) {
    ASSERT_NE(factory, nullptr);
    EXPECT_EQ(CreateFactory(), factory);
    EXPECT_EQ(kxct::FactoryImpl::GetInstance(), factory);
}

TEST_F(FactoryImplTest, CanNeitherBeMadeNorDeletedByOthers) {
    EXPECT_FALSE(std::is_default_constructible_v<kxct::FactoryImpl>);
    EXPECT_FALSE(std::is_destructible_v<kxct::FactoryImpl>);
}

TEST_F(FactoryImplTest, AManagerIsRegisteredUnderTheUsersSettingsPath) {
    MasterDBManager* manager = NewManager();
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(KXCTFramework::GetMasterDBManager(Path("user.xml")), manager);
}

TEST_F(FactoryImplTest, ADeletedManagerIsFoundByNameNoLonger) {
    factory->DeleteMasterDBManager(NewManager());
    EXPECT_EQ(factory->GetController(Path("user.xml"), "Demo", "Work", "anna", ""), nullptr);
}

TEST_F(FactoryImplTest, DeletingNoManagerDoesNothing) {
    factory->DeleteMasterDBManager(nullptr);
}

TEST_F(FactoryImplTest, AControllerByAnUnknownNameIsNull) {
    EXPECT_EQ(factory->GetController("nobody", "Demo", "Work", "anna", ""), nullptr);
}

TEST_F(FactoryImplTest, AControllerByTheManagersNameIsConnected) {
    NewManager();
    Controller* controller =
        Kept(factory->GetController(Path("user.xml"), "Demo", "Work", "anna", "secret"));
    ASSERT_NE(controller, nullptr);
    EXPECT_TRUE(controller->IsDBValid());
    EXPECT_EQ(opened.at(0).at("password"), kxVariant("secret"));
}

TEST_F(FactoryImplTest, TwoControllersOfTheSameNamesShareOneSession) {
    MasterDBManager* manager = NewManager();
    Controller* first = Kept(factory->GetController(manager, "Demo", "Work", "anna", ""));
    Controller* second = Kept(factory->GetController(manager, "Demo", "Work", "anna", ""));
    EXPECT_NE(first, second);
    EXPECT_EQ(opened.size(), 1u);
}

TEST_F(FactoryImplTest, AnUnknownLibraryGivesAControllerWithoutSession) {
    Controller* controller =
        Kept(factory->GetController(NewManager(), "Other", "Work", "anna", ""));
    ASSERT_NE(controller, nullptr);
    EXPECT_FALSE(controller->IsDBValid());
}

TEST_F(FactoryImplTest, CreatesLibraryAndWorkspaceThroughTheManager) {
    Controller* controller = Kept(factory->CreateController(NewManager(),
                                                            "Files",
                                                            "New",
                                                            Path("base/new"),
                                                            "Space",
                                                            "/space",
                                                            "anna",
                                                            "secret",
                                                            "host",
                                                            "99"));
    ASSERT_NE(controller, nullptr);
    EXPECT_TRUE(controller->IsDBValid());
    EXPECT_EQ(opened.at(0).at("RepositoryName"), kxVariant("New"));
    EXPECT_EQ(opened.at(0).at("RepositoryBaseDir"), kxVariant(Path("base/new")));
    EXPECT_EQ(opened.at(0).at("WorkspaceName"), kxVariant("Space"));
    EXPECT_EQ(opened.at(0).at("WorkspaceBaseDir"), kxVariant("/space"));
    EXPECT_EQ(opened.at(0).at("ProfileName"), kxVariant("Files"));
}

TEST_F(FactoryImplTest, AnUnreachableRepositoryGivesAControllerWithoutSession) {
    EXPECT_CALL(*teamcenter, OpenProfile).WillOnce(testing::Throw(std::runtime_error("no server")));
    Controller* controller = Kept(factory->CreateController(
        NewManager(), "TC", "Remote", "", "", "", "anna", "", "nowhere.example", "1"));
    ASSERT_NE(controller, nullptr);
    EXPECT_FALSE(controller->IsDBValid());
}

// Hosts find that manager again by name after the controller has gone.
TEST_F(FactoryImplTest, AManagerMadeAlongWithAControllerOutlivesIt) {
    Controller* controller = factory->CreateController(Path("default.xml"),
                                                       Path("user.xml"),
                                                       "Files",
                                                       "New",
                                                       Path("base/new"),
                                                       "Space",
                                                       "/space",
                                                       "anna",
                                                       "",
                                                       "",
                                                       "");
    ASSERT_NE(controller, nullptr);
    EXPECT_TRUE(controller->IsDBValid());
    factory->DeleteController(controller);
    MasterDBManager* manager = KXCTFramework::GetMasterDBManager(Path("user.xml"));
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(manager->GetSettingsFile(), Path("user.xml"));
}

TEST_F(FactoryImplTest, DeletingAControllerEndsItsSession) {
    Controller* controller = factory->GetController(NewManager(), "Demo", "Work", "anna", "");
    EXPECT_CALL(*local, CloseProfile).Times(1);
    factory->DeleteController(controller);
    testing::Mock::VerifyAndClearExpectations(&*local);
}

TEST_F(FactoryImplTest, DeletingNoControllerDoesNothing) {
    factory->DeleteController(nullptr);
}

TEST_F(FactoryImplTest, AControllerOfAnotherMakingIsLeftAlone) {
    bool destroyed = false;
    {
        ForeignController foreign(destroyed);
        factory->DeleteController(&foreign);
        EXPECT_FALSE(destroyed);
    }
    EXPECT_TRUE(destroyed);
}
