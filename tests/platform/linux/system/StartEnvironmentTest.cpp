#include <algorithm>
#include <cstdlib>

#include <gtest/gtest.h>

#include "platform/linux/system/StartEnvironment.h"

namespace tavo {
namespace {

using Variables = std::vector<std::string>;

TEST(StartEnvironment, is_the_environment_at_the_time_of_capture) {
    ::setenv("TAVO_TEST_VARIABLE", "before", 1);
    const StartEnvironment environment = StartEnvironment::capture();
    ::setenv("TAVO_TEST_VARIABLE", "after", 1);
    ::setenv("TAVO_TEST_LATER", "later", 1);
    EXPECT_EQ(environment.value("TAVO_TEST_VARIABLE"), "before");
    EXPECT_EQ(environment.value("TAVO_TEST_LATER"), std::nullopt);
    const Variables children = environment.forChildren();
    EXPECT_NE(std::find(children.begin(), children.end(), "TAVO_TEST_VARIABLE=before"),
              children.end());
    ::unsetenv("TAVO_TEST_VARIABLE");
    ::unsetenv("TAVO_TEST_LATER");
}

TEST(StartEnvironment, one_shot_variables_are_known_here_and_kept_from_children) {
    const StartEnvironment environment({"A=1", "DESKTOP_STARTUP_ID=id",
                                        "XDG_ACTIVATION_TOKEN=token", "DESKTOP_AUTOSTART_ID=auto",
                                        "DESKTOP_STARTUP_ID_OTHER=kept", "B="});
    EXPECT_EQ(environment.value("DESKTOP_STARTUP_ID"), "id");
    EXPECT_EQ(environment.value("XDG_ACTIVATION_TOKEN"), "token");
    EXPECT_EQ(environment.forChildren(), (Variables{"A=1", "DESKTOP_STARTUP_ID_OTHER=kept", "B="}));
}

TEST(StartEnvironment, values_may_be_empty_and_hold_equals_signs) {
    const StartEnvironment environment({"EMPTY=", "OPTIONS=a=b=c"});
    EXPECT_EQ(environment.value("EMPTY"), "");
    EXPECT_EQ(environment.value("OPTIONS"), "a=b=c");
    EXPECT_EQ(environment.value("OPTION"), std::nullopt);
}

TEST(StartEnvironment, what_is_no_variable_is_left_out_and_of_two_the_first_holds) {
    const StartEnvironment environment({"=x", "noequals", "", "A=1", "A=2"});
    EXPECT_EQ(environment.forChildren(), Variables{"A=1"});
}

}  // namespace
}  // namespace tavo
