// The launcher's window among those of a Wayland desktop.
#pragma once

#include <memory>
#include <string>

#include "platform/WindowManagement.h"

namespace tavo {

// Brings the window forward by the activation token of the request (xdg-activation-v1). Without a
// good one no protocol lets a window come forward by itself, so besides:
//   - where the compositor at `display` lets task bars activate windows, the windows with the
//     application id `appId` are activated (wlr-foreign-toplevel-management-unstable-v1);
//   - elsewhere a window that was already shown, and is not active then, is hidden and shown again:
//     compositors give a new window the focus, on the current workspace.
// On KDE Plasma the window is kept out of the taskbar and the window switcher; no other compositor
// offers that.
//
// Main thread, while the application object exists.
std::unique_ptr<WindowManagement> makeWaylandWindowManagement(std::string display,
                                                              std::string appId);

}  // namespace tavo
