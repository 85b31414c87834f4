// The road of a first read: create, close, open, read back.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxctinterfaces/Attributes.h>
#include <kxctinterfaces/Item.h>

#include "Host.h"

using kxct::Controller;
namespace ATTRIBUTE_NAME = kxct::ATTRIBUTE_NAME;
namespace ATTRIBUTE_DEFINITION = kxct::ATTRIBUTE_DEFINITION;
using kxct::Item;

TEST(FirstRead, ACreatedLibraryOpensAgainWithAllThatWasPutIn) {
    const TemporaryFolder home;
    kxString folderUid;
    kxString deckUid;
    {
        Host host(home.Path());
        Controller* controller = host.Create("Demo");
        ASSERT_TRUE(controller->IsDBValid());
        Item* folder = controller->GetOrCreateFolder("/Decks/Bridge", true);
        ASSERT_NE(folder, nullptr);
        folderUid = folder->GetUID();
        Item* deck = controller->CreateContent("UDMSimulation", "load case 1");
        ASSERT_NE(deck, nullptr);
        kxVariant description("self weight \"and\" snow");
        EXPECT_TRUE(deck->SetAttributeValue("description", description));
        EXPECT_TRUE(controller->MoveContent(deck, folder));
        deckUid = deck->GetUID();
    }
    Host host(home.Path());
    Controller* controller = host.Open("Demo");
    ASSERT_TRUE(controller->IsDBValid());
    EXPECT_EQ(controller->GetLibraryName(), "Demo");
    EXPECT_EQ(controller->GetWorkspaceName(), "ws");

    Item* deck = controller->GetItem(deckUid, false);
    ASSERT_NE(deck, nullptr);
    EXPECT_EQ(deck->GetUID(), deckUid);
    EXPECT_EQ(deck->GetDisplayName(), "load case 1");
    EXPECT_EQ(deck->GetType(), "UDMSimulation");
    EXPECT_EQ(deck->GetAttributeValue("name").GetString(), "load case 1");
    EXPECT_EQ(deck->GetAttributeValue("description").GetString(), "self weight \"and\" snow");
    EXPECT_EQ(deck->GetAttributeValue("smd_createduser").GetString(), "anna");
    EXPECT_EQ(deck->GetAttributeValue("smd_contentrevision").GetInteger(), 0);

    Item* folder = controller->GetFolder("/Decks/Bridge", false);
    ASSERT_NE(folder, nullptr);
    EXPECT_EQ(folder->GetUID(), folderUid);
    EXPECT_EQ(controller->GetFolderFullPath(folder), "/Decks/Bridge");
    kxStlVector<Item*> children;
    folder->GetChildren(children, "folder");
    EXPECT_THAT(children, testing::ElementsAre(deck));
}

TEST(FirstRead, OneEntityIsOneItemForAsLongAsItIsCached) {
    const TemporaryFolder home;
    Host host(home.Path());
    Controller* controller = host.Create("Demo");
    Item* item = controller->CreateContent("Document", "a");
    EXPECT_EQ(controller->GetItem(item->GetUID(), false), item);
    EXPECT_EQ(controller->GetItem(item->GetUID(), true), item);
    kxStlVector<Item*> all;
    EXPECT_EQ(controller->GetAllItems(all, kxct::MANAGER_DEFAULT), 1u);
}

TEST(FirstRead, TheSecondCreateAttachesToTheLibraryThatIsThere) {
    const TemporaryFolder home;
    Host host(home.Path());
    const kxString uid = host.Create("Demo")->CreateContent("Document", "a")->GetUID();
    Host second(home.Path());
    Controller* controller = second.Create("Demo");
    ASSERT_TRUE(controller->IsDBValid());
    EXPECT_NE(controller->GetItem(uid, false), nullptr);
}

TEST(FirstRead, ALibraryFileOpensUnderAnotherMasterDatabase) {
    const TemporaryFolder home;
    const TemporaryFolder other;
    kxString uid;
    {
        Host host(home.Path());
        uid = host.Create("Demo")->GetOrCreateFolder("/A", true)->GetUID();
    }
    Host host(other.Path());
    Controller* controller = host.CreateIn(home.Path() / "libraries", "Demo");
    ASSERT_TRUE(controller->IsDBValid());
    EXPECT_NE(controller->GetItem(uid, false), nullptr);
}

TEST(FirstRead, AnUnpublishedContentIsSeenInItsWorkspaceAlone) {
    const TemporaryFolder home;
    Host host(home.Path());
    Controller* mine = host.Create("Demo", "ws", "anna");
    Controller* others = host.Create("Demo", "theirs", "ben");
    const kxString content = mine->CreateContent("Document", "draft")->GetUID();
    const kxString folder = mine->CreateFolder("/Shared")->GetUID();
    EXPECT_EQ(others->GetItem(content, false), nullptr);
    EXPECT_NE(others->GetItem(folder, false), nullptr);
}

TEST(FirstRead, AContentItemDescribesItsAttributes) {
    const TemporaryFolder home;
    Host host(home.Path());
    Controller* controller = host.Create("Demo");
    Item* item = controller->CreateContent("Document", "a");
    const kxStlVector<kxString> names = item->GetAttributeNameList(false, false);
    ASSERT_FALSE(names.empty());
    EXPECT_EQ(names.back(), ATTRIBUTE_NAME::CONTENTDEFINITION);
    EXPECT_THAT(names, testing::Contains("description"));
    EXPECT_EQ(item->GetAttributeDescription("description", ATTRIBUTE_DEFINITION::TYPE).GetString(),
              "String");
    EXPECT_TRUE(item->GetAttributeDescription("description", ATTRIBUTE_DEFINITION::ISEDITABLE)
                    .GetBoolean());
    EXPECT_TRUE(
        item->GetAttributeDescription("smd_ctime", ATTRIBUTE_DEFINITION::ISSYSTEM).GetBoolean());
    EXPECT_EQ(item->GetAttributeValue("icon").GetInteger(), 7);
    EXPECT_EQ(controller->CreateFolder("/F")->GetAttributeValue("icon").GetInteger(), 1);
}

TEST(FirstRead, OwnedChildrenAreListedInTheOrderInWhichTheyCame) {
    const TemporaryFolder home;
    Host host(home.Path());
    Controller* controller = host.Create("Demo");
    Item* assembly = controller->CreateContent("UDMAssemblyDM", "bridge");
    ASSERT_NE(assembly, nullptr);
    kxStlVector<Item*> parts{controller->CreateContent("UDMPart", "deck"),
                             controller->CreateContent("UDMPart", "arch")};
    ASSERT_THAT(parts, testing::Each(testing::NotNull()));
    const kxStlVector<kxString> groups = [&] {
        kxStlVector<Item*> nodes;
        assembly->GetChildren(nodes);
        kxString group;
        for (Item* node : nodes) {
            const kxString name = node->GetDisplayName();
            if (name == "parts") {
                group = name;
            }
        }
        return kxStlVector<kxString>{group, group};
    }();
    ASSERT_EQ(groups[0], "parts");
    ASSERT_TRUE(controller->AddChildren(assembly, parts, groups));
    kxStlVector<Item*> children;
    assembly->GetChildren(children, "parts");
    EXPECT_EQ(children, parts);
    EXPECT_EQ(assembly->GetNumChildren("parts"), 2u);
}
