// Each rule of the format that can be broken, with the line and the reason that are told.
#include <utility>

#include "Support.h"

namespace kxudm::catalogue::testing {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

std::string RefusalOfAttribute(std::string_view attribute) {
    return RefusalOf("<definition name=\"A\">\n" + std::string(attribute) + "\n</definition>");
}

TEST(CatalogueForm, UnknownElementsAreRefused) {
    EXPECT_EQ(RefusalOf("<definition name='A'/>\n<thing/>"),
              "test.xml:3: unexpected <thing> inside <catalogue>; expected is <definition>");
    EXPECT_EQ(RefusalOfAttribute("<thing/>"),
              "test.xml:3: unexpected <thing> inside <definition>; expected is <attribute> or "
              "<group>");
    EXPECT_EQ(
        RefusalOfAttribute("<attribute name='a' type='String'>\n<child/></attribute>"),
        "test.xml:4: unexpected <child> inside <attribute>; expected is <value> or <default>");
    EXPECT_EQ(RefusalOfAttribute("<group name='a'>\n<value/></group>"),
              "test.xml:4: unexpected <value> inside <group>; expected is <child>");
    EXPECT_EQ(RefusalOfAttribute("<group name='a'><child definition='A'>\n<b/></child></group>"),
              "test.xml:4: unexpected <b> inside <child>; expected is nothing");
    EXPECT_EQ(RefusalOfAttribute("<attribute name='a' type='String'><value>x\n<b/></value>"
                                 "</attribute>"),
              "test.xml:4: unexpected <b> inside <value>; expected is nothing");
}

TEST(CatalogueForm, TextWhereNoneBelongsIsRefused) {
    EXPECT_THAT(RefusalOf("stray"), StartsWith("test.xml:"));
    EXPECT_THAT(RefusalOf("stray"), HasSubstr("unexpected text inside <catalogue>"));
    EXPECT_THAT(RefusalOfAttribute("stray"), HasSubstr("unexpected text inside <definition>"));
    EXPECT_THAT(RefusalOfText("stray <catalogue version='1'/>"),
                HasSubstr("unexpected text at the top of the document"));
}

TEST(CatalogueForm, UnknownXmlAttributesAreRefused) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"<definition name='A' colour='red'/>",
         "test.xml:2: unknown attribute 'colour' of "
         "<definition>"},
        {"<definition name='A'>\n<attribute name='a' type='String' Default='x'/></definition>",
         "test.xml:3: unknown attribute 'Default' of <attribute>"},
        {"<definition name='A'>\n<group name='a' type='x'/></definition>",
         "test.xml:3: unknown attribute 'type' of <group>"},
        {"<definition name='A'>\n<group name='a'>\n<child name='A'/></group></definition>",
         "test.xml:4: unknown attribute 'name' of <child>"},
        {"<definition name='A'><attribute name='a' type='String'>\n<value text='x'/></attribute>"
         "</definition>",
         "test.xml:3: unknown attribute 'text' of <value>"}};
    for (const auto& [body, reason] : cases) {
        EXPECT_EQ(RefusalOf(body), reason);
    }
    EXPECT_EQ(RefusalOfText("<catalogue version='1' xmlns='x'/>"),
              "test.xml:1: unknown attribute 'xmlns' of <catalogue>");
}

TEST(CatalogueForm, AnAttributeGivenTwiceIsRefused) {
    EXPECT_EQ(RefusalOf("<definition name='A' name='B'/>"),
              "test.xml:2: attribute 'name' is given twice");
}

TEST(CatalogueForm, MissingNamesAreRefused) {
    EXPECT_EQ(RefusalOf("<definition/>"), "test.xml:2: <definition> needs the attribute 'name'");
    EXPECT_EQ(RefusalOf("<definition name=''/>"),
              "test.xml:2: <definition> needs the attribute 'name'");
    EXPECT_EQ(RefusalOfAttribute("<attribute type='String'/>"),
              "test.xml:3: <attribute> needs the attribute 'name'");
    EXPECT_EQ(RefusalOfAttribute("<attribute name='a'/>"),
              "test.xml:3: <attribute> needs the attribute 'type'");
    EXPECT_EQ(RefusalOfAttribute("<group/>"), "test.xml:3: <group> needs the attribute 'name'");
    EXPECT_EQ(RefusalOfAttribute("<group name='g' category=''/>"),
              "test.xml:3: <group> needs the attribute 'category'");
    EXPECT_EQ(RefusalOfAttribute("<group name='g'>\n<child/></group>"),
              "test.xml:4: <child> needs the attribute 'definition'");
}

