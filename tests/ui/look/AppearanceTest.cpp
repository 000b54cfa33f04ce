#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "ui/look/Appearance.h"
#include "ui/look/Contrast.h"

namespace tavo {
namespace {

// The two colours of a platform's palette that an Appearance is made from.
struct Look {
    std::string name;
    QColor window;
    QColor highlight;
};

QColor translucent(QColor color, double opacity) {
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

std::vector<Look> looks() {
    const std::vector<std::pair<std::string, QColor>> windows = {
        {"light", QColor(239, 239, 239)},
        {"dark", QColor(50, 50, 50)},
        {"light, blurred", translucent(QColor(239, 239, 239), kBlurredMaterial)},
        {"dark, blurred", translucent(QColor(50, 50, 50), kBlurredMaterial)},
    };
    const std::vector<std::pair<std::string, QColor>> highlights = {
        {"blue", QColor(0, 122, 255)},
        {"Qt's blue", QColor(48, 140, 198)},
        {"yellow", QColor(255, 204, 0)},
        {"black", Qt::black},
        {"white", Qt::white},
        {"red", QColor(255, 0, 0)},
        {"pale", QColor(222, 235, 247)},
        {"green", QColor(0, 200, 80)},
        {"a grey", QColor(128, 128, 128)},
        {"a dark blue", QColor(10, 20, 70)},
    };
    std::vector<Look> all;
    for (const auto& [windowName, window] : windows) {
        for (const auto& [highlightName, highlight] : highlights) {
            all.push_back({windowName + ", " + highlightName, window, highlight});
        }
    }
    return all;
}

Appearance appearance(const QColor& window, const QColor& highlight) {
    QPalette palette;
    palette.setColor(QPalette::Window, window);
    palette.setColor(QPalette::Highlight, highlight);
    return Appearance(palette);
}

using Color = QColor Appearance::*;

// `front` must be legible on `layers`, which are painted over one another, the lowest first, and
// over whatever is behind the window.
struct Pair {
    std::string name;
    Color front;
    std::vector<Color> layers;
    double ratio;
};

const std::vector<Pair>& pairs() {
    using A = Appearance;
    constexpr double kText = kTextContrast;
    constexpr double kSymbol = kSymbolContrast;
    static const std::vector<Pair> kPairs = {
        {"the name of a tile", &A::text, {&A::material}, kText},
        {"the name of the current tile", &A::text, {&A::material, &A::selection}, kText},
        {"the star that adds", &A::secondaryText, {&A::material}, kSymbol},
        {"the star that adds, current", &A::secondaryText, {&A::material, &A::selection}, kSymbol},
        {"a toolbar button", &A::text, {&A::material}, kSymbol},
        {"a toolbar button, hovered", &A::text, {&A::material, &A::hover}, kSymbol},
        {"a toolbar button, pressed", &A::accent, {&A::material, &A::hover}, kSymbol},
        {"the ring of a tile", &A::accent, {&A::material}, kSymbol},
        {"the title", &A::text, {&A::material, &A::shade, &A::recess}, kText},
        {"a row", &A::text, {&A::material, &A::shade, &A::recess}, kText},
        {"the selected row", &A::text, {&A::material, &A::shade, &A::recess, &A::selection}, kText},
        {"a row's symbol", &A::accent, {&A::material, &A::shade, &A::recess}, kSymbol},
        {"the selected row's symbol",
         &A::accentOnSelection,
         {&A::material, &A::shade, &A::recess, &A::selection},
         kSymbol},
        {"the ring of a row", &A::focusRing, {&A::material, &A::shade, &A::recess}, kSymbol},
        {"the ring of the selected row",
         &A::focusRing,
         {&A::material, &A::shade, &A::recess, &A::selection},
         kSymbol},
        {"the edit button", &A::text, {&A::material, &A::shade, &A::recess}, kText},
        {"the edit button, hovered",
         &A::text,
         {&A::material, &A::shade, &A::recess, &A::hover},
         kText},
        {"the close button", &A::secondaryText, {&A::material, &A::shade, &A::recess}, kSymbol},
        {"the search text", &A::text, {&A::material, &A::shade, &A::recess}, kText},
        {"the search prompt", &A::promptText, {&A::material, &A::shade, &A::recess}, kText},
        {"the ring of the search field",
         &A::focusRing,
         {&A::material, &A::shade, &A::recess},
         kSymbol},
        {"the ring of the search field on the window", &A::focusRing, {&A::material}, kSymbol},
        {"the search symbol", &A::secondaryText, {&A::material, &A::shade, &A::recess}, kSymbol},
        {"the count", &A::secondaryText, {&A::material, &A::footer}, kText},
        {"the credit, hovered", &A::text, {&A::material, &A::footer, &A::hover}, kText},
        {"a sheet's title", &A::text, {&A::sheet}, kText},
        {"a sheet's explanation", &A::secondaryText, {&A::sheet}, kText},
        {"a field's text", &A::text, {&A::field}, kText},
        {"a field's prompt", &A::promptText, {&A::field}, kText},
        {"a field's secondary text", &A::secondaryText, {&A::field}, kText},
        {"the ring of a field in a sheet", &A::focusRing, {&A::sheet}, kSymbol},
        {"the ring of a field in a list", &A::focusRing, {&A::list}, kSymbol},
        {"selected text", &A::textOnAccent, {&A::accentBackground}, kText},
        {"a button", &A::text, {&A::button}, kText},
        {"a button, hovered", &A::text, {&A::button, &A::hover}, kText},
        {"a button, pressed", &A::text, {&A::button, &A::pressed}, kText},
        {"the default button", &A::textOnAccent, {&A::accentBackground}, kText},
        {"the default button, pressed",
         &A::textOnAccent,
         {&A::accentBackground, &A::pressed},
         kText},
        {"the default button on its sheet", &A::accentBackground, {&A::sheet}, kSymbol},
        {"what deletes", &A::destructive, {&A::list}, kSymbol},
        {"what deletes, on a sheet", &A::destructive, {&A::sheet}, kSymbol},
        {"what deletes, hovered", &A::destructive, {&A::list, &A::hover}, kSymbol},
        {"a menu's entry", &A::text, {&A::menu}, kText},
        {"a menu's shortcut", &A::secondaryText, {&A::menu}, kText},
        {"a menu's current entry", &A::textOnAccent, {&A::accentBackground}, kText},
        {"a menu's current entry on the menu", &A::accentBackground, {&A::menu}, kSymbol},
    };
    return kPairs;
}

// The colour that results when the layers are painted over `behind`.
QColor composited(const Appearance& a, const std::vector<Color>& layers, const QColor& behind) {
    QColor seen = behind;
    for (const Color layer : layers) {
        seen = over(a.*layer, seen);
    }
    return seen;
}

// More contrast, until the end of a test.
class MoreContrast {
public:
    MoreContrast() { setMoreContrast(true); }
    ~MoreContrast() { setMoreContrast(false); }
    MoreContrast(const MoreContrast&) = delete;
    MoreContrast& operator=(const MoreContrast&) = delete;
};

void expectReached(const Look& look, const Pair& pair, double ratio) {
    const Appearance a = appearance(look.window, look.highlight);
    for (const QColor& behind : {QColor(Qt::black), QColor(Qt::white)}) {
        SCOPED_TRACE(look.name + ": " + pair.name + " over " + behind.name().toStdString());
        const QColor background = composited(a, pair.layers, behind);
        EXPECT_GE(contrast(a.*pair.front, background), ratio)
            << (a.*pair.front).name().toStdString() << " on " << background.name().toStdString();
    }
}

TEST(AppearanceTest, all_that_is_read_or_recognised_reaches_its_contrast_over_whatever_is_behind) {
    for (const Look& look : looks()) {
        for (const Pair& pair : pairs()) {
            expectReached(look, pair, pair.ratio);
        }
    }
}

// What reaches its contrast only for users who want more of it: disabled text, and the lines that
// are drawn around things.
const std::vector<Pair>& furtherPairs() {
    using A = Appearance;
    constexpr double kText = kTextContrast;
    constexpr double kSymbol = kSymbolContrast;
    static const std::vector<Pair> kPairs = {
        {"a disabled button", &A::disabledText, {&A::button}, kText},
        {"a disabled button on its sheet", &A::disabledText, {&A::sheet}, kText},
        {"a disabled entry", &A::disabledText, {&A::menu}, kText},
        {"a disabled field", &A::disabledText, {&A::field}, kText},
        {"the edge of the window", &A::hairline, {&A::material}, kSymbol},
        {"the line beside the sidebar", &A::outline, {&A::material}, kSymbol},
        {"the same, from the sidebar", &A::outline, {&A::material, &A::shade, &A::recess}, kSymbol},
        {"a sheet's edge", &A::sheetBorder, {&A::sheet}, kSymbol},
        {"a menu's edge", &A::menuBorder, {&A::menu}, kSymbol},
        {"a line in a list", &A::separator, {&A::list}, kSymbol},
        {"a line in a menu", &A::separator, {&A::menu}, kSymbol},
        {"a field's edge", &A::fieldBorder, {&A::field}, kSymbol},
        {"a field's edge on its sheet", &A::fieldBorder, {&A::sheet}, kSymbol},
        {"a field's edge in a list", &A::fieldBorder, {&A::list}, kSymbol},
        {"a button's edge", &A::buttonBorder, {&A::button}, kSymbol},
        {"a button's edge on its sheet", &A::buttonBorder, {&A::sheet}, kSymbol},
        {"a scroll bar in the grid", &A::secondaryText, {&A::material}, kSymbol},
        {"a scroll bar in the sidebar",
         &A::secondaryText,
         {&A::material, &A::shade, &A::recess},
         kSymbol},
        {"a scroll bar in a list", &A::secondaryText, {&A::list}, kSymbol},
    };
    return kPairs;
}

TEST(AppearanceTest, with_more_contrast_every_text_has_seven_and_every_symbol_four_and_a_half) {
    const MoreContrast more;
    const auto wanted = [](double ratio) { return ratio == kTextContrast ? 7.0 : 4.5; };
    for (const Look& look : looks()) {
        for (const std::vector<Pair>* const all : {&pairs(), &furtherPairs()}) {
            for (const Pair& pair : *all) {
                expectReached(look, pair, wanted(pair.ratio));
            }
        }
    }
}

TEST(AppearanceTest, with_more_contrast_the_window_is_solid_and_the_ring_twice_as_wide) {
    for (const QColor& window : {QColor(239, 239, 239), QColor(50, 50, 50)}) {
        const QColor blurred = translucent(window, kBlurredMaterial);
        const Appearance usual = appearance(blurred, Qt::blue);
        EXPECT_LT(usual.material.alpha(), 255);
        EXPECT_EQ(usual.outline.alpha(), 0);
        const MoreContrast more;
        const Appearance a = appearance(blurred, Qt::blue);
        EXPECT_EQ(a.material.alpha(), 255);
        EXPECT_EQ(a.outline.alpha(), 255);
        EXPECT_EQ(a.focusWidth, 2 * usual.focusWidth);
        EXPECT_EQ(a.dark, usual.dark);
    }
}

TEST(AppearanceTest, sidebar_and_search_field_can_be_told_from_the_window) {
    for (const Look& look : looks()) {
        const Appearance a = appearance(look.window, look.highlight);
        for (const QColor& behind : {QColor(Qt::black), QColor(Qt::white)}) {
            SCOPED_TRACE(look.name + " over " + behind.name().toStdString());
            using A = Appearance;
            EXPECT_GE(contrast(composited(a, {&A::material, &A::shade, &A::recess}, behind),
                               composited(a, {&A::material}, behind)),
                      1.12);
        }
        EXPECT_EQ(a.recess, translucent(Qt::black, 0.1));
    }
}

void expectStars(double ratio) {
    for (const Look& look : looks()) {
        SCOPED_TRACE(look.name);
        const Appearance a = appearance(look.window, look.highlight);
        EXPECT_EQ(a.star, QColor(255, 204, 0));
        for (const QColor& behind : {QColor(Qt::black), QColor(Qt::white)}) {
            for (const std::vector<Color>& layers :
                 {std::vector<Color>{&Appearance::material},
                  std::vector<Color>{&Appearance::material, &Appearance::selection}}) {
                const QColor background = composited(a, layers, behind);
                // In the light look the outline makes the star visible, in the dark look its own
                // colour does.
                EXPECT_GE(contrast(a.dark ? a.star : a.starOutline, background), ratio)
                    << background.name().toStdString();
            }
        }
        EXPECT_EQ(a.starOutline.alpha(), a.dark ? 0 : 255);
    }
}

TEST(AppearanceTest, the_star_is_always_the_same_yellow_and_can_always_be_seen) {
    expectStars(3);
    const MoreContrast more;
    expectStars(4.5);
}

TEST(AppearanceTest, an_accent_that_is_legible_is_kept_as_it_is) {
    EXPECT_EQ(appearance(QColor(50, 50, 50), QColor(10, 132, 255)).accent, QColor(10, 132, 255));
    EXPECT_EQ(appearance(Qt::white, QColor(0, 100, 210)).accent, QColor(0, 100, 210));
}

TEST(AppearanceTest, the_windows_background_shines_through_as_much_as_the_palette_says) {
    EXPECT_EQ(appearance(QColor(250, 250, 250, 200), Qt::blue).material.alpha(), 200);
    EXPECT_EQ(appearance(QColor(20, 20, 20), Qt::blue).material.alpha(), 255);
}

struct ContrastCase {
    const char* name;
    QColor one;
    QColor other;
    double ratio;
};

TEST(ContrastTest, is_that_of_the_guidelines) {
    const std::vector<ContrastCase> kCases = {
        {"black on white", Qt::black, Qt::white, 21},
        {"white on black", Qt::white, Qt::black, 21},
        {"a colour on itself", QColor(90, 10, 200), QColor(90, 10, 200), 1},
        {"the palest grey that can be read on white", QColor(118, 118, 118), Qt::white, 4.54},
        {"one paler", QColor(119, 119, 119), Qt::white, 4.48},
        {"red on white", QColor(255, 0, 0), Qt::white, 4.0},
    };
    for (const ContrastCase& row : kCases) {
        SCOPED_TRACE(row.name);
        EXPECT_NEAR(contrast(row.one, row.other), row.ratio, 0.005);
    }
}

TEST(ContrastTest, what_cannot_be_had_is_black_or_white) {
    EXPECT_EQ(legible(QColor(200, 0, 0), {Qt::white}, 22), QColor(Qt::black));
    EXPECT_EQ(legible(QColor(200, 0, 0), {Qt::black}, 22), QColor(Qt::white));
}

TEST(ContrastTest, a_colour_over_a_background_is_what_is_seen) {
    EXPECT_EQ(over(QColor(0, 0, 0, 51), Qt::white), QColor(204, 204, 204));
    EXPECT_EQ(over(QColor(1, 2, 3), Qt::white), QColor(1, 2, 3));
}

}  // namespace
}  // namespace tavo
