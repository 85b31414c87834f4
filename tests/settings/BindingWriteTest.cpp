// What the binding writes, and what comes back when that is read again.
#include <kxudmrtxmlbinding/XmlNamespaces.h>

#include "DocumentFixture.h"

// The table that the generator wrote, beside the one that the runtime library carries.
#define namespaces generatedNamespaces
#include <kxct.nsmap>
#undef namespaces

namespace kxct::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::Pointee;

// The start tag of the first element with this name, blanks between attributes as one.
std::string StartTag(const std::string& text, const std::string& element) {
    const auto begin = text.find("<" + element);
    if (begin == std::string::npos) {
        return {};
    }
    return text.substr(begin, text.find('>', begin) - begin + 1);
}

TEST(BindingWrite, GeneratedNamespacesAreThoseOfTheRuntimeLibrary) {
    const Namespace* row = kxGetXmlNamespaces();
    for (const Namespace& expected : generatedNamespaces) {
        EXPECT_STREQ(row->id, expected.id);
        EXPECT_STREQ(row->ns, expected.ns);
        EXPECT_STREQ(row->in, expected.in);
        ++row;
    }
}

TEST(BindingWrite, RootDeclaresTheFiveNamespacesInOrder) {
    const std::string root = StartTag(SettingsDocument().Write(), "kxct:Settings");
    std::size_t position = 0;
    for (const char* prefix : {"SOAP-ENV", "SOAP-ENC", "xsi", "xsd", "kxct"}) {
        const auto found = root.find("xmlns:" + std::string(prefix) + "=", position);
        ASSERT_NE(found, std::string::npos) << prefix << " in " << root;
        position = found;
    }
}

TEST(BindingWrite, EachKindHasItsRootTag) {
    EXPECT_THAT(SettingsDocument().Write(), HasSubstr("<kxct:Settings "));
    EXPECT_THAT(AttributeDocument().Write(), HasSubstr("<kxct:PASettings "));
    EXPECT_THAT(LibraryDocument().Write(), HasSubstr("<kxct:NorvikLibraryInfo "));
}

TEST(BindingWrite, EmptyRequiredAttributesAreLeftOut) {
    LibraryDocument document("<S><Entity><metadata/><category/><folder/></Entity></S>");
    std::string text = document.Write();
    text.erase(0, text.find("?>"));
    const std::vector<std::string> names{
        "version", "kx_info", "date", "name", "value", "path", "type", "id"};
    for (const std::string& name : names) {
        EXPECT_THAT(text, Not(HasSubstr(" " + name + "=")));
    }
}

TEST(BindingWrite, RootAttributesAreWrittenWhenSet) {
    LibraryDocument document;
    document->version = "3";
    document->kx_info = "i";
    document->date = document.NewText("");
    const std::string root = StartTag(document.Write(), "kxct:NorvikLibraryInfo");
    EXPECT_THAT(root, HasSubstr(" version=\"3\""));
    EXPECT_THAT(root, HasSubstr(" kx_info=\"i\""));
    EXPECT_THAT(root, HasSubstr(" date=\"\""));
}

TEST(BindingWrite, AKeyWithoutNameHasNoNameAttribute) {
    const std::string text = SettingsDocument(SettingsText("<Key value='v'/>")).Write();
    EXPECT_THAT(StartTag(text, "Key"), Not(HasSubstr("name=")));
    EXPECT_THAT(StartTag(text, "Key"), HasSubstr(" value=\"v\""));
}

TEST(BindingWrite, AnEmptyValueIsAnEmptyAttributeAndANullOneIsNone) {
    EXPECT_THAT(SettingsDocument(SettingsText("<Key name='a' value=''/>")).Write(),
                HasSubstr(" value=\"\""));
    EXPECT_THAT(SettingsDocument(SettingsText("<Key name='a'/>")).Write(),
                Not(HasSubstr(" value=")));
}

TEST(BindingWrite, ChildElementsHaveNoPrefixAndTellTheirType) {
    const std::string text =
        SettingsDocument(SettingsText("<Key name='a'><Lookup value='l'/></Key>")).Write();
    EXPECT_THAT(StartTag(text, "Key"), HasSubstr("xsi:type=\"kxct:Key\""));
    EXPECT_THAT(StartTag(text, "Lookup"), HasSubstr("xsi:type=\"kxct:Lookup\""));
    EXPECT_THAT(text, Not(HasSubstr("<kxct:Key")));
    EXPECT_THAT(text, Not(HasSubstr("<kxct:Lookup")));
}

TEST(BindingWrite, LookupsFollowTheSubKeys) {
    const std::string text =
        SettingsDocument(SettingsText("<Key name='k'><Lookup value='l'/><Key name='sub'/></Key>"))
            .Write();
    EXPECT_LT(text.find("name=\"sub\""), text.find("<Lookup"));
}

TEST(BindingWrite, EntityWritesMetadataThenCategoriesThenFolder) {
    const std::string text =
        LibraryDocument(
            "<S><Entity id='1'><folder path='/f'/><category path='/c'/><metadata "
            "name='m'/></Entity></S>")
            .Write();
    EXPECT_LT(text.find("<metadata"), text.find("<category"));
    EXPECT_LT(text.find("<category"), text.find("<folder"));
}

TEST(BindingWrite, ANullFolderIsNotWritten) {
    EXPECT_THAT(LibraryDocument("<S><Entity id='1'/></S>").Write(), Not(HasSubstr("folder")));
}

