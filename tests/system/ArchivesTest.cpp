// Archives between two libraries, as hosts with controllers and sessions write and read them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/KXCTException.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Item.h>
#include <kxudm/UDMItemHandle.h>

#include <fstream>
#include <iterator>

#include "Host.h"

using kxct::Controller;
using kxct::Item;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace fs = std::filesystem;

namespace {

using Items = kxStlVector<Item*>;
using Texts = kxStlVector<kxString>;

class Archives : public testing::Test {
  protected:
    kxString Path(const std::string& name) const { return (home.Path() / name).string(); }
    kxString Write(const std::string& name, const std::string& content) const {
        std::ofstream(home.Path() / name, std::ios::binary) << content;
        return Path(name);
    }
    // A published content with a file.
    Item* Publish(const kxString& name) {
        Item* item = anna->CreateContent("Document", name);
        EXPECT_TRUE(item->AddFile("deck", Write(name + ".inp", "GRID " + name), false));
        Items items{item};
        EXPECT_TRUE(anna->Publish(items, "", false));
        return item;
    }
    static fs::path Made(const fs::path& path) {
        fs::create_directories(path);
        return path;
    }
    static kxString Base(const kxString& uid) { return uid.substr(0, uid.find(':')); }

    TemporaryFolder home;
    Host host{home.Path()};
    Controller* anna = host.Create("Demo", "ws", "anna");
    Controller* other = host.CreateIn(Made(home.Path() / "other"), "Other");
};

TEST_F(Archives, AControllersExportIsAnothersImport) {
    Item* front = Publish("front");
    Publish("left");
    EXPECT_TRUE(anna->Export(Path("a.kxa"), Texts{front->GetUID()}));
    EXPECT_TRUE(other->Import(Path("a.kxa")));
    Item* there = other->GetItem(Base(front->GetUID()), true);
    ASSERT_NE(there, nullptr);
    EXPECT_EQ(there->GetDisplayName(), "front.inp");
    Texts paths;
    EXPECT_TRUE(there->RetrieveFilesIntoFolder(Path("out"), paths, false, false));
    ASSERT_EQ(paths.size(), 1u);
    std::ifstream file(paths[0], std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "GRID front");
}

TEST_F(Archives, AControllerAnswersFalseToWhatCantBeExportedOrImported) {
    Item* draft = anna->CreateContent("Document", "draft");
    EXPECT_FALSE(anna->Export(Path("a.kxa"), Texts{draft->GetUID()}));
    EXPECT_FALSE(fs::exists(std::string(Path("a.kxa"))));
    EXPECT_FALSE(anna->Import(Path("a.kxa")));
    EXPECT_FALSE(anna->Import(Write("b.kxa", "no archive")));
}

TEST_F(Archives, ASessionExportsAllPublishedRevisions) {
    Item* front = Publish("front");
    Items items{front};
    ASSERT_TRUE(anna->CheckOut(items, ""));
    ASSERT_TRUE(anna->Publish(items, "again", false));
    kxct::UDMDBCtrl* from = host.Impl().Open("Demo", "ws", "anna", "", kxct::CONN_TYPE_LIBRARY);
    kxct::UDMDBCtrl* to = host.Impl().Open("Other", "ws", "anna", "", kxct::CONN_TYPE_LIBRARY);
    from->Export(Path("a.kxa"), Texts{Base(front->GetUID())});
    to->Import(Path("a.kxa"));
    to->Import(Path("a.kxa"));
    for (const char* revision : {":1", ":2"}) {
        EXPECT_FALSE(to->GetUDMItemHandle(Base(front->GetUID()) + revision).IsEmpty());
    }
    host.Impl().Close(from);
    host.Impl().Close(to);
}

// An item goes from one revision to the next, never over one.
TEST_F(Archives, AnItemStandsForTheNewestOfSeveralRevisionsThatCome) {
    Controller* ben = host.Create("Demo", "theirs", "ben");
    Items items{other->CreateContent("Document", "front")};
    ASSERT_TRUE(other->Publish(items, "", false));
    const kxString base = Base(items[0]->GetUID());
    ASSERT_TRUE(other->Export(Path("one.kxa"), Texts{base}));
    ASSERT_TRUE(anna->Import(Path("one.kxa")));
    Item* mine = anna->GetItem(base, true);
    Item* theirs = ben->GetItem(base, true);
    for (int round = 0; round < 2; ++round) {
        ASSERT_TRUE(other->CheckOut(items, ""));
        ASSERT_TRUE(items[0]->SetAttributeValue("description", kxString("again")));
        ASSERT_TRUE(other->Publish(items, "again", false));
    }
    kxct::UDMDBCtrl* from = host.Impl().Open("Other", "ws", "anna", "", kxct::CONN_TYPE_LIBRARY);
    from->Export(Path("three.kxa"), Texts{base});
    host.Impl().Close(from);
    ASSERT_TRUE(anna->Import(Path("three.kxa")));
    for (const Item* item : {mine, theirs}) {
        EXPECT_EQ(item->GetUID(), base + ":3");
        EXPECT_EQ(item->GetAttributeValue("description").GetString(), "again");
    }
    EXPECT_EQ(anna->GetItem(base, true), mine);
}

TEST_F(Archives, ASessionTellsWhatItsRuntimeRefused) {
    kxct::UDMDBCtrl* session = host.Impl().Open("Demo", "ws", "anna", "", kxct::CONN_TYPE_LIBRARY);
    try {
        session->Import(Path("none.kxa"));
        ADD_FAILURE() << "an archive that isn't there was imported";
    } catch (const kxct::KXCTException& failure) {
        EXPECT_THAT(failure.what(), StartsWith("void __cdecl kxct::UDMDBCtrl::Import("));
        EXPECT_THAT(failure.what(), HasSubstr("none.kxa"));
    }
    host.Impl().Close(session);
}

}  // namespace
