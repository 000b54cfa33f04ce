// Compositing as X11 and Wayland desktops have it.
#pragma once

#include <memory>

#include "platform/Compositing.h"

namespace tavo {

// On X11 a compositor runs while the selection _NET_WM_CM_S<screen> has an owner (Extended Window
// Manager Hints). It blurs when it lists _KDE_NET_WM_BLUR_BEHIND_REGION on the root window, as
// KWin does; the same property on a window is the region. The server tells of every change.
//
// On Wayland there always is a compositor, and nobody is asked to blur. Needs the toolkit's
// connection: made after the application object.
std::unique_ptr<Compositing> makeXcbCompositing();

}  // namespace tavo
