// The terminal in which programs without a window of their own are shown.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tavo {

// The words to put before a command so that it runs in a terminal; none when there is no terminal
// that this knows. Looked for in the folders of `searchPath` (the form of PATH), in this order:
// the program by which users choose theirs (xdg-terminal-exec), the terminals of the desktops,
// those that need no desktop, the system's own choice (x-terminal-emulator), and the old ones of
// X11. `wayland`: whether the session is one, in which alone some of them run. Any thread.
std::optional<std::vector<std::string>> terminalCommand(const std::string& searchPath,
                                                        bool wayland);

}  // namespace tavo
