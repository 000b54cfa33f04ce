#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/linux/settings/ConfiguredSettings.h"
#include "tests/platform/linux/fixtures/ProcessFixture.h"

namespace tavo {
namespace {

using std::chrono::milliseconds;

class ConfiguredSettingsTest : public testing::Test {
protected:
    [[nodiscard]] DesktopPreferences onDesktop(const std::string& name) const {
        return configuredSettings({.config = {folder_.path("user"), folder_.path("system")},
                                   .data = {folder_.path("data")},
                                   .desktops = {"vendor", name}});
    }
    void write(const std::string& file, const std::string& content) const {
        folder_.write(file, content);
    }

    processes::Folder folder_;
};

TEST_F(ConfiguredSettingsTest, kdes_are_read_from_kdeglobals) {
    write("user/kdeglobals",
          "[General]\nfont=Fira Sans,10,-1,5,50,0,0,0,0,0\nAccentColor=1,2,3\n"
          "[Colors:Window]\nBackgroundNormal=42,46,50\n"
          "[Colors:Selection]\nBackgroundNormal=255,0,128\n"
          "[KDE]\nDoubleClickInterval=700\nCursorBlinkRate=0\nWheelScrollLines=5\n"
          "AnimationDurationFactor=0\n");
    EXPECT_EQ(onDesktop("KDE"), (DesktopPreferences{ColorScheme::Dark,
                                                    true,
                                                    "",
                                                    0xff0080,
                                                    "Fira Sans",
                                                    milliseconds(700),
                                                    {},
                                                    milliseconds(0),
                                                    5,
                                                    1.0}));
    EXPECT_EQ(onDesktop("GNOME"), DesktopPreferences()) << "the files of another session";
}

TEST_F(ConfiguredSettingsTest, the_users_file_comes_before_the_systems) {
    write("system/kdeglobals", "[General]\nfont=A\n[KDE]\nWheelScrollLines=5\n");
    write("user/kdeglobals", "[General]\nfont=B\n");
    EXPECT_EQ(onDesktop("KDE").fontFamilies, "B");
    EXPECT_EQ(onDesktop("KDE").wheelLines, 5);
}

TEST_F(ConfiguredSettingsTest, colours_that_kdeglobals_lacks_are_those_of_the_scheme) {
    write("data/color-schemes/BreezeLight.colors",
          "[Colors:Window]\nBackgroundNormal=239,240,241\n"
          "[Colors:Selection]\nBackgroundNormal=61,174,233\n");
    write("data/color-schemes/Night.colors", "[Colors:Window]\nBackgroundNormal=0,0,0\n");
    EXPECT_EQ(onDesktop("KDE").colorScheme, ColorScheme::Light) << "KDE's own scheme";
    EXPECT_EQ(onDesktop("KDE").accent, 0x3daee9U);
    write("user/kdeglobals", "[General]\nColorScheme=Night\nAccentColor=1,2,3\n");
    EXPECT_EQ(onDesktop("KDE").colorScheme, ColorScheme::Dark);
    EXPECT_EQ(onDesktop("KDE").accent, 0x010203U);
    write("user/kdeglobals", "[General]\nColorScheme=../color-schemes/Night\n");
    EXPECT_EQ(onDesktop("KDE").colorScheme, ColorScheme::NoPreference) << "not the name of a file";
}

TEST_F(ConfiguredSettingsTest, the_size_of_text_is_that_of_kdes_font) {
    for (const auto& [font, scale] : std::vector<std::pair<std::string, std::optional<double>>>{
             {"Noto Sans,10,-1,5,50,0,0,0,0,0", 1.0},
             {"Noto Sans,12.5,-1,5,50,0,0,0,0,0", 1.25},
             {"Noto Sans,20", 2.0},
             {"Noto Sans,0", std::nullopt},
             {"Noto Sans,-1,13", std::nullopt},
             {"Noto Sans,nan", std::nullopt},
             {"Noto Sans,500", std::nullopt},
             {"Noto Sans", std::nullopt},
             {"", std::nullopt}}) {
        write("user/kdeglobals", "[General]\nfont=" + font + "\n");
        EXPECT_EQ(onDesktop("KDE").textScale, scale) << font;
    }
}

TEST_F(ConfiguredSettingsTest, a_resolution_forced_upon_kdes_fonts_counts) {
    const auto on = [this](bool wayland) {
        return configuredSettings({.config = {folder_.path("user")},
                                   .data = {},
                                   .desktops = {"KDE"},
                                   .wayland = wayland});
    };
    write("user/kdeglobals", "[General]\nfont=Noto Sans,12\n");
    write("user/kcmfonts", "[General]\nforceFontDPI=120\nforceFontDPIWayland=144\n");
    EXPECT_EQ(on(false).textScale, 1.2);
    EXPECT_EQ(on(false).screenAndTextScale, 1.25);
    EXPECT_NEAR(on(true).textScale.value_or(0), 1.8, 0.001);
    EXPECT_EQ(on(true).screenAndTextScale, std::nullopt);
    for (const char* const nonsense : {"0", "-96", "4800", "nan", ""}) {
        write("user/kcmfonts", std::string("[General]\nforceFontDPI=") + nonsense +
                                   "\nforceFontDPIWayland=" + nonsense + "\n");
        EXPECT_EQ(on(false).screenAndTextScale, std::nullopt) << nonsense;
        EXPECT_EQ(on(true).textScale, 1.2) << nonsense;
    }
}

TEST_F(ConfiguredSettingsTest, lxqts_are_read_from_its_own_file) {
    write("user/lxqt/lxqt.conf",
          "[Qt]\nfont=\"Fira Sans,11,-1,5,50,0,0,0,0,0\"\ndoubleClickInterval=500\n"
          "cursorFlashTime=900\nwheelScrollLines=2\n"
          "[Palette]\nwindow_color=#202326\nhighlight_color=#3daee9\n");
    EXPECT_EQ(onDesktop("LXQt"), (DesktopPreferences{ColorScheme::Dark,
                                                     false,
                                                     "",
                                                     0x3daee9,
                                                     "Fira Sans",
                                                     milliseconds(500),
                                                     {},
                                                     milliseconds(900),
                                                     2}));
}

TEST_F(ConfiguredSettingsTest, nonsense_counts_as_not_told) {
    for (const char* const color : {"", "1,2", "1,2,300", "1,2,-3", "a,b,c", "#12345g", "#123"}) {
        SCOPED_TRACE(color);
        write("user/kdeglobals", std::string("[Colors:Window]\nBackgroundNormal=") + color +
                                     "\n[Colors:Selection]\nBackgroundNormal=" + color +
                                     "\n[General]\nfont=\nAccentColor=" + color +
                                     "\n[KDE]\nDoubleClickInterval=soon\nCursorBlinkRate=1e3\n"
                                     "WheelScrollLines=0\nAnimationDurationFactor=\n");
        EXPECT_EQ(onDesktop("KDE"), (DesktopPreferences{.fontFamilies = "Noto Sans"}));
    }
}

}  // namespace
}  // namespace tavo
