// Files of contents, as hosts with controllers, items and sessions put them in and get them back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/SignalHandler.h>
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Item.h>
#include <kxsigslot/kxListener.h>
#include <kxsigslot/kxSignal.h>
#include <kxudm/UDMGenericDocument.h>
#include <kxudm/UDMItemHandle.h>

#include <fstream>
#include <iterator>

#include "Host.h"

using kxct::Controller;
using kxct::Item;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

using Items = kxStlVector<Item*>;
using Texts = kxStlVector<kxString>;

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

kxString Base(const Item* item) {
    return item->GetUID().substr(0, item->GetUID().find(':'));
}

class ContentFiles : public testing::Test {
  protected:
    kxString Write(const std::string& name, const std::string& content) const {
        std::ofstream(home.Path() / name, std::ios::binary) << content;
        return (home.Path() / name).string();
    }
    Item* Create(const kxString& name = "d") { return anna->CreateContent("Document", name); }
    static Texts Names(Item* item) {
        Texts names;
        EXPECT_TRUE(item->GetDocumentNames(names));
        return names;
    }
    static bool Publish(Controller* controller, Item* item) {
        Items items{item};
        return controller->Publish(items, "", false);
    }
    // What a content's only document holds, retrieved into a fresh folder.
    std::string Content(Item* item) {
        const fs::path folder = home.Path() / ("out" + std::to_string(++folders));
        Texts paths;
        EXPECT_TRUE(item->RetrieveFilesIntoFolder(folder.string(), paths, false, false));
        return paths.size() == 1 ? ReadFile(std::string(paths[0])) : "";
    }

    TemporaryFolder home;
    Host host{home.Path()};
    Controller* anna = host.Create("Demo", "ws", "anna");
    int folders = 0;
};

class Updates : public kxListener<single_threaded> {
  public:
    explicit Updates(Controller& controller) {
        controller.GetSignalHandler(kxct::MANAGER_DEFAULT)
            ->ItemUpdated.connect(this, &Updates::OnUpdated);
    }
    void OnUpdated(Item* item) { updated.push_back(item); }
    std::vector<Item*> updated;
};

TEST_F(ContentFiles, AFileNamesItsContentAndIsListed) {
    Item* item = Create();
    const kxString source = Write("front.inp", "GRID 1\n");
    EXPECT_TRUE(item->AddFile("deck", source, false));
    EXPECT_EQ(item->GetDisplayName(), "front.inp");
    EXPECT_EQ(item->GetAttributeValue("filetype").GetString(), "deck");
    EXPECT_THAT(Names(item), ElementsAre("front.inp"));
    kxStlVector<kxct::DocumentInfo> info;
    EXPECT_TRUE(item->GetDocumentInfo(info));
    ASSERT_EQ(info.size(), 1u);
    Texts paths;
    EXPECT_TRUE(item->GetDocuments(paths));
    EXPECT_THAT(paths[0], StartsWith(host.Libraries().string()));
    EXPECT_EQ(Content(item), "GRID 1\n");
}

TEST_F(ContentFiles, AFileWithoutExtensionHasTheTypeOfItsContent) {
    Item* item = Create();
    EXPECT_TRUE(item->AddFile("licence", Write("LICENSE", "free"), false));
    kxct::UDMDBCtrl* session = host.Impl().Open("Demo", "ws", "anna", "", kxct::CONN_TYPE_LIBRARY);
    kxudm::UDMItemHandle handle = session->GetUDMItemHandle(item->GetUID());
    kxStlVector<kxudm::UDMGenericDocument> documents;
    session->GetDocuments(handle, documents);
    ASSERT_EQ(documents.size(), 1u);
    EXPECT_EQ(documents[0].GetType(), "licence");
    host.Impl().Close(session);
}

TEST_F(ContentFiles, AControllerMakesAContentForAFile) {
    Item* part = anna->CreateContent("UDMPart", "Wheel");
    EXPECT_TRUE(anna->AddFile(part, Write("wheel.inp", "GRID 1\n"), false));
    EXPECT_THAT(Names(part), ElementsAre("wheel.inp"));
    EXPECT_FALSE(anna->AddFile(part, (home.Path() / "missing").string(), false));
}

