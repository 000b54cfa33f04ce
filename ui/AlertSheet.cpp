#include "ui/AlertSheet.h"

#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

#include "ui/AccessibleItems.h"
#include "ui/Appearance.h"
#include "ui/DisplayText.h"
#include "ui/Metrics.h"
#include "ui/Texts.h"

namespace tavo {
namespace {

using namespace metrics;

// The rounded ground of the message.
class Card final : public QWidget {
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent*) override {
        const Appearance appearance(palette());
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(appearance.border, 1));
        painter.setBrush(appearance.sheet);
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kAlertRadius,
                                kAlertRadius);
    }

    // Presses on the card belong to it, not to what moves the window.
    void mousePressEvent(QMouseEvent* event) override { event->accept(); }
};

QLabel* plainLabel(QWidget* parent) {
    auto* const label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignHCenter);
    return label;
}

}  // namespace

AlertSheet::AlertSheet(const QString& title, QWidget* parent)
    : QWidget(parent),
      card_(new Card(this)),
      title_(plainLabel(card_)),
      message_(plainLabel(card_)),
      ok_(new QPushButton(texts::kOk.toString(), card_)) {
    setAccessibleRole(*this, QAccessible::Dialog);
    setAccessibleName(title);
    title_->setText(title);
    title_->setFont(interfaceFont(kBody, QFont::DemiBold));
    message_->setFont(interfaceFont(kCallout));
    message_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    message_->setFocusPolicy(Qt::NoFocus);
    ok_->setFont(interfaceFont(kBody));
    ok_->setDefault(true);
    connect(ok_, &QPushButton::clicked, this, [this] { onDismissed(); });

    auto* const layout = new QVBoxLayout(card_);
    layout->setContentsMargins(kAlertPadding, kAlertPadding, kAlertPadding, kAlertPadding);
    layout->setSpacing(kAlertSpacing);
    layout->addWidget(title_);
    layout->addWidget(message_);
    layout->addWidget(ok_);
    card_->setFixedWidth(kAlertWidth);
    applyAppearance();
    hide();
}

void AlertSheet::applyAppearance() {
    const Appearance appearance(palette());
    QPalette labels = palette();
    labels.setColor(QPalette::WindowText, appearance.text);
    title_->setPalette(labels);
    message_->setPalette(labels);
}

void AlertSheet::present(const QString& message) {
    message_->setText(breakable(message));
    message_->setAccessibleName(message);
    if (!isVisible()) {
        returnFocusTo_ = window()->focusWidget();
    }
    place();
    show();
    raise();
    ok_->setFocus(Qt::PopupFocusReason);
}

void AlertSheet::dismiss() {
    if (!isVisible()) {
        return;
    }
    hide();
    if (returnFocusTo_ != nullptr) {
        returnFocusTo_->setFocus(Qt::PopupFocusReason);
        returnFocusTo_ = nullptr;
    }
}

void AlertSheet::place() {
    setGeometry(parentWidget()->rect());
    card_->setMaximumHeight(height() - 2 * kAlertPadding);
    card_->resize(kAlertWidth, card_->layout()->totalHeightForWidth(kAlertWidth));
    card_->move((width() - card_->width()) / 2, (height() - card_->height()) / 2);
}

void AlertSheet::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Appearance(palette()).dim);
    painter.drawRoundedRect(rect(), kWindowRadius, kWindowRadius);
}

void AlertSheet::keyPressEvent(QKeyEvent* event) {
    switch (event->key()) {
        case Qt::Key_Escape:
        case Qt::Key_Return:
        case Qt::Key_Enter:
            onDismissed();
            break;
        default:
            // Nothing behind the sheet hears of a key, but the window may still be closed.
            event->setAccepted(event->keyCombination() != (Qt::CTRL | Qt::Key_Q) &&
                               event->keyCombination() != (Qt::CTRL | Qt::Key_W));
    }
}

void AlertSheet::mousePressEvent(QMouseEvent* event) {
    event->accept();
}

bool AlertSheet::focusNextPrevChild(bool) {
    ok_->setFocus(Qt::TabFocusReason);
    return true;
}

void AlertSheet::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        applyAppearance();
    }
}

}  // namespace tavo
