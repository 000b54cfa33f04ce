// Running applications as a compositor lists their windows.
#pragma once

#include <memory>
#include <string>

#include "platform/RunningApplications.h"
#include "platform/linux/entries/DesktopEntryIndex.h"
#include "platform/linux/windows/CompositorWindows.h"

namespace tavo {

// Asked by identifier, an application runs while the compositor lists a window that WindowMatcher
// gives to it by the window's names. It is answered once, without a process. Where the compositor
// does not list windows, nothing runs. Asked by process, every live process of this user runs, but
// showsWindow() is false for it.
//
// Activation brings forward all windows of the identifier, minimised ones included: the active one
// last, else the one that is listed first. Where only the process is known, its identifier is the
// one that it was started as: from an earlier activation, or from GIO_LAUNCHED_DESKTOP_FILE in its
// environment; without one nothing happens. Nothing happens either when the user has turned to
// another application since noteUserRequest(), that is when the active window belongs neither to
// the application that was active then, nor to this application, nor to `ownAppId`. Where the
// compositor does not say which window is active, every window but our own counts as another
// application's.
std::unique_ptr<RunningApplications> makeCompositorRunningApplications(
    std::unique_ptr<CompositorWindows> windows, std::shared_ptr<DesktopEntryIndex> listed,
    std::string ownAppId);

}  // namespace tavo
