// Documents that were made to harm: none may crash the process, keep it busy or grow in memory.
// A test that does not come back is ended by the time limit of the test program.
#include <pthread.h>

#include <algorithm>
#include <functional>

#include "DocumentFixture.h"
#include "settings/_private/MarkupMeter.h"

namespace kxct::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

constexpr std::size_t megabyte = 1000 * 1000;

// `count` copies of a piece in which "#" stands for the number of the copy.
std::string Repeat(const std::string& piece, std::size_t count) {
    std::string text;
    for (std::size_t number = 0; number < count; ++number) {
        for (const char character : piece) {
            if (character == '#') {
                text += std::to_string(number);
            } else {
                text += character;
            }
        }
    }
    return text;
}

TEST(HostileDocument, EntitiesAreNeverExpanded) {
    SettingsDocument document(
        "<!DOCTYPE s [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;\">"
        "<!ENTITY c \"&b;&b;&b;&b;&b;&b;&b;&b;\"><!ENTITY d \"&c;&c;&c;&c;&c;&c;&c;&c;\">]>"
        "<S><Key name='x' value='&d;'/></S>");
    for (const kxct__Key* key : document->Key) {
        EXPECT_TRUE(!key->value || key->value->find("aa") == std::string::npos) << *key->value;
    }
}

TEST(HostileDocument, ExternalEntitiesAreNotFetched) {
    SettingsDocument document(
        "<!DOCTYPE s [<!ENTITY file SYSTEM \"file:///etc/passwd\">]><S><Key name='x' "
        "value='&file;'/></S>");
    for (const kxct__Key* key : document->Key) {
        EXPECT_TRUE(!key->value || key->value->find("root") == std::string::npos) << *key->value;
    }
}

