#include <gtest/gtest.h>
#include <kxudm/AddFileBuilder.h>
#include <kxudm/ClassificationReader.h>
#include <kxudm/GetEnvironmentVar.h>
#include <kxudm/UDMCdefMetaData.h>
#include <kxudm/UDMQuerySettings.h>
#include <kxudm/UDMRelationHandle.h>
#include <kxudm/UDMUID.h>
#include <kxudm/UDMVocabulary.h>
#include <kxudm/spi/ItemState.h>

#include <boost/smart_ptr/make_shared.hpp>
#include <cstdlib>

using namespace kxudm;

namespace {

class PlainState : public spi::ItemState {
  public:
    explicit PlainState(std::optional<bool> master) : _master(master) {}
    const kxString& Uid() const override { return _uid; }
    kxString Cdef() const override { return "Categories"; }
    kxString DisplayName() const override { return "Steel"; }
    int Revision() const override { return 2; }
    kxVariant AttributeValue(const kxString& name) const override { return kxVariant(name); }
    kxStlVector<kxString> AttributeNames(bool omitSystem) const override {
        return omitSystem ? kxStlVector<kxString>{"a"} : kxStlVector<kxString>{"a", "smd_b"};
    }
    std::optional<bool> IsMasterClassification() const override { return _master; }

  private:
    kxString _uid = "U:2";
    std::optional<bool> _master;
};

UDMItemHandle HandleOf(std::optional<bool> master) {
    return UDMItemHandle(boost::make_shared<PlainState>(master));
}

}  // namespace

TEST(UDMUID, ATextWithARevisionHasTheBaseBeforeTheColon) {
    const UDMUID uid("ABC:12");
    EXPECT_EQ(uid.GetDmUid(), "ABC");
    EXPECT_EQ(kxString(uid), "ABC:12");
}

TEST(UDMUID, ATextWithoutARevisionIsItsOwnBase) {
    EXPECT_EQ(UDMUID("ABC").GetDmUid(), "ABC");
}

TEST(UDMUID, NothingAndALeadingColonHaveAnEmptyBase) {
    EXPECT_EQ(UDMUID().GetDmUid(), "");
    EXPECT_EQ(UDMUID(":3").GetDmUid(), "");
}

TEST(UDMUID, OrderIsByTheWholeText) {
    EXPECT_LT(UDMUID("A"), UDMUID("A:1"));
    EXPECT_LT(UDMUID("A:1"), UDMUID("B"));
    EXPECT_EQ(UDMUID("A:1"), UDMUID("A:1"));
    EXPECT_FALSE(UDMUID("A:1") == UDMUID("A"));
}

TEST(UDMItemHandle, AnEmptyHandleAnswersEmptyTextsAndFalse) {
    const UDMItemHandle empty;
    EXPECT_TRUE(empty.IsEmpty());
    EXPECT_EQ(empty.GetUID(), "");
    EXPECT_EQ(empty.GetCdef(), "");
    EXPECT_EQ(empty.GetDisplayName(), "");
    EXPECT_EQ(empty.ToString(), "empty handle");
    EXPECT_FALSE(empty.IsEditable());
    EXPECT_FALSE(empty.hasparent());
    EXPECT_FALSE(empty.IsRootEntity());
}

TEST(UDMItemHandle, AnEmptyHandleThrowsForValuesThatItCanNotHave) {
    const UDMItemHandle empty;
    EXPECT_THROW(empty.GetRevision(), UDMException);
    EXPECT_THROW(empty.GetAttributeValue("name"), UDMException);
    EXPECT_THROW(empty.GetFilteredAttributeNameList(true), UDMException);
    EXPECT_THROW(empty.GetCreationTime(), UDMException);
    EXPECT_THROW(empty.GetModifiedTime(), UDMException);
    EXPECT_THROW(empty.GetCreatedBy(), UDMException);
    EXPECT_THROW(empty.GetModifiedBy(), UDMException);
}

TEST(UDMItemHandle, CopiesShareOneState) {
    const UDMItemHandle handle = HandleOf(true);
    const UDMItemHandle copy = handle;  // NOLINT(performance-unnecessary-copy-initialization)
    EXPECT_EQ(copy.State(), handle.State());
    EXPECT_EQ(copy.GetUID(), "U:2");
    EXPECT_EQ(copy.ToString(), "Categories U:2");
}

