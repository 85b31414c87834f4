#include "tests/items/Fixture.h"

namespace kxct::test {
namespace {

using mock::IsHandle;
using ::testing::ElementsAre;
using ::testing::Return;
using ::testing::Throw;
using namespace ATTRIBUTE_DEFINITION;

using ContentItemAttributes = ContentTest;

TEST_F(ContentItemAttributes, IsAContentItem) {
    Item* item = content;
    EXPECT_EQ(item->IsA(), "ContentItem");
    EXPECT_EQ(item->GetType(), "UDMPart");
    EXPECT_EQ(item->GetUID(), "A:1");
    EXPECT_EQ(item->GetDisplayName(), "Bracket");
}

TEST_F(ContentItemAttributes, ANewHandleChangesTheUidThatItAnswers) {
    content->SetItemHandle(mock::NewHandle("A:2", "UDMPart", "Bracket 2"));
    EXPECT_EQ(content->GetUID(), "A:2");
    EXPECT_EQ(content->GetDisplayName(), "Bracket 2");
    EXPECT_TRUE(content->HasUID("A:2"));
    EXPECT_FALSE(content->HasUID("A:1"));
}

TEST_F(ContentItemAttributes, AnEmptyHandleAnswersEveryAttributeWithAnEmptyVariant) {
    ContentItem empty(manager.get(), session.get(), kxudm::UDMItemHandle());
    for (const char* name : {"icon", "label", "id", "smd_user", "contentdefinition", "mass"}) {
        EXPECT_TRUE(empty.GetAttributeValue(name).IsEmpty()) << name;
        EXPECT_TRUE(empty.GetAttributeDescription(name, ISEDITABLE).IsEmpty()) << name;
    }
    EXPECT_TRUE(empty.GetAttributeNameList(false, false).empty());
    EXPECT_EQ(empty.GetDisplayName(), "");
    EXPECT_FALSE(empty.IsEditable());
    EXPECT_FALSE(empty.IsAttributeEditable("mass"));
}

TEST_F(ContentItemAttributes, TheHandleAnswersTheAttributesOfTheEntity) {
    state->revision = 4;
    state->createdBy = "anna";
    state->creationTime = "2026-01-01T00:00:00Z";
    state->modifiedTime = "2026-01-02T00:00:00Z";
    state->modifiedBy = "ben";
    state->attributes["mass"] = 12.5;
    EXPECT_EQ(content->GetAttributeValue("label"), kxVariant("Bracket"));
    EXPECT_EQ(content->GetAttributeValue("id"), kxVariant("A:1"));
    EXPECT_EQ(content->GetAttributeValue("smd_contentrevision"), kxVariant(4));
    EXPECT_EQ(content->GetAttributeValue("smd_createduser"), kxVariant("anna"));
    EXPECT_EQ(content->GetAttributeValue("smd_creatime"), kxVariant("2026-01-01T00:00:00Z"));
    EXPECT_EQ(content->GetAttributeValue("smd_ctime"), kxVariant("2026-01-02T00:00:00Z"));
    EXPECT_EQ(content->GetAttributeValue("smd_user"), kxVariant("ben"));
    EXPECT_EQ(content->GetAttributeValue("mass"), kxVariant(12.5));
}

TEST_F(ContentItemAttributes, TheContentDefinitionIsItsTypeAndNotItsName) {
    part->type = "Foldertype";
    EXPECT_EQ(content->GetAttributeValue(ATTRIBUTE_NAME::CONTENTDEFINITION),
              kxVariant("Foldertype"));
    EXPECT_EQ(content->GetType(), "UDMPart");
}

TEST_F(ContentItemAttributes, AFailureOfTheRuntimeTravelsOn) {
    EXPECT_THROW(content->GetAttributeValue("nosuch"), std::exception);
    EXPECT_THROW(content->GetAttributeDescription("nosuch", TYPE), std::exception);
    state->definition = "Unknown";
    EXPECT_THROW(content->GetAttributeValue("icon"), std::exception);
    EXPECT_THROW(content->GetAttributeNameList(false, false), std::exception);
}

struct IconCase {
    const char* type;
    int readOnly;
};

void PrintTo(const IconCase& icon, std::ostream* out) {
    *out << icon.type << ": " << icon.readOnly;
}

class ContentItemIcon : public ContentTest, public ::testing::WithParamInterface<IconCase> {};

TEST_P(ContentItemIcon, FollowsTypeAndEditabilityByOne) {
    part->type = GetParam().type;
    state->isEditable = false;
    EXPECT_EQ(content->GetAttributeValue("icon"), kxVariant(GetParam().readOnly));
    state->isEditable = true;
    EXPECT_EQ(content->GetAttributeValue("icon"), kxVariant(GetParam().readOnly + 1));
}

INSTANTIATE_TEST_SUITE_P(OfEachType,
                         ContentItemIcon,
                         ::testing::Values(IconCase{"Foldertype", 0},
                                           IconCase{"Categories", 2},
                                           IconCase{"UDMCTEntityCollector", 4},
                                           IconCase{"Normal", 6},
                                           IconCase{"foldertype", 6},
                                           IconCase{"", 6}));

TEST_F(ContentItemAttributes, IsEditableAsTheHandleIsWhateverTheAttribute) {
    part->attributes.push_back({.name = "mass", .isEditable = false});
    state->isEditable = true;
    EXPECT_TRUE(content->IsEditable());
    EXPECT_TRUE(content->IsAttributeEditable("mass"));
    EXPECT_TRUE(content->IsAttributeEditable("nosuch"));
    state->isEditable = false;
    EXPECT_FALSE(content->IsAttributeEditable("mass"));
}

TEST_F(ContentItemAttributes, SettingTheLabelSetsTheDisplayName) {
    EXPECT_CALL(*profile, SetDisplayName(kxString("New"), IsHandle("A:1")));
    EXPECT_CALL(*profile, SetAttributeValue).Times(0);
    kxVariant value("New");
    EXPECT_TRUE(content->SetAttributeValue("label", value));
}

TEST_F(ContentItemAttributes, APointerIsNoLabel) {
    EXPECT_CALL(*profile, SetDisplayName).Times(0);
    kxVariant value(static_cast<void*>(this), "kxct::Item");
    EXPECT_FALSE(content->SetAttributeValue("label", value));
}

TEST_F(ContentItemAttributes, SettingAnyOtherNameSetsTheMetadata) {
    EXPECT_CALL(*profile, SetDisplayName).Times(0);
    EXPECT_CALL(*profile, SetAttributeValue(IsHandle("A:1"), kxString("mass"), kxVariant(12.5)));
    kxVariant value(12.5);
    EXPECT_TRUE(content->SetAttributeValue("mass", value));
}

TEST_F(ContentItemAttributes, SettingFailsWithFalse) {
    EXPECT_CALL(*profile, SetAttributeValue).WillOnce(Throw(std::runtime_error("locked")));
    EXPECT_FALSE(content->SetAttributeValue("mass", 12));
    ContentItem alone(manager.get(), nullptr, mock::HandleOf(state));
    EXPECT_FALSE(alone.SetAttributeValue("mass", 12));
}

TEST_F(ContentItemAttributes, SettingLetsOtherExceptionsPass) {
    EXPECT_CALL(*profile, SetAttributeValue).WillOnce(Throw(42));
    EXPECT_THROW(content->SetAttributeValue("mass", 12), int);
}

TEST_F(ContentItemAttributes, DescribesAnAttributeAsItsDefinitionDoes) {
    part->attributes.push_back({.name = "mass",
                                .displayName = "Mass",
                                .description = "With coating",
                                .category = "General",
                                .dataType = "Double",
                                .isSystem = true,
                                .isDisplayable = false,
                                .isMandatory = true,
                                .isEditable = false,
                                .validValues = Names({"1", "2"})});
    const auto describe = [&](const kxString& property) {
        return content->GetAttributeDescription("mass", property);
    };
    EXPECT_EQ(describe(ISEDITABLE), kxVariant(false));
    EXPECT_EQ(describe(ISDISPLAYABLE), kxVariant(false));
    EXPECT_EQ(describe(ISMANDATORY), kxVariant(true));
    EXPECT_EQ(describe(ISSYSTEM), kxVariant(true));
    EXPECT_EQ(describe(CATEGORY), kxVariant("General"));
    EXPECT_EQ(describe(TYPE), kxVariant("Double"));
    EXPECT_EQ(describe(DESCRIPTION), kxVariant("With coating"));
    EXPECT_EQ(describe(DISPLAYNAME), kxVariant("Mass"));
    EXPECT_EQ(describe(VALIDVALUES), kxVariant(Names({"1", "2"})));
    EXPECT_EQ(describe(HASDEPENDENCIES), kxVariant(false));
    EXPECT_TRUE(describe("weight").IsEmpty());
}

TEST_F(ContentItemAttributes, AnAttributeOfAnyValueHasNoValidValues) {
    part->attributes.push_back({.name = "mass"});
    EXPECT_TRUE(content->GetAttributeDescription("mass", VALIDVALUES).IsEmpty());
}

TEST_F(ContentItemAttributes, TheContentDefinitionIsDescribedByFixedAnswers) {
    const auto describe = [&](const kxString& property) {
        return content->GetAttributeDescription(ATTRIBUTE_NAME::CONTENTDEFINITION, property);
    };
    EXPECT_EQ(describe(ISEDITABLE), kxVariant(false));
    EXPECT_EQ(describe(HASDEPENDENCIES), kxVariant(false));
    EXPECT_EQ(describe(ISDISPLAYABLE), kxVariant(true));
    EXPECT_EQ(describe(ISMANDATORY), kxVariant(true));
    EXPECT_EQ(describe(ISSYSTEM), kxVariant(true));
    EXPECT_EQ(describe(DISPLAYNAME), kxVariant("Content Type"));
    EXPECT_TRUE(describe(TYPE).IsEmpty());
}

TEST_F(ContentItemAttributes, TheDefinitionIsAskedForEveryNameAlsoTheContentDefinition) {
    auto asked = boost::make_shared<::testing::StrictMock<mock::MockDefinitions>>();
    ON_CALL(*profile, GetProfileUtils).WillByDefault([asked] {
        return kxudm::UDMProfileUtils(asked);
    });
    EXPECT_CALL(*asked, AttributeDefinition(kxString("UDMPart"), kxString("contentdefinition")))
        .WillOnce(Throw(std::runtime_error("no such attribute")));
    EXPECT_EQ(content->GetAttributeDescription("contentdefinition", ISSYSTEM), kxVariant(true));
    EXPECT_CALL(*asked, AttributeDefinition(kxString("UDMPart"), kxString("mass")))
        .WillOnce(Return(mock::HandleOf(mock::FakeAttribute{.name = "mass"})));
    EXPECT_EQ(content->GetAttributeDescription("mass", ISSYSTEM), kxVariant(false));
}

TEST_F(ContentItemAttributes, TheNameOfAClassificationIsEditableAtRevisionZeroOnly) {
    part->type = "Categories";
    for (const bool byDefinition : {false, true}) {
        part->attributes.clear();
        part->attributes.push_back({.name = "name", .isEditable = byDefinition});
        part->attributes.push_back({.name = "other", .isEditable = byDefinition});
        state->revision = 0;
        EXPECT_EQ(content->GetAttributeDescription("name", ISEDITABLE), kxVariant(true));
        state->revision = 1;
        EXPECT_EQ(content->GetAttributeDescription("name", ISEDITABLE), kxVariant(false));
        EXPECT_EQ(content->GetAttributeDescription("other", ISEDITABLE), kxVariant(byDefinition));
    }
}

TEST_F(ContentItemAttributes, TheNameOfAnythingElseIsEditableAsDefined) {
    part->attributes.push_back({.name = "name", .isEditable = true});
    state->revision = 3;
    EXPECT_EQ(content->GetAttributeDescription("name", ISEDITABLE), kxVariant(true));
}

class ContentItemNameList : public ContentTest {
  protected:
    ContentItemNameList() {
        part->attributes.push_back({.name = "reported"});
        part->attributes.push_back({.name = "fixed", .isEditable = false});
        part->attributes.push_back({.name = "system", .isSystem = true});
        part->attributes.push_back({.name = "hidden", .isDisplayable = false});
        part->attributes.push_back({.name = "plain"});
        state->attributes["reported"] = 1;
        state->attributes["smd_x"] = 2;
        state->systemAttributes.insert("smd_x");
    }
};

TEST_F(ContentItemNameList, AddsEditableNamesOfTheDefinitionToWhatTheHandleReports) {
    EXPECT_THAT(content->GetAttributeNameList(false, false),
                ElementsAre("reported", "smd_x", "system", "hidden", "plain", "contentdefinition"));
}

TEST_F(ContentItemNameList, LeavesOutSystemNamesWhenAsked) {
    EXPECT_THAT(content->GetAttributeNameList(true, false),
                ElementsAre("reported", "hidden", "plain", "contentdefinition"));
}

TEST_F(ContentItemNameList, LeavesOutNamesNotForDisplayWhenAsked) {
    EXPECT_THAT(content->GetAttributeNameList(false, true),
                ElementsAre("reported", "smd_x", "system", "plain", "contentdefinition"));
}

TEST_F(ContentItemNameList, PairsNamesWithDisplayNamesFromTheDefinition) {
    // The definition is looked up by its type, here the same word as its name.
    part->type = "UDMPart";
    part->attributes.back().displayName = "Plain";
    EXPECT_THAT(content->GetAttributeNameDiplaynameMap(true, true),
                ElementsAre("reported", "", "fixed", "", "plain", "Plain"));
    ContentItem alone(manager.get(), nullptr, mock::HandleOf(state));
    EXPECT_TRUE(alone.GetAttributeNameDiplaynameMap(true, true).empty());
}

}  // namespace
}  // namespace kxct::test
