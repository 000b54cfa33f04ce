// The environment as it was when this program started.
//
// This program and its libraries change their own environment later. The applications that it
// starts get the environment of the user's session, less what was meant for this program alone.
// Any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavo {

class StartEnvironment {
public:
    // The environment of this process now. main() calls capture() first, because Qt removes
    // variables.
    static StartEnvironment capture();

    // `variables` are "NAME=value". An element without a name or '=' is left out; of several with
    // one name the first counts.
    explicit StartEnvironment(std::vector<std::string> variables);

    // The value of a variable, also of one that forChildren() leaves out. Absent when it was not
    // set.
    [[nodiscard]] std::optional<std::string> value(std::string_view name) const;

    // For started applications: all variables but the one-shot ones. DESKTOP_STARTUP_ID (Startup
    // Notification), XDG_ACTIVATION_TOKEN (xdg-activation) and DESKTOP_AUTOSTART_ID (session
    // management) announce this program's own start and would mislead another program.
    [[nodiscard]] std::vector<std::string> forChildren() const;

private:
    std::vector<std::string> variables_;
};

}  // namespace tavo
