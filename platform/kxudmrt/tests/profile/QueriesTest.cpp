// Queries through a session: searches of the library, and listings thinned out by an expression.
#include <fstream>

#include "Library.h"

namespace kxudm::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class Queries : public testing::Test {
  protected:
    UDMItemHandle Part(const kxString& name, double mass) {
        const UDMItemHandle part = ann->CreateEntity("Part", name);
        ann->SetAttributeValue(part, "mass", mass);
        return part;
    }

    std::size_t Run(const kxString& query,
                    long from = 0,
                    long to = 0,
                    bool rootsOnly = false,
                    const UDMQuerySettingHandle& settings = {}) {
        found.clear();
        return ann->RunQuery(found, query, -1, from, to, settings, rootsOnly, false);
    }
    Names Hits(const kxString& query) {
        Run(query);
        return DisplayNames(found);
    }
    Names Thinned(const UDMItemHandle& parent, const kxString& group, const kxString& expression) {
        kxStlVector<UDMItemHandle> children;
        ann->GetChildren(children, parent, group, expression);
        EXPECT_EQ(ann->GetChildCount(parent, group, expression), children.size());
        return DisplayNames(children);
    }

    Library library;
    ProfilePtr ann = library.Open("ann");
    UDMItemHandle wheel = Part("Wheel", 8);
    UDMItemHandle rim = Part("Rim", 2.5);
    kxStlVector<UDMItemHandle> found;
};

TEST_F(Queries, FindEntitiesByDefinitionAndAttributes) {
    ann->CreateEntity("Drawing", "Rim");
    EXPECT_THAT(Hits("type == Part && attrib.mass > 2"), ElementsAre("Wheel", "Rim"));
    EXPECT_THAT(Hits("class == Item && name == Rim"), ElementsAre("Rim", "Rim"));
    EXPECT_THAT(Hits("id == \"" + rim.GetUID() + "\""), ElementsAre("Rim"));
    EXPECT_THAT(Hits("attrib.smd_createduser == ann && attrib.smd_ctype == Drawing"),
                ElementsAre("Rim"));
}

TEST_F(Queries, GiveTheStatesThatTheSessionHas) {
    EXPECT_EQ(Run("name == Rim"), 1U);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].State(), rim.State());
}

TEST_F(Queries, AppendToTheHitsThatAreThere) {
    found.push_back(wheel);
    EXPECT_EQ(ann->RunQuery(found, "name == Rim", -1, 0, 0, {}, false, false), 1U);
    EXPECT_THAT(DisplayNames(found), ElementsAre("Wheel", "Rim"));
}

TEST_F(Queries, ThatAreEmptyFindEveryRootEntity) {
    ann->AddChild(wheel, rim, "parts");
    EXPECT_THAT(Hits(""), ElementsAre("Wheel"));
    EXPECT_THAT(Hits("  "), ElementsAre("Wheel"));
    EXPECT_THAT(Hits("type == Part"), ElementsAre("Wheel", "Rim"));
    EXPECT_EQ(Run("type == Part", 0, 0, true), 1U);
    EXPECT_THAT(DisplayNames(found), ElementsAre("Wheel"));
}

TEST_F(Queries, CutARangeAndCountAllHits) {
    Part("Hub", 1);
    EXPECT_EQ(Run("type == Part", 1, 2), 3U);
    EXPECT_THAT(DisplayNames(found), ElementsAre("Rim"));
    EXPECT_EQ(Run("type == Part", 2, 9), 3U);
    EXPECT_THAT(DisplayNames(found), ElementsAre("Hub"));
    EXPECT_EQ(Run("type == Part", 2, 2), 3U);
    EXPECT_THAT(found, IsEmpty());
    EXPECT_THAT(Refusal([&] { Run("", -1, 2); }), HasSubstr("Hits -1 up to 2"));
    EXPECT_THAT(Refusal([&] { Run("", 3, 2); }), HasSubstr("Hits 3 up to 2"));
}

TEST_F(Queries, IgnoreCaseAndAccentsUnlessToldOtherwise) {
    ann->SetDisplayName(
        "R\xC3\xA4"
        "dchen",
        rim);
    UDMQuerySettingHandle exact;
    exact.GetSettings().SetIgnoreCase(false);
    EXPECT_EQ(Run("attrib.displayname like RAD"), 1U);
    EXPECT_EQ(Run("attrib.displayname like RAD", 0, 0, false, exact), 0U);
    EXPECT_EQ(Run("attrib.displayname like \"R\xC3\xA4\"", 0, 0, false, exact), 1U);
}

