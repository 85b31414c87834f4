// New contents with free names, and folders.
#include "tests/controller/ControllerFixture.h"

namespace kxct::test {
namespace {

using mock::IsHandle;
using mock::NewHandle;
using testing::_;
using testing::Return;

class ControllerImplCreation : public ControllerTest {
  protected:
    ControllerImplCreation() {
        ON_CALL(*profile, CreateEntity)
            .WillByDefault([](const kxString& definition, const kxString& name) {
                return NewHandle("N:0", definition, name);
            });
        Entity("P:1", "UDMPart", "Parent");
        Entity("F:0", "Foldertype", "Folder");
        Entity("C:0", "Categories", "Category");
    }

    // Handles of siblings with these display names.
    static Handles Named(const std::vector<const char*>& names, bool classifications = false) {
        Handles handles;
        for (const char* name : names) {
            auto state = boost::make_shared<State>(
                "S" + std::to_string(handles.size()) + ":1", "UDMPart", name);
            if (classifications) {
                state->isMaster = false;
            }
            handles.push_back(mock::HandleOf(state));
        }
        return handles;
    }

    // The name that a content gets below "P:1" where the search finds siblings of these names.
    std::string NameAmong(const kxString& name, const std::vector<const char*>& siblings) {
        ON_CALL(*profile, GetChildren).WillByDefault(Give(Named(siblings)));
        Item* item = controller->CreateContent("UDMPart", name, ItemOf("P:1"));
        return item != nullptr ? item->GetDisplayName() : kxString("no item");
    }

