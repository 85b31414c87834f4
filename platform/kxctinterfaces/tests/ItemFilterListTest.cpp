#include <gtest/gtest.h>
#include <kxctinterfaces/ItemFilterList.h>

namespace {

using kxct::ItemFilterList;

struct Condition {
    kxString childType;
    kxString expression;
};

Condition ConditionOf(const ItemFilterList& filters, const kxString& type, const kxString& group) {
    Condition condition{"left over", "left over"};
    filters.GetChildQueryExpr(condition.childType, condition.expression, type, group);
    return condition;
}

TEST(ItemFilterList, IsEmptyWhenMade) {
    const ItemFilterList filters;
    EXPECT_EQ(filters.size(), 0u);
    EXPECT_TRUE(filters.GetParentTypes().empty());
}

TEST(ItemFilterList, AnswersTypeAndExpressionOfParentTypeAndGroup) {
    ItemFilterList filters;
    filters.Add("Part", "reps", "Mesh", "name == \"a\"");
    const Condition condition = ConditionOf(filters, "Part", "reps");
    EXPECT_EQ(condition.childType, "Mesh");
    EXPECT_EQ(condition.expression, "name == \"a\"");
}

TEST(ItemFilterList, EmptiesBothOutputsWhereNothingIsAsked) {
    ItemFilterList filters;
    filters.Add("Part", "reps", "Mesh", "x");
    for (const auto& [type, group] : {std::pair{"Part", "files"}, std::pair{"part", "reps"}}) {
        const Condition condition = ConditionOf(filters, type, group);
        EXPECT_EQ(condition.childType, "");
        EXPECT_EQ(condition.expression, "");
    }
}

TEST(ItemFilterList, AnEmptyGroupStandsForEveryGroupOfTheParentType) {
    ItemFilterList filters;
    filters.Add("Part", "", "Mesh", "");
    EXPECT_EQ(ConditionOf(filters, "Part", "reps").childType, "Mesh");
    EXPECT_EQ(ConditionOf(filters, "Part", "files").childType, "Mesh");
    EXPECT_EQ(ConditionOf(filters, "Project", "files").childType, "");
}

TEST(ItemFilterList, TheExactGroupGoesBeforeEveryGroup) {
    ItemFilterList filters;
    filters.Add("Part", "", "Mesh", "general");
    filters.Add("Part", "reps", "", "");
    EXPECT_EQ(ConditionOf(filters, "Part", "reps").expression, "");
    EXPECT_EQ(ConditionOf(filters, "Part", "files").expression, "general");
}

TEST(ItemFilterList, ASecondFilterForOneParentAndGroupReplacesTheFirst) {
    ItemFilterList filters;
    filters.Add("Part", "reps", "Mesh", "a");
    filters.Add("Part", "reps", "Cad", "b");
    EXPECT_EQ(filters.size(), 1u);
    EXPECT_EQ(ConditionOf(filters, "Part", "reps").childType, "Cad");
    EXPECT_EQ(ConditionOf(filters, "Part", "reps").expression, "b");
}

TEST(ItemFilterList, ListsEachParentTypeOnce) {
    ItemFilterList filters;
    filters.Add("Part", "reps", "Mesh", "");
    filters.Add("Part", "files", "", "x");
    filters.Add("Project", "", "Part", "");
    EXPECT_EQ(filters.size(), 3u);
    EXPECT_EQ(filters.GetParentTypes(), kxStlSet<kxString>({"Part", "Project"}));
}

TEST(ItemFilterList, CopiesAreIndependent) {
    ItemFilterList filters;
    filters.Add("Part", "reps", "Mesh", "");
    ItemFilterList copy(filters);
    copy.Add("Project", "", "Part", "");
    ItemFilterList assigned;
    assigned = filters;
    filters.Clear();
    EXPECT_EQ(filters.size(), 0u);
    EXPECT_EQ(copy.size(), 2u);
    EXPECT_EQ(assigned.size(), 1u);
    EXPECT_EQ(ConditionOf(assigned, "Part", "reps").childType, "Mesh");
}

}  // namespace
