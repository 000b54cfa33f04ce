// The launcher's window among those of an X11 desktop (Extended Window Manager Hints 1.5).
#pragma once

#include <memory>

#include <xcb/xcb.h>

#include "platform/WindowManagement.h"

namespace tavo {

// Over Qt's connection, which outlives it. Main thread.
std::unique_ptr<WindowManagement> makeXcbWindowManagement(xcb_connection_t* connection);

}  // namespace tavo
