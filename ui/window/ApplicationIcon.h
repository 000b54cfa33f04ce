// The program's icon for taskbars and window switchers.
#pragma once

class QIcon;
class QWidget;

namespace tavo {

// The icon in the sizes that taskbars and window switchers use. Sizes whose file is missing are
// left out. Main thread.
QIcon applicationIcon();

// Sets the icon of all windows after the first frame of `window`, which reading the files would
// delay. Main thread.
void useApplicationIconAfterFirstFrame(QWidget& window);

}  // namespace tavo
