// KDE Plasma's requests about a window of ours (org_kde_plasma_shell).
#pragma once

#include <cstdint>
#include <memory>

namespace tavo {

// Main thread.
class PlasmaShell {
public:
    virtual ~PlasmaShell() = default;

    // Keeps the shown window with this QWindow::winId() out of the taskbar and the window switcher.
    // Call it after each showing: a hidden window loses its surface.
    virtual void keepOutOfTaskbar(std::uintptr_t window) = 0;
};

// Over Qt's connection, which it asks once, for 0.25 s at most. Null where the compositor has no
// such protocol, and on any platform but Wayland. Make it after the application object.
std::unique_ptr<PlasmaShell> makePlasmaShell();

}  // namespace tavo
