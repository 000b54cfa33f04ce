#include "ui/Appearance.h"

#include <QGuiApplication>

namespace tavo {
namespace {

QColor withAlpha(QColor color, double alpha) {
    color.setAlphaF(static_cast<float>(alpha));
    return color;
}

}  // namespace

Appearance::Appearance(const QPalette& palette)
    : dark(palette.color(QPalette::Active, QPalette::Window).lightness() < 128),
      material(dark ? QColor(40, 40, 44) : QColor(243, 243, 246)),
      sheet(dark ? QColor(50, 50, 55) : QColor(250, 250, 252)),
      recess(withAlpha(Qt::black, 0.1)),
      footer(withAlpha(Qt::white, dark ? 0.05 : 0.5)),
      border(withAlpha(Qt::white, 0.15)),
      dim(withAlpha(Qt::black, 0.28)),
      text(dark ? QColor(242, 242, 245) : QColor(28, 28, 31)),
      secondaryText(dark ? QColor(168, 168, 176) : QColor(94, 94, 101)),
      accent(palette.color(QPalette::Active, QPalette::Highlight)),
      selection(withAlpha(accent, 0.24)),
      hover(withAlpha(dark ? Qt::white : Qt::black, 0.06)),
      star(255, 204, 0) {}

QFont interfaceFont(int size, QFont::Weight weight) {
    QFont font = QGuiApplication::font();
    font.setPixelSize(size);
    font.setWeight(weight);
    return font;
}

}  // namespace tavo
