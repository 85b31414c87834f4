#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/SettingsImpl.h>
#include <signal.h>
#include <sys/resource.h>

#include <array>
#include <cstring>
#include <memory>

#include "ChildProcess.h"
#include "TemporaryFolder.h"

namespace kxct::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

constexpr const char* tree =
    "<kxct:Settings version='1'>"
    "<Key name='a' value='1'><Key name='b' value='2'><Key name='c' value='3'/></Key>"
    "<Key name='empty' value=''/><Key name='none'/><Lookup value='x'/><Lookup value='y'/>"
    "<Lookup/></Key>"
    "<Key name='twice' value='first'/><Key name='twice' value='second'><Key name='sub'/></Key>"
    "<Key name='A' value='upper'/></kxct:Settings>";

class SettingsImplTest : public ::testing::Test {
  protected:
    // The value of a key, or "(none)" where Get says false.
    static std::string Value(SettingsImpl& settings, const kxString& key) {
        kxVariant value(7);
        const bool found = settings.Get(key, value);
        EXPECT_EQ(value.GetKind(), kxVariant::STRING) << key;
        EXPECT_TRUE(found || value.GetString().empty()) << key;
        return found ? value.GetString() : "(none)";
    }
    std::string Value(const kxString& key) { return Value(_settings, key); }

    static kxStlVector<kxString> Keys(SettingsImpl& settings, const kxString& key) {
        kxStlVector<kxString> keys;
        EXPECT_TRUE(settings.GetKeys(key, keys)) << key;
        return keys;
    }
    kxStlVector<kxString> Keys(const kxString& key) { return Keys(_settings, key); }

    TemporaryFolder _folder;
    SettingsImpl _settings{_folder.File("settings.xml", tree)};
};

TEST_F(SettingsImplTest, GetWalksTheNamesOfAPath) {
    EXPECT_EQ(Value("a"), "1");
    EXPECT_EQ(Value("a/b"), "2");
    EXPECT_EQ(Value("a/b/c"), "3");
}

TEST_F(SettingsImplTest, SeparatorsAtTheEndsOrDoubledDoNotMatter) {
    for (const char* path : {"/a/b", "a/b/", "a//b", "///a///b///"}) {
        EXPECT_EQ(Value(path), "2") << path;
    }
}

TEST_F(SettingsImplTest, GetOfAMissingKeyEmptiesTheValueAndAnswersFalse) {
    for (const char* path : {"x", "a/x", "a/b/c/d", "b", "a b", "a\\b"}) {
        EXPECT_EQ(Value(path), "(none)") << path;
    }
}

TEST_F(SettingsImplTest, GetOfNoKeyAtAllAnswersFalse) {
    EXPECT_EQ(Value(""), "(none)");
    EXPECT_EQ(Value("/"), "(none)");
    EXPECT_EQ(Value("///"), "(none)");
}

TEST_F(SettingsImplTest, AKeyWithoutValueAnswersFalseAndOneWithAnEmptyValueTrue) {
    EXPECT_EQ(Value("a/none"), "(none)");
    EXPECT_EQ(Value("a/empty"), "");
}

TEST_F(SettingsImplTest, OfEqualNamesTheFirstWins) {
    EXPECT_EQ(Value("twice"), "first");
    EXPECT_EQ(Value("twice/sub"), "(none)");
}

TEST_F(SettingsImplTest, NamesAreCaseSensitive) {
    EXPECT_EQ(Value("A"), "upper");
    EXPECT_EQ(Value("TWICE"), "(none)");
}

TEST_F(SettingsImplTest, GetKeysListsNamesInDocumentOrder) {
    EXPECT_THAT(Keys(""), ElementsAre("a", "twice", "twice", "A"));
    EXPECT_THAT(Keys("a"), ElementsAre("b", "empty", "none"));
    EXPECT_THAT(Keys("/a//b/"), ElementsAre("c"));
}

TEST_F(SettingsImplTest, GetKeysOfAKeyWithoutChildrenIsTrueAndEmpty) {
    EXPECT_THAT(Keys("a/b/c"), IsEmpty());
}

