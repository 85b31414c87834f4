#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "Library.h"
#include "store/LibraryStore.h"

namespace kxudm::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace fs = std::filesystem;

class Libraries : public testing::Test {
  protected:
    // Every name below the test's folder that tells of a library.
    Names Traces() const {
        Names names;
        for (const auto& entry : fs::recursive_directory_iterator(library.Folder().Path())) {
            const std::string path = entry.path();
            if (path.find("/master") == std::string::npos &&
                path.find("/ws") == std::string::npos) {
                names.push_back(path.substr(library.Folder().Path().size() + 1));
            }
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    std::string OpenRefused(const Parameters& params) {
        return Refusal([&] { library.Keep(UDMProfileMgr::GetProfile(params)); });
    }

    kxStlVector<kxString> Ids(unsigned int type = 1) const {
        kxStlVector<kxString> ids;
        UDMProfileMgr::GetRepositoryIds(ids, library.Params(), type);
        return ids;
    }

    kxStlMap<kxString, kxString> Info(const kxString& id) const {
        kxStlMap<kxString, kxString> info;
        UDMProfileMgr::GetRepositoryInfo(
            info,
            id,
            {"id", "name", "profile_name", "is_default", "type", "ldbFile", "dbhost", "dbport"},
            library.Params(),
            1);
        return info;
    }

    static void Write(const std::string& path, const std::string& text) {
        fs::create_directories(fs::path(path).parent_path());
        std::ofstream(path, std::ios::binary) << text;
    }

    Library library;
};

TEST_F(Libraries, B1_OpeningMakesWhatIsMissing) {
    const ProfilePtr ann = library.Open("ann");
    EXPECT_TRUE(fs::is_regular_file(library.File()));
    EXPECT_TRUE(fs::is_directory(library.Folder().File("ws/ann/desk")));
    ASSERT_EQ(Ids().size(), 1U);
    const auto info = Info(Ids().front());
    EXPECT_EQ(info.at("id"), Ids().front());
    EXPECT_EQ(info.at("name"), "Lib");
    EXPECT_EQ(info.at("profile_name"), "Local");
    EXPECT_EQ(info.at("is_default"), "true");
    EXPECT_EQ(info.at("type"), "local");
    EXPECT_EQ(info.at("ldbFile"), library.File());
    // A local library has no server.
    EXPECT_EQ(info.count("dbhost"), 0U);
    EXPECT_THAT(Ids(2), IsEmpty());
    EXPECT_THROW(Ids(7), UDMException);
}

TEST_F(Libraries, B1_AKnownOneOpensFromTheMasterDatabaseAlone) {
    const kxString uid = library.Open("ann")->CreateEntity("Note", "Note").GetUID();
    Parameters params = library.Params();
    for (const char* key :
         {"RepositoryBaseDir", "UDMConfigFile", "WorkspaceBaseDir", "ProfileName"}) {
        params.erase(key);
    }
    const ProfilePtr again = library.Keep(UDMProfileMgr::GetProfile(params));
    EXPECT_EQ(again->GetEntity(uid).GetDisplayName(), "Note");
}

TEST_F(Libraries, B1_MasterDatabaseOf0BytesCountsAsNew) {
    Write(library.Folder().File("master/master.db"), "");
    library.Open("ann");
    EXPECT_EQ(Ids().size(), 1U);
}

TEST_F(Libraries, B2_AnotherBaseDirectoryIsAnErrorThatNamesBoth) {
    library.Open("ann");
    Parameters params = library.Params();
    params["RepositoryBaseDir"] = library.Folder().File("elsewhere");
    EXPECT_THAT(OpenRefused(params),
                AllOf(HasSubstr(library.BaseDirectory()), HasSubstr("elsewhere")));
    EXPECT_FALSE(fs::exists(library.Folder().File("elsewhere")));
    // The same directory in other words is the same.
    params["RepositoryBaseDir"] = library.BaseDirectory() + "/../base/";
    library.Keep(UDMProfileMgr::GetProfile(params));
}

TEST_F(Libraries, B3_AMissingParameterIsAnErrorThatNamesTheKey) {
    for (const char* key : {"MasterDBFile",
                            "UDMConfigFile",
                            "RepositoryName",
                            "RepositoryBaseDir",
                            "WorkspaceName",
                            "WorkspaceBaseDir",
                            "username"}) {
        Parameters params = library.Params();
        params.erase(key);
        EXPECT_THAT(OpenRefused(params), AllOf(HasSubstr(key), HasSubstr("missing")));
        params[key] = "";
        EXPECT_THAT(OpenRefused(params), AllOf(HasSubstr(key), HasSubstr("empty")));
        EXPECT_THAT(Traces(), IsEmpty()) << key;
    }
}

TEST_F(Libraries, B3_AWorkspaceWithAnotherDirectoryIsAnErrorThatNamesBoth) {
    library.Open("ann");
    Parameters params = library.Params();
    params["WorkspaceBaseDir"] = library.Folder().File("wsx");
    EXPECT_THAT(OpenRefused(params), AllOf(HasSubstr("ws/ann/desk"), HasSubstr("wsx")));
}

TEST_F(Libraries, B4_NamesThatCanNotBeFilesAreRefused) {
    for (const char* name : {"a/b", "..", ".hidden", "a\nb", "a\\b", "\xff"}) {
        Parameters params = library.Params();
        params["RepositoryName"] = name;
        EXPECT_THAT(OpenRefused(params), HasSubstr("RepositoryName")) << name;
    }
    EXPECT_THAT(Traces(), IsEmpty());
}

TEST_F(Libraries, B5_ABadCatalogueLeavesNothingBehind) {
    const std::string bad = library.Folder().File("ws_bad.xml");
    Write(bad, "<catalogue version=\"1\">\n<definition/>\n</catalogue>");
    Parameters params = library.Params();
    params["UDMConfigFile"] = bad;
    EXPECT_THAT(OpenRefused(params), HasSubstr(bad + ":2"));
    params["UDMConfigFile"] = library.Folder().File("nothing.xml");
    EXPECT_THAT(OpenRefused(params), HasSubstr("nothing.xml"));
    EXPECT_THAT(Traces(), IsEmpty());
    EXPECT_THAT(Ids(), IsEmpty());
}

TEST_F(Libraries, B5_ADirectoryThatCanNotBeMadeLeavesNothingBehind) {
    Write(library.Folder().File("file"), "x");
    Parameters params = library.Params();
    params["RepositoryBaseDir"] = library.Folder().File("file/base");
    EXPECT_THAT(OpenRefused(params), HasSubstr("file/base"));
    EXPECT_THAT(Traces(), ElementsAre("file"));
    EXPECT_THAT(Ids(), IsEmpty());
}

TEST_F(Libraries, B5_AWorkspaceThatCanNotBeMadeTakesTheNewLibraryBack) {
    Write(library.Folder().File("file"), "x");
    Parameters params = library.Params();
    params["WorkspaceBaseDir"] = library.Folder().File("file/ws");
    EXPECT_THAT(OpenRefused(params), HasSubstr("WorkspaceBaseDir"));
    EXPECT_THAT(Traces(), ElementsAre("file"));
    EXPECT_THAT(Ids(), IsEmpty());
}

TEST_F(Libraries, B5_ADirectoryThatIsNotWritableLeavesNothingBehind) {
    fs::create_directories(library.BaseDirectory());
    fs::create_directories(library.Folder().File("master"));
    fs::permissions(library.BaseDirectory(), fs::perms(0555));
    fs::permissions(library.Folder().File("master"), fs::perms(0777));
    fs::permissions(library.Folder().Path(), fs::perms(0777));
    const std::string catalogue = library.Folder().File("ws_catalogue.xml");
    fs::copy_file(KXUDMRT_TEST_CATALOGUE, catalogue);
    fs::permissions(catalogue, fs::perms(0644));
    Parameters params = library.Params();
    params["UDMConfigFile"] = catalogue;
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // Permissions mean nothing to the super user.
        if (geteuid() == 0 && setuid(65534) != 0) {
            _exit(3);
        }
        int code = 1;
        try {
            UDMProfileMgr::GetProfile(params);
        } catch (const std::exception& refusal) {
            const std::string text = refusal.what();
            code = text.find(library.BaseDirectory()) != std::string::npos ? 0 : 2;
        }
        _exit(code);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
    fs::permissions(library.BaseDirectory(), fs::perms(0755));
    EXPECT_THAT(Traces(), ElementsAre("base"));
}

TEST_F(Libraries, B6_AFileThatIsNoLibraryIsLeftAlone) {
    Write(library.File(), std::string(5000, 'x'));
    EXPECT_THAT(OpenRefused(library.Params()), HasSubstr(library.File()));
    EXPECT_EQ(fs::file_size(library.File()), 5000U);
    EXPECT_THAT(Ids(), IsEmpty());
}

TEST_F(Libraries, B6_AKnownOneWhoseFileIsGoneIsAnErrorThatNamesIt) {
    {
        ProfilePtr ann = UDMProfileMgr::GetProfile(library.Params());
        UDMProfileMgr::DiscardProfile(ann);
    }
    fs::remove(library.File());
    EXPECT_THAT(OpenRefused(library.Params()), HasSubstr(library.File()));
    EXPECT_FALSE(fs::exists(library.File()));
}

TEST_F(Libraries, B7_OneThatLiesThereIsTakenUpInsteadOfMade) {
    const kxString uid = [&] {
        ProfilePtr ann = UDMProfileMgr::GetProfile(library.Params());
        const kxString made = ann->CreateEntity("Note", "Note").GetUID();
        UDMProfileMgr::DiscardProfile(ann);
        return made;
    }();
    fs::remove_all(library.Folder().File("master"));
    EXPECT_EQ(library.Open("ann")->GetEntity(uid).GetDisplayName(), "Note");
}

TEST_F(Libraries, B7_AnExistingOneIsAddedUnderAnyName) {
    {
        ProfilePtr ann = UDMProfileMgr::GetProfile(library.Params());
        ann->CreateEntity("Foldertype", "F");
        UDMProfileMgr::DiscardProfile(ann);
    }
    // Moved to another place, with a new master database.
    fs::remove_all(library.Folder().File("master"));
    fs::rename(library.BaseDirectory(), library.Folder().File("moved"));
    Parameters params = library.Params();
    params["RepositoryBaseDir"] = library.Folder().File("moved");
    UDMProfileMgr::AddExistingRepository(params, "Other");
    UDMProfileMgr::AddExistingRepository(params, "Other");
    ASSERT_EQ(Ids().size(), 1U);
    EXPECT_EQ(Info(Ids().front()).at("name"), "Other");
    EXPECT_EQ(Info(Ids().front()).at("ldbFile"), library.Folder().File("moved/Lib.ldb"));
    EXPECT_THAT(Refusal([&] { UDMProfileMgr::AddExistingRepository(params, "Third"); }),
                HasSubstr("Other"));
    params["RepositoryName"] = "Other";
    const ProfilePtr again = library.Keep(UDMProfileMgr::GetProfile(params));
    UDMItemHandle folder;
    again->GetFolder(folder, "/F", false);
    params["RepositoryName"] = "Nothing";
    EXPECT_THROW(UDMProfileMgr::AddExistingRepository(params, "Nothing"), UDMStoreException);
    EXPECT_EQ(Ids().size(), 1U);
}

TEST_F(Libraries, B8_DeletingTakesOneOutOfTheMasterDatabase) {
    library.Open("ann");
    EXPECT_THAT(Refusal([&] { UDMProfileMgr::DeleteRepository(library.Params(), false, false); }),
                HasSubstr("open"));
    EXPECT_EQ(Ids().size(), 1U);
    UDMProfileMgr::DeleteRepository(library.Params(), false, true);
    EXPECT_THAT(Ids(), IsEmpty());
    EXPECT_TRUE(fs::exists(library.File()));
    EXPECT_THROW(UDMProfileMgr::DeleteRepository(library.Params(), false, true),
                 UDMNotFoundException);
}

TEST_F(Libraries, B8_DeletingWithFilesClosesItsSessionsAndRemovesThem) {
    const ProfilePtr ann = library.Open("ann");
    const auto told = Listen(ann);
    Write(library.Folder().File("base/vault/ab/abcd"), "content");
    Write(library.Folder().File("base/mine.txt"), "not of the library");
    UDMProfileMgr::DeleteRepository(library.Params(), true, true);
    EXPECT_THAT(told->Take(), ElementsAre("34"));
    EXPECT_THROW(ann->CreateEntity("Note", "x"), UDMException);
    EXPECT_THAT(Traces(), ElementsAre("base", "base/mine.txt"));
}

TEST_F(Libraries, B8_DeletingOneKeepsTheVaultThatAnotherUses) {
    library.Open("ann");
    Parameters params = library.Params();
    params["RepositoryName"] = "Second";
    library.Keep(UDMProfileMgr::GetProfile(params));
    Write(library.Folder().File("base/vault/ab/abcd"), "content");
    UDMProfileMgr::DeleteRepository(params, true, true);
    EXPECT_TRUE(fs::exists(library.Folder().File("base/vault/ab/abcd")));
    EXPECT_TRUE(fs::exists(library.File()));
    EXPECT_FALSE(fs::exists(library.Folder().File("base/Second.ldb")));
}

TEST_F(Libraries, B9_OneIsTheDefault) {
    library.Open("ann");
    Parameters params = library.Params();
    params["RepositoryName"] = "Second";
    library.Keep(UDMProfileMgr::GetProfile(params));
    ASSERT_EQ(Ids().size(), 2U);
    EXPECT_EQ(Info(Ids()[1]).at("name"), "Second");
    EXPECT_EQ(Info(Ids()[1]).at("is_default"), "false");
    UDMProfileMgr::SetDefaultRepository(params);
    EXPECT_EQ(Info(Ids()[0]).at("is_default"), "false");
    EXPECT_EQ(Info(Ids()[1]).at("is_default"), "true");
    params["RepositoryName"] = "Nothing";
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] { UDMProfileMgr::SetDefaultRepository(params); }),
                HasSubstr("Nothing"));
}

