// What a program asks of the desktop for its own window, beyond showing it.
#pragma once

#include <cstdint>

#include "platform/StartRequest.h"

namespace tavo {

// Main thread. `window` is the number that the window system knows a window of ours by; it may
// be hidden. Calls that mean nothing to a desktop do nothing.
class WindowManagement {
public:
    virtual ~WindowManagement() = default;

    // Just before each showing: keeps the window out of taskbar and pager, and lets what asks for
    // it, if anything does, count as the user's wish.
    virtual void prepareToShow(std::uintptr_t window, const StartRequest& request) = 0;

    // Just after it: on the current desktop, among the windows of the usual level and before all
    // of these, with the keyboard. The request is answered then, and no desktop shows any more that
    // something is starting.
    virtual void bringToFront(std::uintptr_t window, const StartRequest& request) = 0;
};

}  // namespace tavo
