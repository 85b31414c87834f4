// Names of new contents: what the controller asks of the library, and what comes of the answer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <kxctinterfaces/Item.h>
#include <kxudm/UDMItemHandle.h>

#include "Host.h"

using kxct::Controller;
using kxct::Item;

namespace {

class CreateContent : public testing::Test {
  protected:
    void Attach(Item* child, Item* assembly) {
        kxStlVector<Item*> children{child};
        EXPECT_TRUE(controller->AddChildren(assembly, children, {"parts"}));
    }
    Item* PartIn(Item* assembly, const kxString& name) {
        Item* part = controller->CreateContent("UDMPart", name);
        EXPECT_NE(part, nullptr);
        Attach(part, assembly);
        return part;
    }
    Item* Assembly(const kxStlVector<kxString>& parts) {
        Item* assembly = controller->CreateContent("UDMAssemblyDM", "bridge");
        EXPECT_NE(assembly, nullptr);
        for (const kxString& part : parts) {
            PartIn(assembly, part);
        }
        return assembly;
    }
    // The display name of a new content; "none" where none was made.
    kxString NewName(const kxString& type, const kxString& name, Item* parent) {
        Item* made = controller->CreateContent(type, name, parent);
        return made == nullptr ? kxString("none") : made->GetDisplayName();
    }

    TemporaryFolder home;
    Host host{home.Path()};
    Controller* controller = host.Create("Demo");
};

}  // namespace

TEST_F(CreateContent, WithoutAParentANameIsUsedAsItIs) {
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(NewName("UDMPart", "part", nullptr), "part");
    }
}

TEST_F(CreateContent, AFirstChildKeepsItsName) {
    EXPECT_EQ(NewName("UDMPart", "part", Assembly({})), "part");
    EXPECT_EQ(NewName("UDMPart", "part_7", Assembly({"bolt"})), "part_7");
}

TEST_F(CreateContent, SiblingsLikeTheNameAreCounted) {
    EXPECT_EQ(NewName("UDMPart", "part", Assembly({"part"})), "part_1");
    EXPECT_EQ(NewName("UDMPart", "part", Assembly({"part", "part_1"})), "part_2");
    EXPECT_EQ(NewName("UDMPart", "part", Assembly({"part", "part_8", "partition"})), "part_3");
    EXPECT_EQ(NewName("UDMPart", "part", Assembly({"a part", "Part"})), "part");
}

TEST_F(CreateContent, AnAttachedContentCountsForTheNextOne) {
    Item* assembly = Assembly({});
    for (const char* expected : {"part", "part_1", "part_2", "part_3"}) {
        Item* made = controller->CreateContent("UDMPart", "part", assembly);
        ASSERT_NE(made, nullptr);
        EXPECT_EQ(made->GetDisplayName(), expected);
        Attach(made, assembly);
    }
}

TEST_F(CreateContent, ANameThatEndsInANumberGetsASecondOne) {
    EXPECT_EQ(NewName("UDMPart", "part_1", Assembly({"part", "part_1"})), "part_1_2");
    EXPECT_EQ(NewName("UDMPart", "a_b_3", Assembly({"a_b", "a_c"})), "a_b_3_1");
}

TEST_F(CreateContent, OneCollisionIsSeenTo) {
    EXPECT_EQ(NewName("UDMPart", "part", Assembly({"part", "part_2"})), "part_2_1");
    EXPECT_EQ(NewName("UDMPart", "part", Assembly({"part", "part_3", "part_3_1"})), "part_3_1");
}

TEST_F(CreateContent, AnEmptyNameIsLikeAllSiblings) {
    EXPECT_EQ(NewName("UDMPart", "", Assembly({"bolt", "nut"})), "_2");
    EXPECT_EQ(NewName("UDMPart", "", Assembly({})), "none");
}

TEST_F(CreateContent, OnlySiblingsOfTheSameTypeCount) {
    Item* assembly = Assembly({"part"});
    EXPECT_EQ(NewName("UDMAssemblyDM", "part", assembly), "part");
    Item* inner = controller->CreateContent("UDMAssemblyDM", "part");
    Attach(inner, assembly);
    EXPECT_EQ(NewName("UDMPart", "part", assembly), "part_1");
    EXPECT_EQ(NewName("UDMAssemblyDM", "part", assembly), "part_1");
}

TEST_F(CreateContent, SiblingsAreKnownByTheirDisplayNames) {
    Item* assembly = Assembly({});
    Item* part = PartIn(assembly, "bolt");
    kxVariant name("part");
    EXPECT_TRUE(part->SetAttributeValue("displayname", name));
    EXPECT_EQ(NewName("UDMPart", "part", assembly), "part_1");
    EXPECT_EQ(NewName("UDMPart", "bolt", assembly), "bolt");
}

TEST_F(CreateContent, SignsOfOtherPatternLanguagesStandForThemselves) {
    EXPECT_EQ(NewName("UDMPart", "100%", Assembly({"1000"})), "100%");
    EXPECT_EQ(NewName("UDMPart", "[ab]", Assembly({"a"})), "[ab]");
    EXPECT_EQ(NewName("UDMPart", "C:\\temp", Assembly({"C:\\temp"})), "C:\\temp_1");
    EXPECT_EQ(NewName("UDMPart", "it's", Assembly({"it's"})), "it's_1");
}

