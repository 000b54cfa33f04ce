// Running applications as a Wayland compositor shows them.
#pragma once

#include <memory>
#include <string>

#include "platform/RunningApplications.h"
#include "platform/linux/entries/DesktopEntryIndex.h"

namespace tavo {

// An application runs while the compositor shows a window that WindowMatcher gives to its
// identifier; the window's application id is all there is to go by. It is answered once, without a
// process, for no window says whose it is. A compositor that shows no windows
// (wlr-foreign-toplevel-management-unstable-v1 is what it would need) cannot tell.
//
// Any live process of this user counts as a running application, but none as one that shows a
// window.
//
// Activation brings forward all windows of the identifier, minimised ones included: the active one
// last, else the one that the compositor lists first, which is the newest on those known. Where
// only the process is known, its identifier is what it was started as, from an earlier activation
// or from what GIO leaves in its environment; without one nothing happens. Nothing happens either
// when the user has gone on since the click, which is to be asked for the identifier: when the
// active window is another application's than then, and neither the application's own nor of
// `ownAppId`.
//
// Connects to `display` for each question. Any thread.
std::unique_ptr<RunningApplications> makeWaylandRunningApplications(
    std::string display, std::shared_ptr<DesktopEntryIndex> listed, std::string ownAppId);

}  // namespace tavo
