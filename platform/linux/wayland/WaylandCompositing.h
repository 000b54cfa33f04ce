// Compositing as Wayland desktops have it.
#pragma once

#include <memory>

#include "platform/Compositing.h"

namespace tavo {

// Always active and never blurring: a Wayland compositor blends every window, and no protocol that
// compositors share asks for blurring.
std::unique_ptr<Compositing> makeWaylandCompositing();

}  // namespace tavo
