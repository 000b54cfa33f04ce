// What a start of the program brings with it from the program that started it.
#pragma once

#include <string>

namespace tavo {

// Both are one-shot: they name the click that the window answers, and let it come to the front.
// Empty when there is none.
struct StartRequest {
    std::string startupId;        // X11: DESKTOP_STARTUP_ID (Startup Notification Protocol)
    std::string activationToken;  // Wayland: XDG_ACTIVATION_TOKEN (xdg-activation)

    bool operator==(const StartRequest&) const = default;
};

}  // namespace tavo
