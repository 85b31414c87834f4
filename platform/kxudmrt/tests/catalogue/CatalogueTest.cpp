#include "Support.h"
#include "catalogue/Catalogue.h"

namespace kxudm::catalogue::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

constexpr std::string_view kSample = R"(
<definition name="Root" type="Content" class="Thing" abstract="true">
  <attribute name="name" type="String" mandatory="true"/>
  <attribute name="size" type="Integer" default="7" displayname="Size" category="C"
             description="How big"/>
</definition>
<definition name="Folder" base="Root" type="Foldertype" versioned="false">
  <group name="folder" category="folder"><child definition="Root"/></group>
</definition>
<definition name="Part" base="Root" displayname="A part" class="PartClass" extensions="PRT asm">
  <attribute name="mass" type="Double"/>
  <group name="files" composition="true"><child definition="File"/></group>
  <group name="refs" category="reference" maximum="3"><child definition="Root"/></group>
  <group name="parts"><child definition="Part"/><child definition="Wheel"/></group>
</definition>
<definition name="File" base="Root" abstract="true" excludedfromsearch="true"/>
<definition name="Deck" base="File" extensions="inp"/>
<definition name="Wheel" base="Part" branchable="false">
  <attribute name="size" type="Integer" default="9" editable="false"/>
  <attribute name="spokes" type="Integer"/>
</definition>
<definition name="Any" base="File" extensions="*"/>)";

std::vector<std::string> AttributeNames(const ContentDefinition& definition) {
    std::vector<std::string> names;
    for (const AttributeDefinition* attribute : definition.Attributes()) {
        names.push_back(attribute->name);
    }
    return names;
}

TEST(Catalogue, FindsDefinitionsByTheirExactName) {
    const auto catalogue = Read(kSample);
    ASSERT_NE(catalogue->Find("Part"), nullptr);
    EXPECT_EQ(catalogue->Find("Part")->Name(), "Part");
    EXPECT_EQ(catalogue->Find("part"), nullptr);
    EXPECT_EQ(catalogue->Find(""), nullptr);
    EXPECT_EQ(&catalogue->Get("Part"), catalogue->Find("Part"));
    EXPECT_THROW(catalogue->Get("part"), UDMNotFoundException);
    EXPECT_EQ(Refusal([&] { catalogue->Get("part"); }), "there is no content definition 'part'");
}

TEST(Catalogue, ListsNamesInOrderOfDefinitionAndClassesOnce) {
    const auto catalogue = Read(kSample);
    EXPECT_THAT(catalogue->Names(),
                ElementsAre("Root", "Folder", "Part", "File", "Deck", "Wheel", "Any"));
    EXPECT_THAT(catalogue->ClassNames(), ElementsAre("PartClass", "Thing"));
}

TEST(Catalogue, MayBeEmpty) {
    const auto catalogue = Catalogue::ReadText("<catalogue version='1'/>", "empty");
    EXPECT_THAT(catalogue->Names(), IsEmpty());
    EXPECT_EQ(catalogue->ForExtension("inp"), nullptr);
}

TEST(Catalogue, ABaseMayStandBehindWhatIsDerivedFromIt) {
    const auto catalogue = Read(R"(<definition name="B" base="A"/><definition name="A"/>)");
    EXPECT_THAT(catalogue->Names(), ElementsAre("B", "A"));
    EXPECT_EQ(catalogue->Get("B").Base(), catalogue->Find("A"));
    EXPECT_EQ(catalogue->Get("A").Base(), nullptr);
}

TEST(ContentDefinition, InheritsTypeAndClassButNotTheDisplayName) {
    const auto catalogue = Read(kSample);
    const ContentDefinition& wheel = catalogue->Get("Wheel");
    EXPECT_EQ(wheel.Type(), "Content");
    EXPECT_EQ(wheel.ClassName(), "PartClass");
    EXPECT_EQ(wheel.DisplayName(), "Wheel");
    EXPECT_EQ(catalogue->Get("Part").DisplayName(), "A part");
    EXPECT_EQ(catalogue->Get("Folder").Type(), "Foldertype");
}

TEST(ContentDefinition, WithoutATypeInItsLineIsItsOwnType) {
    const auto catalogue =
        Read(R"(<definition name="A"/><definition name="B" base="A"/>)"
             R"(<definition name="C" base="B" type="T"/><definition name="D" base="C"/>)");
    EXPECT_EQ(catalogue->Get("B").Type(), "B");
    EXPECT_EQ(catalogue->Get("C").Type(), "T");
    EXPECT_EQ(catalogue->Get("D").Type(), "T");
}

