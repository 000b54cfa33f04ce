#include "ui/controls/SymbolButton.h"

#include <QFontMetrics>
#include <QKeyEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <algorithm>

#include "ui/controls/ToolTip.h"
#include "ui/look/Appearance.h"
#include "ui/look/ElidedText.h"
#include "ui/look/Metrics.h"
#include "ui/look/Symbols.h"
#include "ui/look/TextSanitizer.h"
#include "ui/look/TextScale.h"

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

void SymbolButton::setToolTipBeside(const QWidget& neighbour) {
    beside_ = &neighbour;
}

QSize SymbolButton::sizeHint() const {
    const QFontMetrics metrics(interfaceFont(fontSize_));
    const int symbolWidth = symbol_.isEmpty() ? 0 : text().isEmpty() ? symbolSize_ : symbolSide();
    const int textWidth = text().isEmpty() ? 0 : metrics.horizontalAdvance(text());
    const int gap = symbolWidth != 0 && textWidth != 0 ? metrics::kSymbolSpacing : 0;
    const int height = std::max(symbolWidth, text().isEmpty() ? 0 : metrics.height());
    return {symbolWidth + gap + textWidth + 2 * kMargin, height + 2 * kMargin};
}

// A symbol beside text grows with it. One alone grows into the margin around it alone, so that the
// button takes no room from what is beside it.
int SymbolButton::symbolSide() const {
    const int grown = grownWithText(symbolSize_);
    return text().isEmpty() ? std::min(grown, std::max(symbolSize_, height() - 4)) : grown;
}

int SymbolButton::textStart() const {
    return kMargin + (symbol_.isEmpty() ? 0 : symbolSide() + metrics::kSymbolSpacing);
}

QString SymbolButton::shownText() const {
    return fitted(text(), QFontMetrics(interfaceFont(fontSize_)), width() - textStart());
}

void SymbolButton::paintEvent(QPaintEvent*) {
    const Appearance appearance(palette());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (underMouse() || hasFocus()) {
        painter.setPen(hasFocus() ? QPen(appearance.focusRing, 0.75 * appearance.focusWidth)
                                  : QPen(Qt::NoPen));
        painter.setBrush(underMouse() ? QBrush(appearance.hover) : QBrush(Qt::NoBrush));
        painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), kMargin, kMargin);
    }
    QColor color = tone_ == Tone::Normal      ? appearance.text
                   : tone_ == Tone::Secondary ? appearance.secondaryText
                                              : appearance.destructive;
    if (isDown() || (underMouse() && isEnabled())) {
        color = isDown() ? appearance.accent : color;
        if (!text().isEmpty() && tone_ == Tone::Secondary) {
            color = appearance.text;
        }
    }
    if (!symbol_.isEmpty()) {
        const int side = symbolSide();
        const double left = text().isEmpty() ? (width() - side) / 2.0 : kMargin;
        const QRectF box(left, (height() - side) / 2.0, side, side);
        drawSymbol(painter, box, symbol_, color);
    }
    painter.setFont(interfaceFont(fontSize_));
    painter.setPen(color);
    painter.drawText(rect().adjusted(textStart(), 0, 0, 0),
                     Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, shownText());
}

void SymbolButton::keyPressEvent(QKeyEvent* event) {
    // Qt's buttons react to Space; users expect Return to press the focused button as well.
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        if (!event->isAutoRepeat()) {
            click();
        }
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

void SymbolButton::mouseReleaseEvent(QMouseEvent* event) {
    const QScopedValueRollback byPointer(byPointer_, true);
    QAbstractButton::mouseReleaseEvent(event);
}

void SymbolButton::resizeEvent(QResizeEvent*) {
    if (!text().isEmpty()) {
        setToolTip(shownText() == text() ? QString() : toolTipText(text()));
    }
}

bool SymbolButton::event(QEvent* event) {
    if (event->type() == QEvent::Enter || event->type() == QEvent::Leave) {
        update();
    } else if (event->type() == QEvent::ToolTip) {
        QRect clear(mapToGlobal(QPoint()), size());
        if (beside_ != nullptr) {
            clear |= QRect(beside_->mapToGlobal(QPoint()), beside_->size());
        }
        showToolTip(toolTip(), *this, clear,
                    beside_ != nullptr ? ToolTipSide::Right : ToolTipSide::Below);
        return true;
    }
    return QAbstractButton::event(event);
}

}  // namespace tavo
