#include <gtest/gtest.h>

#include "tests/catalogue/ModelHarness.h"

namespace tavo {
namespace {

const std::vector<LauncherCategory> kCategories{{"work", "Lavoro"}, {"child", "Progetti", "work"}};

TEST(Search, an_empty_query_with_all_selected_shows_everything_visible_by_name) {
    ModelHarness harness;
    harness.install({"C", "A", "B"});
    harness.storeHidden({"B"});
    EXPECT_EQ(harness.shown(), (Names{"A", "C"}));
}

TEST(Search, a_query_of_spaces_is_an_empty_query) {
    ModelHarness harness;
    harness.install({"A", "B"});
    EXPECT_EQ(harness.shown("   "), (Names{"A", "B"}));
}

TEST(Search, text_is_matched_as_one_string_ignoring_case) {
    ModelHarness harness;
    harness.install({"Photo Editor", "Editor of photos", "Photo  Editor"});
    EXPECT_EQ(harness.shown("PHOTO   editor"), Names{"Photo Editor"});
}

TEST(Search, diacritics_count) {
    ModelHarness harness;
    harness.install({"Caffè", "Caffe"});
    EXPECT_EQ(harness.shown("caffe"), Names{"Caffe"});
    EXPECT_EQ(harness.shown("CAFFÈ"), Names{"Caffè"});
}

TEST(Search, both_category_prefixes_work_in_any_case) {
    ModelHarness harness;
    harness.install({"Note", "Posta"});
    harness.store(kCategories);
    harness.storeAssignments({{"work", {"Posta"}}});
    EXPECT_EQ(harness.shown("CAT:lavoro"), Names{"Posta"});
    EXPECT_EQ(harness.shown("Categoria:Lavoro"), Names{"Posta"});
}

TEST(Search, a_bare_prefix_asks_for_a_category_of_that_name) {
    ModelHarness harness;
    harness.install({"Note", "Posta"});
    harness.store({{"x", "My cats"}});
    harness.storeAssignments({{"x", {"Posta"}}});
    EXPECT_EQ(harness.shown("cat:"), Names{"Posta"});
    EXPECT_TRUE(harness.shown("categoria:").empty());
}

TEST(Search, a_category_term_and_a_text_term_both_have_to_hold) {
    ModelHarness harness;
    harness.install({"Progetti", "Note", "Profili"});
    harness.store(kCategories);
    harness.storeAssignments({{"work", {"Progetti", "Note"}}});
    EXPECT_EQ(harness.shown("cat:lavoro pro"), Names{"Progetti"});
}

TEST(Search, a_category_is_found_by_part_of_its_name_or_by_its_whole_id) {
    ModelHarness harness;
    harness.install({"Posta"});
    harness.store(kCategories);
    harness.storeAssignments({{"work", {"Posta"}}});
    EXPECT_EQ(harness.shown("cat:avor"), Names{"Posta"});
    EXPECT_EQ(harness.shown("cat:WORK"), Names{"Posta"});
    EXPECT_TRUE(harness.shown("cat:wor").empty());
}

TEST(Search, a_category_query_without_a_category_shows_nothing) {
    ModelHarness harness;
    harness.install({"Posta"});
    EXPECT_TRUE(harness.shown("cat:nessuna").empty());
    EXPECT_TRUE(harness.shown("cat:tutte").empty());
}

TEST(Search, keywords_fill_a_category_by_name_ignoring_case_and_never_by_path) {
    ModelHarness harness;
    harness.install({"VS Code", "Note"});
    harness.store(kCategories);
    harness.storeRules({{"work", "  Code , zzz, applications"}});
    EXPECT_EQ(harness.shownIn("work"), Names{"VS Code"});
    EXPECT_EQ(harness.shown("cat:work"), Names{"VS Code"});
}

TEST(Search, a_rule_of_commas_and_spaces_matches_nothing) {
    ModelHarness harness;
    harness.install({"A, B"});
    harness.store(kCategories);
    harness.storeRules({{"work", " , ,, "}});
    EXPECT_TRUE(harness.shownIn("work").empty());
}

TEST(Search, sub_categories_are_not_part_of_their_parent) {
    ModelHarness harness;
    harness.install({"A", "B"});
    harness.store(kCategories);
    harness.storeAssignments({{"work", {"A"}}, {"child", {"B"}}});
    EXPECT_EQ(harness.shownIn("work"), Names{"A"});
    EXPECT_EQ(harness.shownIn("child"), Names{"B"});
}

TEST(Search, several_matching_categories_are_joined) {
    ModelHarness harness;
    harness.install({"A", "B", "C"});
    harness.store({{"1", "Giochi nuovi"}, {"2", "Giochi vecchi"}, {"3", "Altro"}});
    harness.storeAssignments({{"1", {"A"}}, {"3", {"C"}}});
    harness.storeRules({{"2", "b"}});
    EXPECT_EQ(harness.shown("cat:giochi"), (Names{"A", "B"}));
}

TEST(Search, recent_keeps_the_order_of_use_and_skips_what_is_gone_or_hidden) {
    ModelHarness harness;
    harness.install({"A", "B", "C"});
    harness.storeRecent({"C", "Gone", "A", "B"});
    EXPECT_EQ(harness.shownIn("recent"), (Names{"C", "A", "B"}));
    harness.model().toggleHidden(harness.app("A"));
    EXPECT_EQ(harness.shown(), (Names{"C", "B"}));
    EXPECT_EQ(harness.shown("b"), Names{"B"});
}

TEST(Search, a_hidden_application_is_in_no_view_but_hidden) {
    ModelHarness harness;
    harness.install({"A", "B"});
    harness.store(kCategories);
    harness.storeHidden({"A"});
    harness.storeFavorites({"A", "B"});
    harness.storeAssignments({{"work", {"A", "B"}}});
    EXPECT_EQ(harness.shownIn("favorites"), Names{"B"});
    EXPECT_EQ(harness.shownIn("work"), Names{"B"});
    EXPECT_EQ(harness.shownIn("all"), Names{"B"});
    EXPECT_EQ(harness.shownIn("hidden"), Names{"A"});
}

TEST(Search, text_and_category_narrow_the_hidden_view_too) {
    ModelHarness harness;
    harness.install({"Alfa", "Beta", "Alba"});
    harness.store(kCategories);
    harness.storeHidden({"Alfa", "Beta", "Alba"});
    harness.storeAssignments({{"work", {"Alfa", "Beta"}}});
    harness.model().setSelectedCategoryID("hidden");
    EXPECT_EQ(harness.shown("al"), (Names{"Alba", "Alfa"}));
    EXPECT_EQ(harness.shown("cat:lavoro al"), Names{"Alfa"});
}

TEST(Search, an_unknown_selection_shows_nothing) {
    ModelHarness harness;
    harness.install({"A"});
    EXPECT_TRUE(harness.shownIn("no such id").empty());
}

TEST(Search, in_a_turkish_locale_dotted_and_dotless_i_are_two_letters) {
    ModelHarness harness("tr_TR");
    harness.install({"Istanbul", "İzmir"});
    EXPECT_EQ(harness.shown("ıs"), Names{"Istanbul"});
    EXPECT_EQ(harness.shown("iz"), Names{"İzmir"});
    EXPECT_TRUE(harness.shown("ist").empty());
}

}  // namespace
}  // namespace tavo