TEST_F(Libraries, B9_AnUnknownIdIsAnErrorThatNamesIt) {
    library.Open("ann");
    for (const char* id : {"", "x", "99", "1x", "-1"}) {
        EXPECT_THROW(Info(id), UDMNotFoundException) << id;
    }
    kxStlMap<kxString, kxVariant> settings;
    UDMProfileMgr::GetRepositoryClientSettings(settings, Ids().front(), library.Params());
    EXPECT_TRUE(settings.empty());
    EXPECT_THROW(UDMProfileMgr::GetRepositoryClientSettings(settings, "99", library.Params()),
                 UDMNotFoundException);
}

TEST_F(Libraries, B10_WorkspacesBelongToTheirUser) {
    library.Open("ann", "desk");
    library.Open("ann", "bench");
    library.Open("bob", "desk");
    kxStlVector<kxString> ids;
    UDMProfileMgr::GetWorkspaces(ids, library.Params("ann"));
    EXPECT_THAT(ids, testing::UnorderedElementsAre("bench", "desk"));
    kxStlMap<kxString, kxString> info;
    const kxStlVector<kxString> keys{"name",
                                     "workingDir",
                                     "client_working_dir",
                                     "host_name",
                                     "user_name",
                                     "uname",
                                     "is_default",
                                     "colour"};
    UDMProfileMgr::GetWorkspaceInfo(info, "desk", keys, library.Params("bob"));
    EXPECT_EQ(info.size(), 7U);
    EXPECT_EQ(info.at("name"), "desk");
    EXPECT_EQ(info.at("workingDir"), library.Folder().File("ws/bob/desk"));
    EXPECT_EQ(info.at("user_name"), "bob");
    EXPECT_EQ(info.at("is_default"), "true");
    EXPECT_FALSE(info.at("host_name").empty());
    const std::string refusal = Refusal<UDMNotFoundException>(
        [&] { UDMProfileMgr::GetWorkspaceInfo(info, "bench", keys, library.Params("bob")); });
    EXPECT_THAT(refusal, AllOf(HasSubstr("bob"), HasSubstr("bench")));
}

