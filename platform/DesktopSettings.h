// How the user has told the desktop that programs should look and feel.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

#include "support/Signal.h"

namespace tavo {

enum class ColorScheme : std::uint8_t { NoPreference, Dark, Light };

// What the desktop does not tell has its default, which stands for "not told".
struct DesktopPreferences {
    ColorScheme colorScheme = ColorScheme::NoPreference;
    bool reducedMotion = false;
    std::string iconTheme = {};                // its name as the desktop gives it, installed or not
    std::optional<std::uint32_t> accent = {};  // 0xRRGGBB
    // Of the interface font: one or several, the preferred one first, with "," between them;
    // installed or not. Without size and weight, which this program has its own of.
    std::string fontFamilies = {};
    std::optional<std::chrono::milliseconds> doubleClickTime = {};
    std::optional<int> doubleClickDistance = {};  // logical pixels
    // From one appearance of the text cursor to the next; zero where it does not blink.
    std::optional<std::chrono::milliseconds> cursorBlinkTime = {};
    std::optional<int> wheelLines = {};  // lines scrolled by one step of the wheel
    // How many times as large as usual text should be, whatever the scale of the screens.
    std::optional<double> textScale = {};
    // The same together with the scale of the screens, where the desktop tells both in one number.
    std::optional<double> screenAndTextScale = {};
    bool moreContrast = false;

    bool operator==(const DesktopPreferences&) const = default;
};

// Main thread. The settings are asked for as soon as this object exists; only awaitFirstAnswer()
// waits for the answer.
class DesktopSettings {
public:
    virtual ~DesktopSettings() = default;

    // The settings known now. One that the desktop has not answered, or has answered with an
    // invalid value, has its default. Returns at once.
    [[nodiscard]] virtual DesktopPreferences preferences() const = 0;

    // Waits until the desktop has answered, or certainly will not soon, and at most for `patience`.
    // preferences() then has the answer; `changed` may still be emitted for it.
    virtual void awaitFirstAnswer(std::chrono::milliseconds patience) = 0;

    // preferences() has changed: by the first answer, later by the user. Never emitted inside a
    // call.
    Signal<> changed;
};

}  // namespace tavo
