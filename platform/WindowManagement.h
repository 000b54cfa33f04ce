// Requests to the desktop about the program's own window, beyond showing it.
#pragma once

#include <cstdint>

#include "platform/StartRequest.h"

namespace tavo {

// Main thread. `window` is the window system's id of a window of ours, which may be hidden. A
// request that the desktop does not know has no effect.
class WindowManagement {
public:
    virtual ~WindowManagement() = default;

    // Called just before each showing: keeps the window out of taskbar and pager.
    virtual void prepareToShow(std::uintptr_t window, const StartRequest& request) = 0;

    // Called just after each showing: moves the window to the current desktop, above all windows of
    // the normal layer, and gives it the keyboard focus. Ends the desktop's start feedback for
    // `request`.
    virtual void bringToFront(std::uintptr_t window, const StartRequest& request) = 0;
};

}  // namespace tavo
