#include <kxct/KXCTFramework.h>

#include "tests/masterdb/ManagerFixture.h"

using kxct::KXCTFramework;

TEST_F(ManagerTest, IsRegisteredUnderTheUsersSettingsPathForItsLife) {
    EXPECT_EQ(KXCTFramework::GetMasterDBManager(Path("user.xml")), nullptr);
    kxct::MasterDBManager* manager = &Manager();
    EXPECT_EQ(KXCTFramework::GetMasterDBManager(Path("user.xml")), manager);
    DeleteManager();
    EXPECT_EQ(KXCTFramework::GetMasterDBManager(Path("user.xml")), nullptr);
}

TEST_F(ManagerTest, WithoutSettingsStaysRegistered) {
    Manager().LoseSettings();
    DeleteManager();
    EXPECT_NE(KXCTFramework::GetMasterDBManager(Path("user.xml")), nullptr);
    KXCTFramework::SetMasterDBManager(Path("user.xml"), nullptr);
}

TEST_F(ManagerTest, SeedsTheUsersSettingsFromTheDefaultOnes) {
    Manager();
    EXPECT_EQ(Stored("Files"), "local");
}

TEST_F(ManagerTest, EndsItsOpenSessionsWithItself) {
    EXPECT_CALL(*local, CloseProfile).Times(1);
    ASSERT_NE(Open(), nullptr);
    DeleteManager();
}

TEST_F(ManagerTest, CloseOfNullDoesNothing) {
    EXPECT_CALL(*local, CloseProfile).Times(0);
    Manager().Close(nullptr);
}

TEST_F(ManagerTest, TheLastCloseEndsASharedSession) {
    kxct::UDMDBCtrl* session = Open();
    ASSERT_EQ(Open(), session);
    EXPECT_CALL(*local, CloseProfile).Times(0);
    Manager().Close(session);
    testing::Mock::VerifyAndClearExpectations(&*local);
    EXPECT_CALL(*local, CloseProfile).Times(1);
    Manager().Close(session);
}
