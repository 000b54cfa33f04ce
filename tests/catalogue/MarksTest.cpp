#include <gtest/gtest.h>

#include "tests/catalogue/ModelHarness.h"

namespace tavo {
namespace {

const LauncherCategory kWork("work", "Lavoro");

TEST(Marks, hiding_twice_restores_the_set_and_writes_the_key_twice) {
    ModelHarness harness;
    harness.install({"A", "B"});
    harness.model().toggleHidden(harness.app("A"));
    EXPECT_TRUE(harness.model().isHidden(harness.app("A")));
    harness.model().toggleHidden(harness.app("A"));
    EXPECT_FALSE(harness.model().isHidden(harness.app("A")));
    EXPECT_EQ(harness.defaults.writes, (std::vector<FakeDefaultsStore::Write>{
                                           {kHiddenKey, StringArray{ModelHarness::pathOf("A")}},
                                           {kHiddenKey, StringArray{}}}));
}

TEST(Marks, hiding_under_favorites_removes_it_there_at_once_and_it_stays_a_favorite) {
    ModelHarness harness;
    harness.install({"A"});
    harness.storeFavorites({"A"});
    EXPECT_EQ(harness.shownIn("favorites"), Names{"A"});
    harness.model().toggleHidden(harness.app("A"));
    EXPECT_TRUE(harness.shown().empty());
    EXPECT_TRUE(Favorites::shared().urls().contains(ModelHarness::pathOf("A")));
    harness.model().toggleHidden(harness.app("A"));
    EXPECT_EQ(harness.shown(), Names{"A"});
}

TEST(Marks, a_favorite_is_announced_though_it_is_no_property_of_the_model) {
    ModelHarness harness;
    harness.install({"A"});
    const AppItem app = harness.app("A");
    harness.announcements = 0;
    harness.model().toggleFavorite(app);
    EXPECT_EQ(harness.announcements, 1);
    EXPECT_EQ(harness.shownIn("favorites"), Names{"A"});
}

TEST(Marks, an_assignment_listed_twice_is_removed_completely) {
    ModelHarness harness;
    harness.install({"A"});
    harness.storeAssignments({{"work", {"A", "A"}}});
    harness.model().toggleAssignment(harness.app("A"), kWork);
    EXPECT_FALSE(harness.model().isAssigned(harness.app("A"), kWork));
}

TEST(Marks, removing_the_last_application_leaves_an_entry_with_an_empty_list) {
    ModelHarness harness;
    harness.install({"A"});
    harness.model().toggleAssignment(harness.app("A"), kWork);
    harness.model().toggleAssignment(harness.app("A"), kWork);
    EXPECT_EQ(harness.defaults.data(kAssignmentsKey), R"({"work":[]})");
}

TEST(Marks, a_keyword_is_no_assignment_and_assigning_outlives_the_keyword) {
    ModelHarness harness;
    harness.install({"Code"});
    harness.storeRules({{"work", "code"}});
    EXPECT_FALSE(harness.model().isAssigned(harness.app("Code"), kWork));
    harness.model().toggleAssignment(harness.app("Code"), kWork);
    EXPECT_TRUE(harness.model().isAssigned(harness.app("Code"), kWork));
    harness.model().setCategoriesAndRules(harness.model().customCategories(), {});
    EXPECT_EQ(harness.shownIn("work"), Names{"Code"});
}

TEST(Marks, are_written_before_they_are_announced_for_the_last_time) {
    ModelHarness harness;
    harness.install({"A"});
    const AppItem app = harness.app("A");
    std::size_t writesSeen = 0;
    const auto watch = harness.model().objectWillChange.subscribe(
        [&] { writesSeen = harness.defaults.writes.size(); });
    harness.model().toggleHidden(app);
    EXPECT_EQ(writesSeen, 1U);
    harness.model().toggleFavorite(app);
    EXPECT_EQ(writesSeen, 2U);
    harness.model().toggleAssignment(app, kWork);
    EXPECT_EQ(writesSeen, 3U);
}

}  // namespace
}  // namespace tavo
