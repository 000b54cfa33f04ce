// Compositing as Wayland desktops have it.
#pragma once

#include <memory>

#include "platform/Compositing.h"

namespace tavo {

// Always active: a Wayland compositor blends every window. Blurring is KWin's
// org_kde_kwin_blur_manager, which comes and goes with KWin's blur effect; margins are the window
// geometry of xdg-shell, which Qt's plug-in sets.
//
// Uses Qt's connection. On any platform but Wayland nothing blurs and no margin is taken. Use on
// the main thread, while the application object exists.
std::unique_ptr<Compositing> makeWaylandCompositing();

}  // namespace tavo
