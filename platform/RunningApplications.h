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

// A system that cannot tell answers none, and the application is then opened.
class RunningApplications {
public:
    virtual ~RunningApplications() = default;

    // Main thread. The system's own order.
    [[nodiscard]] virtual std::vector<RunningApplication> withIdentifier(
        const std::string& identifier) = 0;

    // Main thread.
    [[nodiscard]] virtual std::optional<RunningApplication> withProcess(
        std::int32_t processIdentifier) = 0;

    // Main thread. The path of the program that the application runs.
    [[nodiscard]] virtual std::optional<std::string> executablePath(
        const RunningApplication& application) = 0;

    // Any thread. Brings all windows of the application forward, their order kept.
    virtual void activateAllWindows(const RunningApplication& application) = 0;
};

}  // namespace tavo
