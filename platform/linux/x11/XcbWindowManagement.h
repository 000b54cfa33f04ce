// The launcher's window among those of an X11 desktop (Extended Window Manager Hints 1.5).
#pragma once

#include <memory>

#include <xcb/xcb.h>

#include "platform/WindowManagement.h"

namespace tavo {

// `connection` is Qt's and must outlive the result. Main thread.
std::unique_ptr<WindowManagement> makeXcbWindowManagement(xcb_connection_t* connection);

}  // namespace tavo
