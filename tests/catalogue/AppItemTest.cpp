#include <gtest/gtest.h>

#include "catalogue/AppItem.h"

namespace tavo {
namespace {

TEST(AppItem, two_made_from_the_same_name_and_path_have_different_ids) {
    const AppItem first("Note", {"/Applications/Note.app"});
    const AppItem second("Note", {"/Applications/Note.app"});
    EXPECT_NE(first.id, second.id);
}

TEST(AppItem, a_copy_is_the_same_tile) {
    const AppItem item("Note", {"/Applications/Note.app"});
    const AppItem copy = item;
    EXPECT_EQ(copy.id, item.id);
    EXPECT_EQ(copy.name, "Note");
    EXPECT_EQ(copy.url.path, "/Applications/Note.app");
}

}  // namespace
}  // namespace tavo
