// Tokens by which a Wayland compositor lets a window come to the front (xdg-activation-v1).
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace tavo {

// A token says that the user asked for it, in the window and by the input that it names. It goes to
// the application that is to come forward: as XDG_ACTIVATION_TOKEN in the environment of what is
// started, or as "activation-token" in the platform data of a D-Bus activation.
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

// Main thread. Asks the compositor to bring our window of that number (QWindow::winId()) forward by
// the token that somebody else was given for it. Waits 0.25 s at most; nothing happens where the
// compositor takes no tokens, while the window has no surface, and on X11.
//
// Not left to the toolkit, which takes such a token from the environment and from nowhere else: to
// put it there would race with any other thread that reads a variable.
void activateByToken(std::uintptr_t window, const std::string& token);

}  // namespace tavo
