#include <gtest/gtest.h>
#include <kxinterp/kxPointerRegistry.h>
#include <kxutl/kxString.h>

#include <thread>
#include <vector>

namespace {

// Objects for one test, forgotten at its end.
class kxPointerRegistryTest : public testing::Test {
  protected:
    ~kxPointerRegistryTest() override {
        for (const int& object : _objects) {
            kxPointerRegistry::Forget(&object);
        }
    }
    bool Find(const kxString& text) {
        _pointer = this;
        _type = "unset";
        return kxPointerRegistry::FromText(text, _pointer, _type);
    }

    int _objects[2] = {};
    void* _pointer = nullptr;
    kxString _type;
};

TEST_F(kxPointerRegistryTest, LeadsFromTheTextBackToPointerAndType) {
    const kxString text = kxPointerRegistry::ToText(&_objects[0], "kxct::Item");
    EXPECT_TRUE(text.starts_with("kxptr:kxct::Item:"));
    ASSERT_TRUE(Find(text));
    EXPECT_EQ(_pointer, &_objects[0]);
    EXPECT_EQ(_type, "kxct::Item");
}

TEST_F(kxPointerRegistryTest, GivesTheSameTextAgainAndAnotherOneForAnotherTypeOrObject) {
    const kxString text = kxPointerRegistry::ToText(&_objects[0], "A");
    EXPECT_EQ(kxPointerRegistry::ToText(&_objects[0], "A"), text);
    EXPECT_NE(kxPointerRegistry::ToText(&_objects[0], "B"), text);
    EXPECT_NE(kxPointerRegistry::ToText(&_objects[1], "A"), text);
}

TEST_F(kxPointerRegistryTest, AForgottenObjectIsUnknownEvenIfALaterOneTakesItsPlace) {
    const kxString old = kxPointerRegistry::ToText(&_objects[0], "A");
    const kxString otherType = kxPointerRegistry::ToText(&_objects[0], "B");
    kxPointerRegistry::Forget(&_objects[0]);
    EXPECT_FALSE(Find(old));
    EXPECT_FALSE(Find(otherType));
    EXPECT_EQ(_pointer, this);
    EXPECT_EQ(_type, "unset");
    const kxString next = kxPointerRegistry::ToText(&_objects[0], "A");
    EXPECT_NE(next, old);
    EXPECT_FALSE(Find(old));
    EXPECT_TRUE(Find(next));
}

TEST_F(kxPointerRegistryTest, ForgettingWhatWasNeverHandedOutDoesNothing) {
    const kxString text = kxPointerRegistry::ToText(&_objects[0], "A");
    kxPointerRegistry::Forget(&_objects[1]);
    kxPointerRegistry::Forget(nullptr);
    EXPECT_TRUE(Find(text));
}

TEST_F(kxPointerRegistryTest, NullHasANumberOfItsOwn) {
    EXPECT_EQ(kxPointerRegistry::ToText(nullptr, "kxct::Item"), "kxptr:kxct::Item:0");
    ASSERT_TRUE(Find("kxptr:kxct::Item:0"));
    EXPECT_EQ(_pointer, nullptr);
    EXPECT_EQ(_type, "kxct::Item");
}

TEST_F(kxPointerRegistryTest, KnowsOnlyTheExactText) {
    const kxString text = kxPointerRegistry::ToText(&_objects[0], "A");
    const kxString number = text.substr(8);
    for (const kxString& wrong : {kxString("x" + text),
                                  kxString(text + " "),
                                  kxString(text + kxString("\0", 1)),
                                  kxString("kxptr:B:" + number),
                                  kxString("kxptr:A:0" + number),
                                  kxString("kxptr:A:+" + number),
                                  kxString("kxptr:A:0x" + number),
                                  kxString("KXPTR:A:" + number),
                                  kxString("kxptr:A:"),
                                  kxString("kxptr:A"),
                                  kxString("kxptr:"),
                                  kxString("kxptr"),
                                  kxString("kxptr:A:00"),
                                  kxString("kxptr:A:ffffffffffffffffff"),
                                  kxString("")}) {
        EXPECT_FALSE(Find(wrong)) << wrong;
    }
    EXPECT_TRUE(Find(text));
}

TEST_F(kxPointerRegistryTest, TakesTypesOfAnyText) {
    for (const kxString& type : {kxString(""), kxString("a:b c:1"), kxString("a\0b", 3)}) {
        const kxString text = kxPointerRegistry::ToText(&_objects[0], type);
        ASSERT_TRUE(Find(text));
        EXPECT_EQ(_type, type);
    }
}

TEST(kxPointerRegistry, ServesSeveralThreads) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([] {
            std::vector<int> objects(500);
            for (int& object : objects) {
                const kxString text = kxPointerRegistry::ToText(&object, "T");
                void* pointer = nullptr;
                kxString type;
                EXPECT_TRUE(kxPointerRegistry::FromText(text, pointer, type));
                EXPECT_EQ(pointer, &object);
                kxPointerRegistry::Forget(&object);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

}  // namespace
