// The launcher's window among those of the session: X11 (Extended Window Manager Hints 1.5),
// Wayland (xdg-activation).
#pragma once

#include <memory>

#include "platform/WindowManagement.h"

namespace tavo {

class RunningApplications;

// For the window system of the application object, which must exist and outlive it. `running`
// outlives it, too.
std::unique_ptr<WindowManagement> makeSessionWindowManagement(RunningApplications& running);

}  // namespace tavo
