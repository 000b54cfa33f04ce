// Whether the user's session is a Wayland session.
#pragma once

#include "platform/linux/system/StartEnvironment.h"

namespace tavo {

// Whether a compositor accepts connections at WAYLAND_DISPLAY. A variable that is left over from
// another session does not count, because it must not hide a working X server. Ask once in a run,
// and pass the answer on. Any thread.
[[nodiscard]] bool isWaylandSession(const StartEnvironment& environment);

}  // namespace tavo
