#include "ui/controls/ThinScrollBar.h"

#include <QAbstractScrollArea>
#include <QCoreApplication>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

#include "ui/look/Appearance.h"
#include "ui/look/Motion.h"
#include "ui/look/Texts.h"

namespace tavo {
namespace {

constexpr int kWidth = 10;
constexpr int kThumbWidth = 5;
constexpr int kShortestThumb = 36;
constexpr int kEnds = 4;           // space above and below the thumb
constexpr int kNear = 24;          // the bar shows for a pointer this close to the right edge
constexpr int kFadeDelayMs = 900;  // how long the bar stays after the last movement

}  // namespace

ThinScrollBar::ThinScrollBar(QAbstractScrollArea& area, int gap)
    : QScrollBar(Qt::Vertical, &area), area_(area), gap_(gap) {
    area.setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area.viewport()->setMouseTracking(true);
    area.viewport()->installEventFilter(this);
    setAccessibleName(texts::kScrollBar.toString());
    setFocusPolicy(Qt::NoFocus);
    // QScrollBar's context menu is not translated into Italian.
    setContextMenuPolicy(Qt::PreventContextMenu);
    setAttribute(Qt::WA_OpaquePaintEvent, false);
    QScrollBar* const mirrored = area.verticalScrollBar();
    setRange(mirrored->minimum(), mirrored->maximum());
    connect(mirrored, &QScrollBar::valueChanged, this, [this](int value) {
        setValue(value);
        reveal();
    });
    connect(this, &QScrollBar::valueChanged, mirrored, &QScrollBar::setValue);
    connect(mirrored, &QScrollBar::rangeChanged, this, [this](int least, int most) {
        setRange(least, most);
        if (most <= least) {
            fadeDelay_.stop();
            fading_.stop();
            aim_ = 0;
            setOpacity(0);
        } else if (kept_) {
            aim_ = 1;
            setOpacity(1);
        }
    });
    fadeDelay_.setSingleShot(true);
    fadeDelay_.setInterval(kFadeDelayMs);
    connect(&fadeDelay_, &QTimer::timeout, this, [this] { fade(0); });
    connect(&fading_, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& value) { setOpacity(value.toDouble()); });
    hide();
}

void ThinScrollBar::place() {
    setGeometry(area_.width() - gap_ - kWidth, 0, kWidth, area_.height());
    raise();
}

void ThinScrollBar::keepVisible() {
    kept_ = true;
    reveal();
}

bool ThinScrollBar::scrollByPixels(QWheelEvent& event) {
    if (event.pixelDelta().isNull() || event.modifiers() != Qt::NoModifier) {
        return false;
    }
    area_.verticalScrollBar()->setValue(value() - event.pixelDelta().y());
    event.accept();
    return true;
}

void ThinScrollBar::reveal() {
    if (maximum() > minimum()) {
        fade(1);
        fadeSoon();
    }
}

void ThinScrollBar::fadeSoon() {
    if (wanted()) {
        fadeDelay_.stop();
    } else if (aim_ > 0) {
        fadeDelay_.start();
    }
}

void ThinScrollBar::fade(double opacity) {
    if (opacity == aim_) {
        return;
    }
    aim_ = opacity;
    fading_.stop();
    const int duration = motionDuration(*this);
    if (duration == 0) {
        setOpacity(opacity);
        return;
    }
    fading_.setStartValue(opacity_);
    fading_.setEndValue(opacity);
    fading_.setDuration(duration);
    fading_.start();
}

void ThinScrollBar::setOpacity(double opacity) {
    opacity_ = opacity;
    // Visible while it fades in or out, too, so that the pointer can use it.
    setVisible(opacity_ > 0 || aim_ > 0);
    update();
}

bool ThinScrollBar::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::MouseMove || event->type() == QEvent::Leave) {
        const bool near =
            event->type() == QEvent::MouseMove &&
            static_cast<QMouseEvent*>(event)->position().x() >= area_.viewport()->width() - kNear;
        if (near != near_) {
            near_ = near;
            if (near_) {
                reveal();
            } else {
                fadeSoon();
            }
        }
    }
    return QScrollBar::eventFilter(object, event);
}

bool ThinScrollBar::event(QEvent* event) {
    switch (event->type()) {
        case QEvent::Enter:
            over_ = isEnabled();
            reveal();
            break;
        case QEvent::Leave:
            over_ = false;
            fadeSoon();
            break;
        case QEvent::Hide:
        case QEvent::EnabledChange:
            // A bar that gets hidden receives no leave and no release events, which would reset
            // these.
            near_ = over_ = held_ = false;
            fadeSoon();
            break;
        default:
            break;
    }
    return QScrollBar::event(event);
}

QRect ThinScrollBar::thumb() const {
    const int track = height() - 2 * kEnds;
    const int range = maximum() - minimum();
    const int page = area_.verticalScrollBar()->pageStep();
    const int length =
        std::clamp(static_cast<int>(static_cast<qint64>(track) * page / std::max(1, range + page)),
                   std::min(kShortestThumb, track), track);
    const qint64 way = static_cast<qint64>(track - length) * (value() - minimum());
    return {(kWidth - kThumbWidth) / 2, kEnds + static_cast<int>(way / std::max(1, range)),
            kThumbWidth, length};
}

void ThinScrollBar::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Appearance appearance(palette());
    const bool used = held_ || over_;
    const bool solid = appearance.moreContrast;
    QColor color = solid && !used ? appearance.secondaryText : appearance.text;
    color.setAlphaF(static_cast<float>((solid ? 1 : used ? 0.5 : 0.28) * opacity_));
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.drawRoundedRect(thumb(), kThumbWidth / 2.0, kThumbWidth / 2.0);
}

void ThinScrollBar::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) {
        return;
    }
    const int y = event->position().toPoint().y();
    const QRect thumb = this->thumb();
    const bool onThumb = y >= thumb.top() && y <= thumb.bottom();
    held_ = true;
    // A press beside the thumb moves the middle of the thumb to the pointer.
    grip_ = onThumb ? y - thumb.top() : thumb.height() / 2;
    fadeSoon();
    dragTo(y);
}

void ThinScrollBar::mouseMoveEvent(QMouseEvent* event) {
    if (held_) {
        dragTo(event->position().toPoint().y());
    }
}

void ThinScrollBar::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) {
        held_ = false;
        fadeSoon();
        update();
    }
}

void ThinScrollBar::dragTo(int y) {
    const int way = height() - 2 * kEnds - thumb().height();
    if (way > 0) {
        const qint64 offset = std::clamp(y - grip_ - kEnds, 0, way);
        setValue(minimum() + static_cast<int>(offset * (maximum() - minimum()) / way));
    }
    update();
}

void ThinScrollBar::wheelEvent(QWheelEvent* event) {
    QCoreApplication::sendEvent(area_.viewport(), event);
}

}  // namespace tavo