TEST_F(ContentFiles, AContentWithoutAnyListsNone) {
    Item* item = Create();
    Texts list{"before"};
    EXPECT_TRUE(item->GetDocuments(list));
    EXPECT_TRUE(item->GetDocumentNames(list));
    EXPECT_THAT(list, ElementsAre("before"));
    EXPECT_TRUE(item->RetrieveFilesIntoFolder((home.Path() / "out").string()));
    EXPECT_FALSE(fs::exists(home.Path() / "out"));
}

TEST_F(ContentFiles, WhatCantBeAddedAnswersFalseAndKeepsTheNameThatWasSet) {
    Item* item = Create();
    EXPECT_FALSE(item->AddFile("t", (home.Path() / "missing").string(), false));
    EXPECT_EQ(item->GetDisplayName(), "missing");
    EXPECT_FALSE(item->AddFile("t", home.Path().string() + "/", false));
    EXPECT_TRUE(item->AddFile("t", Write("a", "1"), false));
    EXPECT_FALSE(item->AddFile("t", Write("a", "2"), false));
    EXPECT_THAT(Names(item), ElementsAre("a"));
    EXPECT_EQ(Content(item), "1");
    ASSERT_TRUE(Publish(anna, item));
    EXPECT_FALSE(item->AddFile("t", Write("b", "2"), false));
    EXPECT_FALSE(item->ReAddFile(Write("a", "2"), false, false));
    EXPECT_FALSE(item->RemoveFile("a"));
    EXPECT_EQ(Content(item), "1");
}

TEST_F(ContentFiles, AChangeIsSignalled) {
    Item* item = Create();
    Updates updates(*anna);
    EXPECT_TRUE(item->AddFile("t", Write("a", "1"), false));
    // Display name, file type, file.
    EXPECT_THAT(updates.updated, ElementsAre(item, item, item));
    EXPECT_TRUE(item->RemoveFile("a"));
    EXPECT_EQ(updates.updated.size(), 4u);
}

TEST_F(ContentFiles, AReplacedOneMayBeMovedInAndARemovedOneIsGone) {
    Item* item = Create();
    EXPECT_TRUE(item->AddFile("t", Write("a", "1"), false));
    EXPECT_FALSE(item->ReAddFile(Write("b", "2"), false, false));
    const kxString source = Write("a", "2");
    EXPECT_TRUE(item->ReAddFile(source, true, false));
    EXPECT_FALSE(fs::exists(std::string(source)));
    EXPECT_EQ(Content(item), "2");
    EXPECT_TRUE(item->RemoveFile("a"));
    EXPECT_FALSE(item->RemoveFile("a"));
    EXPECT_THAT(Names(item), IsEmpty());
}

TEST_F(ContentFiles, AnExternalOneStaysWhereItIs) {
    Item* item = Create();
    const kxString source = Write("big.odb", "results");
    EXPECT_TRUE(item->AddFile("result", source, true));
    Texts paths;
    EXPECT_TRUE(item->GetDocuments(paths));
    EXPECT_THAT(paths, ElementsAre(source));
    EXPECT_EQ(Content(item), "results");
    Write("big.odb", "other results");
    EXPECT_FALSE(item->RetrieveFilesIntoFolder((home.Path() / "again").string()));
}

