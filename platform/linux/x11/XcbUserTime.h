// When the user last did something in this program, by the X server's clock.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

namespace tavo {

// Watches Qt's input events from now on. The answer tells the time, in milliseconds of the server's
// clock, of the user's latest key, button or touch in this program; none before the first, and on
// Wayland. Main thread, within the life of the application object.
std::function<std::optional<std::uint32_t>()> watchXcbUserTime();

}  // namespace tavo
