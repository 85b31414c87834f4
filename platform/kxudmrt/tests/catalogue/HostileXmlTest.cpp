// Documents that are broken, or made to break their reader.
#include "Support.h"

namespace kxudm::catalogue::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

constexpr const char* kReferences =
    "only &amp; &lt; &gt; &quot; &apos; and references to characters by number are allowed behind "
    "'&'";

TEST(HostileXml, AnEmptyDocumentHasNoCatalogue) {
    for (const char* text : {"", "  \n ", "<!-- only -->", "<?xml version='1.0'?>\n"}) {
        EXPECT_EQ(RefusalOfText(text), "test.xml:1: there is no <catalogue>") << text;
    }
}

TEST(HostileXml, WhatIsNotWellFormedIsRefusedWithItsLine) {
    EXPECT_THAT(RefusalOfText("<catalogue version='1'>\n<definition name='A'>\n</catalogue>"),
                StartsWith("test.xml:3: not well-formed XML: "));
    for (const char* text : {"<catalogue",
                             "<catalogue version=1/>",
                             "<catalogue version='1'>",
                             "<catalogue version='1",
                             "</catalogue>",
                             "<catalogue version='1'/><",
                             "<catalogue version='1'><!-- ",
                             "<catalogue version='1'><![CDATA[ ",
                             "<",
                             "<>",
                             "<?xml"}) {
        EXPECT_THAT(RefusalOfText(text), StartsWith("test.xml:")) << text;
    }
}

TEST(HostileXml, ThereIsOneCatalogueAndNothingElse) {
    EXPECT_EQ(RefusalOfText("<catalogue version='1'/>\n<catalogue version='1'/>"),
              "test.xml:2: there must be only one <catalogue>");
    EXPECT_EQ(RefusalOfText("<library/>"),
              "test.xml:1: unexpected <library> at the top of the document; expected is "
              "<catalogue>");
}

TEST(HostileXml, DocumentTypesAreRefusedBeforeAnythingIsExpanded) {
    EXPECT_EQ(RefusalOfText("<?xml version='1.0'?>\n<!DOCTYPE lolz [\n<!ENTITY lol 'lol'>\n"
                            "<!ENTITY lol2 '&lol;&lol;&lol;&lol;'>]>\n<catalogue version='1'/>"),
              "test.xml:2: document types and entities are not allowed");
    EXPECT_THAT(RefusalOfText("<!DOCTYPE c SYSTEM 'file:///etc/passwd'><catalogue version='1'/>"),
                HasSubstr("document types and entities are not allowed"));
}

TEST(HostileXml, OnlyTheFiveEntitiesAreKnown) {
    for (const char* reference : {"&lol;",
                                  "&",
                                  "& ",
                                  "&amp",
                                  "&;",
                                  "&nbsp;",
                                  "&AMP;",
                                  "&#;",
                                  "&#x;",
                                  "&#X41;",
                                  "&#0;",
                                  "&#1;",
                                  "&#xD800;",
                                  "&#x110000;",
                                  "&#xFFFE;",
                                  "&#99999999999;",
                                  "&#-1;",
                                  "&#x-1;"}) {
        const std::string inText =
            "<definition name='A'>\n<attribute name='a' type='String'><value>" +
            std::string(reference) + "</value></attribute></definition>";
        EXPECT_EQ(RefusalOf(inText), std::string("test.xml:3: ") + kReferences) << reference;
        const std::string inTag =
            "<definition name='A' displayname='" + std::string(reference) + "'/>";
        EXPECT_EQ(RefusalOf(inTag), std::string("test.xml:2: ") + kReferences) << reference;
    }
}

TEST(HostileXml, CommentsInstructionsAndCharacterDataMayHoldAmpersands) {
    EXPECT_NO_THROW(
        Read("<!-- &lol; <!DOCTYPE --><?pi &lol; ?><definition name='A'>"
             "<attribute name='a' type='String'><value><![CDATA[&lol;<!DOCTYPE]]>"
             "</value></attribute></definition>"));
}

TEST(HostileXml, ReferencesToCharactersAreKept) {
    const auto catalogue = Read("<definition name='A' displayname='&#65;&#x2603;&#x1F527;&#10;'/>");
    EXPECT_EQ(catalogue->Get("A").DisplayName(), "A\u2603\U0001F527\n");
}

TEST(HostileXml, BytesThatAreNoTextAreRefused) {
    EXPECT_EQ(RefusalOf("<!-- \xE9 -->"),
              "test.xml:2: the byte at offset 29 is not UTF-8; a catalogue is written in UTF-8");
    EXPECT_EQ(RefusalOf(std::string("<!-- \0 -->", 10)),
              "test.xml:2: control characters are not allowed");
    EXPECT_THAT(RefusalOfText(std::string("\xFF\xFE<\0c\0", 6)), HasSubstr("is not UTF-8"));
}

