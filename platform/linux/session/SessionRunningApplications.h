// Running applications as the window system of the user's session tells of them.
#pragma once

#include <memory>

#include "platform/RunningApplications.h"
#include "platform/linux/entries/DesktopEntryIndex.h"
#include "platform/linux/system/StartEnvironment.h"
#include "platform/linux/x11/XcbRunningApplications.h"

namespace tavo {

class SessionBus;

// `wayland`: in a Wayland session (isWaylandSession) the compositor is asked, by its list of
// toplevel windows, else over the session bus. Otherwise the X server at DISPLAY is asked; without
// either nothing runs. Connects at the first question, so that it does not delay the program's
// start. `bus` must outlive the result.
std::unique_ptr<RunningApplications> makeSessionRunningApplications(
    const StartEnvironment& environment, bool wayland, SessionBus& bus,
    std::shared_ptr<DesktopEntryIndex> listed, UserTime userTime);

}  // namespace tavo
