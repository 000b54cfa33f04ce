#include <limits>

#include <gtest/gtest.h>

#include "platform/linux/settings/SettingValues.h"

namespace tavo {
namespace {

using std::chrono::milliseconds;

TEST(SettingValues, families_are_what_is_before_style_and_size) {
    struct Row {
        const char* font;
        const char* families;
    };
    const Row kRows[] = {
        {"Cantarell 11", "Cantarell"},
        {"Noto Sans 10.5", "Noto Sans"},
        {"Noto Sans 14px", "Noto Sans"},
        {"  Noto Sans   11  ", "Noto Sans"},
        {"Noto Sans", "Noto Sans"},
        {"Ubuntu Bold Italic 11", "Ubuntu"},
        {"Ubuntu Semi-Bold Ultra-Condensed 11", "Ubuntu"},
        {"Ubuntu semibold 11", "Ubuntu"},
        {"Noto Sans, DejaVu Sans Bold 11", "Noto Sans, DejaVu Sans"},
        {"Times New Roman, 12", "Times New Roman"},
        {"Arial Black, Bold 12", "Arial Black"},
        {"Demi 12", "Demi"},
        {"11", ""},
        {"Bold 11", ""},
        {"Bold", ""},
        {" ", ""},
        {"", ""},
        {",", ""},
    };
    for (const Row& row : kRows) {
        EXPECT_EQ(familiesOfPangoFont(row.font), row.families) << '"' << row.font << '"';
    }
}

TEST(SettingValues, a_theme_is_dark_by_a_word_of_its_name) {
    for (const char* const dark :
         {"Adwaita-dark", "Arc-Dark", "Mint-Y-Dark-Aqua", "Adwaita:dark", "HighContrastInverse"}) {
        EXPECT_TRUE(isDarkTheme(dark)) << dark;
    }
    for (const char* const light : {"Adwaita", "Arc-Darker", "Darkness", "HighContrast", "", "-"}) {
        EXPECT_FALSE(isDarkTheme(light)) << light;
    }
}

TEST(SettingValues, a_colour_has_parts_from_nothing_to_one) {
    EXPECT_EQ(colorOfParts(0, 0.5, 1), 0x0080ffU);
    EXPECT_EQ(colorOfParts(-0.1, 0, 0), std::nullopt);
    EXPECT_EQ(colorOfParts(0, 1.1, 0), std::nullopt);
    EXPECT_EQ(colorOfParts(0, 0, std::numeric_limits<double>::quiet_NaN()), std::nullopt);
}

TEST(SettingValues, times_that_no_hand_and_no_eye_could_follow_are_none) {
    EXPECT_EQ(doubleClickTimeOf(400), milliseconds(400));
    EXPECT_EQ(doubleClickTimeOf(1), std::nullopt);
    EXPECT_EQ(doubleClickTimeOf(-400), std::nullopt);
    EXPECT_EQ(doubleClickTimeOf(1'000'000), std::nullopt);
    EXPECT_EQ(cursorBlinkTimeOf(true, 1200), milliseconds(1200));
    EXPECT_EQ(cursorBlinkTimeOf(true, 1), std::nullopt);
    EXPECT_EQ(cursorBlinkTimeOf(false, 1), milliseconds(0));
}

TEST(SettingValues, sizes_of_text_that_make_no_sense_are_none) {
    const double none = std::numeric_limits<double>::quiet_NaN();
    for (const double factor : {0.5, 1.0, 1.25, 2.0, 3.0}) {
        EXPECT_EQ(textScaleOf(factor), factor);
        EXPECT_EQ(screenAndTextScaleOf(96 * factor), factor);
    }
    for (const double factor : {0.0, -1.0, 50.0, none, 1e300}) {
        EXPECT_EQ(textScaleOf(factor), std::nullopt) << factor;
        EXPECT_EQ(screenAndTextScaleOf(96 * factor), std::nullopt) << factor;
    }
}

TEST(SettingValues, what_is_told_already_is_kept) {
    DesktopPreferences told = {ColorScheme::Light, false, "", 0x112233};
    fillIn(told, {ColorScheme::Dark, true, "Papirus", 0x445566, "Cantarell", milliseconds(500), 4,
                  milliseconds(0), 5, 1.25, 2.0, true});
    EXPECT_EQ(told,
              (DesktopPreferences{ColorScheme::Light, true, "Papirus", 0x112233, "Cantarell",
                                  milliseconds(500), 4, milliseconds(0), 5, 1.25, 2.0, true}));
}

}  // namespace
}  // namespace tavo