TEST(HostileXml, AnotherEncodingIsRefused) {
    EXPECT_THAT(
        RefusalOfText("<?xml version='1.0' encoding='ISO-8859-1'?><catalogue version='1'/>"),
        HasSubstr("the encoding 'iso-8859-1' is not supported"));
    EXPECT_NO_THROW(Catalogue::ReadText(
        "\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?><catalogue version='1'/>", "bom"));
}

TEST(HostileXml, DeepNestingIsRefusedAtOnce) {
    std::string deep;
    for (int i = 0; i < 1000000; ++i) {
        deep += "<a>";
    }
    EXPECT_EQ(RefusalOfText(deep), "test.xml:1: the elements are nested too deep for a catalogue");
    EXPECT_EQ(RefusalOfText("<catalogue version='1'>\n" + deep),
              "test.xml:2: the elements are nested too deep for a catalogue");
}

TEST(HostileXml, ATagInsideAnAttributeIsRefused) {
    EXPECT_EQ(RefusalOf("<definition name='A'\n displayname='<!-- x -->'/>"),
              "test.xml:3: '<' is not allowed inside a tag; write &lt;");
}

TEST(HostileXml, AMegabyteInOneAttributeIsReadWhole) {
    const std::string text(1U << 20U, 'x');
    const auto catalogue = Read("<definition name='A'><attribute name='a' type='String' default='" +
                                text + "'/></definition>");
    EXPECT_EQ(catalogue->Get("A").FindAttribute("a")->defaultValue.GetString(), text);
}

TEST(HostileXml, AMillionUnknownElementsAreRefusedAtTheFirst) {
    std::string body;
    for (int i = 0; i < 1000000; ++i) {
        body += "<a/>";
    }
    EXPECT_THAT(RefusalOf(body), StartsWith("test.xml:2: unexpected <a> inside <catalogue>"));
}

TEST(HostileXml, EveryCutOfADocumentIsRefused) {
    const std::string whole = Document(R"(<definition name="A" displayname="&lt;">
<attribute name="a" type="String"><value>x</value><!-- c --></attribute>
<group name="g"><child definition="A"/></group></definition>)");
    const std::size_t end = whole.rfind('>');
    for (std::size_t length = 0; length < end; ++length) {
        EXPECT_THROW(Catalogue::ReadText(whole.substr(0, length), "cut"), UDMException) << length;
    }
    EXPECT_NO_THROW(Catalogue::ReadText(whole, "whole"));
}

TEST(HostileXml, EveryAlteredByteIsReadOrRefused) {
    const std::string whole = Document(R"(<definition name="A" displayname="&lt;">
<attribute name="a" type="Double" default="1.5"/></definition>)");
    std::size_t refused = 0;
    for (std::size_t at = 0; at < whole.size(); ++at) {
        for (const char byte : {'\0', '<', '>', '&', '"', 'x', ' ', '\xFF'}) {
            std::string altered = whole;
            altered[at] = byte;
            try {
                const auto catalogue = Catalogue::ReadText(altered, "altered");
                EXPECT_TRUE(*Catalogue::ReadText(catalogue->ToXml(), "again") == *catalogue);
            } catch (const UDMException&) {
                ++refused;
            }
        }
    }
    EXPECT_GT(refused, whole.size());
}

TEST(HostileXml, AThousandDefinitionsWithAllTheirPartsAreRead) {
    std::string body = "<definition name='Root' abstract='true'>";
    for (int i = 0; i < 50; ++i) {
        body += "<attribute name='a" + std::to_string(i) + "' type='String' default='x'/>";
    }
    body += "<group name='g' category='reference'><child definition='Root'/></group></definition>";
    for (int i = 0; i < 1000; ++i) {
        const std::string number = std::to_string(i);
        body += "<definition name='D" + number + "' base='" +
                (i % 8 == 0 ? "Root" : "D" + std::to_string(i - 1)) + "' extensions='e" + number +
                "'>";
        for (int j = 0; j < 20; ++j) {
            body += "<attribute name='b" + number + "-" + std::to_string(j) +
                    "' type='Integer' default='17'/>";
        }
        body += "</definition>\n";
    }
    ASSERT_GT(body.size(), 1000000U);
    const auto catalogue = Read(body);
    EXPECT_EQ(catalogue->Definitions().size(), 1001U);
    EXPECT_EQ(catalogue->Get("D999").Attributes().size(), 50U + 8 * 20U);
    EXPECT_EQ(catalogue->AllowedChildren("D0", "g").size(), 1000U);
    EXPECT_EQ(catalogue->ForExtension("E512")->Name(), "D512");
    EXPECT_TRUE(*Catalogue::ReadText(catalogue->ToXml(), "again") == *catalogue);
}

}  // namespace
}  // namespace kxudm::catalogue::testing
