// Attributes of items and the attribute settings document over them.
#include "tests/controller/ControllerFixture.h"

namespace kxct::test {
namespace {

using mock::IsHandle;
using testing::_;
using testing::ElementsAre;
using testing::IsEmpty;

class ControllerImplAttributes : public ControllerTest {
  protected:
    ControllerImplAttributes() {
        auto& deck = definitions->Add("UDMDeck");
        deck.type = "Deck";
        deck.attributes.push_back({.name = "mass", .displayName = "Mass", .dataType = "Double"});
        deck.attributes.push_back({.name = "state", .displayName = "State"});
        State& state = Entity("A:1", "UDMDeck", "Bridge");
        state.isEditable = true;
        state.attributes["mass"] = kxVariant(12.5);
        state.attributes["state"] = kxVariant("draft");
        item = ItemOf("A:1");
    }

    // Loads an attribute settings document with these elements.
    void Settings(const kxString& content) {
        WriteFile("pa.xml", "<kxct:PASettings>" + content + "</kxct:PASettings>");
        controller->SetAttributeSettingsFile(Path("pa.xml"));
    }
    void DeckSettings() {
        Settings(R"(<ContentDefinition name="Deck">)"
                 R"(<Metadata name="state" displayname="Status" category="Flow"/>)"
                 R"(<Metadata name="owner" displayname="Owner"/>)"
                 R"(</ContentDefinition>)");
    }
    kxStlVector<kxString> Names(bool settingsOnly, bool omitSystem = false) {
        return controller->GetAttributeNameList(item, omitSystem, false, settingsOnly);
    }

