// Every statement that a session runs often is served by an index and in the index's order.
#include "QueryPlans.h"
#include "store/FileStatements.h"
#include "store/MaintenanceStatements.h"
#include "store/RevisionStatements.h"

using namespace kxudm::store;
namespace sql = kxudm::sql;
using testing::HasSubstr;
using testing::Not;

namespace {

class QueryPlan : public LibraryFixture, public testing::WithParamInterface<Hot> {};

}  // namespace

TEST_P(QueryPlan, UsesAnIndexAndSortsNothing) {
    const std::string plan = Plan(store_->Connection(), GetParam().text);
    EXPECT_FALSE(plan.empty() && GetParam().text.rfind("INSERT", 0) != 0);
    EXPECT_THAT(plan, Not(HasSubstr("SCAN")));
    EXPECT_THAT(plan, Not(HasSubstr("USE TEMP B-TREE FOR ORDER BY")));
}

TEST_F(LibraryFixture, ANameInAFolderIsLookedUpWithoutWalkingTheFolder) {
    EXPECT_THAT(Plan(store_->Connection(), statements::IN_FOLDER.text),
                HasSubstr("USING INDEX link_entry (second=? AND entry=?)"));
}

// There are few of them at any time, whereas a user may have very much checked out.
TEST_F(LibraryFixture, APublishLooksThroughTheLinksThatWaitForTheirEnd) {
    const std::string plan = Plan(store_->Connection(), statements::OWNED_TWICE.text);
    EXPECT_THAT(plan, HasSubstr("SCAN e USING INDEX link_ending"));
    EXPECT_EQ(CountOf(plan, "SCAN"), 1U) << plan;
}

// However many links the entity has.
TEST_F(LibraryFixture, AnUndoLooksUpTheLinksThatTheRevisionAddedAndGaveUp) {
    EXPECT_THAT(Plan(store_->Connection(), statements::DROP_NEW_LINKS.text),
                HasSubstr("INDEX link_new (first=? AND from_rev=?)"));
    EXPECT_THAT(Plan(store_->Connection(), statements::REOPEN_LINKS.text),
                HasSubstr("INDEX link_ending (first=?)"));
    EXPECT_THAT(Plan(store_->Connection(), statements::OWNED_ANEW.text),
                HasSubstr("SEARCH e USING INDEX link_ending"));
}

TEST_F(LibraryFixture, APublishLooksUpTheLinksThatTheRevisionGaveUp) {
    EXPECT_THAT(Plan(store_->Connection(), statements::CLOSE_LINKS.text),
                HasSubstr("INDEX link_ending (first=?)"));
}

INSTANTIATE_TEST_SUITE_P(
    Statements,
    QueryPlan,
    testing::Values(
        Named(statements::INFO),
        Named(statements::FIND_BY_UID),
        Named(statements::FIND_BY_ID),
        Named(statements::FIND_EVEN_DELETED),
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
        Named(statements::HAS_RELATION),
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
        Named(statements::LOCK_OF),
        Named(statements::COPY_REVISION),
        Named(statements::SET_LOCK),
        Named(statements::ADD_SAVE_POINT),
        Named(statements::SET_COMMENT),
        Named(statements::SAVE_POINTS),
        Named(statements::PUBLISH_REVISION),
        Named(statements::PUBLISH_FIRST_REVISION),
        Named(statements::LOCK_WITH_WORK),
        Named(statements::SET_PUBLISHED),
        Named(statements::DROP_COVERED_HEADS),
        Named(statements::DROP_MASKS),
        Named(statements::PUBLISH_HEADS),
        Named(statements::CLOSE_LINKS),
        Named(statements::CLOSE_FILES),
        Named(statements::MOVE_EXACT),
        Named(statements::OWNED_ANEW),
        Named(statements::DROP_REVISION),
        Named(statements::DROP_WORKING_HEADS),
        Named(statements::DROP_NEW_LINKS),
        Named(statements::REOPEN_LINKS),
        Named(statements::DROP_NEW_FILES),
        Named(statements::REOPEN_FILES),
        Named(statements::DROP_EXACT),
        Named(statements::CLEAR_LOCK),
        Named(statements::BRANCH_LINKS),
        Named(statements::BRANCH_FILES),
        Named(statements::BRANCH_VAULT),
        Named(statements::FILES),
        Named(statements::FIND_FILE),
        Named(statements::DROP_FILE),
        Named(statements::END_FILE),
        Named(statements::TOUCH_EDITABLE),
        Named(statements::MOVED_PLACES),
        Named(statements::SEEN_REVISION),
        Named(statements::ANY_OWNER),
        Hot{"roots by parent", std::string(statements::ROOTS_BY_PARENT_FROM) + " ORDER BY e.id"},
        Named(statements::IS_CONTENT_USED),
        Named(statements::HEADS_OF),
        Named(statements::PURGE_REVISIONS),
        Named(statements::PURGE_HEADS),
        Named(statements::PURGE_LINKS),
        Named(statements::PURGE_FILES),
        Named(statements::PURGE_ENTITY),
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
    NameOf);

TEST_F(LibraryFixture, ALinkIsFoundByBothEndsNotByOneOfThemAlone) {
    for (const auto* named : {&statements::HAS_LINK,
                              &statements::HAS_RELATION,
                              &statements::DROP_LINK,
                              &statements::END_LINK}) {
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
    for (const auto* named : {&statements::PARENTS_OLDER,
                              &statements::PLACES_OLDER,
                              &statements::RELATED,
                              &statements::RELATED_OLDER}) {
        const std::string plan = Plan(store_->Connection(), named->text);
        EXPECT_THAT(plan, HasSubstr("SEARCH l USING")) << named->name;
        EXPECT_THAT(plan, Not(HasSubstr("SCAN"))) << named->name;
    }
}

// A handful of branches is sorted by time; the count's inner listing is walked as a table.
TEST_F(LibraryFixture, BranchesAndLimitedCountsSearchTheirTables) {
    EXPECT_THAT(Plan(store_->Connection(), statements::BRANCHES.text),
                HasSubstr("SEARCH e USING INDEX entity_branch"));
    EXPECT_THAT(
        Plan(store_->Connection(), statements::COUNT_UP_TO.text),
        HasSubstr("SEARCH l USING PRIMARY KEY (first=? AND kind=? AND to_rev=? AND name=?"));
}
