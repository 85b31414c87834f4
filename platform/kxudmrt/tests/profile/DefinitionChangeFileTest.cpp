// Content definitions taken afresh from the catalogue file.
#include <algorithm>

#include "ChangedDefinitions.h"

namespace kxudm::test {
namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr const char* COUNT = "<attribute name=\"count\" type=\"Integer\"/>";
constexpr const char* DRAWING = "<definition name=\"Drawing\" base=\"Item\"/>";

class DefinitionChangeFile : public ChangedDefinitions {
  protected:
    std::string Reload(const kxString& definition) {
        return Refusal([&] { ann->ReloadContentDefinition(definition); });
    }

    ProfilePtr ann = Open("ann");
};

TEST_F(DefinitionChangeFile, D15_IsTakenForTheDefinitionAskedForAlone) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle note = ann->CreateEntity("Note", "Note");
    EXPECT_FALSE(ann->ReloadContentDefinition("Part"));
    Edit(COUNT,
         std::string(COUNT) + "<attribute name=\"finish\" type=\"String\" default=\"raw\"/>");
    Edit("<attribute name=\"text\" type=\"String\"/>",
         "<attribute name=\"word\" type=\"String\"/>");
    EXPECT_TRUE(ann->ReloadContentDefinition("Part"));
    EXPECT_EQ(part.GetAttributeValue("finish"), kxVariant("raw"));
    EXPECT_THAT(AttributesOf(ann, "Note"), AllOf(Contains("text"), Not(Contains("word"))));
    EXPECT_FALSE(ann->ReloadContentDefinition("Part"));
    EXPECT_TRUE(ann->ReloadContentDefinition("Note"));
    EXPECT_TRUE(note.GetAttributeValue("word").IsEmpty());
}

TEST_F(DefinitionChangeFile, D15_ChangesMoreThanAttributes) {
    Edit(DRAWING,
         "<definition name=\"Drawing\" base=\"Item\" displayname=\"Sheet\" class=\"UDMSheet\""
         " branchable=\"false\" extensions=\"dwg\"><group name=\"views\">"
         "<child definition=\"Drawing\"/></group></definition>");
    const UDMItemHandle drawing = ann->CreateEntity("Drawing", "Front");
    EXPECT_TRUE(ann->ReloadContentDefinition("Drawing"));
    kxString name;
    ann->GetProfileUtils().GetContentDefinitionHandle("Drawing").DisplayName(name);
    EXPECT_EQ(name, "Sheet");
    EXPECT_EQ(ann->GetProfileUtils().GetRegisteredContentDefinitionClassNames().count("UDMSheet"),
              1U);
    ann->CreateAndAddChild("Drawing", "Detail", drawing, "views");
    EXPECT_THAT(Children(ann, drawing), ElementsAre("Detail"));
}

TEST_F(DefinitionChangeFile, D16_BringsADefinitionThatTheLibraryDidNotHave) {
    Edit(DRAWING, std::string(DRAWING) + "<definition name=\"Bolt\" base=\"Part\"/>");
    EXPECT_THROW(ann->CreateEntity("Bolt", "M8"), UDMNotFoundException);
    EXPECT_TRUE(ann->ReloadContentDefinition("Bolt"));
    const UDMItemHandle bolt = ann->CreateEntity("Bolt", "M8");
    EXPECT_EQ(bolt.GetAttributeValue("mass"), kxVariant(1.5));
    EXPECT_THAT(Hits(ann, "class == Part"), ElementsAre("M8"));
}

TEST_F(DefinitionChangeFile, D16_NeedsWhatADefinitionBuildsOnFirst) {
    Edit(DRAWING,
         std::string(DRAWING) +
             "<definition name=\"Bolt\" base=\"Fastener\"/>"
             "<definition name=\"Fastener\" base=\"Part\"/>");
    EXPECT_THAT(Reload("Bolt"),
                AllOf(HasSubstr("\"Bolt\""), HasSubstr("Fastener"), HasSubstr("first")));
    EXPECT_TRUE(ann->ReloadContentDefinition("Fastener"));
    EXPECT_TRUE(ann->ReloadContentDefinition("Bolt"));
}

TEST_F(DefinitionChangeFile, D17_CustomDefinitionsAreReadAfterIt) {
    std::ofstream(custom + "/own.xml")
        << "<catalogue version=\"1\"><definition name=\"Drawing\" base=\"Item\" replace=\"true\">"
           "<attribute name=\"scale\" type=\"Double\" default=\"0.5\"/></definition>"
           "<definition name=\"Own\" base=\"Item\"/></catalogue>";
    const UDMItemHandle drawing = ann->CreateEntity("Drawing", "Front");
    EXPECT_TRUE(ann->ReloadContentDefinition("Drawing"));
    EXPECT_EQ(drawing.GetAttributeValue("scale"), kxVariant(0.5));
    EXPECT_TRUE(ann->ReloadContentDefinition("Own"));
    ann->CreateEntity("Own", "Mine");
}

