#include "app/status/TrayMenuPosition.h"

#include <algorithm>

namespace tavo {
namespace {

QPoint besidePanel(const QRect& item, const QSize& menu, const QRect& screen,
                   const QRect& available) {
    const QPoint below(item.left(), item.bottom() + 1);
    const QPoint above(item.left(), item.top() - menu.height());
    if (item.bottom() < available.top()) {
        return below;
    }
    if (item.top() > available.bottom()) {
        return above;
    }
    if (item.right() < available.left()) {
        return {item.right() + 1, item.top()};
    }
    if (item.left() > available.right()) {
        return {item.left() - menu.width(), item.top()};
    }
    return below.y() + menu.height() <= screen.bottom() + 1 ? below : above;
}

}  // namespace

QPoint trayMenuPosition(const QRect& item, const QSize& menu, const QRect& screen,
                        const QRect& available) {
    const QPoint corner = besidePanel(item, menu, screen, available);
    const int right = std::max(screen.left(), screen.right() + 1 - menu.width());
    const int bottom = std::max(screen.top(), screen.bottom() + 1 - menu.height());
    return {std::clamp(corner.x(), screen.left(), right),
            std::clamp(corner.y(), screen.top(), bottom)};
}

QRect trayItemAt(const QPoint& point, const QRect& available) {
    QRect item(point, QSize(1, 1));
    if (point.y() < available.top()) {
        item.setBottom(available.top() - 1);
    } else if (point.y() > available.bottom()) {
        item.setTop(available.bottom() + 1);
    } else if (point.x() < available.left()) {
        item.setRight(available.left() - 1);
    } else if (point.x() > available.right()) {
        item.setLeft(available.right() + 1);
    }
    return item;
}

}  // namespace tavo
