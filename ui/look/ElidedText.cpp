#include "ui/look/ElidedText.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>
#include <map>

namespace tavo {
namespace {

// True if all characters come before U+0300, the first combining mark: such text never leaves its
// line, so that clipping, which costs time, is not needed.
bool staysInItsLine(const QString& text) {
    constexpr char16_t kFirstMark = 0x300;
    return std::all_of(text.begin(), text.end(),
                       [](QChar character) { return character.unicode() < kFirstMark; });
}

}  // namespace

void drawElidedText(QPainter& painter, const QRect& line, int spill, Qt::Alignment alignment,
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

QString fitted(const QString& text, const QFontMetrics& metrics, int width,
               Qt::TextElideMode mode) {
    // horizontalAdvance() is rounded to whole pixels, as the widths of widgets are. elidedText()
    // measures in fractions and would shorten a text in a widget of exactly its size.
    if (metrics.horizontalAdvance(text) <= width) {
        return text;
    }
    // elidedText() can return a text that is too wide, because a letter at the end of a word may
    // have another, wider form.
    QString shown = metrics.elidedText(text, mode, width);
    for (int room = width, excess = 0;
         (excess = metrics.horizontalAdvance(shown) - width) > 0 && room > 0;) {
        room -= excess;
        shown = metrics.elidedText(text, mode, room);
    }
    return shown;
}

void spreadNames(int first, int end, const std::function<CutName(int index)>& nameAt,
                 const std::function<void(int index)>& cutInTheMiddle) {
    std::map<QString, int> ends;
    for (int index = first; index < end; ++index) {
        const CutName cut = nameAt(index);
        if (cut.cutAtEnd.isEmpty()) {
            continue;
        }
        const auto [other, isNew] = ends.try_emplace(cut.cutAtEnd, index);
        if (!isNew && nameAt(other->second).name != cut.name) {
            cutInTheMiddle(index);
            cutInTheMiddle(other->second);
        }
    }
}

}  // namespace tavo
