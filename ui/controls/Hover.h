// Which widget the pointer is over.
#pragma once

class QWidget;

namespace tavo {

// Tells the widgets of the window anew which of them the pointer is over. Qt tells them only when
// the pointer moves: to be called after something has closed, or has moved, under a pointer that
// rests. Does nothing while a menu is open. Asks the window system where the pointer is, so not for
// each step of a movement. Main thread.
void refreshHover(const QWidget& window);

}  // namespace tavo