TEST(CatalogueForm, TheVersionMustBeKnown) {
    EXPECT_EQ(RefusalOfText("<catalogue/>"),
              "test.xml:1: <catalogue> needs the attribute 'version'");
    EXPECT_EQ(RefusalOfText("<!-- -->\n<catalogue version='2'/>"),
              "test.xml:2: catalogue version '2' is not known; known is 1");
}

TEST(CatalogueForm, FlagsAreTrueOrFalse) {
    for (const char* flag :
         {"abstract", "versioned", "branchable", "excludedfromsearch", "replace"}) {
        EXPECT_EQ(RefusalOf("<definition name='A' " + std::string(flag) + "='yes'/>"),
                  "test.xml:2: attribute '" + std::string(flag) +
                      "' is 'yes'; expected is true or false");
    }
    for (const char* flag : {"system", "displayable", "mandatory", "editable"}) {
        EXPECT_EQ(
            RefusalOfAttribute("<attribute name='a' type='String' " + std::string(flag) + "='1'/>"),
            "test.xml:3: attribute '" + std::string(flag) + "' is '1'; expected is true or false");
    }
    EXPECT_THAT(RefusalOfAttribute("<group name='g' composition=''/>"),
                HasSubstr("attribute 'composition' is ''"));
}

TEST(CatalogueForm, LimitsOfGroupsAreNumbers) {
    for (const char* number : {"-1", "x", "", "1.5", "99999999999", "4294967295"}) {
        EXPECT_EQ(RefusalOfAttribute("<group name='g' maximum='" + std::string(number) + "'/>"),
                  "test.xml:3: attribute 'maximum' is '" + std::string(number) +
                      "'; expected is a number");
    }
    EXPECT_THAT(RefusalOfAttribute("<group name='g' minimum='unlimited'/>"),
                HasSubstr("attribute 'minimum' is 'unlimited'"));
}

TEST(CatalogueRules, NamesKeepToFewCharacters) {
    for (const char* name : {"a:b", "a/b", "a\"b", "ä", " a", "a ", "-a", ".a", "a&#9;b", "a(b"}) {
        EXPECT_THAT(RefusalOf("<definition name='" + std::string(name) + "'/>"),
                    HasSubstr("is not a name: expected are 1 to 128 ASCII letters"))
            << name;
    }
    EXPECT_THAT(RefusalOf("<definition name='" + std::string(129, 'x') + "'/>"),
                HasSubstr("is not a name"));
    EXPECT_THAT(RefusalOfAttribute("<attribute name='a:b' type='String'/>"),
                StartsWith("test.xml:3: attribute of definition 'A' 'a:b' is not a name"));
    EXPECT_THAT(RefusalOfAttribute("<group name='a/b'/>"), HasSubstr("'a/b' is not a name"));
    EXPECT_THAT(RefusalOf("<definition name='A' type='a:b'/>"), HasSubstr("'a:b' is not a name"));
    EXPECT_THAT(RefusalOf("<definition name='A' class='a:b'/>"), HasSubstr("'a:b' is not a name"));
    EXPECT_NO_THROW(
        Read("<definition name='a B-1._x'/><definition name='_3'/>"
             "<definition name='" +
             std::string(128, 'x') + "'/>"));
}

TEST(CatalogueRules, ADefinitionIsDeclaredOnce) {
    EXPECT_EQ(RefusalOf("<definition name='A'/>\n<definition name='A'/>"),
              "test.xml:3: definition 'A' is there already (test.xml:2); replace=\"true\" replaces "
              "it");
}

