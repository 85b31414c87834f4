#include <kxct/KXCTException.h>

#include <stdexcept>

#include "tests/masterdb/ManagerFixture.h"

using testing::_;
using testing::InSequence;
using testing::Throw;

namespace {

class CreateTest : public ManagerTest {
  protected:
    Parameters NewLibrary(const kxString& profile) const {
        return {{"DataSource", "local"},
                {"UDMConfigFile", Path("udm.xml")},
                {"MasterDBFile", Path("master.db")},
                {"BinDir", "/inst/kx/bin/linux64"},
                {"username", "anna"},
                {"password", "secret"},
                {"RepositoryName", "Demo"},
                {"ProfileName", profile},
                {"RepositoryBaseDir", Path("base/library")},
                {"WorkspaceName", "Work"},
                {"WorkspaceBaseDir", "/given/work"}};
    }
    Parameters WithDrivers(Parameters params) const {
        params["DataSource"] = "PostGres";
        params["PersistenceDatabaseDriver"] = "pdriver";
        params["StorageDatabaseDriver"] = "sdriver";
        params["ClientDatabaseDriver"] = "cdriver";
        return params;
    }
    Parameters WithCredentials(Parameters params,
                               const kxString& host,
                               const kxString& port) const {
        params["dbusername"] = "dbuser";
        params["dbpasswd"] = "dbsecret";
        params["dbconnectstring"] = "dbname=kx";
        params["dbhost"] = host;
        params["dbport"] = port;
        return params;
    }
};

}  // namespace

TEST_F(CreateTest, ANewLibraryInFilesGetsExactlyTheseParameters) {
    EXPECT_CALL(*local, AddExistingRepository).Times(0);
    ASSERT_NE(Create("Files", "server", "99"), nullptr);
    ASSERT_EQ(opened.size(), 1u);
    EXPECT_EQ(opened[0], NewLibrary("Files"));
}

TEST_F(CreateTest, AProfileWithoutKeyIsALocalOne) {
    ASSERT_NE(Create("Nowhere"), nullptr);
    EXPECT_EQ(opened.at(0), NewLibrary("Nowhere"));
}

TEST_F(CreateTest, AnUnknownDataSourceIsALocalOne) {
    EditSettings(R"(name="Files" value="local")", R"(name="Files" value="udmxml")");
    ASSERT_NE(Create("Files"), nullptr);
    EXPECT_EQ(opened.at(0), NewLibrary("Files"));
}

TEST_F(CreateTest, TheNamesOfAnOpenSessionAnswerItWhateverElseDiffers) {
    kxct::UDMDBCtrl* session = Create("Files", "server", "1");
    EXPECT_EQ(Create("Team", "other", "2"), session);
    EXPECT_EQ(Manager().Create("", "Demo", "", "Work", "", "anna", "other", "", "", "", "", "", ""),
              session);
    EXPECT_EQ(Open(), session);
    EXPECT_EQ(opened.size(), 1u);
}

TEST_F(CreateTest, MakesTheFolderAboveTheLibrary) {
    ASSERT_NE(Create("Files"), nullptr);
    EXPECT_TRUE(std::filesystem::is_directory(folder / "base"));
}

TEST_F(CreateTest, AnswersNullWhereTheFolderCanNotBeMade) {
    WriteFile("base");
    libraryDir = Path("base/below/a/file");
    EXPECT_EQ(Create("Files"), nullptr);
    EXPECT_TRUE(opened.empty());
}

TEST_F(CreateTest, AFailureOfTheRuntimePassesAndNothingIsKept) {
    EXPECT_CALL(*local, OpenProfile).WillOnce(Throw(std::runtime_error("disk is full")));
    EXPECT_THROW(
        {
            try {
                Create("Files");
            } catch (const std::runtime_error& failure) {
                EXPECT_STREQ(failure.what(), "disk is full");
                throw;
            }
        },
        std::runtime_error);
    testing::Mock::VerifyAndClearExpectations(&*local);
    EXPECT_CALL(*local, OpenProfile).WillOnce([](const Parameters&) {
        return kxct::mock::NewProfile();
    });
    EXPECT_NE(Create("Files"), nullptr);
}

TEST_F(CreateTest, ARuntimeWithoutSessionIsAKXCTException) {
    EXPECT_CALL(*local, OpenProfile).WillOnce(testing::Return(nullptr));
    EXPECT_THROW(Create("Files"), kxct::KXCTException);
}