TEST_F(SettingsImplTest, GetKeysOfAMissingKeyOrOfSeparatorsOnlyIsFalseAndEmptiesTheList) {
    for (const char* path : {"x", "a/x", "/", "//"}) {
        kxStlVector<kxString> keys{"old"};
        EXPECT_FALSE(_settings.GetKeys(path, keys)) << path;
        EXPECT_THAT(keys, IsEmpty());
    }
}

TEST_F(SettingsImplTest, GetKeysReplacesWhatTheListHeld) {
    kxStlVector<kxString> keys{"old"};
    EXPECT_TRUE(_settings.GetKeys("a/b", keys));
    EXPECT_THAT(keys, ElementsAre("c"));
}

TEST_F(SettingsImplTest, GetLookupsListsValuesInDocumentOrder) {
    kxStlVector<kxString> lookups{"old"};
    EXPECT_TRUE(_settings.GetLookups("a", lookups));
    EXPECT_THAT(lookups, ElementsAre("x", "y", ""));
    EXPECT_TRUE(_settings.GetLookups("a/b", lookups));
    EXPECT_THAT(lookups, IsEmpty());
}

TEST_F(SettingsImplTest, GetLookupsOfTheEmptyPathOrAMissingKeyIsFalseAndEmptiesTheList) {
    for (const char* path : {"", "/", "x", "a/x"}) {
        kxStlVector<kxString> lookups{"old"};
        EXPECT_FALSE(_settings.GetLookups(path, lookups)) << path;
        EXPECT_THAT(lookups, IsEmpty());
    }
}

TEST_F(SettingsImplTest, SetChangesAValue) {
    EXPECT_TRUE(_settings.Set("/a//b/", kxVariant("new")));
    EXPECT_EQ(Value("a/b"), "new");
    EXPECT_EQ(Value("a/b/c"), "3");
}

TEST_F(SettingsImplTest, SetGivesAValueToAKeyWithoutOne) {
    EXPECT_TRUE(_settings.Set("a/none", kxVariant("")));
    EXPECT_EQ(Value("a/none"), "");
}

TEST_F(SettingsImplTest, SetTakesTheTextOfAnyKindOfVariant) {
    EXPECT_TRUE(_settings.Set("a", kxVariant(12)));
    EXPECT_EQ(Value("a"), "12");
    EXPECT_TRUE(_settings.Set("a", kxVariant(true)));
    EXPECT_EQ(Value("a"), kxVariant(true).GetString());
    EXPECT_TRUE(_settings.Set("a", kxVariant()));
    EXPECT_EQ(Value("a"), "");
}

TEST_F(SettingsImplTest, SetOnANewTopLevelNameIsFalseAndChangesNothing) {
    EXPECT_FALSE(_settings.Set("new", kxVariant("v")));
    EXPECT_FALSE(_settings.Set("new/a", kxVariant("v")));
    EXPECT_THAT(Keys(""), ElementsAre("a", "twice", "twice", "A"));
    EXPECT_EQ(Value("a"), "1");
}

TEST_F(SettingsImplTest, SetOnNoKeyIsFalse) {
    EXPECT_FALSE(_settings.Set("", kxVariant("v")));
    EXPECT_FALSE(_settings.Set("//", kxVariant("v")));
}

TEST_F(SettingsImplTest, SetWithOneMissingLevelMakesTheKey) {
    EXPECT_TRUE(_settings.Set("a/b/new", kxVariant("v")));
    EXPECT_EQ(Value("a/b/new"), "v");
    EXPECT_THAT(Keys("a/b"), ElementsAre("c", "new"));
}

TEST_F(SettingsImplTest, SetWithTwoMissingLevelsMakesSiblings) {
    EXPECT_TRUE(_settings.Set("A/one/two", kxVariant("v")));
    EXPECT_EQ(Value("A/one/two"), "(none)");
    EXPECT_EQ(Value("A/one"), "(none)");
    EXPECT_EQ(Value("A/two"), "v");
    EXPECT_THAT(Keys("A"), ElementsAre("one", "two"));
    EXPECT_THAT(Keys("A/one"), IsEmpty());
}

