// Running applications, as well as the user's session lets them be seen.
#pragma once

#include <memory>

#include "platform/RunningApplications.h"
#include "platform/linux/entries/DesktopEntryIndex.h"
#include "platform/linux/system/StartEnvironment.h"
#include "platform/linux/x11/XcbRunningApplications.h"

namespace tavo {

// In a Wayland session (isWaylandSession) what the compositor shows, else what the X server's
// window manager does (DISPLAY); without either nothing is known. Connects at the first question,
// so that a start costs nothing. Any thread.
std::unique_ptr<RunningApplications> makeSessionRunningApplications(
    const StartEnvironment& environment, bool wayland, std::shared_ptr<DesktopEntryIndex> listed,
    UserTime userTime);

}  // namespace tavo