TEST_F(CreateTest, AttachesALibraryThatLiesThereAndThenOpensIt) {
    WriteFile("base/library/Demo.ldb");
    const Parameters attach{{"DataSource", "local"},
                            {"UDMConfigFile", Path("udm.xml")},
                            {"MasterDBFile", Path("master.db")},
                            {"BinDir", "/inst/kx/bin/linux64"},
                            {"username", "anna"},
                            {"password", ""},
                            {"RepositoryName", "Demo"},
                            {"ProfileName", "Other"},
                            {"RepositoryBaseDir", Path("base/library")},
                            {"WorkspaceName", "Work"},
                            {"WorkspaceBaseDir", "/given/work"}};
    const InSequence order;
    EXPECT_CALL(*local, AddExistingRepository(attach, kxString("Renamed")));
    EXPECT_CALL(*local, OpenProfile);
    ASSERT_NE(Create("Other", "", "", "Renamed"), nullptr);
}

TEST_F(CreateTest, AttachesALibraryThatTheMasterDatabaseDoesNotKnow) {
    WriteFile("base/library/Stray.ldb");
    libraries.clear();
    const Parameters attach{{"DataSource", "local"},
                            {"UDMConfigFile", Path("udm.xml")},
                            {"MasterDBFile", Path("master.db")},
                            {"BinDir", "/inst/kx/bin/linux64"},
                            {"username", "anna"},
                            {"password", ""},
                            {"RepositoryName", "Stray"},
                            {"ProfileName", "Files"},
                            {"RepositoryBaseDir", Path("base/library")},
                            {"WorkspaceName", "Work"},
                            {"WorkspaceBaseDir", "/given/work"}};
    EXPECT_CALL(*local, AddExistingRepository(attach, kxString("Demo")));
    ASSERT_NE(Create("Files"), nullptr);
    EXPECT_EQ(opened.at(0), NewLibrary("Files"));
}

TEST_F(CreateTest, OfTwoLibrariesOnlyTheFirstListedIsAttached) {
    WriteFile("base/library/a.ldb");
    WriteFile("base/library/b.ldb");
    EXPECT_CALL(*local,
                AddExistingRepository(
                    testing::Contains(testing::Pair(kxString("RepositoryName"), kxVariant("a"))),
                    kxString("Demo")))
        .Times(1);
    EXPECT_NE(Create("Files"), nullptr);
    EXPECT_EQ(opened.size(), 1u);
}

TEST_F(CreateTest, AnExtensionInCapitalsIsNoLibrary) {
    WriteFile("base/library/Demo.LDB");
    WriteFile("base/library/Demo.ldb.bak");
    WriteFile("base/library/ldb");
    EXPECT_CALL(*local, AddExistingRepository).Times(0);
    EXPECT_NE(Create("Files"), nullptr);
}

TEST_F(CreateTest, AFailureToAttachPassesAndOpensNothing) {
    WriteFile("base/library/Demo.ldb");
    EXPECT_CALL(*local, AddExistingRepository).WillOnce(Throw(std::runtime_error("damaged")));
    EXPECT_CALL(*local, OpenProfile).Times(0);
    EXPECT_THROW(Create("Files"), std::runtime_error);
}

TEST_F(CreateTest, APostgresLibraryGetsDriversAndCredentials) {
    ASSERT_NE(Create("Team", "dbserver", "5432"), nullptr);
    EXPECT_EQ(opened.at(0), WithCredentials(WithDrivers(NewLibrary("Team")), "dbserver", "5432"));
}

TEST_F(CreateTest, AnotherHostOrPortReplacesAndIsStored) {
    ASSERT_NE(Create("Team", "//new/server/", "6000"), nullptr);
    EXPECT_EQ(opened.at(0),
              WithCredentials(WithDrivers(NewLibrary("Team")), "new/server/", "6000"));
    EXPECT_EQ(Stored("Team/PostGresCredentials/dbhost"), "new/server/");
    EXPECT_EQ(Stored("Team/PostGresCredentials/dbport"), "6000");
    EXPECT_EQ(Stored("Team/PostGresCredentials/dbusername"), "dbuser");
}

TEST_F(CreateTest, AnEmptyHostOrPortCountsAsAChange) {
    ASSERT_NE(Create("Team", "", "5432"), nullptr);
    EXPECT_EQ(opened.at(0), WithCredentials(WithDrivers(NewLibrary("Team")), "", "5432"));
    EXPECT_EQ(Stored("Team/PostGresCredentials/dbhost"), "");
    EXPECT_EQ(Stored("Team/PostGresCredentials/dbport"), "5432");
}

TEST_F(CreateTest, AHostOfSeparatorsAloneIsEmpty) {
    ASSERT_NE(Create("Team", "/\\/", "5432"), nullptr);
    EXPECT_EQ(opened.at(0).at("dbhost"), kxVariant(""));
}