TEST_F(Queries, FindWhatIsExcludedFromSearchOnlyWhenAsked) {
    const std::string custom = library.Folder().File("custom");
    std::filesystem::create_directory(custom);
    std::ofstream(custom + "/secret.xml")
        << "<catalogue version=\"1\"><definition name=\"Secret\" base=\"Item\""
           " excludedfromsearch=\"true\"/></catalogue>";
    Parameters params = library.Params();
    params["RepositoryName"] = "Other";
    params["CustomEntityDefinitionsFolder"] = custom;
    ann = library.Keep(UDMProfileMgr::GetProfile(params));
    ann->CreateEntity("Secret", "S");
    EXPECT_EQ(Run("type == Secret"), 0U);
    EXPECT_EQ(Run(""), 0U);
    UDMQuerySettingHandle all;
    all.GetSettings().SearchInExcluded(true);
    EXPECT_EQ(Run("type == Secret", 0, 0, false, all), 1U);
    EXPECT_EQ(Run("", 0, 0, false, all), 1U);
}

TEST_F(Queries, FindAtOnceWhatWasChanged) {
    EXPECT_THAT(Hits("attrib.mass == 2.5"), ElementsAre("Rim"));
    ann->SetAttributeValue(wheel, "mass", 2.5);
    ann->DeleteEntity(rim, true, false);
    EXPECT_THAT(Hits("attrib.mass == 2.5"), ElementsAre("Wheel"));
}

TEST_F(Queries, OfOthersDoNotFindDrafts) {
    const ProfilePtr bob = library.Open("bob");
    const UDMItemHandle note = ann->CreateEntity("Note", "open to all");
    kxStlVector<UDMItemHandle> hits;
    EXPECT_EQ(bob->RunQuery(hits, "class == Content", -1, 0, 0, {}, false, false), 1U);
    EXPECT_THAT(DisplayNames(hits), ElementsAre("open to all"));
}

TEST_F(Queries, SeeOnesOwnWorkingRevisionAndOthersThePublishedOne) {
    const ProfilePtr bob = library.Open("bob");
    const auto masses = [&](const ProfilePtr& session, const kxString& mass) {
        kxStlVector<UDMItemHandle> hits;
        session->RunQuery(
            hits, "name == Rim && attrib.mass == " + mass, -1, 0, 0, {}, false, false);
        return hits.size();
    };
    const kxString base = rim.GetUID().substr(0, rim.GetUID().find(':'));
    const auto newest = [&] { return ann->GetEntity(base); };
    ann->PersistEntity(newest(), "first", false, true, true);
    EXPECT_EQ(masses(bob, "2.5"), 1U);
    ann->Checkout(newest(), "");
    ann->SetAttributeValue(newest(), "mass", 3.0);
    EXPECT_EQ(masses(ann, "3"), 1U);
    EXPECT_EQ(masses(ann, "2.5"), 0U);
    EXPECT_EQ(masses(bob, "3"), 0U);
    EXPECT_EQ(masses(bob, "2.5"), 1U);
    EXPECT_EQ(Run("name == Rim && attrib.smd_contentrevision == 2"), 1U);
    ann->PersistEntity(newest(), "second", false, true, true);
    EXPECT_EQ(masses(bob, "3"), 1U);
    EXPECT_EQ(masses(bob, "2.5"), 0U);
    ann->Checkout(newest(), "");
    ann->SetAttributeValue(newest(), "mass", 4.0);
    ann->UndoCheckout(newest());
    EXPECT_EQ(masses(ann, "4"), 0U);
    EXPECT_EQ(masses(ann, "3"), 1U);
}

TEST_F(Queries, ThatAreNoneAreRefusedWithPositionAndExpectation) {
    EXPECT_THAT(Refusal([&] { Run("mass > 2"); }),
                testing::AllOf(HasSubstr("character 1 at \"mass\""), HasSubstr("attrib.NAME")));
    EXPECT_THAT(Refusal([&] { Run("attrib.weight > 2"); }), HasSubstr("\"weight\""));
    EXPECT_THAT(Refusal([&] { Thinned(wheel, "parts", "name =="); }), HasSubstr("character 8 "));
    EXPECT_THAT(Refusal([&] { ann->GetChildCount(wheel, "parts", "name"); }), HasSubstr("like"));
    EXPECT_THAT(Refusal([&] { ann->GetClassifications(found, "name"); }), HasSubstr("like"));
}

