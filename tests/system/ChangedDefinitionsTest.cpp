// Content definitions that change while contents of them are there, as a host changes them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/KXCTFramework.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/Settings.h>
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Item.h>
#include <kxctinterfaces/Metadata.h>

#include <algorithm>
#include <fstream>
#include <sstream>

#include "Host.h"

namespace fs = std::filesystem;

using kxct::Item;
using kxct::Metadata;
using testing::AllOf;
using testing::HasSubstr;

namespace {

using Attributes = kxStlVector<Metadata>;

Metadata Attribute(const kxString& name, const kxString& type, const kxString& defaultValue = "") {
    return {name, name, "", defaultValue, type, "", false, true, true, {}};
}

std::string Text(const Attributes& attributes) {
    std::string text;
    for (const Metadata& each : attributes) {
        text += each.name + "|" + each.type + "|" + each.displayName + "|" + each.description +
                "|" + each.defaultValue + "|" + each.category + "|" + (each.flagA ? "A" : "a") +
                (each.flagB ? "B" : "b") + (each.flagC ? "C" : "c") + "|" +
                kxVariant(each.validValues).GetString() + "\n";
    }
    return text;
}

// A host whose settings name a catalogue file of its own.
class ChangedDefinitions : public testing::Test {
  protected:
    static const fs::path& WithOwnCatalogue(const fs::path& home, const fs::path& catalogue) {
        fs::copy_file(KXCT_DATA_DIR "/catalogue/engineering.xml", catalogue);
        kxct::Settings settings(KXCT_DATA_DIR "/settings/default.xml",
                                (home / "settings.xml").string());
        const kxString branch = "common/System/" + kxct::KXCTFramework::GetCurrentVersion();
        settings.Set(branch + "/MasterDB", "/" + (home / "master.mdb").string());
        settings.Set(branch + "/UDMSettings", catalogue.string());
        settings.Write();
        return home;
    }

    ~ChangedDefinitions() override { host.Impl().Close(session); }

    Attributes Read(const kxString& definition) {
        Attributes attributes;
        session->GetContentDefinitionMetadata(definition, attributes);
        return attributes;
    }
    bool Add(const kxString& definition, const Metadata& attribute) {
        Attributes attributes = Read(definition);
        attributes.push_back(attribute);
        return session->UpdateContentDefinition(definition, attributes);
    }
    std::string Refusal(const kxString& definition, Attributes attributes) {
        try {
            session->UpdateContentDefinition(definition, attributes);
        } catch (const std::exception& failure) {
            return failure.what();
        }
        ADD_FAILURE() << "nothing was refused";
        return {};
    }
    void Edit(const std::string& from, const std::string& to) const {
        std::stringstream read;
        read << std::ifstream(catalogue).rdbuf();
        std::string text = read.str();
        const std::size_t place = text.find(from);
        ASSERT_NE(place, std::string::npos);
        std::ofstream(catalogue) << text.replace(place, from.size(), to);
    }
    kxVariant Value(Item* item, const kxString& attribute) {
        return controller->GetAttributeValue(item, attribute);
    }
    std::size_t Hits(const kxString& query) {
        kxStlVector<Item*> hits;
        return controller->Query(query, hits, 0, kxct::QUERY_ATTRIBUTES, 0, 0, false, false);
    }

    TemporaryFolder home;
    const fs::path catalogue = home.Path() / "definitions.xml";
    Host host{WithOwnCatalogue(home.Path(), catalogue)};
    kxct::Controller* controller = host.Create("Demo");
    kxct::UDMDBCtrl* session = host.Impl().Open("Demo", "ws", "anna", "", kxct::CONN_TYPE_LIBRARY);
};

}  // namespace

TEST_F(ChangedDefinitions, WhatWasReadAndIsGivenBackChangesNothing) {
    for (const kxString& definition : session->GetContentDefinitionNames()) {
        Attributes attributes = Read(definition);
        const std::string before = Text(attributes);
        EXPECT_FALSE(session->UpdateContentDefinition(definition, attributes)) << definition;
        EXPECT_EQ(Text(Read(definition)), before);
        EXPECT_FALSE(session->UpdateContentDefinition(definition)) << definition;
    }
}

