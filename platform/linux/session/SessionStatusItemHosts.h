// The panels of the session that take a status item: StatusNotifierItem hosts, else the X11 system
// tray.
#pragma once

#include <memory>

#include "platform/StatusItemHosts.h"

namespace tavo {

class MainQueue;
class SessionBus;

// Use while the application object exists; `bus` and `mainQueue` must outlive the result.
std::unique_ptr<StatusItemHosts> makeSessionStatusItemHosts(SessionBus& bus, MainQueue& mainQueue);

}  // namespace tavo