TEST_F(Queries, OfAnUnknownModeAreRefused) {
    for (const auto& [mode, fullText] :
         std::vector<std::pair<int, bool>>{{3, true}, {-2, true}, {-1, true}, {0, false}}) {
        EXPECT_THAT(Refusal([&] { ann->RunQuery(found, "", mode, 0, 0, {}, false, fullText); }),
                    HasSubstr("query mode " + std::to_string(mode)));
    }
}

TEST_F(Queries, ThinOutChildrenOfAGroupOrOfAll) {
    for (const char* name : {"b", "A", "a1", "a2"}) {
        ann->CreateAndAddChild("Part", name, wheel, "parts");
    }
    ann->CreateAndAddChild("Drawing", "a3", wheel, "drawings");
    EXPECT_THAT(Thinned(wheel, "parts", "name like a"), ElementsAre("a1", "a2"));
    EXPECT_THAT(Thinned(wheel, "", "name like a"), ElementsAre("a3", "a1", "a2"));
    EXPECT_THAT(Thinned(wheel, "", "type == Drawing"), ElementsAre("a3"));
    EXPECT_THAT(Thinned(wheel, "owner", "!(name like \"a*\")"), ElementsAre("b", "A"));
    EXPECT_THAT(Thinned(wheel, "parts", "name == x"), IsEmpty());
    EXPECT_THAT(Thinned(wheel, "parts", " "), ElementsAre("b", "A", "a1", "a2"));
}

TEST_F(Queries, ThinOutAListingThatTheSessionKnowsAlready) {
    const UDMItemHandle a = ann->CreateAndAddChild("Part", "a", wheel, "parts");
    ann->CreateAndAddChild("Part", "b", wheel, "parts");
    EXPECT_THAT(Children(ann, wheel, "parts"), ElementsAre("a", "b"));
    EXPECT_THAT(Thinned(wheel, "parts", "attrib.mass == 1.5"), ElementsAre("a", "b"));
    ann->SetAttributeValue(a, "mass", 3.0);
    EXPECT_THAT(Thinned(wheel, "parts", "attrib.mass == 1.5"), ElementsAre("b"));
    EXPECT_THAT(Children(ann, wheel, "parts"), ElementsAre("a", "b"));
}

TEST_F(Queries, ThinOutReferencesAndWhatLiesInFolders) {
    UDMItemHandle folder;
    ann->GetOrCreateFolder(folder, "/A/B", true);
    UDMItemHandle top;
    ann->GetFolder(top, "/A", false);
    ann->MoveContent(rim, top);
    ann->MoveContent(wheel, top);
    EXPECT_THAT(Thinned(top, "folder", "type == Foldertype"), ElementsAre("B"));
    EXPECT_THAT(Thinned(top, "contents", "attrib.mass > 5"), ElementsAre("Wheel"));
    EXPECT_THAT(Thinned(top, "folder", "attrib.smd_folder == /A && class == Item"),
                ElementsAre("Wheel", "Rim"));
    ann->AddChild(wheel, rim, "uses");
    EXPECT_THAT(Thinned(wheel, "uses", "name == Rim"), ElementsAre("Rim"));
    EXPECT_THAT(Thinned(wheel, "reference", "name == Hub"), IsEmpty());
}

TEST_F(Queries, ThinOutClassifications) {
    const UDMItemHandle metals = ann->CreateEntity("Categories", "Metals");
    ann->AddClassification(ann->CreateEntity("Categories", "Metals_1"), metals);
    ann->CreateEntity("Categories", "Plastics");
    const auto classifications = [&](const kxString& expression) {
        kxStlVector<UDMItemHandle> out;
        ann->GetClassifications(out, expression);
        return DisplayNames(out);
    };
    EXPECT_THAT(classifications("(type == Categories) && (attrib.name like \"Met\")"),
                ElementsAre("Metals"));
    EXPECT_THAT(classifications("name like met"), IsEmpty());
    EXPECT_THAT(classifications(""), ElementsAre("Metals", "Plastics"));
}

}  // namespace
}  // namespace kxudm::test
