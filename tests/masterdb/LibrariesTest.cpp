#include <kxct/KXCTException.h>

#include <stdexcept>

#include "tests/masterdb/ManagerFixture.h"

using kxct::CONN_TYPE_LIBRARY;
using testing::_;
using testing::ElementsAre;
using testing::Throw;

namespace {

class LibrariesTest : public ManagerTest {
  protected:
    // The parameters by which library "Demo" is maintained.
    Parameters Demo() const {
        return {{"DataSource", "local"},
                {"UDMConfigFile", Path("udm.xml")},
                {"MasterDBFile", Path("master.db")},
                {"BinDir", "/inst/kx/bin/linux64"},
                {"username", "anna"},
                {"password", ""},
                {"RepositoryName", "Demo"},
                {"ProfileName", "Files"},
                {"RepositoryBaseDir", "/stored/base"},
                {"WorkspaceName", "Work"},
                {"WorkspaceBaseDir", "/stored/work"}};
    }
    bool Delete(const kxString& repository = "Demo", const kxString& user = "anna") {
        return Manager().DeleteLibrary(repository, "Work", true, user);
    }

    Texts values;
    kxString message;
};

}  // namespace

TEST_F(LibrariesTest, ListsLibrariesWithTheWantedFields) {
    const Texts names{"name", "type"};
    EXPECT_CALL(*local, GetRepositoryIds(_, Query(), 2u));
    libraries["7"]["type"] = "2";
    EXPECT_TRUE(Manager().GetLibrariesInfo("anna", names, values, kxct::CONN_TYPE_PDM));
    EXPECT_THAT(values, ElementsAre("7", "name", "Demo", "type", "2"));
}

TEST_F(LibrariesTest, AListingThatFailsIsFalse) {
    EXPECT_CALL(*local, GetRepositoryIds).WillOnce(Throw(std::runtime_error("locked")));
    EXPECT_FALSE(Manager().GetLibrariesInfo("anna", {"name"}, values, CONN_TYPE_LIBRARY));
}

TEST_F(LibrariesTest, FindsTheIdOfALibraryByItsExactName) {
    EXPECT_EQ(Manager().GetLibraryIDByName("anna", "Demo", CONN_TYPE_LIBRARY), "7");
    EXPECT_EQ(Manager().GetLibraryIDByName("anna", "demo", CONN_TYPE_LIBRARY), "");
    EXPECT_EQ(Manager().GetLibraryIDByName("anna", "Demo", kxct::CONN_TYPE_PDM), "");
}

TEST_F(LibrariesTest, InfoByIdComesInTheOrderAskedFor) {
    EXPECT_TRUE(Manager().GetLibraryInfoByID(
        "anna", "7", {"name", "ldbFile", "id"}, values, CONN_TYPE_LIBRARY));
    EXPECT_THAT(values, ElementsAre("name", "Demo", "ldbFile", "/stored/base/Demo.ldb", "id", "7"));
}

TEST_F(LibrariesTest, InfoByIdGivesAnUnknownFieldAnEmptyValue) {
    EXPECT_TRUE(
        Manager().GetLibraryInfoByID("anna", "7", {"colour", "name"}, values, CONN_TYPE_LIBRARY));
    EXPECT_THAT(values, ElementsAre("colour", "", "name", "Demo"));
}

TEST_F(LibrariesTest, InfoByIdWithoutNamesGivesAllFieldsInOrder) {
    EXPECT_TRUE(Manager().GetLibraryInfoByID("anna", "7", {}, values, CONN_TYPE_LIBRARY));
    EXPECT_THAT(values,
                ElementsAre("id",
                            "7",
                            "ldbFile",
                            "/stored/base/Demo.ldb",
                            "name",
                            "Demo",
                            "profile_name",
                            "Files",
                            "type",
                            "1"));
}

