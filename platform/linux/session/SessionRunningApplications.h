// Running applications as the window system of the user's session tells of them.
#pragma once

#include <memory>

#include "platform/RunningApplications.h"
#include "platform/linux/entries/DesktopEntryIndex.h"
#include "platform/linux/system/StartEnvironment.h"
#include "platform/linux/x11/XcbRunningApplications.h"

namespace tavo {

// `wayland`: in a Wayland session (isWaylandSession) the compositor is asked, else the X server at
// DISPLAY; without either nothing runs. Connects at the first question, so that it does not delay
// the program's start.
std::unique_ptr<RunningApplications> makeSessionRunningApplications(
    const StartEnvironment& environment, bool wayland, std::shared_ptr<DesktopEntryIndex> listed,
    UserTime userTime);

}  // namespace tavo
