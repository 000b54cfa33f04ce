// Computes where the menu of a tray item opens.
#pragma once

#include <QPoint>
#include <QRect>
#include <QSize>

namespace tavo {

// The top left corner of a menu of size `menu` for an item in a panel: at the edge of `item` that
// faces the middle of the screen, on whichever side of the screen the panel is. `screen` is the
// whole screen, `available` what panels leave of it. For a panel that reserves no space the menu is
// below the item, or above it where there is no room. The menu stays on the screen.
QPoint trayMenuPosition(const QRect& item, const QSize& menu, const QRect& screen,
                        const QRect& available);

// The place of an item of which only `point` is known: it reaches from there to the inner edge of
// the panel. `available` is what panels leave of the screen. The point alone where they reserve
// nothing.
QRect trayItemAt(const QPoint& point, const QRect& available);

}  // namespace tavo
