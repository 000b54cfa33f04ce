// Activating an application over the session bus (Desktop Entry Specification 1.5, "D-Bus
// Activation"): the bus starts the application's service unless it runs, and the service shows its
// window.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/linux/opening/OpeningThread.h"
#include "support/Result.h"

namespace tavo {

struct BusActivation {
    std::string name;                       // bus name of the service; gives its object path
    std::string address;                    // for the service to open; may be empty
    std::string startupId;                  // of X11; may be empty
    std::string activationToken;            // of Wayland; may be empty
    std::chrono::milliseconds patience{0};  // how long the service may take to answer
};

struct ActivatedService {
    bool runs = false;         // a process owns the bus name
    std::int32_t process = 0;  // PID of the owner; 0 when the bus does not say
};

// Call on the bus thread, while `thread` has a connection to the bus; returns at once. `done` is
// called once, later, on this thread, with the service that has answered or the reason why none
// has; never when the workspace ends first.
void activateOverBus(OpeningThread& thread, const BusActivation& activation,
                     std::function<void(Result<ActivatedService>)> done);

}  // namespace tavo
