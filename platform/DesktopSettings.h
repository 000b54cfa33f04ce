// How the user has told the desktop that programs should look.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

#include "support/Signal.h"

namespace tavo {

enum class ColorScheme : std::uint8_t { NoPreference, Dark, Light };

struct DesktopPreferences {
    ColorScheme colorScheme = ColorScheme::NoPreference;
    bool reducedMotion = false;
    std::string iconTheme;  // its name as the desktop gives it, installed or not; "" when unknown

    bool operator==(const DesktopPreferences&) const = default;
};

// Main thread. The desktop is asked from the moment this exists; awaitFirstAnswer() alone waits for
// it.
class DesktopSettings {
public:
    virtual ~DesktopSettings() = default;

    // What is known now; what the desktop has not answered, or answers nonsense to, is at its
    // default. Returns at once.
    [[nodiscard]] virtual DesktopPreferences preferences() const = 0;

    // Waits until the desktop has answered, or it is certain that it will not soon, and at most
    // for `patience`. Afterwards preferences() is what was answered; `changed` may still come for
    // it.
    virtual void awaitFirstAnswer(std::chrono::milliseconds patience) = 0;

    // preferences() has changed: by the first answer, later by the user. Never inside a call.
    Signal<> changed;
};

}  // namespace tavo
