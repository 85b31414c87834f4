#include <gtest/gtest.h>

#include <string>

#include "settings/_private/MarkupMeter.h"

namespace kxct::test {
namespace {

std::string Attributes(std::size_t count) {
    std::string text;
    for (std::size_t number = 0; number < count; ++number) {
        text += " n" + std::to_string(number) + "='1'";
    }
    return text;
}

// Fed byte by byte and at once, which has to come to the same.
std::size_t Accepted(const std::string& text) {
    MarkupMeter whole;
    const std::size_t accepted = whole.Accept(text.data(), text.size());
    MarkupMeter bytewise;
    std::size_t count = 0;
    while (count < text.size() && bytewise.Accept(text.data() + count, 1) == 1) {
        ++count;
    }
    EXPECT_EQ(count, accepted);
    return accepted;
}

bool Passes(const std::string& text) {
    return Accepted(text) == text.size();
}

TEST(MarkupMeter, AsManyAttributeNamesAsTheLimitPass) {
    EXPECT_TRUE(Passes("<a" + Attributes(MarkupMeter::maxAttributeNames) + "/>"));
    EXPECT_FALSE(Passes("<a" + Attributes(MarkupMeter::maxAttributeNames + 1) + "/>"));
}

TEST(MarkupMeter, ARepeatedNameCountsOnce) {
    const std::string many = Attributes(MarkupMeter::maxAttributeNames);
    EXPECT_TRUE(Passes("<s><a" + many + "/><a" + many + "/></s>"));
}

TEST(MarkupMeter, NamesWithoutQuotesOrValueCountToo) {
    std::string text = "<a";
    for (std::size_t number = 0; number <= MarkupMeter::maxAttributeNames; ++number) {
        text += (number % 2 ? " n" : "\n n") + std::to_string(number) + (number % 2 ? "=v" : "");
    }
    EXPECT_FALSE(Passes(text + ">"));
}

TEST(MarkupMeter, WhatLooksLikeAttributesElsewhereDoesNotCount) {
    const std::string many = Attributes(1000);
    EXPECT_TRUE(Passes("<a>" + many + "</a>"));
    EXPECT_TRUE(Passes("<a v=\"" + many + "\"/>"));
    EXPECT_TRUE(Passes("<!-- <a" + many + "/> --><a/>"));
    EXPECT_TRUE(Passes("<a><![CDATA[<a" + many + "/> ]] ]]></a>"));
    EXPECT_TRUE(Passes("<?pi" + many + "?><a/>"));
    EXPECT_TRUE(Passes("<!DOCTYPE a [<!ATTLIST a" + many + ">]><a/>"));
    EXPECT_TRUE(Passes("<a></a" + many + ">"));
}

TEST(MarkupMeter, CountingGoesOnBehindCommentsAndSections) {
    const std::string bad = "<a" + Attributes(1000) + "/>";
    for (const char* before : {"<!-- - -- >",
                               "<!---->",
                               "<![CDATA[]]>",
                               "<![CDATA[a]]]>",
                               "<?p?>",
                               "<!DOCTYPE a [<!ENTITY b 'c'>]>",
                               "<% x >",
                               "<!>"}) {
        EXPECT_FALSE(Passes(before + bad)) << before;
    }
}

TEST(MarkupMeter, DeclarationsLeaveForceWithTheirElement) {
    std::string siblings;
    std::string nested;
    for (std::size_t number = 0; number <= MarkupMeter::maxNamespacesInForce; ++number) {
        siblings += "<a xmlns='u'></a><a xmlns:p='u'/>";
        nested += "<a xmlns='u'>";
    }
    EXPECT_TRUE(Passes("<s>" + siblings + "</s>"));
    EXPECT_FALSE(Passes("<s>" + nested));
}

TEST(MarkupMeter, SlashInAValueDoesNotCloseAnElement) {
    std::string nested;
    for (std::size_t number = 0; number <= MarkupMeter::maxNamespacesInForce; ++number) {
        nested += "<a xmlns='/'>";
    }
    EXPECT_FALSE(Passes("<s>" + nested));
}

TEST(MarkupMeter, NothingPassesAfterALimit) {
    MarkupMeter meter;
    const std::string text = "<a" + Attributes(1000) + "/>";
    EXPECT_LT(meter.Accept(text.data(), text.size()), text.size());
    EXPECT_EQ(meter.Accept("<b/>", 4), 0U);
}

TEST(MarkupMeter, EndTagsWithoutStartAreHarmless) {
    EXPECT_TRUE(Passes("</a></b><c/></d>"));
}

}  // namespace
}  // namespace kxct::test