TEST_F(SettingsImplTest, SetWithThreeMissingLevelsMakesThreeSiblings) {
    EXPECT_TRUE(_settings.Set("A/one/two/three", kxVariant("v")));
    EXPECT_THAT(Keys("A"), ElementsAre("one", "two", "three"));
    EXPECT_EQ(Value("A/three"), "v");
}

TEST_F(SettingsImplTest, SetChangesMemoryOnly) {
    const std::string before = Content(_folder / "settings.xml");
    EXPECT_TRUE(_settings.Set("a", kxVariant("new")));
    EXPECT_EQ(Content(_folder / "settings.xml"), before);
}

TEST_F(SettingsImplTest, WriteStoresTheWholeDocument) {
    ASSERT_TRUE(_settings.Set("a/b", kxVariant("Grüße <&\"> 日本")));
    ASSERT_TRUE(_settings.Write(_folder / "copy.xml"));
    EXPECT_THAT(Content(_folder / "copy.xml"), HasSubstr("<kxct:Settings"));
    SettingsImpl copy(_folder / "copy.xml");
    EXPECT_EQ(Value(copy, "a/b"), "Grüße <&\"> 日本");
    EXPECT_EQ(Value(copy, "a/b/c"), "3");
    EXPECT_EQ(Value(copy, "a/none"), "(none)");
    EXPECT_EQ(Value(copy, "a/empty"), "");
    EXPECT_THAT(Keys(copy, ""), ElementsAre("a", "twice", "twice", "A"));
    kxStlVector<kxString> lookups;
    EXPECT_TRUE(copy.GetLookups("a", lookups));
    EXPECT_THAT(lookups, ElementsAre("x", "y", ""));
}

TEST_F(SettingsImplTest, WriteReplacesTheFileThatWasRead) {
    ASSERT_TRUE(_settings.Set("a", kxVariant("new")));
    ASSERT_TRUE(_settings.Write(_folder / "settings.xml"));
    SettingsImpl again(_folder / "settings.xml");
    EXPECT_EQ(Value(again, "a"), "new");
    ASSERT_TRUE(_settings.Write(_folder / "settings.xml"));
    EXPECT_EQ(_folder.Entries(), 1U);
}

TEST_F(SettingsImplTest, WriteWhereNothingCanBeWrittenIsFalse) {
    EXPECT_FALSE(_settings.Write(_folder / "settings.xml" + "/below"));
    EXPECT_FALSE(_settings.Write(_folder / "missing/file.xml"));
    EXPECT_FALSE(_settings.Write(_folder.Path()));
    EXPECT_FALSE(_settings.Write(""));
}

TEST_F(SettingsImplTest, WriteToAFullDeviceIsFalseAlthoughTheDocumentIsSmall) {
    EXPECT_FALSE(_settings.Write("/dev/full"));
    EXPECT_TRUE(_settings.Write(_folder / "later.xml"));
}

TEST_F(SettingsImplTest, AFailedWriteLeavesTheFileAsItWas) {
    const std::string path = _folder / "settings.xml";
    EXPECT_TRUE(InChild([&] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{200, 200};
        return setrlimit(RLIMIT_FSIZE, &limit) == 0 && !_settings.Write(path);
    }));
    EXPECT_EQ(Content(path), tree);
    EXPECT_EQ(_folder.Entries(), 1U);
}

TEST_F(SettingsImplTest, AMissingFileIsAnEmptyDocument) {
    SettingsImpl settings(_folder / "missing.xml");
    EXPECT_THAT(Keys(settings, ""), IsEmpty());
    EXPECT_EQ(Value(settings, "a"), "(none)");
    EXPECT_FALSE(settings.Set("a", kxVariant("v")));
    EXPECT_TRUE(settings.Write(_folder / "empty.xml"));
    EXPECT_THAT(Content(_folder / "empty.xml"), HasSubstr("<kxct:Settings"));
}

TEST_F(SettingsImplTest, AFolderInPlaceOfTheFileIsAnEmptyDocument) {
    SettingsImpl settings(_folder.Path());
    EXPECT_THAT(Keys(settings, ""), IsEmpty());
}

