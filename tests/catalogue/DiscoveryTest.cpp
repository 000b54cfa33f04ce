#include <gtest/gtest.h>

#include "tests/catalogue/ModelHarness.h"

namespace tavo {
namespace {

std::vector<std::string> pathsOf(const LauncherModel& model) {
    std::vector<std::string> paths;
    for (const AppItem& item : model.apps()) {
        paths.push_back(item.url.path);
    }
    return paths;
}

TEST(Discovery, scans_four_folders_one_level_deep) {
    ModelHarness harness;
    harness.files.home = "/home/anna";
    harness.files.setFolder("/Applications", {"A.app", "Suite"});
    harness.files.setFolder("/Applications/Suite", {"Inner.app"});
    harness.files.setFolder("/System/Applications", {"B.app", "Utilities"});
    harness.files.setFolder("/System/Applications/Utilities", {"C.app"});
    harness.files.setFolder("/home/anna/Applications", {"D.app"});
    EXPECT_EQ(pathsOf(harness.model()),
              (std::vector<std::string>{"/Applications/A.app", "/System/Applications/B.app",
                                        "/System/Applications/Utilities/C.app",
                                        "/home/anna/Applications/D.app"}));
}

TEST(Discovery, folders_that_cannot_be_listed_contribute_nothing) {
    ModelHarness harness;
    harness.files.home = "/home/anna";
    harness.files.setUnreadable("/Applications");
    harness.files.setFolder("/System/Applications", {"B.app"});
    EXPECT_EQ(ModelHarness::namesOf(harness.model().apps()), Names{"B"});
}

TEST(Discovery, without_a_folder_in_the_home_folder_the_other_three_still_count) {
    ModelHarness harness;
    harness.files.home = "/home/anna";
    harness.files.setFolder("/Applications", {"A.app"});
    harness.files.setFolder("/System/Applications", {"B.app"});
    harness.files.setFolder("/System/Applications/Utilities", {"C.app"});
    EXPECT_EQ(ModelHarness::namesOf(harness.model().apps()), (Names{"A", "B", "C"}));
}

TEST(Discovery, with_every_folder_failing_the_list_is_empty) {
    ModelHarness harness;
    EXPECT_TRUE(harness.model().apps().empty());
}

TEST(Discovery, a_path_found_twice_is_listed_once_and_the_first_one_wins) {
    ModelHarness harness;
    harness.files.setFolder("/Applications", {"Note.app", "Note.app"});
    harness.applications.install({"Another name", "/Applications/Note.app"});
    EXPECT_EQ(ModelHarness::namesOf(harness.model().apps()), Names{"Note"});
}

TEST(Discovery, only_the_extension_decides_and_its_case_counts) {
    ModelHarness harness;
    harness.files.setFolder("/Applications",
                            {"Plain folder.app", "Upper.APP", ".app", "Foo.Bar.app", "text.txt"});
    EXPECT_EQ(ModelHarness::namesOf(harness.model().apps()), (Names{"Foo.Bar", "Plain folder"}));
}

TEST(Discovery, an_entry_whose_bytes_are_not_utf8_is_not_listed) {
    ModelHarness harness;
    harness.files.setFolder("/Applications", {"Caff\xe8.app", "Caffè.app"});
    EXPECT_EQ(ModelHarness::namesOf(harness.model().apps()), Names{"Caffè"});
}

TEST(Discovery, names_sort_as_people_expect_numbers_to) {
    ModelHarness harness;
    harness.install({"App 10", "app 1", "App 2", "Éditeur", "Editor", "zebra"});
    EXPECT_EQ(ModelHarness::namesOf(harness.model().apps()),
              (Names{"app 1", "App 2", "App 10", "Éditeur", "Editor", "zebra"}));
}

TEST(Discovery, applications_of_the_system_stand_among_the_bundles) {
    ModelHarness harness;
    harness.install({"B"});
    harness.applications.install({"C", "/usr/share/applications/c.desktop"});
    harness.applications.install({"A", "/usr/share/applications/a.desktop"});
    EXPECT_EQ(ModelHarness::namesOf(harness.model().apps()), (Names{"A", "B", "C"}));
}

TEST(Discovery, a_reload_replaces_the_list_in_one_change_with_new_identities) {
    ModelHarness harness;
    harness.install({"A"});
    LauncherModel& model = harness.model();
    const Uuid before = model.apps().front().id;
    harness.install({"A", "B"});
    model.reload();
    EXPECT_EQ(harness.announcements, 1);
    EXPECT_EQ(ModelHarness::namesOf(model.apps()), (Names{"A", "B"}));
    EXPECT_NE(model.apps().front().id, before);
}

TEST(Discovery, marks_of_applications_that_are_gone_come_back_with_them) {
    ModelHarness harness;
    harness.install({"A"});
    harness.model().toggleFavorite(harness.app("A"));
    harness.install({});
    harness.model().reload();
    EXPECT_TRUE(harness.shownIn("favorites").empty());
    harness.install({"A"});
    harness.model().reload();
    EXPECT_EQ(harness.shownIn("favorites"), Names{"A"});
}

}  // namespace
}  // namespace tavo