TEST_F(DefinitionChangeFile, D18_IsCarriedByTheLibraryFromThenOn) {
    Edit(COUNT,
         std::string(COUNT) + "<attribute name=\"finish\" type=\"String\" default=\"raw\"/>");
    const kxString uid = ann->CreateEntity("Part", "Wheel").GetUID();
    EXPECT_TRUE(ann->ReloadContentDefinition("Part"));
    UDMProfileMgr::DiscardProfile(ann);
    std::filesystem::remove(file);
    const ProfilePtr again = Open("ann");
    EXPECT_EQ(again->GetEntity(uid).GetAttributeValue("finish"), kxVariant("raw"));
}

TEST_F(DefinitionChangeFile, D19_ThatCannotServeIsAnErrorAndTheLibraryStaysAsItIs) {
    const std::string good = Text();
    const std::string before = Description(ann, "Part");
    EXPECT_THAT(Refusal<UDMNotFoundException>([&] { ann->ReloadContentDefinition("Nothing"); }),
                AllOf(HasSubstr("\"Nothing\""), HasSubstr(file)));
    Edit(COUNT, "<attribute name=\"count\" type=\"Length\"/>");
    const auto line = 1 + std::count(good.begin(), good.begin() + good.find(COUNT), '\n');
    EXPECT_THAT(Reload("Part"),
                AllOf(HasSubstr(file + ":" + std::to_string(line) + ": "), HasSubstr("Length")));
    // An error anywhere in it speaks against all of it.
    EXPECT_THAT(Reload("Note"), HasSubstr(file));
    Write(good.substr(0, good.size() / 2));
    EXPECT_THAT(Reload("Part"), HasSubstr(file));
    Write("");
    EXPECT_THAT(Reload("Part"), HasSubstr(file));
    std::filesystem::remove(file);
    EXPECT_THAT(Reload("Part"), AllOf(HasSubstr(file), HasSubstr("not there")));
    std::filesystem::create_directory(file);
    EXPECT_THAT(Reload("Part"), AllOf(HasSubstr(file), HasSubstr("regular file")));
    std::filesystem::remove(file);
    Write(good);
    std::ofstream(custom + "/own.xml") << "<catalogue version=\"1\">";
    EXPECT_THAT(Reload("Part"), HasSubstr(custom + "/own.xml"));
    std::filesystem::remove(custom + "/own.xml");
    EXPECT_EQ(Description(ann, "Part"), before);
    EXPECT_FALSE(ann->ReloadContentDefinition("Part"));
}

TEST_F(DefinitionChangeFile, D19_IsNamedByTheParametersOfTheSession) {
    Parameters params = Params("bob");
    params.erase("UDMConfigFile");
    const ProfilePtr bob = library.Keep(UDMProfileMgr::GetProfile(params));
    EXPECT_THAT(Refusal([&] { bob->ReloadContentDefinition("Part"); }), HasSubstr("UDMConfigFile"));
}

TEST_F(DefinitionChangeFile, D20_CannotChangeWhatADefinitionIsUnderItsEntities) {
    const UDMItemHandle drawing = ann->CreateEntity("Drawing", "Front");
    const kxString base = Base(drawing);
    const std::string good = Text();
    const auto refusal = [&](const std::string& declaration) {
        Write(good);
        Edit(DRAWING, declaration);
        return Reload("Drawing");
    };
    EXPECT_THAT(refusal("<definition name=\"Drawing\" base=\"Item\" versioned=\"false\"/>"),
                AllOf(HasSubstr("lose its revisions"), HasSubstr(base)));
    EXPECT_THAT(refusal("<definition name=\"Drawing\" base=\"Item\" abstract=\"true\"/>"),
                AllOf(HasSubstr("abstract"), HasSubstr(base)));
    EXPECT_THAT(refusal("<definition name=\"Drawing\" base=\"Item\" type=\"Categories\"/>"),
                AllOf(HasSubstr("\"Categories\""), HasSubstr(base)));
    Write(good);
    Edit("class=\"UDMLMFoldertype\" versioned=\"false\">", "class=\"UDMLMFoldertype\">");
    UDMItemHandle folder;
    ann->CreateFolder(folder, "/F");
    EXPECT_THAT(Reload("Foldertype"), AllOf(HasSubstr("get revisions"), HasSubstr(Base(folder))));
    // What is deleted may come back.
    ann->DeleteEntity(drawing, true, false);
    EXPECT_THAT(refusal("<definition name=\"Drawing\" base=\"Item\" abstract=\"true\"/>"),
                HasSubstr(base));
}

