#include <kxct/KXCTException.h>

#include "tests/masterdb/ManagerFixture.h"

namespace {

class CredentialsTest : public ManagerTest {
  protected:
    const Parameters account{
        {"dbusername", "dbuser"}, {"dbpasswd", "dbsecret"}, {"dbconnectstring", "dbname=kx"}};
    Parameters settings;
};

}  // namespace

TEST_F(CredentialsTest, DriversComeFromTheVersion) {
    EXPECT_TRUE(Manager().GetPostgresDBDriverSettings(settings));
    EXPECT_EQ(settings,
              (Parameters{{"PersistenceDatabaseDriver", "pdriver"},
                          {"StorageDatabaseDriver", "sdriver"},
                          {"ClientDatabaseDriver", "cdriver"}}));
}

TEST_F(CredentialsTest, ADriverThatIsPresentKeepsItsValue) {
    settings["ClientDatabaseDriver"] = "mine";
    EXPECT_TRUE(Manager().GetPostgresDBDriverSettings(settings));
    EXPECT_EQ(settings.at("ClientDatabaseDriver"), kxVariant("mine"));
    EXPECT_EQ(settings.size(), 3u);
}

TEST_F(CredentialsTest, AMissingDriverIsFalseAndAddsNothing) {
    EditSettings(R"(<Key name="ClientDatabaseDriver" value="cdriver"/>)", "");
    EXPECT_FALSE(Manager().GetPostgresDBDriverSettings(settings));
    EXPECT_TRUE(settings.empty());
}

TEST_F(CredentialsTest, CompleteCredentialsHaveFiveKeys) {
    EXPECT_TRUE(Manager().GetPostgresDBCredentialSettings("Team", settings));
    auto expected = account;
    expected["dbhost"] = "dbserver";
    expected["dbport"] = "5432";
    EXPECT_EQ(settings, expected);
}

TEST_F(CredentialsTest, ACredentialThatIsPresentKeepsItsValue) {
    settings = {{"dbusername", "mine"}, {"dbport", "1"}};
    EXPECT_TRUE(Manager().GetPostgresDBCredentialSettings("Team", settings));
    EXPECT_EQ(settings.at("dbusername"), kxVariant("mine"));
    EXPECT_EQ(settings.at("dbport"), kxVariant("1"));
    EXPECT_EQ(settings.size(), 5u);
}

TEST_F(CredentialsTest, WithoutHostTheAccountAloneIsAdded) {
    EditSettings(R"(<Key name="dbhost" value="dbserver"/>)", "");
    EXPECT_FALSE(Manager().GetPostgresDBCredentialSettings("Team", settings));
    EXPECT_EQ(settings, account);
}

TEST_F(CredentialsTest, WithoutPortTheAccountAloneIsAdded) {
    EditSettings(R"(name="dbport" value="5432")", R"(name="dbport" value="")");
    EXPECT_FALSE(Manager().GetPostgresDBCredentialSettings("Team", settings));
    EXPECT_EQ(settings, account);
}

class IncompleteAccountTest : public CredentialsTest,
                              public testing::WithParamInterface<const char*> {};

TEST_P(IncompleteAccountTest, AddsNothing) {
    EditSettings(std::string(R"(name=")") + GetParam() + '"', R"(name="other")");
    EXPECT_FALSE(Manager().GetPostgresDBCredentialSettings("Team", settings));
    EXPECT_TRUE(settings.empty());
}

INSTANTIATE_TEST_SUITE_P(Account,
                         IncompleteAccountTest,
                         testing::Values("dbusername", "dbpasswd", "dbconnectstring"),
                         [](const auto& tested) { return std::string(tested.param); });

TEST_F(CredentialsTest, AProfileOfAnotherDataSourceHasNone) {
    EditSettings(R"(name="Team" value="PostGres")", R"(name="Team" value="postgres")");
    EXPECT_FALSE(Manager().GetPostgresDBCredentialSettings("Team", settings));
    EXPECT_FALSE(Manager().GetPostgresDBCredentialSettings("Files", settings));
    EXPECT_FALSE(Manager().GetPostgresDBCredentialSettings("Nowhere", settings));
    EXPECT_TRUE(settings.empty());
}

TEST_F(CredentialsTest, ValuesAreTakenAsTheyStand) {
    EditSettings(R"(value="dbsecret")", R"(value="~[HOME]")");
    EXPECT_TRUE(Manager().GetPostgresDBCredentialSettings("Team", settings));
    EXPECT_EQ(settings.at("dbpasswd"), kxVariant("~[HOME]"));
}

TEST_F(CredentialsTest, WithoutSettingsBothAreAKXCTException) {
    Manager().LoseSettings();
    EXPECT_THROW(Manager().GetPostgresDBDriverSettings(settings), kxct::KXCTException);
    EXPECT_THROW(Manager().GetPostgresDBCredentialSettings("Team", settings), kxct::KXCTException);
}
