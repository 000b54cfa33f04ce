// When the user last did something in this program, by the X server's clock.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

namespace tavo {

// Watches Qt's X11 input events from now on. The returned function gives the time, in milliseconds
// of the server's clock, of the user's latest key, button or touch in this program; nothing before
// the first one, and on Wayland. Main thread, while the application object exists.
std::function<std::optional<std::uint32_t>()> watchXcbUserTime();

}  // namespace tavo
