// Tells when what the user has chosen on KDE changes.
#pragma once

#include <memory>

#include "support/Signal.h"

namespace tavo {

class MainQueue;
class SessionBus;

// Main thread.
class KdeChanges {
public:
    virtual ~KdeChanges() = default;

    // The icons, or what kdeglobals says, has changed or may have. Never inside a call.
    Signal<> changed;
};

// Listens on the session bus for what KDE's own programs listen for: the signals iconChanged of
// org.kde.KIconLoader, ConfigChanged of org.kde.kconfig.notify about kdeglobals, and notifyChange
// of org.kde.KGlobalSettings. Calls no method. Other desktops do not send these signals. `bus` and
// `mainQueue` must outlive the result.
std::unique_ptr<KdeChanges> watchKde(SessionBus& bus, MainQueue& mainQueue);

}  // namespace tavo
