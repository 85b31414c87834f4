#include <kxct/GhostItem.h>

#include "tests/items/Fixture.h"

namespace kxct::test {
namespace {

using ::testing::Return;
using ::testing::Throw;

// An item of no particular kind, which shows what ItemImpl itself does.
class PlainItem : public ItemImpl {
  public:
    using ItemImpl::GetChildren;
    using ItemImpl::GetNumChildren;
    using ItemImpl::ItemImpl;
    using ItemImpl::RetrieveFilesIntoFolder;
    using ItemImpl::SetAttributeValue;

    const kxString& IsA() override {
        static const kxString name("PlainItem");
        return name;
    }
};

TEST(ItemImpl, AnswersIconLabelAndIdAndNothingElse) {
    PlainItem item(nullptr, nullptr, "X");
    EXPECT_EQ(item.GetAttributeValue("icon"), kxVariant(6));
    EXPECT_EQ(item.GetAttributeValue("label"), kxVariant("###"));
    EXPECT_EQ(item.GetAttributeValue("id"), kxVariant("X"));
    EXPECT_TRUE(item.GetAttributeValue("name").IsEmpty());
    EXPECT_TRUE(item.GetAttributeValue("Icon").IsEmpty());
}

TEST(ItemImpl, AnswersEmptyTextsAndLists) {
    const PlainItem item;
    EXPECT_TRUE(item.GetAttributeDescription("name", "iseditable").IsEmpty());
    EXPECT_TRUE(item.GetAttributeNameList(false, false).empty());
    EXPECT_TRUE(item.GetAttributeNameDiplaynameMap(false, false).empty());
    EXPECT_EQ(item.GetDisplayName(), "");
    EXPECT_EQ(item.GetQueryString(), "");
    EXPECT_EQ(item.GetUID(), "");
    EXPECT_EQ(item.GetType(), "");
    EXPECT_FALSE(item.HasParent());
}

TEST(ItemImpl, EveryOtherOperationAnswersFalseAndChangesNothing) {
    PlainItem item(nullptr, nullptr, "X");
    Names names;
    kxStlVector<DocumentInfo> info;
    kxVariant value(1);
    kxudm::UDMItemHandle handle;
    EXPECT_FALSE(item.Checkout("c"));
    EXPECT_FALSE(item.Save("c"));
    EXPECT_FALSE(item.IsAttributeEditable("a"));
    EXPECT_FALSE(item.IsEditable());
    EXPECT_FALSE(item.Persist("c", true));
    EXPECT_FALSE(item.RetrieveFilesIntoFolder("f", names, true, true));
    EXPECT_FALSE(item.RetrieveFilesIntoFolder("f"));
    EXPECT_FALSE(item.RetrieveFilesIntoFolder("f", "d", names));
    EXPECT_FALSE(item.RetrieveFilesIntoWorkspace(names, true, true));
    EXPECT_FALSE(item.RetrieveFilesIntoWorkspace());
    EXPECT_FALSE(item.GetDocuments(names));
    EXPECT_FALSE(item.GetDocumentNames(names));
    EXPECT_FALSE(item.GetDocumentInfo(info));
    EXPECT_FALSE(item.SetAttributeValue("a", value));
    EXPECT_FALSE(item.NextAttributeValue("a"));
    EXPECT_FALSE(item.UndoCheckout());
    EXPECT_FALSE(item.Add(&item, "g"));
    EXPECT_FALSE(item.AddFile("t", "p", true));
    EXPECT_FALSE(item.Remove(&item));
    EXPECT_FALSE(item.RemoveFile("p"));
    EXPECT_FALSE(item.ReAddFile("p", true, true));
    EXPECT_FALSE(item.AddItem(handle, "g", "d"));
    EXPECT_TRUE(names.empty());
    EXPECT_TRUE(info.empty());
    EXPECT_TRUE(handle.IsEmpty());
    EXPECT_EQ(item.GetUID(), "X");
}

TEST(ItemImpl, HasNoChildrenAndNoParents) {
    PlainItem item;
    Items items;
    EXPECT_EQ(item.GetChildren(items, {}, {}, ItemFilterList()), 0u);
    EXPECT_EQ(item.GetChildren(items, ChildFilterMap(), ChildFilterMap()), 0u);
    EXPECT_EQ(item.GetChildren(items), 0u);
    EXPECT_EQ(item.GetChildren(items, kxString("g"), kxString("q")), 0u);
    EXPECT_EQ(item.GetChildren(items, kxString("g")), 0u);
    EXPECT_EQ(item.GetNumChildren({}, {}, ItemFilterList()), 0u);
    EXPECT_EQ(item.GetNumChildren(ChildFilterMap(), ChildFilterMap()), 0u);
    EXPECT_EQ(item.GetNumChildren(kxString("g")), 0u);
    EXPECT_EQ(item.GetNumChildren(), 0u);
    EXPECT_EQ(item.GetParent(true), nullptr);
    EXPECT_EQ(item.GetParents(items, "owner", true), 0u);
    EXPECT_TRUE(items.empty());
}

TEST(ItemImpl, IsADataTypeItem) {
    PlainItem item;
    EXPECT_EQ(item.GetDataType(), 2);
    EXPECT_EQ(DATA_TYPE_ITEM, 2);
}

TEST(ItemImpl, TakesAnyRenderStateWithoutCheck) {
    PlainItem item;
    EXPECT_EQ(item.GetRenderState(), RENDER_NONE);
    for (const ItemRenderState state : {RENDER_EXPANDED, RENDER_GHOSTED, RENDER_NONE}) {
        item.SetRenderState(state);
        EXPECT_EQ(item.GetRenderState(), state);
    }
}

TEST(ItemImpl, CountsItsUsesAsAChild) {
    PlainItem item;
    EXPECT_FALSE(item.UsedAsChild());
    item.UseAsChild(true);
    item.UseAsChild(true);
    item.UseAsChild(false);
    EXPECT_TRUE(item.UsedAsChild());
    item.UseAsChild(false);
    EXPECT_FALSE(item.UsedAsChild());
}

TEST(ItemImpl, AUseCountOfZeroStaysAtZero) {
    PlainItem item;
    item.UseAsChild(false);
    EXPECT_FALSE(item.UsedAsChild());
    item.UseAsChild(true);
    EXPECT_TRUE(item.UsedAsChild());
}

// Counts children as told, and leaves a render state behind that callers must not see.
class CountingItem : public PlainItem {
  public:
    size_t GetNumChildren(const ChildFilterMap& hideMap,
                          const ChildFilterMap& filterMap,
                          const ItemFilterList& filters) override {
        asked = "maps " + std::to_string(hideMap.size()) + std::to_string(filterMap.size()) +
                std::to_string(filters.size());
        return Count();
    }
    size_t GetNumChildren(const kxString& group) override {
        asked = "group " + group;
        return Count();
    }
    size_t GetNumChildren() override {
        asked = "all";
        return Count();
    }
    size_t GetChildren(Items& children) override {
        children.push_back(this);
        return 7;
    }

