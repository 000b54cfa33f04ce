#include "ui/controls/SearchField.h"

#include <QCoreApplication>
#include <QFontMetrics>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>

#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"
#include "ui/look/Symbols.h"
#include "ui/look/TextScale.h"
#include "ui/look/Texts.h"

namespace tavo {
namespace {

using namespace metrics;

constexpr int kLongestQuery = 1'000'000;

}  // namespace

SearchField::SearchField(QWidget* parent) : QWidget(parent), line_(new QLineEdit(this)) {
    line_->setFrame(false);
    useInterfaceFont(*line_, kBody);
    line_->setPlaceholderText(texts::kSearchPrompt.toString());
    line_->setAccessibleName(texts::kSearchPrompt.toString());
    line_->setMaxLength(kLongestQuery);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setMaximumWidth(kWidestField);

    auto* const layout = new QHBoxLayout(this);
    layout->addWidget(line_);
    placeLine();

    // The signal textEdited is not sent for text that an accessibility client puts in.
    connect(line_, &QLineEdit::textChanged, this, [this](const QString& text) {
        fitPrompt();
        onEdited(text);
    });
    connect(line_, &QLineEdit::returnPressed, this, [this] { onSubmit(); });
    line_->installEventFilter(this);
    applyAppearance();
}

void SearchField::applyAppearance() {
    const Appearance appearance(palette());
    QPalette linePalette = palette();
    linePalette.setColor(QPalette::Base, Qt::transparent);
    linePalette.setColor(QPalette::Text, appearance.text);
    linePalette.setColor(QPalette::PlaceholderText, appearance.promptText);
    linePalette.setColor(QPalette::Highlight, appearance.accentBackground);
    linePalette.setColor(QPalette::HighlightedText, appearance.textOnAccent);
    line_->setPalette(linePalette);
}

QSize SearchField::sizeHint() const {
    return {200, grownWithText(kSymbol) + 2 * kFieldPadding};
}

void SearchField::placeLine() {
    // QLineEdit adds two pixels on either side.
    layout()->setContentsMargins(kFieldPadding + grownWithText(kSymbol) + kSymbolSpacing - 2, 0,
                                 kFieldPadding - 2, 0);
}

// The prompt is smaller than typed text where text is so large that the prompt would be cut.
void SearchField::fitPrompt() {
    QFont font = interfaceFont(kBody);
    const QMargins margins = layout()->contentsMargins();
    const int space = width() - margins.left() - margins.right() - 4;
    while (line_->text().isEmpty() && font.pixelSize() > kBody &&
           QFontMetrics(font).horizontalAdvance(line_->placeholderText()) > space) {
        font.setPixelSize(font.pixelSize() - 1);
    }
    if (font.pixelSize() != line_->font().pixelSize()) {
        line_->setFont(font);
    }
}

void SearchField::resizeEvent(QResizeEvent*) {
    fitPrompt();
}

void SearchField::setText(const QString& text) {
    if (line_->text() != text) {
        const QSignalBlocker quietly(line_);
        line_->setText(text);
        fitPrompt();
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

// Ignores repeated Return events, which come while the key is held down: the Return key that has
// just closed a sheet must not open an application.
bool SearchField::eventFilter(QObject*, QEvent* event) {
    if (event->type() == QEvent::FocusIn || event->type() == QEvent::FocusOut) {
        update();
    }
    if (event->type() != QEvent::KeyPress) {
        return false;
    }
    const auto* const key = static_cast<const QKeyEvent*>(event);
    return key->isAutoRepeat() && (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter);
}

void SearchField::paintEvent(QPaintEvent*) {
    const Appearance appearance(palette());
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    for (const QColor& tint : {appearance.shade, appearance.recess}) {
        painter.setBrush(tint);
        painter.drawRoundedRect(rect(), kFieldRadius, kFieldRadius);
    }
    const bool focused = line_->hasFocus();
    const double line = focused ? appearance.focusWidth : 1;
    painter.setPen(QPen(focused ? appearance.focusRing : appearance.outline, line));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(rect()).adjusted(line / 2, line / 2, -line / 2, -line / 2),
                            kFieldRadius - line / 2, kFieldRadius - line / 2);
    const int side = grownWithText(kSymbol);
    drawSymbol(painter, QRectF(kFieldPadding, (height() - side) / 2.0, side, side),
               u"magnifyingglass", appearance.secondaryText);
}

void SearchField::mousePressEvent(QMouseEvent*) {
    take(false);
}

void SearchField::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        applyAppearance();
    } else if (event->type() == QEvent::FontChange) {
        placeLine();
        updateGeometry();
        fitPrompt();
    }
}

}  // namespace tavo
