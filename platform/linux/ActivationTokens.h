// Tokens by which a Wayland compositor lets a window come to the front (xdg-activation-v1).
#pragma once

#include <memory>
#include <optional>
#include <string>

namespace tavo {

// A token says that the user asked for it, in the window and by the input that it names. It goes to
// the application that is to come forward: as XDG_ACTIVATION_TOKEN in the environment of what is
// started, or as "activation-token" in the platform data of a D-Bus activation. For a window of our
// own: set XDG_ACTIVATION_TOKEN in our environment and call QWindow::requestActivate(), which takes
// it from there and removes it.
class ActivationTokens {
public:
    virtual ~ActivationTokens() = default;

    // Main thread, at the user's click: the window with the focus and its latest input are what the
    // token names. `appId` is what is to be started, its desktop-file id without ".desktop"; may be
    // empty. None where the compositor gives none within 0.25 s, and on X11.
    [[nodiscard]] virtual std::optional<std::string> token(const std::string& appId) = 0;
};

// Over the toolkit's connection, because a token that names a window can be asked for only by
// whoever shows that window. Made after the application object; keeps nothing between two tokens.
std::unique_ptr<ActivationTokens> makeWaylandActivationTokens();

}  // namespace tavo