// Runs `work` on a thread whose stack has this size.
void OnThread(std::size_t stackSize, std::function<void()> work) {
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, stackSize), 0);
    pthread_t thread;
    const auto run = [](void* argument) -> void* {
        (*static_cast<std::function<void()>*>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
    ASSERT_EQ(pthread_join(thread, nullptr), 0);
    pthread_attr_destroy(&attributes);
}

constexpr std::size_t largeStack = 64 << 20;

void ReadAndWriteNineThousandLevels() {
    const std::size_t levels = 9000;
    SettingsDocument document(
        SettingsText(Repeat("<Key name='a'>", levels) + Repeat("</Key>", levels)));
    std::size_t depth = 0;
    for (const auto* level = &document->Key; !level->empty(); level = &level->front()->Key) {
        ++depth;
    }
    EXPECT_EQ(depth, levels);
    EXPECT_THAT(document.Write(), Not(IsEmpty()));
}

TEST(HostileDocument, NestingBelowTenThousandLevelsIsReadAndWritten) {
    OnThread(largeStack, ReadAndWriteNineThousandLevels);
}

TEST(HostileDocument, NestingEndsBeforeASmallStackDoes) {
    OnThread(256 << 10, [] {
        SettingsDocument document(SettingsText(
            "<Key name='first'/>" + Repeat("<Key name='a'>", 9000) + Repeat("</Key>", 9000)));
        EXPECT_EQ(document.Context()->error, SOAP_LEVEL);
        EXPECT_EQ(document->Key.at(0)->name, "first");
        document.Write();
    });
}

TEST(HostileDocument, NestingBeyondTenThousandLevelsEndsTheReading) {
    for (const std::size_t levels : {10001U, 100000U}) {
        SettingsDocument document(SettingsText(
            "<Key name='first'/>" + Repeat("<Key name='a'>", levels) + Repeat("</Key>", levels)));
        EXPECT_EQ(document.Context()->error, SOAP_LEVEL);
        ASSERT_THAT(document->Key, Not(IsEmpty()));
        EXPECT_EQ(document->Key[0]->name, "first");
    }
}

TEST(HostileDocument, DeepUnknownElementsAreSkippedWithoutRecursion) {
    const std::size_t levels = 1000000;
    SettingsDocument document(SettingsText("<Key name='a'/>" + Repeat("<u>", levels) +
                                           Repeat("</u>", levels) + "<Key name='b'/>"));
    EXPECT_THAT(NamesOf(document->Key), ElementsAre("a", "b"));
}

TEST(HostileDocument, ListsEndAtAHundredThousandAndOneChildren) {
    SettingsDocument within(SettingsText(Repeat("<Key/>", 100000)));
    EXPECT_EQ(within->Key.size(), 100000U);
    EXPECT_EQ(within.Context()->error, SOAP_OK);
    SettingsDocument beyond(SettingsText(Repeat("<Key/>", 200000)));
    EXPECT_EQ(beyond->Key.size(), 100001U);
    EXPECT_EQ(beyond.Context()->error, SOAP_OCCURS);
}

TEST(HostileDocument, AHundredMegabytesInAnAttributeAreRead) {
    SettingsDocument document(
        SettingsText("<Key name='" + std::string(100 * megabyte, 'x') + "'/><Key name='b'/>"));
    ASSERT_EQ(document->Key.size(), 2U);
    EXPECT_EQ(document->Key[0]->name.size(), 100 * megabyte);
}

class HostileBulk : public ::testing::TestWithParam<std::pair<const char*, const char*>> {};

TEST_P(HostileBulk, AHundredMegabytesInOnePieceOfMarkupArePassedOver) {
    std::string text = GetParam().first;
    text.append(100 * megabyte, 'x').append(GetParam().second).append("<Key name='a'/>");
    text = SettingsText(text);
    EXPECT_THAT(NamesOf(SettingsDocument(text)->Key), ElementsAre("a"));
}

INSTANTIATE_TEST_SUITE_P(Pieces,
                         HostileBulk,
                         ::testing::Values(std::pair("<!--", "-->"),
                                           std::pair("<", "/>"),
                                           std::pair("<other ", "='1'/>"),
                                           std::pair("<other>", "</other>"),
                                           std::pair("<?", "?>")));

TEST(HostileDocument, AnEncodingStyleWithAReferenceDoesNotCrash) {
    const std::string root =
        "<S xmlns:SOAP-ENV='http://schemas.xmlsoap.org/soap/envelope/' "
        "SOAP-ENV:encodingStyle='http://schemas.xmlsoap.org/soap/encoding/'>";
    for (const char* content : {"<Key href='#a'/><Key id='a' name='x'/>",
                                "<Key id='a' name='x'/><Key href='#a'/>",
                                "<Key href='#a'/>",
                                "<Key id='a'><Key href='#a'/></Key>",
                                "<Key href='#a'/><Key href='#a'/><Lookup id='a' value='v'/>",
                                "<Key name='k'><Lookup href='#a'/></Key><Key id='a'/>",
                                "<Key name='k'><Key href='#b'/></Key><Entity id='b'/>"}) {
        SettingsDocument document(root + content + "</S>");
        document.Write();
        LibraryDocument library(root +
                                "<Entity href='#a'><folder href='#a'/><metadata "
                                "href='#a'/></Entity><Entity id='a'/></S>");
        library.Write();
    }
    // References are not followed at all: an element with one is an element like any other.
    SettingsDocument document(root + "<Key id='a' name='x'/><Key href='#a' name='y'/></S>");
    EXPECT_THAT(NamesOf(document->Key), ElementsAre("x", "y"));
}

TEST(HostileDocument, AForeignTypeDoesNotChangeWhatAnElementIs) {
    for (const char* type : {"kxct:Entity",
                             "kxct:Lookup",
                             "xsd:int",
                             "xsd:anyType",
                             "kxct:Settings",
                             "kxct:path",
                             "none:such",
                             ""}) {
        SettingsDocument document(
            "<S xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
            "xmlns:xsd='http://www.w3.org/2001/XMLSchema' "
            "xmlns:kxct='http://norvik.invalid/KXCTSETTINGS_v1'><Key name='a' xsi:type='" +
            std::string(type) + "'><Lookup value='v' xsi:type='" + type + "'/></Key></S>");
        document.Write();
        EXPECT_LE(document->Key.size(), 1U);
    }
}

TEST(HostileDocument, WhatDoesNotBeginWithMarkupIsNotRead) {
    const std::string body = SettingsText("<Key name='a'/>");
    for (const char* start : {"HTTP/1.1 200 OK\r\nContent-Type: text/xml\r\n\r\n",
                              "POST / HTTP/1.1\r\n\r\n",
                              "--boundary\r\nContent-Type: text/xml\r\n\r\n",
                              "  --boundary\r\n\r\n",
                              "\x1F\x8B\x08",
                              "\xFE\xFF",
                              "\xEF\xBB",
                              "\xEF\xBB\xBF\xEF\xBB\xBF",
                              "x",
                              "{}"}) {
        EXPECT_THAT(SettingsDocument(start + body)->Key, IsEmpty()) << start;
    }
    EXPECT_THAT(SettingsDocument("")->Key, IsEmpty());
    EXPECT_THAT(SettingsDocument("   ")->Key, IsEmpty());
    EXPECT_THAT(SettingsDocument("\xEF\xBB\xBF")->Key, IsEmpty());
}

TEST(HostileDocument, TruncationAtAnyByteLeavesWhatWasCompleteBefore) {
    const std::string text =
        "<?xml version=\"1.0\"?><!-- c --><kxct:Settings version='1'><Key name='a' value='&lt;x'>"
        "<Key name='b'/><Lookup value='l'>t<b/></Lookup></Key><![CDATA[d]]></kxct:Settings>";
    for (std::size_t length = 0; length <= text.size(); ++length) {
        SettingsDocument document(text.substr(0, length));
        ASSERT_LE(document->Key.size(), 1U) << length;
        if (!document->Key.empty() && !document->Key[0]->name.empty()) {
            EXPECT_EQ(document->Key[0]->name, "a") << length;
        }
        document.Write();
    }
    EXPECT_THAT(NamesOf(SettingsDocument(text)->Key), ElementsAre("a"));
}

TEST(HostileDocument, EveryByteOfALibraryDocumentMayBeAltered) {
    const std::string text =
        "<kxct:NorvikLibraryInfo version='1' kx_info='i' "
        "xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance'><Entity xsi:type='kxct:Entity' "
        "type='t' id='5' color='3'><metadata name='m' value='v'/><folder path='/f'/></Entity>"
        "</kxct:NorvikLibraryInfo>";
    for (std::size_t position = 0; position < text.size(); ++position) {
        for (const char replacement : {'\0', '<', '>', '&', '\'', '/', '\xFF', 'Z'}) {
            std::string altered = text;
            altered[position] = replacement;
            LibraryDocument document(altered);
            ASSERT_LE(document->Entity.size(), 1U) << altered;
            document.Write();
        }
    }
}

TEST(HostileDocument, ManyAttributeNamesEndTheReading) {
    SettingsDocument inOneElement(
        SettingsText("<Key name='a'/><Key" + Repeat(" a#='1'", 300000) + "/>"));
    EXPECT_THAT(NamesOf(inOneElement->Key).front(), "a");
    EXPECT_NE(inOneElement.Context()->error, SOAP_OK);
    SettingsDocument spread(SettingsText(Repeat("<Key a#='1'/>", 90000)));
    EXPECT_LE(spread->Key.size(), MarkupMeter::maxAttributeNames + 1);
}

TEST(HostileDocument, ManyNamespacesInForceEndTheReading) {
    SettingsDocument document(SettingsText(
        "<Key name='a'/>" + Repeat("<Key xmlns:p='urn:p'>", 5000) + Repeat("<p:Key/>", 90000)));
    ASSERT_THAT(document->Key, Not(IsEmpty()));
    EXPECT_NE(document.Context()->error, SOAP_OK);
}

TEST(HostileDocument, ANamespaceDeclaredByEachOfManySiblingsIsFine) {
    SettingsDocument document(
        SettingsText(Repeat("<p:Key name='#' xmlns:p='urn:p'></p:Key>", 20000)));
    EXPECT_EQ(document->Key.size(), 20000U);
}

TEST(HostileDocument, ControlCharactersAndBrokenUtf8DoNotEndTheProcess) {
    for (int byte = 0; byte < 256; ++byte) {
        std::string text = SettingsText("<Key name='a#b' value='##'>#</Key>");
        std::replace(text.begin(), text.end(), '#', static_cast<char>(byte));
        SettingsDocument document(text);
        ASSERT_LE(document->Key.size(), 1U);
        document.Write();
    }
}

}  // namespace
}  // namespace kxct::test
