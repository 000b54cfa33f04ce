// Applies the desktop's settings to the interface, as they change.
#pragma once

#include <QFont>
#include <QObject>
#include <chrono>
#include <functional>
#include <optional>
#include <string>

#include "platform/DesktopSettings.h"

namespace tavo {

// Where the settings go that Qt has no place for. Each may be empty. It is called with what the
// desktop has told, whenever that changes, and with an empty value when the setting goes away.
struct DesktopSettingUses {
    std::function<void(const std::string& name)> iconTheme = {};
    std::function<void(std::optional<int> pixels)> doubleClickDistance = {};
    std::function<void(std::optional<std::chrono::milliseconds> time)> cursorBlinkTime = {};
};

// Light or dark, more contrast and the accent become the palette of the QApplication, the interface
// font its font, the double-click time and the lines of a wheel step its own. Where the desktop
// does not tell one, Qt's own is used. Reduced motion becomes setReducedMotion(), the size of text
// setTextScale(). The destructor undoes all. Within the life of the QApplication; main thread.
class AppliedDesktopSettings {
public:
    // Applies `settings`, which outlives this, now and after each change.
    explicit AppliedDesktopSettings(DesktopSettings& settings, DesktopSettingUses uses = {});
    AppliedDesktopSettings(const AppliedDesktopSettings&) = delete;
    AppliedDesktopSettings& operator=(const AppliedDesktopSettings&) = delete;
    ~AppliedDesktopSettings();

    // Called just before the first frame. Waits a few milliseconds for the desktop's first answer,
    // so that the first frame seldom has the wrong look; a longer wait would be worse than that.
    void awaitDesktop();

private:
    void follow();
    void apply(const DesktopPreferences& preferences);
    void usePalette();
    void useFont();
    void useTextScale();

    DesktopSettings& settings_;
    const DesktopSettingUses uses_;
    const QFont qtsFont_;
    const int qtsDoubleClickTime_;
    const int qtsWheelLines_;
    DesktopPreferences shown_;
    Subscription changes_;
    QObject screens_;  // receives their signals
};

}  // namespace tavo
