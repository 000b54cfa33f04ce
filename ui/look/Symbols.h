// The program's symbols: line drawings, tinted with any colour.
#pragma once

#include <QColor>
#include <QPixmap>
#include <QRectF>
#include <QStringView>

class QPainter;

namespace tavo {

// Draws the file resources/symbols/NAME.svg into the square in the middle of `box`, on whole device
// pixels. Rendered symbols are cached by name, size, scale and colour. Where the file is missing,
// nothing is drawn. Main thread.
void drawSymbol(QPainter& painter, const QRectF& box, QStringView name, const QColor& color);

// A picture of the symbol `name`, of `side` logical pixels at the device pixel ratio `scale`. Main
// thread.
QPixmap symbolPixmap(QStringView name, const QColor& color, int side, qreal scale);

// The symbol of the category called `categoryName`. Chosen by the name and not by the id: any
// category called "Lavoro" has the briefcase, a renamed default category has the folder.
QStringView categorySymbol(QStringView categoryName);

}  // namespace tavo