TEST(ContentDefinition, OfARootIsNamedInAllWaysByItsName) {
    const auto catalogue = Read(R"(<definition name="A"/>)");
    const ContentDefinition& definition = catalogue->Get("A");
    EXPECT_EQ(definition.Type(), "A");
    EXPECT_EQ(definition.ClassName(), "A");
    EXPECT_EQ(definition.DisplayName(), "A");
    EXPECT_EQ(definition.Depth(), 0U);
    EXPECT_TRUE(definition.IsVersioned());
    EXPECT_TRUE(definition.IsBranchable());
    EXPECT_FALSE(definition.IsAbstract());
    EXPECT_FALSE(definition.IsExcludedFromSearch());
}

TEST(ContentDefinition, InheritsFlagsUnlessItTellsOtherwise) {
    const auto catalogue = Read(R"(
<definition name="A" versioned="false" excludedfromsearch="true" abstract="true"/>
<definition name="B" base="A"/>
<definition name="C" base="B" versioned="true" branchable="true" excludedfromsearch="false"/>
<definition name="D" base="C" branchable="false"/>)");
    EXPECT_FALSE(catalogue->Get("B").IsVersioned());
    EXPECT_FALSE(catalogue->Get("B").IsBranchable());
    EXPECT_TRUE(catalogue->Get("B").IsExcludedFromSearch());
    EXPECT_FALSE(catalogue->Get("B").IsAbstract());
    EXPECT_TRUE(catalogue->Get("C").IsVersioned());
    EXPECT_TRUE(catalogue->Get("C").IsBranchable());
    EXPECT_FALSE(catalogue->Get("C").IsExcludedFromSearch());
    EXPECT_TRUE(catalogue->Get("D").IsVersioned());
    EXPECT_FALSE(catalogue->Get("D").IsBranchable());
}

TEST(ContentDefinition, HasInheritedAttributesFirstAndOverriddenOnesInTheirPlace) {
    const auto catalogue = Read(kSample);
    const ContentDefinition& wheel = catalogue->Get("Wheel");
    EXPECT_THAT(AttributeNames(wheel), ElementsAre("name", "size", "mass", "spokes"));
    EXPECT_EQ(wheel.Attributes()[1], wheel.FindAttribute("size"));
    EXPECT_EQ(wheel.FindAttribute("size")->defaultValue, kxVariant(9));
    EXPECT_FALSE(wheel.FindAttribute("size")->editable);
    EXPECT_EQ(catalogue->Get("Part").FindAttribute("size")->defaultValue, kxVariant(7));
    EXPECT_NE(wheel.FindAttribute("name"), nullptr);
    EXPECT_EQ(wheel.FindAttribute("Name"), nullptr);
    EXPECT_EQ(catalogue->Get("Part").FindAttribute("spokes"), nullptr);
}

TEST(ContentDefinition, TellsAllAboutAnAttribute) {
    const auto catalogue = Read(R"(<definition name="A">
<attribute name="a" type="Integer" displayname="An a" description="What" category="Cat"
           default="2" system="true" displayable="false" mandatory="true" editable="false">
  <value>1</value><value>2</value></attribute>
<attribute name="b" type="StringList"><default>x y</default><default> </default></attribute>
</definition>)");
    const AttributeDefinition a = *catalogue->Get("A").FindAttribute("a");
    EXPECT_EQ(a.displayName, "An a");
    EXPECT_EQ(a.description, "What");
    EXPECT_EQ(a.category, "Cat");
    EXPECT_EQ(a.dataType, "Integer");
    EXPECT_EQ(a.defaultValue.GetKind(), kxVariant::INTEGER);
    EXPECT_EQ(a.defaultValue, kxVariant(2));
    EXPECT_THAT(a.validValues, ElementsAre("1", "2"));
    EXPECT_TRUE(a.system);
    EXPECT_FALSE(a.displayable);
    EXPECT_TRUE(a.mandatory);
    EXPECT_FALSE(a.editable);
    const AttributeDefinition b = *catalogue->Get("A").FindAttribute("b");
    EXPECT_EQ(b.displayName, "b");
    EXPECT_FALSE(b.system);
    EXPECT_TRUE(b.displayable);
    EXPECT_FALSE(b.mandatory);
    EXPECT_TRUE(b.editable);
    EXPECT_THAT(b.defaultValue.GetStringList(), ElementsAre("x y", " "));
}