TEST(CatalogueRules, AReplacementNeedsSomethingToReplace) {
    EXPECT_EQ(RefusalOf("<definition name='A' replace='true'/>"),
              "test.xml:2: definition 'A' is marked to replace one, but there is none of that name "
              "before");
}

TEST(CatalogueRules, BasesMustBeKnownAndWithoutCycle) {
    EXPECT_EQ(RefusalOf("<definition name='A'/>\n<definition name='B' base='C'/>"),
              "test.xml:3: definition 'B' has the unknown base 'C'");
    EXPECT_EQ(RefusalOf("<definition name='A' base='A'/>"),
              "test.xml:2: definition 'A' is in, or builds on, a cycle of bases: 'A' -> 'A'");
    EXPECT_EQ(
        RefusalOf("<definition name='A' base='B'/>\n<definition name='B' base='A'/>"),
        "test.xml:2: definition 'A' is in, or builds on, a cycle of bases: 'A' -> 'B' -> 'A'");
    EXPECT_THAT(
        RefusalOf("<definition name='X' base='A'/><definition name='A' base='B'/>"
                  "<definition name='B' base='A'/>"),
        HasSubstr("definition 'X' is in, or builds on, a cycle of bases: 'X' -> 'A' -> 'B'"));
}

TEST(CatalogueRules, InheritanceEndsAtSixtyFourLevels) {
    const auto chain = [](int levels) {
        std::string body = "<definition name='D0'/>";
        for (int i = 1; i < levels; ++i) {
            body += "\n<definition name='D" + std::to_string(i) + "' base='D" +
                    std::to_string(i - 1) + "'/>";
        }
        return body;
    };
    EXPECT_NO_THROW(Read(chain(64)));
    EXPECT_EQ(RefusalOf(chain(65)),
              "test.xml:66: definition 'D64' is more than 64 levels of inheritance deep");
}

TEST(CatalogueRules, OnlyWhatIsVersionedBranches) {
    EXPECT_EQ(RefusalOf("<definition name='A' versioned='false' branchable='true'/>"),
              "test.xml:2: definition 'A' is branchable but not versioned; only revisions can "
              "branch");
}

TEST(CatalogueRules, AttributesAreDeclaredOnce) {
    EXPECT_EQ(RefusalOfAttribute("<attribute name='a' type='String'/>\n"
                                 "<attribute name='a' type='String'/>"),
              "test.xml:4: attribute 'a' of definition 'A' is declared twice");
}

TEST(CatalogueRules, DataTypesMustBeKnown) {
    for (const char* type : {"Real", "string", "reference"}) {
        EXPECT_EQ(RefusalOfAttribute("<attribute name='a' type='" + std::string(type) + "'/>"),
                  "test.xml:3: attribute 'a' of definition 'A' has the unknown data type '" +
                      std::string(type) +
                      "'; known are Boolean, Color, Double, Integer, String, StringList and Time");
    }
}

TEST(CatalogueRules, AnInheritedAttributeKeepsItsDataType) {
    EXPECT_EQ(RefusalOf("<definition name='A'><attribute name='a' type='Integer'/></definition>\n"
                        "<definition name='B' base='A'>\n<attribute name='a' type='Double'/>"
                        "</definition>"),
              "test.xml:4: attribute 'a' of definition 'B' has the data type Double, but is "
              "inherited with the data type Integer");
}

TEST(CatalogueRules, DefaultsFitTheirType) {
    EXPECT_EQ(RefusalOfAttribute("<attribute name='a' type='Integer' default='x'/>"),
              "test.xml:3: attribute 'a' of definition 'A' has a default that does not fit: "
              "attribute 'a' does not take the value 'x': expected a whole decimal number of 64 "
              "bits");
    EXPECT_THAT(RefusalOfAttribute("<attribute name='a' type='String' default='x'>"
                                   "<value>y</value></attribute>"),
                HasSubstr("does not take the value 'x': expected one of 'y'"));
    EXPECT_THAT(RefusalOfAttribute("<attribute name='a' type='String' default='' "
                                   "mandatory='true'/>"),
                HasSubstr("since the attribute is mandatory"));
}