TEST_F(DefinitionChangeFile, D20_MayChangeWhatADefinitionIsWhileThereAreNone) {
    Edit(DRAWING, "<definition name=\"Drawing\" base=\"Item\" versioned=\"false\"/>");
    EXPECT_TRUE(ann->ReloadContentDefinition("Drawing"));
    const UDMItemHandle drawing = ann->CreateEntity("Drawing", "Front");
    EXPECT_TRUE(Sees(Open("bob"), drawing.GetUID()));
    Edit("<definition name=\"Node\" base=\"Content\">",
         "<definition name=\"Node\" base=\"Content\" abstract=\"true\">");
    EXPECT_TRUE(ann->ReloadContentDefinition("Node"));
    EXPECT_THAT(Refusal([&] { ann->CreateEntity("Node", "N"); }), HasSubstr("abstract"));
}

TEST_F(DefinitionChangeFile, D20_ReachesEntitiesOfDerivedDefinitions) {
    const UDMItemHandle drawing = ann->CreateEntity("Drawing", "Front");
    Edit("<definition name=\"Item\" base=\"Content\" abstract=\"true\"/>",
         "<definition name=\"Item\" base=\"Content\" abstract=\"true\" versioned=\"false\"/>");
    EXPECT_THAT(Reload("Item"), AllOf(HasSubstr("\"Drawing\""), HasSubstr(Base(drawing))));
}

TEST_F(DefinitionChangeFile, D21_CannotTakeAGroupAwayThatHasLinks) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    const UDMItemHandle drawing = ann->CreateAndAddChild("Drawing", "Front", part, "drawings");
    const std::string group = "<group name=\"drawings\" composition=\"true\" maximum=\"2\">";
    const std::string good = Text();
    Edit(group, "<group name=\"sheets\" composition=\"true\" maximum=\"2\">");
    EXPECT_THAT(Reload("Part"),
                AllOf(HasSubstr("\"drawings\""), HasSubstr("would go"), HasSubstr(Base(part))));
    Write(good);
    Edit(group, "<group name=\"drawings\" maximum=\"2\">");
    EXPECT_THAT(Reload("Part"), AllOf(HasSubstr("\"drawings\""), HasSubstr("another way")));
    Write(good);
    Edit(group, "<group name=\"drawings\" category=\"reference\">");
    EXPECT_THAT(Reload("Part"), HasSubstr("\"drawings\""));
    // Narrower than what is there: that stays, and counts for what is added.
    Write(good);
    Edit(group + "\n      <child definition=\"Drawing\"/>",
         "<group name=\"drawings\" composition=\"true\" maximum=\"1\"><child"
         " definition=\"Note\"/>");
    EXPECT_TRUE(ann->ReloadContentDefinition("Part"));
    EXPECT_THAT(Children(ann, part), ElementsAre("Front"));
    EXPECT_THROW(ann->CreateAndAddChild("Drawing", "Side", part, "drawings"), UDMException);
    EXPECT_THROW(ann->CreateAndAddChild("Note", "Hint", part, "drawings"), UDMException);
}

TEST_F(DefinitionChangeFile, D21_MayTakeAGroupAwayThatIsEmpty) {
    Edit(
        "<group name=\"uses\" category=\"reference\">\n      <child definition=\"Item\"/>\n"
        "    </group>\n  </definition>\n  <definition name=\"Drawing\"",
        "</definition>\n  <definition name=\"Drawing\"");
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    EXPECT_TRUE(ann->ReloadContentDefinition("Part"));
    kxStlVector<kxString> groups;
    ann->GetProfileUtils().GetGroupNames("Part", groups, "");
    EXPECT_THAT(groups, ElementsAre("drawings", "parts", "notes"));
    EXPECT_THAT(Children(ann, part), IsEmpty());
}

TEST_F(DefinitionChangeFile, D22_LosesNoValue) {
    const UDMItemHandle part = ann->CreateEntity("Part", "Wheel");
    ann->SetAttributeValue(part, "count", 4);
    const std::string good = Text();
    Edit(COUNT, "<attribute name=\"count\" type=\"Boolean\"/>");
    EXPECT_THAT(Reload("Part"), HasSubstr("\"4\" of \"count\" in " + part.GetUID()));
    Write(good);
    Edit(COUNT, "");
    EXPECT_TRUE(ann->ReloadContentDefinition("Part"));
    EXPECT_THROW(part.GetAttributeValue("count"), UDMNotFoundException);
    Write(good);
    EXPECT_TRUE(ann->ReloadContentDefinition("Part"));
    EXPECT_EQ(part.GetAttributeValue("count"), kxVariant(4));
}

}  // namespace
}  // namespace kxudm::test