TEST_F(LibrariesTest, InfoByIdAppends) {
    values = {"before"};
    EXPECT_TRUE(Manager().GetLibraryInfoByID("anna", "7", {"name"}, values, CONN_TYPE_LIBRARY));
    EXPECT_THAT(values, ElementsAre("before", "name", "Demo"));
}

TEST_F(LibrariesTest, InfoOfAnUnknownIdIsFalseAndLeavesTheListAlone) {
    values = {"before"};
    EXPECT_FALSE(Manager().GetLibraryInfoByID("anna", "8", {"name"}, values, CONN_TYPE_LIBRARY));
    EXPECT_THAT(values, ElementsAre("before"));
}

TEST_F(LibrariesTest, InfoByNameGoesThroughTheId) {
    EXPECT_TRUE(Manager().GetLibraryInfoByName(
        "anna", "Demo", {"profile_name"}, values, CONN_TYPE_LIBRARY));
    EXPECT_THAT(values, ElementsAre("profile_name", "Files"));
}

TEST_F(LibrariesTest, InfoOfAnUnknownNameAsksForTheEmptyId) {
    EXPECT_CALL(*local, GetRepositoryInfo(_, kxString("7"), _, _, _)).Times(testing::AnyNumber());
    EXPECT_CALL(*local, GetRepositoryInfo(_, kxString(""), _, Query(), 1u))
        .WillOnce([](Record& info, auto&&...) { info["name"] = "answer to nothing"; });
    EXPECT_TRUE(
        Manager().GetLibraryInfoByName("anna", "Other", {"name"}, values, CONN_TYPE_LIBRARY));
    EXPECT_THAT(values, ElementsAre("name", "answer to nothing"));
}

TEST_F(LibrariesTest, ClientSettingsAreHandedThrough) {
    Parameters settings;
    EXPECT_FALSE(Manager().GetLibraryClientSettings("anna", "7", settings));
    clientSettings = {{"dbhost", "client"}};
    EXPECT_CALL(*local, GetRepositoryClientSettings(_, kxString("7"), Query()));
    EXPECT_TRUE(Manager().GetLibraryClientSettings("anna", "7", settings));
    EXPECT_EQ(settings, clientSettings);
}

TEST_F(LibrariesTest, TheProfileNameIsAFieldOfTheRecord) {
    EXPECT_EQ(Manager().GetProfileName("7", "anna", CONN_TYPE_LIBRARY), "Files");
    libraries["7"].erase("profile_name");
    EXPECT_EQ(Manager().GetProfileName("7", "anna", CONN_TYPE_LIBRARY), "");
}

TEST_F(LibrariesTest, TheProfileNameOfAnUnknownLibraryThrows) {
    try {
        Manager().GetProfileName("8", "anna", CONN_TYPE_LIBRARY);
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& failure) {
        EXPECT_STREQ(failure.what(), "Error: library not found!");
    }
}

TEST_F(LibrariesTest, WorkspaceInfoComesInTheOrderAskedFor) {
    values = {"before"};
    EXPECT_CALL(*local, GetWorkspaceInfo(_, kxString("Work"), _, Query()));
    EXPECT_TRUE(Manager().GetWorkspaceInfo("anna", "Work", {"workingDir", "name"}, values));
    EXPECT_THAT(values, ElementsAre("before", "workingDir", "/stored/work", "name", "Work"));
}

TEST_F(LibrariesTest, WorkspaceInfoWithoutNamesGivesAllFields) {
    EXPECT_TRUE(Manager().GetWorkspaceInfo("anna", "Work", {}, values));
    EXPECT_THAT(values, ElementsAre("name", "Work", "uname", "anna", "workingDir", "/stored/work"));
}

// Unlike a library's record, on purpose.
TEST_F(LibrariesTest, WorkspaceInfoWithAnUnknownFieldIsFalseAndListsTheFields) {
    values = {"before"};
    EXPECT_FALSE(Manager().GetWorkspaceInfo("anna", "Work", {"name", "colour", "uname"}, values));
    EXPECT_THAT(values, ElementsAre("name", "uname", "workingDir"));
}

