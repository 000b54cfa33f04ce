#include <csignal>

#include <gtest/gtest.h>

#include "platform/linux/session/WindowListing.h"
#include "platform/linux/wayland/WaylandSession.h"
#include "tests/platform/linux/fixtures/WaylandDesktop.h"
#include "tests/platform/linux/fixtures/XDesktop.h"

namespace tavo {
namespace {

bool seen(const std::vector<std::string>& variables) {
    const StartEnvironment environment(variables);
    return canListWindows(environment, isWaylandSession(environment));
}

TEST(WindowListing, there_is_none_without_a_display) {
    EXPECT_FALSE(seen({}));
    EXPECT_FALSE(seen({"DISPLAY=:987654"}));
    EXPECT_FALSE(seen({"WAYLAND_DISPLAY=/no/such/display"}));
}

TEST(WindowListing, on_x11_it_takes_a_window_manager) {
    for (const Manager manager : {Manager::none, Manager::openbox}) {
        const XDesktop desktop(manager);
        const std::string display = "DISPLAY=" + desktop.display();
        EXPECT_EQ(seen({display}), manager != Manager::none);
        // WAYLAND_DISPLAY is left over from a compositor that has ended: the X11 server is still
        // used.
        EXPECT_EQ(seen({display, "WAYLAND_DISPLAY=/no/such/display"}), manager != Manager::none);
    }
}

TEST(WindowListing, there_is_none_where_the_server_does_not_answer) {
    const XServer server;
    ::kill(server.process(), SIGSTOP);
    EXPECT_FALSE(seen({"DISPLAY=" + server.display()}));
}

TEST(WindowListing, on_wayland_it_takes_a_compositor_that_lists_windows) {
    const WaylandDesktop desktop;
    EXPECT_TRUE(seen({"WAYLAND_DISPLAY=" + desktop.display()}));
}

}  // namespace
}  // namespace tavo
