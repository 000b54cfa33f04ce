// The main queue over Qt's event loop.
#pragma once

#include <memory>

#include "platform/MainQueue.h"

namespace tavo {

// To be made and ended on the main thread, which runs the application's event loop; a block may
// end the queue. Blocks run in the order of their moments, which for async() is now. A block
// added while others run waits for the next turn of the event loop. Delays are never shorter than
// asked for, and as close as the system's timers allow. Without waiting blocks it never wakes.
std::unique_ptr<MainQueue> makeQtMainQueue();

}  // namespace tavo
