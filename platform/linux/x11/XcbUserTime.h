// When the user last did something in this program, by the X server's clock.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

namespace tavo {

// Watches the toolkit's input events from now on. The answer is the time, in the server's
// milliseconds, of the latest key, button or touch; none before the first, and on Wayland. To be
// called on any thread; made and let go on the main thread, within the life of the application
// object.
std::function<std::optional<std::uint32_t>()> watchXcbUserTime();

}  // namespace tavo
