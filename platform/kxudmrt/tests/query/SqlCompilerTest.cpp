// What only the database knows: system attributes, places, ranges, and how large a query may be.
#include "QueryLibrary.h"

using namespace kxudm::query;
using kxudm::UDMException;
using kxudm::store::EntityId;
using kxudm::store::EntityRow;
using kxudm::store::LinkKind;
using kxudm::test::QueryLibrary;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class SqlCompiler : public QueryLibrary {
  protected:
    std::string Refusal(const std::string& text) {
        try {
            static_cast<void>(Compiled(text));
        } catch (const UDMException& error) {
            return error.what();
        }
        ADD_FAILURE() << "nothing was refused";
        return {};
    }
};

std::string Repeated(const std::string& text, int times) {
    std::string out;
    for (int i = 0; i < times; ++i) {
        out += text;
    }
    return out;
}

}  // namespace

TEST_F(SqlCompiler, AnAttributeThatNoDefinitionHasIsAnErrorThatNamesIt) {
    EXPECT_THAT(Refusal("name == a && attrib.colour == red"),
                testing::AllOf(HasSubstr("character 14"), HasSubstr("\"colour\"")));
    // That some definition has it is enough.
    EXPECT_NO_THROW(static_cast<void>(Compiled("type == Document && attrib.mass > 1")));
}

TEST_F(SqlCompiler, SystemAttributesAreAskedLikeAllOthers) {
    Make("Part", "a", {}, Life::Published);
    Make("Bolt", "b", {}, Life::MyCheckOut);
    EXPECT_THAT(Hits("attrib.smd_contentrevision == 1"), ElementsAre("b"));
    EXPECT_THAT(Hits("attrib.smd_contentrevision < 1"), ElementsAre("a"));
    EXPECT_THAT(Hits("attrib.smd_contentrevision == x"), IsEmpty());
    EXPECT_THAT(Hits("attrib.smd_createduser == ann"), ElementsAre("a", "b"));
    EXPECT_THAT(Hits("attrib.smd_user like \"?nn\""), ElementsAre("a", "b"));
    EXPECT_THAT(Hits("attrib.smd_creatime == \"2024-05-01T12:34:56Z\""), ElementsAre("a", "b"));
    EXPECT_THAT(Hits("attrib.smd_ctime >= 2024-05 && attrib.smd_ctime < 2024-06"),
                ElementsAre("a", "b"));
    EXPECT_THAT(Hits("attrib.smd_ctime < 2024"), IsEmpty());
    EXPECT_THAT(Hits("attrib.smd_id == U1001"), ElementsAre("b"));
    EXPECT_THAT(Hits("attrib.smd_ctype == Bolt"), ElementsAre("b"));
    EXPECT_THAT(Hits("attrib.smd_ctypedn == Teil"), ElementsAre("a"));
    EXPECT_THAT(Hits("attrib.smd_ctypedn like SCHR", Letters::Folded), ElementsAre("b"));
    EXPECT_THAT(Hits("attrib.smd_comment == \"\""), ElementsAre("a", "b"));
    EXPECT_THAT(Hits("attrib.smd_branchfrom != \"\""), IsEmpty());
    EXPECT_THAT(Hits("attrib.smd_branchfromver == \"\""), ElementsAre("a", "b"));
    EXPECT_THAT(Hits("attrib.smd_branchedtime > 2000"), IsEmpty());
    EXPECT_THAT(Hits("attrib.name == a && attrib.displayname == a"), ElementsAre("a"));
}

TEST_F(SqlCompiler, ABranchIsFoundByWhereItCameFrom) {
    store_->Insert({.uid = "B",
                    .definition = "Part",
                    .name = "branch",
                    .branchUid = "U1000",
                    .branchRevision = 3},
                   {},
                   {kxudm::store::ANN, 1714566896999999});
    EXPECT_THAT(Hits("attrib.smd_branchfrom == U1000 && attrib.smd_branchfromver > 2"),
                ElementsAre("branch"));
    EXPECT_THAT(Hits("attrib.smd_branchedtime == \"2024-05-01T12:34:56Z\""), ElementsAre("branch"));
}

TEST_F(SqlCompiler, TheFolderOfAContentIsItsPath) {
    const EntityId a = Make("Folder", "A", {});
    const EntityId b = Make("Folder", "B", {});
    Put(a, b);
    Put(b, Make("Part", "in b", {}));
    Put(a, Make("Part", "in a", {}, Life::MyDraft));
    Make("Part", "nowhere", {});
    EXPECT_THAT(Hits("attrib.smd_folder == /A/B"), ElementsAre("in b"));
    EXPECT_THAT(Hits("attrib.smd_folder like /A"), ElementsAre("B", "in b", "in a"));
    EXPECT_THAT(Hits("attrib.smd_folder == /a/b", Letters::Folded), ElementsAre("in b"));
    EXPECT_THAT(Hits("attrib.smd_folder == \"\" && type == Part"), ElementsAre("nowhere"));
    store_->Delete(b, {kxudm::store::ANN, 5});
    EXPECT_THAT(Hits("attrib.smd_folder == /A/B"), IsEmpty());
}

