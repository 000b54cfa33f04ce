// A round trip to a Wayland compositor, with a limit on its time.
#pragma once

#include <chrono>

#include <wayland-client.h>

namespace tavo {

// Returns when the compositor has handled every request made so far and its events on `queue`
// (null: the display's own queue) have been dispatched. False when the connection broke or no
// answer came within `patience`. Other threads may read from the same display.
bool waitForCompositor(wl_display* display, wl_event_queue* queue,
                       std::chrono::milliseconds patience = std::chrono::milliseconds(500));

}  // namespace tavo
