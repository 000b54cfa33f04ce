#include "ui/window/AlertSheet.h"

#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "ui/controls/TextLabel.h"
#include "ui/look/Appearance.h"
#include "ui/look/Metrics.h"
#include "ui/look/TextSanitizer.h"
#include "ui/look/TextScale.h"
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
    useInterfaceFont(*title_, kBody, QFont::DemiBold);
    useInterfaceFont(*message_, kCallout);
    useInterfaceFont(*ok_, kBody);
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
    width_ = std::min(grownWithText(kAlertWidth), std::max(kAlertWidth, available.width()));
    message_->setText(breakable(text_));
    QFont font = interfaceFont(kCallout);
    message_->setFont(font);
    const int around = cardHeight() - messageHeight();
    // Text larger than usual becomes smaller before it is cut.
    while (around + messageHeight() > available.height() && font.pixelSize() > kCallout) {
        font.setPixelSize(font.pixelSize() - 1);
        message_->setFont(font);
    }
    if (around + messageHeight() > available.height()) {
        cutMessage(available.height() - around);
    }
    return {width_, cardHeight()};
}

int AlertSheet::cardHeight() const {
    card().layout()->invalidate();
    return card().layout()->totalHeightForWidth(width_);
}

int AlertSheet::messageHeight() const {
    return message_->heightForWidth(width_ - 2 * kAlertPadding);
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
