// KDE Plasma's requests about a window of ours (org_kde_plasma_shell).
#pragma once

#include <cstdint>

#include "platform/linux/wayland/WaylandGlobal.h"

struct org_kde_plasma_shell;
struct org_kde_plasma_surface;

namespace tavo {

// Does nothing where the compositor has no such protocol, and on any platform but Wayland. Main
// thread; make it after the application object.
class PlasmaShell {
public:
    PlasmaShell();
    PlasmaShell(const PlasmaShell&) = delete;
    PlasmaShell& operator=(const PlasmaShell&) = delete;
    ~PlasmaShell();

    // Keeps the shown window with this QWindow::winId() out of the taskbar and the window switcher,
    // as soon as the compositor has told of the protocol. Call it after each showing: a hidden
    // window loses its surface.
    void keepOutOfTaskbar(std::uintptr_t window);

private:
    void ask();
    void dropSurface();
    void dropShell();

    org_kde_plasma_shell* shell_ = nullptr;
    org_kde_plasma_surface* surface_ = nullptr;
    std::uintptr_t window_ = 0;  // the window asked for last; 0 before
    WaylandGlobal global_;
};

}  // namespace tavo
