#include <gtest/gtest.h>

#include "catalogue/CategoryTree.h"
#include "tests/catalogue/ModelHarness.h"

namespace tavo {
namespace {

using Categories = std::vector<LauncherCategory>;

std::vector<std::string> idsOf(const Categories& categories) {
    std::vector<std::string> ids;
    for (const LauncherCategory& category : categories) {
        ids.push_back(category.id);
    }
    return ids;
}

std::vector<std::string> order(const Categories& custom) {
    return idsOf(inSidebarOrder({}, custom));
}

TEST(CategoryTree, the_sidebar_lists_fixed_ones_then_parents_before_their_children) {
    const Categories custom{
        {"a", "A"}, {"b", "B"}, {"a1", "A1", "a"}, {"a2", "A2", "a"}, {"a11", "A11", "a1"}};
    EXPECT_EQ(idsOf(inSidebarOrder(makeFixedCategories(), custom)),
              (std::vector<std::string>{"all", "favorites", "recent", "hidden", "a", "a1", "a11",
                                        "a2", "b"}));
}

TEST(CategoryTree, orphans_and_circles_stand_at_the_end_in_stored_order) {
    EXPECT_EQ(order({{"x", "X", "nobody"}, {"a", "A", "b"}, {"b", "B", "a"}, {"t", "T"}}),
              (std::vector<std::string>{"t", "x", "a", "b"}));
}

TEST(CategoryTree, of_two_categories_with_one_id_the_sidebar_lists_the_first) {
    EXPECT_EQ(order({{"a", "First"}, {"a", "Second"}, {"b", "B"}}),
              (std::vector<std::string>{"a", "b"}));
}

TEST(CategoryTree, a_circle_of_two_has_depth_two) {
    const Categories custom{{"a", "A", "b"}, {"b", "B", "a"}};
    EXPECT_EQ(depthOf(custom[0], custom), 2);
}

TEST(CategoryTree, depths_asked_for_together_are_those_asked_for_one_by_one) {
    // A long list with chains, circles, parents that do not exist, and ids that occur twice.
    Categories custom;
    for (int i = 0; i < 200; ++i) {
        const std::string id = std::to_string(i % 150);
        const std::string parent = std::to_string((i * 7 + i / 3) % 170);
        custom.emplace_back(id, "Name", i % 5 == 0 ? std::nullopt : std::optional(parent));
    }
    const CategoryDepths depths(custom);
    int deepest = 0;
    for (const LauncherCategory& category : custom) {
        EXPECT_EQ(depths.of(category), depthOf(category, custom)) << category.id;
        deepest = std::max(deepest, depths.of(category));
    }
    EXPECT_EQ(deepest, 4);
}

TEST(CategoryTree, a_stored_circle_stands_below_the_fixed_categories_two_levels_deep) {
    ModelHarness harness;
    harness.store({{"a", "A", "b"}, {"b", "B", "a"}, {"t", "T"}});
    const LauncherModel& model = harness.model();
    EXPECT_EQ(idsOf(model.sidebarCategories()),
              (std::vector<std::string>{"all", "favorites", "recent", "hidden", "t", "a", "b"}));
    EXPECT_EQ(model.categoryDepth(model.customCategories()[0]), 2);
}

TEST(CategoryTree, two_of_one_id_are_both_stored_and_the_first_one_is_listed) {
    ModelHarness harness;
    harness.store({});
    harness.model().setCategoriesAndRules({{"a", "Prima"}, {"a", "Seconda"}}, {});
    EXPECT_EQ(harness.model().customCategories(), (Categories{{"a", "Prima"}, {"a", "Seconda"}}));
    const Categories listed = harness.model().sidebarCategories();
    ASSERT_EQ(listed.size(), 5U);
    EXPECT_EQ(listed.back(), (LauncherCategory{"a", "Prima"}));
}

TEST(CategoryTree, the_deepest_of_six_nested_categories_has_depth_four) {
    Categories chain{{"0", "0"}};
    for (int i = 1; i < 6; ++i) {
        chain.emplace_back(std::to_string(i), std::to_string(i), std::to_string(i - 1));
    }
    const std::vector<int> expected{0, 1, 2, 3, 4, 4};
    for (std::size_t i = 0; i < chain.size(); ++i) {
        EXPECT_EQ(depthOf(chain[i], chain), expected[i]) << i;
    }
}

TEST(CategoryTree, a_chain_of_a_hundred_thousand_is_listed_without_harm) {
    Categories chain{{"0", "0"}};
    for (int i = 1; i < 100'000; ++i) {
        chain.emplace_back(std::to_string(i), std::to_string(i), std::to_string(i - 1));
    }
    EXPECT_EQ(order(chain).size(), chain.size());
}

struct Row {
    const char* name;
    Categories edited;
    Categories kept;
};

TEST(CategoryTree, an_edited_list_is_repaired) {
    const TextRules text("en_US");
    const Row rows[] = {
        {"names are trimmed", {{"a", "  Lavoro\n"}}, {{"a", "Lavoro"}}},
        {"a name of spaces is dropped", {{"a", "  "}, {"b", "B"}}, {{"b", "B"}}},
        {"case does not make names different",
         {{"a", "Lavoro"}, {"b", "lavoro"}},
         {{"a", "Lavoro"}}},
        {"nor do diacritics", {{"a", "Caffè"}, {"b", "caffe"}}, {{"a", "Caffè"}}},
        {"equal ids with different names both stay",
         {{"a", "A"}, {"a", "B"}},
         {{"a", "A"}, {"a", "B"}}},
        {"a child before its parent becomes top-level",
         {{"c", "C", "p"}, {"p", "P"}},
         {{"c", "C"}, {"p", "P"}}},
        {"its own parent becomes top-level", {{"a", "A", "a"}}, {{"a", "A"}}},
        {"a child of a dropped one becomes top-level", {{"p", " "}, {"c", "C", "p"}}, {{"c", "C"}}},
        {"a child after its parent keeps it",
         {{"p", "P"}, {"c", "C", "p"}},
         {{"p", "P"}, {"c", "C", "p"}}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(repaired(row.edited, text), row.kept);
    }
}

TEST(CategoryTree, an_empty_list_empties_everything_and_keeps_the_fixed_categories) {
    ModelHarness harness;
    harness.install({"A"});
    harness.storeAssignments({{"work", {"A"}}});
    harness.model().setSelectedCategoryID("work");
    harness.model().setCategoriesAndRules({}, {});
    EXPECT_TRUE(harness.model().customCategories().empty());
    EXPECT_EQ(harness.model().selectedCategoryID(), "all");
    EXPECT_EQ(idsOf(harness.model().sidebarCategories()),
              (std::vector<std::string>{"all", "favorites", "recent", "hidden"}));
    EXPECT_EQ(harness.defaults.data(kAssignmentsKey), "{}");
    EXPECT_EQ(harness.defaults.data(kCategoriesKey), "[]");
}

TEST(CategoryTree, a_dropped_category_loses_its_assignments_and_keeps_its_rule) {
    ModelHarness harness;
    harness.install({"A"});
    harness.storeAssignments({{"work", {"A"}}});
    harness.model().setCategoriesAndRules({{"work", "   "}}, {{"work", "code"}});
    EXPECT_EQ(harness.defaults.data(kAssignmentsKey), "{}");
    EXPECT_EQ(harness.model().ruleText({"work", ""}), "code");
}

TEST(CategoryTree, the_models_own_list_may_be_handed_back_to_it) {
    ModelHarness harness;
    harness.store({{"a", "Lavoro"}, {"b", "lavoro"}});
    LauncherModel& model = harness.model();
    model.setCategoriesAndRules(model.customCategories(), {{"a", "x"}, {"b", "y"}});
    EXPECT_EQ(model.customCategories(), (Categories{{"a", "Lavoro"}}));
    EXPECT_EQ(model.ruleText({"b", ""}), "y");
}

TEST(CategoryTree, rules_are_stored_as_typed_without_blank_and_foreign_ones) {
    ModelHarness harness;
    harness.storeRules({{"old", "x"}});
    harness.model().setCategoriesAndRules(
        {{"work", "Lavoro"}, {"utility", "Utility"}},
        {{"work", " a, b "}, {"utility", "  "}, {"foreign", "x"}});
    EXPECT_EQ(harness.defaults.stringDictionary(kRulesKey), (StringDictionary{{"work", " a, b "}}));
    EXPECT_EQ(harness.model().ruleText({"utility", ""}), "");
    EXPECT_EQ(harness.model().ruleText({"old", ""}), "");
}

TEST(CategoryTree, deleting_the_selected_category_selects_all) {
    ModelHarness harness;
    harness.model().setSelectedCategoryID("creative");
    harness.model().setCategoriesAndRules({{"work", "Lavoro"}}, {});
    EXPECT_EQ(harness.model().selectedCategoryID(), "all");
    harness.model().setSelectedCategoryID("work");
    harness.model().setCategoriesAndRules({{"work", "Lavoro"}}, {});
    EXPECT_EQ(harness.model().selectedCategoryID(), "work");
    harness.model().setSelectedCategoryID("recent");
    harness.model().setCategoriesAndRules({}, {});
    EXPECT_EQ(harness.model().selectedCategoryID(), "recent");
}

TEST(CategoryTree, an_edit_writes_categories_assignments_and_rules_in_this_order) {
    ModelHarness harness;
    harness.model().setCategoriesAndRules({{"work", "Lavoro"}}, {});
    std::vector<std::string> keys;
    for (const auto& write : harness.defaults.writes) {
        keys.push_back(write.key);
    }
    EXPECT_EQ(keys, (std::vector<std::string>{kCategoriesKey, kAssignmentsKey, kRulesKey}));
}

}  // namespace
}  // namespace tavo
