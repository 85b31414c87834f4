// Export, import and full text run most of their statements once for each entity, file or link:
// each of them is served by an index. Those that look through all of something say so here.
#include "QueryPlans.h"
#include "store/ExchangeStatements.h"
#include "store/MaintenanceStatements.h"
#include "store/TextStatements.h"

using namespace kxudm::store;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

namespace {

class Exchange : public LibraryFixture {
  protected:
    void SetUp() override {
        LibraryFixture::SetUp();
        store_->Connection().Execute(statements::EXCHANGE_TABLES);
    }

    std::string PlanOf(const kxudm::sql::NamedStatement& statement) {
        return Plan(store_->Connection(), statement.text);
    }
};

class ExchangePlan : public Exchange, public testing::WithParamInterface<Hot> {};
using TextPlan = Exchange;

}  // namespace

TEST_P(ExchangePlan, UsesAnIndexAndSortsNothing) {
    const std::string plan = Plan(store_->Connection(), GetParam().text);
    EXPECT_FALSE(plan.empty() && GetParam().text.rfind("INSERT", 0) != 0);
    EXPECT_THAT(plan, Not(HasSubstr("SCAN")));
    EXPECT_THAT(plan, Not(HasSubstr("USE TEMP B-TREE FOR ORDER BY")));
}

INSTANTIATE_TEST_SUITE_P(Export,
                         ExchangePlan,
                         testing::Values(Named(statements::SELECT_ONE),
                                         Named(statements::SELECTED_BEHIND),
                                         Named(statements::NOTE_CONTENT),
                                         Named(statements::CONTENT_BEHIND),
                                         Named(statements::EXCHANGE_ENTITY),
                                         Named(statements::EXCHANGE_REVISIONS),
                                         Named(statements::EXCHANGE_REVISION_NUMBERS)),
                         NameOf);

INSTANTIATE_TEST_SUITE_P(Import,
                         ExchangePlan,
                         testing::Values(Named(statements::KNOWN_ENTITY),
                                         Named(statements::IMPORT_ENTITY),
                                         Named(statements::IMPORT_REVISION),
                                         Named(statements::DROP_HEADS),
                                         Named(statements::SET_NEWEST),
                                         Named(statements::MARK_FILES),
                                         Named(statements::MARK_LINKS),
                                         Named(statements::UNMARK_FILE),
                                         Named(statements::HAS_FILES),
                                         Named(statements::IMPORT_FILE),
                                         Named(statements::NOTE_ARRIVED),
                                         Named(statements::ARRIVED),
                                         Named(statements::OPEN_LINK_THERE),
                                         Named(statements::CLOSED_LINK_THERE),
                                         Named(statements::CLOSED_PLACE_THERE),
                                         Named(statements::UNMARK_LINK),
                                         Named(statements::LAST_POSITION),
                                         Named(statements::IMPORT_LINK),
                                         Named(statements::AWAITED),
                                         Named(statements::AWAITING_LINK),
                                         Named(statements::LET_LINK_ARRIVE),
                                         Named(statements::DROP_AWAITING_LINK),
                                         Named(statements::FIRST_REVISION),
                                         Named(statements::OTHER_PLACE),
                                         Named(statements::OTHER_OWNER),
                                         Named(statements::LEFT_PLACES)),
                         NameOf);

INSTANTIATE_TEST_SUITE_P(Texts,
                         ExchangePlan,
                         testing::Values(Named(statements::MARK_TEXT),
                                         Named(statements::UNMARK_TEXT),
                                         Named(statements::IS_TEXT_PENDING),
                                         Named(statements::TEXT_ENTITY),
                                         Named(statements::TEXT_HEADS),
                                         Named(statements::TEXT_HELD),
                                         Named(statements::CONTENT_TEXT_OF),
                                         Named(statements::SET_CONTENT_TEXT),
                                         Named(statements::SEEN_CONTENTS),
                                         Named(statements::ENTITIES_OF_TEXT)),
                         NameOf);

INSTANTIATE_TEST_SUITE_P(Care,
                         ExchangePlan,
                         testing::Values(Named(statements::TRIM_JOURNAL),
                                         Named(statements::HOLDERS_NEAR),
                                         Named(statements::DELETED_PLACES)),
                         NameOf);

TEST_F(Exchange, LinksAndFilesOfAnEntityAreSearchedThoughTheySort) {
    const std::string links = PlanOf(statements::EXCHANGE_LINKS);
    EXPECT_THAT(links, HasSubstr("SEARCH l USING PRIMARY KEY (first=?)"));
    EXPECT_THAT(links, Not(HasSubstr("SCAN")));
    const std::string files = PlanOf(statements::EXCHANGE_FILES);
    EXPECT_THAT(files, HasSubstr("SEARCH f USING PRIMARY KEY (entity=?)"));
    EXPECT_THAT(files, Not(HasSubstr("SCAN")));
}

