#include <kxct/Cache.h>
#include <kxct/GhostItem.h>

#include "tests/items/Fixture.h"

namespace kxct::test {
namespace {

// Writes down its end.
class MortalItem : public ItemImpl {
  public:
    MortalItem(const kxString& uid, std::vector<std::string>& deaths)
        : ItemImpl(nullptr, nullptr, uid), _deaths(deaths) {}
    ~MortalItem() override { _deaths.push_back(m_uid); }
    const kxString& IsA() override { return m_uid; }

  private:
    std::vector<std::string>& _deaths;
};

class CacheTest : public ::testing::Test {
  protected:
    ~CacheTest() override { cache.Clear(); }

    Item* Make(const kxString& uid) { return new MortalItem(uid, deaths); }

    std::vector<std::string> deaths;
    Cache cache;
};

TEST_F(CacheTest, AddEntersAnItemUnlessTheKeyIsThere) {
    Item* first = Make("a");
    const std::unique_ptr<Item> second(Make("a"));
    Item* candidate = second.get();
    EXPECT_EQ(cache.Add("a", first), first);
    EXPECT_EQ(cache.Add("a", candidate), first);
    EXPECT_EQ(candidate, second.get());
}

TEST_F(CacheTest, FindSetsTheItemOnlyIfItIsThere) {
    Item* item = Make("a");
    cache.Add("a", item);
    Item* found = nullptr;
    EXPECT_TRUE(cache.Find("a", found));
    EXPECT_EQ(found, item);
    EXPECT_FALSE(cache.Find("A", found));
    EXPECT_EQ(found, item);
}

TEST_F(CacheTest, ANullEntryIsNotFound) {
    Item* null = nullptr;
    EXPECT_EQ(cache.Add("a", null), nullptr);
    const std::unique_ptr<Item> other(Make("b"));
    Item* found = other.get();
    EXPECT_FALSE(cache.Find("a", found));
    EXPECT_EQ(found, other.get());
    Items all;
    EXPECT_EQ(cache.GetAll(all), 0u);
    EXPECT_TRUE(cache.Drop("a"));
}

TEST_F(CacheTest, GetEntersANewCandidate) {
    Item* candidate = Make("a");
    Item* item = nullptr;
    EXPECT_FALSE(cache.Get(candidate, item));
    EXPECT_EQ(item, candidate);
}

TEST_F(CacheTest, GetGivesTheStoredItemAndLeavesTheCandidateAlone) {
    Item* stored = Make("a");
    cache.Add("a", stored);
    const std::unique_ptr<Item> candidate(Make("a"));
    Item* item = nullptr;
    EXPECT_TRUE(cache.Get(candidate.get(), item));
    EXPECT_EQ(item, stored);
    EXPECT_TRUE(deaths.empty());
}

TEST_F(CacheTest, GetOfAnEmptyUidAnswersTrueAndStoresNothing) {
    const std::unique_ptr<Item> candidate(Make(""));
    const std::unique_ptr<Item> other(Make("b"));
    Item* item = other.get();
    EXPECT_TRUE(cache.Get(candidate.get(), item));
    EXPECT_EQ(item, other.get());
    Items all;
    EXPECT_EQ(cache.GetAll(all), 0u);
}

TEST_F(CacheTest, DropTakesTheEntryOutAndKeepsTheItem) {
    const std::unique_ptr<Item> item(Make("a"));
    Item* pointer = item.get();
    cache.Add("a", pointer);
    EXPECT_TRUE(cache.Drop("a"));
    EXPECT_FALSE(cache.Drop("a"));
    EXPECT_TRUE(deaths.empty());
}

TEST_F(CacheTest, AnItemThatWasFoundIsNotFoundOnceItIsDropped) {
    const std::unique_ptr<Item> item(Make("a"));
    Item* pointer = item.get();
    cache.Add("a", pointer);
    Item* found = nullptr;
    EXPECT_TRUE(cache.Find("a", found));
    EXPECT_TRUE(cache.Find("a", found));
    EXPECT_TRUE(cache.Drop("a"));
    EXPECT_FALSE(cache.Find("a", found));
}

TEST_F(CacheTest, ManyItemsAreFoundAgainWhileOthersComeAndGo) {
    std::map<std::string, Item*> expected;
    std::vector<std::unique_ptr<Item>> dropped;
    for (int i = 0; i < 2000; ++i) {
        const std::string key = "uid" + std::to_string(i * 7919 % 2000);
        expected[key] = Make(key);
        cache.Add(key, expected[key]);
        Item* found = nullptr;
        EXPECT_TRUE(cache.Find(key, found));
        if (i % 3 == 0) {
            dropped.emplace_back(expected.begin()->second);
            EXPECT_TRUE(cache.Drop(expected.begin()->first));
            expected.erase(expected.begin());
        }
    }
    for (int i = 0; i < 2000; ++i) {
        const std::string key = "uid" + std::to_string(i);
        Item* found = nullptr;
        EXPECT_EQ(cache.Find(key, found), expected.count(key) != 0) << key;
        EXPECT_EQ(found, expected.count(key) != 0 ? expected[key] : nullptr) << key;
    }
}

TEST_F(CacheTest, ACopyFindsWhatTheOriginalHasDroppedSince) {
    const std::unique_ptr<Item> item(Make("a"));
    Item* pointer = item.get();
    cache.Add("a", pointer);
    Item* found = nullptr;
    EXPECT_TRUE(cache.Find("a", found));
    Cache copy(cache);
    EXPECT_TRUE(cache.Drop("a"));
    EXPECT_TRUE(copy.Find("a", found));
    EXPECT_FALSE(cache.Find("a", found));
}

TEST_F(CacheTest, ClearDeletesTheItemsInTheOrderOfTheirKeys) {
    for (const char* uid : {"b", "a", "ab", "B"}) {
        Item* item = Make(uid);
        cache.Add(uid, item);
    }
    cache.Clear();
    EXPECT_THAT(deaths, ::testing::ElementsAre("B", "a", "ab", "b"));
    Items all;
    EXPECT_EQ(cache.GetAll(all), 0u);
}

TEST_F(CacheTest, TheDestructorLeavesTheItemsAlone) {
    const std::unique_ptr<Item> item(Make("a"));
    {
        Cache other;
        Item* pointer = item.get();
        other.Add("a", pointer);
    }
    EXPECT_TRUE(deaths.empty());
}

TEST_F(CacheTest, CopiesAndMovesShareTheItems) {
    Item* item = Make("a");
    cache.Add("a", item);
    Cache copy(cache);
    Cache moved(std::move(copy));
    Cache assigned;
    assigned = moved;
    Item* found = nullptr;
    EXPECT_TRUE(assigned.Find("a", found));
    EXPECT_EQ(found, item);
}

TEST_F(CacheTest, GetAllReplacesTheListInKeyOrder) {
    for (const char* uid : {"c", "a", "b"}) {
        Item* item = Make(uid);
        cache.Add(uid, item);
    }
    Items all(2, nullptr);
    EXPECT_EQ(cache.GetAll(all), 3u);
    EXPECT_EQ(Uids(all), "a b c");
}

TEST_F(CacheTest, UpdateMovesAnItemToTheUidOfAHandle) {
    Item* item = Make("A:1");
    cache.Add("A:1", item);
    Item* moved = nullptr;
    EXPECT_TRUE(cache.Update("A:1", mock::NewHandle("A:2"), moved));
    EXPECT_EQ(moved, item);
    Item* found = nullptr;
    EXPECT_FALSE(cache.Find("A:1", found));
    EXPECT_TRUE(cache.Find("A:2", found));
    EXPECT_EQ(found, item);
}

TEST_F(CacheTest, UpdateOfAMissingKeyChangesNothing) {
    Item* item = nullptr;
    EXPECT_FALSE(cache.Update("A:1", mock::NewHandle("A:2"), item));
    EXPECT_EQ(item, nullptr);
    Items all;
    EXPECT_EQ(cache.GetAll(all), 0u);
}

TEST_F(CacheTest, UpdateToAnotherItemsStateCopiesWhatAllItemsShare) {
    Item* item = Make("a");
    cache.Add("a", item);
    MortalItem other("b", deaths);
    other.SetRenderState(RENDER_EXPANDED);
    other.UseAsChild(true);
    EXPECT_FALSE(cache.Update("x", item, "b", &other));
    EXPECT_TRUE(cache.Update("a", item, "b", &other));
    EXPECT_EQ(item->GetUID(), "b");
    EXPECT_EQ(item->GetRenderState(), RENDER_EXPANDED);
    EXPECT_TRUE(item->UsedAsChild());
    Item* found = nullptr;
    EXPECT_FALSE(cache.Find("a", found));
    EXPECT_TRUE(cache.Find("b", found));
    EXPECT_EQ(found, item);
}

}  // namespace
}  // namespace kxct::test