TEST(ContentDefinition, BringsDefaultsAndValidValuesToTheirCommonForm) {
    const auto catalogue = Read(R"(<definition name="A">
<attribute name="c" type="Color" default="#ABCDEF"/>
<attribute name="d" type="Double" default="1.50"><value>1.5</value><value>1e1</value></attribute>
</definition>)");
    EXPECT_EQ(catalogue->Get("A").FindAttribute("c")->defaultValue, kxVariant("#abcdef"));
    EXPECT_THAT(catalogue->Get("A").FindAttribute("d")->validValues, ElementsAre("1.5", "10"));
}

TEST(ContentDefinition, KnowsWhatItIsDerivedFrom) {
    const auto catalogue = Read(kSample);
    const ContentDefinition& wheel = catalogue->Get("Wheel");
    EXPECT_EQ(wheel.Depth(), 2U);
    EXPECT_TRUE(wheel.IsDerivedFrom("Wheel"));
    EXPECT_TRUE(wheel.IsDerivedFrom("Part"));
    EXPECT_TRUE(wheel.IsDerivedFrom("Root"));
    EXPECT_FALSE(wheel.IsDerivedFrom("File"));
    EXPECT_FALSE(wheel.IsDerivedFrom("Unknown"));
    EXPECT_FALSE(catalogue->Get("Part").IsDerivedFrom("Wheel"));
}

TEST(ContentDefinition, ChecksValuesOfInheritedAttributesUnderItsOwnName) {
    const auto catalogue = Read(kSample);
    const ContentDefinition& wheel = catalogue->Get("Wheel");
    EXPECT_EQ(wheel.CheckedValue("mass", "2.5"), kxVariant(2.5));
    EXPECT_THAT(
        Refusal([&] { wheel.CheckedValue("mass", "heavy"); }),
        StartsWith("attribute 'mass' of definition 'Wheel' does not take the value 'heavy'"));
    EXPECT_THROW(wheel.CheckedValue("weight", 1), UDMNotFoundException);
    EXPECT_EQ(Refusal([&] { wheel.CheckedValue("weight", 1); }),
              "definition 'Wheel' has no attribute 'weight'");
}

TEST(Groups, AreListedInOrderAndByCategory) {
    const auto catalogue = Read(kSample);
    EXPECT_THAT(catalogue->GroupNames("Wheel", ""), ElementsAre("files", "refs", "parts"));
    EXPECT_THAT(catalogue->GroupNames("Wheel", "owner"), ElementsAre("files", "parts"));
    EXPECT_THAT(catalogue->GroupNames("Wheel", "reference"), ElementsAre("refs"));
    EXPECT_THAT(catalogue->GroupNames("Wheel", "category"), IsEmpty());
    EXPECT_THAT(catalogue->GroupNames("Deck", ""), IsEmpty());
    EXPECT_THROW(catalogue->GroupNames("Nothing", ""), UDMNotFoundException);
}

TEST(Groups, TellTheirLimits) {
    const auto catalogue = Read(kSample);
    const GroupDefinition files = *catalogue->Get("Wheel").FindGroup("files");
    EXPECT_EQ(files.category, "owner");
    EXPECT_TRUE(files.composition);
    EXPECT_EQ(files.minimum, 0U);
    EXPECT_EQ(files.maximum, GroupDefinition::kUnlimited);
    const GroupDefinition refs = *catalogue->Get("Wheel").FindGroup("refs");
    EXPECT_FALSE(refs.composition);
    EXPECT_EQ(refs.maximum, 3U);
    EXPECT_EQ(catalogue->Get("Wheel").FindGroup("Files"), nullptr);
}

TEST(Groups, AllowConcreteDefinitionsAndWhatIsDerivedFromThem) {
    const auto catalogue = Read(kSample);
    EXPECT_THAT(catalogue->AllowedChildren("Part", "files"), ElementsAre("Deck", "Any"));
    EXPECT_THAT(catalogue->AllowedChildren("Part", "parts"), ElementsAre("Part", "Wheel"));
    EXPECT_THAT(catalogue->AllowedChildren("Folder", "folder"),
                ElementsAre("Folder", "Part", "Deck", "Wheel", "Any"));
}

TEST(Groups, WithoutANameStandForAllOfTheCategoryOwner) {
    const auto catalogue = Read(kSample);
    EXPECT_THAT(catalogue->AllowedChildren("Part", ""),
                ElementsAre("Part", "Deck", "Wheel", "Any"));
    EXPECT_THAT(catalogue->AllowedChildren("Folder", ""), IsEmpty());
}

