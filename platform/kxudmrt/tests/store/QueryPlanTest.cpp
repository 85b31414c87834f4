// Every statement that a session runs often is served by an index and in the index's order.
#include "LibraryFixture.h"
#include "store/Statements.h"

using namespace kxudm::store;
namespace sql = kxudm::sql;
using testing::HasSubstr;
using testing::Not;

namespace {

struct Hot {
    const char* name;
    std::string text;
};

void PrintTo(const Hot& hot, std::ostream* out) {
    *out << hot.name;
}

class QueryPlan : public LibraryFixture, public testing::WithParamInterface<Hot> {};

Hot Named(const sql::NamedStatement& statement) {
    return {statement.name, statement.text};
}

std::string Plan(sql::Connection& connection, const std::string& text) {
    sql::Statement explain(connection, "EXPLAIN QUERY PLAN " + text);
    std::string plan;
    while (explain.Step()) {
        plan += explain.String(3) + "\n";
    }
    return plan;
}

}  // namespace

TEST_P(QueryPlan, UsesAnIndexAndSortsNothing) {
    const std::string plan = Plan(store_->Connection(), GetParam().text);
    EXPECT_FALSE(plan.empty() && GetParam().text.rfind("INSERT", 0) != 0);
    EXPECT_THAT(plan, Not(HasSubstr("SCAN")));
    EXPECT_THAT(plan, Not(HasSubstr("USE TEMP B-TREE FOR ORDER BY")));
}

INSTANTIATE_TEST_SUITE_P(
    Statements,
    QueryPlan,
    testing::Values(
        Named(statements::INFO),
        Named(statements::FIND_BY_UID),
        Named(statements::FIND_BY_ID),
        Named(statements::FIND_REVISION),
        Named(statements::DETAILS),
        Named(statements::REVISION_NUMBERS),
        Named(statements::ATTRIBUTES),
        Named(statements::SET_ATTRIBUTES),
        Named(statements::SET_DISPLAY_NAME),
        Named(statements::TOUCH_REVISION),
        Named(statements::DROP_HEAD_ATTRIBUTE),
        Named(statements::SET_NAME),
        Named(statements::SET_ENTRY),
        Named(statements::SET_VAULT),
        Named(statements::UID_OF),
        Named(statements::LAST_DELETION),
        Named(statements::HIDE),
        Named(statements::DELETION_OF),
        Named(statements::UNHIDE),
        Named(statements::INSERT_LINK),
        Named(statements::HAS_LINK),
        Named(statements::DROP_LINK),
        Named(statements::END_LINK),
        Named(statements::CHILDREN_NAMED),
        Named(statements::CHILDREN_ALL),
        Named(statements::CHILDREN_NAMED_WITH_ATTRIBUTES),
        Named(statements::CHILDREN_ALL_WITH_ATTRIBUTES),
        Named(statements::HAS_CLOSED),
        Named(statements::COUNT_CHILDREN_NAMED),
        Named(statements::COUNT_CHILDREN_ALL),
        Named(statements::CONTENTS),
        Named(statements::CONTENTS_WITH_ATTRIBUTES),
        Named(statements::COUNT_CONTENTS),
        Named(statements::HAS_PARENT),
        Named(statements::HAS_PLACE),
        Named(statements::HAS_CLOSED_PLACE),
        Named(statements::IN_FOLDER),
        Named(statements::AT_TOP),
        Named(statements::JOURNAL),
        Hot{"roots by parent", std::string(statements::ROOTS_BY_PARENT_FROM) + " ORDER BY e.id"},
        Hot{"roots by child", std::string(statements::ROOTS_BY_CHILD_FROM) + " ORDER BY e.id"},
        Hot{"children of an older revision",
            std::string(statements::ROW_COLUMNS) + statements::BORNE_CLOSED_FROM},
        Hot{"attribute query",
            std::string(statements::QUERY_FROM) +
                " AND (e.id IN (SELECT entity FROM head_attribute WHERE name = ? AND value = ?))"
                " ORDER BY e.id"},
        Hot{"name query", std::string(statements::QUERY_FROM) + " AND (e.name = ?) ORDER BY e.id"},
        Hot{"definition query",
            std::string(statements::QUERY_FROM) + " AND (e.definition = ?) ORDER BY e.id"}),
    [](const testing::TestParamInfo<Hot>& parameter) {
        std::string name = parameter.param.name;
        for (char& letter : name) {
            letter = std::isalnum(static_cast<unsigned char>(letter)) != 0 ? letter : '_';
        }
        return name;
    });

TEST_F(LibraryFixture, ALinkIsFoundByBothEndsNotByOneOfThemAlone) {
    for (const auto* named :
         {&statements::HAS_LINK, &statements::DROP_LINK, &statements::END_LINK}) {
        const std::string plan = Plan(store_->Connection(), named->text);
        EXPECT_THAT(plan, HasSubstr("(second=? AND kind=? AND to_rev=? AND first=?"))
            << named->name;
        EXPECT_THAT(plan, Not(HasSubstr("(second=? AND kind=? AND to_rev>?"))) << named->name;
    }
}

TEST_F(LibraryFixture, RecursiveWalksSearchInEachStep) {
    for (const auto* named : {&statements::OWNED, &statements::IS_BELOW, &statements::LIES_BELOW}) {
        const std::string plan = Plan(store_->Connection(), named->text);
        EXPECT_THAT(plan, HasSubstr("SEARCH l USING")) << named->name;
        EXPECT_THAT(plan, Not(HasSubstr("SCAN l"))) << named->name;
        EXPECT_THAT(plan, Not(HasSubstr("SCAN e"))) << named->name;
    }
}

TEST_F(LibraryFixture, ListingsOfOlderParentsSearchThoughTheySort) {
    for (const auto* named : {&statements::PARENTS_OLDER, &statements::PLACES_OLDER}) {
        const std::string plan = Plan(store_->Connection(), named->text);
        EXPECT_THAT(plan, HasSubstr("SEARCH l USING")) << named->name;
        EXPECT_THAT(plan, Not(HasSubstr("SCAN"))) << named->name;
    }
}
