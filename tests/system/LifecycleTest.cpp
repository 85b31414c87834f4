// The life of contents from check-out to publish, as hosts with controllers and items see it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/SignalHandler.h>
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Item.h>
#include <kxsigslot/kxListener.h>
#include <kxsigslot/kxSignal.h>
#include <kxudm/IUDMProfile.h>
#include <kxudm/UDMBulkEdit.h>

#include "Host.h"

using kxct::Controller;
using kxct::Item;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;

namespace {

using Items = kxStlVector<Item*>;

kxString Base(const kxString& uid) {
    return uid.substr(0, uid.find(':'));
}
kxString Revision(const Item* item) {
    return item->GetUID().substr(item->GetUID().find(':'));
}

// Writes down signals as "<signal> <name>:<revision>".
class Listener : public kxListener<single_threaded> {
  public:
    explicit Listener(Controller& controller) {
        kxct::SignalHandler* signals = controller.GetSignalHandler(kxct::MANAGER_DEFAULT);
        signals->ItemUpdated.connect(this, &Listener::OnUpdated);
        signals->ItemStructureUpdated.connect(this, &Listener::OnStructure);
        signals->ItemDeleted.connect(this, &Listener::OnDeleted);
        signals->ItemCreated.connect(this, &Listener::OnCreated);
        signals->ChildRemoved.connect(this, &Listener::OnChildRemoved);
    }
    void OnUpdated(Item* item) { Note("updated ", item); }
    void OnStructure(Item* item) { Note("structure ", item); }
    void OnDeleted(const kxString& uid, Item* /*item*/) {
        _heard.push_back("deleted " + uid.substr(uid.find(':')));
    }
    void OnCreated(Item* parent, Item* item) {
        EXPECT_EQ(parent, nullptr);
        Note("created ", item);
    }
    void OnChildRemoved(Item* parent, Item* child) {
        _heard.push_back("removed " + child->GetDisplayName() + Revision(child) + " from " +
                         parent->GetDisplayName());
    }
    std::vector<std::string> Take() { return std::exchange(_heard, {}); }

  private:
    void Note(const char* what, const Item* item) {
        _heard.push_back(what + item->GetDisplayName() + Revision(item));
    }
    std::vector<std::string> _heard;
};

class Lifecycle : public testing::Test {
  protected:
    Item* Create(const kxString& name = "d") { return anna->CreateContent("Document", name); }
    Item* CreatePublished(const kxString& name = "d") {
        Item* item = Create(name);
        Items items{item};
        EXPECT_TRUE(anna->Publish(items, "first", false));
        return item;
    }
    static bool Set(Item* item, const kxString& value) {
        return item->SetAttributeValue("description", value);
    }
    static kxString Description(const Item* item) {
        return item->GetAttributeValue("description").GetString();
    }
    static std::vector<std::string> Contents(Item* folder) {
        Items children;
        folder->GetChildren(children, "folder");
        std::vector<std::string> names;
        for (const Item* child : children) {
            names.push_back(child->GetDisplayName() + Revision(child));
        }
        return names;
    }

    TemporaryFolder home;
    Host host{home.Path()};
    Controller* anna = host.Create("Demo", "ws", "anna");
    Controller* ben = host.Create("Demo", "theirs", "ben");
};

}  // namespace

TEST_F(Lifecycle, AnItemStaysTheSameObjectThroughAllRevisions) {
    Item* item = Create();
    const kxString base = Base(item->GetUID());
    Items items{item};
    Listener heard(*anna);
    EXPECT_EQ(Revision(item), ":0");
    ASSERT_TRUE(anna->Publish(items, "first", false));
    EXPECT_EQ(Revision(item), ":1");
    EXPECT_FALSE(item->IsEditable());
    EXPECT_FALSE(Set(item, "no"));
    EXPECT_THAT(heard.Take(), ElementsAre("updated d:1"));

    ASSERT_TRUE(anna->CheckOut(items, "second"));
    EXPECT_EQ(Revision(item), ":2");
    EXPECT_TRUE(item->IsEditable());
    EXPECT_THAT(heard.Take(), ElementsAre("updated d:2"));
    ASSERT_TRUE(Set(item, "new"));
    ASSERT_TRUE(anna->Save(items, "half"));
    EXPECT_THAT(heard.Take(), ElementsAre("updated d:2", "updated d:2"));
    EXPECT_EQ(item->GetAttributeValue("smd_comment").GetString(), "half");
    ASSERT_TRUE(anna->Publish(items, "second", false));
    EXPECT_EQ(Revision(item), ":2");
    EXPECT_FALSE(item->IsEditable());
    EXPECT_THAT(heard.Take(), ElementsAre("updated d:2"));
    EXPECT_EQ(anna->GetItem(base, true), item);
    EXPECT_EQ(anna->GetItem(base + ":2", false), item);
    // An older revision has an item of its own.
    Item* older = anna->GetItem(base + ":1", false);
    ASSERT_NE(older, nullptr);
    EXPECT_NE(older, item);
    EXPECT_EQ(Description(older), "");
    EXPECT_EQ(Description(item), "new");
}

