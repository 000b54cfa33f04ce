#include "ui/look/Appearance.h"

#include <QGuiApplication>
#include <algorithm>

#include "ui/look/Contrast.h"
#include "ui/look/TextScale.h"

namespace tavo {
namespace {

QColor withAlpha(QColor color, double alpha) {
    color.setAlphaF(static_cast<float>(alpha));
    return color;
}

// The opaque colour on which text is hardest to read while something shows through `material`: a
// light material over black, a dark one over white.
QColor worst(const QColor& material, bool dark) {
    return over(material, dark ? Qt::white : Qt::black);
}

// White, as on other desktops, unless the accent is too pale for it.
QColor textOn(const QColor& accent, const QColor& darkText) {
    return contrast(accent, Qt::white) >= kSymbolContrast ? QColor(Qt::white) : darkText;
}

bool& moreContrastWanted() {
    static bool wanted = false;
    return wanted;
}

}  // namespace

Appearance::Appearance(const QPalette& palette)
    : dark(palette.color(QPalette::Active, QPalette::Window).lightness() < 128),
      moreContrast(tavo::moreContrast()),
      material(dark ? QColor(40, 40, 44) : QColor(243, 243, 246)),
      shade(withAlpha(Qt::black, dark ? 0.2 : 0)),
      recess(withAlpha(Qt::black, 0.1)),
      footer(withAlpha(Qt::white, dark ? 0.05 : 0.5)),
      outline(Qt::transparent),
      hairline(withAlpha(dark ? Qt::white : Qt::black, dark ? 0.2 : 0.22)),
      dim(withAlpha(Qt::black, 0.32)),
      sheet(dark ? QColor(44, 44, 48) : QColor(246, 246, 248)),
      sheetBorder(dark ? QColor(73, 73, 77) : QColor(211, 211, 213)),
      menu(dark ? sheet : QColor(250, 250, 251)),
      menuBorder(dark ? QColor(92, 92, 97) : QColor(206, 206, 209)),
      list(dark ? QColor(36, 36, 39) : QColor(255, 255, 255)),
      separator(dark ? QColor(66, 66, 69) : QColor(219, 219, 221)),
      field(dark ? QColor(53, 53, 55) : QColor(255, 255, 255)),
      fieldBorder(dark ? QColor(81, 81, 83) : QColor(216, 216, 220)),
      button(dark ? QColor(60, 60, 64) : QColor(255, 255, 255)),
      buttonBorder(dark ? QColor(87, 87, 91) : QColor(216, 216, 220)),
      pressed(withAlpha(Qt::black, 0.1)),
      hover(withAlpha(dark ? Qt::white : Qt::black, 0.06)),
      focusWidth(moreContrast ? 4 : 2),
      text(dark ? QColor(242, 242, 245) : QColor(28, 28, 31)),
      secondaryText(dark ? QColor(168, 168, 176) : QColor(94, 94, 101)),
      promptText(dark ? QColor(134, 134, 141) : QColor(122, 122, 128)),
      disabledText(dark ? QColor(125, 125, 130) : QColor(156, 156, 160)),
      destructive(dark ? QColor(255, 69, 58) : QColor(255, 59, 48)),
      star(255, 204, 0),
      starOutline(dark ? QColor(Qt::transparent) : QColor(140, 106, 0)) {
    const double textRatio = moreContrast ? kHighTextContrast : kTextContrast;
    const double symbolRatio = moreContrast ? kHighSymbolContrast : kSymbolContrast;
    if (moreContrast) {
        material = dark ? QColor(28, 28, 31) : material;
        text = dark ? Qt::white : Qt::black;
        pressed = withAlpha(dark ? Qt::white : Qt::black, 0.1);
    } else {
        material.setAlpha(palette.color(QPalette::Active, QPalette::Window).alpha());
    }
    const QColor background = worst(material, dark);
    const QColor recessed = over(recess, over(shade, background));

    accent = legible(palette.color(QPalette::Active, QPalette::Highlight),
                     {background, over(hover, background), recessed, sheet, list, field, button},
                     symbolRatio);
    selection = withAlpha(accent, 0.24);
    const QColor selectedTile = over(selection, background);
    accentOnSelection =
        legible(accent, {recessed, over(selection, recessed), selectedTile, sheet, list, field},
                symbolRatio);
    focusRing = accentOnSelection;
    // With more contrast, an accent that stands out from a dark sheet is too light for white text.
    textOnAccent =
        moreContrast ? QColor(dark ? Qt::black : Qt::white) : textOn(accent, QColor(28, 28, 31));
    accentBackground = legible(accent, {textOnAccent}, textRatio);
    if (moreContrast) {
        accentBackground = legible(accentBackground, {sheet, menu}, symbolRatio);
    }

    secondaryText =
        legible(secondaryText, {background, over(footer, background), sheet}, textRatio);
    secondaryText = legible(secondaryText, {selectedTile}, symbolRatio);
    promptText = legible(promptText, {recessed, field}, textRatio);
    destructive = legible(destructive, {sheet, list, over(hover, list)}, symbolRatio);
    if (!dark) {
        starOutline = legible(starOutline, {background, selectedTile}, symbolRatio);
    }
    if (moreContrast) {
        secondaryText = legible(secondaryText, {field, menu}, textRatio);
        disabledText = legible(disabledText, {sheet, field, button, menu}, textRatio);
        outline = legible(separator, {background, recessed, sheet, menu, list, field, button},
                          symbolRatio);
        for (QColor* const line :
             {&hairline, &sheetBorder, &menuBorder, &separator, &fieldBorder, &buttonBorder}) {
            *line = outline;
        }
    }
}

bool moreContrast() {
    return moreContrastWanted();
}

void setMoreContrast(bool more) {
    moreContrastWanted() = more;
}

QPalette paletteOfLook(bool dark) {
    QPalette palette;
    palette.setColor(QPalette::Window, dark ? Qt::black : Qt::white);
    const Appearance look(palette);
    // Qt derives the colours of its bevels from these two.
    const QPalette derived(look.button, look.material);
    for (const QPalette::ColorRole role :
         {QPalette::Light, QPalette::Midlight, QPalette::Dark, QPalette::Mid, QPalette::Shadow}) {
        palette.setBrush(role, derived.brush(role));
    }
    palette.setColor(QPalette::Window, look.material);
    palette.setColor(QPalette::Base, look.field);
    palette.setColor(QPalette::AlternateBase, look.list);
    palette.setColor(QPalette::Button, look.button);
    palette.setColor(QPalette::ToolTipBase, look.menu);
    palette.setColor(QPalette::PlaceholderText, look.promptText);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::ToolTipText}) {
        palette.setColor(role, look.text);
        palette.setColor(QPalette::Disabled, role, look.disabledText);
    }
    return palette;
}

QFont interfaceFont(int size, QFont::Weight weight) {
    QFont font = QGuiApplication::font();
    font.setResolveMask(0);
    // Rounded down, so that text never grows more than the space that it has (grownWithText).
    constexpr double kTolerance = 0.001;
    font.setPixelSize(std::max(1, static_cast<int>(size * textScale() + kTolerance)));
    font.setWeight(weight);
    return font;
}

}  // namespace tavo
