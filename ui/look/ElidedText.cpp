#include "ui/look/ElidedText.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>

namespace tavo {
namespace {

// Below the first combining mark there is nothing that leaves its line.
bool staysInItsLine(const QString& text) {
    constexpr char16_t kFirstMark = 0x300;
    return std::all_of(text.begin(), text.end(),
                       [](QChar character) { return character.unicode() < kFirstMark; });
}

}  // namespace

void drawOneLine(QPainter& painter, const QRect& line, int spill, Qt::Alignment alignment,
                 const QString& text) {
    const bool clipped = !staysInItsLine(text);
    if (clipped) {
        painter.save();
        painter.setClipRect(line.adjusted(-line.height(), -spill, line.height(), spill),
                            Qt::IntersectClip);
    }
    painter.drawText(line, static_cast<int>(alignment) | Qt::TextSingleLine | Qt::TextDontClip,
                     text);
    if (clipped) {
        painter.restore();
    }
}

QString fitted(const QString& text, const QFontMetrics& metrics, int width) {
    // Sizes are rounded to whole pixels; measured finer, a text may be too wide for its own size.
    if (metrics.horizontalAdvance(text) <= width) {
        return text;
    }
    // A letter that becomes the last one of its word may take another, wider form.
    QString shown = metrics.elidedText(text, Qt::ElideRight, width);
    for (int room = width, excess = 0;
         (excess = metrics.horizontalAdvance(shown) - width) > 0 && room > 0;) {
        room -= excess;
        shown = metrics.elidedText(text, Qt::ElideRight, room);
    }
    return shown;
}

}  // namespace tavo
