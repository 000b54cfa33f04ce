// The launcher's window among those of a Wayland desktop (xdg-activation-v1).
#pragma once

#include <memory>
#include <string>

#include "platform/RunningApplications.h"
#include "platform/WindowManagement.h"

namespace tavo {

// Brings the window forward by the activation token of the request. Where the compositor lets a
// task bar activate windows, also activates it through `running`, by the application id `ownAppId`.
// `running` must outlive the result. Main thread, while the application object exists.
std::unique_ptr<WindowManagement> makeWaylandWindowManagement(RunningApplications& running,
                                                              std::string ownAppId);

}  // namespace tavo