TEST_F(SettingsImplTest, AMalformedFileKeepsWhatStoodBeforeTheDamage) {
    SettingsImpl settings(
        _folder.File("bad.xml", "<S><Key name='a' value='1'/><Key name='b'></Wrong></S>"));
    EXPECT_EQ(Value(settings, "a"), "1");
}

TEST_F(SettingsImplTest, AFileOfAnotherKindIsReadWithoutComplaint) {
    SettingsImpl settings(
        _folder.File("pa.xml", "<kxct:PASettings><ContentDefinition name='d'/></kxct:PASettings>"));
    EXPECT_THAT(Keys(settings, ""), IsEmpty());
}

TEST_F(SettingsImplTest, NilElementsAreSkippedInEveryWalk) {
    SettingsImpl settings(
        _folder.File("nil.xml",
                     "<S xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'>"
                     "<Key xsi:nil='true'/><Key name='a' value='1'><Key xsi:nil='true'/>"
                     "<Key name='b' value='2'/><Lookup xsi:nil='true'/><Lookup value='l'/></Key>"
                     "</S>"));
    EXPECT_THAT(Keys(settings, ""), ElementsAre("a"));
    EXPECT_THAT(Keys(settings, "a"), ElementsAre("b"));
    EXPECT_EQ(Value(settings, "a/b"), "2");
    EXPECT_TRUE(settings.Set("a/c", kxVariant("3")));
    EXPECT_EQ(Value(settings, "a/c"), "3");
    kxStlVector<kxString> lookups;
    EXPECT_TRUE(settings.GetLookups("a", lookups));
    EXPECT_THAT(lookups, ElementsAre("l"));
    EXPECT_TRUE(settings.Write(_folder / "out.xml"));
}

TEST_F(SettingsImplTest, TextInsideAKeyIsNotWritten) {
    SettingsImpl settings(_folder.File("text.xml", "<S><Key name='a' value='1'>lost</Key></S>"));
    ASSERT_TRUE(settings.Write(_folder / "text.xml"));
    EXPECT_THAT(Content(_folder / "text.xml"), ::testing::Not(HasSubstr("lost")));
}

TEST_F(SettingsImplTest, AKeyWithoutNameIsNeverFound) {
    SettingsImpl settings(_folder.File("noname.xml", "<S><Key value='v'/></S>"));
    EXPECT_THAT(Keys(settings, ""), ElementsAre(""));
    EXPECT_EQ(Value(settings, ""), "(none)");
    EXPECT_EQ(Value(settings, "/"), "(none)");
}

TEST_F(SettingsImplTest, CopiesShareOneDocument) {
    // Only one of the copies may be destroyed: the other one stays until the process ends.
    static const auto* const abandoned = new SettingsImpl(_settings);
    auto& copy = const_cast<SettingsImpl&>(*abandoned);
    EXPECT_TRUE(copy.Set("a", kxVariant("shared")));
    EXPECT_EQ(Value("a"), "shared");
}

TEST_F(SettingsImplTest, AssignmentSharesTheDocumentOfTheOther) {
    static auto* const assigned = new SettingsImpl(_folder / "missing.xml");
    // Keeps the context that the assignment abandons reachable for leak checkers.
    static std::array<void*, sizeof(SettingsImpl) / sizeof(void*)> before;
    std::memcpy(before.data(), static_cast<const void*>(assigned), sizeof(SettingsImpl));
    ASSERT_NE(before.front(), nullptr);
    *assigned = _settings;
    EXPECT_TRUE(assigned->Set("a", kxVariant("shared")));
    EXPECT_EQ(Value("a"), "shared");
}

TEST_F(SettingsImplTest, TenThousandKeysMakeTheRoundTrip) {
    std::string text = "<S><Key name='top'>";
    for (int number = 0; number < 10000; ++number) {
        text += "<Key name='" + std::to_string(number) + "' value='v'/>";
    }
    SettingsImpl settings(_folder.File("large.xml", text + "</Key></S>"));
    ASSERT_TRUE(settings.Write(_folder / "large.xml"));
    SettingsImpl again(_folder / "large.xml");
    EXPECT_EQ(Keys(again, "top").size(), 10000U);
    EXPECT_EQ(Value(again, "top/9999"), "v");
}

}  // namespace
}  // namespace kxct::test
