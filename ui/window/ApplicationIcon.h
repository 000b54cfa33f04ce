// The icon of the program, for whoever lists its windows.
#pragma once

class QIcon;
class QWidget;

namespace tavo {

// The icon in the sizes that lists of windows use, from the resource folder. A size whose file
// cannot be read is left out. Main thread.
QIcon applicationIcon();

// Gives all windows that icon once `window` has been painted for the first time: reading it would
// only make people wait for that. Until then, and where no file can be read, they have none.
void useApplicationIconAfterFirstFrame(QWidget& window);

}  // namespace tavo
