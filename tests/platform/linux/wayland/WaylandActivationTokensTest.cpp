#include <algorithm>
#include <set>

#include <gtest/gtest.h>

#include "tests/platform/linux/fixtures/ChildProgram.h"
#include "tests/platform/linux/fixtures/WaylandDesktop.h"

namespace tavo {
namespace {

// Presses a key often, on a keyboard of its own: the window with the focus hears it once Qt has
// found the keyboard.
ChildProgram typist(const WaylandDesktop& desktop) {
    return ChildProgram(desktop.onDesktop({"wtype", "-d", "50", std::string(1000, 'a')}));
}

TEST(WaylandActivationTokens, each_request_is_given_a_token_of_its_own) {
    const WaylandDesktop desktop;
    ChildProgram asker(desktop.onDesktop({TAVO_TEST_PROGRAMS "/tavo_token_asker"}));
    const ChildProgram keys = typist(desktop);
    std::set<std::string> tokens;
    for (int round = 0; round < 3; ++round) {
        const std::string line = asker.readLine().value_or("(ended)");
        EXPECT_TRUE(line.starts_with("token ")) << line;
        tokens.insert(line);
    }
    EXPECT_EQ(tokens.size(), 3U);
}

TEST(WaylandActivationTokens,
     one_for_our_window_brings_it_forward_and_is_never_in_the_environment) {
    WaylandDesktop desktop;
    desktop.command("focus_on_window_activation focus");
    ChildProgram spender(desktop.onDesktop({TAVO_TEST_PROGRAMS "/tavo_token_spender"}));
    const std::string shown = spender.readLine().value_or("(ended)");
    ASSERT_TRUE(shown.starts_with("shown ")) << shown;
    const pid_t ours = std::stoi(shown.substr(shown.find(' ')));
    ChildProgram asker(desktop.onDesktop({TAVO_TEST_PROGRAMS "/tavo_token_asker"}));
    // sway takes the token of a program that had the focus and can prove the user's input.
    const ChildProgram keys = typist(desktop);
    const std::string token = asker.readLine().value_or("(ended)");
    ASSERT_TRUE(token.starts_with("token ")) << token;
    ASSERT_NE(desktop.focused(), ours);
    EXPECT_EQ(spender.ask(token.substr(token.find(' ') + 1)), "not in the environment");
    EXPECT_TRUE(processes::becomesTrue([&] { return desktop.focused() == ours; }));
}

}  // namespace
}  // namespace tavo
