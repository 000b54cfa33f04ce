// Running applications as a Wayland compositor shows them.
#pragma once

#include <memory>
#include <string>

#include "platform/RunningApplications.h"
#include "platform/linux/entries/DesktopEntryIndex.h"

namespace tavo {

// By identifier, an application runs while the compositor lists a window that WindowMatcher gives
// to it by the window's application id, all that a window tells. It is answered once, without a
// process. A compositor that does not list windows (wlr-foreign-toplevel-management-unstable-v1)
// cannot tell. By process, any live process of this user runs, but none shows a window.
//
// Activation brings forward all windows of the identifier, minimised ones included: the active one
// last, else the one that the compositor lists first, which is the newest on known compositors.
// Where only the process is known, its identifier is the one that it was started as: from an
// earlier activation, or from GIO_LAUNCHED_DESKTOP_FILE in its environment; without one nothing
// happens. Nothing happens either when the user has turned to another application since
// noteUserRequest(): when the active window is another application's than then, and neither the
// application's own nor of `ownAppId`.
//
// Connects to `display` for each question, for half a second a round trip at most.
std::unique_ptr<RunningApplications> makeWaylandRunningApplications(
    std::string display, std::shared_ptr<DesktopEntryIndex> listed, std::string ownAppId);

}  // namespace tavo
