#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>

#include "Support.h"

namespace kxudm::catalogue::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class CatalogueFiles : public ::testing::Test {
  protected:
    CatalogueFiles() {
        std::string pattern = (std::filesystem::temp_directory_path() / "catalogueXXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        _folder = pattern;
        std::filesystem::create_directory(_folder / "custom");
    }

    ~CatalogueFiles() override {
        std::error_code ignored;
        std::filesystem::remove_all(_folder, ignored);
    }

    kxString Path(const std::string& name) const { return (_folder / name).string(); }

    kxString Write(const std::string& name, std::string_view body) const {
        std::ofstream(_folder / name, std::ios::binary) << Document(body);
        return Path(name);
    }

    std::filesystem::path _folder;
};

TEST_F(CatalogueFiles, AreReadOneByOne) {
    const kxString path = Write("main.xml", "<definition name='A'/>");
    EXPECT_THAT(Catalogue::ReadFile(path)->Names(), ElementsAre("A"));
}

TEST_F(CatalogueFiles, OfTheCustomFolderComeAfterTheMainOneInOrderOfNames) {
    const kxString path = Write("main.xml", "<definition name='A'/>");
    Write("custom/b.xml", "<definition name='B' base='C'/>");
    Write("custom/a.xml", "<definition name='C' base='A'/>");
    Write("custom/Z.xml", "<definition name='Z'/>");
    EXPECT_THAT(Catalogue::ReadFiles(path, Path("custom"))->Names(),
                ElementsAre("A", "Z", "C", "B"));
}

TEST_F(CatalogueFiles, ThatAreNotXmlOrLieDeeperAreLeftAlone) {
    const kxString path = Write("main.xml", "<definition name='A'/>");
    Write("custom/a.xml.bak", "nonsense");
    Write("custom/readme.txt", "nonsense");
    std::filesystem::create_directories(_folder / "custom/deeper.xml");
    Write("custom/deeper.xml/a.xml", "nonsense");
    EXPECT_THAT(Catalogue::ReadFiles(path, Path("custom"))->Names(), ElementsAre("A"));
}

TEST_F(CatalogueFiles, OfAFolderThatIsNotThereAreNone) {
    const kxString path = Write("main.xml", "<definition name='A'/>");
    EXPECT_THAT(Catalogue::ReadFiles(path, Path("nowhere"))->Names(), ElementsAre("A"));
    EXPECT_THAT(Catalogue::ReadFiles(path, "")->Names(), ElementsAre("A"));
}

TEST_F(CatalogueFiles, MayReplaceADefinitionInItsPlace) {
    const kxString path =
        Write("main.xml", "<definition name='A'/><definition name='B' base='A'/>");
    Write("custom/a.xml", "<definition name='A' type='Mine' replace='true'/>");
    const auto catalogue = Catalogue::ReadFiles(path, Path("custom"));
    EXPECT_THAT(catalogue->Names(), ElementsAre("A", "B"));
    EXPECT_EQ(catalogue->Get("B").Type(), "Mine");
}

TEST_F(CatalogueFiles, DoNotReplaceADefinitionUnasked) {
    const kxString path = Write("main.xml", "<definition name='A'/>");
    const kxString custom = Write("custom/a.xml", "\n<definition name='A'/>");
    EXPECT_EQ(Refusal([&] { Catalogue::ReadFiles(path, Path("custom")); }),
              Printable(custom) + ":3: definition 'A' is there already (" + Printable(path) +
                  ":2); replace=\"true\" replaces it");
}

TEST_F(CatalogueFiles, WithAnErrorAreRefusedByFileAndLine) {
    const kxString path = Write("main.xml", "<definition name='A'/>");
    const kxString custom = Write("custom/a.xml", "\n\n<definition name='B' base='C'/>");
    EXPECT_EQ(Refusal([&] { Catalogue::ReadFiles(path, Path("custom")); }),
              Printable(custom) + ":4: definition 'B' has the unknown base 'C'");
}

TEST_F(CatalogueFiles, ThatCantBeReadAreNamed) {
    EXPECT_EQ(Refusal([&] { Catalogue::ReadFile(Path("none.xml")); }),
              "catalogue file '" + Printable(Path("none.xml")) +
                  "': is not there; expected is a readable XML file");
    EXPECT_THAT(Refusal([&] { Catalogue::ReadFile(Path("custom")); }),
                HasSubstr("is not a regular file"));
    EXPECT_THAT(Refusal([&] { Catalogue::ReadFile(Write("a", "") + "/below"); }),
                StartsWith("catalogue file '"));
    EXPECT_THAT(Refusal([&] { Catalogue::ReadFile(""); }), StartsWith("catalogue file ''"));
}

TEST_F(CatalogueFiles, AFileInPlaceOfTheCustomFolderIsRefused) {
    const kxString path = Write("main.xml", "<definition name='A'/>");
    EXPECT_THAT(Refusal([&] { Catalogue::ReadFiles(path, path); }),
                StartsWith("folder of custom definitions '"));
}

TEST_F(CatalogueFiles, HaveAtMostSixteenMebibytesTogether) {
    const kxString path = Write("main.xml", "<!--" + std::string(9U << 20U, ' ') + "-->");
    EXPECT_NO_THROW(Catalogue::ReadFile(path));
    Write("custom/a.xml", "<!--" + std::string(9U << 20U, ' ') + "-->");
    EXPECT_THAT(Refusal([&] { Catalogue::ReadFiles(path, Path("custom")); }),
                HasSubstr("the files of a catalogue have more than 16 MiB together"));
}

}  // namespace
}  // namespace kxudm::catalogue::testing
