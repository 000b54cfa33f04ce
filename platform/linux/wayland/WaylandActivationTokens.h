// Tokens by which a Wayland compositor lets a window come to the front (xdg-activation-v1).
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace tavo {

// A token names a window of ours and the user's input there, as proof that the user asked. It goes
// to the application that is to come forward: as XDG_ACTIVATION_TOKEN in its environment, or as
// "activation-token" in the platform data of a D-Bus activation.
class ActivationTokens {
public:
    virtual ~ActivationTokens() = default;

    // Call on the main thread, at the user's click: the token names the window with the focus and
    // the latest input there. `appId` is the desktop-file id of the application to start, without
    // ".desktop"; may be empty. Absent where the compositor gives no token within 0.25 s, and on
    // X11.
    [[nodiscard]] virtual std::optional<std::string> token(const std::string& appId) = 0;
};

// Uses Qt's connection, because only the client that shows a window can ask for a token that names
// it. Make it after the application object. Keeps no Wayland object between two calls.
std::unique_ptr<ActivationTokens> makeWaylandActivationTokens();

// Main thread. Asks the compositor to bring our window with this QWindow::winId() forward by a
// token that another program was given for it. Waits 0.25 s at most. Nothing happens where the
// compositor takes no tokens, while the window has no surface, and on X11.
//
// Qt would take such a token from the environment variable XDG_ACTIVATION_TOKEN alone; setting that
// would race with other threads that read the environment.
void activateByToken(std::uintptr_t window, const std::string& token);

}  // namespace tavo
