#include <QApplication>
#include <QWidget>

#include <gtest/gtest.h>

#include "tests/fakes/FakeDesktopSettings.h"
#include "ui/look/Appearance.h"
#include "ui/look/AppliedDesktopSettings.h"
#include "ui/look/Contrast.h"
#include "ui/look/Motion.h"

namespace tavo {
namespace {

// Whether the widget looks dark. Runs the event loop once first, because Qt tells widgets about a
// new palette in the next turn.
bool isDark(const QWidget& widget) {
    QCoreApplication::processEvents();
    return Appearance(widget.palette()).dark;
}

class AppliedDesktopSettingsTest : public testing::Test {
protected:
    const QPalette platforms = QApplication::palette();
    ~AppliedDesktopSettingsTest() override { setReducedMotion(true); }

    FakeDesktopSettings settings;
    QWidget widget;
};

TEST_F(AppliedDesktopSettingsTest, is_the_platforms_own_where_the_user_prefers_none) {
    const AppliedDesktopSettings look(settings);
    EXPECT_EQ(QApplication::palette(), platforms);
}

TEST_F(AppliedDesktopSettingsTest, is_dark_or_light_from_the_start_and_follows_live) {
    settings.choose({ColorScheme::Dark, false, ""});
    const AppliedDesktopSettings look(settings);
    EXPECT_TRUE(isDark(widget));
    settings.choose({ColorScheme::Light, false, ""});
    EXPECT_FALSE(isDark(widget));
    settings.choose({ColorScheme::Dark, false, ""});
    EXPECT_TRUE(isDark(widget));
    settings.choose({ColorScheme::NoPreference, false, ""});
    EXPECT_EQ(QApplication::palette(), platforms);
}

TEST_F(AppliedDesktopSettingsTest, keeps_the_accent_of_the_platform) {
    for (const ColorScheme scheme : {ColorScheme::Dark, ColorScheme::Light}) {
        settings.choose({scheme, false, ""});
        const AppliedDesktopSettings look(settings);
        EXPECT_EQ(QApplication::palette().color(QPalette::Highlight),
                  platforms.color(QPalette::Highlight));
    }
}

TEST_F(AppliedDesktopSettingsTest, is_readable_in_qts_own_widgets_too) {
    struct Pair {
        QPalette::ColorRole text;
        QPalette::ColorRole background;
    };
    for (const ColorScheme scheme : {ColorScheme::Dark, ColorScheme::Light}) {
        settings.choose({scheme, false, ""});
        const AppliedDesktopSettings look(settings);
        const QPalette palette = QApplication::palette();
        for (const Pair& pair : {Pair{QPalette::WindowText, QPalette::Window},
                                 {QPalette::Text, QPalette::Base},
                                 {QPalette::Text, QPalette::AlternateBase},
                                 {QPalette::ButtonText, QPalette::Button},
                                 {QPalette::ToolTipText, QPalette::ToolTipBase}}) {
            EXPECT_GE(contrast(palette.color(pair.text), palette.color(pair.background)),
                      kTextContrast)
                << pair.text << " on " << pair.background;
        }
        EXPECT_EQ(Appearance(palette).dark, scheme == ColorScheme::Dark);
    }
}

TEST_F(AppliedDesktopSettingsTest, waits_for_a_desktop_that_is_about_to_answer) {
    settings.answerLate({ColorScheme::Dark, true, ""});
    AppliedDesktopSettings look(settings);
    EXPECT_FALSE(isDark(widget));
    look.awaitDesktop();
    EXPECT_TRUE(isDark(widget));
    EXPECT_TRUE(reducedMotion());
}

TEST_F(AppliedDesktopSettingsTest, moves_nothing_for_who_wants_less_motion) {
    const AppliedDesktopSettings look(settings);
    EXPECT_FALSE(reducedMotion());
    settings.choose({ColorScheme::NoPreference, true, ""});
    EXPECT_TRUE(reducedMotion());
    settings.choose({ColorScheme::NoPreference, false, ""});
    EXPECT_FALSE(reducedMotion());
}

TEST_F(AppliedDesktopSettingsTest, names_the_icon_theme_when_it_is_told_another) {
    settings.choose({ColorScheme::NoPreference, false, "Papirus"});
    std::vector<std::string> themes;
    AppliedDesktopSettings look(settings, [&](const std::string& name) { themes.push_back(name); });
    look.awaitDesktop();
    settings.choose({ColorScheme::Dark, false, "Papirus"});
    settings.choose({ColorScheme::Dark, false, "breeze"});
    settings.choose({ColorScheme::Dark, false, ""});
    EXPECT_EQ(themes, (std::vector<std::string>{"Papirus", "breeze", ""}));
}

TEST_F(AppliedDesktopSettingsTest, ends_with_the_platforms_own) {
    settings.choose({ColorScheme::Dark, true, ""});
    { const AppliedDesktopSettings look(settings); }
    EXPECT_EQ(QApplication::palette(), platforms);
    EXPECT_FALSE(reducedMotion());
}

}  // namespace
}  // namespace tavo
