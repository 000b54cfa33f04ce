// Telling of new windows on a Wayland desktop (wlr-foreign-toplevel-management-unstable-v1).
#pragma once

#include <functional>
#include <string>

#include "support/Signal.h"

namespace tavo {

// Calls `changed` from Qt's event loop after the compositor at `display` has listed windows: those
// that are there at first, later each new one, for as long as the answer is kept. Has a connection
// of its own for that time, so that there are no wake-ups otherwise. Main thread. Empty without a
// compositor; no calls where it does not list windows, or any more after the connection broke.
Subscription watchWaylandToplevels(const std::string& display, std::function<void()> changed);

}  // namespace tavo
