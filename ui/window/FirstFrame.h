// Runs code after the first frame.
#pragma once

#include <functional>

class QWidget;

namespace tavo {

// Calls `block` once, after `window` has painted its first frame; half a second after the window
// was shown, if it has painted none by then, as when it came up on another desktop. Never, if the
// window is destroyed before that. Main thread.
void afterFirstFrame(QWidget& window, std::function<void()> block);

}  // namespace tavo