    Item* item = nullptr;
};

TEST_F(ControllerImplAttributes, AValueIsTheItems) {
    EXPECT_EQ(controller->GetAttributeValue(item, "mass"), kxVariant(12.5));
    EXPECT_EQ(controller->GetAttributeValue(item, ATTRIBUTE_NAME::LABEL), kxVariant("Bridge"));
}

TEST_F(ControllerImplAttributes, AValueByIdIsTheItems) {
    EXPECT_EQ(controller->GetAttributeValue("A:1", "mass"), kxVariant(12.5));
    EXPECT_CALL(*profile, SetAttributeValue(IsHandle("A:1"), kxString("mass"), kxVariant(3)));
    kxVariant value(3);
    EXPECT_TRUE(controller->SetAttributeValue("A:1", "mass", value));
}

TEST_F(ControllerImplAttributes, AnUnknownIdGivesNoValueAndNoException) {
    EXPECT_TRUE(controller->GetAttributeValue("Z:1", "mass").IsEmpty());
    kxVariant value(3);
    EXPECT_FALSE(controller->SetAttributeValue("Z:1", "mass", value));
}

TEST_F(ControllerImplAttributes, AnIdIsTakenWithItsRevision) {
    EXPECT_CALL(*profile, GetEntity(kxString("A:1"))).Times(testing::AtLeast(1));
    EXPECT_CALL(*profile, GetEntity(kxString("A"))).Times(0);
    controller->GetAttributeValue("A:1", "mass");
}

TEST_F(ControllerImplAttributes, ANullItemAnswersNothing) {
    Item* none = nullptr;
    kxVariant value(3);
    EXPECT_TRUE(controller->GetAttributeValue(none, "mass").IsEmpty());
    EXPECT_FALSE(controller->SetAttributeValue(none, "mass", value));
    EXPECT_FALSE(controller->NextAttributeValue(none, "mass"));
    EXPECT_FALSE(controller->IsAttributeEditable(none, "mass"));
    EXPECT_TRUE(controller->GetAttributeDescription(none, "mass", "displayname").IsEmpty());
    EXPECT_THAT(controller->GetAttributeNameList(none, true, true, true), IsEmpty());
    EXPECT_THAT(controller->GetAttributeNameDiplaynameMap(none, true, true), IsEmpty());
}

TEST_F(ControllerImplAttributes, SettingReachesTheRuntimeAndAnswersTheItems) {
    kxVariant value("final");
    EXPECT_CALL(*profile, SetAttributeValue(IsHandle("A:1"), kxString("state"), value))
        .WillOnce(testing::Return())
        .WillOnce(Fail());
    EXPECT_TRUE(controller->SetAttributeValue(item, "state", value));
    EXPECT_FALSE(controller->SetAttributeValue(item, "state", value));
}

TEST_F(ControllerImplAttributes, SettingAnAttributeOfTheRepositoryRaisesNothing) {
    ItemSpy updated(controller->GetSignalHandler(MANAGER_DEFAULT)->ItemUpdated);
    kxVariant value("final");
    EXPECT_TRUE(controller->SetAttributeValue(item, "state", value));
    EXPECT_FALSE(controller->NextAttributeValue(item, "state"));
    EXPECT_THAT(updated.items, IsEmpty());
}

TEST_F(ControllerImplAttributes, EditableIsWhatTheItemSays) {
    EXPECT_TRUE(controller->IsAttributeEditable(item, "mass"));
    entities["A:1"]->isEditable = false;
    EXPECT_FALSE(controller->IsAttributeEditable(item, "mass"));
}

TEST_F(ControllerImplAttributes, AFailureToReadPasses) {
    EXPECT_THROW(controller->GetAttributeValue(item, "no such"), std::exception);
    EXPECT_THROW(controller->GetAttributeValue("A:1", "no such"), std::exception);
}

TEST_F(ControllerImplAttributes, NamesAreTheItemsFollowedByTheScriptedOnes) {
    controller->RegisterScriptedAttribute("zeta", "p");
    controller->RegisterScriptedAttribute("alpha", "p");
    EXPECT_THAT(Names(false), ElementsAre("mass", "state", "contentdefinition", "alpha", "zeta"));
}

TEST_F(ControllerImplAttributes, ASharedNameStandsTwiceWithoutSettings) {
    controller->RegisterScriptedAttribute("mass", "p");
    EXPECT_THAT(Names(false), ElementsAre("mass", "state", "contentdefinition", "mass"));
}

TEST_F(ControllerImplAttributes, TheFlagsOfTheNameListReachTheItem) {
    entities["A:1"]->systemAttributes.insert("state");
    definitions->Add("X");
    EXPECT_THAT(Names(false, false), testing::Contains("state"));
    EXPECT_EQ(controller->GetAttributeNameList(item, true, false, false),
              item->GetAttributeNameList(true, false));
    EXPECT_EQ(controller->GetAttributeNameList(item, false, true, false),
              item->GetAttributeNameList(false, true));
}

TEST_F(ControllerImplAttributes, TheDisplayNameMapSeesNeitherSettingsNorScripts) {
    auto& plain = definitions->Add("UDMNote");
    plain.type = "UDMNote";
    plain.attributes.push_back({.name = "mass", .displayName = "Mass"});
    plain.attributes.push_back({.name = "stamp", .displayName = "Stamp", .isSystem = true});
    plain.attributes.push_back({.name = "key", .displayName = "Key", .isDisplayable = false});
    Entity("N:1", "UDMNote");
    Settings(R"(<ContentDefinition name="UDMNote"><Metadata name="x" displayname="X"/>)"
             R"(</ContentDefinition>)");
    controller->RegisterScriptedAttribute("cost", "p");
    Item* note = ItemOf("N:1");
    EXPECT_THAT(controller->GetAttributeNameDiplaynameMap(note, true, false),
                ElementsAre("mass", "Mass", "key", "Key"));
    EXPECT_THAT(controller->GetAttributeNameDiplaynameMap(note, false, true),
                ElementsAre("mass", "Mass", "stamp", "Stamp"));
}

TEST_F(ControllerImplAttributes, SettingsComeFirstInTheOrderOfTheDocument) {
    DeckSettings();
    EXPECT_THAT(Names(false), ElementsAre("state", "owner", "mass", "contentdefinition"));
}

TEST_F(ControllerImplAttributes, SettingsOnlyLeavesOutWhatTheDocumentDoesNotName) {
    DeckSettings();
    EXPECT_THAT(Names(true), ElementsAre("state", "owner"));
}

TEST_F(ControllerImplAttributes, ScriptedNamesDoNotShowWhereSettingsKnowTheDefinition) {
    DeckSettings();
    controller->RegisterScriptedAttribute("cost", "p");
    EXPECT_THAT(Names(false), testing::Not(testing::Contains("cost")));
    EXPECT_THAT(Names(true), testing::Not(testing::Contains("cost")));
}

TEST_F(ControllerImplAttributes, SettingsOnlyIsNotLookedAtForAnUnknownDefinition) {
    Settings(R"(<ContentDefinition name="Other"><Metadata name="x" displayname="X"/>)"
             R"(</ContentDefinition>)");
    controller->RegisterScriptedAttribute("cost", "p");
    EXPECT_THAT(Names(true), ElementsAre("mass", "state", "contentdefinition", "cost"));
}

// The document goes by the type of the definition ("Deck"), not by its name ("UDMDeck").
TEST_F(ControllerImplAttributes, SettingsAreFoundByTheTypeOfTheDefinitionExactly) {
    for (const char* name : {"UDMDeck", "deck", "Deck "}) {
        Settings(kxString("<ContentDefinition name=\"") + name +
                 "\"><Metadata name=\"x\" displayname=\"X\"/></ContentDefinition>");
        EXPECT_THAT(Names(true), ElementsAre("mass", "state", "contentdefinition")) << name;
    }
}

TEST_F(ControllerImplAttributes, ADescriptionComesFromTheSettings) {
    DeckSettings();
    EXPECT_EQ(controller->GetAttributeDescription(item, "state", "displayname"),
              kxVariant("Status"));
    EXPECT_EQ(controller->GetAttributeDescription(item, "state", "category"), kxVariant("Flow"));
}

TEST_F(ControllerImplAttributes, WhatTheSettingsLeaveOpenTheItemDescribes) {
    DeckSettings();
    EXPECT_EQ(controller->GetAttributeDescription(item, "mass", "displayname"), kxVariant("Mass"));
    EXPECT_EQ(controller->GetAttributeDescription(item, "state", "type"), kxVariant("String"));
}

TEST_F(ControllerImplAttributes, WithoutSettingsTheItemDescribes) {
    EXPECT_EQ(controller->GetAttributeDescription(item, "state", "displayname"),
              kxVariant("State"));
}

TEST_F(ControllerImplAttributes, AFalseInTheSettingsIsADescription) {
    Settings(R"(<ContentDefinition name="Deck"><Metadata name="mass" displayname="M" )"
             R"(iseditable="0"/></ContentDefinition>)");
    ASSERT_EQ(item->GetAttributeDescription("mass", "iseditable"), kxVariant(true));
    EXPECT_EQ(controller->GetAttributeDescription(item, "mass", "iseditable"), kxVariant(false));
}

TEST_F(ControllerImplAttributes, AnEmptyPathKeepsTheDocument) {
    DeckSettings();
    controller->SetAttributeSettingsFile("");
    EXPECT_THAT(Names(true), ElementsAre("state", "owner"));
}

TEST_F(ControllerImplAttributes, AnotherPathReplacesTheDocument) {
    DeckSettings();
    WriteFile("other.xml",
              R"(<kxct:PASettings><ContentDefinition name="Deck">)"
              R"(<Metadata name="x" displayname="X"/></ContentDefinition></kxct:PASettings>)");
    controller->SetAttributeSettingsFile(Path("other.xml"));
    EXPECT_THAT(Names(true), ElementsAre("x"));
}

TEST_F(ControllerImplAttributes, AnUnreadableFileTakesTheDocumentsPlaceToo) {
    DeckSettings();
    controller->SetAttributeSettingsFile(Path("missing.xml"));
    EXPECT_THAT(Names(true), ElementsAre("mass", "state", "contentdefinition"));
}

}  // namespace
}  // namespace kxct::test
