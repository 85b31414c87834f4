#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

#include "TemporaryFolder.h"
#include "sql/sqlite/Connection.h"
#include "store/MasterStore.h"
#include "store/schema/Schema.h"

using namespace kxudm::store;
using kxudm::UDMException;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class MasterStoreTest : public testing::Test {
  protected:
    std::int64_t AddLibrary(const std::string& name, const std::string& dataSource = "local") {
        return master_->AddLibrary({.name = name,
                                    .profileName = "Profile",
                                    .dataSource = dataSource,
                                    .ldbFile = "/base/" + name + ".ldb",
                                    .baseDirectory = "/base",
                                    .dbHost = "host",
                                    .dbPort = "5432"});
    }
    std::vector<std::string> Names(std::string_view dataSource = {}) {
        std::vector<std::string> names;
        for (const LibraryRecord& record : master_->Libraries(dataSource)) {
            names.push_back(record.name);
        }
        return names;
    }
    std::string DefaultLibrary() {
        for (const LibraryRecord& record : master_->Libraries()) {
            if (record.isDefault) {
                return record.name;
            }
        }
        return "none";
    }
    std::string DefaultWorkspace(std::string_view user) {
        for (const WorkspaceRecord& record : master_->Workspaces(user)) {
            if (record.isDefault) {
                return record.name;
            }
        }
        return "none";
    }

    TemporaryFolder folder_;
    std::string file_ = folder_.File("master.db");
    std::unique_ptr<MasterStore> master_ = MasterStore::Open(file_);
};

}  // namespace

TEST_F(MasterStoreTest, AnEmptyFileBecomesAMasterDatabase) {
    { std::ofstream empty(folder_.File("empty.db")); }
    EXPECT_TRUE(MasterStore::Open(folder_.File("empty.db"))->Libraries().empty());
}

TEST_F(MasterStoreTest, AFileOfAnotherUseIsRefusedByName) {
    std::ofstream(folder_.File("text.db")) << std::string(5000, 'x');
    (void)kxudm::sql::sqlite::Open({.file = folder_.File("library.db"),
                                    .create = true,
                                    .applicationId = LIBRARY_APPLICATION_ID})
        ->SetSchemaVersion(1);
    for (const char* name : {"text.db", "library.db", "no/folder.db"}) {
        try {
            (void)MasterStore::Open(folder_.File(name));
            FAIL() << name << " was opened";
        } catch (const UDMException& error) {
            EXPECT_THAT(error.what(),
                        AllOf(HasSubstr(folder_.File(name)), HasSubstr("master database")));
        }
    }
}

TEST_F(MasterStoreTest, ALibraryIsFoundByNameAndIdAfterReopening) {
    const std::int64_t id = AddLibrary("Crash");
    master_ = MasterStore::Open(file_);
    LibraryRecord record;
    ASSERT_TRUE(master_->FindLibrary("Crash", record));
    EXPECT_EQ(record.id, id);
    EXPECT_EQ(record.profileName, "Profile");
    EXPECT_EQ(record.dataSource, "local");
    EXPECT_EQ(record.ldbFile, "/base/Crash.ldb");
    EXPECT_EQ(record.baseDirectory, "/base");
    EXPECT_EQ(record.dbHost, "host");
    EXPECT_EQ(record.dbPort, "5432");
    LibraryRecord same;
    ASSERT_TRUE(master_->FindLibrary(id, same));
    EXPECT_EQ(same.name, "Crash");
    EXPECT_FALSE(master_->FindLibrary("crash", record));
    EXPECT_FALSE(master_->FindLibrary(id + 1, record));
}

TEST_F(MasterStoreTest, WhatIsChangedAloneIsThereWithItsCommitOnly) {
    const auto other = MasterStore::Open(file_);
    {
        const auto alone = master_->Alone();
        AddLibrary("Lost");
        EXPECT_TRUE(other->Libraries().empty());
    }
    EXPECT_TRUE(master_->Libraries().empty());

    const auto alone = master_->Alone();
    AddLibrary("Crash");
    alone->Commit();
    EXPECT_EQ(other->Libraries().size(), 1U);
}

