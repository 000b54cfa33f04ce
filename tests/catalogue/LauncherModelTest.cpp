#include <gtest/gtest.h>

#include "catalogue/LauncherModel.h"
#include "tests/catalogue/ModelHarness.h"

namespace tavo {
namespace {

Names categoryNames(const std::vector<LauncherCategory>& categories) {
    Names names;
    for (const LauncherCategory& category : categories) {
        names.push_back(category.name);
    }
    return names;
}

const Names kDefaults{"Lavoro", "Creatività", "Utility"};

TEST(LauncherModel, a_first_start_has_the_default_categories_and_writes_nothing) {
    ModelHarness harness;
    harness.install({"Note"});
    LauncherModel& model = harness.model();
    EXPECT_EQ(model.customCategories(), makeDefaultCategories());
    EXPECT_EQ(model.fixedCategories(), makeFixedCategories());
    EXPECT_EQ(model.selectedCategoryID(), "all");
    EXPECT_EQ(model.query(), "");
    EXPECT_EQ(model.launchError(), std::nullopt);
    EXPECT_EQ(harness.shown(), Names{"Note"});
    for (const LauncherCategory& category : model.customCategories()) {
        EXPECT_EQ(model.ruleText(category), "") << category.name;
    }
    for (const char* view : {"favorites", "recent", "hidden", "work"}) {
        EXPECT_TRUE(harness.shownIn(view).empty()) << view;
    }
    EXPECT_TRUE(harness.defaults.writes.empty());
    EXPECT_FALSE(harness.defaults.holdsAnything());
}

TEST(LauncherModel, applications_are_found_before_construction_returns) {
    ModelHarness harness;
    harness.install({"B", "A"});
    EXPECT_EQ(ModelHarness::namesOf(harness.model().apps()), (Names{"A", "B"}));
}

TEST(LauncherModel, a_stored_empty_list_of_categories_means_none) {
    ModelHarness harness;
    harness.store({});
    EXPECT_TRUE(harness.model().customCategories().empty());
}

TEST(LauncherModel, stored_categories_are_taken_over_in_order) {
    ModelHarness harness;
    harness.store({{"b", "B"}, {"a", "A", "b"}});
    EXPECT_EQ(harness.model().customCategories(),
              (std::vector<LauncherCategory>{{"b", "B"}, {"a", "A", "b"}}));
}

TEST(LauncherModel, unreadable_categories_give_the_defaults_and_stay_in_the_store) {
    struct Row {
        const char* name;
        FakeDefaultsStore::RawValue value;
    };
    const Row rows[] = {
        {"not JSON", Data{"{["}},
        {"an object instead of an array", Data{"{}"}},
        {"one bad category", Data{R"([{"id":"a","name":"A"},{"id":"b"}])"}},
        {"an array of strings, not data", FakeDefaultsStore::RawArray{std::string("x")}},
        {"empty data", Data{""}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        ModelHarness harness;
        harness.defaults.hold(kCategoriesKey, row.value);
        EXPECT_EQ(categoryNames(harness.model().customCategories()), kDefaults);
        EXPECT_TRUE(harness.defaults.writes.empty());
    }
}

TEST(LauncherModel, unreadable_assignments_read_as_none) {
    for (const char* json : {"[]", "{\"work\":[1]}", "{\"work\":\"x\"}", "x"}) {
        SCOPED_TRACE(json);
        ModelHarness harness;
        harness.install({"Note"});
        harness.defaults.hold(kAssignmentsKey, Data{json});
        EXPECT_TRUE(harness.shownIn("work").empty());
    }
}

TEST(LauncherModel, stored_assignments_count) {
    ModelHarness harness;
    harness.install({"Note", "Posta"});
    harness.storeAssignments({{"work", {"Posta"}}});
    EXPECT_EQ(harness.shownIn("work"), Names{"Posta"});
    EXPECT_TRUE(harness.model().isAssigned(harness.app("Posta"), {"work", "Lavoro"}));
    EXPECT_FALSE(harness.model().isAssigned(harness.app("Note"), {"work", "Lavoro"}));
}

TEST(LauncherModel, a_rule_that_is_no_string_makes_all_rules_empty) {
    ModelHarness harness;
    harness.defaults.hold(kRulesKey, FakeDefaultsStore::RawDictionary{{"work", std::string("code")},
                                                                      {"utility", true}});
    EXPECT_EQ(harness.model().ruleText({"work", "Lavoro"}), "");
    EXPECT_TRUE(harness.defaults.writes.empty());
}

TEST(LauncherModel, a_hidden_path_stored_twice_is_hidden_once) {
    ModelHarness harness;
    harness.install({"Note"});
    harness.storeHidden({"Note", "Note"});
    EXPECT_EQ(harness.shownIn("hidden"), Names{"Note"});
    harness.model().toggleHidden(harness.app("Note"));
    EXPECT_TRUE(harness.shownIn("hidden").empty());
}

TEST(LauncherModel, recent_paths_are_taken_over_as_stored_however_many) {
    ModelHarness harness;
    const Names names = ModelHarness::numbered(40);
    harness.install(names);
    harness.storeRecent(names);
    EXPECT_EQ(harness.shownIn("recent"), names);
    EXPECT_TRUE(harness.defaults.writes.empty());
}

TEST(LauncherModel, what_names_things_that_are_gone_is_kept) {
    ModelHarness harness;
    harness.storeHidden({"Gone"});
    harness.storeRecent({"Gone"});
    harness.storeAssignments({{"no such category", {"Gone"}}});
    harness.storeRules({{"no such category", "x"}});
    EXPECT_EQ(harness.model().ruleText({"no such category", ""}), "x");
    harness.install({"Gone"});
    harness.model().reload();
    EXPECT_EQ(harness.shownIn("hidden"), Names{"Gone"});
    EXPECT_TRUE(harness.defaults.writes.empty());
}

TEST(LauncherModel, each_property_announces_before_it_changes) {
    ModelHarness harness;
    LauncherModel& model = harness.model();
    std::string seen;
    const auto watch = model.objectWillChange.subscribe([&] { seen = model.query(); });
    model.setQuery("a");
    EXPECT_EQ(seen, "");
    model.setQuery("b");
    EXPECT_EQ(seen, "a");
    model.setQuery("b");
    EXPECT_EQ(seen, "b");
}

TEST(LauncherModel, selection_query_and_error_are_never_stored) {
    ModelHarness harness;
    harness.model().setQuery("x");
    harness.model().setSelectedCategoryID("hidden");
    harness.model().clearLaunchError();
    EXPECT_EQ(harness.announcements, 3);
    EXPECT_TRUE(harness.defaults.writes.empty());
}

}  // namespace
}  // namespace tavo
