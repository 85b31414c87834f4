#include <kxudm/UDMCdefMetaData.h>
#include <kxudm/UDMProfileUtils.h>

#include "Library.h"

namespace kxudm::test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class DefinitionsOfASession : public testing::Test {
  protected:
    Library library;
    ProfilePtr ann = library.Open("ann");
};

TEST_F(DefinitionsOfASession, AreListedAsRecordsInTheirOrder) {
    kxStlVector<UDMCdefMetaData> records;
    ann->GetContentDefinitionMetadata("Part", records);
    const auto named = [&](const kxString& name) {
        for (const UDMCdefMetaData& record : records) {
            if (record.Name() == name) {
                return record;
            }
        }
        throw UDMNotFoundException(name);
    };
    EXPECT_EQ(records.front().Name(), "name");
    const UDMCdefMetaData mass = named("mass");
    EXPECT_EQ(mass.DisplayName(), "Mass");
    EXPECT_EQ(mass.Description(), "In kilograms");
    EXPECT_EQ(mass.DefaultValue(), "1.5");
    EXPECT_EQ(mass.Type(), "Double");
    EXPECT_EQ(mass.Category(), "Physics");
    EXPECT_FALSE(mass.isSystem);
    EXPECT_TRUE(mass.isDisplayable);
    EXPECT_TRUE(mass.isEditable);
    EXPECT_THAT(named("material").ValidVal(), ElementsAre("steel", "aluminium"));
    const UDMCdefMetaData id = named("smd_id");
    EXPECT_TRUE(id.isSystem);
    EXPECT_FALSE(id.isDisplayable);
    EXPECT_FALSE(id.isEditable);
    const std::size_t count = records.size();
    ann->GetContentDefinitionMetadata("Note", records);
    EXPECT_GT(records.size(), count);
    EXPECT_THAT(Refusal<UDMNotFoundException>(
                    [&] { ann->GetContentDefinitionMetadata("Nothing", records); }),
                HasSubstr("Nothing"));
}

TEST_F(DefinitionsOfASession, AnswerThroughTheirUtilities) {
    const UDMProfileUtils utils = ann->GetProfileUtils();
    const UDMContentDefinitionHandle folder = utils.GetContentDefinitionHandle("Foldertype");
    kxString name;
    folder.DisplayName(name);
    EXPECT_EQ(name, "Folder");
    EXPECT_EQ(folder.GetType(), "Foldertype");
    kxStlVector<kxString> texts;
    folder.GetAttributeNames(texts);
    EXPECT_EQ(texts.front(), "name");
    kxStlVector<UDMAttributeDefinitionHandle> attributes;
    folder.GetAttributeDefinitions(attributes);
    EXPECT_EQ(attributes.size(), texts.size());

    const auto material = utils.GetAttributeDefinitionHandle("Part", "material");
    EXPECT_EQ(material.GetDataType(), "String");
    EXPECT_TRUE(material.IsDisplayable());
    EXPECT_FALSE(material.IsMandatory());
    EXPECT_TRUE(material.GetStaticValidValues(texts));
    EXPECT_THAT(texts, ElementsAre("steel", "aluminium"));
    EXPECT_FALSE(utils.GetAttributeDefinitionHandle("Part", "mass").GetStaticValidValues(texts));
    EXPECT_THAT(texts, IsEmpty());
    EXPECT_TRUE(utils.GetAttributeDefinitionHandle("Part", "name").IsMandatory());

    EXPECT_THAT(utils.GetRegisteredContentDefinitionNames(), Contains("Item"));
    EXPECT_EQ(utils.GetRegisteredContentDefinition().size(),
              utils.GetRegisteredContentDefinitionNames().size());
    EXPECT_EQ(utils.GetRegisteredContentDefinitionClassNames().count("UDMPart"), 1U);
    texts.clear();
    utils.GetGroupNames("Part", texts, "");
    EXPECT_THAT(texts, ElementsAre("drawings", "parts", "notes", "uses"));
    texts.clear();
    utils.GetGroupNames("Part", texts, "reference");
    EXPECT_THAT(texts, ElementsAre("uses"));
    texts.clear();
    utils.GetAllowedChildCdefNames("Part", texts, "uses");
    EXPECT_THAT(texts, ElementsAre("Part", "Drawing"));
}

TEST_F(DefinitionsOfASession, ThatAreUnknownAreErrorsThatNameThem) {
    const UDMProfileUtils utils = ann->GetProfileUtils();
    kxStlVector<kxString> texts;
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] { utils.GetContentDefinitionHandle("Nothing"); }),
                HasSubstr("Nothing"));
    EXPECT_THAT(Refusal<UDMNotFoundException>(
                    [&] { utils.GetAttributeDefinitionHandle("Part", "colour"); }),
                HasSubstr("colour"));
    EXPECT_THROW(utils.GetAllowedChildCdefNames("Part", texts, "wings"), UDMNotFoundException);
    EXPECT_THROW(utils.GetGroupNames("Nothing", texts, ""), UDMNotFoundException);
}

TEST_F(DefinitionsOfASession, OutliveItAsHandlesButAnswerNoFurtherQuestion) {
    const UDMProfileUtils utils = ann->GetProfileUtils();
    const auto part = utils.GetContentDefinitionHandle("Part");
    ProfilePtr closing = ann;
    UDMProfileMgr::DiscardProfile(closing);
    EXPECT_EQ(part.GetType(), "Part");
    EXPECT_THAT(Refusal([&] { utils.GetContentDefinitionHandle("Part"); }), HasSubstr("closed"));
    EXPECT_THROW(ann->GetProfileUtils(), UDMException);
}

TEST_F(DefinitionsOfASession, AndTheSessionItselfAreDumped) {
    const UDMItemHandle note = ann->CreateEntity("Note", "Note");
    testing::internal::CaptureStdout();
    ann->DumpSession();
    const std::string dump = testing::internal::GetCapturedStdout();
    EXPECT_THAT(dump, HasSubstr(ann->GetSessionId()));
    EXPECT_THAT(dump, HasSubstr("Lib"));
    EXPECT_THAT(dump, HasSubstr("ann"));
    EXPECT_THAT(dump, Not(HasSubstr("s3cret!")));
}

}  // namespace
}  // namespace kxudm::test