TEST(CatalogueRules, DefaultElementsAreForLists) {
    for (const char* attribute :
         {"<attribute name='a' type='String'><default>x</default></attribute>",
          "<attribute name='a' type='StringList' default='x'><default>x</default></attribute>"}) {
        EXPECT_THAT(RefusalOfAttribute(attribute),
                    StartsWith("test.xml:3: <default> is for the entries of a StringList alone"));
    }
}

TEST(CatalogueRules, ValidValuesFitTheirTypeAndDiffer) {
    const auto refusal = [](const std::string& type, const std::string& values) {
        return RefusalOfAttribute("<attribute name='a' type='" + type + "'>" + values +
                                  "</attribute>");
    };
    EXPECT_THAT(refusal("Integer", "<value>1</value><value>x</value>"),
                StartsWith("test.xml:3: attribute 'a' of definition 'A' has a valid value that "
                           "does not fit: attribute 'a' does not take the value 'x'"));
    EXPECT_THAT(refusal("Double", "<value>1</value><value>1.0</value>"),
                HasSubstr("has the valid value '1' twice"));
    EXPECT_THAT(refusal("String", "<value/>"), HasSubstr("has a valid value that does not fit"));
    EXPECT_THAT(refusal("Boolean", "<value>true</value>"),
                HasSubstr("is Boolean and can't have valid values"));
}

TEST(CatalogueRules, TextsHoldNoCarriageReturn) {
    EXPECT_EQ(
        RefusalOf("<definition name='A' displayname='x&#13;'/>"),
        "test.xml:2: display name of definition 'A' 'x\\x0D' is not UTF-8 text without control "
        "characters");
    for (const char* attribute :
         {"<attribute name='a' type='String' displayname='x&#13;'/>",
          "<attribute name='a' type='String' description='x&#13;'/>",
          "<attribute name='a' type='String' category='x&#13;'/>",
          "<attribute name='a' type='String' default='x&#13;'/>",
          "<attribute name='a' type='String'><value>x&#13;</value></attribute>",
          "<attribute name='a' type='StringList'><default>x&#13;</default></attribute>"}) {
        EXPECT_THAT(RefusalOfAttribute(attribute),
                    HasSubstr("'x\\x0D' is not UTF-8 text without control characters"));
    }
}

TEST(CatalogueRules, GroupsAreDeclaredOnceWithAKnownCategory) {
    const std::string group = "<group name='g'><child definition='A'/></group>";
    EXPECT_EQ(RefusalOfAttribute(group + "\n" + group),
              "test.xml:4: group 'g' of definition 'A' is declared twice");
    EXPECT_EQ(
        RefusalOfAttribute("<group name='g' category='Owner'><child definition='A'/></group>"),
        "test.xml:3: group 'g' of definition 'A' has the unknown category 'Owner'; known are "
        "owner, reference, folder and category");
}

TEST(CatalogueRules, AnInheritedGroupKeepsItsCategory) {
    EXPECT_EQ(
        RefusalOf("<definition name='A'><group name='g'><child definition='A'/></group>"
                  "</definition>\n<definition name='B' base='A'>\n"
                  "<group name='g' category='reference'><child definition='A'/></group>"
                  "</definition>"),
        "test.xml:4: group 'g' of definition 'B' has the category reference, but is inherited with "
        "the category owner");
}

TEST(CatalogueRules, OnlyOwnersCompose) {
    for (const char* category : {"reference", "folder", "category"}) {
        EXPECT_EQ(RefusalOfAttribute("<group name='g' composition='true' category='" +
                                     std::string(category) + "'><child definition='A'/></group>"),
                  "test.xml:3: group 'g' of definition 'A' is a composition; only a group of the "
                  "category owner can be one");
    }
}

