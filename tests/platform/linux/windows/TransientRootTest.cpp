#include <gtest/gtest.h>

#include "platform/linux/windows/TransientRoot.h"

namespace tavo {
namespace {

struct Window {
    const Window* parent = nullptr;
};

TEST(TransientRoot, a_window_that_is_no_dialog_is_its_own) {
    const Window window;
    EXPECT_EQ(&transientRoot(window), &window);
}

TEST(TransientRoot, a_dialog_of_dialogs_has_the_window_at_the_end) {
    const Window window;
    const Window dialog{&window};
    const Window question{&dialog};
    EXPECT_EQ(&transientRoot(dialog), &window);
    EXPECT_EQ(&transientRoot(question), &window);
}

TEST(TransientRoot, a_circle_ends_at_one_of_its_windows) {
    Window first;
    const Window second{&first};
    first.parent = &second;
    const Window* const root = &transientRoot(first);
    EXPECT_TRUE(root == &first || root == &second);
    Window own;
    own.parent = &own;
    EXPECT_EQ(&transientRoot(own), &own);
}

}  // namespace
}  // namespace tavo
