// A window as screen readers see it: with the menus that are open over it.
#pragma once

#include <QAccessible>

class QWidget;

namespace tavo {

// Menus are windows of their own, which the toolkit leaves out of the accessibility tree: whoever
// walks it would never come to them. So a menu that is a child of `window`, or of none, is the
// window's child in the tree, after its other children, while it is open. (Asked for its parent,
// the toolkit's menu goes on naming the application.) The toolkit owns the result.
QAccessibleInterface* makeAccessibleWindow(QWidget& window, QAccessible::Role role);

}  // namespace tavo