TEST(BindingWrite, BooleansAreWords) {
    const std::string text = AttributeDocument(
                                 "<S><ContentDefinition><Metadata common='1' iseditable='0' "
                                 "ishidden='true'/></ContentDefinition></S>")
                                 .Write();
    EXPECT_THAT(text, HasSubstr(" common=\"true\""));
    EXPECT_THAT(text, HasSubstr(" iseditable=\"false\""));
    EXPECT_THAT(text, HasSubstr(" ishidden=\"true\""));
}

TEST(BindingWrite, ColorIsADecimalNumber) {
    EXPECT_THAT(LibraryDocument("<S><Entity color='-2147483648'/></S>").Write(),
                HasSubstr(" color=\"-2147483648\""));
}

TEST(BindingWrite, TextInsideAKeyIsLost) {
    const std::string text = SettingsDocument(SettingsText("<Key name='a'>lost</Key>")).Write();
    EXPECT_THAT(text, HasSubstr("name=\"a\""));
    EXPECT_THAT(text, Not(HasSubstr("lost")));
}

TEST(BindingWrite, TextInsideContentDefinitionAndEntityIsLost) {
    EXPECT_THAT(
        AttributeDocument("<S><ContentDefinition name='a'>lost</ContentDefinition></S>").Write(),
        Not(HasSubstr("lost")));
    EXPECT_THAT(LibraryDocument("<S><Entity id='1'>lost</Entity></S>").Write(),
                Not(HasSubstr("lost")));
}

TEST(BindingWrite, BodiesOfTheFiveLeafElementsAreWrittenBackUntouched) {
    const std::string body = ">one <b x='1'>two</b> &lt; three<";
    EXPECT_THAT(
        SettingsDocument(SettingsText("<Key><Lookup value='v'" + body + "/Lookup></Key>")).Write(),
        HasSubstr(body + "/Lookup>"));
    EXPECT_THAT(AttributeDocument("<S><ContentDefinition><Metadata name='m'" + body +
                                  "/Metadata></ContentDefinition></S>")
                    .Write(),
                HasSubstr(body + "/Metadata>"));
    for (const char* leaf : {"metadata", "category", "folder"}) {
        EXPECT_THAT(LibraryDocument("<S><Entity><" + std::string(leaf) + body + "/" + leaf +
                                    "></Entity></S>")
                        .Write(),
                    HasSubstr(body + "/" + leaf + ">"));
    }
}

TEST(BindingWrite, WrittenDocumentsReadBackAlike) {
    SettingsDocument first(
        "<S version='9'><Key name='a' value='&lt;&gt;&amp;&quot;&apos;&#9;&#10;Ä 日本 🔧'>"
        "<Key name='b' value=''/><Key/><Lookup value='l'/></Key></S>");
    SettingsDocument second(first.Write());
    EXPECT_EQ(second->version, "9");
    ASSERT_THAT(NamesOf(second->Key), ElementsAre("a"));
    const kxct__Key& key = *second->Key[0];
    EXPECT_THAT(key.value, Pointee(std::string("<>&\"'\t\nÄ 日本 🔧")));
    ASSERT_THAT(NamesOf(key.Key), ElementsAre("b", ""));
    EXPECT_THAT(key.Key[0]->value, Pointee(std::string()));
    EXPECT_EQ(key.Key[1]->value, nullptr);
    ASSERT_EQ(key.Lookup.size(), 1U);
    EXPECT_EQ(key.Lookup[0]->value, "l");
    EXPECT_EQ(second.Write(), first.Write());
}

TEST(BindingWrite, IndentationIsTheOnlyModeBesideUtf8) {
    SettingsDocument document(SettingsText("<Key name='a'/>"));
    const std::string text = document.Write();
    EXPECT_EQ(document.Context()->omode, SOAP_XML_INDENT | SOAP_C_UTFSTRING);
    EXPECT_EQ(document.Context()->imode, SOAP_XML_INDENT | SOAP_C_UTFSTRING);
    EXPECT_THAT(text, HasSubstr("\n\t<Key"));
}

TEST(BindingWrite, ANulCutsAText) {
    SettingsDocument document(SettingsText("<Key name='a'/>"));
    document->Key[0]->value = document.NewText(std::string("ab\0cd", 5));
    EXPECT_THAT(document.Write(), HasSubstr(" value=\"ab\""));
}

TEST(BindingWrite, NullChildrenAreNotWritten) {
    SettingsDocument document(SettingsText("<Key name='a'/><Key name='b'/>"));
    document->Key[0] = nullptr;
    SettingsDocument again(document.Write());
    EXPECT_THAT(NamesOf(again->Key), ElementsAre("b"));
}

TEST(BindingWrite, AnObjectSharedInMemoryIsWrittenForEachPlace) {
    SettingsDocument document(SettingsText("<Key name='a' value='1'/>"));
    document->Key.push_back(document->Key[0]);
    const std::string text = document.Write();
    EXPECT_THAT(NamesOf(SettingsDocument(text)->Key), ElementsAre("a", "a"));
}

TEST(BindingWrite, AStreamThatTakesNothingIsAFailure) {
    SettingsDocument document(SettingsText("<Key name='a'/>"));
    std::ostringstream stream;
    stream.setstate(std::ios::badbit);
    EXPECT_FALSE(
        WriteDocument(document.Context(), stream, document.operator->(), "kxct:Settings", nullptr));
    EXPECT_NE(document.Context()->error, SOAP_OK);
    EXPECT_THAT(document.Write(), HasSubstr("name=\"a\""));
}

TEST(BindingWrite, AFailedReadDoesNotHinderAWrite) {
    SettingsDocument document("<S><Key name='a'/><Key");
    EXPECT_NE(document.Context()->error, SOAP_OK);
    EXPECT_THAT(document.Write(), HasSubstr("name=\"a\""));
}

}  // namespace
}  // namespace kxct::test
