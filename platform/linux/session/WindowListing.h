// Whether the windows of other applications can be seen in this session at all.
#pragma once

#include "platform/linux/system/StartEnvironment.h"

namespace tavo {

// In a Wayland session (isWaylandSession) where the compositor lists them, else where a window
// manager of the X server (DISPLAY) does. Asks anew at each call, and waits at most as long as a
// display's answers may take (about a second). Any thread.
[[nodiscard]] bool canListWindows(const StartEnvironment& environment, bool wayland);

}  // namespace tavo