TEST_F(Libraries, B11_CheckConnectionSaysInOneSentenceWhatWasReached) {
    library.Open("ann");
    kxString message;
    const auto check = [&](const kxString& directory, const kxString& name) {
        return UDMProfileMgr::CheckConnection(
            "local", directory, name, "", "", "ann", "s3cret!", message);
    };
    EXPECT_TRUE(check(library.BaseDirectory(), "Lib"));
    EXPECT_EQ(message,
              "The library \"Lib\" in \"" + library.BaseDirectory() + "\" can be reached.");
    EXPECT_TRUE(check(library.BaseDirectory(), ""));
    EXPECT_FALSE(check(library.BaseDirectory(), "Other"));
    EXPECT_THAT(message, HasSubstr("no library \"Other\""));
    EXPECT_FALSE(check(library.Folder().File("nowhere"), "Lib"));
    EXPECT_THAT(message, HasSubstr("nowhere"));
    EXPECT_FALSE(check("", "Lib"));
    Write(library.Folder().File("base/Bad.ldb"), std::string(5000, 'x'));
    EXPECT_FALSE(check(library.BaseDirectory(), "Bad"));
    EXPECT_THAT(message, HasSubstr("Bad.ldb"));
    EXPECT_THAT(message, Not(HasSubstr("s3cret!")));
    EXPECT_FALSE(fs::exists(library.Folder().File("base/Other.ldb")));
}

