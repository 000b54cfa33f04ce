// The interface as the desktop's settings want it, live.
#pragma once

#include <functional>
#include <string>

#include "platform/DesktopSettings.h"

namespace tavo {

// Light or dark becomes the application's palette; where the user has no preference, or nobody
// says, that stays the platform's own. Reduced motion becomes the switch in Motion.h. Made after
// the application object; main thread. The desktop's look ends with it.
class DesktopLook {
public:
    using UseIconTheme = std::function<void(const std::string& name)>;

    // Follows `settings`, which outlives this, from now on. `useIconTheme` is called with the name
    // of the icon theme when the desktop tells one, and whenever it tells another ("" when none
    // any more); it may be empty.
    explicit DesktopLook(DesktopSettings& settings, UseIconTheme useIconTheme = {});
    DesktopLook(const DesktopLook&) = delete;
    DesktopLook& operator=(const DesktopLook&) = delete;
    ~DesktopLook();

    // Just before the first frame: gives a desktop that is about to answer the few milliseconds
    // after which a wrong first frame is better than a late one.
    void awaitDesktop();

private:
    void follow();

    DesktopSettings& settings_;
    UseIconTheme useIconTheme_;
    DesktopPreferences shown_;
    Subscription changes_;
};

}  // namespace tavo
