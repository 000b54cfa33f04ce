#include <gtest/gtest.h>

#include "tests/catalogue/ModelHarness.h"

namespace tavo {
namespace {

StringArray recentPaths(const ModelHarness& harness) {
    return harness.defaults.stringArray(kRecentsKey).value_or(StringArray{});
}

TEST(Opening, the_same_application_twice_leaves_one_entry_at_the_front) {
    ModelHarness harness;
    harness.install({"A", "B"});
    for (const char* name : {"A", "B", "A"}) {
        harness.model().open(harness.app(name));
    }
    EXPECT_EQ(recentPaths(harness), ModelHarness::pathsOf({"A", "B"}));
    EXPECT_EQ(harness.shownIn("recent"), (Names{"A", "B"}));
}

TEST(Opening, the_thirty_first_application_drops_the_oldest) {
    ModelHarness harness;
    const Names names = ModelHarness::numbered(31);
    harness.install(names);
    for (const std::string& name : names) {
        harness.model().open(harness.app(name));
    }
    EXPECT_EQ(recentPaths(harness).size(), 30U);
    EXPECT_EQ(recentPaths(harness).front(), ModelHarness::pathOf("App 30"));
    EXPECT_EQ(recentPaths(harness).back(), ModelHarness::pathOf("App 1"));
}

TEST(Opening, a_longer_stored_list_is_cut_to_thirty) {
    ModelHarness harness;
    const Names names = ModelHarness::numbered(50);
    harness.install(names);
    harness.storeRecent(names);
    harness.model().open(harness.app("App 49"));
    EXPECT_EQ(recentPaths(harness).size(), 30U);
    EXPECT_EQ(recentPaths(harness).front(), ModelHarness::pathOf("App 49"));
}

TEST(Opening, is_recorded_before_anything_else_happens) {
    ModelHarness harness;
    harness.install({"A"});
    const AppItem app = harness.app("A");
    std::vector<std::size_t> writesBefore;
    harness.workspace.onCall = [&] { writesBefore.push_back(harness.defaults.writes.size()); };
    harness.model().open(app);
    // The workspace was called twice, for the facts of the bundle and to open it, each time after
    // the write.
    EXPECT_EQ(writesBefore, (std::vector<std::size_t>{1, 1}));
    ASSERT_EQ(harness.workspace.openings.size(), 1U);
    harness.workspace.complete(0, std::nullopt, Error{"no"});
    EXPECT_EQ(recentPaths(harness), ModelHarness::pathsOf({"A"}));
}

TEST(Opening, the_recent_list_is_announced_again_after_it_is_written) {
    ModelHarness harness;
    harness.install({"A"});
    const AppItem app = harness.app("A");
    std::size_t writesSeen = 0;
    const auto watch = harness.model().objectWillChange.subscribe(
        [&] { writesSeen = harness.defaults.writes.size(); });
    harness.model().open(app);
    EXPECT_EQ(writesSeen, 1U);
}

TEST(Opening, announces_each_step_on_the_recent_list_and_once_more_after_the_write) {
    ModelHarness harness;
    harness.install({"A"});
    const AppItem app = harness.app("A");
    std::vector<std::size_t> writesBefore;
    const auto watch = harness.model().objectWillChange.subscribe(
        [&] { writesBefore.push_back(harness.defaults.writes.size()); });
    harness.model().open(app);
    EXPECT_EQ(writesBefore, (std::vector<std::size_t>{0, 0, 0, 1}));
}

TEST(Opening, what_is_not_running_is_opened_with_activation) {
    ModelHarness harness;
    harness.install({"A"});
    harness.workspace.bundles[ModelHarness::pathOf("A")] = {
        .identifier = "org.example.a", .signature = {}, .executablePath = {}};
    harness.model().open(harness.app("A"));
    ASSERT_EQ(harness.workspace.openings.size(), 1U);
    EXPECT_EQ(harness.workspace.openings[0].path, ModelHarness::pathOf("A"));
    EXPECT_TRUE(harness.workspace.openings[0].activates);
}

TEST(Opening, what_runs_is_activated_not_opened_and_still_becomes_recent) {
    ModelHarness harness;
    harness.install({"A"});
    harness.workspace.bundles[ModelHarness::pathOf("A")] = {
        .identifier = "org.example.a", .signature = {}, .executablePath = {}};
    const RunningApplication first{.processIdentifier = 7, .identifier = "org.example.a"};
    const RunningApplication second{.processIdentifier = 8, .identifier = "org.example.a"};
    harness.running.running = {{first, {}}, {second, {}}};
    harness.model().open(harness.app("A"));
    EXPECT_TRUE(harness.workspace.openings.empty());
    EXPECT_EQ(harness.running.userRequests, Names{"org.example.a"});
    EXPECT_EQ(harness.running.activated(), std::vector{first});
    EXPECT_EQ(recentPaths(harness), ModelHarness::pathsOf({"A"}));
}

TEST(Opening, of_two_running_instances_the_first_in_the_systems_order_is_activated) {
    ModelHarness harness;
    harness.install({"A"});
    harness.workspace.bundles[ModelHarness::pathOf("A")] = {
        .identifier = "org.example.a", .signature = {}, .executablePath = {}};
    const RunningApplication high{.processIdentifier = 900, .identifier = "org.example.a"};
    const RunningApplication low{.processIdentifier = 8, .identifier = "org.example.a"};
    harness.running.running = {{high, {}}, {low, {}}};
    harness.model().open(harness.app("A"));
    EXPECT_EQ(harness.running.activated(), std::vector{high});
}

TEST(Opening, the_bundle_is_read_and_looked_up_before_it_is_opened) {
    ModelHarness harness;
    harness.install({"A"});
    harness.workspace.bundles[ModelHarness::pathOf("A")] = {
        .identifier = "org.example.a", .signature = {}, .executablePath = {}};
    const AppItem app = harness.app("A");
    std::vector<std::size_t> lookUpsBefore;
    harness.workspace.onCall = [&] {
        lookUpsBefore.push_back(harness.running.identifiersAsked.size());
    };
    harness.model().open(app);
    EXPECT_EQ(lookUpsBefore, (std::vector<std::size_t>{0, 1}));
    EXPECT_EQ(harness.running.identifiersAsked, Names{"org.example.a"});
    EXPECT_EQ(harness.running.userRequests, Names{"org.example.a"});
    EXPECT_TRUE(harness.processes.runs.empty());
}

TEST(Opening, a_bundle_without_identifier_is_not_looked_up) {
    ModelHarness harness;
    harness.install({"A"});
    harness.workspace.bundles[ModelHarness::pathOf("A")] = {};
    harness.model().open(harness.app("A"));
    EXPECT_TRUE(harness.running.identifiersAsked.empty());
    EXPECT_TRUE(harness.running.userRequests.empty());
    EXPECT_EQ(harness.workspace.openings.size(), 1U);
}

TEST(Opening, what_is_no_bundle_is_opened_with_activation_all_the_same) {
    ModelHarness harness;
    harness.install({"A"});
    harness.model().open(harness.app("A"));
    ASSERT_EQ(harness.workspace.openings.size(), 1U);
    EXPECT_TRUE(harness.workspace.openings[0].activates);
    EXPECT_TRUE(harness.running.identifiersAsked.empty());
}

TEST(Opening, a_started_application_is_activated) {
    ModelHarness harness;
    harness.install({"A"});
    harness.model().open(harness.app("A"));
    const RunningApplication started{.processIdentifier = 9, .identifier = ""};
    harness.workspace.complete(0, started, std::nullopt);
    EXPECT_EQ(harness.running.activated(), std::vector{started});
    EXPECT_EQ(harness.model().launchError(), std::nullopt);
}

TEST(Opening, an_error_becomes_the_launch_error) {
    ModelHarness harness;
    harness.install({"A"});
    harness.model().open(harness.app("A"));
    harness.announcements = 0;
    harness.workspace.complete(0, std::nullopt, Error{"Non c’è."});
    EXPECT_EQ(harness.model().launchError(), "Non c’è.");
    EXPECT_EQ(harness.announcements, 1);
    harness.model().clearLaunchError();
    EXPECT_EQ(harness.model().launchError(), std::nullopt);
}

TEST(Opening, an_application_that_came_with_an_error_is_activated_and_the_error_told) {
    ModelHarness harness;
    harness.install({"A"});
    harness.model().open(harness.app("A"));
    const RunningApplication started{.processIdentifier = 9, .identifier = ""};
    harness.workspace.complete(0, started, Error{"half"});
    EXPECT_EQ(harness.running.activated(), std::vector{started});
    EXPECT_EQ(harness.model().launchError(), "half");
    EXPECT_EQ(recentPaths(harness), ModelHarness::pathsOf({"A"}));
}

TEST(Opening, a_newer_error_replaces_the_older) {
    ModelHarness harness;
    harness.install({"A", "B"});
    harness.model().open(harness.app("A"));
    harness.model().open(harness.app("B"));
    harness.workspace.complete(0, std::nullopt, Error{"first"});
    harness.workspace.complete(1, std::nullopt, Error{"second"});
    EXPECT_EQ(harness.model().launchError(), "second");
}

TEST(Opening, an_answer_after_the_model_is_gone_does_nothing) {
    ModelHarness harness;
    harness.install({"A"});
    harness.model().open(harness.app("A"));
    harness.announcements = 0;
    harness.dropModel();
    harness.workspace.complete(0, std::nullopt, Error{"late"});
    EXPECT_EQ(harness.announcements, 0);
}

}  // namespace
}  // namespace tavo
