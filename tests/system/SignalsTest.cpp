// What the listeners of one process hear when contents change.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/SignalHandler.h>
#include <kxctinterfaces/Item.h>
#include <kxsigslot/kxListener.h>
#include <kxsigslot/kxSignal.h>

#include "Host.h"

using kxct::Controller;
using kxct::Item;
using testing::ElementsAre;

namespace {

class Listener : public kxListener<single_threaded> {
  public:
    explicit Listener(Controller& controller) {
        kxct::SignalHandler* signals = controller.GetSignalHandler(kxct::MANAGER_DEFAULT);
        signals->ItemUpdated.connect(this, &Listener::OnUpdated);
        signals->ItemStructureUpdated.connect(this, &Listener::OnStructure);
        signals->ItemDeleted.connect(this, &Listener::OnDeleted);
        signals->ChildRemoved.connect(this, &Listener::OnChildRemoved);
    }
    void OnUpdated(Item* item) { heard.push_back("updated " + item->GetDisplayName()); }
    void OnStructure(Item* item) { heard.push_back("structure " + item->GetDisplayName()); }
    void OnDeleted(const kxString& uid, Item* /*item*/) { heard.push_back("deleted " + uid); }
    void OnChildRemoved(Item* parent, Item* child) {
        heard.push_back("removed " + child->GetDisplayName() + " from " + parent->GetDisplayName());
    }
    std::vector<std::string> heard;
};

class Signals : public testing::Test {
  protected:
    TemporaryFolder home;
    Host host{home.Path()};
};

}  // namespace

TEST_F(Signals, AnEditIsHeardByTheControllersOfBothSessions) {
    Controller* mine = host.Create("Demo", "ws", "anna");
    Controller* others = host.Create("Demo", "theirs", "ben");
    Item* folder = mine->CreateFolder("/Shared");
    Item* theirView = others->GetFolder("/Shared", false);
    ASSERT_NE(theirView, nullptr);
    Listener me(*mine);
    Listener they(*others);
    kxVariant text("new");
    ASSERT_TRUE(folder->SetAttributeValue("description", text));
    EXPECT_THAT(me.heard, ElementsAre("updated Shared"));
    EXPECT_THAT(they.heard, ElementsAre("updated Shared"));
    EXPECT_EQ(theirView->GetAttributeValue("description").GetString(), "new");
}

TEST_F(Signals, MovingAContentIsHeardAtBothFolders) {
    Controller* controller = host.Create("Demo");
    Item* from = controller->CreateFolder("/From");
    Item* to = controller->CreateFolder("/To");
    Item* content = controller->CreateContent("Document", "c");
    ASSERT_TRUE(controller->MoveContent(content, from));
    Listener listener(*controller);
    ASSERT_TRUE(controller->MoveContent(content, to));
    EXPECT_THAT(listener.heard, testing::IsSupersetOf({"removed c from From", "structure To"}));
}

TEST_F(Signals, DeletingAContentIsHeardWithItsUid) {
    Controller* controller = host.Create("Demo");
    Item* content = controller->CreateContent("Document", "c");
    const kxString uid = content->GetUID();
    Listener listener(*controller);
    kxStlVector<Item*> items{content};
    ASSERT_TRUE(controller->Delete(items));
    EXPECT_THAT(listener.heard, testing::Contains("deleted " + uid));
    EXPECT_EQ(controller->GetItem(uid, false), nullptr);
}

TEST_F(Signals, WhatOnlyOneWorkspaceSeesIsNotToldToOthers) {
    Controller* mine = host.Create("Demo", "ws", "anna");
    Controller* others = host.Create("Demo", "theirs", "ben");
    Listener they(*others);
    Item* draft = mine->CreateContent("Document", "draft");
    kxVariant text("secret");
    ASSERT_TRUE(draft->SetAttributeValue("description", text));
    EXPECT_TRUE(they.heard.empty());
}
