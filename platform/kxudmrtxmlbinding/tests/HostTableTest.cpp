// This program stands for a host that uses gSOAP itself, with a namespace table of its own.
#include <gtest/gtest.h>
#include <kxudmrtxmlbinding/XmlNamespaces.h>
#include <stdsoap2.h>

// Exported by the program, so that the dynamic linker prefers it.
__attribute__((visibility("default"))) struct Namespace namespaces[] = {
    {"host", "urn:host", nullptr, nullptr}, {nullptr, nullptr, nullptr, nullptr}};

namespace {

TEST(XmlNamespaces, AHostWithATableOfItsOwnDoesNotReplaceOurs) {
    soap* context = soap_new();
    EXPECT_STREQ(context->namespaces[0].id, "host");
    soap_free(context);
    EXPECT_STREQ(kxGetXmlNamespaces()[0].id, "SOAP-ENV");
    EXPECT_STREQ(kxGetXmlNamespaces()[4].id, "kxct");
}

}  // namespace
