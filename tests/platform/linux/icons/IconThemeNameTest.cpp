#include <gtest/gtest.h>

#include "platform/linux/icons/IconThemeName.h"
#include "tests/platform/linux/fixtures/IconFixture.h"
#include "tests/platform/linux/fixtures/XServer.h"
#include "tests/platform/linux/fixtures/XSettingsBytes.h"

namespace tavo {
namespace {

class IconThemeName : public testing::Test {
protected:
    void install(const std::vector<std::string>& names) {
        for (const std::string& name : names) {
            world_.addTheme(name, {});
        }
    }

    [[nodiscard]] std::string theme(const std::vector<std::string>& desktops,
                                    const std::string& preferred = "",
                                    const std::string& display = "") const {
        IconEnvironment environment = world_.environment();
        environment.desktops = desktops;
        environment.display = display;
        return sessionIconTheme(environment, preferred);
    }

    void configureAll() {
        install({"Gtk4", "Gtk3", "Kde", "Lxqt"});
        writeFile(world_ / "config/gtk-4.0/settings.ini", "[Settings]\ngtk-icon-theme-name=Gtk4\n");
        writeFile(world_ / "config/gtk-3.0/settings.ini",
                  "[Settings]\ngtk-icon-theme-name = Gtk3\n");
        writeFile(world_ / "config/kdeglobals", "[Icons]\nTheme=Kde\n");
        writeFile(world_ / "config/lxqt/lxqt.conf", "[General]\nicon_theme=Lxqt\n");
    }

    IconWorld world_;
};

TEST_F(IconThemeName, the_desktops_own_configuration_comes_first) {
    configureAll();
    EXPECT_EQ(theme({"XFCE"}), "Gtk4");
    EXPECT_EQ(theme({"ubuntu", "GNOME"}), "Gtk4");
    EXPECT_EQ(theme({}), "Gtk4");
    EXPECT_EQ(theme({"KDE"}), "Kde");
    EXPECT_EQ(theme({"LXQt"}), "Lxqt");
}

TEST_F(IconThemeName, a_configured_theme_that_is_not_installed_gives_way_to_the_next) {
    install({"Gtk3", "Kde"});
    writeFile(world_ / "config/gtk-4.0/settings.ini", "[Settings]\ngtk-icon-theme-name=Gone\n");
    writeFile(world_ / "config/gtk-3.0/settings.ini", "[Settings]\ngtk-icon-theme-name=Gtk3\n");
    writeFile(world_ / "config/kdeglobals", "[Icons]\nTheme=../Kde\n");
    EXPECT_EQ(theme({"GNOME"}), "Gtk3");
    EXPECT_EQ(theme({"KDE"}), "Gtk3");
}

TEST_F(IconThemeName, the_users_configuration_outranks_the_systems) {
    install({"Users", "Systems"});
    writeFile(world_ / "etc/gtk-3.0/settings.ini", "[Settings]\ngtk-icon-theme-name=Systems\n");
    EXPECT_EQ(theme({"XFCE"}), "Systems");
    writeFile(world_ / "config/gtk-3.0/settings.ini", "[Settings]\ngtk-icon-theme-name=Users\n");
    EXPECT_EQ(theme({"XFCE"}), "Users");
}

TEST_F(IconThemeName, without_configuration_the_desktops_usual_theme_is_taken) {
    install({"Adwaita", "breeze", "Yaru"});
    EXPECT_EQ(theme({"GNOME"}), "Adwaita");
    EXPECT_EQ(theme({"ubuntu", "GNOME"}), "Yaru");
    EXPECT_EQ(theme({"KDE"}), "breeze");
    EXPECT_EQ(theme({"sway"}), "Adwaita");
}

TEST_F(IconThemeName, at_last_whatever_known_theme_is_installed) {
    EXPECT_EQ(theme({"GNOME"}), "hicolor");
    install({"hicolor", "Strange"});
    EXPECT_EQ(theme({"GNOME"}), "hicolor");
    install({"Papirus"});
    EXPECT_EQ(theme({"GNOME"}), "Papirus");
    EXPECT_EQ(fallbackIconTheme(world_.environment()), "Papirus");
}

TEST_F(IconThemeName, a_preferred_theme_outranks_files_while_it_is_installed) {
    configureAll();
    install({"Portal"});
    EXPECT_EQ(theme({"GNOME"}, "Portal"), "Portal");
    EXPECT_EQ(theme({}, "Portal"), "Portal");
    EXPECT_EQ(theme({"GNOME"}, "Gone"), "Gtk4");
}

TEST_F(IconThemeName, a_preferred_theme_does_not_outrank_a_desktops_own_settings) {
    configureAll();
    install({"Portal"});
    EXPECT_EQ(theme({"KDE"}, "Portal"), "Kde");
    EXPECT_EQ(theme({"LXQt"}, "Portal"), "Lxqt");
    XServer server;
    install({"Published"});
    const auto manager = server.publishSettings(
        XSettingsBytes(false).addString("Net/IconThemeName", "Published").property());
    EXPECT_EQ(theme({"XFCE"}, "Portal", server.display()), "Published");
}

TEST_F(IconThemeName, kde_without_a_choice_has_breeze_whatever_others_name) {
    XServer server;
    install({"breeze", "Adwaita", "Published"});
    writeFile(world_ / "config/gtk-3.0/settings.ini", "[Settings]\ngtk-icon-theme-name=Adwaita\n");
    const auto manager = server.publishSettings(
        XSettingsBytes(false).addString("Net/IconThemeName", "Published").property());
    EXPECT_EQ(theme({"KDE"}, "Adwaita", server.display()), "breeze");
    EXPECT_EQ(theme({"GNOME"}, "Adwaita"), "Adwaita");
}

TEST_F(IconThemeName, published_settings_outrank_files_except_on_kde) {
    XServer server;
    configureAll();
    install({"Published"});
    const auto manager = server.publishSettings(
        XSettingsBytes(false).addString("Net/IconThemeName", "Published").property());
    EXPECT_EQ(theme({"XFCE"}, "", server.display()), "Published");
    EXPECT_EQ(theme({"KDE"}, "", server.display()), "Kde");
}

}  // namespace
}  // namespace tavo
