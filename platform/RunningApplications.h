// Applications that run now, and bringing them to the front.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "support/Signal.h"

namespace tavo {

// One running application as the system named it. A value: the application may be gone by the
// time it is used, which every call here survives.
struct RunningApplication {
    std::int32_t processIdentifier = 0;  // 0: known by its identifier alone
    std::string identifier;              // empty: known by its process alone

    bool operator==(const RunningApplication&) const = default;
};

// Main thread. A system that cannot tell answers none, and the application is then opened.
class RunningApplications {
public:
    virtual ~RunningApplications() = default;

    // The user has just asked for this application, by a click. An activation that comes later,
    // when the application has started, is carried out only if the user has not turned to another
    // application since. The only call that records anything about the user.
    virtual void noteUserRequest(const std::string& identifier) = 0;

    // In the system's own order.
    [[nodiscard]] virtual std::vector<RunningApplication> withIdentifier(
        const std::string& identifier) = 0;

    [[nodiscard]] virtual std::optional<RunningApplication> withProcess(
        std::int32_t processIdentifier) = 0;

    // Whether the application has a window that can be seen, by its identifier or its process,
    // whichever is known.
    [[nodiscard]] virtual bool showsWindow(const RunningApplication& application) = 0;

    // Calls `changed`, never inside another call of this port, when showsWindow() may have become
    // true for some application; also when it has not. Each call may be a wake-up of the program:
    // the subscription is kept only while an application starts. Empty where windows cannot be
    // seen.
    [[nodiscard]] virtual Subscription onWindowsChanged(std::function<void()> changed) = 0;

    // The path of the program that the application runs.
    [[nodiscard]] virtual std::optional<std::string> executablePath(
        const RunningApplication& application) = 0;

    // Brings all windows of the application forward, their order kept.
    virtual void activateAllWindows(const RunningApplication& application) = 0;
};

}  // namespace tavo