TEST_F(Libraries, B17_AFileThatIsMovedOrDeletedWhileOpenIsNotWrittenUntilItIsBack) {
    const ProfilePtr ann = library.Open("ann");
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    const std::string elsewhere = library.Folder().File("elsewhere.ldb");
    fs::rename(library.File(), elsewhere);
    for (const bool another : {false, true}) {
        if (another) {
            Write(library.File(), std::string(5000, 'x'));
        }
        EXPECT_THAT(Refusal([&] { ann->SetAttributeValue(part, "mass", 7.0); }),
                    AllOf(HasSubstr(library.File()), HasSubstr("moved, replaced or deleted")));
        EXPECT_EQ(part.GetAttributeValue("mass"), kxVariant(1.5));
    }
    fs::rename(elsewhere, library.File());
    ann->SetAttributeValue(part, "mass", 7.0);
    EXPECT_EQ(library.Open("ann")->GetEntity(part.GetUID()).GetAttributeValue("mass"),
              kxVariant(7.0));
}

TEST_F(Libraries, B18_ParametersThatAreNoTextAreRefusedByTheirKey) {
    const kxString zero("a\0b", 3);
    for (const char* key : {"MasterDBFile",
                            "UDMConfigFile",
                            "RepositoryName",
                            "RepositoryBaseDir",
                            "WorkspaceName",
                            "WorkspaceBaseDir",
                            "username",
                            "ProfileName",
                            "CustomEntityDefinitionsFolder"}) {
        for (const kxVariant& value : {kxVariant(zero),
                                       kxVariant("a\xff"),
                                       kxVariant(static_cast<void*>(this), "kxct::Item")}) {
            Parameters params = library.Params();
            params[key] = value;
            EXPECT_THAT(OpenRefused(params), AllOf(HasSubstr(key), HasSubstr("UTF-8")));
            EXPECT_THAT(Traces(), IsEmpty()) << key;
        }
    }
    // A base directory is never cut: "base" is there.
    library.Open("ann");
    kxString message;
    EXPECT_FALSE(UDMProfileMgr::CheckConnection(
        "local", library.BaseDirectory() + kxString("\0x", 2), "Lib", "", "", "", "", message));
    EXPECT_THAT(message, HasSubstr("\\x00x\" is not there"));
}

