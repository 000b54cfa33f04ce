// Puts open menus into the accessibility tree of their window.
#pragma once

#include <QAccessible>

class QWidget;

namespace tavo {

// Menus are windows of their own, and Qt does not put them into the accessibility tree, so that a
// screen reader which walks the tree would not find them. Here, an open menu whose parent is
// `window`, or which has no parent, is the last child of the window in the tree. (Qt's interface of
// the menu still names the application as its parent.) Qt owns the result.
QAccessibleInterface* makeAccessibleWindow(QWidget& window, QAccessible::Role role);

}  // namespace tavo