TEST_F(Lifecycle, AnItemStandsForWhatWasBeforeUntilABulkEditIsCommitted) {
    Item* item = CreatePublished();
    // The session below the controller, with one more user.
    kxct::UDMDBCtrl* opened = host.Impl().Open("Demo", "ws", "anna", "", kxct::CONN_TYPE_LIBRARY);
    const boost::shared_ptr<kxudm::IUDMProfile> session = opened->GetProfile();
    const kxudm::UDMItemHandle published = session->GetEntity(item->GetUID());
    Listener heard(*anna);
    {
        kxudm::UDMBulkEdit edit(session);
        session->Checkout(published, "second");
        const kxudm::UDMItemHandle working = session->GetWorkingHandle(published);
        session->SetAttributeValue(working, "description", "new");
        EXPECT_EQ(Revision(item), ":1");
        EXPECT_FALSE(item->IsEditable());
        EXPECT_THAT(heard.Take(), ElementsAre());
        edit.Commit();
    }
    EXPECT_EQ(Revision(item), ":2");
    EXPECT_TRUE(item->IsEditable());
    EXPECT_EQ(Description(item), "new");
    host.Impl().Close(opened);
}

TEST_F(Lifecycle, APublishThatKeepsTheCheckOutGoesOnWithTheSameItem) {
    Item* item = Create();
    Items items{item};
    ASSERT_TRUE(anna->Publish(items, "first", true));
    EXPECT_EQ(Revision(item), ":2");
    EXPECT_TRUE(item->IsEditable());
    ASSERT_TRUE(Set(item, "more"));
    ASSERT_TRUE(anna->Publish(items, "second", true));
    EXPECT_EQ(Revision(item), ":3");
    EXPECT_EQ(Description(item), "more");
    EXPECT_EQ(Revision(ben->GetItem(Base(item->GetUID()), true)), ":2");
}

TEST_F(Lifecycle, ARevertReplacesTheItemByThatOfThePublishedRevision) {
    Item* item = CreatePublished();
    const kxString base = Base(item->GetUID());
    Items items{item};
    ASSERT_TRUE(anna->CheckOut(items, ""));
    ASSERT_TRUE(Set(item, "dropped"));
    Listener heard(*anna);
    ASSERT_TRUE(anna->Revert(items));
    EXPECT_THAT(heard.Take(), ElementsAre("deleted :2", "created d:1"));
    Item* back = anna->GetItem(base, true);
    ASSERT_NE(back, nullptr);
    EXPECT_NE(back, item);
    EXPECT_EQ(back->GetUID(), base + ":1");
    EXPECT_EQ(Description(back), "");
    EXPECT_EQ(anna->GetItem(base + ":2", false), nullptr);
    Items again{back};
    ASSERT_TRUE(anna->CheckOut(again, ""));
    EXPECT_EQ(Revision(back), ":2");
    EXPECT_EQ(Description(back), "");
}

TEST_F(Lifecycle, ARevertOfWhatWasNeverPublishedIsFalseAndKeepsIt) {
    Item* item = Create();
    Items items{item};
    EXPECT_FALSE(anna->Revert(items));
    EXPECT_TRUE(item->IsEditable());
    EXPECT_EQ(Revision(item), ":0");
}