TEST_F(ContentFiles, AreRetrievedByNameAllOrIntoTheWorkspace) {
    Item* item = Create();
    EXPECT_TRUE(item->AddFile("t", Write("a", "1"), false));
    EXPECT_TRUE(item->AddFile("t", Write("b", "2"), false));
    const kxString folder = (home.Path() / "out").string();
    Texts paths;
    EXPECT_TRUE(item->RetrieveFilesIntoFolder(folder, "b", paths));
    EXPECT_THAT(paths, ElementsAre(folder + "/b"));
    EXPECT_FALSE(item->RetrieveFilesIntoFolder(folder, "c", paths));
    EXPECT_TRUE(item->RetrieveFilesIntoFolder(folder));
    EXPECT_EQ(ReadFile(home.Path() / "out/a"), "1");
    Write("out/b", "mine");
    paths.clear();
    EXPECT_FALSE(item->RetrieveFilesIntoFolder(folder, paths, false, false));
    EXPECT_THAT(paths, IsEmpty());
    EXPECT_TRUE(item->RetrieveFilesIntoFolder(folder, paths, true, false));
    EXPECT_THAT(paths, ElementsAre(folder + "/a", folder + "/b"));
    EXPECT_EQ(ReadFile(home.Path() / "out/b"), "2");
    paths.clear();
    EXPECT_TRUE(item->RetrieveFilesIntoWorkspace());
    EXPECT_TRUE(item->RetrieveFilesIntoWorkspace(paths, false, false));
    ASSERT_EQ(paths.size(), 2u);
    EXPECT_EQ(ReadFile(home.Path() / "work/ws/b"), "2");
}

TEST_F(ContentFiles, AnOldRevisionGivesItsFileAfterALaterOneIsPublished) {
    Controller* ben = host.Create("Demo", "theirs", "ben");
    Item* item = Create();
    EXPECT_TRUE(item->AddFile("t", Write("a", "1"), false));
    ASSERT_TRUE(Publish(anna, item));
    Item* theirs = ben->GetItem(Base(item), true);
    ASSERT_TRUE(item->Checkout(""));
    EXPECT_TRUE(item->ReAddFile(Write("a", "2"), false, false));
    EXPECT_EQ(Content(theirs), "1");
    EXPECT_FALSE(theirs->ReAddFile(Write("a", "3"), false, false));
    ASSERT_TRUE(Publish(anna, item));
    EXPECT_EQ(Content(item), "2");
    EXPECT_EQ(Content(anna->GetItem(Base(item) + ":1", false)), "1");
    EXPECT_EQ(Content(ben->GetItem(Base(item), true)), "2");
    ASSERT_TRUE(item->Checkout(""));
    EXPECT_TRUE(item->RemoveFile("a"));
    ASSERT_TRUE(item->UndoCheckout());
    EXPECT_EQ(Content(anna->GetItem(Base(item), true)), "2");
}

class ContentFilesOfASession : public ContentFiles {
  protected:
    ~ContentFilesOfASession() override { host.Impl().Close(session); }

    kxct::UDMDBCtrl* session = host.Impl().Open("Demo", "ws", "anna", "", kxct::CONN_TYPE_LIBRARY);
    kxudm::UDMItemHandle handle = session->CreateEntity("Document", "d");
};

TEST_F(ContentFilesOfASession, FailuresNameTheOperationAndWhatIsWrong) {
    const kxString missing = (home.Path() / "missing").string();
    try {
        session->AddFile(handle, missing, false);
        FAIL() << "nothing was thrown";
    } catch (const std::exception& failure) {
        EXPECT_THAT(failure.what(), StartsWith("bool __cdecl kxct::UDMDBCtrl::AddFile("));
        EXPECT_THAT(failure.what(), HasSubstr(missing));
    }
}

TEST_F(ContentFilesOfASession, AVaultOfItsOwnTakesFurtherFiles) {
    session->AddFile(handle, Write("a", "1"), false);
    session->SetVault(handle, "fast");
    session->AddFile(handle, Write("b", "2"), false);
    session->SetVault(handle, "");
    session->AddFile(handle, Write("c", "3"), false);
    EXPECT_ANY_THROW(session->SetVault(handle, "../beside"));
    kxStlVector<kxudm::UDMGenericDocument> documents;
    EXPECT_TRUE(session->GetDocuments(handle, documents));
    ASSERT_EQ(documents.size(), 3u);
    EXPECT_THAT(documents[0].GetPath(), HasSubstr("/vault/"));
    EXPECT_THAT(documents[1].GetPath(), HasSubstr("/fast/"));
    EXPECT_THAT(documents[2].GetPath(), HasSubstr("/vault/"));
    Texts paths;
    session->RetrieveFilesIntoFolder(handle, (home.Path() / "out").string(), kxString(), paths);
    EXPECT_EQ(paths.size(), 3u);
}

}  // namespace
