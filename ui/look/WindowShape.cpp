#include "ui/look/WindowShape.h"

#include <QWidget>

#include "ui/look/Metrics.h"

namespace tavo {

bool isFlush(const QWidget& widget) {
    const QWidget& window = *widget.window();
    return window.isMaximized() || window.isFullScreen();
}

int windowRadius(const QWidget& widget) {
    return isFlush(widget) ? 0 : metrics::kWindowRadius;
}

}  // namespace tavo