TEST(ClassificationReader, ReadsWhetherAClassificationIsAMasterOne) {
    EXPECT_TRUE((HandleOf(true).GetReader<ClassificationReader, UDMItemHandle>().IsMaster()));
    EXPECT_FALSE((HandleOf(false).GetReader<ClassificationReader, UDMItemHandle>().IsMaster()));
}

TEST(ClassificationReader, AnythingElseIsRefusedWithTheHandleNamed) {
    try {
        HandleOf(std::nullopt).GetReader<ClassificationReader, UDMItemHandle>();
        FAIL() << "no exception";
    } catch (const UDMInvalidArgException& failure) {
        EXPECT_STREQ(failure.what(),
                     "UnSupported reader ClassificationReader for given handle Categories U:2");
        EXPECT_EQ(failure.Signature(),
                  "class kxudm::ClassificationReader __cdecl kxudm::UDMHandle::GetReader<class "
                  "kxudm::ClassificationReader,class kxudm::UDMItemHandle>(void)");
        EXPECT_EQ(static_cast<int>(failure.SubCategory()), 1100);
    }
}

TEST(ClassificationReader, AHandleOfAnotherTypeIsABadCast) {
    const UDMRelationHandle relation;
    EXPECT_THROW((relation.GetReader<ClassificationReader, UDMItemHandle>()), std::bad_cast);
}

TEST(UDMCdefMetaData, FlagsKeepTheirMeaningThoughTheirOrderDiffers) {
    const UDMCdefMetaData record("n", "N", "d", "1", "Integer", "c", true, false, true, {"1"});
    EXPECT_TRUE(record.isSystem);
    EXPECT_FALSE(record.isDisplayable);
    EXPECT_TRUE(record.isEditable);
    EXPECT_EQ(record.Name() + record.DisplayName() + record.Description() + record.DefaultValue() +
                  record.Type() + record.Category(),
              "nNd1Integerc");
    EXPECT_EQ(record.ValidVal(), kxStlVector<kxString>{"1"});
}

TEST(AddFileBuilder, GoHandsOverWhatWasSet) {
    kxString path;
    bool external = false;
    AddFileBuilder builder([&](const kxString& p, bool e) {
        path = p;
        external = e;
    });
    builder.setFilePath("/a/b.inp").setIsExternal(true).go();
    EXPECT_EQ(path, "/a/b.inp");
    EXPECT_TRUE(external);
}

TEST(UDMQuerySettingHandle, CopiesShareTheirSettings) {
    UDMQuerySettingHandle settings;
    const UDMQuerySettingHandle copy = settings;
    settings.GetSettings().SearchInExcluded(true);
    settings.GetSettings().SetIgnoreCase(false);
    EXPECT_TRUE(copy.GetSettings().SearchesInExcluded());
    EXPECT_FALSE(copy.GetSettings().IgnoresCase());
}

TEST(GetEnvironmentVar, ADefinedVariableFillsTheValueAlsoWhenItIsEmpty) {
    setenv("KXUDM_TEST_VARIABLE", "x", 1);
    kxString value = "before";
    EXPECT_TRUE(GetEnvironmentVar(value, "KXUDM_TEST_VARIABLE"));
    EXPECT_EQ(value, "x");
    setenv("KXUDM_TEST_VARIABLE", "", 1);
    EXPECT_TRUE(GetEnvironmentVar(value, "KXUDM_TEST_VARIABLE"));
    EXPECT_EQ(value, "");
}

TEST(GetEnvironmentVar, AnUndefinedVariableLeavesTheValue) {
    unsetenv("KXUDM_TEST_VARIABLE");
    kxString value = "before";
    EXPECT_FALSE(GetEnvironmentVar(value, "KXUDM_TEST_VARIABLE"));
    EXPECT_EQ(value, "before");
}

TEST(Vocabulary, WordsHaveTheirFixedValues) {
    EXPECT_STREQ(vocabulary::attribute::SMD_CONTENTREVISION, "smd_contentrevision");
    EXPECT_STREQ(vocabulary::NOT_RETRIEVED, "(Not retrieved)");
    EXPECT_STREQ(vocabulary::FORBIDDEN_CHARACTERS, "[]/\\&~?*|<>\";:+");
}
