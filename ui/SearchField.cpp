#include "ui/SearchField.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>

#include "ui/Appearance.h"
#include "ui/Metrics.h"
#include "ui/Symbols.h"
#include "ui/Texts.h"

namespace tavo {
namespace {

using namespace metrics;

constexpr int kLongestQuery = 10'000;

}  // namespace

SearchField::SearchField(QWidget* parent) : QWidget(parent), line_(new QLineEdit(this)) {
    line_->setFrame(false);
    line_->setFont(interfaceFont(kBody));
    line_->setPlaceholderText(texts::kSearchPrompt.toString());
    line_->setAccessibleName(texts::kSearchPrompt.toString());
    line_->setMaxLength(kLongestQuery);
    line_->setTextMargins(0, 0, 0, 0);
    line_->setAttribute(Qt::WA_MacShowFocusRect, false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setFocusProxy(line_);

    auto* const layout = new QHBoxLayout(this);
    // The line brings two pixels of its own on either side.
    layout->setContentsMargins(kFieldPadding + kSymbol + kSymbolSpacing - 2, 0, kFieldPadding - 2,
                               0);
    layout->addWidget(line_);

    connect(line_, &QLineEdit::textEdited, this, [this](const QString& text) { onEdited(text); });
    connect(line_, &QLineEdit::returnPressed, this, [this] { onSubmit(); });
    applyAppearance();
}

void SearchField::applyAppearance() {
    const Appearance appearance(palette());
    QPalette linePalette = palette();
    linePalette.setColor(QPalette::Base, Qt::transparent);
    linePalette.setColor(QPalette::Text, appearance.text);
    linePalette.setColor(QPalette::PlaceholderText, appearance.secondaryText);
    line_->setPalette(linePalette);
}

QSize SearchField::sizeHint() const {
    return {200, kSymbol + 2 * kFieldPadding};
}

void SearchField::setText(const QString& text) {
    if (line_->text() != text) {
        line_->setText(text);
    }
}

QString SearchField::text() const {
    return line_->text();
}

void SearchField::take(bool selectAll) {
    line_->setFocus(Qt::ShortcutFocusReason);
    if (selectAll) {
        line_->selectAll();
    }
}

void SearchField::type(QKeyEvent& event) {
    line_->setFocus(Qt::OtherFocusReason);
    line_->end(false);
    QCoreApplication::sendEvent(line_, &event);
}

QWidget* SearchField::line() const {
    return line_;
}

void SearchField::paintEvent(QPaintEvent*) {
    const Appearance appearance(palette());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(appearance.recess);
    painter.drawRoundedRect(rect(), kFieldRadius, kFieldRadius);
    drawSymbol(painter, QRectF(kFieldPadding, (height() - kSymbol) / 2.0, kSymbol, kSymbol),
               u"magnifyingglass", appearance.secondaryText);
}

void SearchField::mousePressEvent(QMouseEvent*) {
    take(false);
}

void SearchField::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        applyAppearance();
    }
}

}  // namespace tavo
