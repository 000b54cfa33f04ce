// Telling of new windows on a Wayland desktop (wlr-foreign-toplevel-management-unstable-v1).
#pragma once

#include <functional>
#include <string>

#include "support/Signal.h"

namespace tavo {

// Calls `changed` from Qt's event loop after the compositor at `display` has listed windows: first
// those that are there, later each new one, for as long as the subscription is kept. Has a
// connection of its own for that time only, so that there are no wake-ups otherwise. Main thread.
// Empty without a compositor. `changed` is not called where the compositor does not list windows,
// nor after the connection broke.
Subscription watchWaylandToplevels(const std::string& display, std::function<void()> changed);

}  // namespace tavo
