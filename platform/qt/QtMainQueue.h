// The MainQueue port over Qt's event loop.
#pragma once

#include <memory>

#include "platform/MainQueue.h"

namespace tavo {

// Make and destroy it on the main thread, which runs QCoreApplication's event loop; a block may
// destroy it. Blocks run in the order in which they are due; a block of async() is due at once. A
// block added while others run waits for the next turn of the event loop. A delay is never shorter
// than asked for, and at most some milliseconds longer. No wake-ups while no block waits.
std::unique_ptr<MainQueue> makeQtMainQueue();

}  // namespace tavo
