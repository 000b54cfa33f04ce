// The terminal in which programs without a window of their own are shown.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/linux/entries/ExecutableLookup.h"

namespace tavo {

// The words to put before a command so that it runs in a terminal; none when no known terminal is
// installed. Looks in the search path of `lookup`, in this order, for the program by which users
// choose theirs (xdg-terminal-exec), the terminals of the desktops, those that need no desktop, the
// system's own choice (x-terminal-emulator), and the old ones of X11. `wayland`: whether this is a
// Wayland session; some terminals run nowhere else. Any thread.
std::optional<std::vector<std::string>> terminalCommand(const ExecutableLookup& lookup,
                                                        bool wayland);

}  // namespace tavo
