// Applies the desktop's settings to the interface, as they change: light or dark, reduced motion,
// icon theme.
#pragma once

#include <functional>
#include <string>

#include "platform/DesktopSettings.h"

namespace tavo {

// Light or dark becomes the palette of the QApplication. The palette is the platform's own where
// the user has no preference, and where the desktop has no such setting. Reduced motion becomes
// setReducedMotion(). The destructor undoes both. Within the life of the QApplication; main thread.
class AppliedDesktopSettings {
public:
    using UseIconTheme = std::function<void(const std::string& name)>;

    // Applies `settings`, which outlives this, now and after each change. `useIconTheme` may be
    // empty; it is called with the name of the icon theme when the desktop has told one and
    // whenever that changes, and with "" when the setting goes away.
    explicit AppliedDesktopSettings(DesktopSettings& settings, UseIconTheme useIconTheme = {});
    AppliedDesktopSettings(const AppliedDesktopSettings&) = delete;
    AppliedDesktopSettings& operator=(const AppliedDesktopSettings&) = delete;
    ~AppliedDesktopSettings();

    // Called just before the first frame. Waits a few milliseconds for the desktop's first answer,
    // so that the first frame seldom has the wrong colours; a longer wait would be worse than that.
    void awaitDesktop();

private:
    void follow();

    DesktopSettings& settings_;
    UseIconTheme useIconTheme_;
    DesktopPreferences shown_;
    Subscription changes_;
};

}  // namespace tavo