TEST_F(ChangedDefinitions, EachFlagComesBackInItsPlace) {
    for (const int flags : {1, 2, 4}) {
        Metadata attribute = Attribute("flags" + std::to_string(flags), "String");
        attribute.flagA = flags == 1;
        attribute.flagB = flags == 2;
        attribute.flagC = flags == 4;
        EXPECT_TRUE(Add("UDMPart", attribute));
        const Metadata read = Read("UDMPart").back();
        EXPECT_EQ(read.flagA, flags == 1);
        EXPECT_EQ(read.flagB, flags == 2);
        EXPECT_EQ(read.flagC, flags == 4);
    }
}

TEST_F(ChangedDefinitions, AnAddedAttributeIsThereInContentsAndQueries) {
    Item* part = controller->CreateContent("UDMPart", "bolt");
    ASSERT_NE(part, nullptr);
    EXPECT_TRUE(Add("UDMPart", Attribute("finish", "String", "raw")));
    EXPECT_EQ(Value(part, "finish"), kxVariant("raw"));
    EXPECT_EQ(Hits("attrib.finish == raw"), 1U);
    kxVariant zinc("zinc");
    EXPECT_TRUE(part->SetAttributeValue("finish", zinc));
    EXPECT_EQ(Hits("attrib.finish == raw"), 0U);
    Attributes attributes = Read("UDMPart");
    attributes.pop_back();
    EXPECT_TRUE(controller->UpdateContentDefinition("UDMPart", attributes));
    EXPECT_THROW(Value(part, "finish"), std::exception);
    EXPECT_TRUE(Add("UDMPart", Attribute("finish", "String")));
    EXPECT_EQ(Value(part, "finish"), kxVariant("zinc"));
}

TEST_F(ChangedDefinitions, AValueThatWouldBeLostIsNamedWithItsContent) {
    EXPECT_TRUE(Add("UDMPart", Attribute("length", "Double")));
    Item* part = controller->CreateContent("UDMPart", "bolt");
    ASSERT_NE(part, nullptr);
    kxVariant length(2.5);
    EXPECT_TRUE(part->SetAttributeValue("length", length));
    Attributes attributes = Read("UDMPart");
    attributes.back().type = "Integer";
    EXPECT_THAT(Refusal("UDMPart", attributes),
                AllOf(HasSubstr("UpdateContentDefinition"),
                      HasSubstr("\"2.5\" of \"length\" in " + part->GetUID())));
    // The controller tells no more than that it was not done.
    EXPECT_FALSE(controller->UpdateContentDefinition("UDMPart", attributes));
    EXPECT_EQ(Value(part, "length"), kxVariant(2.5));
    attributes.back().type = "String";
    EXPECT_TRUE(controller->UpdateContentDefinition("UDMPart", attributes));
    EXPECT_EQ(Value(part, "length"), kxVariant("2.5"));
}

TEST_F(ChangedDefinitions, ADefinitionIsTakenAfreshFromTheFileOfTheSettings) {
    Item* part = controller->CreateContent("UDMPart", "bolt");
    ASSERT_NE(part, nullptr);
    Edit("</catalogue>", "<definition name=\"Rivet\" base=\"UDMPart\"/></catalogue>");
    EXPECT_EQ(controller->CreateContent("Rivet", "r"), nullptr);
    EXPECT_TRUE(session->UpdateContentDefinition("Rivet"));
    EXPECT_NE(controller->CreateContent("Rivet", "r"), nullptr);
    EXPECT_THROW(session->UpdateContentDefinition("Nothing"), std::exception);
    Edit("</catalogue>", "");
    try {
        session->UpdateContentDefinition("Rivet");
        FAIL() << "a damaged file was taken";
    } catch (const std::exception& failure) {
        EXPECT_THAT(failure.what(), HasSubstr(catalogue.string()));
    }
    EXPECT_FALSE(controller->UpdateContentDefinition("Rivet"));
    EXPECT_NE(controller->CreateContent("Rivet", "r"), nullptr);
}

TEST_F(ChangedDefinitions, AreSeenByAnotherUserAtTheNextCall) {
    Item* part = controller->CreateContent("UDMPart", "bolt");
    ASSERT_NE(part, nullptr);
    ASSERT_TRUE(part->Persist("first", false));
    kxct::Controller* other = host.Create("Demo", "theirs", "bert");
    ASSERT_NE(other, nullptr);
    Item* seen = other->GetItem(part->GetUID(), true);
    ASSERT_NE(seen, nullptr);
    EXPECT_TRUE(Add("UDMPart", Attribute("finish", "String", "raw")));
    EXPECT_EQ(other->GetAttributeValue(seen, "finish"), kxVariant("raw"));
}