TEST_F(Libraries, OneWithoutItsCatalogueSaysSo) {
    ProfilePtr ann = library.Open("ann");
    UDMProfileMgr::DiscardProfile(ann);
    store::LibraryStore::Open(library.File())->SetCatalogueXml("");
    EXPECT_THAT(OpenRefused(library.Params()),
                AllOf(HasSubstr(library.File()),
                      HasSubstr("has lost its catalogue of content definitions")));
}

TEST_F(Libraries, B12_PasswordsAreInNoErrorText) {
    for (const char* key : {"MasterDBFile", "RepositoryName", "username", "UDMConfigFile"}) {
        Parameters params = library.Params();
        params[key] = key == std::string("MasterDBFile") ? "/dev/null/x" : "";
        EXPECT_THAT(OpenRefused(params), Not(HasSubstr("s3cret!")));
    }
}

TEST_F(Libraries, B13_CarryTheirCatalogueWithThem) {
    const std::string catalogue = library.Folder().File("ws_catalogue.xml");
    fs::copy_file(KXUDMRT_TEST_CATALOGUE, catalogue);
    Parameters params = library.Params();
    params["UDMConfigFile"] = catalogue;
    {
        ProfilePtr ann = UDMProfileMgr::GetProfile(params);
        UDMProfileMgr::DiscardProfile(ann);
    }
    Write(catalogue, "broken since");
    const ProfilePtr again = library.Keep(UDMProfileMgr::GetProfile(params));
    EXPECT_EQ(again->CreateEntity("Part", "Wheel").GetCdef(), "Part");
}

TEST_F(Libraries, B13_TakeCustomDefinitionsAtTheirCreation) {
    Write(library.Folder().File("ws_custom/own.xml"),
          "<catalogue version=\"1\"><definition name=\"Gear\" base=\"Part\"/></catalogue>");
    Parameters params = library.Params();
    params["CustomEntityDefinitionsFolder"] = library.Folder().File("ws_custom");
    const ProfilePtr ann = library.Keep(UDMProfileMgr::GetProfile(params));
    EXPECT_EQ(ann->CreateEntity("Gear", "Wheel").GetAttributeValue("mass"), kxVariant(1.5));
}

}  // namespace
}  // namespace kxudm::test
