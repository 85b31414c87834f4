#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/PASettings.h>

#include "tests/settings/TemporaryFolder.h"

namespace kxct::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr char DOCUMENT[] = R"(<?xml version="1.0" encoding="UTF-8"?>
<kxct:PASettings xmlns:kxct="http://kxct/KXCTSETTINGS_v1" version="1">
  <ContentDefinition name="Deck">
    <Metadata name="mass" displayname="Mass &amp; more" description="In tons" category="Physics"
              common="1" iseditable="true" ishidden="false"/>
    <Metadata name="state" displayname="Status"/>
    <Metadata name="state" displayname="Second"/>
    <Metadata name="empty" displayname="" description="" common="0"/>
  </ContentDefinition>
  <ContentDefinition name="Empty"/>
  <ContentDefinition name="Deck">
    <Metadata name="other" displayname="Of the second"/>
  </ContentDefinition>
</kxct:PASettings>
)";

class PASettingsTest : public testing::Test {
  protected:
    kxVariant Get(const kxString& metadata, const kxString& word) const {
        return settings.GetMetadataAttribute("Deck", metadata, word);
    }

    TemporaryFolder folder;
    PASettings settings{folder.File("pa.xml", DOCUMENT)};
};

void ExpectEmpty(const PASettings& settings) {
    EXPECT_THAT(settings.GetContentDefinitions(), IsEmpty());
    EXPECT_THAT(settings.GetMetadataNames("Deck"), IsEmpty());
    EXPECT_TRUE(settings.GetMetadataAttribute("Deck", "mass", "name").IsEmpty());
}

TEST_F(PASettingsTest, TheDefaultConstructorGivesEmptyAnswersToEverything) {
    const PASettings none;
    EXPECT_EQ(none.GetSettingsFile(), "");
    ExpectEmpty(none);
}

TEST_F(PASettingsTest, AMissingFileKeepsItsPathAndIsEmpty) {
    const PASettings missing(folder / "missing.xml");
    EXPECT_EQ(missing.GetSettingsFile(), folder / "missing.xml");
    ExpectEmpty(missing);
}

TEST_F(PASettingsTest, AFolderInThePlaceOfTheFileIsAnEmptyDocument) {
    const PASettings unreadable(folder.Path());
    EXPECT_EQ(unreadable.GetSettingsFile(), folder.Path());
    ExpectEmpty(unreadable);
}

TEST_F(PASettingsTest, AMalformedFileIsAnEmptyDocument) {
    for (const char* text : {"", "no markup", "<kxct:PASettings", "<a></b>"}) {
        const PASettings malformed(folder.File("bad.xml", text));
        EXPECT_EQ(malformed.GetSettingsFile(), folder / "bad.xml");
        ExpectEmpty(malformed);
    }
}

TEST_F(PASettingsTest, AnEmptyPathIsAnEmptyDocument) {
    const PASettings nowhere("");
    EXPECT_EQ(nowhere.GetSettingsFile(), "");
    ExpectEmpty(nowhere);
}

TEST_F(PASettingsTest, ThePathIsAsItWasGiven) {
    const kxString path = folder.Path() + "/./pa.xml";
    EXPECT_EQ(PASettings(path).GetSettingsFile(), path);
    EXPECT_EQ(PASettings(path).GetContentDefinitions().size(), 3U);
}

TEST_F(PASettingsTest, DefinitionsComeInTheOrderOfTheDocument) {
    EXPECT_THAT(settings.GetContentDefinitions(), ElementsAre("Deck", "Empty", "Deck"));
}

TEST_F(PASettingsTest, MetadataNamesComeInTheOrderOfTheDocument) {
    EXPECT_THAT(settings.GetMetadataNames("Deck"), ElementsAre("mass", "state", "state", "empty"));
    EXPECT_THAT(settings.GetMetadataNames("Empty"), IsEmpty());
}

TEST_F(PASettingsTest, OfTwoDefinitionsOfOneNameTheFirstWins) {
    EXPECT_THAT(settings.GetMetadataNames("Deck"), testing::Not(testing::Contains("other")));
    EXPECT_TRUE(Get("other", "displayname").IsEmpty());
}

TEST_F(PASettingsTest, OfTwoAttributesOfOneNameTheFirstWins) {
    EXPECT_EQ(Get("state", "displayname"), kxVariant("Status"));
}

