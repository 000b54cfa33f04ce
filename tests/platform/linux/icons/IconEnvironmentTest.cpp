#include <optional>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/icons/IconEnvironment.h"
#include "tests/platform/linux/fixtures/ScopedVariables.h"

namespace tavo {
namespace {

using testing::ElementsAre;

class IconEnvironmentTest : public testing::Test {
protected:
    IconEnvironmentTest() {
        for (const char* const name :
             {"XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "XDG_CACHE_HOME",
              "XDG_CURRENT_DESKTOP", "DISPLAY", "WAYLAND_DISPLAY", "LANGUAGE"}) {
            variables_.set(name, std::nullopt);
        }
        variables_.set("HOME", "/home/a");
        variables_.set("XDG_DATA_DIRS", "/one:/usr/share");
        variables_.set("LC_ALL", "it_IT");
    }

    ScopedVariables variables_;
};

TEST_F(IconEnvironmentTest, folders_are_below_those_of_the_session) {
    const auto environment = IconEnvironment::fromProcess(false);
    EXPECT_THAT(
        environment.iconFolders,
        ElementsAre("/home/a/.icons", "/home/a/.local/share/icons", "/one/icons",
                    "/usr/share/icons", "/home/a/.local/share/flatpak/exports/share/icons",
                    "/var/lib/flatpak/exports/share/icons", "/var/lib/snapd/desktop/icons"));
    EXPECT_THAT(
        environment.pixmapFolders,
        ElementsAre("/home/a/.local/share/pixmaps", "/one/pixmaps", "/usr/share/pixmaps",
                    "/home/a/.local/share/flatpak/exports/share/pixmaps",
                    "/var/lib/flatpak/exports/share/pixmaps", "/var/lib/snapd/desktop/pixmaps"));
    EXPECT_THAT(environment.configFolders, ElementsAre("/home/a/.config", "/etc/xdg", "/etc"));
    EXPECT_EQ(environment.cacheFolder, "/home/a/.cache/tavolauncher/icons");
}

TEST_F(IconEnvironmentTest, the_systems_pixmaps_count_wherever_its_data_is) {
    variables_.set("XDG_DATA_DIRS", "/one");
    EXPECT_EQ(IconEnvironment::fromProcess(false).pixmapFolders.back(), "/usr/share/pixmaps");
}

TEST_F(IconEnvironmentTest, desktops_and_languages_are_those_of_the_session) {
    EXPECT_THAT(IconEnvironment::fromProcess(false).desktops, ElementsAre());
    variables_.set("XDG_CURRENT_DESKTOP", "ubuntu:GNOME");
    EXPECT_THAT(IconEnvironment::fromProcess(false).desktops, ElementsAre("ubuntu", "GNOME"));
    EXPECT_THAT(IconEnvironment::fromProcess(false).languages, ElementsAre("it_IT", "it", "C"));
}

TEST_F(IconEnvironmentTest, an_x_server_is_asked_in_an_x11_session_alone) {
    EXPECT_EQ(IconEnvironment::fromProcess(false).display, "");
    variables_.set("DISPLAY", ":7");
    variables_.set("WAYLAND_DISPLAY", "wayland-0");  // left over from another session
    EXPECT_EQ(IconEnvironment::fromProcess(false).display, ":7");
    EXPECT_EQ(IconEnvironment::fromProcess(true).display, "");
}

}  // namespace
}  // namespace tavo
