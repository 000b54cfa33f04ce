// One compositor's way to tell of its windows on the session bus.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/dbus/BusCalls.h"
#include "platform/linux/windows/CompositorWindows.h"

namespace tavo {

struct BusWindow : CompositorWindow {
    std::string id;  // the compositor's name for the window
};

struct BusWindows {
    std::vector<BusWindow> windows;  // the newest first
    bool knowsActive = false;        // as CompositorWindowList::knowsActive()
};

// The largest number of windows that a compositor is believed to have.
inline constexpr std::size_t kMostBusWindows = 1000;

// Bus thread. Whatever an answer of the wrong type holds counts as no answer.
class BusWindowLister {
public:
    virtual ~BusWindowLister() = default;

    // Calls `answered` once, later, unless the calls are cancelled: with nothing where this
    // compositor does not run, or refuses.
    using Answered = std::function<void(std::optional<BusWindows>)>;
    virtual void list(GDBusConnection* bus, BusCalls& calls, Answered answered) = 0;

    // Brings windows forward in this order, and restores minimised ones. Answers nothing.
    virtual void front(GDBusConnection* bus, BusCalls& calls,
                       const std::vector<std::string>& ids) = 0;
};

}  // namespace tavo
