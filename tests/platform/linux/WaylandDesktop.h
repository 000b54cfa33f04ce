// A Wayland compositor without a screen, for one test, and real programs on it.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

#include "tests/platform/linux/ChildProgram.h"
#include "tests/platform/linux/ProcessFixture.h"

namespace tavo {

// sway, which does not run as root: there it runs as nobody.
class WaylandDesktop {
public:
    // Throws, and says why, when there is none.
    WaylandDesktop();

    // The path of its socket.
    [[nodiscard]] const std::string& display() const { return display_; }

    // Opens a terminal (foot) with that application id; its window is there when this returns.
    // Each has a process of its own.
    struct Window {
        std::unique_ptr<ChildProgram> program;
        pid_t process = 0;
    };
    Window open(const std::string& appId, const std::vector<std::string>& variables = {});

    // Command words that run `command` on this desktop.
    [[nodiscard]] std::vector<std::string> onDesktop(const std::vector<std::string>& command) const;

    // The compositor's process.
    [[nodiscard]] pid_t compositor() const { return compositorProcess_; }

    // What the compositor says: the process of the window that has the focus, 0 for none.
    [[nodiscard]] pid_t focused();
    [[nodiscard]] std::vector<pid_t> processes();

    // Carries out a command of the compositor's own.
    void command(const std::string& words);

private:
    std::string message(const std::vector<std::string>& words);

    processes::Folder folder_;
    std::string display_;
    std::string control_;
    std::unique_ptr<ChildProgram> compositor_;
    pid_t compositorProcess_ = 0;
};

}  // namespace tavo
