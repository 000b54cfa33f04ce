#include "ui/controls/Sheet.h"

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QLayout>
#include <QPainter>
#include <cmath>

#include "ui/accessibility/AccessibleItems.h"
#include "ui/controls/Hover.h"
#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"
#include "ui/look/Motion.h"
#include "ui/look/WindowShape.h"

namespace tavo {
namespace {

using namespace metrics;

constexpr int kShadowRadius = 40;
constexpr int kShadowOffset = 14;
constexpr double kShadowOpacity = 0.3;  // next to the card's edge

// The background of the content, with round corners.
class Card final : public QWidget {
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent*) override {
        const Appearance appearance(palette());
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(appearance.sheetBorder, 1));
        painter.setBrush(appearance.sheet);
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kSheetRadius,
                                kSheetRadius);
    }

    // Without this the window would take presses on the card for the start of a move.
    void mousePressEvent(QMouseEvent* event) override { event->accept(); }
};

// The card's shadow: rounded rectangles of faint black on top of one another, each one larger,
// whose opacities make the shadow fade evenly. The area of the card itself is left out.
void paintShadow(QPainter& painter, const QRect& card) {
    const auto darkness = [](int reach) {
        const double distance = static_cast<double>(reach) / kShadowRadius;
        return std::lround(255 * kShadowOpacity * (1 - distance) * (1 - distance));
    };
    painter.save();
    constexpr int kReach = kShadowRadius + kShadowOffset;
    painter.setClipRegion(QRegion(card.adjusted(-kReach, -kReach, kReach, kReach)) -
                          card.adjusted(kSheetRadius, kSheetRadius, -kSheetRadius, -kSheetRadius));
    const QRectF below = QRectF(card).translated(0, kShadowOffset);
    constexpr int kStep = 2;
    for (int reach = 0; reach < kShadowRadius; reach += kStep) {
        const long alpha = darkness(reach) - darkness(reach + kStep);
        painter.setBrush(QColor(0, 0, 0, static_cast<int>(alpha)));
        painter.drawRoundedRect(below.adjusted(-reach, -reach, reach, reach), kSheetRadius + reach,
                                kSheetRadius + reach);
    }
    painter.restore();
}

void announce(QWidget& sheet, QAccessible::Event what) {
    if (QAccessible::isActive()) {
        QAccessibleEvent event(&sheet, what);
        QAccessible::updateAccessibility(&event);
    }
}

}  // namespace

Sheet::Sheet(const QString& title, QWidget* parent) : QWidget(parent), card_(new Card(this)) {
    setAccessibleRole(*this, QAccessible::Dialog);
    setAccessibleName(title);
    arrival_.setStartValue(0.0);
    arrival_.setEndValue(1.0);
    connect(&arrival_, &QVariantAnimation::valueChanged, this, [this] { update(); });
    parent->installEventFilter(this);
    hide();
}

void Sheet::present() {
    if (isVisible()) {
        place();
        return;
    }
    returnFocusTo_ = window()->focusWidget();
    place();
    arrival_.setDuration(motionDuration(*this));
    arrival_.start();
    show();
    raise();
    firstFocus().setFocus(Qt::PopupFocusReason);
    coverParent(true);
    // For the Return key: without this event filter, a focused button would handle it first.
    qApp->installEventFilter(this);
    announce(*this, QAccessible::DialogStart);
}

void Sheet::withdraw() {
    if (isHidden()) {
        return;
    }
    qApp->removeEventFilter(this);
    announce(*this, QAccessible::DialogEnd);
    coverParent(false);
    // Before hiding: else Qt would move the focus to the next widget, which is in this sheet.
    if (returnFocusTo_ != nullptr) {
        returnFocusTo_->setFocus(Qt::PopupFocusReason);
        returnFocusTo_ = nullptr;
    }
    hide();
    refreshHover(*window());
}

void Sheet::coverParent(bool cover) {
    for (QObject* const child : parentWidget()->children()) {
        auto* const sibling = qobject_cast<QWidget*>(child);
        if (sibling != nullptr && dynamic_cast<Sheet*>(sibling) == nullptr) {
            sibling->setEnabled(!cover);
        }
    }
}

void Sheet::place() {
    setGeometry(parentWidget()->rect());
    const QSize available = size() - QSize(2 * kSheetMargin, 2 * kSheetMargin);
    const QSize wanted = cardSize(available).boundedTo(available);
    card_->setGeometry(
        QRect(QPoint((width() - wanted.width()) / 2, (height() - wanted.height()) / 2), wanted));
}

bool Sheet::eventFilter(QObject* object, QEvent* event) {
    if (object == parentWidget() && event->type() == QEvent::Resize && isVisible()) {
        place();
    }
    return event->type() == QEvent::KeyPress &&
           takeReturn(qobject_cast<QWidget*>(object), static_cast<const QKeyEvent&>(*event));
}

// Takes a Return key that is meant for a widget of the sheet, and calls submit() unless the key
// repeats. False for other keys, and for keys in popups such as the list of a combo box, which are
// windows of their own.
bool Sheet::takeReturn(const QWidget* receiver, const QKeyEvent& key) {
    if ((key.key() != Qt::Key_Return && key.key() != Qt::Key_Enter) || receiver == nullptr ||
        receiver->window() != window() || (receiver != this && !isAncestorOf(receiver))) {
        return false;
    }
    if (!key.isAutoRepeat()) {
        submit();
    }
    return true;
}

// The card is shown at once; only the shade behind it fades in.
void Sheet::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setOpacity(arrival_.currentValue().toDouble());
    painter.setPen(Qt::NoPen);
    painter.setBrush(Appearance(palette()).dim);
    const int radius = windowRadius(*this);
    painter.drawRoundedRect(rect(), radius, radius);
    paintShadow(painter, card_->geometry());
}

void Sheet::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Escape) {
        dismiss();
    } else {
        // Accepts all other keys, so that the window behind handles none but those that close it.
        event->setAccepted(event->keyCombination() != (Qt::CTRL | Qt::Key_Q) &&
                           event->keyCombination() != (Qt::CTRL | Qt::Key_W));
    }
}

void Sheet::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange && isVisible()) {
        for (QLayout* const layout : card_->findChildren<QLayout*>()) {
            layout->invalidate();  // else some are measured anew after the card only
        }
        place();
    }
}

void Sheet::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

// Moves along the tab order and skips widgets outside the sheet.
bool Sheet::focusNextPrevChild(bool next) {
    QWidget* const start = window()->focusWidget();
    QWidget* candidate = start != nullptr && isAncestorOf(start) ? start : card_;
    do {
        candidate = next ? candidate->nextInFocusChain() : candidate->previousInFocusChain();
        if (isAncestorOf(candidate) && candidate->isVisible() && candidate->isEnabled() &&
            (candidate->focusPolicy() & Qt::TabFocus) != 0) {
            candidate->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return true;
        }
    } while (candidate != start && candidate != card_);
    return true;
}

}  // namespace tavo
