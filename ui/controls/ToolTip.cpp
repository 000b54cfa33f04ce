#include "ui/controls/ToolTip.h"

#include <QApplication>
#include <QEvent>
#include <QScreen>
#include <QToolTip>
#include <algorithm>

namespace tavo {
namespace {

constexpr int kGap = 4;  // between the tool tip and what it must not cover

// While it exists, tool tips come where they should. Qt has a place of its own for them, near the
// pointer. It is changed before the tool tip is shown, because Wayland takes no later change.
class Placer final : public QObject {
public:
    Placer(const QWidget& owner, const QRect& clear, ToolTipSide side)
        : screen_(owner.screen()->geometry()), clear_(clear), side_(side) {
        qApp->installEventFilter(this);
    }

    bool eventFilter(QObject* object, QEvent* event) override {
        // The name of a private class of Qt, whose header is not public.
        if ((event->type() == QEvent::Show || event->type() == QEvent::Move) &&
            object->inherits("QTipLabel")) {
            auto& tip = static_cast<QWidget&>(*object);
            if (const QPoint place = placeOf(tip.size()); place != tip.pos()) {
                tip.move(place);
            }
        }
        return false;
    }

private:
    [[nodiscard]] QPoint placeOf(QSize tip) const {
        QPoint place;
        if (side_ == ToolTipSide::Below) {
            place = {clear_.center().x() - tip.width() / 2, clear_.bottom() + 1 + kGap};
            if (place.y() + tip.height() > screen_.bottom() + 1) {
                place.setY(clear_.top() - kGap - tip.height());
            }
        } else {
            place = {clear_.right() + 1 + kGap, clear_.top()};
            if (place.x() + tip.width() > screen_.right() + 1) {
                place.setX(clear_.left() - kGap - tip.width());
            }
        }
        const auto within = [](int at, int length, int first, int last) {
            return std::max(first, std::min(at, last + 1 - length));
        };
        return {within(place.x(), tip.width(), screen_.left(), screen_.right()),
                within(place.y(), tip.height(), screen_.top(), screen_.bottom())};
    }

    const QRect screen_;
    const QRect clear_;
    const ToolTipSide side_;
};

}  // namespace

void showToolTip(const QString& text, QWidget& owner, const QRect& clear, ToolTipSide side) {
    const Placer placer(owner, clear, side);
    QToolTip::showText(clear.center(), text, &owner);
}

}  // namespace tavo