TEST_F(MasterStoreTest, LibrariesComeInTheOrderOfTheirNamesAndByDataSource) {
    AddLibrary("b");
    AddLibrary("c", "PostGres");
    AddLibrary("a");
    EXPECT_THAT(Names(), ElementsAre("a", "b", "c"));
    EXPECT_THAT(Names("local"), ElementsAre("a", "b"));
    EXPECT_THAT(Names("PostGres"), ElementsAre("c"));
    EXPECT_THAT(Names("UDMXML"), ElementsAre());
}

TEST_F(MasterStoreTest, AKnownNameIsRefusedWithItsBaseDirectory) {
    AddLibrary("Crash");
    try {
        master_->AddLibrary({.name = "Crash", .baseDirectory = "/other"});
        FAIL() << "the name was taken twice";
    } catch (const UDMException& error) {
        EXPECT_THAT(error.what(), AllOf(HasSubstr("'Crash'"), HasSubstr("'/base'")));
    }
    LibraryRecord record;
    AddLibrary("Noise");
    ASSERT_TRUE(master_->FindLibrary("Noise", record));
    record.name = "Crash";
    EXPECT_THROW(master_->UpdateLibrary(record), UDMException);
    EXPECT_THAT(Names(), ElementsAre("Crash", "Noise"));
}

TEST_F(MasterStoreTest, TheFirstLibraryIsTheDefaultUntilAnotherIsMadeIt) {
    AddLibrary("a");
    const std::int64_t b = AddLibrary("b");
    EXPECT_EQ(DefaultLibrary(), "a");
    EXPECT_TRUE(master_->SetDefaultLibrary(b));
    EXPECT_EQ(DefaultLibrary(), "b");
    EXPECT_FALSE(master_->SetDefaultLibrary(b + 1));
    EXPECT_EQ(DefaultLibrary(), "b");
}

TEST_F(MasterStoreTest, ALibraryIsUpdatedAndRemoved) {
    const std::int64_t id = AddLibrary("a");
    EXPECT_TRUE(master_->UpdateLibrary(
        {.id = id, .name = "a2", .baseDirectory = "/new", .isDefault = false}));
    LibraryRecord record;
    ASSERT_TRUE(master_->FindLibrary(id, record));
    EXPECT_EQ(record.name, "a2");
    EXPECT_EQ(record.baseDirectory, "/new");
    EXPECT_TRUE(record.isDefault);
    EXPECT_TRUE(master_->RemoveLibrary(id));
    EXPECT_FALSE(master_->RemoveLibrary(id));
    EXPECT_FALSE(master_->UpdateLibrary(record));
    EXPECT_THAT(Names(), ElementsAre());
}

TEST_F(MasterStoreTest, ClientSettingsKeepTheirKinds) {
    const std::int64_t id = AddLibrary("a");
    EXPECT_TRUE(master_->LibraryClientSettings(id).empty());
    const ClientSettings settings = {{"host", kxVariant("h")}, {"port", 5432}, {"ssl", true}};
    EXPECT_TRUE(master_->SetLibraryClientSettings(id, settings));
    EXPECT_EQ(master_->LibraryClientSettings(id), settings);
    EXPECT_TRUE(master_->SetLibraryClientSettings(id, {}));
    EXPECT_TRUE(master_->LibraryClientSettings(id).empty());
    EXPECT_FALSE(master_->SetLibraryClientSettings(id + 1, settings));
    EXPECT_TRUE(master_->LibraryClientSettings(id + 1).empty());
}

