#include <gtest/gtest.h>
#include <kxctinterfaces/Attributes.h>
#include <kxctinterfaces/Metadata.h>

#include <algorithm>
#include <functional>
#include <iterator>

namespace {

using kxct::Metadata;

TEST(Metadata, TheConstructorTakesTheRuntimesOrderAndExchangesTheFirstTwoFlags) {
    const Metadata metadata("mass",
                            "Mass",
                            "With coating",
                            "0",
                            "Double",
                            "General",
                            true,
                            false,
                            false,
                            kxStlVector<kxString>({"1", "2"}));
    EXPECT_EQ(metadata.name, "mass");
    EXPECT_EQ(metadata.displayName, "Mass");
    EXPECT_EQ(metadata.description, "With coating");
    EXPECT_EQ(metadata.defaultValue, "0");
    EXPECT_EQ(metadata.type, "Double");
    EXPECT_EQ(metadata.category, "General");
    EXPECT_FALSE(metadata.flagA);
    EXPECT_TRUE(metadata.flagB);
    EXPECT_FALSE(metadata.flagC);
    EXPECT_EQ(metadata.validValues, kxStlVector<kxString>({"1", "2"}));
}

TEST(Metadata, TheThirdFlagKeepsItsPlace) {
    const Metadata metadata("", "", "", "", "", "", false, true, true, {});
    EXPECT_TRUE(metadata.flagA);
    EXPECT_FALSE(metadata.flagB);
    EXPECT_TRUE(metadata.flagC);
}

TEST(Metadata, TheFieldsLieInTheToldOrder) {
    const Metadata m;
    const void* const fields[] = {&m.name,
                                  &m.type,
                                  &m.displayName,
                                  &m.description,
                                  &m.defaultValue,
                                  &m.category,
                                  &m.flagA,
                                  &m.flagB,
                                  &m.flagC,
                                  &m.validValues};
    EXPECT_TRUE(std::is_sorted(std::begin(fields), std::end(fields), std::less<>()));
}

TEST(Attributes, TheWordsOfThePersistedModelAreExact) {
    using namespace kxct;
    EXPECT_EQ(ATTRIBUTE_NAME::ICON, "icon");
    EXPECT_EQ(ATTRIBUTE_NAME::LABEL, "label");
    EXPECT_EQ(ATTRIBUTE_NAME::ID, "id");
    EXPECT_EQ(ATTRIBUTE_NAME::SMD_CONTENTREVISION, "smd_contentrevision");
    EXPECT_EQ(ATTRIBUTE_NAME::SMD_CREATEDUSER, "smd_createduser");
    EXPECT_EQ(ATTRIBUTE_NAME::SMD_CREATIME, "smd_creatime");
    EXPECT_EQ(ATTRIBUTE_NAME::SMD_CTIME, "smd_ctime");
    EXPECT_EQ(ATTRIBUTE_NAME::SMD_USER, "smd_user");
    EXPECT_EQ(ATTRIBUTE_DEFINITION::DISPLAYNAME, "displayname");
}

}  // namespace
