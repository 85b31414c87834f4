// Bad input: a silent answer above, a clear text below, and nothing half made.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Item.h>
#include <kxudm/UDMItemHandle.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "Host.h"

namespace fs = std::filesystem;
using kxct::Controller;
using kxct::Item;
using testing::AllOf;
using testing::HasSubstr;

namespace {

class BadInput : public testing::Test {
  protected:
    TemporaryFolder home;
    Host host{home.Path()};
};

// Text of what `call` throws; empty if nothing.
template <class Call>
std::string FailureOf(Call&& call) {
    try {
        call();
        return {};
    } catch (const std::exception& failure) {
        return failure.what();
    }
}

void Execute(const fs::path& database, const char* sql) {
    sqlite3* connection = nullptr;
    ASSERT_EQ(sqlite3_open(database.c_str(), &connection), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(connection, sql, nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(connection);
}

}  // namespace

TEST_F(BadInput, AnUnknownLibraryGivesADeadController) {
    EXPECT_FALSE(host.Open("Nothing")->IsDBValid());
    EXPECT_EQ(host.OpenFailure("Nothing"), "Error: library not found!");
}

TEST_F(BadInput, AnUnknownWorkspaceGivesADeadController) {
    host.Create("Demo");
    EXPECT_FALSE(host.Open("Demo", "nowhere")->IsDBValid());
    EXPECT_EQ(host.OpenFailure("Demo", "nowhere"), "Error: workspace not found!");
}

TEST_F(BadInput, AnUnknownDefinitionMakesNoContentAndIsNamedBelow) {
    Controller* controller = host.Create("Demo");
    EXPECT_EQ(controller->CreateContent("NoSuchThing", "a"), nullptr);
    kxct::UDMDBCtrl* session = host.Impl().Open("Demo", "ws", "anna", "", kxct::CONN_TYPE_LIBRARY);
    EXPECT_THAT(FailureOf([&] { session->CreateEntity("NoSuchThing", "a"); }),
                HasSubstr("NoSuchThing"));
    host.Impl().Close(session);
}

TEST_F(BadInput, AnUnknownAttributeIsRefusedAndNamedBelow) {
    Controller* controller = host.Create("Demo");
    Item* item = controller->CreateContent("Document", "a");
    kxVariant value("x");
    EXPECT_FALSE(item->SetAttributeValue("colour of the sky", value));
    EXPECT_THAT(FailureOf([&] { item->GetAttributeValue("colour of the sky"); }),
                AllOf(HasSubstr("colour of the sky"), HasSubstr("Document")));
}

TEST_F(BadInput, AValueOfTheWrongTypeLeavesTheOldOne) {
    Controller* controller = host.Create("Demo");
    Item* item = controller->CreateContent("Document", "a");
    kxVariant good(12);
    ASSERT_TRUE(item->SetAttributeValue("filesize", good));
    kxVariant bad("twelve");
    EXPECT_FALSE(item->SetAttributeValue("filesize", bad));
    EXPECT_EQ(item->GetAttributeValue("filesize").GetInteger(), 12);
}

TEST_F(BadInput, AnUnknownUidIsNoItem) {
    Controller* controller = host.Create("Demo");
    EXPECT_EQ(controller->GetItem("01ARZ3NDEKTSV4RRFFQ69G5FAV", false), nullptr);
    EXPECT_EQ(controller->GetItem("", false), nullptr);
    EXPECT_EQ(controller->GetItem("'; drop table entity; --", false), nullptr);
    const kxString uid = controller->CreateContent("Document", "a")->GetUID();
    const kxString base = uid.substr(0, uid.find(':'));
    EXPECT_EQ(controller->GetItem(base + ":7", false), nullptr);
    EXPECT_EQ(controller->GetItem(base + ":x", false), nullptr);
    EXPECT_NE(controller->GetItem(base + ":7", true), nullptr)
        << "the newest revision was asked for";
}

TEST_F(BadInput, ABaseDirectoryThatCanNotBeWrittenLeavesNothingBehind) {
    const fs::path file = home.Path() / "a file";
    std::ofstream(file) << "x";
    const fs::path below = file / "libraries";
    EXPECT_FALSE(host.CreateIn(below, "Demo")->IsDBValid());
    EXPECT_FALSE(host.CreateFailure(below, "Demo").empty());
    EXPECT_EQ(host.Manager().GetLibraryIDByName("anna", "Demo", kxct::CONN_TYPE_LIBRARY), "");
}

TEST_F(BadInput, ABaseDirectoryOfAnotherUserIsNamed) {
    const fs::path closed = home.Path() / "closed";
    fs::create_directories(closed);
    fs::permissions(closed, fs::perms::owner_read | fs::perms::owner_exec);
    // Only root's own rights pass over those of a folder.
    const pid_t child = fork();
    if (child == 0) {
        if (geteuid() == 0 && (chmod(home.Path().c_str(), 0777) != 0 ||
                               chown(closed.c_str(), 65534, 65534) != 0 || setuid(65534) != 0)) {
            _exit(2);
        }
        TemporaryFolder own;
        Host inChild(own.Path());
        const std::string failure = inChild.CreateFailure(closed, "Demo");
        _exit(failure.find(closed.string()) != std::string::npos ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_TRUE(fs::is_empty(closed));
}

TEST_F(BadInput, AFileThatIsNoLibraryIsNamedAndStaysAsItIs) {
    std::ofstream(host.LibraryFile("Demo")) << "these are no tables";
    EXPECT_FALSE(host.Create("Demo")->IsDBValid());
    EXPECT_THAT(host.CreateFailure(host.Libraries(), "Demo"), HasSubstr("Demo.ldb"));
    std::ifstream file(host.LibraryFile("Demo"));
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "these are no tables");
}

TEST_F(BadInput, ALibraryOfANewerSchemaIsRefusedWithBothVersions) {
    host.Close(host.Create("Demo"));
    Execute(host.LibraryFile("Demo"), "PRAGMA user_version = 999");
    EXPECT_FALSE(host.Open("Demo")->IsDBValid());
    EXPECT_THAT(host.OpenFailure("Demo"), AllOf(HasSubstr("Demo.ldb"), HasSubstr("999")));
}

TEST_F(BadInput, AMissingLibraryFileIsNamed) {
    host.Close(host.Create("Demo"));
    fs::remove(host.LibraryFile("Demo"));
    EXPECT_FALSE(host.Open("Demo")->IsDBValid());
    EXPECT_THAT(host.OpenFailure("Demo"), HasSubstr("Demo.ldb"));
    EXPECT_FALSE(fs::exists(host.LibraryFile("Demo"))) << "opening must not make an empty library";
}

TEST_F(BadInput, FolderPathsThatAreNoneMakeNoFolder) {
    Controller* controller = host.Create("Demo");
    for (const char* path : {"", "/", "A", "//A", "/A/", "/A//B", "/.", "/..", "/A/../B"}) {
        EXPECT_EQ(controller->GetOrCreateFolder(path, true), nullptr) << path;
    }
    EXPECT_EQ(controller->CreateFolder("/Missing/Below"), nullptr);
    EXPECT_EQ(controller->GetFolder("/Missing", false), nullptr);
}

TEST_F(BadInput, MalformedSettingsGiveAManagerWithoutValues) {
    const fs::path settings = home.Path() / "broken.xml";
    std::ofstream(settings) << "<kxct:Settings><Key name=\"loc";
    kxct::MasterDBManagerImpl manager(settings.string(), settings.string());
    EXPECT_EQ(manager.GetSettingValue("local", false), "");
    EXPECT_TRUE(manager.GetSettingKeys("").empty());
}
