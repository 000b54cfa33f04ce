// What a start leaves for later.
#pragma once

#include <functional>

class QWidget;

namespace tavo {

// Calls `block` once the window has painted its first frame, so that it does not delay that; not
// at all if the window ends before. Main thread.
void afterFirstFrame(QWidget& window, std::function<void()> block);

}  // namespace tavo
