#include <algorithm>
#include <map>

#include <gtest/gtest.h>

#include "platform/linux/icons/IconEnvironment.h"
#include "tests/platform/linux/fixtures/ScopedVariables.h"

namespace tavo {
namespace {

IconEnvironment from(const std::map<std::string, std::string>& variables, bool wayland = false) {
    const auto variable = [&](const char* name) {
        const auto found = variables.find(name);
        return found == variables.end() ? std::string() : found->second;
    };
    return IconEnvironment::fromVariables(variable, wayland);
}

using Strings = std::vector<std::string>;

TEST(IconEnvironment, without_variables_the_usual_folders_count) {
    const auto environment = from({{"HOME", "/home/a"}});
    EXPECT_EQ(environment.iconFolders,
              (Strings{"/home/a/.icons", "/home/a/.local/share/icons", "/usr/local/share/icons",
                       "/usr/share/icons", "/home/a/.local/share/flatpak/exports/share/icons",
                       "/var/lib/flatpak/exports/share/icons", "/var/lib/snapd/desktop/icons"}));
    EXPECT_TRUE(std::ranges::count(environment.pixmapFolders, "/usr/share/pixmaps") == 1);
    EXPECT_EQ(environment.configFolders, (Strings{"/home/a/.config", "/etc/xdg", "/etc"}));
    EXPECT_EQ(environment.cacheFolder, "/home/a/.cache/tavolauncher/icons");
    EXPECT_TRUE(environment.desktops.empty());
    EXPECT_EQ(environment.display, "");
}

TEST(IconEnvironment, variables_count_where_they_are_absolute) {
    const auto environment = from({{"HOME", "/home/a"},
                                   {"XDG_DATA_HOME", "/d/"},
                                   {"XDG_DATA_DIRS", "/one/:relative::/two:/one"},
                                   {"XDG_CONFIG_HOME", "relative"},
                                   {"XDG_CONFIG_DIRS", "/kde:/etc/xdg"},
                                   {"XDG_CACHE_HOME", "/c"},
                                   {"XDG_CURRENT_DESKTOP", "ubuntu:GNOME"},
                                   {"DISPLAY", ":7"}});
    EXPECT_EQ(Strings(environment.iconFolders.begin(), environment.iconFolders.begin() + 4),
              (Strings{"/home/a/.icons", "/d/icons", "/one/icons", "/two/icons"}));
    EXPECT_EQ(environment.configFolders, (Strings{"/home/a/.config", "/kde", "/etc/xdg", "/etc"}));
    EXPECT_EQ(environment.cacheFolder, "/c/tavolauncher/icons");
    EXPECT_EQ(environment.desktops, (Strings{"ubuntu", "GNOME"}));
    EXPECT_EQ(environment.display, ":7");
}

TEST(IconEnvironment, languages_are_those_of_messages) {
    ScopedVariables variables;
    variables.set("LANGUAGE", std::nullopt);
    variables.set("LC_ALL", "it_IT");
    EXPECT_EQ(IconEnvironment::fromProcess(false).languages, (Strings{"it_IT", "it", "C"}));
}

TEST(IconEnvironment, in_a_wayland_session_no_x_server_is_asked) {
    EXPECT_EQ(from({{"DISPLAY", ":0"}, {"WAYLAND_DISPLAY", "wayland-0"}}, true).display, "");
}

TEST(IconEnvironment, a_left_over_name_of_a_compositor_hides_no_x_server) {
    EXPECT_EQ(from({{"DISPLAY", ":0"}, {"WAYLAND_DISPLAY", "wayland-0"}}, false).display, ":0");
}

}  // namespace
}  // namespace tavo
