// Telling of changes to the list of managed windows of an X11 desktop.
#pragma once

#include <functional>
#include <string>

#include "support/Signal.h"

namespace tavo {

// Calls `changed` from Qt's event loop after each change of the list of windows that the window
// manager of `display` keeps (_NET_CLIENT_LIST, Extended Window Manager Hints), from the return of
// this function on and for as long as the subscription is kept. Has a connection of its own for
// that time only, so that there are no wake-ups otherwise. Main thread. Empty without an X server
// that answers in time; no calls any more after the connection broke.
Subscription watchXcbWindowList(const std::string& display, std::function<void()> changed);

}  // namespace tavo
