// What the binding reads from documents, rule by rule.
#include "DocumentFixture.h"

namespace kxct::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pointee;

TEST(BindingRead, NestedKeysKeepNamesValuesAndOrder) {
    SettingsDocument document(
        "<kxct:Settings version='2'><Key name='b' value='1'><Key name='x'/></Key><Key "
        "name='a'/></kxct:Settings>");
    EXPECT_EQ(document->version, "2");
    ASSERT_THAT(NamesOf(document->Key), ElementsAre("b", "a"));
    EXPECT_THAT(document->Key[0]->value, Pointee(std::string("1")));
    EXPECT_THAT(NamesOf(document->Key[0]->Key), ElementsAre("x"));
}

TEST(BindingRead, AKeyWithoutNameHasAnEmptyName) {
    SettingsDocument document(SettingsText("<Key value='v'/>"));
    ASSERT_EQ(document->Key.size(), 1U);
    EXPECT_EQ(document->Key[0]->name, "");
}

TEST(BindingRead, AnEmptyValueIsSetAndAnAbsentOneIsNull) {
    SettingsDocument document(SettingsText("<Key name='a' value=''/><Key name='b'/>"));
    ASSERT_EQ(document->Key.size(), 2U);
    EXPECT_THAT(document->Key[0]->value, Pointee(std::string()));
    EXPECT_EQ(document->Key[1]->value, nullptr);
}

TEST(BindingRead, AMissingRequiredAttributeIsLeftAtItsDefault) {
    AttributeDocument document(
        "<PASettings><ContentDefinition><Metadata/></ContentDefinition></PASettings>");
    ASSERT_EQ(document->ContentDefinition.size(), 1U);
    ASSERT_EQ(document->ContentDefinition[0]->Metadata.size(), 1U);
    const kxct__Metadata& metadata = *document->ContentDefinition[0]->Metadata[0];
    EXPECT_EQ(document->version, "");
    EXPECT_EQ(document->ContentDefinition[0]->name, "");
    EXPECT_EQ(metadata.name, "");
    EXPECT_EQ(metadata.displayname, "");
    EXPECT_EQ(metadata.description, nullptr);
    EXPECT_EQ(metadata.category, nullptr);
    EXPECT_EQ(metadata.common, nullptr);
    EXPECT_EQ(metadata.iseditable, nullptr);
    EXPECT_EQ(metadata.ishidden, nullptr);
}

TEST(BindingRead, ChildrenMatchWithAnyPrefixOrNone) {
    SettingsDocument document(
        "<k:Settings xmlns:k='http://elsewhere.example/KXCTSETTINGS_v1' xmlns:z='urn:z'>"
        "<k:Key name='a'><z:Key name='b'/><k:Lookup value='l'/></k:Key><z:Key name='c'/><Key "
        "name='d'/></k:Settings>");
    ASSERT_THAT(NamesOf(document->Key), ElementsAre("a", "c", "d"));
    EXPECT_THAT(NamesOf(document->Key[0]->Key), ElementsAre("b"));
    ASSERT_EQ(document->Key[0]->Lookup.size(), 1U);
}

TEST(BindingRead, ElementNamesAreCaseSensitive) {
    SettingsDocument document(SettingsText("<key name='a'/><KEY name='b'/><Key name='c'/>"));
    EXPECT_THAT(NamesOf(document->Key), ElementsAre("c"));
}

TEST(BindingRead, AnyRootElementIsTaken) {
    SettingsDocument settings("<kxct:PASettings version='7'><Key name='a'/></kxct:PASettings>");
    EXPECT_EQ(settings->version, "7");
    EXPECT_THAT(NamesOf(settings->Key), ElementsAre("a"));

    SettingsDocument other("<kxct:PASettings><ContentDefinition name='d'/></kxct:PASettings>");
    EXPECT_THAT(other->Key, IsEmpty());
}

TEST(BindingRead, ChildrenInterleaveAndListsOfOneNameAddUp) {
    SettingsDocument document(
        SettingsText("<Key name='k'><Lookup value='1'/><Key name='a'/><Key name='b'/><Lookup "
                     "value='2'/><Key name='c'/></Key>"));
    ASSERT_EQ(document->Key.size(), 1U);
    EXPECT_THAT(NamesOf(document->Key[0]->Key), ElementsAre("a", "b", "c"));
    ASSERT_EQ(document->Key[0]->Lookup.size(), 2U);
    EXPECT_EQ(document->Key[0]->Lookup[0]->value, "1");
    EXPECT_EQ(document->Key[0]->Lookup[1]->value, "2");
}

