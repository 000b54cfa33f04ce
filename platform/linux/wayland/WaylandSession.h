// Whether the user's session is a Wayland one.
#pragma once

#include "platform/linux/system/StartEnvironment.h"

namespace tavo {

// Whether there is a compositor at WAYLAND_DISPLAY. One that is named but is not there does not
// count, for such a name may be left over from another session, and must not hide a working X
// server. Asked once a run: all who care get the one answer. Takes a connection to a local socket,
// and nothing where no compositor is named. Any thread.
[[nodiscard]] bool isWaylandSession(const StartEnvironment& environment);

}  // namespace tavo
