// Menus as parts of their window in the accessibility tree.
#pragma once

#include <QAccessible>

class QMenu;

namespace tavo {

// Qt's own interface of a menu names the application as its parent, so that a screen reader takes
// each menu for a window of its own, and reads out the name of the window behind it whenever a menu
// closes. The parent of this one is the window that the menu is a child of, and that of a submenu
// its entry. For a menu that belongs to a window with the role Window, or to such a menu. Qt owns
// the result.
QAccessibleInterface* makeAccessibleMenu(QMenu& menu);

// To be called when the keyboard focus is on the entry at `index` again without a key of the menu
// that Qt would tell of, as when its submenu has closed.
void announceMenuEntry(QMenu& menu, int index);

}  // namespace tavo
