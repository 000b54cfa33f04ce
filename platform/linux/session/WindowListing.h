// Whether this session lists the windows of other programs.
#pragma once

#include "platform/linux/system/StartEnvironment.h"

namespace tavo {

// `wayland`: in a Wayland session (isWaylandSession) the compositor must list them, else the X
// server at DISPLAY must have a window manager that does. Asks anew at each call, for a second at
// most. Any thread.
[[nodiscard]] bool canListWindows(const StartEnvironment& environment, bool wayland);

}  // namespace tavo