TEST_F(LibrariesTest, AWorkspaceFieldNameEndsAtItsFirstNul) {
    EXPECT_TRUE(Manager().GetWorkspaceInfo("anna", "Work", {kxString("name\0x", 6)}, values));
    EXPECT_THAT(values, ElementsAre("name", "Work"));
}

TEST_F(LibrariesTest, InfoOfAnUnknownWorkspaceIsFalseAndLeavesTheListAlone) {
    values = {"before"};
    EXPECT_FALSE(Manager().GetWorkspaceInfo("anna", "Elsewhere", {}, values));
    EXPECT_THAT(values, ElementsAre("before"));
}

TEST_F(LibrariesTest, ListsWorkspacesWithTheWantedFields) {
    workspaces["Other"] = {{"name", "Other"}};
    EXPECT_CALL(*local, GetWorkspaces(_, Query()));
    EXPECT_TRUE(Manager().GetWorkspacesInfo("anna", {"uname", "name"}, values));
    EXPECT_THAT(values,
                ElementsAre("Other", "name", "Other", "Work", "uname", "anna", "name", "Work"));
}

TEST_F(LibrariesTest, ALibraryIsDeletedByItsFullParameters) {
    EXPECT_CALL(*local, DeleteRepository(Demo(), false, true));
    EXPECT_TRUE(Manager().DeleteLibrary("Demo", "Work", false, "anna"));
    EXPECT_CALL(*local, DeleteRepository(Demo(), true, true));
    EXPECT_TRUE(Delete());
}

TEST_F(LibrariesTest, ALibraryWithAnOpenSessionIsNotDeleted) {
    Open();
    EXPECT_CALL(*local, DeleteRepository).Times(0);
    EXPECT_CALL(*local, GetRepositoryIds).Times(0);
    EXPECT_FALSE(Delete());
}

TEST_F(LibrariesTest, AnOpenSessionOfSomebodyElseDoesNotHinderDeletion) {
    Open();
    EXPECT_CALL(*local, DeleteRepository);
    EXPECT_TRUE(Delete("Demo", "bert"));
}

TEST_F(LibrariesTest, AFailedDeletionIsFalse) {
    EXPECT_CALL(*local, DeleteRepository).WillOnce(Throw(std::runtime_error("busy")));
    EXPECT_FALSE(Delete());
}

// Its profile is unknown, so it counts as a local one and still gets the workspace.
TEST_F(LibrariesTest, AnUnknownLibraryIsDeletedByWhatIsKnown) {
    const Parameters expected{{"UDMConfigFile", Path("udm.xml")},
                              {"MasterDBFile", Path("master.db")},
                              {"BinDir", "/inst/kx/bin/linux64"},
                              {"username", "anna"},
                              {"password", ""},
                              {"RepositoryName", "Other"},
                              {"WorkspaceName", "Work"},
                              {"WorkspaceBaseDir", "/stored/work"}};
    EXPECT_CALL(*local, DeleteRepository(expected, true, true));
    EXPECT_TRUE(Delete("Other"));
}

TEST_F(LibrariesTest, AProfileWithoutDataSourceCountsAsLocal) {
    libraries["7"]["profile_name"] = "Nowhere";
    auto expected = Demo();
    expected["ProfileName"] = "Nowhere";
    EXPECT_CALL(*local, DeleteRepository(expected, true, true));
    EXPECT_TRUE(Delete());
}

TEST_F(LibrariesTest, APostgresLibraryIsDeletedWithItsClientSettings) {
    libraries["7"]["profile_name"] = "Team";
    clientSettings = {{"dbhost", "client"}, {"username", "ignored"}};
    auto expected = Demo();
    expected["DataSource"] = "PostGres";
    expected["ProfileName"] = "Team";
    expected["dbhost"] = "client";
    EXPECT_CALL(*postgres, DeleteRepository(expected, true, true));
    EXPECT_TRUE(Delete());
}