    std::string asked;
    size_t count = 0;
    bool fails = false;

  private:
    size_t Count() {
        SetRenderState(RENDER_EXPANDED);
        if (fails) {
            throw std::runtime_error("no count");
        }
        return count;
    }
};

TEST(ItemImpl, HasChildrenAsksTheCountOfTheSameArguments) {
    CountingItem item;
    ItemFilterList filters;
    filters.Add("a", "b", "c", "d");
    const ChildFilterMap one({{"k", {}}});
    EXPECT_FALSE(item.HasChildren(one, {}, filters));
    EXPECT_EQ(item.asked, "maps 101");
    item.count = 3;
    EXPECT_TRUE(item.HasChildren("g"));
    EXPECT_EQ(item.asked, "group g");
    EXPECT_TRUE(item.HasChildren());
    EXPECT_EQ(item.asked, "all");
}

TEST(ItemImpl, HasChildrenLeavesTheRenderStateAsItFoundIt) {
    CountingItem item;
    item.SetRenderState(RENDER_GHOSTED);
    item.HasChildren();
    item.HasChildren("g");
    item.HasChildren({}, {}, ItemFilterList());
    EXPECT_EQ(item.GetRenderState(), RENDER_GHOSTED);
    item.fails = true;
    EXPECT_THROW(item.HasChildren(), std::runtime_error);
    EXPECT_EQ(item.GetRenderState(), RENDER_GHOSTED);
}

TEST(ItemImpl, TheFormsWithMapsForwardToThoseWithout) {
    CountingItem item;
    PlainItem& plain = item;
    Items children;
    EXPECT_EQ(plain.GetChildren(children, {}, {}, ItemFilterList()), 7u);
    EXPECT_EQ(plain.GetChildren(children, ChildFilterMap(), ChildFilterMap()), 7u);
    EXPECT_EQ(children.size(), 2u);
    item.count = 4;
    EXPECT_EQ(plain.GetNumChildren(ChildFilterMap(), ChildFilterMap()), 4u);
    EXPECT_EQ(item.asked, "all");
}

class RecordingItem : public PlainItem {
  public:
    using PlainItem::RetrieveFilesIntoFolder;
    using PlainItem::SetAttributeValue;

    bool SetAttributeValue(const kxString& attribute, kxVariant& value) override {
        name = attribute;
        set = value;
        return true;
    }
    bool RetrieveFilesIntoFolder(const kxString& folder,
                                 Names&,
                                 const bool& first,
                                 const bool& second) override {
        name = folder;
        set = kxVariant(first || second);
        return true;
    }