TEST(CatalogueRules, TheLimitsOfAGroupMakeSense) {
    EXPECT_EQ(RefusalOfAttribute("<group name='g' minimum='3' maximum='2'><child definition='A'/>"
                                 "</group>"),
              "test.xml:3: group 'g' of definition 'A' takes at least 3 and at most 2; expected is "
              "a maximum of 1 or more, not below the minimum");
    EXPECT_THAT(RefusalOfAttribute("<group name='g' maximum='0'><child definition='A'/></group>"),
                HasSubstr("takes at least 0 and at most 0"));
    EXPECT_NO_THROW(
        Read("<definition name='A'><group name='g' minimum='2' maximum='2'>"
             "<child definition='A'/></group><group name='h' maximum='unlimited'>"
             "<child definition='A'/></group></definition>"));
}

TEST(CatalogueRules, AGroupAllowsKnownChildrenEachOnce) {
    EXPECT_EQ(RefusalOfAttribute("<group name='g'/>"),
              "test.xml:3: group 'g' of definition 'A' allows no child; expected is a <child "
              "definition=\"...\"/>");
    EXPECT_EQ(RefusalOfAttribute("<group name='g'><child definition='A'/>\n"
                                 "<child definition='A'/></group>"),
              "test.xml:3: group 'g' of definition 'A' allows 'A' twice");
    EXPECT_EQ(RefusalOfAttribute("\n<group name='g'><child definition='B'/></group>"),
              "test.xml:4: group 'g' of definition 'A' allows the unknown definition 'B'");
}

TEST(CatalogueRules, AnExtensionHasOneClaimant) {
    EXPECT_EQ(RefusalOf("<definition name='A' extensions='x inp'/>\n"
                        "<definition name='B' extensions='INP'/>"),
              "test.xml:3: definition 'B' claims the file extension 'inp', which definition 'A' "
              "(test.xml:2) claims already");
    EXPECT_EQ(RefusalOf("<definition name='A' extensions='*'/>\n"
                        "<definition name='B' extensions='*'/>"),
              "test.xml:3: definition 'B' claims the file extension '*', which definition 'A' "
              "(test.xml:2) claims already");
    EXPECT_EQ(RefusalOf("<definition name='A' extensions='inp Inp'/>"),
              "test.xml:2: definition 'A' claims the file extension 'inp' twice");
}

TEST(CatalogueRules, ExtensionsAreEndingsOfFileNamesWithoutDot) {
    for (const char* extension : {".inp", "tar.gz", "a/b", "a:b", "a*", "*.*", "?"}) {
        EXPECT_EQ(RefusalOf("<definition name='A' extensions='" + std::string(extension) + "'/>"),
                  "test.xml:2: definition 'A' claims '" + std::string(extension) +
                      "', which is no file extension: expected is one without dot, or '*'");
    }
    EXPECT_EQ(RefusalOf("<definition name='A' abstract='true' extensions='inp'/>"),
              "test.xml:2: definition 'A' is abstract and can't claim file extensions");
}

TEST(CatalogueRules, ADefinitionHasAtMostAThousandAttributesAndGroups) {
    std::string base = "<definition name='A'>";
    std::string groups = "<definition name='A'>";
    for (int i = 0; i < 1000; ++i) {
        base += "<attribute name='a" + std::to_string(i) + "' type='String'/>";
        groups += "<group name='g" + std::to_string(i) + "'><child definition='A'/></group>";
    }
    EXPECT_NO_THROW(Read(base + "</definition>"));
    EXPECT_EQ(RefusalOf(base + "</definition>\n<definition name='B' base='A'>"
                               "<attribute name='b' type='String'/></definition>"),
              "test.xml:3: definition 'B' has 1001 attributes; at most 1000 are allowed");
    EXPECT_EQ(RefusalOf(groups + "<group name='x'><child definition='A'/></group></definition>"),
              "test.xml:2: definition 'A' has 1001 groups; at most 1000 are allowed");
}

TEST(CatalogueRules, ACatalogueHasAtMostTenThousandDefinitions) {
    std::string body;
    for (int i = 0; i < 10001; ++i) {
        body += "<definition name='D" + std::to_string(i) + "'/>\n";
    }
    EXPECT_EQ(RefusalOf(body), "test.xml:10002: a catalogue has at most 10000 definitions");
}

}  // namespace
}  // namespace kxudm::catalogue::testing