TEST(Groups, ThatAreUnknownAreRefused) {
    const auto catalogue = Read(kSample);
    EXPECT_EQ(Refusal([&] { catalogue->AllowedChildren("Part", "bolts"); }),
              "definition 'Part' has no group 'bolts'");
    EXPECT_THROW(catalogue->AllowedChildren("Part", "bolts"), UDMNotFoundException);
    EXPECT_THROW(catalogue->AllowedChildren("Nothing", ""), UDMNotFoundException);
}

TEST(Groups, AreFoundForAChildInTheirOrder) {
    const auto catalogue = Read(kSample);
    const ContentDefinition& part = catalogue->Get("Part");
    EXPECT_EQ(part.FirstGroupFor(catalogue->Get("Deck"), "")->name, "files");
    EXPECT_EQ(part.FirstGroupFor(catalogue->Get("Deck"), "reference")->name, "refs");
    EXPECT_EQ(part.FirstGroupFor(catalogue->Get("Wheel"), "owner")->name, "parts");
    EXPECT_EQ(part.FirstGroupFor(catalogue->Get("Folder"), "owner"), nullptr);
    EXPECT_TRUE(catalogue->Get("Any").IsAllowedIn(*part.FindGroup("files")));
    EXPECT_FALSE(catalogue->Get("Wheel").IsAllowedIn(*part.FindGroup("files")));
}

TEST(Groups, OfAnInheritedNameReplaceTheInheritedOneInItsPlace) {
    const auto catalogue = Read(R"(<definition name="A">
<group name="g"><child definition="A"/></group><group name="h"><child definition="A"/></group>
</definition>
<definition name="B" base="A"><group name="g" maximum="1"><child definition="B"/></group>
<group name="i"><child definition="B"/></group></definition>)");
    EXPECT_THAT(catalogue->GroupNames("B", ""), ElementsAre("g", "h", "i"));
    EXPECT_THAT(catalogue->AllowedChildren("B", "g"), ElementsAre("B"));
    EXPECT_THAT(catalogue->AllowedChildren("A", "g"), ElementsAre("A", "B"));
}

TEST(Extensions, AreFoundInAnyCaseWithAndWithoutDot) {
    const auto catalogue = Read(kSample);
    for (const char* extension : {"prt", "PRT", ".Prt", ".prt"}) {
        EXPECT_EQ(catalogue->ForExtension(extension), catalogue->Find("Part")) << extension;
    }
    EXPECT_EQ(catalogue->ForExtension("inp"), catalogue->Find("Deck"));
    EXPECT_THAT(catalogue->Get("Part").FileExtensions(), ElementsAre("prt", "asm"));
}

TEST(Extensions, ThatNobodyNamesGoToTheDefinitionThatClaimsAll) {
    const auto catalogue = Read(kSample);
    EXPECT_EQ(catalogue->ForExtension("xyz"), catalogue->Find("Any"));
    EXPECT_EQ(catalogue->ForExtension(""), catalogue->Find("Any"));
    EXPECT_EQ(catalogue->ForExtension("\xFF\xFE"), catalogue->Find("Any"));
    EXPECT_EQ(Read(R"(<definition name="A" extensions="a"/>)")->ForExtension("b"), nullptr);
}

TEST(Extensions, AreNotInherited) {
    const auto catalogue = Read(kSample);
    EXPECT_THAT(catalogue->Get("Wheel").FileExtensions(), IsEmpty());
}

TEST(WithDefinition, ReplacesOneAndReachesWhatIsDerivedFromIt) {
    const auto before = Read(kSample);
    DefinitionDeclaration part = before->Get("Part").Declaration();
    part.attributes.front().defaultValue = "4";
    part.attributes.emplace_back().name = "vendor";
    part.attributes.back().dataType = "String";
    const auto after = before->WithDefinition(part);
    EXPECT_EQ(after->Names(), before->Names());
    EXPECT_THAT(AttributeNames(after->Get("Wheel")),
                ElementsAre("name", "size", "mass", "vendor", "spokes"));
    EXPECT_EQ(after->Get("Wheel").FindAttribute("mass")->defaultValue, kxVariant(4.0));
    EXPECT_EQ(before->Get("Wheel").FindAttribute("vendor"), nullptr);
    EXPECT_FALSE(*after == *before);
}

