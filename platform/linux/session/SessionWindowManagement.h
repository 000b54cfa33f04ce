// The launcher's window among those of the session's desktop.
#pragma once

#include <memory>

#include "platform/WindowManagement.h"
#include "platform/linux/system/StartEnvironment.h"

namespace tavo {

// For the window system that Qt's application object uses; without X11 and Wayland its calls do
// nothing. The application object must outlive the result. Main thread.
std::unique_ptr<WindowManagement> makeSessionWindowManagement(const StartEnvironment& environment);

}  // namespace tavo
