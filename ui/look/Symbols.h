// The system symbols: line drawings named by what they show, tinted with any colour.
#pragma once

#include <QColor>
#include <QPixmap>
#include <QRectF>
#include <QStringView>

class QPainter;

namespace tavo {

// Draws the symbol `name` (a file resources/symbols/NAME.svg, drawn on a square) into the square
// in the middle of `box`, crisp at the painter's scale. Kept rendered by name, size, scale and
// colour. An unknown name draws nothing. Main thread.
void drawSymbol(QPainter& painter, const QRectF& box, QStringView name, const QColor& color);

// The symbol for menus, `side` logical pixels at `scale`.
QPixmap symbolPixmap(QStringView name, const QColor& color, int side, qreal scale);

// The symbol of a category, chosen by its name, not its id: a renamed default category gets the
// folder, and any category called "Lavoro" the briefcase.
QStringView categorySymbol(QStringView categoryName);

}  // namespace tavo