TEST_F(CreateTest, AFailedSessionStoresNoNewHost) {
    EXPECT_CALL(*postgres, OpenProfile).WillOnce(Throw(std::runtime_error("no server")));
    EXPECT_THROW(Create("Team", "other", "1"), std::runtime_error);
    EXPECT_EQ(Stored("Team/PostGresCredentials/dbhost"), "dbserver");
}

TEST_F(CreateTest, UnchangedCredentialsWriteTheUsersFileAllTheSame) {
    Manager();
    std::filesystem::remove(folder / "user.xml");
    ASSERT_NE(Create("Team", "dbserver", "5432"), nullptr);
    EXPECT_EQ(Stored("Team/PostGresCredentials/dbhost"), "dbserver");
}

TEST_F(CreateTest, AFileLibraryWritesNoSettings) {
    Manager();
    std::filesystem::remove(folder / "user.xml");
    ASSERT_NE(Create("Files"), nullptr);
    EXPECT_FALSE(std::filesystem::exists(folder / "user.xml"));
}

TEST_F(CreateTest, WithAnyCredentialMissingGoesOnWithTheDriversAlone) {
    EditSettings(R"(<Key name="dbport" value="5432"/>)", "");
    ASSERT_NE(Create("Team", "dbserver", "5432"), nullptr);
    EXPECT_EQ(opened.at(0), WithDrivers(NewLibrary("Team")));
}

TEST_F(CreateTest, WithADriverMissingGoesOnWithNeither) {
    EditSettings(R"(value="sdriver")", R"(value="")");
    ASSERT_NE(Create("Team", "dbserver", "5432"), nullptr);
    auto expected = NewLibrary("Team");
    expected["DataSource"] = "PostGres";
    EXPECT_EQ(opened.at(0), expected);
}

TEST_F(CreateTest, AttachesAPostgresLibraryWithWhatWasCollected) {
    WriteFile("base/library/Demo.ldb");
    libraries["7"]["profile_name"] = "Team";
    clientSettings = {{"dbhost", "client"}, {"extra", "more"}, {"username", "ignored"}};
    Parameters attach = WithCredentials(WithDrivers(NewLibrary("Team")), "client", "5432");
    attach["password"] = "";
    attach["extra"] = "more";
    EXPECT_CALL(*postgres, AddExistingRepository(attach, kxString("Demo")));
    ASSERT_NE(Create("Team", "dbserver", "5432"), nullptr);
    EXPECT_EQ(opened.at(0), WithCredentials(WithDrivers(NewLibrary("Team")), "dbserver", "5432"));
}

TEST_F(CreateTest, ADirectConnectionGetsExactlyTheseParameters) {
    ASSERT_NE(Create("Single"), nullptr);
    const Parameters expected{{"DataSource", "UDMXML"},
                              {"UDMConfigFile", Path("own.xml")},
                              {"BinDir", "/inst/kx/bin/linux64"},
                              {"ConnectionIdentifier", "Demo"},
                              {"FileDataSource", Path("base/library")}};
    EXPECT_EQ(opened.at(0), expected);
    EXPECT_FALSE(std::filesystem::exists(folder / "base"));
}

// The key of a direct connection has pseudo names, so the real ones never find it.
TEST_F(CreateTest, ADirectConnectionIsOpenedAnewEachTime) {
    kxct::UDMDBCtrl* first = Create("Single");
    kxct::UDMDBCtrl* second = Create("Single");
    EXPECT_NE(first, second);
    EXPECT_EQ(opened.size(), 2u);
    EXPECT_EQ(Manager().Open("Demo", "nows", "nouser", "", kxct::CONN_TYPE_LIBRARY), first);
}

TEST_F(CreateTest, EachDirectConnectionEndsWithItsOwnClose) {
    kxct::UDMDBCtrl* first = Create("Single");
    kxct::UDMDBCtrl* second = Create("Single");
    const auto firstProfile = first->GetProfile();
    const auto secondProfile = second->GetProfile();
    const InSequence order;
    EXPECT_CALL(*xml, CloseProfile(secondProfile));
    Manager().Close(second);
    EXPECT_CALL(*xml, CloseProfile(firstProfile));
    Manager().Close(first);
}

TEST_F(CreateTest, WithTheTestVariableTheMasterDatabaseIsTheAutomaticOne) {
    testFolder.Set("");
    ASSERT_NE(Create("Files"), nullptr);
    EXPECT_EQ(opened.at(0).at("MasterDBFile"), kxVariant(Path("auto.db")));
}
