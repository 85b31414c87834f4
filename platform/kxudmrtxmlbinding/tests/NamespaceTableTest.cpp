#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxudmrtxmlbinding/XmlNamespaces.h>
#include <stdsoap2.h>

#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;
using ::testing::EndsWith;

std::vector<std::string> Prefixes(const Namespace* table) {
    std::vector<std::string> prefixes;
    for (; table->id; ++table) {
        prefixes.emplace_back(table->id);
    }
    return prefixes;
}

TEST(XmlNamespaces, StandInTheOrderInWhichTheRuntimeDeclaresThem) {
    EXPECT_THAT(Prefixes(kxGetXmlNamespaces()),
                ElementsAre("SOAP-ENV", "SOAP-ENC", "xsi", "xsd", "kxct"));
}

TEST(XmlNamespaces, SettingsNamespaceHasItsVersionAsTheOnlyPathSegment) {
    const std::string uri = kxGetXmlNamespaces()[4].ns;
    const auto host = uri.find("//") + 2;
    EXPECT_EQ(uri.substr(uri.find('/', host)), "/KXCTSETTINGS_v1");
}

TEST(XmlNamespaces, SoapTwelveIsAcceptedBesideSoapEleven) {
    const Namespace* table = kxGetXmlNamespaces();
    EXPECT_STREQ(table[0].ns, "http://schemas.xmlsoap.org/soap/envelope/");
    EXPECT_THAT(table[0].in, EndsWith("/soap-envelope"));
    EXPECT_STREQ(table[1].ns, "http://schemas.xmlsoap.org/soap/encoding/");
    EXPECT_THAT(table[1].in, EndsWith("/soap-encoding"));
}

TEST(XmlNamespaces, ANewContextOfTheRuntimeTakesTheSameTable) {
    soap* context = soap_new();
    EXPECT_EQ(context->namespaces, kxGetXmlNamespaces());
    soap_free(context);
}

}  // namespace
