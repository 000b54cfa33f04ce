// The launcher's window among those of a Wayland desktop (xdg-activation-v1).
#pragma once

#include <memory>
#include <string>

#include "platform/RunningApplications.h"
#include "platform/WindowManagement.h"

namespace tavo {

// Brings the window forward by the activation token of the request, and where the compositor lets a
// task bar activate windows, by `running` and the launcher's own application id besides. `running`
// outlives it. Main thread, within the life of the application object.
std::unique_ptr<WindowManagement> makeWaylandWindowManagement(RunningApplications& running,
                                                              std::string ownAppId);

}  // namespace tavo