// They walk through what is exported, and search what it leads to.
TEST_F(Exchange, OwnedOnesAndPlacesAreSearchedFromWhatIsExported) {
    for (const auto* named : {&statements::SELECT_OWNED, &statements::SELECT_PLACES}) {
        const std::string plan = PlanOf(*named);
        EXPECT_THAT(plan, HasSubstr("SCAN exchange_selected")) << named->name;
        EXPECT_THAT(plan, HasSubstr("SEARCH l USING")) << named->name;
        EXPECT_THAT(plan, Not(HasSubstr("SCAN l"))) << named->name;
        EXPECT_THAT(plan, Not(HasSubstr("SCAN e\n"))) << named->name;
        EXPECT_THAT(plan, Not(HasSubstr("SCAN s\n"))) << named->name;
    }
}

// "M" stands for MATCH, "=" for a row by its number.
TEST_F(TextPlan, DocumentsAreFoundByTheirWords) {
    for (const auto* named : {&statements::TEXTS_WITH,
                              &statements::CONTENT_TEXTS_WITH,
                              &statements::ANY_CONTENT_HAS,
                              &statements::CONTENT_HAS}) {
        const std::string plan = PlanOf(*named);
        EXPECT_THAT(plan, ContainsRegex("VIRTUAL TABLE INDEX [0-9]*:=?M")) << named->name;
        EXPECT_EQ(CountOf(plan, "SCAN"), 1U) << named->name << "\n" << plan;
    }
    EXPECT_THAT(PlanOf(statements::CONTENT_HAS), HasSubstr(":="));
    for (const auto* named : {&statements::TEXT_OF, &statements::DROP_TEXT}) {
        EXPECT_THAT(PlanOf(*named), HasSubstr("VIRTUAL TABLE INDEX 0:=")) << named->name;
    }
}

TEST_F(TextPlan, WhatIsFoundIsLookedUpOneByOne) {
    const std::string plan = PlanOf(statements::TEXT_FOUND);
    EXPECT_THAT(plan, HasSubstr("SCAN t VIRTUAL TABLE INDEX 0:M"));
    EXPECT_THAT(plan, HasSubstr("SEARCH e USING INTEGER PRIMARY KEY"));
    EXPECT_THAT(plan, HasSubstr("SEARCH p USING INTEGER PRIMARY KEY"));
    EXPECT_THAT(plan, HasSubstr("SEARCH f USING INDEX file_text (text=?)"));
    EXPECT_EQ(CountOf(plan, "SCAN e"), 0U) << plan;
    EXPECT_EQ(CountOf(plan, "SCAN f"), 0U) << plan;
}

TEST_F(TextPlan, HitsByTheirAttributesNeedNoSorting) {
    const std::string plan =
        Plan(store_->Connection(),
             std::string(statements::ATTRIBUTE_HITS_FROM) + statements::ATTRIBUTE_HITS_ORDER);
    EXPECT_THAT(plan, ContainsRegex("SCAN t VIRTUAL TABLE INDEX [0-9]*:M"));
    EXPECT_THAT(plan, HasSubstr("SEARCH e USING INTEGER PRIMARY KEY"));
    EXPECT_THAT(plan, HasSubstr("SEARCH r USING INTEGER PRIMARY KEY"));
    EXPECT_THAT(plan, HasSubstr("SEARCH p USING INTEGER PRIMARY KEY"));
    EXPECT_EQ(CountOf(plan, "SCAN"), 1U) << plan;
    EXPECT_EQ(CountOf(plan, "TEMP B-TREE"), 0U) << plan;
}

TEST_F(TextPlan, OtherHitsAreSearchedOneByOne) {
    const std::string plan =
        Plan(store_->Connection(),
             std::string(statements::QUERY_FROM) + statements::OTHER_HITS + " ORDER BY e.id");
    EXPECT_THAT(plan, HasSubstr("SEARCH e USING INTEGER PRIMARY KEY"));
    EXPECT_THAT(plan, HasSubstr("SEARCH f USING INDEX file_text (text=?)"));
    EXPECT_EQ(CountOf(plan, "SCAN e"), 0U) << plan;
    EXPECT_EQ(CountOf(plan, "SCAN f"), 0U) << plan;
}

TEST_F(TextPlan, WhatWaitsToBeIndexedIsReadFromItsOwnShortLists) {
    EXPECT_THAT(PlanOf(statements::TEXT_PENDING), HasSubstr("SCAN text_pending"));
    EXPECT_THAT(PlanOf(statements::CONTENTS_PENDING),
                HasSubstr("SEARCH file USING INDEX file_text_pending"));
    EXPECT_THAT(PlanOf(statements::ANY_TEXT_PENDING),
                HasSubstr("SEARCH file USING INDEX file_text_pending"));
    const std::string plan = PlanOf(statements::SEEN_TEXT_PENDING);
    EXPECT_THAT(plan, HasSubstr("SEARCH f USING INDEX file_text_pending"));
    EXPECT_THAT(plan, HasSubstr("SCAN p"));
    EXPECT_EQ(CountOf(plan, "SCAN e"), 0U) << plan;
}