TEST_F(Lifecycle, AnotherUsersItemFollowsEachPublishAndIsLockedBetween) {
    Item* item = CreatePublished();
    Items mine{item};
    Item* theirs = ben->GetItem(Base(item->GetUID()), true);
    ASSERT_NE(theirs, nullptr);
    Items bens{theirs};
    Listener heard(*ben);
    ASSERT_TRUE(anna->CheckOut(mine, ""));
    EXPECT_THAT(heard.Take(), ElementsAre("updated d:1"));
    EXPECT_FALSE(ben->CheckOut(bens, ""));
    EXPECT_FALSE(theirs->IsEditable());
    EXPECT_FALSE(Set(theirs, "no"));
    ASSERT_TRUE(Set(item, "new"));
    EXPECT_THAT(heard.Take(), IsEmpty());
    EXPECT_EQ(Description(theirs), "");
    ASSERT_TRUE(anna->Publish(mine, "", false));
    EXPECT_THAT(heard.Take(), ElementsAre("updated d:2"));
    EXPECT_EQ(Revision(theirs), ":2");
    EXPECT_EQ(Description(theirs), "new");
    ASSERT_TRUE(ben->CheckOut(bens, ""));
    EXPECT_EQ(Revision(theirs), ":3");
    EXPECT_EQ(Revision(item), ":2");
}

TEST_F(Lifecycle, AFirstPublishShowsUpInTheFolderOfEverybody) {
    Item* folder = anna->CreateFolder("/Shared");
    Item* item = Create();
    ASSERT_TRUE(anna->MoveContent(item, folder));
    Item* theirs = ben->GetFolder("/Shared", false);
    EXPECT_THAT(Contents(theirs), IsEmpty());
    Listener heard(*ben);
    Items items{item};
    ASSERT_TRUE(anna->Publish(items, "", false));
    EXPECT_THAT(heard.Take(), ElementsAre("structure Shared:0"));
    EXPECT_THAT(Contents(theirs), ElementsAre("d:1"));
}

TEST_F(Lifecycle, APublishedMoveIsHeardAtBothFoldersByEverybody) {
    Item* from = anna->CreateFolder("/From");
    Item* to = anna->CreateFolder("/To");
    Item* item = Create();
    ASSERT_TRUE(anna->MoveContent(item, from));
    Items items{item};
    ASSERT_TRUE(anna->Publish(items, "", false));
    Item* theirFrom = ben->GetFolder("/From", false);
    Item* theirTo = ben->GetFolder("/To", false);
    EXPECT_THAT(Contents(theirFrom), ElementsAre("d:1"));
    ASSERT_TRUE(anna->CheckOut(items, ""));
    ASSERT_TRUE(anna->MoveContent(item, to));
    EXPECT_THAT(Contents(theirFrom), ElementsAre("d:1"));
    EXPECT_THAT(Contents(theirTo), IsEmpty());
    Listener heard(*ben);
    ASSERT_TRUE(anna->Publish(items, "", false));
    EXPECT_THAT(heard.Take(),
                ElementsAre("updated d:2", "removed d:2 from From", "structure To:0"));
    EXPECT_THAT(Contents(theirFrom), IsEmpty());
    EXPECT_THAT(Contents(theirTo), ElementsAre("d:2"));
}

TEST_F(Lifecycle, CheckingOutAnOlderRevisionMakesABranchBesideIt) {
    Item* folder = anna->CreateFolder("/F");
    Item* item = Create();
    const kxString base = Base(item->GetUID());
    ASSERT_TRUE(anna->MoveContent(item, folder));
    Items items{item};
    ASSERT_TRUE(Set(item, "old"));
    ASSERT_TRUE(anna->Publish(items, "", true));
    ASSERT_TRUE(Set(item, "new"));
    ASSERT_TRUE(anna->Publish(items, "", false));
    Items older{anna->GetItem(base + ":1", false)};
    Listener heard(*anna);
    ASSERT_TRUE(anna->CheckOut(older, "another way"));
    EXPECT_THAT(heard.Take(), ElementsAre("structure F:0"));
    Items contents;
    folder->GetChildren(contents, "folder");
    ASSERT_EQ(contents.size(), 2u);
    Item* branch = contents[1];
    EXPECT_NE(Base(branch->GetUID()), base);
    EXPECT_EQ(Revision(branch), ":0");
    EXPECT_EQ(Description(branch), "old");
    EXPECT_EQ(branch->GetAttributeValue("smd_branchfrom").GetString(), base);
    EXPECT_EQ(branch->GetAttributeValue("smd_branchfromver").GetInteger(), 1);
    EXPECT_TRUE(branch->IsEditable());
    EXPECT_EQ(Revision(item), ":2");
}

