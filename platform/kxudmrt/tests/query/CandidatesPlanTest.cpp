// Which index serves a query. Plans are asked of an empty library: they must not depend on
// statistics.
#include "QueryLibrary.h"
#include "store/Statements.h"

using namespace kxudm::query;
using kxudm::test::QueryLibrary;
using testing::HasSubstr;
using testing::Not;

namespace {

constexpr const char* BY_ID = "SEARCH e USING INTEGER PRIMARY KEY";
constexpr const char* BY_VALUE = "SEARCH h USING COVERING INDEX head_attribute_value";

class Plans : public QueryLibrary {
  protected:
    std::string Plan(const std::string& text,
                     Letters letters = Letters::Exact,
                     CompileOptions::Use use = CompileOptions::Use::Search) {
        const bool search = use == CompileOptions::Use::Search;
        const std::string before = search ? kxudm::store::statements::QUERY_FROM
                                          : std::string(kxudm::store::statements::ROW_COLUMNS) +
                                                kxudm::store::statements::LAID_FROM;
        kxudm::sql::Statement explain(store_->Connection(),
                                      "EXPLAIN QUERY PLAN " + before +
                                          kxudm::store::AndCondition(Compiled(text, letters, use),
                                                                     search ? "e.id" : "l.first") +
                                          (search ? " ORDER BY e.id" : " ORDER BY l.first"));
        std::string plan;
        while (explain.Step()) {
            plan += explain.String(3) + "\n";
        }
        return plan;
    }
};

struct Served {
    const char* text;
    const char* index;
};

void PrintTo(const Served& served, std::ostream* out) {
    *out << served.text;
}

class ServedByAnIndex : public Plans, public testing::WithParamInterface<Served> {};

}  // namespace

TEST_P(ServedByAnIndex, AndSortsNothing) {
    const std::string plan = Plan(GetParam().text);
    EXPECT_THAT(plan, HasSubstr(BY_ID)) << plan;
    EXPECT_THAT(plan, HasSubstr(GetParam().index)) << plan;
    EXPECT_THAT(plan, Not(HasSubstr("SCAN e"))) << plan;
    EXPECT_THAT(plan, Not(HasSubstr("SCAN h"))) << plan;
    EXPECT_THAT(plan, Not(HasSubstr("SCAN c"))) << plan;
    EXPECT_THAT(plan, Not(HasSubstr("USE TEMP B-TREE FOR ORDER BY"))) << plan;
}

INSTANTIATE_TEST_SUITE_P(
    Query,
    ServedByAnIndex,
    testing::Values(
        Served{"attrib.mass == 5", "(name=? AND value=?)"},
        Served{"attrib.material == Steel", "(name=? AND value=?)"},
        Served{"attrib.material in (Steel, Wood)", "(name=? AND value=?)"},
        Served{"attrib.mass > 5", "(name=? AND value>? AND value<?)"},
        Served{"attrib.mass <= 5", "(name=? AND value<?)"},
        Served{"attrib.mass >= 5 && attrib.mass < 6", "(name=? AND value>? AND value<?)"},
        Served{"attrib.material > a && type == Part && attrib.material <= b",
               "(name=? AND value>? AND value<?)"},
        Served{"attrib.material like St", "(name=? AND value>? AND value<?)"},
        Served{"attrib.material like \"St*l?\"", "(name=? AND value>? AND value<?)"},
        Served{"attrib.displayname like part && type == Part", "(name=? AND value>? AND value<?)"},
        Served{"attrib.material like \"*eel\"", "(name=? AND value>?)"},
        Served{"name == a", "SEARCH c USING COVERING INDEX entity_name (name=?)"},
        Served{"name like a", "SEARCH c USING COVERING INDEX entity_name (name>? AND name<?)"},
        Served{"name > a", "SEARCH c USING COVERING INDEX entity_name (name>?)"},
        Served{"id == U1", "sqlite_autoindex_entity_1 (uid=?)"},
        Served{"id in (U1:0, U2)", "sqlite_autoindex_entity_1 (uid=?)"},
        Served{"type == Part", "SEARCH c USING COVERING INDEX entity_definition (definition=?)"},
        Served{"class == Part", "SEARCH c USING COVERING INDEX entity_definition (definition=?)"},
        Served{"type == Part && attrib.mass != 5", "entity_definition"},
        Served{"type == Part && !attrib.mass == 5", "entity_definition"},
        Served{"attrib.mass == 5 || attrib.material == Steel || id == U1",
               "sqlite_autoindex_entity_1 (uid=?)"},
        Served{"(attrib.mass == 5 || name == x) && attrib.material != Steel",
               "SEARCH c USING COVERING INDEX entity_name (name=?)"}),
    [](const auto& parameter) { return "Row" + std::to_string(parameter.index); });

