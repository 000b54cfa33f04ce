// A narrow scroll bar that covers the content's edge instead of taking space from it.
#pragma once

#include <QScrollBar>
#include <QTimer>
#include <QVariantAnimation>

#include "ui/look/Metrics.h"

class QAbstractScrollArea;

namespace tavo {

// Lies at the right edge of `area` and follows its vertical scroll bar, which stays hidden, so that
// the content has the full width. Appears while the area scrolls and while the pointer is near, if
// there is anything to scroll. Otherwise it fades and is hidden, so that the pointer reaches the
// content below. A hidden bar runs no timer.
class ThinScrollBar final : public QScrollBar {
public:
    // Keeps `gap` logical pixels free at its right: at the window's edge that strip resizes the
    // window.
    explicit ThinScrollBar(QAbstractScrollArea& area, int gap = metrics::kResizeEdge);

    // From now on the bar does not fade: a hint that there is more than is in view.
    void keepVisible();
    [[nodiscard]] bool isKept() const { return kept_; }

    // To be called when `area` was resized.
    void place();

    // Scrolls `area` by the distance that fingers moved on a touchpad. False, with nothing
    // scrolled, for wheel events without a distance in pixels, which `area` handles itself.
    bool scrollByPixels(QWheelEvent& event);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    [[nodiscard]] bool wanted() const { return kept_ || near_ || over_ || held_; }
    void reveal();
    void fadeSoon();
    void fade(double opacity);
    void setOpacity(double opacity);
    [[nodiscard]] QRect thumb() const;
    void dragTo(int y);

    QAbstractScrollArea& area_;
    const int gap_;
    QTimer fadeDelay_;  // runs until the bar fades
    QVariantAnimation fading_;
    double opacity_ = 0;
    double aim_ = 0;     // the opacity after fading
    bool near_ = false;  // whether the pointer is in `area` and near the bar
    bool over_ = false;  // whether the pointer is on the bar
    bool held_ = false;
    bool kept_ = false;
    int grip_ = 0;  // where in the thumb the pointer holds it, from the thumb's top
};

}  // namespace tavo
