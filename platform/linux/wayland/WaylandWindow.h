// Qt's connection to the Wayland compositor, and the surfaces of our windows there.
#pragma once

#include <cstdint>

class QWindow;
struct wl_compositor;
struct wl_display;
struct wl_surface;

namespace tavo {

// Main thread. Null on any platform but Wayland.
[[nodiscard]] wl_display* qtWaylandDisplay();
[[nodiscard]] wl_compositor* qtWaylandCompositor();

// Our window with this QWindow::winId(); null when there is none.
[[nodiscard]] QWindow* ownWindow(std::uintptr_t window);

// Null while the window is not shown, and on any platform but Wayland.
[[nodiscard]] wl_surface* waylandSurfaceOf(QWindow* window);

}  // namespace tavo
