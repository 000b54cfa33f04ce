// Compositing as the session's desktop has it.
#pragma once

#include <memory>

#include "platform/Compositing.h"

namespace tavo {

// For the window system that Qt's application object uses; anything but X11 counts as Wayland. The
// application object must outlive the result. Main thread.
std::unique_ptr<Compositing> makeSessionCompositing();

}  // namespace tavo
