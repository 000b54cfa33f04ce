// The environment as it was when the program began.
//
// Whatever a library or this program does to its own environment later, the applications it
// starts get the one that the user's session gave, less what was meant for this program alone.
// A value; any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavo {

class StartEnvironment {
public:
    // The process's environment now. The first thing that main does: a toolkit removes some of it.
    static StartEnvironment capture();

    // `variables` are "NAME=value"; what has no name or no '=' is left out, of a name that comes
    // twice the first one holds.
    explicit StartEnvironment(std::vector<std::string> variables);

    // Absent when it was not set; the one-shot variables are answered too.
    [[nodiscard]] std::optional<std::string> value(std::string_view name) const;

    // For started applications: all but the one-shot variables, which announce one start of one
    // program (Startup Notification's DESKTOP_STARTUP_ID, XDG activation's XDG_ACTIVATION_TOKEN,
    // the session manager's DESKTOP_AUTOSTART_ID) and mislead any other.
    [[nodiscard]] std::vector<std::string> forChildren() const;

private:
    std::vector<std::string> variables_;
};

}  // namespace tavo
