#include "ui/controls/TextLabel.h"

#include <QEvent>
#include <QPainter>
#include <QStyle>

#include "ui/look/ElidedText.h"

namespace tavo {

TextLabel::TextLabel(const QFont& font, Color color, QWidget* parent)
    : QLabel(parent), color_(color) {
    setTextFormat(Qt::PlainText);
    setFont(font);
    applyColor();
}

QString TextLabel::shownText() const {
    return wordWrap() ? text() : fitted(text(), fontMetrics(), contentsRect().width());
}

// A single line may be narrower than its text, which is shortened then; wrapped lines may not.
QSize TextLabel::minimumSizeHint() const {
    const QSize whole = QLabel::minimumSizeHint();
    return wordWrap() ? whole : QSize(0, whole.height());
}

void TextLabel::paintEvent(QPaintEvent* event) {
    const QString shown = shownText();
    if (shown == text()) {
        QLabel::paintEvent(event);
        return;
    }
    QPainter painter(this);
    style()->drawItemText(&painter, contentsRect(), static_cast<int>(alignment()), palette(), true,
                          shown, foregroundRole());
}

void TextLabel::changeEvent(QEvent* event) {
    QLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        applyColor();
    }
}

void TextLabel::applyColor() {
    const QColor color = Appearance(palette()).*color_;
    // Disabled text has the same colour: behind a sheet the window is disabled, but looks as
    // before.
    QPalette own = palette();
    own.setColor(QPalette::WindowText, color);
    if (own != palette()) {
        setPalette(own);
    }
}

}  // namespace tavo