TEST(WithDefinition, AddsAnUnknownOneAtTheEnd) {
    DefinitionDeclaration declaration;
    declaration.name = "New";
    declaration.base = "Part";
    const auto catalogue = Read(kSample)->WithDefinition(declaration);
    EXPECT_EQ(catalogue->Names().back(), "New");
    EXPECT_TRUE(catalogue->Get("New").IsDerivedFrom("Root"));
}

TEST(WithDefinition, RefusesWhatWouldMakeTheWholeWrong) {
    const auto catalogue = Read(kSample);
    DefinitionDeclaration root = catalogue->Get("Root").Declaration();
    root.base = "Wheel";
    EXPECT_THAT(Refusal([&] { catalogue->WithDefinition(root); }),
                StartsWith("definition 'Root' is in, or builds on, a cycle of bases: 'Root' -> "
                           "'Wheel' -> 'Part' -> 'Root'"));
    root = catalogue->Get("Root").Declaration();
    root.attributes[1].dataType = "Double";
    EXPECT_THAT(Refusal([&] { catalogue->WithDefinition(root); }),
                HasSubstr("but is inherited with the data type Double"));
    root = catalogue->Get("Root").Declaration();
    root.attributes[0].description = kxString("a\x01", 2);
    EXPECT_THAT(Refusal([&] { catalogue->WithDefinition(root); }),
                HasSubstr("is not UTF-8 text without control characters"));
    root = catalogue->Get("Root").Declaration();
    root.attributes[0].defaultValue = kxString("a\x01", 2);
    EXPECT_THAT(Refusal([&] { catalogue->WithDefinition(root); }),
                HasSubstr("default of attribute 'name'"));
}

TEST(ToXml, GivesAnEqualCatalogueAndEqualBytes) {
    const auto first = Read(kSample);
    const kxString text = first->ToXml();
    const auto second = Catalogue::ReadText(text, "again");
    EXPECT_TRUE(*first == *second);
    EXPECT_EQ(second->ToXml(), text);
    EXPECT_EQ(second->Get("Wheel").Type(), "Content");
}

TEST(ToXml, KeepsEveryCharacterAndEveryFlag) {
    const auto first = Read(R"(<definition name="A" displayname="&lt;&quot;&apos;&amp;&#10;&#9;é"
  versioned="false" branchable="false" excludedfromsearch="true" type="T" class="K">
<attribute name="a b" type="String" default="" description=" x&#10; "><value> </value>
<value>&lt;&#10;&#9;&amp;]]&gt;</value><value><![CDATA[<c>]]></value></attribute>
<attribute name="n" type="String"/>
<attribute name="l" type="StringList" system="true" displayable="false" mandatory="true"
           editable="false"><default>{</default><default> </default></attribute>
<attribute name="i" type="Integer" default="-9223372036854775808"/>
<attribute name="d" type="Double" default="0.1"/><attribute name="t" type="Boolean" default="0"/>
<attribute name="z" type="Time" default="2026-01-31T12:00:00Z"/>
<group name="g" category="category" minimum="2" maximum="4000000000"><child definition="A"/></group>
<group name="h" category="owner" composition="true"><child definition="A"/></group>
</definition>)");
    const ContentDefinition& a = first->Get("A");
    EXPECT_EQ(a.DisplayName(), "<\"'&\n\té");
    EXPECT_THAT(a.FindAttribute("a b")->validValues, ElementsAre(" ", "<\n\t&]]>", "<c>"));
    const auto second = Catalogue::ReadText(first->ToXml(), "again");
    EXPECT_TRUE(*first == *second) << first->ToXml();
    EXPECT_EQ(second->ToXml(), first->ToXml());
    EXPECT_EQ(second->Get("A").FindAttribute("a b")->defaultValue.GetKind(), kxVariant::STRING);
    EXPECT_TRUE(second->Get("A").FindAttribute("n")->defaultValue.IsEmpty());
}

TEST(Catalogue, EqualityLooksAtOrderAndContent) {
    const auto ab = Read(R"(<definition name="A"/><definition name="B"/>)");
    EXPECT_TRUE(*ab == *Read(R"(<definition name="A"/><definition name="B"/>)"));
    EXPECT_FALSE(*ab == *Read(R"(<definition name="B"/><definition name="A"/>)"));
    EXPECT_FALSE(*ab == *Read(R"(<definition name="A"/>)"));
    EXPECT_FALSE(*ab == *Read(R"(<definition name="A"/><definition name="B" base="A"/>)"));
}

}  // namespace
}  // namespace kxudm::catalogue::testing
