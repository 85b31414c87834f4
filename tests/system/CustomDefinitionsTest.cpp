// Content definitions of a site beside the shipped ones: from a folder that the settings name.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxct/MasterDBManagerImpl.h>
#include <kxct/UDMDBCtrl.h>
#include <kxctinterfaces/Item.h>
#include <kxudm/IUDMProfile.h>

#include <fstream>

#include "Host.h"

namespace fs = std::filesystem;

namespace {

class CustomDefinitions : public testing::Test {
  protected:
    CustomDefinitions() { fs::create_directory(definitions); }

    void Define(const std::string& name, const std::string& attribute) const {
        std::ofstream(definitions / (name + ".xml"))
            << "<catalogue version=\"1\"><definition name=\"" << name
            << "\" base=\"UDMPart\"><attribute name=\"" << attribute
            << "\" type=\"String\" default=\"rubber\"/></definition></catalogue>";
    }
    // What the attribute of a new content is; "none" if the definition is not there.
    static std::string ValueOfANew(kxct::Controller* controller,
                                   const kxString& definition,
                                   const kxString& attribute) {
        kxct::Item* item = controller->CreateContent(definition, "new");
        return item == nullptr ? "none"
                               : controller->GetAttributeValue(item, attribute).GetString();
    }

    TemporaryFolder home;
    const fs::path definitions = home.Path() / "definitions";
    Host host{home.Path()};
};

}  // namespace

TEST_F(CustomDefinitions, AreThereInALibraryThatIsMadeWithThem) {
    Define("Gasket", "material2");
    EXPECT_TRUE(host.Manager().SetCustomEntityDefinitionFolder("local", definitions.string()));
    kxct::Controller* controller = host.Create("Lib");
    EXPECT_EQ(ValueOfANew(controller, "Gasket", "material2"), "rubber");
    EXPECT_EQ(ValueOfANew(controller, "Unknown", "material2"), "none");
    host.Close(controller);
    // The library carries them with it.
    fs::remove_all(definitions);
    EXPECT_EQ(ValueOfANew(host.Open("Lib"), "Gasket", "material2"), "rubber");
}

TEST_F(CustomDefinitions, AreTakenFromTheCommonFolderWhereTheProfileHasNone) {
    Define("Gasket", "material2");
    EXPECT_TRUE(host.Manager().SetCustomEntityDefinitionFolder("common", definitions.string()));
    EXPECT_EQ(ValueOfANew(host.Create("Lib"), "Gasket", "material2"), "rubber");
}

TEST_F(CustomDefinitions, AreTakenAfreshByAReload) {
    host.Manager().SetCustomEntityDefinitionFolder("local", definitions.string());
    kxct::Controller* controller = host.Create("Lib");
    EXPECT_EQ(ValueOfANew(controller, "Gasket", "material2"), "none");
    Define("Gasket", "material2");
    kxct::UDMDBCtrl* session = host.Impl().Open("Lib", "ws", "anna", "", kxct::CONN_TYPE_LIBRARY);
    ASSERT_NE(session, nullptr);
    EXPECT_TRUE(session->GetProfile()->ReloadContentDefinition("Gasket"));
    EXPECT_EQ(ValueOfANew(controller, "Gasket", "material2"), "rubber");
    host.Impl().Close(session);
}

TEST_F(CustomDefinitions, MayHaveBlanksInTheirNames) {
    Define("Flat gasket", "material2");
    host.Manager().SetCustomEntityDefinitionFolder("local", definitions.string());
    kxct::Controller* controller = host.Create("Lib");
    kxct::Item* assembly = controller->CreateContent("UDMAssemblyDM", "bridge");
    ASSERT_NE(assembly, nullptr);
    for (const char* expected : {"ring", "ring_1", "ring_2"}) {
        kxct::Item* made = controller->CreateContent("Flat gasket", "ring", assembly);
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(made->GetDisplayName(), expected);
        kxStlVector<kxct::Item*> children{made};
        EXPECT_TRUE(controller->AddChildren(assembly, children, {"parts"}));
    }
}

TEST_F(CustomDefinitions, ThatAreWrongKeepALibraryFromBeingMadeAndNameTheirFile) {
    std::ofstream(definitions / "broken.xml") << "<catalogue version=\"1\"><definition";
    host.Manager().SetCustomEntityDefinitionFolder("local", definitions.string());
    EXPECT_THAT(host.CreateFailure(host.Libraries(), "Lib"),
                testing::HasSubstr((definitions / "broken.xml").string()));
    EXPECT_FALSE(fs::exists(host.LibraryFile("Lib")));
}