TEST(BindingRead, AnUnknownElementIsSkippedWithItsSubtree) {
    SettingsDocument document(SettingsText(
        "<Other><Key name='lost'/></Other><Key name='a'><Other><Key "
        "name='lost'/></Other><Other><Key name='lost'/></Other><Key name='b'/></Key>"));
    ASSERT_THAT(NamesOf(document->Key), ElementsAre("a"));
    EXPECT_THAT(NamesOf(document->Key[0]->Key), ElementsAre("b"));
}

TEST(BindingRead, AnUnknownAttributeIsIgnored) {
    SettingsDocument document(SettingsText("<Key other='1' name='a' Value='2'/>"));
    ASSERT_THAT(NamesOf(document->Key), ElementsAre("a"));
    EXPECT_EQ(document->Key[0]->value, nullptr);
}

TEST(BindingRead, AnElementOfTheSoapEnvelopeEndsTheReading) {
    SettingsDocument document(
        "<kxct:Settings xmlns:SOAP-ENV='http://schemas.xmlsoap.org/soap/envelope/'>"
        "<Key name='a'/><SOAP-ENV:Body/><Key name='b'/></kxct:Settings>");
    EXPECT_THAT(NamesOf(document->Key), ElementsAre("a"));
}

TEST(BindingRead, TextInsideAKeyIsKeptInMemory) {
    SettingsDocument document(SettingsText("<Key name='a'>some text</Key>"));
    ASSERT_EQ(document->Key.size(), 1U);
    EXPECT_STREQ(document->Key[0]->__item, "some text");
}

TEST(BindingRead, AKeyWithoutTextHasNoItemOrAnEmptyOne) {
    SettingsDocument document(SettingsText("<Key name='a'><Key name='b'/></Key>"));
    ASSERT_EQ(document->Key.size(), 1U);
    EXPECT_STREQ(document->Key[0]->__item, "");
    ASSERT_EQ(document->Key[0]->Key.size(), 1U);
    EXPECT_EQ(document->Key[0]->Key[0]->__item, nullptr);
}

// Literal text runs up to the end of its element: the runtime takes what follows as part of it.
TEST(BindingRead, TextBeforeASubKeyTakesTheSubKeyWithIt) {
    SettingsDocument document(
        SettingsText("<Key name='a'>text<Key name='b'/></Key><Key name='c'/>"));
    ASSERT_THAT(NamesOf(document->Key), ElementsAre("a", "c"));
    EXPECT_THAT(document->Key[0]->Key, IsEmpty());
    EXPECT_STREQ(document->Key[0]->__item, "text<Key name='b'/>");
}

TEST(BindingRead, TextAtTheRootEndsTheReading) {
    SettingsDocument document(SettingsText("<Key name='a'/>text<Key name='b'/>"));
    EXPECT_THAT(NamesOf(document->Key), ElementsAre("a"));
}

TEST(BindingRead, LookupKeepsItsBodyAsLiteralText) {
    SettingsDocument document(
        SettingsText("<Key name='k'><Lookup value='v'>one <b>two</b> three</Lookup></Key>"));
    ASSERT_EQ(document->Key.size(), 1U);
    ASSERT_EQ(document->Key[0]->Lookup.size(), 1U);
    EXPECT_EQ(document->Key[0]->Lookup[0]->value, "v");
    EXPECT_STREQ(document->Key[0]->Lookup[0]->__item, "one <b>two</b> three");
}

TEST(BindingRead, AllAttributesOfAMetadataAreRead) {
    AttributeDocument document(
        "<kxct:PASettings version='1'><ContentDefinition name='Part'>"
        "<Metadata name='n' displayname='N' description='d' category='c' common='true'"
        " iseditable='false' ishidden='true'/></ContentDefinition></kxct:PASettings>");
    ASSERT_EQ(document->ContentDefinition.size(), 1U);
    ASSERT_EQ(document->ContentDefinition[0]->Metadata.size(), 1U);
    const kxct__Metadata& metadata = *document->ContentDefinition[0]->Metadata[0];
    EXPECT_EQ(metadata.name, "n");
    EXPECT_EQ(metadata.displayname, "N");
    EXPECT_THAT(metadata.description, Pointee(std::string("d")));
    EXPECT_THAT(metadata.category, Pointee(std::string("c")));
    EXPECT_THAT(metadata.common, Pointee(true));
    EXPECT_THAT(metadata.iseditable, Pointee(false));
    EXPECT_THAT(metadata.ishidden, Pointee(true));
}

struct BooleanText {
    const char* text;
    bool value;
};

void PrintTo(const BooleanText& boolean, std::ostream* out) {
    *out << boolean.text;
}

class BindingReadBoolean : public ::testing::TestWithParam<BooleanText> {};

