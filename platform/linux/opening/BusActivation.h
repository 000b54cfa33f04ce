// Activating an application over the session bus (Desktop Entry Specification 1.5, "D-Bus
// Activation"): its service is started when it does not run, and shows itself when it does.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/linux/dbus/GLibThread.h"
#include "support/Result.h"

namespace tavo {

struct BusActivation {
    std::string name;                       // the service's, from which its object's path follows
    std::string startupId;                  // X11; empty where there is none
    std::string activationToken;            // Wayland; likewise
    std::chrono::milliseconds patience{0};  // for the service's answer
};

struct ActivatedService {
    bool runs = false;         // has the name
    std::int32_t process = 0;  // the one that has it; 0 when the bus does not say
};

// On `thread`, connected to the session bus; returns at once. `done` is called once, later, on
// this thread: with who has answered, or why nobody has; not when the thread ends first.
void activateOverBus(GLibThread& thread, const BusActivation& activation,
                     std::function<void(Result<ActivatedService>)> done);

}  // namespace tavo
