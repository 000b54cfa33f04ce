#include "ui/SymbolButton.h"

#include <QFontMetrics>
#include <QKeyEvent>
#include <QPainter>
#include <algorithm>

#include "ui/Appearance.h"
#include "ui/Metrics.h"
#include "ui/Symbols.h"

namespace tavo {

SymbolButton::SymbolButton(QStringView symbol, const QString& text, const QString& toolTip,
                           QWidget* parent)
    : QAbstractButton(parent),
      symbol_(symbol.toString()),
      fontSize_(metrics::kBody),
      symbolSize_(metrics::kSymbol) {
    setText(text);
    setToolTip(toolTip);
    setAccessibleName(text.isEmpty() ? toolTip : text);
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}

void SymbolButton::setFontSize(int size) {
    fontSize_ = size;
    updateGeometry();
}

void SymbolButton::setSymbolSize(int size) {
    symbolSize_ = size;
    updateGeometry();
}

void SymbolButton::setTone(Tone tone) {
    tone_ = tone;
    update();
}

QSize SymbolButton::sizeHint() const {
    const QFontMetrics metrics(interfaceFont(fontSize_));
    const int symbolWidth = symbol_.isEmpty() ? 0 : symbolSize_;
    const int textWidth = text().isEmpty() ? 0 : metrics.horizontalAdvance(text());
    const int gap = symbolWidth != 0 && textWidth != 0 ? metrics::kSymbolSpacing : 0;
    return {symbolWidth + gap + textWidth,
            std::max(symbolWidth, text().isEmpty() ? 0 : metrics.height())};
}

void SymbolButton::paintEvent(QPaintEvent*) {
    const Appearance appearance(palette());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (hasFocus()) {
        painter.setPen(QPen(appearance.accent, 1.5));
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.75, 0.75, -0.75, -0.75), 4, 4);
    }
    QColor color = tone_ == Tone::Normal ? appearance.text : appearance.secondaryText;
    if (isDown() || (underMouse() && isEnabled())) {
        color = isDown() ? appearance.accent : color;
        if (!text().isEmpty() && tone_ == Tone::Secondary) {
            color = appearance.text;
        }
    }
    int left = 0;
    if (!symbol_.isEmpty()) {
        const int side = std::min(symbolSize_, width());
        const int x = text().isEmpty() ? (width() - side) / 2 : 0;
        drawSymbol(painter, QRectF(x, (height() - side) / 2.0, side, side), symbol_, color);
        left = side + metrics::kSymbolSpacing;
    }
    painter.setFont(interfaceFont(fontSize_));
    painter.setPen(color);
    painter.drawText(rect().adjusted(left, 0, 0, 0),
                     Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, text());
}

void SymbolButton::keyPressEvent(QKeyEvent* event) {
    // Return presses too: people expect it of whatever has the ring.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

bool SymbolButton::event(QEvent* event) {
    if (event->type() == QEvent::Enter || event->type() == QEvent::Leave) {
        update();
    }
    return QAbstractButton::event(event);
}

}  // namespace tavo