TEST_P(BindingReadBoolean, WordsAndTheNumbersZeroAndOneAreTaken) {
    AttributeDocument document(std::string("<S><ContentDefinition><Metadata common='") +
                               GetParam().text + "'/></ContentDefinition></S>");
    ASSERT_EQ(document->ContentDefinition.size(), 1U);
    ASSERT_EQ(document->ContentDefinition[0]->Metadata.size(), 1U);
    EXPECT_THAT(document->ContentDefinition[0]->Metadata[0]->common, Pointee(GetParam().value));
}

INSTANTIATE_TEST_SUITE_P(Texts,
                         BindingReadBoolean,
                         ::testing::Values(BooleanText{"true", true},
                                           BooleanText{"false", false},
                                           BooleanText{"1", true},
                                           BooleanText{"0", false}));

class BindingReadNoBoolean : public ::testing::TestWithParam<const char*> {};

TEST_P(BindingReadNoBoolean, AnyOtherTextFailsTheReadAtThatElement) {
    AttributeDocument document(
        std::string("<S><ContentDefinition name='a'><Metadata name='x'/></ContentDefinition>"
                    "<ContentDefinition name='b'><Metadata name='y' common='") +
        GetParam() + "'/></ContentDefinition><ContentDefinition name='c'/></S>");
    EXPECT_EQ(document.Context()->error, SOAP_TYPE);
    ASSERT_GE(document->ContentDefinition.size(), 1U);
    EXPECT_EQ(document->ContentDefinition[0]->name, "a");
    for (const kxct__ContentDefinition* definition : document->ContentDefinition) {
        EXPECT_NE(definition->name, "c");
    }
}

INSTANTIATE_TEST_SUITE_P(Texts,
                         BindingReadNoBoolean,
                         ::testing::Values("yes", "2", "-1", "True", "x"));

TEST(BindingRead, AllPartsOfAnEntityAreRead) {
    LibraryDocument document(
        "<kxct:NorvikLibraryInfo version='1' kx_info='i' date='d'>"
        "<Entity type='t' id='5' libraryentityid='e' libraryname='n' librarycomment='c' color='-7'>"
        "<folder path='/f'/><category path='/c1'/><metadata name='m' value='v'/><category "
        "path='/c2'/></Entity></kxct:NorvikLibraryInfo>");
    EXPECT_EQ(document->version, "1");
    EXPECT_EQ(document->kx_info, "i");
    EXPECT_THAT(document->date, Pointee(std::string("d")));
    ASSERT_EQ(document->Entity.size(), 1U);
    const kxct__Entity& entity = *document->Entity[0];
    EXPECT_EQ(entity.type, "t");
    EXPECT_EQ(entity.id, "5");
    EXPECT_THAT(entity.libraryentityid, Pointee(std::string("e")));
    EXPECT_THAT(entity.libraryname, Pointee(std::string("n")));
    EXPECT_THAT(entity.librarycomment, Pointee(std::string("c")));
    EXPECT_THAT(entity.color, Pointee(-7));
    ASSERT_EQ(entity.metadata.size(), 1U);
    EXPECT_EQ(entity.metadata[0]->name, "m");
    EXPECT_EQ(entity.metadata[0]->value, "v");
    ASSERT_EQ(entity.category.size(), 2U);
    EXPECT_EQ(entity.category[0]->path, "/c1");
    EXPECT_EQ(entity.category[1]->path, "/c2");
    ASSERT_NE(entity.folder, nullptr);
    EXPECT_EQ(entity.folder->path, "/f");
}

TEST(BindingRead, ASecondFolderOfAnEntityIsNotStored) {
    LibraryDocument document(
        "<S><Entity id='1'><folder path='/first'/><folder path='/second'/><metadata "
        "name='m'/></Entity></S>");
    ASSERT_EQ(document->Entity.size(), 1U);
    ASSERT_NE(document->Entity[0]->folder, nullptr);
    EXPECT_EQ(document->Entity[0]->folder->path, "/first");
    EXPECT_EQ(document->Entity[0]->metadata.size(), 1U);
}

TEST(BindingRead, AnEntityWithoutFolderHasNone) {
    LibraryDocument document("<S><Entity id='1'/></S>");
    ASSERT_EQ(document->Entity.size(), 1U);
    EXPECT_EQ(document->Entity[0]->folder, nullptr);
    EXPECT_EQ(document->Entity[0]->color, nullptr);
    EXPECT_EQ(document->date, nullptr);
}

class BindingReadNoColor : public ::testing::TestWithParam<const char*> {};

TEST_P(BindingReadNoColor, AColorThatIsNoNumberFailsTheReadAtThatEntity) {
    LibraryDocument document(std::string("<S><Entity id='1'/><Entity id='2' color='") + GetParam() +
                             "'/><Entity id='3'/></S>");
    EXPECT_EQ(document.Context()->error, SOAP_TYPE);
    ASSERT_GE(document->Entity.size(), 1U);
    EXPECT_EQ(document->Entity[0]->id, "1");
    for (const kxct__Entity* entity : document->Entity) {
        EXPECT_NE(entity->id, "3");
    }
}

