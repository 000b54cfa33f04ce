// Panels of the session: those that draw status items themselves, which the bus tells of, else the
// system tray of X11.
#pragma once

#include <memory>

#include "platform/StatusItemHosts.h"

namespace tavo {

class SingleInstance;

class SessionStatusItemHosts : public StatusItemHosts {
public:
    // The presence has something new to say.
    virtual void presenceChanged() = 0;
};

// Within the life of the application object; `presence` outlives it.
std::unique_ptr<SessionStatusItemHosts> makeSessionStatusItemHosts(SingleInstance& presence);

}  // namespace tavo