    kxString name;
    kxVariant set;
};

TEST(ItemImpl, SettingAPlainValueGoesThroughTheVariantForm) {
    RecordingItem item;
    Item& base = item;
    EXPECT_TRUE(base.SetAttributeValue("a", 12));
    EXPECT_EQ(item.set.GetKind(), kxVariant::INTEGER);
    EXPECT_EQ(item.set.GetInteger(), 12);
    EXPECT_TRUE(base.SetAttributeValue("b", 1.5f));
    EXPECT_EQ(item.set.GetKind(), kxVariant::FLOAT);
    EXPECT_EQ(item.set.GetDouble(), 1.5);
    EXPECT_TRUE(base.SetAttributeValue("c", kxString("text")));
    EXPECT_EQ(item.set, kxVariant("text"));
    EXPECT_EQ(item.name, "c");
}

TEST(ItemImpl, RetrievingIntoAFolderCallsTheLongFormWithBothFlagsFalse) {
    RecordingItem item;
    Item& base = item;
    EXPECT_TRUE(base.RetrieveFilesIntoFolder("/tmp/x"));
    EXPECT_EQ(item.name, "/tmp/x");
    EXPECT_EQ(item.set, kxVariant(false));
}

TEST(ItemImpl, ACopyHasAllSixFields) {
    PlainItem item(nullptr, nullptr, "X");
    item.SetRenderState(RENDER_GHOSTED);
    item.UseAsChild(true);
    item.GetItemHandle() = mock::NewHandle("A:1", "UDMPart");
    PlainItem copy(item);
    PlainItem assigned;
    assigned = item;
    for (PlainItem* other : {&copy, &assigned}) {
        EXPECT_EQ(other->GetUID(), "X");
        EXPECT_EQ(other->GetRenderState(), RENDER_GHOSTED);
        EXPECT_TRUE(other->UsedAsChild());
        EXPECT_EQ(other->GetItemHandle().GetUID(), "A:1");
        EXPECT_EQ(other->GetType(), "UDMPart");
    }
}

TEST(ItemImpl, ACachedContentStaysSmall) {
    // Item, its entry in the cache and both texts, apart from the state behind the handle.
    constexpr size_t mapEntry = 32 + sizeof(kxString) + sizeof(Item*);
    constexpr size_t texts = 2 * 48;
    EXPECT_LE(sizeof(ContentItem) + mapEntry + texts, 400u);
}

using ItemImplWithSession = SessionTest;

TEST_F(ItemImplWithSession, AnEmptyHandleIsLookedUpByTheUidOnce) {
    EXPECT_CALL(*profile, GetEntity(kxString("A:2"))).WillOnce(Return(mock::NewHandle("A:2")));
    PlainItem item(nullptr, session.get(), "A:2");
    EXPECT_EQ(item.GetItemHandle().GetUID(), "A:2");
    EXPECT_EQ(item.GetItemHandle().GetUID(), "A:2");
}

TEST_F(ItemImplWithSession, AHandleThatIsNotFoundStaysEmpty) {
    EXPECT_CALL(*profile, GetEntity).WillOnce(Throw(std::runtime_error("gone")));
    PlainItem item(nullptr, session.get(), "A:2");
    EXPECT_TRUE(item.GetItemHandle().IsEmpty());
    EXPECT_EQ(item.GetType(), "");
}

TEST_F(ItemImplWithSession, TheHandleOfAnotherItemIsThatItemsOwn) {
    PlainItem item;
    PlainItem other;
    other.GetItemHandle() = mock::NewHandle("B:1");
    EXPECT_EQ(&item.GetItemHandle(&other), &other.GetItemHandle());
}

TEST_F(ItemImplWithSession, AnItemWithoutSessionAnswersItsEmptyHandle) {
    PlainItem item(nullptr, nullptr, "A:1");
    EXPECT_TRUE(item.GetItemHandle().IsEmpty());
}

TEST(GhostItem, AnswersThePlaceholdersOfItsKind) {
    GhostItem ghost(nullptr);
    EXPECT_EQ(ghost.IsA(), "GhostItem");
    EXPECT_EQ(ghost.GetUID(), "GhostItem");
    EXPECT_EQ(ghost.GetAttributeValue("label"), kxVariant("###"));
    EXPECT_EQ(ghost.GetAttributeValue("icon"), kxVariant(6));
    EXPECT_EQ(ghost.GetAttributeValue("id"), kxVariant("GhostItem"));
    EXPECT_EQ(&ghost.IsA(), &GhostItem(nullptr).IsA());
}

}  // namespace
}  // namespace kxct::test
