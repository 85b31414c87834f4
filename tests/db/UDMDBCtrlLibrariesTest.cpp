#include <gtest/gtest.h>
#include <kxctinterfaces/MasterDBManager.h>

#include "tests/db/OpenSession.h"

namespace kxct {
namespace {

using namespace mock;
using ::testing::_;
using ::testing::DoAll;
using ::testing::ElementsAre;
using ::testing::InSequence;
using ::testing::Return;
using ::testing::SetArgReferee;
using ::testing::Throw;

using Info = kxStlMap<kxString, kxString>;

Parameters BaseParameters() {
    Parameters params;
    params["MasterDBFile"] = "/master.db";
    params["username"] = "anna";
    return params;
}

Info InfoOf(std::initializer_list<std::pair<const kxString, kxString>> entries) {
    Info info;
    info.insert(entries);
    return info;
}

std::runtime_error Boom() {
    return std::runtime_error("boom");
}

TEST(UDMDBCtrl, LibrariesComeAsIdsWithTheirKeysAndValues) {
    ProviderRegistration provider;
    const Texts keys{"name", "dbhost", "type"};
    {
        InSequence order;
        EXPECT_CALL(*provider, GetRepositoryIds(_, BaseParameters(), 2U))
            .WillOnce(SetArgReferee<0>(Texts{"i1", "i2"}));
        EXPECT_CALL(*provider, GetRepositoryInfo(_, kxString("i1"), keys, BaseParameters(), _))
            .WillOnce(SetArgReferee<0>(InfoOf({{"type", "local"}, {"name", "One"}})));
        EXPECT_CALL(*provider, GetRepositoryInfo(_, kxString("i2"), keys, BaseParameters(), _))
            .WillOnce([](Info& info, const auto&, const auto&, const auto&, unsigned) {
                EXPECT_TRUE(info.empty());
                info["dbhost"] = "server";
            });
    }
    Texts out{"earlier"};
    EXPECT_TRUE(UDMDBCtrl::GetLibrariesInfo(BaseParameters(), keys, out, CONN_TYPE_PDM));
    EXPECT_THAT(out, ElementsAre("i1", "name", "One", "type", "local", "i2", "dbhost", "server"));
}

TEST(UDMDBCtrl, LibraryRecordsAreAskedForWithTheConstantOneWhateverTheType) {
    ProviderRegistration provider;
    EXPECT_CALL(*provider, GetRepositoryIds(_, _, 2U)).WillOnce(SetArgReferee<0>(Texts{"i1"}));
    EXPECT_CALL(*provider, GetRepositoryInfo(_, _, _, _, 1U));
    Texts out;
    EXPECT_TRUE(UDMDBCtrl::GetLibrariesInfo(BaseParameters(), {"name"}, out, CONN_TYPE_PDM));
}

TEST(UDMDBCtrl, ListingsWithoutParametersAnswerFalseAndLeaveTheResult) {
    ProviderRegistration provider;
    EXPECT_CALL(*provider, GetRepositoryIds).Times(0);
    EXPECT_CALL(*provider, GetRepositoryInfo).Times(0);
    EXPECT_CALL(*provider, GetRepositoryClientSettings).Times(0);
    EXPECT_CALL(*provider, GetWorkspaces).Times(0);
    EXPECT_CALL(*provider, GetWorkspaceInfo).Times(0);
    Texts out{"kept"};
    EXPECT_FALSE(UDMDBCtrl::GetLibrariesInfo({}, {"name"}, out, CONN_TYPE_LIBRARY));
    EXPECT_FALSE(UDMDBCtrl::GetWorkspacesInfo({}, {"name"}, out));
    EXPECT_THAT(out, ElementsAre("kept"));
    Info info = InfoOf({{"kept", "yes"}});
    EXPECT_FALSE(UDMDBCtrl::GetLibraryInfoByID({}, "i1", info, CONN_TYPE_LIBRARY));
    EXPECT_FALSE(UDMDBCtrl::GetWorkspaceInfo({}, "w1", info));
    EXPECT_EQ(info, InfoOf({{"kept", "yes"}}));
    Parameters settings;
    settings["kept"] = true;
    EXPECT_FALSE(UDMDBCtrl::GetLibraryClientSettings({}, "i1", settings));
    EXPECT_EQ(settings.size(), 1U);
    EXPECT_EQ(UDMDBCtrl::GetLibraryIDByName({}, "One", CONN_TYPE_LIBRARY), "");
}

TEST(UDMDBCtrl, AFailingListOfLibrariesAnswersFalse) {
    ProviderRegistration provider;
    EXPECT_CALL(*provider, GetRepositoryIds(_, _, _)).WillOnce(Throw(Boom()));
    Texts out{"kept"};
    EXPECT_FALSE(UDMDBCtrl::GetLibrariesInfo(BaseParameters(), {"name"}, out, CONN_TYPE_LIBRARY));
    EXPECT_THAT(out, ElementsAre("kept"));
}

TEST(UDMDBCtrl, AFailingRecordOfALibraryAnswersFalse) {
    ProviderRegistration provider;
    EXPECT_CALL(*provider, GetRepositoryIds(_, _, _)).WillOnce(SetArgReferee<0>(Texts{"a", "b"}));
    EXPECT_CALL(*provider, GetRepositoryInfo(_, kxString("a"), _, _, _));
    EXPECT_CALL(*provider, GetRepositoryInfo(_, kxString("b"), _, _, _)).WillOnce(Throw(Boom()));
    Texts out{"earlier"};
    EXPECT_FALSE(UDMDBCtrl::GetLibrariesInfo(BaseParameters(), {"name"}, out, CONN_TYPE_LIBRARY));
    EXPECT_THAT(out, ElementsAre("a"));
}

TEST(UDMDBCtrl, WorkspacesComeAsIdsWithTheirKeysAndValues) {
    ProviderRegistration provider;
    const Texts keys{"workingDir", "name"};
    EXPECT_CALL(*provider, GetWorkspaces(_, BaseParameters()))
        .WillOnce(SetArgReferee<0>(Texts{"w1", "w2"}));
    EXPECT_CALL(*provider, GetWorkspaceInfo(_, kxString("w1"), keys, BaseParameters()))
        .WillOnce(SetArgReferee<0>(InfoOf({{"name", "Work"}, {"workingDir", "/w"}})));
    EXPECT_CALL(*provider, GetWorkspaceInfo(_, kxString("w2"), keys, BaseParameters()));
    Texts out{"earlier"};
    EXPECT_TRUE(UDMDBCtrl::GetWorkspacesInfo(BaseParameters(), keys, out));
    EXPECT_THAT(out, ElementsAre("w1", "workingDir", "/w", "name", "Work", "w2"));
}

TEST(UDMDBCtrl, AFailingListOfWorkspacesAnswersFalse) {
    ProviderRegistration provider;
    EXPECT_CALL(*provider, GetWorkspaces(_, _)).WillOnce(Throw(Boom()));
    Texts out;
    EXPECT_FALSE(UDMDBCtrl::GetWorkspacesInfo(BaseParameters(), {"name"}, out));
}

TEST(UDMDBCtrl, ALibraryIdIsFoundByItsExactName) {
    ProviderRegistration provider;
    const Texts keys{"id", "name"};
    EXPECT_CALL(*provider, GetRepositoryIds(_, BaseParameters(), 2U))
        .WillOnce(SetArgReferee<0>(Texts{"i1", "i2", "i3"}));
    EXPECT_CALL(*provider, GetRepositoryInfo(_, kxString("i1"), keys, BaseParameters(), 2U))
        .WillOnce(SetArgReferee<0>(InfoOf({{"id", "i1"}, {"name", "DEMO"}})));
    EXPECT_CALL(*provider, GetRepositoryInfo(_, kxString("i2"), keys, BaseParameters(), 2U))
        .WillOnce(SetArgReferee<0>(InfoOf({{"id", "record-2"}, {"name", "Demo"}})));
    EXPECT_CALL(*provider, GetRepositoryInfo(_, kxString("i3"), _, _, _)).Times(0);
    EXPECT_EQ(UDMDBCtrl::GetLibraryIDByName(BaseParameters(), "Demo", CONN_TYPE_PDM), "record-2");
}

TEST(UDMDBCtrl, ALibraryWithoutANameIsSkippedInTheSearchByName) {
    ProviderRegistration provider;
    EXPECT_CALL(*provider, GetRepositoryIds(_, _, _)).WillOnce(SetArgReferee<0>(Texts{"a", "b"}));
    EXPECT_CALL(*provider, GetRepositoryInfo(_, kxString("a"), _, _, _))
        .WillOnce(SetArgReferee<0>(InfoOf({{"id", "a"}})));
    EXPECT_CALL(*provider, GetRepositoryInfo(_, kxString("b"), _, _, _))
        .WillOnce(SetArgReferee<0>(InfoOf({{"id", "b"}, {"name", "Demo"}})));
    EXPECT_EQ(UDMDBCtrl::GetLibraryIDByName(BaseParameters(), "Demo", CONN_TYPE_LIBRARY), "b");
}

TEST(UDMDBCtrl, AnUnknownLibraryNameAndAFailureHaveAnEmptyId) {
    ProviderRegistration provider;
    EXPECT_CALL(*provider, GetRepositoryIds(_, _, _))
        .WillOnce(SetArgReferee<0>(Texts{"a"}))
        .WillOnce(SetArgReferee<0>(Texts{"a", "b"}));
    EXPECT_CALL(*provider, GetRepositoryInfo(_, _, _, _, _))
        .WillOnce(SetArgReferee<0>(InfoOf({{"id", "a"}, {"name", "Other"}})))
        .WillOnce(Throw(Boom()));
    EXPECT_EQ(UDMDBCtrl::GetLibraryIDByName(BaseParameters(), "Demo", CONN_TYPE_LIBRARY), "");
    EXPECT_EQ(UDMDBCtrl::GetLibraryIDByName(BaseParameters(), "Demo", CONN_TYPE_LIBRARY), "");
}

TEST(UDMDBCtrl, TheRecordOfALibraryHasEightFieldsInOrder) {
    ProviderRegistration provider;
    const Texts keys{
        "id", "name", "profile_name", "is_default", "type", "ldbFile", "dbhost", "dbport"};
    EXPECT_CALL(*provider, GetRepositoryInfo(_, kxString("i1"), keys, BaseParameters(), 2U))
        .WillOnce([](Info& info, const auto&, const auto&, const auto&, unsigned) {
            info["name"] = "Demo";
        });
    Info info = InfoOf({{"kept", "yes"}});
    EXPECT_TRUE(UDMDBCtrl::GetLibraryInfoByID(BaseParameters(), "i1", info, CONN_TYPE_PDM));
    EXPECT_EQ(info, InfoOf({{"kept", "yes"}, {"name", "Demo"}}));
}

TEST(UDMDBCtrl, ALibraryRecordWithoutEntriesOrWithAFailureAnswersFalse) {
    ProviderRegistration provider;
    EXPECT_CALL(*provider, GetRepositoryInfo(_, _, _, _, _))
        .WillOnce(Return())
        .WillOnce(Throw(Boom()));
    Info info;
    EXPECT_FALSE(UDMDBCtrl::GetLibraryInfoByID(BaseParameters(), "i", info, CONN_TYPE_LIBRARY));
    EXPECT_FALSE(UDMDBCtrl::GetLibraryInfoByID(BaseParameters(), "i", info, CONN_TYPE_LIBRARY));
}

TEST(UDMDBCtrl, TheRecordOfAWorkspaceHasSevenFieldsInOrderAndReplacesTheResult) {
    ProviderRegistration provider;
    const Texts keys{"name",
                     "workingDir",
                     "client_working_dir",
                     "host_name",
                     "user_name",
                     "uname",
                     "is_default"};
    EXPECT_CALL(*provider, GetWorkspaceInfo(_, kxString("w1"), keys, BaseParameters()))
        .WillOnce([](Info& info, const auto&, const auto&, const auto&) {
            EXPECT_TRUE(info.empty());
            info["name"] = "Work";
        });
    Info info = InfoOf({{"earlier", "yes"}});
    EXPECT_TRUE(UDMDBCtrl::GetWorkspaceInfo(BaseParameters(), "w1", info));
    EXPECT_EQ(info, InfoOf({{"name", "Work"}}));
}

TEST(UDMDBCtrl, AWorkspaceRecordWithoutEntriesOrWithAFailureAnswersFalse) {
    ProviderRegistration provider;
    EXPECT_CALL(*provider, GetWorkspaceInfo(_, _, _, _)).WillOnce(Return()).WillOnce(Throw(Boom()));
    Info info;
    EXPECT_FALSE(UDMDBCtrl::GetWorkspaceInfo(BaseParameters(), "w", info));
    EXPECT_FALSE(UDMDBCtrl::GetWorkspaceInfo(BaseParameters(), "w", info));
}

TEST(UDMDBCtrl, ClientSettingsAreAddedToTheResult) {
    ProviderRegistration provider;
    EXPECT_CALL(*provider, GetRepositoryClientSettings(_, kxString("i1"), BaseParameters()))
        .WillOnce([](Parameters& out, const auto&, const auto&) { out["Host"] = "server"; })
        .WillOnce(Return())
        .WillOnce(Throw(Boom()));
    Parameters out;
    EXPECT_TRUE(UDMDBCtrl::GetLibraryClientSettings(BaseParameters(), "i1", out));
    EXPECT_EQ(out["Host"].GetString(), "server");
    Parameters none;
    EXPECT_FALSE(UDMDBCtrl::GetLibraryClientSettings(BaseParameters(), "i1", none));
    EXPECT_FALSE(UDMDBCtrl::GetLibraryClientSettings(BaseParameters(), "i1", none));
}

TEST(UDMDBCtrl, CheckConnectionHandsItsArgumentsOnInOrder) {
    ProviderRegistration provider;
    EXPECT_CALL(*provider,
                CheckConnection(kxString("local"),
                                kxString("a"),
                                kxString("b"),
                                kxString("host"),
                                kxString("c"),
                                kxString("user"),
                                kxString("pass"),
                                _))
        .WillOnce(DoAll(SetArgReferee<7>("reached"), Return(true)))
        .WillOnce(DoAll(SetArgReferee<7>("nobody there"), Return(false)));
    kxString message;
    EXPECT_TRUE(
        UDMDBCtrl::CheckConnection("local", "a", "b", "host", "c", "user", "pass", message));
    EXPECT_EQ(message, "reached");
    EXPECT_FALSE(
        UDMDBCtrl::CheckConnection("local", "a", "b", "host", "c", "user", "pass", message));
    EXPECT_EQ(message, "nobody there");
}

TEST(UDMDBCtrl, AFailingCheckConnectionIsTranslated) {
    ProviderRegistration provider;
    EXPECT_CALL(*provider, CheckConnection(_, _, _, _, _, _, _, _)).WillOnce(Throw(Boom()));
    kxString message;
    EXPECT_EQ(
        FailureOf([&] { UDMDBCtrl::CheckConnection("local", "", "", "", "", "", "", message); }),
        "const bool __cdecl kxct::UDMDBCtrl::CheckConnection(const class kxString &,const class "
        "kxString &,const class kxString &,const class kxString &,const class kxString &,const "
        "class kxString &,const class kxString &,class kxString &) boom");
}

TEST(UDMDBCtrl, ExistingLibrariesAreAddedAndMadeDefault) {
    ProviderRegistration provider;
    EXPECT_CALL(*provider, AddExistingRepository(BaseParameters(), kxString("Demo")));
    EXPECT_CALL(*provider, SetDefaultRepository(BaseParameters()));
    UDMDBCtrl::AddExistingLibrary(BaseParameters(), "Demo");
    UDMDBCtrl::SetDefaultLibrary(BaseParameters());
}

TEST(UDMDBCtrl, ALibraryIsAlwaysDeletedByForce) {
    ProviderRegistration provider;
    {
        InSequence order;
        EXPECT_CALL(*provider, DeleteRepository(BaseParameters(), false, true));
        EXPECT_CALL(*provider, DeleteRepository(BaseParameters(), true, true));
    }
    UDMDBCtrl::DeleteLibrary(BaseParameters(), false);
    UDMDBCtrl::DeleteLibrary(BaseParameters(), true);
}

TEST(UDMDBCtrl, FailuresOfLibraryChangesPassUntranslated) {
    ProviderRegistration provider;
    EXPECT_CALL(*provider, AddExistingRepository(_, _)).WillOnce(Throw(Boom()));
    EXPECT_CALL(*provider, SetDefaultRepository(_)).WillOnce(Throw(Boom()));
    EXPECT_CALL(*provider, DeleteRepository(_, _, _)).WillOnce(Throw(Boom()));
    EXPECT_THROW(UDMDBCtrl::AddExistingLibrary(BaseParameters(), "Demo"), std::runtime_error);
    EXPECT_THROW(UDMDBCtrl::SetDefaultLibrary(BaseParameters()), std::runtime_error);
    EXPECT_THROW(UDMDBCtrl::DeleteLibrary(BaseParameters(), true), std::runtime_error);
}

}  // namespace
}  // namespace kxct
