// The startup id and the activation token that a start of this program was given.
#pragma once

#include <string>

namespace tavo {

// Each can be used once: it names the click that the window answers, and lets the window come to
// the front. Empty: none was given.
struct StartRequest {
    std::string startupId;        // X11: DESKTOP_STARTUP_ID (Startup Notification Protocol)
    std::string activationToken;  // Wayland: XDG_ACTIVATION_TOKEN (xdg-activation)

    bool operator==(const StartRequest&) const = default;
};

}  // namespace tavo
