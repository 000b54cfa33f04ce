#include "platform/linux/wayland/PlasmaShell.h"

#include <plasma-shell-client-protocol.h>
#include <wayland-client.h>

#include "platform/linux/wayland/WaylandWindow.h"

namespace tavo {
namespace {

constexpr std::uint32_t kVersion = ORG_KDE_PLASMA_SURFACE_SET_SKIP_SWITCHER_SINCE_VERSION;

}  // namespace

PlasmaShell::PlasmaShell()
    : global_(
          org_kde_plasma_shell_interface.name, kVersion,
          [this](wl_registry* registry, std::uint32_t name) {
              shell_ = static_cast<org_kde_plasma_shell*>(
                  wl_registry_bind(registry, name, &org_kde_plasma_shell_interface, kVersion));
              ask();
          },
          [this] { dropShell(); }) {}

PlasmaShell::~PlasmaShell() {
    dropShell();
}

void PlasmaShell::keepOutOfTaskbar(std::uintptr_t window) {
    window_ = window;
    ask();
}

void PlasmaShell::ask() {
    wl_surface* const surface = waylandSurfaceOf(ownWindow(window_));
    if (shell_ == nullptr || surface == nullptr) {
        return;
    }
    dropSurface();
    surface_ = org_kde_plasma_shell_get_surface(shell_, surface);
    org_kde_plasma_surface_set_skip_taskbar(surface_, 1);
    org_kde_plasma_surface_set_skip_switcher(surface_, 1);
    wl_display_flush(qtWaylandDisplay());
}

void PlasmaShell::dropSurface() {
    if (surface_ != nullptr) {
        org_kde_plasma_surface_destroy(surface_);
        surface_ = nullptr;
    }
}

void PlasmaShell::dropShell() {
    dropSurface();
    if (shell_ != nullptr) {
        org_kde_plasma_shell_destroy(shell_);
        shell_ = nullptr;
    }
}

}  // namespace tavo