TEST_F(Plans, TheMostSelectivePartOfAConjunctionIsLookedUp) {
    EXPECT_THAT(Plan("type == Part && attrib.mass == 5"), HasSubstr(BY_VALUE));
    EXPECT_THAT(Plan("type == Part && attrib.mass == 5"), Not(HasSubstr("entity_definition")));
    EXPECT_THAT(Plan("attrib.mass > 5 && attrib.material == Steel && type == Part"),
                HasSubstr(std::string(BY_VALUE) + " (name=? AND value=?)"));
    EXPECT_THAT(Plan("attrib.mass == 5 && id == U1"), HasSubstr("autoindex_entity_1"));
    // A disjunction is as selective as the least of its parts.
    EXPECT_THAT(Plan("(id == U1 || type == Part) && attrib.mass == 5"), HasSubstr(BY_VALUE));
    EXPECT_THAT(Plan("attrib.mass == 5 && id == U1"), Not(HasSubstr(BY_VALUE)));
}

// Between two bounds of one attribute no third one stands that the index might take instead.
TEST_F(Plans, TwoBoundsOfOneAttributeAreTheOnesThatAreLookedUp) {
    const std::string sql = Compiled("attrib.mass >= 5 && attrib.mass < 6").sql;
    EXPECT_THAT(sql,
                testing::StartsWith("e.id IN (SELECT h.entity FROM head_attribute h WHERE"
                                    " h.name = ? AND h.value >= ? AND h.value < ? UNION ALL "
                                    "SELECT h.entity FROM head_attribute h WHERE"
                                    " h.name = ? AND h.value >= ? AND h.value < ?) AND "));
}

TEST_P(ServedByAnIndex, AlsoWhereLettersAreFolded) {
    const std::string plan = Plan(GetParam().text, Letters::Folded);
    EXPECT_THAT(plan, HasSubstr(BY_ID)) << plan;
    EXPECT_THAT(plan, HasSubstr(GetParam().index)) << plan;
    EXPECT_THAT(plan, Not(HasSubstr("SCAN"))) << plan;
    EXPECT_THAT(plan, Not(HasSubstr("USE TEMP B-TREE FOR ORDER BY"))) << plan;
}

TEST_F(Plans, FoldedTextsHaveAnIndexOfTheirOwn) {
    EXPECT_THAT(Plan("attrib.material == steel", Letters::Folded),
                HasSubstr("USING COVERING INDEX head_attribute_folded (name=? AND folded=?)"));
    EXPECT_THAT(Plan("attrib.material like steel", Letters::Folded),
                HasSubstr("head_attribute_folded (name=? AND folded>? AND folded<?)"));
    EXPECT_THAT(Plan("name == steel", Letters::Folded),
                HasSubstr("SEARCH c USING COVERING INDEX entity_name_folded (name_folded=?)"));
    EXPECT_THAT(Plan("name like steel", Letters::Folded), HasSubstr("entity_name_folded"));
}

// The ones that can't be served are known by name: each of them looks at every entity.
TEST_F(Plans, NegationsAndMissingValuesLookAtEveryEntity) {
    for (const char* text : {"attrib.mass != 5",
                             "!attrib.mass == 5",
                             "attrib.mass == \"\"",
                             "attrib.mass == 5 || attrib.material != x",
                             "name like \"*x\"",
                             "attrib.smd_user == anna"}) {
        EXPECT_THAT(Plan(text), HasSubstr("SCAN e")) << text;
        EXPECT_THAT(Plan(text, Letters::Folded), HasSubstr("SCAN e")) << text;
    }
}

// What a hit must have is looked up among the child's own values, before the child itself is read.
TEST_F(Plans, AListingAsksForAnAttributeBeforeItReadsTheChild) {
    for (const char* text : {"attrib.displayname like part",
                             "type == Part && attrib.displayname == x",
                             "attrib.mass > 5 && attrib.mass < 9"}) {
        const std::string plan = Plan(text, Letters::Exact, CompileOptions::Use::Listing);
        const auto value = plan.find("SEARCH h USING PRIMARY KEY (entity=? AND name=?");
        ASSERT_NE(value, std::string::npos) << plan;
        EXPECT_THAT(plan, Not(HasSubstr("head_attribute_value"))) << plan;
        EXPECT_FALSE(Compiled(text, Letters::Exact, CompileOptions::Use::Listing).heads.empty());
    }
}

TEST_F(Plans, AListingAsksForNoAttributeThatAHitMayLack) {
    for (const char* text : {"attrib.mass != 5",
                             "!attrib.mass == 5",
                             "attrib.mass == 5 || name == a",
                             "attrib.displayname == \"\"",
                             "name == a",
                             ""}) {
        EXPECT_EQ(Compiled(text, Letters::Exact, CompileOptions::Use::Listing).heads, "") << text;
    }
}

TEST_F(Plans, AListingIsThinnedOutOnItsOwnIndex) {
    for (const char* text : {"type == Part && attrib.displayname like part",
                             "id == U1",
                             "name == a",
                             "class != Part"}) {
        const std::string plan = Plan(text, Letters::Exact, CompileOptions::Use::Listing);
        EXPECT_THAT(plan, HasSubstr("SEARCH l USING COVERING INDEX link_second")) << plan;
        EXPECT_THAT(plan, HasSubstr("SEARCH e USING INTEGER PRIMARY KEY (rowid=?)")) << plan;
        EXPECT_THAT(plan, Not(HasSubstr("SCAN"))) << plan;
        EXPECT_THAT(plan, Not(HasSubstr("head_attribute_value"))) << plan;
        EXPECT_THAT(plan, Not(HasSubstr("USE TEMP B-TREE"))) << plan;
    }
}
