// The user's choices from all that the session's desktop tells of them.
#pragma once

#include <memory>
#include <string>

#include "platform/DesktopSettings.h"
#include "platform/linux/settings/ConfiguredSettings.h"

namespace tavo {

class MainQueue;
class SessionBus;

// What is told twice is taken from the first of these: the desktop's own files
// (ConfiguredSettings), the X settings of an X11 session, the settings portal. Only light or dark
// is taken from the portal before the X settings, which tell it by the name of a theme alone.
class SessionDesktopSettings : public DesktopSettings {
public:
    // Reads files and X settings again, on a thread of its own. Call it when they have changed: KDE
    // and the X server tell of that (KdeChanges, XSettingsWatch). Main thread.
    virtual void readAgain() = 0;
};

// `display` is that of the X server with X settings; empty in a Wayland session. `bus` and
// `mainQueue` must outlive the result. Make it as early as possible, so that the answers come
// before the first frame. Ends without waiting for the X server or a disk.
std::unique_ptr<SessionDesktopSettings> makeSessionDesktopSettings(ConfigurationFolders folders,
                                                                   std::string display,
                                                                   SessionBus& bus,
                                                                   MainQueue& mainQueue);

}  // namespace tavo