TEST_F(Lifecycle, TheHistoryListsTheContentAndItsVersions) {
    Item* item = Create();
    const kxString base = Base(item->GetUID());
    Items items{item};
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(anna->Publish(items, "", i < 2));
    }
    Items history;
    EXPECT_EQ(anna->GetHistory({base}, history), 4u);
    std::vector<std::string> revisions;
    for (const Item* each : history) {
        EXPECT_EQ(Base(each->GetUID()), base);
        revisions.push_back(Revision(each));
    }
    // The content asked for comes first, then all of its versions.
    EXPECT_THAT(revisions, ElementsAre(":3", ":1", ":2", ":3"));
    // Branches hang below an item of their own.
    Items older{anna->GetItem(base + ":2", false)};
    ASSERT_TRUE(anna->CheckOut(older, ""));
    Items branches;
    ASSERT_EQ(history[0]->GetChildren(branches), 1u);
    EXPECT_EQ(branches[0]->GetAttributeValue("label").GetString(), "Branches");
    Items below;
    ASSERT_EQ(branches[0]->GetChildren(below), 1u);
    EXPECT_EQ(Revision(below[0]), ":0");
    EXPECT_NE(Base(below[0]->GetUID()), base);
}

TEST_F(Lifecycle, AQueryListsOlderVersionsBehindTheHits) {
    Item* item = Create("found");
    Items items{item};
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(anna->Publish(items, "", i < 2));
    }
    const auto revisions = [&](int versions) {
        Items hits;
        anna->Query("name == found", hits, versions, kxct::QUERY_ATTRIBUTES, 0, 0, false, false);
        std::vector<std::string> found;
        for (const Item* hit : hits) {
            found.push_back(Revision(hit));
        }
        return found;
    };
    EXPECT_THAT(revisions(-1), ElementsAre(":3"));
    EXPECT_THAT(revisions(0), ElementsAre(":3", ":1", ":2"));
    EXPECT_THAT(revisions(1), ElementsAre(":3", ":1"));
}

TEST_F(Lifecycle, OrganizeChecksOutMovesAndPublishes) {
    Item* folder = anna->CreateFolder("/F");
    Item* item = CreatePublished();
    Items items{item};
    ASSERT_TRUE(anna->Organize(items, folder));
    EXPECT_EQ(Revision(item), ":2");
    EXPECT_FALSE(item->IsEditable());
    EXPECT_THAT(Contents(ben->GetFolder("/F", false)), ElementsAre("d:2"));
}

TEST_F(Lifecycle, AStepOverManyItemsTakesThoseThatItFits) {
    Item* draft = Create("draft");
    Item* published = CreatePublished("published");
    Items items{draft, nullptr, published};
    ASSERT_TRUE(anna->CheckOut(items, ""));
    EXPECT_EQ(Revision(draft), ":0");
    EXPECT_EQ(Revision(published), ":2");
    ASSERT_TRUE(anna->Publish(items, "", false));
    EXPECT_EQ(Revision(draft), ":1");
    EXPECT_EQ(Revision(published), ":2");
    ASSERT_TRUE(anna->Save(items, "nothing to save"));
    EXPECT_EQ(published->GetAttributeValue("smd_comment").GetString(), "");
}

TEST_F(Lifecycle, DeletingAPublishedContentIsHeardByAllWithTheRevisionThatTheyShow) {
    Item* item = CreatePublished();
    Item* theirs = ben->GetItem(Base(item->GetUID()), true);
    ASSERT_NE(theirs, nullptr);
    Items items{item};
    ASSERT_TRUE(anna->CheckOut(items, ""));
    Listener mine(*anna);
    Listener bens(*ben);
    ASSERT_TRUE(anna->Delete(items));
    EXPECT_THAT(mine.Take(), IsSupersetOf({"deleted :2"}));
    EXPECT_THAT(bens.Take(), ElementsAre("deleted :1"));
}

TEST_F(Lifecycle, WhatWasPublishedIsThereForALaterHost) {
    Item* item = CreatePublished();
    const kxString base = Base(item->GetUID());
    Items items{item};
    ASSERT_TRUE(anna->CheckOut(items, "left open"));
    ASSERT_TRUE(Set(item, "in work"));
    host.Close(anna);
    anna = host.Open("Demo", "ws", "anna");
    Item* again = anna->GetItem(base, true);
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(Revision(again), ":2");
    EXPECT_TRUE(again->IsEditable());
    EXPECT_EQ(Description(again), "in work");
    EXPECT_EQ(Revision(ben->GetItem(base, true)), ":1");
    Items found{again};
    ASSERT_TRUE(anna->Publish(found, "", false));
    EXPECT_EQ(Description(ben->GetItem(base, true)), "in work");
}
