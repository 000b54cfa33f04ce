// The soft shadow around the window.
#pragma once

#include <QPixmap>

class QPainter;
class QRect;

namespace tavo {

// Keeps a picture of the shadow's corners and edges, from which the shadow of a window of any size
// is put together. Main thread.
class WindowShadow {
public:
    // Paints the shadow of a window with round corners that is at `window`, in the margin of
    // metrics::kShadowMargin around it. Nothing is painted where the window itself is.
    void paint(QPainter& painter, const QRect& window);

private:
    QPixmap picture_;  // of the smallest window that has all corners and edges
};

}  // namespace tavo
