// The launcher's window among those of the session's desktop.
#pragma once

#include <memory>

#include "platform/WindowManagement.h"

namespace tavo {

class RunningApplications;

// For the window system that Qt's application object uses; without X11 and Wayland its calls do
// nothing. The application object and `running` must outlive the result. Main thread.
std::unique_ptr<WindowManagement> makeSessionWindowManagement(RunningApplications& running);

}  // namespace tavo
