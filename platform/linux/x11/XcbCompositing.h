// Compositing as X11 desktops have it.
#pragma once

#include <memory>

#include <xcb/xcb.h>

#include "platform/Compositing.h"

namespace tavo {

// A compositor runs while the selection _NET_WM_CM_S0 has an owner (Extended Window Manager Hints).
// It blurs when it lists _KDE_NET_WM_BLUR_BEHIND_REGION on the root window, as KWin does; the same
// property on a window is the region. Windows may have a margin while the window manager lists
// _GTK_FRAME_EXTENTS in _NET_SUPPORTED and a compositor runs. The server tells of every change.
//
// `connection` is Qt's. Use on the main thread, while the application object exists.
std::unique_ptr<Compositing> makeXcbCompositing(xcb_connection_t* connection);

}  // namespace tavo
