// The catalogue that is shipped.
#include <cstdint>
#include <utility>

#include "Support.h"

namespace kxudm::catalogue::testing {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsSupersetOf;
using ::testing::Not;

const Catalogue& Engineering() {
    static const auto catalogue = Catalogue::ReadFile(KXUDMRT_TEST_CATALOGUE);
    return *catalogue;
}

TEST(EngineeringCatalogue, ReadsBackFromItsOwnText) {
    EXPECT_TRUE(*Catalogue::ReadText(Engineering().ToXml(), "copy") == Engineering());
}

TEST(EngineeringCatalogue, HasOneAbstractRootThatEverythingInherits) {
    for (const auto& definition : Engineering().Definitions()) {
        EXPECT_TRUE(definition->IsDerivedFrom("Content")) << definition->Name();
        for (const char* attribute : {"name",
                                      "displayname",
                                      "description",
                                      "filetype",
                                      "smd_contentrevision",
                                      "smd_createduser",
                                      "smd_creatime",
                                      "smd_ctime",
                                      "smd_user",
                                      "smd_folder",
                                      "smd_comment",
                                      "smd_filehash"}) {
            EXPECT_NE(definition->FindAttribute(attribute), nullptr)
                << definition->Name() << ' ' << attribute;
        }
    }
    EXPECT_TRUE(Engineering().Get("Content").IsAbstract());
}

TEST(EngineeringCatalogue, KeepsWhatBeginsWithSmdForTheSystem) {
    for (const auto& definition : Engineering().Definitions()) {
        for (const AttributeDefinition* attribute : definition->Attributes()) {
            const bool reserved = attribute->name.starts_with("smd_");
            EXPECT_EQ(attribute->system, reserved) << attribute->name;
            EXPECT_EQ(attribute->editable, !reserved) << attribute->name;
        }
    }
}

TEST(EngineeringCatalogue, HasUnversionedFoldersThatTakeEverything) {
    const ContentDefinition& folder = Engineering().Get("Foldertype");
    EXPECT_EQ(folder.Type(), "Foldertype");
    EXPECT_FALSE(folder.IsVersioned());
    EXPECT_THAT(Engineering().GroupNames("Foldertype", "folder"), ElementsAre("folder"));
    for (const auto& definition : Engineering().Definitions()) {
        EXPECT_TRUE(definition->IsAllowedIn(*folder.FindGroup("folder"))) << definition->Name();
    }
}

TEST(EngineeringCatalogue, HasVersionedClassificationsForEverythingButFolders) {
    const ContentDefinition& category = Engineering().Get("Categories");
    EXPECT_EQ(category.Type(), "Categories");
    EXPECT_TRUE(category.IsVersioned());
    EXPECT_THAT(Engineering().GroupNames("Categories", "category"), ElementsAre("category"));
    const auto children = Engineering().AllowedChildren("Categories", "category");
    EXPECT_THAT(children, IsSupersetOf({"Categories", "UDMPart", "Document"}));
    EXPECT_THAT(children, Not(Contains("Foldertype")));
}

TEST(EngineeringCatalogue, ShowsIconRulesTheTypesTheyKnow) {
    EXPECT_EQ(Engineering().Get("UDMCTEntityCollector").Type(), "UDMCTEntityCollector");
    EXPECT_EQ(Engineering().Get("UDMPart").Type(), "UDMPart");
}

TEST(EngineeringCatalogue, ChoosesDefinitionsByExtension) {
    for (const auto& [extension, name] :
         std::initializer_list<std::pair<const char*, const char*>>{{"inp", "UDMDSFileDeck"},
                                                                    {"dat", "UDMDSFileDeck"},
                                                                    {"fem", "UDMDSFileDeck"},
                                                                    {"bdf", "UDMDSFileDeck"},
                                                                    {"nas", "UDMDSFileDeck"},
                                                                    {"K", "UDMDSFileDeck"},
                                                                    {"frd", "UDMDSFileResult"},
                                                                    {"step", "UDMDSFileCAD"},
                                                                    {"stl", "UDMDSFileMesh"},
                                                                    {"md", "TextDocument"},
                                                                    {"pdf", "OfficeDocument"},
                                                                    {"PNG", "ImageDocument"},
                                                                    {"nothing-known", "Document"},
                                                                    {"", "Document"}}) {
        ASSERT_NE(Engineering().ForExtension(extension), nullptr) << extension;
        EXPECT_EQ(Engineering().ForExtension(extension)->Name(), name) << extension;
    }
}

TEST(EngineeringCatalogue, GivesEveryFileItsSizeAndTime) {
    for (const auto& definition : Engineering().Definitions()) {
        if (definition->FileExtensions().empty()) {
            continue;
        }
        EXPECT_EQ(definition->CheckedValue("filesize", "5000000000"),
                  kxVariant(std::int64_t{5000000000}));
        EXPECT_NO_THROW(definition->CheckedValue("filelastmodified", "2026-01-31T12:00:00Z"));
        EXPECT_FALSE(definition->IsAbstract()) << definition->Name();
    }
}

TEST(EngineeringCatalogue, LetsASimulationOwnItsDecksResultsAndReports) {
    EXPECT_THAT(Engineering().AllowedChildren("UDMSimulation", "inputdecks"),
                ElementsAre("UDMDSFileMesh", "UDMDSFileDeck"));
    EXPECT_THAT(Engineering().AllowedChildren("UDMSimulation", "results"),
                ElementsAre("UDMDSFileResult"));
    EXPECT_THAT(Engineering().AllowedChildren("UDMSimulation", "reports"), Contains("UDMReport"));
    EXPECT_TRUE(Engineering().Get("UDMSimulation").FindGroup("results")->composition);
}

TEST(EngineeringCatalogue, LetsAssembliesShareParts) {
    EXPECT_THAT(Engineering().AllowedChildren("UDMAssemblyDM", "parts"),
                ElementsAre("UDMPart", "UDMAssemblyDM"));
    EXPECT_FALSE(Engineering().Get("UDMAssemblyDM").FindGroup("parts")->composition);
    EXPECT_THAT(Engineering().AllowedChildren("UDMPart", "representations"),
                ElementsAre("UDMRepPartCad", "UDMRepPartMesh", "UDMRepConn"));
}

}  // namespace
}  // namespace kxudm::catalogue::testing
