#include "ui/window/AlertSheet.h"

#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "ui/controls/TextLabel.h"
#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"
#include "ui/look/TextSanitizer.h"
#include "ui/look/Texts.h"

namespace tavo {
namespace {

using namespace metrics;

TextLabel* makeLabel(const QFont& font, QWidget* parent) {
    auto* const label = new TextLabel(font, &Appearance::text, parent);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignHCenter);
    return label;
}

}  // namespace

AlertSheet::AlertSheet(const QString& title, QWidget* parent)
    : Sheet(title, parent),
      title_(makeLabel(interfaceFont(kBody, QFont::DemiBold), &card())),
      message_(makeLabel(interfaceFont(kCallout), &card())),
      ok_(new QPushButton(texts::kOk.toString(), &card())) {
    title_->setText(title);
    message_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    message_->setFocusPolicy(Qt::NoFocus);
    ok_->setFont(interfaceFont(kBody));
    ok_->setDefault(true);
    connect(ok_, &QPushButton::clicked, this, [this] { dismiss(); });

    auto* const layout = new QVBoxLayout(&card());
    layout->setContentsMargins(kAlertPadding, kAlertPadding, kAlertPadding, kAlertPadding);
    layout->setSpacing(kAlertSpacing);
    layout->addWidget(title_);
    layout->addWidget(message_);
    layout->addWidget(ok_);
}

void AlertSheet::setMessage(const QString& message) {
    text_ = message;
    message_->setText(breakable(message));
    message_->setAccessibleName(message);
    setAccessibleDescription(message);
}

QSize AlertSheet::cardSize(QSize available) const {
    const int around = cardHeight() - messageHeight();
    message_->setText(breakable(text_));
    if (around + messageHeight() > available.height()) {
        cutMessage(available.height() - around);
    }
    return {kAlertWidth, cardHeight()};
}

int AlertSheet::cardHeight() const {
    card().layout()->invalidate();
    return card().layout()->totalHeightForWidth(kAlertWidth);
}

int AlertSheet::messageHeight() const {
    return message_->heightForWidth(kAlertWidth - 2 * kAlertPadding);
}

// Shows the beginning of the message that fits into `height`, with an ellipsis.
void AlertSheet::cutMessage(int height) const {
    const auto show = [&](qsizetype length) {
        message_->setText(breakable(text_.left(length).trimmed() + u'…'));
    };
    qsizetype fits = 0;
    qsizetype tooLong = text_.size();
    while (tooLong - fits > 1) {
        const qsizetype tried = fits + (tooLong - fits) / 2;
        show(tried);
        (messageHeight() <= height ? fits : tooLong) = tried;
    }
    show(fits > 0 && text_.at(fits - 1).isHighSurrogate() ? fits - 1 : fits);
}

QWidget& AlertSheet::firstFocus() const {
    return *ok_;
}

void AlertSheet::submit() {
    dismiss();
}

}  // namespace tavo
