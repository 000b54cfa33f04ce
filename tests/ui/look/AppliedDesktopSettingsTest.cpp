#include <QApplication>
#include <QWidget>

#include <gtest/gtest.h>

#include "tests/fakes/FakeDesktopSettings.h"
#include "ui/look/Appearance.h"
#include "ui/look/AppliedDesktopSettings.h"
#include "ui/look/Contrast.h"
#include "ui/look/Motion.h"
#include "ui/look/TextScale.h"

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

TEST_F(AppliedDesktopSettingsTest, has_more_contrast_in_both_looks_when_the_user_wants_it) {
    const AppliedDesktopSettings look(settings);
    for (const ColorScheme scheme :
         {ColorScheme::NoPreference, ColorScheme::Dark, ColorScheme::Light}) {
        settings.choose({.colorScheme = scheme});
        QCoreApplication::processEvents();
        const QPalette before = widget.palette();
        EXPECT_FALSE(Appearance(before).moreContrast);
        settings.choose({.colorScheme = scheme, .moreContrast = true});
        QCoreApplication::processEvents();
        EXPECT_NE(widget.palette(), before);
        EXPECT_TRUE(Appearance(widget.palette()).moreContrast);
        EXPECT_EQ(Appearance(widget.palette()).dark, scheme == ColorScheme::Dark);
    }
    settings.choose({});
    EXPECT_FALSE(moreContrast());
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

TEST_F(AppliedDesktopSettingsTest, takes_the_accent_of_the_desktop_whatever_the_colours) {
    const AppliedDesktopSettings look(settings);
    const auto accent = [] { return QApplication::palette().color(QPalette::Highlight); };
    for (const ColorScheme scheme :
         {ColorScheme::NoPreference, ColorScheme::Dark, ColorScheme::Light}) {
        settings.choose({scheme, false, "", 0xc01080});
        EXPECT_EQ(accent(), QColor(0xc0, 0x10, 0x80));
        settings.choose({scheme, false, "", {}});
        EXPECT_EQ(accent(), platforms.color(QPalette::Highlight));
    }
}

TEST_F(AppliedDesktopSettingsTest, takes_the_size_of_text_beyond_the_scale_of_the_screens) {
    const double screens = qGuiApp->devicePixelRatio();
    {
        const AppliedDesktopSettings look(settings);
        useInterfaceFont(widget, 12, QFont::Bold);
        settings.choose({.textScale = 1.5});
        EXPECT_EQ(widget.font().pixelSize(), 18);
        EXPECT_EQ(widget.font().weight(), QFont::Bold);
        settings.choose({.screenAndTextScale = screens});
        EXPECT_EQ(widget.font().pixelSize(), 12) << "all of it is the screens'";
        settings.choose({.screenAndTextScale = screens * 1.25});
        EXPECT_EQ(textScale(), 1.25);
        settings.choose({.textScale = 1.2, .screenAndTextScale = screens * 1.25});
        EXPECT_EQ(textScale(), 1.5);
        settings.choose({.screenAndTextScale = screens / 2});
        EXPECT_EQ(textScale(), 1) << "a screen is never shown smaller by text";
        settings.choose({.textScale = 2});
    }
    EXPECT_EQ(textScale(), 1);
}

TEST_F(AppliedDesktopSettingsTest, takes_the_font_of_the_desktop_and_keeps_its_own_sizes) {
    const QFont usual = QApplication::font();
    const AppliedDesktopSettings look(settings);
    widget.setFont(interfaceFont(17, QFont::Bold));
    settings.choose({.fontFamilies = "DejaVu Sans Mono, Inter"});
    QCoreApplication::processEvents();
    EXPECT_EQ(widget.font().families().mid(0, 2),
              (QStringList{QStringLiteral("DejaVu Sans Mono"), QStringLiteral("Inter")}));
    EXPECT_EQ(widget.font().pixelSize(), 17);
    EXPECT_EQ(widget.font().weight(), QFont::Bold);
    EXPECT_EQ(interfaceFont(12).family(), QStringLiteral("DejaVu Sans Mono"));
    settings.choose({});
    QCoreApplication::processEvents();
    EXPECT_EQ(QApplication::font(), usual);
    EXPECT_EQ(widget.font().families(), usual.families());
}

TEST_F(AppliedDesktopSettingsTest, takes_how_mouse_and_cursor_feel) {
    const int usualTime = QApplication::doubleClickInterval();
    const int usualLines = QApplication::wheelScrollLines();
    std::vector<std::optional<int>> distances;
    std::vector<std::optional<std::chrono::milliseconds>> times;
    const AppliedDesktopSettings look(
        settings, {.doubleClickDistance = [&](auto pixels) { distances.push_back(pixels); },
                   .cursorBlinkTime = [&](auto time) { times.push_back(time); }});
    settings.choose({.doubleClickTime = std::chrono::milliseconds(usualTime + 300),
                     .doubleClickDistance = 12,
                     .cursorBlinkTime = std::chrono::milliseconds(0),
                     .wheelLines = usualLines + 2});
    EXPECT_EQ(QApplication::doubleClickInterval(), usualTime + 300);
    EXPECT_EQ(QApplication::wheelScrollLines(), usualLines + 2);
    settings.choose({});
    EXPECT_EQ(QApplication::doubleClickInterval(), usualTime);
    EXPECT_EQ(QApplication::wheelScrollLines(), usualLines);
    EXPECT_EQ(distances, (std::vector<std::optional<int>>{12, {}}));
    EXPECT_EQ(times, (std::vector<std::optional<std::chrono::milliseconds>>{
                         std::chrono::milliseconds(0), std::nullopt}));
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
    AppliedDesktopSettings look(
        settings, {.iconTheme = [&](const std::string& name) { themes.push_back(name); }});
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
