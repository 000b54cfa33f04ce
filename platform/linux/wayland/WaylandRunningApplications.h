// Running applications as a Wayland compositor shows them.
#pragma once

#include <memory>
#include <string>

#include "platform/RunningApplications.h"
#include "platform/linux/entries/DesktopEntryIndex.h"

namespace tavo {

// Asked by identifier, an application runs while the compositor lists a window that WindowMatcher
// gives to it by the window's application id, the only name that a window has. It is answered once,
// without a process. Where the compositor does not list windows
// (wlr-foreign-toplevel-management-unstable-v1), nothing runs. Asked by process, every live process
// of this user runs, but showsWindow() is false for it.
//
// Activation brings forward all windows of the identifier, minimised ones included: the active one
// last, else the one that the compositor lists first, which is the newest on known compositors.
// Where only the process is known, its identifier is the one that it was started as: from an
// earlier activation, or from GIO_LAUNCHED_DESKTOP_FILE in its environment; without one nothing
// happens. Nothing happens either when the user has turned to another application since
// noteUserRequest(), that is when the active window belongs neither to the application that was
// active then, nor to this application, nor to `ownAppId`.
//
// Connects to `display` anew for each call. A round trip takes half a second at most.
std::unique_ptr<RunningApplications> makeWaylandRunningApplications(
    std::string display, std::shared_ptr<DesktopEntryIndex> listed, std::string ownAppId);

}  // namespace tavo
