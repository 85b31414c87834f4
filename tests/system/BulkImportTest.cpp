// Import of folders and files as a host has it: what comes in, and where it hears of what does not.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/KXCTException.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Item.h>
#include <kxlmcore/Message.h>
#include <kxlmcore/iFileMgr.h>
#include <kxlmcore/kxLMUtls.h>
#include <kxudm/UDMProgress.h>

#include <fstream>

#include "Host.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

namespace fs = std::filesystem;

// The host's file manager while it lives.
class FileManager : public kxlm::iFileMgr {
  public:
    FileManager() { kxLMUtls::SetFileMgr(this); }
    ~FileManager() override { kxLMUtls::SetFileMgr(nullptr); }
    void LogMessage(unsigned int type, const kxString& text) override {
        EXPECT_EQ(type, kxlm::LM_MSG_ERROR);
        logged.push_back(text);
    }
    std::vector<std::string> logged;
};

class Listener : public kxudm::IUDMProgressListener {
  public:
    bool Advance(const kxudm::UDMProgress& progress) override {
        last = progress;
        return progress.name != stopAt;
    }
    void Failed(const kxString& item, const kxString& /*reason*/) override {
        failed.push_back(item);
    }
    kxudm::UDMProgress last;
    kxString stopAt = "nowhere";
    std::vector<std::string> failed;
};

class BulkImport : public testing::Test {
  protected:
    BulkImport() : host(folder.Path() / "home") {
        Write("a.inp", "deck");
        Write("sub/b.txt", "text");
        fs::create_symlink(folder.Path() / "gone", folder.Path() / "tree/z");
        controller = host.Create("Lib");
        session = host.Impl().Open("Lib", "ws", "anna", "", kxct::CONN_TYPE_LIBRARY);
    }
    ~BulkImport() override { host.Impl().Close(session); }

    void Write(const std::string& name, const std::string& text) const {
        const fs::path path = folder.Path() / "tree" / name;
        fs::create_directories(path.parent_path());
        std::ofstream(path) << text;
    }
    int Import(const kxStlMap<kxString, kxString>& options = {}) {
        return session->AddFoldersAndFiles(
            {(folder.Path() / "tree").string()}, {}, "/Decks", options);
    }

    TemporaryFolder folder;
    FileManager files;
    Host host;
    kxct::Controller* controller = nullptr;
    kxct::UDMDBCtrl* session = nullptr;
};

TEST_F(BulkImport, BringsFoldersAndFilesInAndLogsWhatItLeavesOut) {
    EXPECT_EQ(Import({{"publish", "true"}}), 2);
    ASSERT_THAT(files.logged, SizeIs(1));
    EXPECT_THAT(files.logged.front(), HasSubstr((folder.Path() / "tree/z").string()));
    EXPECT_THAT(files.logged.front(), HasSubstr("was not imported"));
    kxct::Item* place = controller->GetOrCreateFolder("/Decks/tree/sub", false);
    ASSERT_NE(place, nullptr);
    kxStlVector<kxct::Item*> items;
    place->GetChildren(items, "folder");
    ASSERT_THAT(items, SizeIs(1));
    EXPECT_EQ(items.front()->GetDisplayName(), "b.txt");
    EXPECT_EQ(items.front()->GetType(), "TextDocument");
    EXPECT_FALSE(items.front()->IsEditable());
}

TEST_F(BulkImport, WorksThroughTheController) {
    EXPECT_EQ(controller->AddFoldersAndFiles(
                  {(folder.Path() / "tree").string()}, {}, "/Decks", {{"recursive", "false"}}),
              1);
    EXPECT_THAT(files.logged, SizeIs(1));
}

TEST_F(BulkImport, TellsAListenerOfTheSessionTheSame) {
    Listener listener;
    const kxudm::UDMProgressScope scope(session->GetProfile(), listener);
    EXPECT_EQ(Import(), 2);
    EXPECT_THAT(listener.failed, ElementsAre((folder.Path() / "tree/z").string()));
    EXPECT_THAT(files.logged, SizeIs(1));
    EXPECT_EQ(listener.last.done, 2U);
    EXPECT_EQ(listener.last.total, 2U);
    EXPECT_FALSE(scope.WasCancelled());
}

TEST_F(BulkImport, CanBeCancelledByThatListener) {
    Listener listener;
    listener.stopAt = kxString((folder.Path() / "tree/sub/b.txt").string());
    const kxudm::UDMProgressScope scope(session->GetProfile(), listener);
    EXPECT_EQ(Import(), 1);
    EXPECT_TRUE(scope.WasCancelled());
}

TEST_F(BulkImport, RaisesTheFailureOfAStrictImport) {
    try {
        Import({{"strict", "true"}});
        FAIL() << "nothing was raised";
    } catch (const kxct::KXCTException& failure) {
        EXPECT_THAT(failure.what(),
                    testing::StartsWith("int __cdecl kxct::UDMDBCtrl::AddFoldersAndFiles("));
        EXPECT_THAT(failure.what(), HasSubstr("nothing was"));
    }
    EXPECT_THAT(files.logged, IsEmpty());
}

TEST_F(BulkImport, NeedsNoFileManager) {
    kxLMUtls::SetFileMgr(nullptr);
    EXPECT_EQ(Import(), 2);
}

}  // namespace
