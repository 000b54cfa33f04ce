// Applications that run now, and bringing them to the front.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "support/Signal.h"

namespace tavo {

// One running application, as the system names it. The application may have ended by the time this
// value is used; every function here allows for that.
struct RunningApplication {
    std::int32_t processIdentifier = 0;  // 0: known by its identifier alone
    std::string identifier;              // empty: known by its process alone

    bool operator==(const RunningApplication&) const = default;
};

// Main thread. Where the system cannot tell what runs, the answers are empty, and the model opens
// the application anew.
class RunningApplications {
public:
    virtual ~RunningApplications() = default;

    // Call when the user has clicked on this application. An activation that comes later, when the
    // application has started, is carried out only if the user has not turned to another
    // application since. No other function here records anything about the user.
    virtual void noteUserRequest(const std::string& identifier) = 0;

    // The running applications with this identifier, in the system's own order.
    [[nodiscard]] virtual std::vector<RunningApplication> withIdentifier(
        const std::string& identifier) = 0;

    // Whether windows could be listed when they were last asked for; false before that.
    [[nodiscard]] virtual bool listsWindows() = 0;

    [[nodiscard]] virtual std::optional<RunningApplication> withProcess(
        std::int32_t processIdentifier) = 0;

    // Whether the application has a window that can be seen, by its identifier or its process,
    // whichever is known.
    [[nodiscard]] virtual bool showsWindow(const RunningApplication& application) = 0;

    // Calls `changed` when showsWindow() may have become true for some application, but never
    // inside another call of this port. Each such call may wake the program up, so keep the
    // subscription only while an application starts. Empty where the system lists no windows.
    [[nodiscard]] virtual Subscription onWindowsChanged(std::function<void()> changed) = 0;

    // The path of the program that the application runs.
    [[nodiscard]] virtual std::optional<std::string> executablePath(
        const RunningApplication& application) = 0;

    // Brings all windows of the application forward, their order kept.
    virtual void activateAllWindows(const RunningApplication& application) = 0;
};

}  // namespace tavo
