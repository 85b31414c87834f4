// Contents copied from one library into another, through the controller and through the session.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/KXCTException.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Item.h>
#include <kxudm/UDMItemHandle.h>

#include <fstream>

#include "Host.h"

using kxct::Controller;
using kxct::Item;
using kxudm::UDMItemHandle;
using kxudm::UDMUID;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using Items = kxStlVector<Item*>;
using Groups = kxStlMap<kxString, kxStlVector<kxString>>;

kxString Base(const kxString& uid) {
    return uid.substr(0, uid.find(':'));
}

class MergeIntoAnotherLibrary : public testing::Test {
  protected:
    Item* Published(const kxString& name) {
        Item* item = anna->CreateContent("Document", name);
        item->SetAttributeValue("description", name + " of the front axle");
        Items items{item};
        EXPECT_TRUE(anna->Publish(items, "first", false));
        return item;
    }
    static std::filesystem::path Made(const std::filesystem::path& path) {
        std::filesystem::create_directories(path);
        return path;
    }
    // The session of a library's controllers.
    kxct::UDMDBCtrl& Session(const kxString& library) {
        return *host.Impl().Open(library, "ws", "anna", "", kxct::CONN_TYPE_LIBRARY);
    }
    Item* InTarget(const kxString& uid) { return target->GetItem(Base(uid), true); }

    TemporaryFolder folder;
    Host host{folder.Path()};
    Controller* anna = host.Create("Source");
    Controller* target = host.CreateIn(Made(folder.Path() / "shared"), "Shared");
};

TEST_F(MergeIntoAnotherLibrary, AControllerCopiesAndGivesItems) {
    Item* report = Published("report");
    const kxString uid = report->GetUID();
    Items items;
    EXPECT_TRUE(anna->Merge("Shared", "/Reports", "copied", {uid}, items));
    ASSERT_EQ(items.size(), 1U);
    EXPECT_EQ(items[0]->GetUID(), uid);
    Item* copy = InTarget(uid);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->GetUID(), uid);
    EXPECT_EQ(copy->GetAttributeValue("description"), kxVariant("report of the front axle"));
    EXPECT_EQ(copy->GetAttributeValue("smd_folder"), kxVariant("/Reports"));
}

TEST_F(MergeIntoAnotherLibrary, TheFormWithGroupsPublishesIfAsked) {
    const kxString uid = anna->CreateContent("Document", "draft")->GetUID();
    Items items;
    EXPECT_FALSE(anna->Merge("Shared", "/Drafts", "copied", Groups{{uid, {}}}, items, false));
    EXPECT_THAT(items, IsEmpty());
    EXPECT_TRUE(anna->Merge("Shared", "/Drafts", "copied", Groups{{uid, {}}}, items, true));
    ASSERT_EQ(items.size(), 1U);
    Item* copy = InTarget(uid);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->GetUID(), Base(uid) + ":1");
    EXPECT_EQ(copy->GetAttributeValue("smd_comment"), kxVariant("copied"));
}

TEST_F(MergeIntoAnotherLibrary, TwiceIsAsGoodAsOnce) {
    const kxString uid = Published("report")->GetUID();
    for (int i = 0; i < 2; ++i) {
        Items items;
        EXPECT_TRUE(anna->Merge("Shared", "/Reports", "copied", {uid}, items));
        EXPECT_EQ(items.size(), 1U);
    }
    Items children;
    target->GetFolder("/Reports", false)->GetChildren(children, "folder");
    EXPECT_EQ(children.size(), 1U);
}

TEST_F(MergeIntoAnotherLibrary, ATargetThatIsNotThereIsFalse) {
    const kxString uid = Published("report")->GetUID();
    Items items;
    EXPECT_FALSE(anna->Merge("Nowhere", "/Reports", "copied", {uid}, items));
    EXPECT_THAT(items, IsEmpty());
}

TEST_F(MergeIntoAnotherLibrary, TheSessionTellsOfAMissingEngine) {
    const kxString uid = Published("report")->GetUID();
    kxStlVector<UDMItemHandle> out;
    try {
        Session("Source").Merge("Nowhere", "/Reports", "copied", {UDMUID(uid)}, out);
        FAIL() << "was merged";
    } catch (const kxct::KXCTException& failure) {
        EXPECT_THAT(failure.what(), HasSubstr(". The pointer mergeToCatalogPtr is null!"));
    }
}

TEST_F(MergeIntoAnotherLibrary, TheSessionReplacesWhatWasInTheResult) {
    const kxString uid = Published("report")->GetUID();
    kxStlVector<UDMItemHandle> out(3);
    Session("Source").Merge("Shared", "/Reports", "copied", {UDMUID(uid)}, out);
    ASSERT_EQ(out.size(), 1U);
    EXPECT_EQ(out[0].GetUID(), uid);
    EXPECT_EQ(out[0].GetAttributeValue("smd_folder"), kxVariant("/Reports"));
}

TEST_F(MergeIntoAnotherLibrary, AFailureInTheSessionLeavesTheResult) {
    const kxString uid = anna->CreateContent("Document", "draft")->GetUID();
    kxStlVector<UDMItemHandle> out(3);
    try {
        Session("Source").Merge("Shared", "/Drafts", "copied", {UDMUID(uid)}, out);
        FAIL() << "was merged";
    } catch (const kxct::KXCTException& failure) {
        EXPECT_THAT(failure.what(), HasSubstr("was never published"));
    }
    EXPECT_EQ(out.size(), 3U);
}

TEST_F(MergeIntoAnotherLibrary, FilesComeAlong) {
    Item* report = anna->CreateContent("Document", "report");
    const std::filesystem::path file = folder.Path() / "report.txt";
    std::ofstream(file) << "all is well";
    ASSERT_TRUE(anna->AddFile(report, file.string(), false));
    Items items{report};
    ASSERT_TRUE(anna->Publish(items, "first", false));
    Items merged;
    ASSERT_TRUE(anna->Merge("Shared", "", "copied", {report->GetUID()}, merged));
    kxStlVector<kxString> paths;
    Session("Shared").RetrieveFilesIntoFolder(InTarget(report->GetUID())->GetItemHandle(),
                                              (folder.Path() / "out").string(),
                                              true,
                                              false,
                                              paths);
    ASSERT_EQ(paths.size(), 1U);
    std::string text;
    std::getline(std::ifstream(paths[0]), text);
    EXPECT_EQ(text, "all is well");
}

}  // namespace