TEST_F(LibrariesTest, AnExternalLibraryIsDeletedWithoutWorkspace) {
    libraries["7"]["profile_name"] = "TC";
    auto expected = Demo();
    expected["DataSource"] = "Teamcenter";
    expected["ProfileName"] = "TC";
    expected.erase("WorkspaceName");
    expected.erase("WorkspaceBaseDir");
    EXPECT_CALL(*teamcenter, DeleteRepository(expected, true, true));
    EXPECT_TRUE(Delete());
}

TEST_F(LibrariesTest, AnUnknownWorkspaceIsNamedWithoutDirectory) {
    workspaces.clear();
    auto expected = Demo();
    expected.erase("WorkspaceBaseDir");
    EXPECT_CALL(*local, DeleteRepository(expected, true, true));
    EXPECT_TRUE(Delete());
}

TEST_F(LibrariesTest, TheDefaultLibraryIsSetByItsFullParameters) {
    Open();  // an open session doesn't matter here
    EXPECT_CALL(*local, SetDefaultRepository(Demo()));
    EXPECT_TRUE(Manager().SetDefaultLibrary("Demo", "Work", "anna"));
}

TEST_F(LibrariesTest, AFailureToSetTheDefaultLibraryIsFalse) {
    EXPECT_CALL(*local, SetDefaultRepository).WillOnce(Throw(std::runtime_error("busy")));
    EXPECT_FALSE(Manager().SetDefaultLibrary("Demo", "Work", "anna"));
}

TEST_F(LibrariesTest, CheckConnectionHandsItsArgumentsOnWithoutLeadingSlashes) {
    EXPECT_CALL(*local,
                CheckConnection(kxString("local"),
                                kxString("a"),
                                kxString("b"),
                                kxString("host/"),
                                kxString("c"),
                                kxString("anna"),
                                kxString("secret"),
                                _))
        .WillOnce([](auto&&... all) {
            std::get<7>(std::tie(all...)) = "reached";
            return true;
        });
    EXPECT_TRUE(
        Manager().CheckConnection(message, "Files", "a", "b", "\\\\/host/", "c", "anna", "secret"));
    EXPECT_EQ(message, "reached");
}

TEST_F(LibrariesTest, CheckConnectionOfPostgresTakesTheStoredAccount) {
    EXPECT_CALL(*postgres,
                CheckConnection(_, _, _, _, _, kxString("dbuser"), kxString("dbsecret"), _))
        .WillOnce(testing::Return(true));
    EXPECT_TRUE(Manager().CheckConnection(message, "Team", "", "", "", "", "anna", "secret"));
}

TEST_F(LibrariesTest, CheckConnectionOfPostgresWithIncompleteAccountTakesTheArguments) {
    EditSettings(R"(name="dbport" value="5432")", R"(name="dbport" value="")");
    EXPECT_CALL(*postgres, CheckConnection(_, _, _, _, _, kxString("anna"), kxString("secret"), _))
        .WillOnce(testing::Return(false));
    EXPECT_FALSE(Manager().CheckConnection(message, "Team", "", "", "", "", "anna", "secret"));
}

TEST_F(LibrariesTest, AFailingCheckConnectionIsAKXCTException) {
    EXPECT_CALL(*local, CheckConnection).WillOnce(Throw(std::runtime_error("no route")));
    EXPECT_THROW(Manager().CheckConnection(message, "Files", "", "", "", "", "", ""),
                 kxct::KXCTException);
}

TEST_F(LibrariesTest, WithoutSettingsEveryQuestionIsAKXCTException) {
    Manager().LoseSettings();
    EXPECT_THROW(Manager().GetLibraryIDByName("anna", "Demo", CONN_TYPE_LIBRARY),
                 kxct::KXCTException);
    EXPECT_THROW(Manager().GetWorkspacesInfo("anna", {}, values), kxct::KXCTException);
}