TEST_F(PASettingsTest, DefinitionsAreFoundByExactName) {
    for (const char* name : {"deck", "Deck ", "Dec", ""}) {
        EXPECT_THAT(settings.GetMetadataNames(name), IsEmpty()) << name;
        EXPECT_TRUE(settings.GetMetadataAttribute(name, "mass", "name").IsEmpty()) << name;
    }
}

TEST_F(PASettingsTest, EachWordSelectsItsField) {
    EXPECT_EQ(Get("mass", "name"), kxVariant("mass"));
    EXPECT_EQ(Get("mass", "displayname"), kxVariant("Mass & more"));
    EXPECT_EQ(Get("mass", "description"), kxVariant("In tons"));
    EXPECT_EQ(Get("mass", "category"), kxVariant("Physics"));
    EXPECT_EQ(Get("mass", "common"), kxVariant(true));
    EXPECT_EQ(Get("mass", "iseditable"), kxVariant(true));
    EXPECT_EQ(Get("mass", "ishidden"), kxVariant(false));
}

TEST_F(PASettingsTest, OptionalFieldsThatAreMissingAreEmpty) {
    for (const char* word : {"description", "category", "common", "iseditable", "ishidden"}) {
        EXPECT_TRUE(Get("state", word).IsEmpty()) << word;
    }
}

TEST_F(PASettingsTest, AFalseIsNoMissingField) {
    const kxVariant common = Get("empty", "common");
    EXPECT_EQ(common.GetKind(), kxVariant::BOOLEAN);
    EXPECT_FALSE(common.GetBoolean());
}

TEST_F(PASettingsTest, AnEmptyTextIsNoMissingField) {
    EXPECT_EQ(Get("empty", "description"), kxVariant(""));
    EXPECT_EQ(Get("empty", "displayname").GetKind(), kxVariant::STRING);
}

TEST_F(PASettingsTest, WordsAreComparedExactly) {
    for (const char* word : {"Name", "NAME", "name ", "isEditable", "", "version"}) {
        EXPECT_TRUE(Get("mass", word).IsEmpty()) << word;
    }
}

TEST_F(PASettingsTest, AnUnknownAttributeIsEmpty) {
    EXPECT_TRUE(Get("Mass", "name").IsEmpty());
}

TEST_F(PASettingsTest, TheImplementationTakesThePositionOfTheWord) {
    const PASettingsImpl impl(folder / "pa.xml");
    EXPECT_THAT(impl.GetContentDefinitions(), ElementsAre("Deck", "Empty", "Deck"));
    EXPECT_EQ(impl.GetMetadataAttribute("Deck", "mass", METADATA_CATEGORY), kxVariant("Physics"));
    EXPECT_TRUE(impl.GetMetadataAttribute("Deck", "mass", METADATA_NONE).IsEmpty());
    EXPECT_TRUE(
        impl.GetMetadataAttribute("Deck", "mass", static_cast<MetadataAttribute>(8)).IsEmpty());
}

TEST_F(PASettingsTest, TheNumbersOfTheFieldsAreFixed) {
    EXPECT_EQ(METADATA_NAME, 0);
    EXPECT_EQ(METADATA_DISPLAYNAME, 1);
    EXPECT_EQ(METADATA_DESCRIPTION, 2);
    EXPECT_EQ(METADATA_CATEGORY, 3);
    EXPECT_EQ(METADATA_COMMON, 4);
    EXPECT_EQ(METADATA_ISEDITABLE, 5);
    EXPECT_EQ(METADATA_ISHIDDEN, 6);
}

TEST_F(PASettingsTest, ReadingNeverWrites) {
    const std::string before = Content(folder / "pa.xml");
    { const PASettings again(folder / "pa.xml"); }
    EXPECT_EQ(Content(folder / "pa.xml"), before);
    EXPECT_EQ(folder.Entries(), 1U);
}

TEST_F(PASettingsTest, ADocumentOfAnotherKindHasNoDefinitions) {
    const PASettings other(
        folder.File("settings.xml", "<kxct:Settings><Key name='Deck'/></kxct:Settings>"));
    ExpectEmpty(other);
}

}  // namespace
}  // namespace kxct::test
