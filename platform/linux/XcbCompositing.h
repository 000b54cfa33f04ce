// Compositing as X11 and Wayland desktops have it.
#pragma once

#include <memory>

#include "platform/Compositing.h"

namespace tavo {

// On X11 a compositor runs while the selection _NET_WM_CM_S<screen> has an owner (Extended Window
// Manager Hints); on Wayland one always does. Needs the toolkit's connection: made after the
// application object.
std::unique_ptr<Compositing> makeXcbCompositing();

}  // namespace tavo