TEST_F(CreateContent, WildcardsInANameAreWildcards) {
    EXPECT_EQ(NewName("UDMPart", "p*t", Assembly({"part", "pit", "bolt"})), "p*t_2");
    // Nothing is put behind a pattern that ends in a wildcard.
    EXPECT_EQ(NewName("UDMPart", "p?", Assembly({"pi", "pit", "bolt"})), "p?_1");
}

TEST_F(CreateContent, NamesWithSignsOfTheQueryLanguageStandForThemselves) {
    const std::string hostile[] = {"3\" bolt",
                                   "\"",
                                   "\"\"",
                                   "a\\",
                                   "a\\b",
                                   "x\") || (type == UDMPart",
                                   ")",
                                   "a && b",
                                   "'; DROP TABLE entity; --",
                                   "\xE2\x82\xAC \"\xC3\xA4\""};
    for (const std::string& name : hostile) {
        SCOPED_TRACE(name);
        EXPECT_EQ(NewName("UDMPart", name, nullptr), name);
        EXPECT_EQ(NewName("UDMPart", name, Assembly({"bolt", "x"})), name);
        EXPECT_EQ(NewName("UDMPart", name, Assembly({"bolt", name})), name + "_1");
    }
}

// A name that makes another question of the expression is counted by that, and made all the same.
TEST_F(CreateContent, ANameThatIsAnExpressionOfItsOwnIsMadeToo) {
    const std::string name = "x\") && (attrib.name like \"";
    EXPECT_EQ(NewName("UDMPart", name, Assembly({"bolt"})), name);
    EXPECT_EQ(NewName("UDMPart", name, Assembly({"x"})), name + "_1");
}

TEST_F(CreateContent, OnlyTheLastUnderscoreParts) {
    EXPECT_EQ(NewName("UDMPart", "a_b_3", Assembly({"a_b_1", "a_b_2", "a_x"})), "a_b_3_2");
    EXPECT_EQ(NewName("UDMPart", "_x", Assembly({"bolt", "nut"})), "_x_2");
    EXPECT_EQ(NewName("UDMPart", "a_", Assembly({"ab"})), "a__1");
}

TEST_F(CreateContent, LettersCountAsTheyAre) {
    EXPECT_EQ(NewName("UDMPart", "part", Assembly({"Part", "PART", "part"})), "part_1");
    EXPECT_EQ(NewName("UDMPart", "\xC3\xA4", Assembly({"a", "\xC3\x84", "\xC3\xA4"})),
              "\xC3\xA4_1");
}

TEST_F(CreateContent, AnItemThatIsAddedIsNamedAfterItsDefinition) {
    Item* assembly = Assembly({"bolt"});
    const auto add = [&](const kxString& definition) {
        kxudm::UDMItemHandle made;
        return assembly->AddItem(made, "parts", definition) ? made.GetDisplayName()
                                                            : kxString("none");
    };
    EXPECT_EQ(add("UDMPart"), "Part");
    EXPECT_EQ(add("UDMPart"), "Part1");
    EXPECT_EQ(add("UDMPart"), "Part2");
    EXPECT_EQ(add("UDMAssemblyDM"), "Assembly");
    EXPECT_EQ(add("Nothing"), "none");
    EXPECT_EQ(add("Foldertype"), "none");
    kxStlVector<Item*> children;
    EXPECT_TRUE(assembly->GetChildren(children));
    EXPECT_EQ(children.size(), 5U);
}

TEST_F(CreateContent, AnItemThatIsAddedTakesTheFirstNameThatIsFree) {
    Item* assembly = Assembly({"Part1", "part"});
    kxudm::UDMItemHandle made;
    ASSERT_TRUE(assembly->AddItem(made, "parts", "UDMPart"));
    EXPECT_EQ(made.GetDisplayName(), "Part");
    ASSERT_TRUE(assembly->AddItem(made, "parts", "UDMPart"));
    EXPECT_EQ(made.GetDisplayName(), "Part2");
}

TEST_F(CreateContent, ClassificationsWithoutAParentCountTheOnesThatAreThere) {
    EXPECT_EQ(NewName("Categories", "metal", nullptr), "metal");
    EXPECT_EQ(NewName("Categories", "metal", nullptr), "metal_1");
    EXPECT_EQ(NewName("Categories", "metal", nullptr), "metal_2");
    EXPECT_EQ(NewName("Categories", "wood", nullptr), "wood");
}

TEST_F(CreateContent, FoldersAndClassificationsDoNotNestInEachOther) {
    Item* folder = controller->CreateFolder("/F");
    Item* category = controller->CreateContent("Categories", "metal");
    EXPECT_EQ(NewName("Foldertype", "x", category), "none");
    EXPECT_EQ(NewName("Categories", "x", folder), "none");
    EXPECT_EQ(NewName("Categories", "x", category), "x");
    EXPECT_EQ(NewName("Foldertype", "x", folder), "x");
    EXPECT_EQ(NewName("UDMPart", "x", folder), "x");
    EXPECT_EQ(NewName("categories", "x", nullptr), "none");
}
