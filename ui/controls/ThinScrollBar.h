// A slim scroll bar that lies over what it scrolls.
#pragma once

#include <QBasicTimer>
#include <QScrollBar>
#include <QVariantAnimation>

#include "ui/look/Metrics.h"

class QAbstractScrollArea;

namespace tavo {

// Lies at the right edge of `area` and mirrors its vertical scroll bar, which stays switched off:
// so the content keeps the full width. Seen while the area scrolls or the pointer is near, and
// only when there is something to scroll; it fades when neither is so, and is then not there to
// the pointer either. Once hidden it wakes nobody.
class ThinScrollBar final : public QScrollBar {
public:
    // Keeps `gap` pixels free beside it: at the window's edge, the strip that resizes it.
    explicit ThinScrollBar(QAbstractScrollArea& area, int gap = metrics::kResizeEdge);

    // To be called when the area was resized.
    void place();

    // Scrolls the area as far as fingers moved on a touchpad; false when the event does not say
    // so in pixels and is for the area itself.
    bool scrollByPixels(QWheelEvent& event);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void sliderChange(SliderChange change) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    [[nodiscard]] bool wanted() const { return near_ || over_ || held_; }
    void reveal();
    void restSoon();
    void fade(double opacity);
    void setOpacity(double opacity);
    [[nodiscard]] QRect thumb() const;
    void dragTo(int y);

    QAbstractScrollArea& area_;
    const int gap_;
    QBasicTimer resting_;  // until it fades
    QVariantAnimation fading_;
    double opacity_ = 0;
    double aim_ = 0;     // of the opacity
    bool near_ = false;  // the pointer, in the area
    bool over_ = false;  // the pointer, on the bar
    bool held_ = false;
    int grip_ = 0;  // where the thumb is held, from its top
};

}  // namespace tavo
