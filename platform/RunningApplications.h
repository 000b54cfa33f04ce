// Applications that run now, and bringing them to the front.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavo {

// One running application as the system named it. A value: the application may be gone by the
// time it is used, which every call here survives.
struct RunningApplication {
    std::int32_t processIdentifier = 0;  // 0: known by its identifier alone
    std::string identifier;              // empty: known by its process alone

    bool operator==(const RunningApplication&) const = default;
};

// A system that cannot tell answers none, and the application is then opened. Any thread; the
// core asks on the main thread and activates on any.
class RunningApplications {
public:
    virtual ~RunningApplications() = default;

    // In the system's own order. This question is the user's click on the application: from here on
    // an adapter may hold that the user waits for it, until the user acts elsewhere, and whether an
    // activation that comes later is still wanted is judged by it. Whoever only wants to know asks
    // showsWindow().
    [[nodiscard]] virtual std::vector<RunningApplication> withIdentifier(
        const std::string& identifier) = 0;

    [[nodiscard]] virtual std::optional<RunningApplication> withProcess(
        std::int32_t processIdentifier) = 0;

    // Whether a window can be seen that is the application's, by its identifier or its process,
    // whichever is known. However often it is asked, nothing changes by it, and a display that
    // stands still is waited for once only: until it answers, no window can be seen.
    [[nodiscard]] virtual bool showsWindow(const RunningApplication& application) = 0;

    // The path of the program that the application runs.
    [[nodiscard]] virtual std::optional<std::string> executablePath(
        const RunningApplication& application) = 0;

    // Brings all windows of the application forward, their order kept.
    virtual void activateAllWindows(const RunningApplication& application) = 0;
};

}  // namespace tavo
