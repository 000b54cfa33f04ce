// Draws names on one line, and shortens them with an ellipsis.
#pragma once

#include <QString>
#include <Qt>
#include <functional>
#include <string>

class QFontMetrics;
class QPainter;
class QRect;

namespace tavo {

// Draws `text`, shortened by fitted() before, in the rectangle `line` with the painter's font and
// pen. Combining marks may stack up above and below the line: they are clipped at `spill` logical
// pixels beyond it.
void drawElidedText(QPainter& painter, const QRect& line, int spill, Qt::Alignment alignment,
                    const QString& text);

// `text`, or as much of it with an ellipsis as is at most `width` logical pixels wide: its
// beginning, or with Qt::ElideMiddle its beginning and its end.
QString fitted(const QString& text, const QFontMetrics& metrics, int width,
               Qt::TextElideMode mode = Qt::ElideRight);

// One of the names that are shown together.
struct CutName {
    QString cutAtEnd;         // by fitted(); empty if the whole name fits
    const std::string& name;  // the whole name
};

// Of the names with indices from `first` to `end`, without `end`, calls `cutInTheMiddle` for each
// that would read the same as another name, cut at its end. May call it several times for one.
void spreadNames(int first, int end, const std::function<CutName(int index)>& nameAt,
                 const std::function<void(int index)>& cutInTheMiddle);

}  // namespace tavo
