// Names from outside, painted on one line.
#pragma once

#include <QString>
#include <Qt>

class QFontMetrics;
class QPainter;
class QRect;

namespace tavo {

// Draws `text` on the line `line` with the painter's font and pen, and nothing further above or
// below it than `spill` logical pixels, however many marks the name piles on its letters. It is
// not cut at the right: elide it first.
void drawOneLine(QPainter& painter, const QRect& line, int spill, Qt::Alignment alignment,
                 const QString& text);

// As much of `text` as fits into `width`, with an ellipsis when that is not all.
QString fitted(const QString& text, const QFontMetrics& metrics, int width);

}  // namespace tavo