INSTANTIATE_TEST_SUITE_P(Texts,
                         BindingReadNoColor,
                         ::testing::Values("red", "1x", "99999999999", "1.5"));

TEST(BindingRead, MetadataOfTheTwoDocumentsAreDifferentThings) {
    LibraryDocument library(
        "<S><Entity id='1'><Metadata name='a'/><metadata name='b'/></Entity></S>");
    ASSERT_EQ(library->Entity.size(), 1U);
    EXPECT_THAT(NamesOf(library->Entity[0]->metadata), ElementsAre("b"));

    AttributeDocument attributes(
        "<S><ContentDefinition><Metadata name='a'/><metadata name='b'/></ContentDefinition></S>");
    ASSERT_EQ(attributes->ContentDefinition.size(), 1U);
    EXPECT_THAT(NamesOf(attributes->ContentDefinition[0]->Metadata), ElementsAre("a"));
}

TEST(BindingRead, TextOfEveryScriptIsUtf8InMemory) {
    SettingsDocument document(
        SettingsText("<Key name='Größe' value='日本 🔧 &#x65E5; &lt;&amp;&quot;&#228;'/>"));
    ASSERT_EQ(document->Key.size(), 1U);
    EXPECT_EQ(document->Key[0]->name, "Größe");
    EXPECT_THAT(document->Key[0]->value, Pointee(std::string("日本 🔧 日 <&\"ä")));
}

// The runtime has room for seven characters between "&" and ";", and leaves the eighth in the text.
TEST(BindingRead, ACharacterReferenceOfEightCharactersKeepsItsSemicolon) {
    SettingsDocument document(SettingsText("<Key name='&#x1F527;'/><Key name='&#x1F527'/>"));
    EXPECT_THAT(NamesOf(document->Key), ElementsAre("🔧;", "🔧"));
}

TEST(BindingRead, BytesAreTakenAsTheyStandWhateverEncodingIsDeclared) {
    const std::string declaration = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>";
    EXPECT_THAT(NamesOf(SettingsDocument(declaration + SettingsText("<Key name='\xE4'/>"))->Key),
                ElementsAre("\xE4"));
    EXPECT_THAT(NamesOf(SettingsDocument(declaration + SettingsText("<Key name='ä'/>"))->Key),
                ElementsAre("ä"));
}

TEST(BindingRead, ByteOrderMarkAndBlanksMayStandFirst) {
    SettingsDocument document("\xEF\xBB\xBF \t\r\n" + SettingsText("<Key name='a'/>"));
    EXPECT_THAT(NamesOf(document->Key), ElementsAre("a"));
}

TEST(BindingRead, NilChildrenAreNullPointersInTheirLists) {
    SettingsDocument document(
        "<S xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'><Key name='a'/><Key "
        "xsi:nil='true'/><Key name='b'><Key xsi:nil='true'/><Lookup xsi:nil='true'/></Key></S>");
    ASSERT_THAT(NamesOf(document->Key), ElementsAre("a", "(null)", "b"));
    EXPECT_THAT(NamesOf(document->Key[2]->Key), ElementsAre("(null)"));
    ASSERT_EQ(document->Key[2]->Lookup.size(), 1U);
    EXPECT_EQ(document->Key[2]->Lookup[0], nullptr);
}

TEST(BindingRead, ASecondReadAddsToTheFirst) {
    SettingsDocument document(SettingsText("<Key name='a'/>"));
    document.Read(SettingsText("<Key name='b'/>"));
    EXPECT_THAT(NamesOf(document->Key), ElementsAre("a", "b"));
}

TEST(BindingRead, WhatFollowsTheRootElementDoesNoHarm) {
    SettingsDocument document(SettingsText("<Key name='a'/>") + "garbage < & >");
    EXPECT_THAT(NamesOf(document->Key), ElementsAre("a"));
}

TEST(BindingRead, DefaultClearsEverythingThatWasRead) {
    SettingsDocument document("<S version='1'><Key name='a' value='v'>t</Key></S>");
    kxct__Key* key = document->Key.at(0);
    key->soap_default(document.Context());
    EXPECT_EQ(key->name, "");
    EXPECT_EQ(key->value, nullptr);
    EXPECT_EQ(key->__item, nullptr);
    EXPECT_EQ(key->soap, document.Context());
    document->soap_default(document.Context());
    EXPECT_EQ(document->version, "");
    EXPECT_THAT(document->Key, IsEmpty());
}

}  // namespace
}  // namespace kxct::test