TEST_F(MasterStoreTest, AWorkspaceBelongsToItsUser) {
    EXPECT_TRUE(master_->AddWorkspace({.user = "ann",
                                       .name = "desk",
                                       .workingDirectory = "/w",
                                       .clientWorkingDirectory = "/c",
                                       .hostName = "h",
                                       .userDisplayName = "Ann"}));
    EXPECT_TRUE(master_->AddWorkspace({.user = "bob", .name = "desk"}));
    WorkspaceRecord record;
    ASSERT_TRUE(master_->FindWorkspace("ann", "desk", record));
    EXPECT_EQ(record.workingDirectory, "/w");
    EXPECT_EQ(record.clientWorkingDirectory, "/c");
    EXPECT_EQ(record.hostName, "h");
    EXPECT_EQ(record.userDisplayName, "Ann");
    EXPECT_TRUE(record.isDefault);
    EXPECT_EQ(master_->Workspaces("ann").size(), 1u);
    EXPECT_TRUE(master_->Workspaces("cid").empty());
    EXPECT_FALSE(master_->FindWorkspace("ann", "Desk", record));
}

TEST_F(MasterStoreTest, AddingAKnownWorkspaceLeavesItAsItIs) {
    master_->AddWorkspace({.user = "ann", .name = "desk", .workingDirectory = "/first"});
    EXPECT_FALSE(
        master_->AddWorkspace({.user = "ann", .name = "desk", .workingDirectory = "/second"}));
    WorkspaceRecord record;
    ASSERT_TRUE(master_->FindWorkspace("ann", "desk", record));
    EXPECT_EQ(record.workingDirectory, "/first");
}

TEST_F(MasterStoreTest, EachUserHasADefaultWorkspace) {
    master_->AddWorkspace({.user = "ann", .name = "a"});
    master_->AddWorkspace({.user = "ann", .name = "b"});
    master_->AddWorkspace({.user = "bob", .name = "c"});
    EXPECT_TRUE(master_->SetDefaultWorkspace("ann", "b"));
    EXPECT_EQ(DefaultWorkspace("ann"), "b");
    EXPECT_EQ(DefaultWorkspace("bob"), "c");
    EXPECT_FALSE(master_->SetDefaultWorkspace("ann", "c"));
    EXPECT_EQ(DefaultWorkspace("ann"), "b");
}

TEST_F(MasterStoreTest, AWorkspaceIsUpdatedAndRemoved) {
    master_->AddWorkspace({.user = "ann", .name = "a"});
    EXPECT_TRUE(master_->UpdateWorkspace({.user = "ann", .name = "a", .workingDirectory = "/new"}));
    EXPECT_EQ(master_->Workspaces("ann").at(0).workingDirectory, "/new");
    EXPECT_FALSE(master_->UpdateWorkspace({.user = "ann", .name = "b"}));
    EXPECT_TRUE(master_->RemoveWorkspace("ann", "a"));
    EXPECT_FALSE(master_->RemoveWorkspace("ann", "a"));
}

TEST_F(MasterStoreTest, OddNamesAreOnlyNames) {
    const std::string odd("x'; DROP TABLE library; --\0\"", 28);
    AddLibrary(odd);
    EXPECT_THAT(Names(), ElementsAre(odd));
    EXPECT_TRUE(master_->AddWorkspace({.user = odd, .name = odd}));
    EXPECT_EQ(master_->Workspaces(odd).at(0).name, odd);
}

TEST_F(MasterStoreTest, ProcessesThatMakeAndFillItAtOnceLoseNothing) {
    constexpr int PROCESSES = 4;
    constexpr int LIBRARIES = 5;
    const std::string fresh = folder_.File("fresh.db");
    std::vector<pid_t> children;
    for (int process = 0; process < PROCESSES; ++process) {
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            int result = 0;
            try {
                for (int i = 0; i < LIBRARIES; ++i) {
                    const auto own = MasterStore::Open(fresh);
                    own->AddLibrary({.name = std::to_string(process) + "-" + std::to_string(i)});
                    own->AddWorkspace({.user = "ann", .name = "shared"});
                }
            } catch (...) {
                result = 1;
            }
            _exit(result);
        }
        children.push_back(child);
    }
    for (const pid_t child : children) {
        int status = -1;
        ASSERT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    }
    const auto all = MasterStore::Open(fresh);
    EXPECT_EQ(all->Libraries().size(), static_cast<std::size_t>(PROCESSES * LIBRARIES));
    EXPECT_EQ(all->Workspaces("ann").size(), 1u);
}
