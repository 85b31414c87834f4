// What a changed content definition needs of the store.
#include "LibraryFixture.h"
#include "store/DefinitionStatements.h"

using namespace kxudm::store;
namespace sql = kxudm::sql;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

class LibraryDefinitions : public LibraryFixture {
  protected:
    // "<uid>:<revision> <published> <working>", in the order of the visits.
    std::vector<std::string> Visited(std::string_view definition) {
        std::vector<std::string> visited;
        store_->VisitRevisions(definition, [&](const StoredRevision& row) {
            visited.push_back(row.uid + ":" + std::to_string(row.revision) + " " +
                              std::to_string(row.published) + " " + std::to_string(row.working));
        });
        return visited;
    }
    std::string Plan(const sql::NamedStatement& statement) {
        sql::Statement explain(store_->Connection(),
                               "EXPLAIN QUERY PLAN " + std::string(statement.text));
        std::string plan;
        while (explain.Step()) {
            plan += explain.String(3) + "\n";
        }
        return plan;
    }
};

TEST_F(LibraryDefinitions, AllRevisionsOfADefinitionAreVisitedWhoeverSeesThem) {
    const EntityId part = Add("A", {{"x", kxVariant(1)}}, RevisionState::Working);
    Add("D", {}, RevisionState::Unversioned, "Drawing");
    const EntityId gone = Add("B", {}, RevisionState::Unversioned);
    PublishByHand(part, 0);
    CheckOutByHand(part, 1);
    store_->Delete(gone, {ANN, 1});
    EXPECT_THAT(Visited("Part"), ElementsAre("A:0 0 1", "A:1 0 1", "B:0 0 -1"));
    EXPECT_THAT(Visited("Drawing"), ElementsAre("D:0 0 -1"));
    EXPECT_THAT(Visited("Nothing"), ElementsAre());
}

TEST_F(LibraryDefinitions, AVisitorMayChangeWhatItGets) {
    const EntityId part = Add("A", {{"x", kxVariant(1)}, {"y", kxVariant(2)}});
    store_->VisitRevisions("Part", [&](const StoredRevision& row) {
        store_->RewriteAttributes(
            row.id, row.revision, MergePackedAttributes(row.packed, {{"x", kxVariant("one")}}));
        store_->SetHeadValue(row.id, false, "x", kxVariant("one"));
        store_->DropHeadValue(row.id, false, "y");
    });
    EntityRow row;
    ASSERT_TRUE(store_->FindById(part, ANN, row));
    EXPECT_EQ(UnpackAttributes(row.packed),
              (AttributeList{{"x", kxVariant("one")}, {"y", kxVariant(2)}}));
    EXPECT_EQ(row.modifiedTime, 1000);
    EXPECT_EQ(Ask("SELECT group_concat(name || '=' || value) FROM head_attribute"
                  " WHERE name <> 'displayname'"),
              "x=one");
}

TEST_F(LibraryDefinitions, EntitiesAndLinksOfADefinitionAreFoundEvenIfTheyAreGone) {
    EXPECT_EQ(store_->AnyOfDefinition("Part"), "");
    const EntityId part = Add("A");
    const EntityId child = Add("C", {}, RevisionState::Unversioned, "Drawing");
    EXPECT_EQ(store_->AnyWithLink("Part", LinkKind::Owner, "parts"), "");
    Own(part, child);
    EXPECT_EQ(store_->AnyWithLink("Part", LinkKind::Owner, "parts"), "A");
    EXPECT_EQ(store_->AnyWithLink("Part", LinkKind::Owner, "drawings"), "");
    EXPECT_EQ(store_->AnyWithLink("Part", LinkKind::Reference, "parts"), "");
    EXPECT_EQ(store_->AnyWithLink("Drawing", LinkKind::Owner, "parts"), "");
    store_->Delete(part, {ANN, 1}, true);
    EXPECT_EQ(store_->AnyOfDefinition("Part"), "A");
    EXPECT_EQ(store_->AnyWithLink("Part", LinkKind::Owner, "parts"), "A");
}

TEST_F(LibraryDefinitions, AreReadInTheOrderOfAnIndex) {
    for (const sql::NamedStatement* statement : {&statements::ANY_OF_DEFINITION,
                                                 &statements::ANY_WITH_LINK,
                                                 &statements::REVISIONS_OF_DEFINITION,
                                                 &statements::REWRITE_ATTRIBUTES}) {
        const std::string plan = Plan(*statement);
        EXPECT_THAT(plan, HasSubstr("SEARCH")) << statement->name;
        EXPECT_THAT(plan, Not(HasSubstr("SCAN"))) << statement->name;
        EXPECT_THAT(plan, Not(HasSubstr("TEMP B-TREE"))) << statement->name;
    }
}

}  // namespace