    // Creating below a parent must ask the runtime for its children with exactly this expression.
    void ExpectExpression(const kxString& type,
                          const kxString& name,
                          const kxString& expression,
                          const kxString& parent = "P:1") {
        EXPECT_CALL(*profile, GetChildren(_, IsHandle(parent), kxString(""), expression));
        EXPECT_NE(controller->CreateContent(type, name, ItemOf(parent)), nullptr);
        testing::Mock::VerifyAndClearExpectations(&*profile);
        // A content of one UID is made only once.
        controller->ClearCache(MANAGER_DEFAULT);
    }
};

TEST_F(ControllerImplCreation, TwoArgumentsMakeExactlyThatContent) {
    EXPECT_CALL(*profile, CreateEntity(kxString("UDMPart"), kxString("Bracket_1"))).Times(2);
    EXPECT_CALL(*profile, GetChildren).Times(0);
    EXPECT_CALL(*profile, AddChild).Times(0);
    Item* item = controller->CreateContent("UDMPart", "Bracket_1");
    ASSERT_NE(item, nullptr);
    EXPECT_EQ(item->IsA(), "ContentItem");
    EXPECT_EQ(item->GetUID(), "N:0");
    EXPECT_EQ(controller->CreateContent("UDMPart", "Bracket_1"), item) << "one UID, one item";
}

TEST_F(ControllerImplCreation, AnUnknownDefinitionIsNull) {
    ON_CALL(*profile, CreateEntity)
        .WillByDefault(testing::Throw(kxudm::UDMNotFoundException("no definition X")));
    EXPECT_EQ(controller->CreateContent("X", "a"), nullptr);
    EXPECT_EQ(controller->CreateContent("X", "a", ItemOf("P:1")), nullptr);
}

TEST_F(ControllerImplCreation, WhatHasNoItemIsNullAndStaysInTheRepository) {
    ON_CALL(*profile, CreateEntity).WillByDefault(Return(kxudm::UDMItemHandle()));
    EXPECT_CALL(*profile, DeleteEntity).Times(0);
    EXPECT_EQ(controller->CreateContent("UDMPart", "a"), nullptr);
}

TEST_F(ControllerImplCreation, WithoutAParentTheNameOfAnOrdinaryContentGoesUnchanged) {
    EXPECT_CALL(*profile, GetChildren).Times(0);
    EXPECT_CALL(*profile, GetClassifications).Times(0);
    EXPECT_CALL(*profile, RunQuery).Times(0);
    EXPECT_CALL(*profile, CreateEntity(kxString("UDMPart"), kxString("part_1")));
    EXPECT_NE(controller->CreateContent("UDMPart", "part_1", nullptr), nullptr);
}

TEST_F(ControllerImplCreation, WithoutAParentAFolderAsksForNoSiblings) {
    EXPECT_CALL(*profile, GetClassifications).Times(0);
    EXPECT_CALL(*profile, CreateEntity(kxString("Foldertype"), kxString("Decks")));
    EXPECT_NE(controller->CreateContent("Foldertype", "Decks", nullptr), nullptr);
}

TEST_F(ControllerImplCreation, AClassificationWithoutAParentIsNamedAmongTheTopOnes) {
    EXPECT_CALL(
        *profile,
        GetClassifications(_, kxString("(type == Categories) && (attrib.name like \"Load\")")))
        .WillOnce(Give(Named({"Load", "Load_9"}, true)));
    EXPECT_CALL(*profile, CreateEntity(kxString("Categories"), kxString("Load_2")));
    EXPECT_NE(controller->CreateContent("Categories", "Load", nullptr), nullptr);
}

TEST_F(ControllerImplCreation, AClassificationWithoutAParentAndWithoutLikeOnesKeepsItsName) {
    EXPECT_CALL(*profile, CreateEntity(kxString("Categories"), kxString("Load_3")));
    EXPECT_NE(controller->CreateContent("Categories", "Load_3", nullptr), nullptr);
}

TEST_F(ControllerImplCreation, MasterClassificationsDoNotCountAsSiblings) {
    auto master = boost::make_shared<State>("M:0", "Categories", "Load");
    master->isMaster = true;
    ON_CALL(*profile, GetClassifications).WillByDefault(Give({mock::HandleOf(master)}));
    EXPECT_CALL(*profile, CreateEntity(kxString("Categories"), kxString("Load")));
    controller->CreateContent("Categories", "Load", nullptr);
}

TEST_F(ControllerImplCreation, SiblingsAreSoughtByDisplayNameForAnOrdinaryDefinition) {
    ExpectExpression("UDMPart", "part", "(type == UDMPart) && (attrib.displayname like \"part\")");
}

TEST_F(ControllerImplCreation, SiblingsAreSoughtByNameForFoldersAndClassifications) {
    ExpectExpression("Foldertype", "a", "(type == Foldertype) && (attrib.name like \"a\")", "F:0");
    ExpectExpression("Categories", "a", "(type == Categories) && (attrib.name like \"a\")", "C:0");
}

TEST_F(ControllerImplCreation, OnlyTheExactLiteralsAreSpecial) {
    ExpectExpression(
        "categories", "a", "(type == categories) && (attrib.displayname like \"a\")", "F:0");
    ExpectExpression(
        "Foldertypes", "a", "(type == Foldertypes) && (attrib.displayname like \"a\")", "C:0");
    ExpectExpression(
        "OwnFolder", "a", "(type == OwnFolder) && (attrib.displayname like \"a\")", "C:0");
}

TEST_F(ControllerImplCreation, TheBaseOfANameEndsBeforeItsLastUnderscore) {
    const struct {
        const char* name;
        const char* base;
    } table[] = {{"part", "part"},
                 {"part_1", "part"},
                 {"a_b_3", "a_b"},
                 {"part_", "part"},
                 {"_x", ""},
                 {"my_part", "my"},
                 {"", ""}};
    for (const auto& [name, base] : table) {
        SCOPED_TRACE(name);
        ExpectExpression(
            "UDMPart",
            name,
            kxString("(type == UDMPart) && (attrib.displayname like \"") + base + "\")");
    }
}

TEST_F(ControllerImplCreation, TheExpressionTakesTheNameAsItStands) {
    ExpectExpression(
        "UDMPart", "a\"*\\b", "(type == UDMPart) && (attrib.displayname like \"a\"*\\b\")");
}

TEST_F(ControllerImplCreation, AFolderBelowAClassificationIsRefused) {
    EXPECT_CALL(*profile, GetChildren).Times(0);
    EXPECT_CALL(*profile, CreateEntity).Times(0);
    EXPECT_EQ(controller->CreateContent("Foldertype", "x", ItemOf("C:0")), nullptr);
}

TEST_F(ControllerImplCreation, AClassificationBelowAFolderIsRefused) {
    EXPECT_CALL(*profile, GetChildren).Times(0);
    EXPECT_CALL(*profile, CreateEntity).Times(0);
    EXPECT_EQ(controller->CreateContent("Categories", "x", ItemOf("F:0")), nullptr);
}

TEST_F(ControllerImplCreation, LikeBelowLikeIsAllowed) {
    EXPECT_NE(controller->CreateContent("Categories", "x", ItemOf("C:0")), nullptr);
    EXPECT_NE(controller->CreateContent("Foldertype", "x", ItemOf("F:0")), nullptr);
}

TEST_F(ControllerImplCreation, WithoutSiblingsTheNameGoesUnchanged) {
    EXPECT_EQ(NameAmong("part_7", {}), "part_7");
}

TEST_F(ControllerImplCreation, TheNumberOfSiblingsIsAppended) {
    EXPECT_EQ(NameAmong("part", {"part", "part_1"}), "part_2");
}

TEST_F(ControllerImplCreation, OnlyTheNumberCountsNotTheirSuffixes) {
    EXPECT_EQ(NameAmong("part", {"part_7", "part_8", "part_9"}), "part_3");
}

TEST_F(ControllerImplCreation, ANameWithANumberGetsASecondOne) {
    EXPECT_EQ(NameAmong("part_1", {"part", "part_1"}), "part_1_2");
}

TEST_F(ControllerImplCreation, ACandidateThatExistsGetsOneMoreSuffix) {
    EXPECT_EQ(NameAmong("part", {"part", "part_2"}), "part_2_1");
}

// The second candidate is not tested again, so two contents may come to bear one name.
TEST_F(ControllerImplCreation, ASecondCollisionGoesUndetected) {
    EXPECT_EQ(NameAmong("part", {"part_3", "part_3_1", "x"}), "part_3_1");
    controller->ClearCache(MANAGER_DEFAULT);
    EXPECT_EQ(NameAmong("part", {"part_3_1", "part_3", "x"}), "part_3_1");
}

TEST_F(ControllerImplCreation, CollisionsAreSeenByteForByte) {
    EXPECT_EQ(NameAmong("part", {"part", "PART_2"}), "part_2");
}

TEST_F(ControllerImplCreation, AnEmptyNameAmongSiblingsBecomesItsSuffix) {
    EXPECT_EQ(NameAmong("", {"a", "b"}), "_2");
}

// The search goes by name, the collision by display name, also for folders.
TEST_F(ControllerImplCreation, CollisionsOfFoldersAreSeenByDisplayName) {
    ON_CALL(*profile, GetChildren).WillByDefault(Give(Named({"Decks_1"})));
    EXPECT_CALL(*profile, CreateEntity(kxString("Foldertype"), kxString("Decks_1_1")));
    controller->CreateContent("Foldertype", "Decks", ItemOf("F:0"));
}

TEST_F(ControllerImplCreation, ANewContentIsNotLinkedToItsParent) {
    EXPECT_CALL(*profile, AddChild).Times(0);
    EXPECT_CALL(*profile, CreateAndAddChild).Times(0);
    EXPECT_CALL(*profile, MoveContent).Times(0);
    EXPECT_NE(controller->CreateContent("UDMPart", "part", ItemOf("P:1")), nullptr);
}

TEST_F(ControllerImplCreation, AFailingSearchForSiblingsCreatesNothing) {
    ON_CALL(*profile, GetChildren).WillByDefault(Fail());
    EXPECT_CALL(*profile, CreateEntity).Times(0);
    EXPECT_EQ(controller->CreateContent("UDMPart", "part", ItemOf("P:1")), nullptr);
}

// A subclass that makes contents in its own way gets the free name.
class NamingController : public ControllerProbe {
  public:
    using ControllerProbe::ControllerProbe;
    using ControllerProbe::CreateContent;
    Item* CreateContent(const kxString& type, const kxString& name) override {
        asked = type + "/" + name;
        return nullptr;
    }
    kxString asked;
};

TEST_F(ControllerImplCreation, TheFreeNameGoesThroughTheVirtualOperation) {
    NamingController naming(&Manager(), "Demo", "Work", "anna", "secret");
    ON_CALL(*profile, GetChildren).WillByDefault(Give(Named({"part"})));
    EXPECT_CALL(*profile, CreateEntity).Times(0);
    EXPECT_EQ(naming.CreateContent("UDMPart", "part", ItemOf("P:1")), nullptr);
    EXPECT_EQ(naming.asked, "UDMPart/part_1");
}

TEST_F(ControllerImplCreation, FolderOperationsHandPathAndFlagOn) {
    const auto give = [](kxudm::UDMItemHandle& out, const kxString& path, auto&&...) {
        out = NewHandle(path + ":0", "Foldertype", path);
    };
    EXPECT_CALL(*profile, CreateFolder(_, kxString("/A"))).WillOnce(give);
    EXPECT_CALL(*profile, GetFolder(_, kxString("/B"), true)).WillOnce(give);
    EXPECT_CALL(*profile, GetFolder(_, kxString("/C"), false)).WillOnce(give);
    EXPECT_CALL(*profile, GetOrCreateFolder(_, kxString("/D"), true)).WillOnce(give);
    EXPECT_CALL(*profile, GetOrCreateFolder(_, kxString("/E"), false)).WillOnce(give);
    EXPECT_THAT(UidsOf({controller->CreateFolder("/A"),
                        controller->GetFolder("/B", true),
                        controller->GetFolder("/C", false),
                        controller->GetOrCreateFolder("/D", true),
                        controller->GetOrCreateFolder("/E", false)}),
                testing::ElementsAre("/A:0", "/B:0", "/C:0", "/D:0", "/E:0"));
}

TEST_F(ControllerImplCreation, AFolderSeenBeforeIsTheSameItem) {
    ON_CALL(*profile, GetFolder)
        .WillByDefault(
            [this](kxudm::UDMItemHandle& out, const kxString&, bool) { out = HandleOf("F:0"); });
    EXPECT_EQ(controller->GetFolder("/Folder", false), ItemOf("F:0"));
}

TEST_F(ControllerImplCreation, AFolderThatTheRuntimeDoesNotFillIsNull) {
    EXPECT_EQ(controller->GetFolder("/A", false), nullptr);
}

}  // namespace
}  // namespace kxct::test
