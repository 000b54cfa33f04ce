// Where a menu opens that belongs to something in a panel.
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace tavo {

// The upper left corner of a menu of size `menu` that opens at the edge of `item` which faces the
// middle of the screen: beside the panel, whichever side of the screen that is on. `available` is
// what panels leave of `screen`. A panel that leaves itself out of that gets the menu below the
// item, or above it where there is no room. The menu is within the screen.
QPoint trayMenuPosition(const QRect& item, const QSize& menu, const QRect& screen,
                        const QRect& available);

}  // namespace tavo