TEST_F(SqlCompiler, DefinitionsExcludedFromSearchAreLeftOutUnlessAskedFor) {
    Make("Part", "a", {});
    Make("Hidden", "h", {});
    const auto find = [&](const std::string& text, bool withExcluded) {
        std::vector<EntityRow> rows;
        const auto condition = Compile(Parse(text), *catalogue_, {.withExcluded = withExcluded});
        store_->VisitHits(condition, kxudm::store::ANN, false, 0, 0, kxudm::store::Into(rows));
        return Uids(rows);
    };
    EXPECT_THAT(find("", false), ElementsAre("U1000"));
    EXPECT_THAT(find("", true), ElementsAre("U1000", "U1001"));
    EXPECT_THAT(find("type == Hidden", false), IsEmpty());
    EXPECT_THAT(find("type == Hidden || type == Part", false), ElementsAre("U1000"));
}

TEST_F(SqlCompiler, WhatIsDeletedOrForeignIsNoHit) {
    const EntityId a = Make("Part", "a", {{"mass", 1.0}});
    Make("Part", "b", {{"mass", 1.0}}, Life::MyDraft);
    store_->Delete(a, {kxudm::store::ANN, 5});
    EXPECT_THAT(Hits("attrib.mass == 1"), ElementsAre("b"));
    std::vector<EntityRow> rows;
    EXPECT_EQ(
        store_->VisitHits(
            Compiled("attrib.mass == 1"), kxudm::store::BOB, false, 0, 0, kxudm::store::Into(rows)),
        0);
    EXPECT_EQ(store_->VisitHits(Compiled("attrib.mass == 1"),
                                kxudm::store::ANN_ELSEWHERE,
                                false,
                                0,
                                0,
                                kxudm::store::Into(rows)),
              0);
}

TEST_F(SqlCompiler, HitsComeInOrderOfCreationAndAreCutAfterCounting) {
    for (int i = 9; i > 0; --i) {
        Make("Part", std::to_string(i), {{"mass", static_cast<double>(i)}});
    }
    EXPECT_THAT(Hits("attrib.mass > 5"), ElementsAre("9", "8", "7", "6"));
    EXPECT_THAT(Hits("attrib.mass in (2, 9, 4) || type == Bolt"), ElementsAre("9", "4", "2"));
    std::vector<EntityRow> rows;
    EXPECT_EQ(
        store_->VisitHits(
            Compiled("attrib.mass > 5"), kxudm::store::ANN, false, 1, 3, kxudm::store::Into(rows)),
        4);
    EXPECT_THAT(Uids(rows), ElementsAre("U1001", "U1002"));
}

TEST_F(SqlCompiler, AThousandTermsAreNotTooMany) {
    Make("Part", "a", {{"mass", 1.0}, {"material", "x"}});
    Make("Part", "b", {});
    EXPECT_THAT(Hits("attrib.mass == 1" + Repeated(" || attrib.material == y", 999)),
                ElementsAre("a"));
    EXPECT_THAT(Hits("attrib.mass == 1" + Repeated(" && attrib.material like x", 999)),
                ElementsAre("a"));
    EXPECT_THAT(Hits("attrib.mass in (7" + Repeated(", 1", 998) + ")"), ElementsAre("a"));
    EXPECT_THAT(Hits("class == Root" + Repeated(" && class != Document", 999)),
                ElementsAre("a", "b"));
}

TEST_F(SqlCompiler, AHundredLevelsAreNotTooDeep) {
    const EntityId folder = Make("Folder", "F", {});
    Put(folder, Make("Part", "a", {{"mass", 1.0}}));
    Put(folder, Make("Part", "b", {{"mass", 2.0}}));
    const std::string level = "attrib.mass > 0 && (attrib.count == 9 || ";
    for (const char* inner : {"attrib.mass == 1", "attrib.mass != 2"}) {
        const std::string text = Repeated(level, 100) + inner + Repeated(")", 100);
        EXPECT_THAT(Hits(text), ElementsAre("a")) << text;
        EXPECT_THAT(ChildHits(folder, text), ElementsAre("a"));
    }
    const std::string negated =
        Repeated("!(attrib.count == 9 || ", 50) + "attrib.mass == 1" + Repeated(")", 50);
    EXPECT_EQ(Hits(negated), Expected(negated));
    EXPECT_THAT(ChildHits(folder, negated), ElementsAre("a"));
}

TEST_F(SqlCompiler, AQueryThatTheDatabaseCantTakeIsRefusedInWords) {
    std::string body = "<catalogue version=\"1\"><definition name=\"Root\"/>";
    for (int i = 0; i < 200; ++i) {
        body += "<definition name=\"D" + std::to_string(i) + "\" base=\"Root\"/>";
    }
    catalogue_ = kxudm::catalogue::Catalogue::ReadText(body + "</catalogue>", "wide.xml");
    EXPECT_NO_THROW(
        static_cast<void>(Compiled("class == Root" + Repeated(" && class == Root", 9))));
    EXPECT_THAT(Refusal("class == Root" + Repeated(" && class == Root", 300)),
                HasSubstr("32000 are the most"));
}
